// Feeds a fuzz target without a search by coverage:
//   TARGET [--count N | --seconds N] [--seed N] [--keep FILE] [FILE or FOLDER]...
// First come the files as they are, then inputs that are made from the seed: changed files, and noise mixed with the
// doubles that break things, short more often than long. A seed of 0 takes one of the moment. FILE holds each input
// while it runs, so that it is left with the one that ended the program.

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "odd_numbers.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using Bytes = std::vector<std::uint8_t>;
using Random = std::mt19937_64;

constexpr std::size_t kLong = 400, kShort = 80;

std::size_t Below(Random& random, std::size_t count) {
  return random() % count;
}

void PutOddNumber(Bytes& bytes, std::size_t at, Random& random, std::size_t count) {
  const double value = nu::fuzz::kOddNumbers[Below(random, count)];
  std::memcpy(bytes.data() + at, &value, sizeof value);
}

// Bytes and runs of bytes that are lost, doubled, exchanged with those of other places, or other than they were.
void Change(Bytes& bytes, Random& random) {
  if (bytes.empty()) return;
  constexpr char kSyntax[] = "\n\r,;\"\'[]=-.9e \xff";  // with the zero at its end
  const std::size_t at = Below(random, bytes.size());
  const auto from = bytes.begin() + static_cast<std::ptrdiff_t>(at);
  const auto to = from + static_cast<std::ptrdiff_t>(std::min<std::size_t>(bytes.size() - at, 1 + Below(random, 16)));
  switch (Below(random, 7)) {
    case 0:
      *from = static_cast<std::uint8_t>(random());
      break;
    case 1:
      *from = static_cast<std::uint8_t>(kSyntax[Below(random, sizeof kSyntax)]);
      break;
    case 2:
      bytes.erase(from, to);
      break;
    case 3: {
      const Bytes run(from, to);
      const auto place = static_cast<std::ptrdiff_t>(Below(random, bytes.size()));
      bytes.insert(bytes.begin() + place, run.begin(), run.end());
      break;
    }
    case 4:
      std::reverse(from, to);
      break;
    case 5:
      if (bytes.size() >= 8)
        PutOddNumber(bytes, Below(random, bytes.size() / 8) * 8, random, std::size(nu::fuzz::kOddNumbers));
      break;
    default:
      if (Below(random, 8) == 0) bytes.resize(at);
  }
}

// Some numbers of a longer input.
Bytes Piece(const Bytes& bytes, Random& random) {
  const std::size_t at = Below(random, bytes.size() / 8 + 1) * 8;
  const auto from = bytes.begin() + static_cast<std::ptrdiff_t>(at);
  return {from, from + static_cast<std::ptrdiff_t>(std::min(bytes.size() - at, Below(random, kShort)))};
}

Bytes Noise(Random& random) {
  Bytes bytes(Below(random, Below(random, 4) == 0 ? kLong : kShort));
  const std::size_t kind = Below(random, 5);
  for (std::size_t at = 0; at + 8 <= bytes.size(); at += 8) {
    PutOddNumber(bytes, at, random, kind == 0 ? nu::fuzz::kMildNumbers : std::size(nu::fuzz::kOddNumbers));
    const double value = std::uniform_real_distribution<double>(-10.0, 10.0)(random);
    if (kind == 2) std::memcpy(bytes.data() + at, &value, sizeof value);
  }
  if (kind >= 3) {
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(Below(random, kind == 3 ? 256 : 128));
  }
  return bytes;
}

Bytes Content(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  Bytes bytes{std::istreambuf_iterator<char>(file), {}};
  if (!file) {
    std::fprintf(stderr, "%s cannot be read\n", path.string().c_str());
    std::exit(2);
  }
  return bytes;
}

std::vector<Bytes> Contents(const std::filesystem::path& path) {
  if (!std::filesystem::is_directory(path)) return {Content(path)};
  std::vector<std::filesystem::path> paths;
  for (const auto& entry : std::filesystem::directory_iterator(path)) paths.push_back(entry.path());
  std::sort(paths.begin(), paths.end());
  std::vector<Bytes> contents;
  contents.reserve(paths.size());
  for (const auto& each : paths) contents.push_back(Content(each));
  return contents;
}

// The file that holds the input of the moment. It stays open, since most inputs take less time than opening a file.
class KeptInput {
 public:
  explicit KeptInput(const std::string& path) : m_path(path) {
    if (path.empty()) return;
    m_file.reset(std::fopen(path.c_str(), "wb"));
    if (m_file == nullptr) Fail();
    std::setvbuf(m_file.get(), nullptr, _IONBF, 0);
  }

  void Hold(const Bytes& input) {
    if (m_file == nullptr) return;
    std::rewind(m_file.get());
    if (std::fwrite(input.data(), 1, input.size(), m_file.get()) != input.size()) Fail();
    if (input.size() < m_size) std::filesystem::resize_file(m_path, input.size());
    m_size = input.size();
  }

  void Remove() {
    if (m_file == nullptr) return;
    m_file.reset();
    std::filesystem::remove(m_path);
  }

 private:
  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  void Fail() const {
    std::fprintf(stderr, "%s cannot be written\n", m_path.c_str());
    std::exit(2);
  }

  std::string m_path;
  std::unique_ptr<std::FILE, Close> m_file;
  std::size_t m_size = 0;
};

struct Options {
  long count = 0;
  double seconds = 0.0;
  std::uint64_t seed = 20240607;
  std::string keep;
  std::vector<Bytes> corpus;
};

Options Read(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string name = argv[i];
    if (name.rfind("--", 0) != 0) {
      const std::vector<Bytes> contents = Contents(name);
      options.corpus.insert(options.corpus.end(), contents.begin(), contents.end());
      continue;
    }
    const char* value = ++i < argc ? argv[i] : "";
    if (name == "--count") options.count = std::atol(value);
    if (name == "--seconds") options.seconds = std::atof(value);
    if (name == "--seed") options.seed = std::strtoull(value, nullptr, 10);
    if (name == "--keep") options.keep = value;
  }
  if (options.seed == 0) options.seed = std::random_device()();
  return options;
}

}  // namespace

int main(int argc, char** argv) {
  const Options options = Read(argc, argv);
  const auto start = std::chrono::steady_clock::now();
  const auto secondsFrom = [start] {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  };
  std::printf("seed %llu\n", static_cast<unsigned long long>(options.seed));
  std::fflush(stdout);
  KeptInput kept(options.keep);
  const auto feed = [&kept](const Bytes& input) {
    kept.Hold(input);
    LLVMFuzzerTestOneInput(input.data(), input.size());
  };
  for (const Bytes& input : options.corpus) feed(input);
  Random random(options.seed);
  long inputs = 0;
  for (; inputs < options.count || secondsFrom() < options.seconds; ++inputs) {
    const bool isChanged = !options.corpus.empty() && Below(random, 2) == 0;
    Bytes input = isChanged ? options.corpus[Below(random, options.corpus.size())] : Noise(random);
    if (isChanged && Below(random, 2) == 0) input = Piece(input, random);
    for (std::size_t changes = isChanged ? Below(random, 6) : 0; changes > 0; --changes) Change(input, random);
    feed(input);
  }
  kept.Remove();
  std::printf("%zu files and %ld inputs in %.1f s\n", options.corpus.size(), inputs, secondsFrom());
  return 0;
}
