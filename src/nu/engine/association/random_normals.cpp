#include "nu/engine/association/random_normals.h"

#include <cmath>

#include "nu/engine/base/elementary.h"
#include "nu/foundation/constants.h"

namespace nu::engine::association {
namespace {

// The multipliers of the paper, and the increments of the key: the golden ratio and the root of 3.
constexpr std::uint64_t kMultiplier0 = 0xD2511F53;
constexpr std::uint64_t kMultiplier1 = 0xCD9E8D57;
constexpr std::uint32_t kIncrement0 = 0x9E3779B9;
constexpr std::uint32_t kIncrement1 = 0xBB67AE85;
constexpr int kRounds = 10;

constexpr std::uint32_t High(std::uint64_t value) {
  return static_cast<std::uint32_t>(value >> 32);
}
constexpr std::uint32_t Low(std::uint64_t value) {
  return static_cast<std::uint32_t>(value);
}

// 53 bits, in [0, 1).
double Fraction(std::uint32_t high, std::uint32_t low) {
  const std::uint64_t bits = (std::uint64_t{high} << 32) | low;
  return static_cast<double>(bits >> 11) * 0x1p-53;
}

}  // namespace

RandomWords PhiloxWords(const RandomWords& counter, std::uint32_t key0, std::uint32_t key1) {
  RandomWords c = counter;
  for (int round = 0; round < kRounds; ++round) {
    const std::uint64_t first = kMultiplier0 * c.word[0];
    const std::uint64_t second = kMultiplier1 * c.word[2];
    c = {{High(second) ^ c.word[1] ^ key0, Low(second), High(first) ^ c.word[3] ^ key1, Low(first)}};
    key0 += kIncrement0;
    key1 += kIncrement1;
  }
  return c;
}

double RandomNormals::Next() {
  if (m_drawn++ % 2 != 0) return m_second;
  const std::uint64_t pair = m_drawn / 2;
  const RandomWords words =
      PhiloxWords({{Low(pair), High(pair), Low(m_stream), High(m_stream)}}, Low(m_seed), High(m_seed));
  // The logarithm takes the fraction from the other end, where it is never 0.
  const double radius = std::sqrt(-2.0 * Log(1.0 - Fraction(words.word[0], words.word[1])));
  const SineCosine angle = SinCos(2.0 * Nu_PI * Fraction(words.word[2], words.word[3]));
  m_second = radius * angle.sine;
  return radius * angle.cosine;
}

}  // namespace nu::engine::association
