// What does it cost the program inspect to read a file of points, lines of three coordinates? The peer reads numbers by
// the standard library's streams, and checks nothing.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "clouds.h"
#include "input/point_file.h"
#include "question.h"

namespace {

using bench::Cloud;
using bench::Numbers;
using bench::Question;

// Removed with the last copy of its owner.
struct TextFile {
  explicit TextFile(const Cloud& cloud) {
    static int files = 0;
    const std::string name = "nu_bench_" + std::to_string(files++) + ".txt";
    path = (std::filesystem::temp_directory_path() / name).string();
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "w"), std::fclose);
    for (const bench::Xyz& p : cloud) std::fprintf(file.get(), "%.6f %.6f %.6f\n", p.x, p.y, p.z);
  }
  ~TextFile() { std::filesystem::remove(path); }
  TextFile(const TextFile&) = delete;
  TextFile& operator=(const TextFile&) = delete;

  std::string path;
};
using Path = std::shared_ptr<const TextFile>;

Numbers SumByInspect(const Path& file) {
  Numbers sum(3, 0.0);
  for (const Vec3& p : ReadPointFile(file->path, {}).points) {
    for (std::size_t k = 0; k < 3; ++k) sum[k] += p[k];
  }
  return sum;
}

Numbers SumByStreams(const Path& file) {
  std::vector<Vec3> points;
  std::ifstream in(file->path);
  for (Vec3 p; in >> p[0] >> p[1] >> p[2];) points.push_back(p);
  Numbers sum(3, 0.0);
  for (const Vec3& p : points) {
    for (std::size_t k = 0; k < 3; ++k) sum[k] += p[k];
  }
  return sum;
}

const bool kAsked = [] {
  const auto prepare = [](const Cloud& cloud) { return Path(std::make_shared<const TextFile>(cloud)); };
  const auto read = [](const Numbers& numbers) { return numbers; };
  Question<Cloud>("read_points", 0.0, bench::Plate)
      .Ask("nu", prepare, SumByInspect, read)
      .Ask("streams", prepare, SumByStreams, read)
      .Over({1000, 1000000});
  return true;
}();

}  // namespace
