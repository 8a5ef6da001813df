#include "nu/linalg/internal/binary_file.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace nu::internal {

namespace {

// The bytes of a number in the order of the file.
template<class T>
void ToFileOrder(unsigned char* bytes) {
  if constexpr (std::endian::native == std::endian::big) std::reverse(bytes, bytes + sizeof(T));
}

thread_local bool filesAreOfC = false;

#ifdef _WIN32
// A path of no characters for a name that is not UTF-8, which no file has.
std::filesystem::path PathOf(const char* fileName) {
  if (!filesAreOfC) return fileName;
  try {
    return reinterpret_cast<const char8_t*>(fileName);
  } catch (const std::system_error&) {
    return {};
  }
}
#else
const char* PathOf(const char* fileName) {
  return fileName;
}
#endif

}  // namespace

FilesOfC::FilesOfC() {
  filesAreOfC = true;
}

FilesOfC::~FilesOfC() {
  filesAreOfC = false;
}

bool FilesOfC::AreOpened() {
  return filesAreOfC;
}

void WriteInt(std::ostream& out, int value) {
  const std::int32_t number = value;
  unsigned char bytes[sizeof number];
  std::memcpy(bytes, &number, sizeof number);
  ToFileOrder<std::int32_t>(bytes);
  out.write(reinterpret_cast<const char*>(bytes), sizeof bytes);
}

bool ReadInt(std::istream& in, int* value) {
  unsigned char bytes[sizeof(std::int32_t)];
  if (!in.read(reinterpret_cast<char*>(bytes), sizeof bytes)) return false;
  ToFileOrder<std::int32_t>(bytes);
  std::int32_t number = 0;
  std::memcpy(&number, bytes, sizeof number);
  *value = number;
  return true;
}

BinaryFileWriter::BinaryFileWriter(const char* fileName) {
  if (fileName == nullptr) {
    m_file.setstate(std::ios::failbit);
    return;
  }
  std::error_code error;
  m_exists = std::filesystem::exists(PathOf(fileName), error);
  m_file.open(PathOf(fileName), std::ios::binary | std::ios::trunc);
}

void BinaryFileWriter::Tag(const char* tag, int length) {
  if (m_file.is_open()) m_exists = true;
  m_file.write(tag, length).flush();
}

void BinaryFileWriter::Doubles(const double* values, int n) {
  if constexpr (std::endian::native == std::endian::little) {
    m_file.write(reinterpret_cast<const char*>(values), static_cast<std::streamsize>(n) * 8);
    return;
  }
  for (int i = 0; i < n; ++i) {
    unsigned char bytes[sizeof(double)];
    std::memcpy(bytes, values + i, sizeof bytes);
    ToFileOrder<double>(bytes);
    m_file.write(reinterpret_cast<const char*>(bytes), sizeof bytes);
  }
}

BinaryFileWriter::Outcome BinaryFileWriter::Close() {
  m_file.flush();
  if (m_file.is_open()) m_file.close();
  if (m_file.good()) return Outcome::kWritten;
  return m_exists ? Outcome::kReadOnly : Outcome::kNotOpened;
}

BinaryFileReader::BinaryFileReader(const char* fileName) {
  if (fileName == nullptr) {
    m_file.setstate(std::ios::failbit);
    return;
  }
  m_file.open(PathOf(fileName), std::ios::binary);
}

bool BinaryFileReader::Tag(const char* tag, int length) {
  for (int i = 0; i < length; ++i) {
    if (m_file.get() != static_cast<unsigned char>(tag[i])) return false;
  }
  return true;
}

bool BinaryFileReader::HoldsDoubles(int count1, int count2) {
  const std::streamoff here = m_file.tellg();
  if (here < 0) return ReadAhead(static_cast<std::uint64_t>(count1) * static_cast<std::uint64_t>(count2));
  m_file.seekg(0, std::ios::end);
  const std::streamoff end = m_file.tellg();
  m_file.seekg(here);
  if (!m_file || end < here) return false;
  return (end - here) / 8 / count1 >= count2;
}

bool BinaryFileReader::ReadAhead(std::uint64_t count) {
  constexpr int kBlock = 1 << 15;
  while (count > 0) {
    const int n = static_cast<int>(std::min<std::uint64_t>(count, kBlock));
    const std::size_t size = m_ahead.size();
    m_ahead.resize(size + static_cast<std::size_t>(n));
    if (!ReadDoubles(m_ahead.data() + size, n)) return false;
    count -= static_cast<std::uint64_t>(n);
  }
  return true;
}

bool BinaryFileReader::Doubles(double* values, int n) {
  if (m_ahead.empty()) return ReadDoubles(values, n);
  if (static_cast<std::size_t>(n) > m_ahead.size() - m_taken) return false;
  std::copy_n(m_ahead.data() + m_taken, n, values);
  m_taken += static_cast<std::size_t>(n);
  return true;
}

bool BinaryFileReader::ReadDoubles(double* values, int n) {
  if (!m_file.read(reinterpret_cast<char*>(values), static_cast<std::streamsize>(n) * 8)) return false;
  if constexpr (std::endian::native == std::endian::big) {
    for (int i = 0; i < n; ++i) ToFileOrder<double>(reinterpret_cast<unsigned char*>(values + i));
  }
  return true;
}

}  // namespace nu::internal
