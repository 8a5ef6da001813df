#ifndef NU_INSPECT_LINE_READER_H
#define NU_INSPECT_LINE_READER_H

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// The lines of a text file, one after the other, in constant memory. Lines end with LF, CR or both; a byte order mark
// is passed over; "-" is standard input. Throws InputError for what cannot be read or is not text: a NUL byte, UTF-16,
// an endless line.
class LineReader {
 public:
  explicit LineReader(const std::string& path);

  // The next line without its end, valid until the next call; false at the end of the file.
  bool Next(std::string_view* line);

  // For messages: the path, printable.
  const std::string& Name() const { return m_name; }

  std::size_t LineNumber() const { return m_lineNumber; }

 private:
  struct Closer {
    void operator()(std::FILE* file) const {
      if (file != stdin) std::fclose(file);
    }
  };

  bool FillBuffer();
  std::size_t FindLineEnd();
  void SkipMark();

  std::string m_name;
  std::unique_ptr<std::FILE, Closer> m_file;
  std::vector<char> m_buffer;
  std::size_t m_begin = 0;
  std::size_t m_end = 0;
  std::size_t m_lineNumber = 0;
  bool m_afterCarriageReturn = false;
};

#endif
