#ifndef NU_INSPECT_BYTE_SOURCE_H
#define NU_INSPECT_BYTE_SOURCE_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "input/progress.h"

// Takes compressed bytes, gives plain ones.
class Gunzip;

// Whether this program was built with zlib.
bool ReadsGzip();

// The bytes of a file, one block after the other, in constant memory; what gzip has compressed comes out plain. "-" is
// standard input. Throws InputError for what cannot be read or is damaged.
class ByteSource {
 public:
  explicit ByteSource(const std::string& path);
  ~ByteSource();
  ByteSource(const ByteSource&) = delete;
  ByteSource& operator=(const ByteSource&) = delete;

  // The next bytes, at most `size`; 0 only at the end.
  std::size_t Read(char* to, std::size_t size);

  // For messages: the path, printable.
  const std::string& Name() const { return m_name; }

 private:
  struct Closer {
    void operator()(std::FILE* file) const {
      if (file != stdin) std::fclose(file);
    }
  };

  bool FillBlock();

  std::string m_name;
  std::unique_ptr<std::FILE, Closer> m_file;
  std::uintmax_t m_size;      // of the file; 0 where it is unknown
  std::vector<char> m_block;  // as it is in the file
  std::size_t m_begin = 0;
  std::size_t m_end = 0;
  std::unique_ptr<Gunzip> m_gunzip;  // null for a plain file
  std::uintmax_t m_taken = 0;
  Progress m_progress;
};

#endif
