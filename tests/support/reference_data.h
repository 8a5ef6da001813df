#ifndef NU_TESTS_SUPPORT_REFERENCE_DATA_H
#define NU_TESTS_SUPPORT_REFERENCE_DATA_H

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/json.h"

// The reference sets of data/reference.
namespace nu::test {

inline Json ReadReference(const std::filesystem::path& file) {
  std::ifstream stream(file);
  if (!stream) throw std::runtime_error("cannot read " + file.string());
  return Json::Parse({std::istreambuf_iterator<char>(stream), {}});
}

// The files of data/reference whose names start with the prefix, in order.
inline std::vector<std::filesystem::path> ReferenceFiles(const std::string& prefix) {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(NU_DATA_DIR "/reference")) {
    if (entry.path().filename().string().rfind(prefix, 0) == 0) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace nu::test

#endif
