#ifndef NU_INSPECT_SCRATCH_FILE_H
#define NU_INSPECT_SCRATCH_FILE_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

// A file of this process for the readers, which take paths; it goes with the process.
class ScratchFile {
 public:
  explicit ScratchFile(const char* ending)
      : m_path((std::filesystem::temp_directory_path() /
                ("nu-inspect-fuzz-" + std::to_string(std::random_device()()) + ending))
                   .string()) {}
  ~ScratchFile() { std::remove(m_path.c_str()); }
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;

  const std::string& With(const std::uint8_t* data, std::size_t size) const {
    std::ofstream(m_path, std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    return m_path;
  }

 private:
  std::string m_path;
};

#endif
