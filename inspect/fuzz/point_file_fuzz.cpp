// Any bytes as a point file: they end as points or as an InputError. The last byte chooses the options.

#include <cmath>
#include <cstdlib>

#include "input/point_file.h"
#include "scratch_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const ScratchFile scratch(".txt");
  const unsigned choice = size > 0 ? data[size - 1] : 0;
  PointFileOptions options;
  options.decimalComma = (choice & 1U) != 0;
  if ((choice & 2U) != 0) options.columns = {"ActX", "ActY", "ActZ"};
  if ((choice & 6U) == 4U) options.columns = {"2", "3", "4"};
  if ((choice & 8U) != 0) options.skipLines = 1;
  if ((choice & 16U) != 0) options.groupColumn = "1";
  try {
    const PointFile file = ReadPointFile(scratch.With(data, size), options);
    bool good = !file.points.empty() && file.lines.size() == file.points.size() && file.unit != nullptr;
    for (const Vec3& point : file.points) {
      for (const double coordinate : point) good = good && std::fabs(coordinate) <= kLargestCoordinate;
    }
    for (const std::size_t group : file.groupOfPoint) good = good && group < file.groups.size();
    if (!good) std::abort();
  } catch (const InputError&) {
  }
  return 0;
}
