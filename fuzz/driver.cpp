// Feeds a fuzz target with inputs: driver COUNT [FOLDER]. First come the files of the folder, in which inputs are kept
// that once failed, then COUNT seeded ones that mix noise with the doubles that break things.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <random>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

void FeedFiles(const char* folder) {
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    std::ifstream file(entry.path(), std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 2) FeedFiles(argv[2]);
  const long count = argc > 1 ? std::strtol(argv[1], nullptr, 10) : 1000;
  using Limits = std::numeric_limits<double>;
  const double special[] = {0.0,
                            -0.0,
                            1.0,
                            -1.0,
                            2.0,
                            0.5,
                            3.0,
                            1e-300,
                            1e300,
                            1e150,
                            1e-150,
                            1e9,
                            1e-9,
                            5e-324,
                            Limits::max(),
                            Limits::infinity(),
                            -Limits::infinity(),
                            Limits::quiet_NaN()};
  std::mt19937_64 random(20240607);
  for (long i = 0; i < count; ++i) {
    std::vector<std::uint8_t> input(random() % 400);
    const unsigned noise = static_cast<unsigned>(random() % 4);
    for (std::size_t at = 0; at + 8 <= input.size(); at += 8) {
      double value = special[random() % (noise == 0 ? 7 : std::size(special))];
      if (noise >= 2) value = std::uniform_real_distribution<double>(-10.0, 10.0)(random);
      std::memcpy(input.data() + at, &value, 8);
    }
    if (noise == 3) {
      for (std::uint8_t& byte : input) byte = static_cast<std::uint8_t>(random());
    }
    LLVMFuzzerTestOneInput(input.data(), input.size());
  }
  return 0;
}
