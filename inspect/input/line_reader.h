#ifndef NU_INSPECT_LINE_READER_H
#define NU_INSPECT_LINE_READER_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "input/byte_source.h"

// The lines of a text file, one after the other, in constant memory, and the bytes that may follow a header in text.
// Lines end with LF, CR or both; a byte order mark is passed over; "-" is standard input. Throws InputError for what
// cannot be read or is not text: a NUL byte, UTF-16, an endless line.
class LineReader {
 public:
  explicit LineReader(const std::string& path);

  // The next line without its end, valid until the next call; false at the end of the file.
  bool Next(std::string_view* line);

  // The next `count` bytes behind the lines read so far; false if there are fewer.
  bool ReadBytes(char* to, std::size_t count);

  // What follows, as much of it as is in memory.
  std::string_view Ahead() const { return {m_buffer.data() + m_begin, m_end - m_begin}; }

  // For messages: the path, printable.
  const std::string& Name() const { return m_source.Name(); }

  std::size_t LineNumber() const { return m_lineNumber; }

 private:
  bool FillBuffer();
  std::size_t FindLineEnd();
  void SkipMark();
  bool SkipLineFeed();

  ByteSource m_source;
  std::vector<char> m_buffer;
  std::size_t m_begin = 0;
  std::size_t m_end = 0;
  std::size_t m_lineNumber = 0;
  bool m_afterCarriageReturn = false;
  bool m_endsAreCrLf = false;  // as seen so far
};

#endif
