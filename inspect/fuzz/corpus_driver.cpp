// Feeds a fuzz target with changed files: driver COUNT FILE... The changes are those that break readers: bytes and runs
// of bytes that are lost, doubled, exchanged with those of other places, or other than they were.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using Bytes = std::vector<std::uint8_t>;

void Change(Bytes* bytes, std::mt19937& random) {
  if (bytes->empty()) return;
  const auto at = static_cast<std::ptrdiff_t>(random() % bytes->size());
  const auto rest = static_cast<std::ptrdiff_t>(bytes->size()) - at;
  const auto length = std::min<std::ptrdiff_t>(rest, 1 + static_cast<std::ptrdiff_t>(random() % 16));
  const auto from = bytes->begin() + at;
  constexpr std::uint8_t kTelling[] = {0, '\n', '\r', ',', ';', '"', '\'', '[', ']', '=', '-', '.', '9', 'e', ' ', 255};
  switch (random() % 6) {
    case 0:
      *from = static_cast<std::uint8_t>(random());
      break;
    case 1:
      *from = kTelling[random() % std::size(kTelling)];
      break;
    case 2:
      bytes->erase(from, from + length);
      break;
    case 3: {
      const Bytes run(from, from + length);
      bytes->insert(bytes->begin() + static_cast<std::ptrdiff_t>(random() % bytes->size()), run.begin(), run.end());
      break;
    }
    case 4:
      std::reverse(from, from + length);
      break;
    default:
      if (random() % 8 == 0) bytes->resize(static_cast<std::size_t>(at));
  }
}

}  // namespace

int main(int argc, char** argv) {
  const long count = argc > 1 ? std::strtol(argv[1], nullptr, 10) : 1000;
  std::vector<Bytes> corpus;
  for (int i = 2; i < argc; ++i) {
    std::ifstream file(argv[i], std::ios::binary);
    corpus.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    if (corpus.back().empty()) return 1;
  }
  if (corpus.empty()) return 1;
  std::mt19937 random(20240607);
  for (long i = 0; i < count; ++i) {
    Bytes input = corpus[static_cast<std::size_t>(i) % corpus.size()];
    for (auto changes = random() % 6; changes > 0; --changes) Change(&input, random);
    LLVMFuzzerTestOneInput(input.data(), input.size());
  }
  return 0;
}
