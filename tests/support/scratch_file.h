#ifndef NU_TESTS_SUPPORT_SCRATCH_FILE_H
#define NU_TESTS_SUPPORT_SCRATCH_FILE_H

#include <filesystem>
#include <random>
#include <string>

namespace nu::test {

// The name of a temporary file that programs running at the same time do not share.
inline std::filesystem::path ScratchFile(const std::string& name) {
  return std::filesystem::temp_directory_path() / ("nu_" + name + "_" + std::to_string(std::random_device{}()));
}

}  // namespace nu::test

#endif
