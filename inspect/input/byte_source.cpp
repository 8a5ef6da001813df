#include "input/byte_source.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <new>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#endif
#ifdef NU_INSPECT_ZLIB
#include <zlib.h>
#endif

#include "input/point_file.h"
#include "text.h"

namespace {

constexpr std::size_t kBlockSize = std::size_t{1} << 20;

// One byte more than a short file has, so that one read finds its end.
std::size_t BlockSizeFor(std::uintmax_t fileSize) {
  return fileSize > 0 && fileSize < kBlockSize ? static_cast<std::size_t>(fileSize) + 1 : kBlockSize;
}

std::uintmax_t SizeOfFile(const std::string& path) {
  std::error_code error;
  const std::uintmax_t size = path == "-" ? 0 : std::filesystem::file_size(path, error);
  return error ? 0 : size;
}

// As on other platforms: no line end is changed, and no byte ends the input.
void TakeStandardInputAsBytes() {
#ifdef _WIN32
  _setmode(_fileno(stdin), _O_BINARY);
#endif
}

}  // namespace

#ifdef NU_INSPECT_ZLIB

bool ReadsGzip() {
  return true;
}

class Gunzip {
 public:
  Gunzip() {
    constexpr int kGzipOnly = 16 + MAX_WBITS;
    if (inflateInit2(&m_stream, kGzipOnly) != Z_OK) throw std::bad_alloc();
  }
  ~Gunzip() { inflateEnd(&m_stream); }
  Gunzip(const Gunzip&) = delete;
  Gunzip& operator=(const Gunzip&) = delete;

  // Moves `from` behind what it took; returns how many bytes it gave, or a reason in `problem`.
  std::size_t Inflate(const char** from, const char* end, char* to, std::size_t size, const char** problem) {
    if (m_complete) {
      // Several compressed parts behind one another are one file.
      inflateReset(&m_stream);
      m_complete = false;
    }
    m_stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(*from));
    m_stream.avail_in = static_cast<uInt>(end - *from);
    m_stream.next_out = reinterpret_cast<Bytef*>(to);
    m_stream.avail_out = static_cast<uInt>(std::min(size, kBlockSize));
    const int result = inflate(&m_stream, Z_NO_FLUSH);
    *from = end - m_stream.avail_in;
    m_complete = result == Z_STREAM_END;
    if (result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR) *problem = "the compressed data is damaged";
    return static_cast<std::size_t>(reinterpret_cast<char*>(m_stream.next_out) - to);
  }

  bool IsComplete() const { return m_complete; }

 private:
  z_stream m_stream{};
  bool m_complete = false;
};

#else

bool ReadsGzip() {
  return false;
}

class Gunzip {
 public:
  static std::size_t Inflate(const char** /*from*/, const char* /*end*/, char* /*to*/, std::size_t /*size*/,
                             const char** problem) {
    *problem = "compressed by gzip, and this program was built without zlib; unpack it first";
    return 0;
  }
  static bool IsComplete() { return false; }
};

#endif

ByteSource::ByteSource(const std::string& path)
    : m_name(path == "-" ? "standard input" : Printable(path)),
      m_size(SizeOfFile(path)),
      m_block(BlockSizeFor(m_size)),
      m_progress("reading " + FileName(m_name)) {
  if (path == "-") TakeStandardInputAsBytes();
  m_file.reset(path == "-" ? stdin : std::fopen(path.c_str(), "rb"));
  if (!m_file) throw InputError(m_name + ": cannot be opened: " + std::strerror(errno));
  FillBlock();
  const bool compressed = m_end > 1 && m_block[0] == '\x1F' && m_block[1] == '\x8B';
  if (compressed) m_gunzip = std::make_unique<Gunzip>();
}

ByteSource::~ByteSource() = default;

bool ByteSource::FillBlock() {
  m_begin = 0;
  m_end = std::fread(m_block.data(), 1, m_block.size(), m_file.get());
  if (std::ferror(m_file.get()) != 0) throw InputError(m_name + ": cannot be read: " + std::strerror(errno));
  m_taken += m_end;
  if (m_size > 0) m_progress.Show(static_cast<double>(m_taken) / static_cast<double>(m_size));
  return m_end > 0;
}

std::size_t ByteSource::Read(char* to, std::size_t size) {
  while (size > 0) {
    if (m_begin == m_end && !FillBlock()) {
      if (m_gunzip && !m_gunzip->IsComplete()) throw InputError(m_name + ": the compressed data ends too early");
      return 0;
    }
    const char* from = m_block.data() + m_begin;
    const char* end = m_block.data() + m_end;
    if (!m_gunzip) {
      const std::size_t count = std::min(size, m_end - m_begin);
      std::copy(from, from + count, to);
      m_begin += count;
      return count;
    }
    const char* problem = nullptr;
    const std::size_t count = m_gunzip->Inflate(&from, end, to, size, &problem);
    if (problem != nullptr) throw InputError(m_name + ": " + problem);
    m_begin = static_cast<std::size_t>(from - m_block.data());
    if (count > 0) return count;
  }
  return 0;
}
