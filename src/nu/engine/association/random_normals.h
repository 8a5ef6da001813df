#ifndef NU_ENGINE_ASSOCIATION_RANDOM_NORMALS_H
#define NU_ENGINE_ASSOCIATION_RANDOM_NORMALS_H

#include <cstdint>

#include "nu/engine/rooms.h"

namespace nu::engine::association {

// Four random words for a counter and a key: Philox4x32-10 of J. K. Salmon, M. A. Moraes, R. O. Dror, D. E. Shaw,
// Parallel random numbers: as easy as 1, 2, 3, SC11. There is no state, so any sample can be drawn on its own.
struct RandomWords {
  std::uint32_t word[4];
};
RandomWords PhiloxWords(const RandomWords& counter, std::uint32_t key0, std::uint32_t key1);

// Independent values with mean 0 and standard deviation 1, the same bits on every machine (G. E. P. Box, M. E. Muller,
// Annals of Mathematical Statistics 29, 1958). Streams of a seed are independent of each other.
class RandomNormals {
 public:
  RandomNormals(std::uint64_t seed, std::uint64_t stream) : m_seed(seed), m_stream(stream) {}

  double Next();

 private:
  std::uint64_t m_seed;
  std::uint64_t m_stream;
  std::uint64_t m_drawn = 0;
  double m_second = 0.0;  // of the pair that the last words gave
};

}  // namespace nu::engine::association

#endif
