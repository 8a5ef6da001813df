// Any bytes as a test set: they end as errors of the fit against the result, each of them a number or a problem that is
// stated, or as one line that says what cannot be read. The first two bytes choose the feature and the options; points
// and result are divided by the first '='.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include "checks.h"
#include "support/scratch_file.h"

namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

// Goes with the process.
struct ScratchSet {
  const std::string stem = nu::test::ScratchFile("published_sets_fuzz").string();
  const std::string points = stem + ".ds", result = stem + ".fit";

  ScratchSet() = default;
  ScratchSet(const ScratchSet&) = delete;
  ScratchSet& operator=(const ScratchSet&) = delete;
  ~ScratchSet() {
    for (const std::string& file : {points, result}) std::filesystem::remove(file);
  }
};

void Write(const std::string& file, const char* from, const char* to) {
  std::ofstream(file, std::ios::binary).write(from, to - from);
}

PublishedOptions OptionsOf(std::uint8_t feature, std::uint8_t how) {
  constexpr const char* kFeatures[] = {"line", "plane", "circle", "sphere", "cylinder", "cone", "torus", ""};
  constexpr const char* kCriteria[] = {"ls", "mz", "mc", "mi"};
  PublishedOptions options;
  options.feature = kFeatures[feature % 8];
  options.criterion = kCriteria[how % 4];
  options.givesRadii = (how & 4) != 0;
  options.fullAngle = (how & 8) != 0;
  return options;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const ScratchSet files;
  static const LengthUnit unit{"mm", 1000.0};
  static Progress progress;
  if (size < 2) return 0;
  const char* from = reinterpret_cast<const char*>(data) + 2;
  const char* to = reinterpret_cast<const char*>(data) + size;
  const char* middle = std::find(from, to, '=');
  Write(files.points, from, middle);
  Write(files.result, std::min(middle + 1, to), to);
  PublishedOptions options = OptionsOf(data[0], data[1]);
  options.paths = {files.points};
  Part part;
  part.unit = &unit;
  try {
    const Section section = CheckPublishedSets(options, part, progress);
    Require(section.Checks() > 0);
    for (const Row& row : section.Rows()) Require(row.cases > 0 && (!row.Holds() || row.largest <= options.limit));
    for (const std::string& problem : section.Problems()) Require(problem.find('\n') == std::string::npos);
  } catch (const std::runtime_error& error) {
    Require(std::strchr(error.what(), '\n') == nullptr);
  }
  return 0;
}
