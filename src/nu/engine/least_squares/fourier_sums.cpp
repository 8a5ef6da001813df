#include "nu/engine/least_squares/fourier_sums.h"

#include <cmath>
#include <cstdint>
#include <numbers>

#include "nu/engine/base/elementary.h"

namespace nu::engine::least_squares {
namespace {

constexpr double kPi = std::numbers::pi;
constexpr double kTurn = 2.0 * kPi;

// A sample reaches kSpread grid points to either side; the width of the Gaussian balances what is cut off against what
// the grid folds back, for a grid twice as fine as the highest frequency asks for.
constexpr double kSteepness = 3.0 * kPi / (4.0 * FourierSums::kSpread);

constexpr std::size_t kLeastGrid = 32;

// Factors are computed for so many steps, and turned from there.
constexpr std::size_t kTurnBlock = 64;

// A part of the grid that fits a cache goes through all of its levels before the next part.
constexpr std::size_t kCachedPart = 4096;

Phasor Turn(double angle) {
  const auto [sine, cosine] = SinCos(angle);
  return {cosine, sine};
}

// The factors of all levels of a cached part: those of size s from s / 2 on.
std::vector<Phasor> SmallTurns() {
  std::vector<Phasor> turns(kCachedPart);
  for (std::size_t size = 2; size <= kCachedPart; size *= 2) {
    for (std::size_t j = 0; j < size / 2; ++j) {
      turns[size / 2 + j] = Turn(kTurn * static_cast<double>(j) / static_cast<double>(size));
    }
  }
  return turns;
}

inline void Butterfly(Phasor& a, Phasor& b, Phasor w) {
  const Phasor difference{a.re - b.re, a.im - b.im};
  a = {a.re + b.re, a.im + b.im};
  b = {difference.re * w.re - difference.im * w.im, difference.re * w.im + difference.im * w.re};
}

void SplitLarge(Phasor* x, std::size_t size) {
  const double step = kTurn / static_cast<double>(size);
  Phasor fine[kTurnBlock];
  for (std::size_t j = 0; j < kTurnBlock; ++j) fine[j] = Turn(step * static_cast<double>(j));
  for (std::size_t begin = 0; begin < size / 2; begin += kTurnBlock) {
    const Phasor base = Turn(step * static_cast<double>(begin));
    for (std::size_t j = 0; j < kTurnBlock; ++j) {
      const Phasor w{base.re * fine[j].re - base.im * fine[j].im, base.re * fine[j].im + base.im * fine[j].re};
      Butterfly(x[begin + j], x[begin + j + size / 2], w);
    }
  }
}

// Decimation in frequency (W. M. Gentleman, G. Sande, AFIPS 29, 1966), depth first: element k ends where its bits in
// reverse order point.
void TransformPart(Phasor* x, std::size_t size, const std::vector<Phasor>& turns) {
  if (size > kCachedPart) {
    SplitLarge(x, size);
    TransformPart(x, size / 2, turns);
    TransformPart(x + size / 2, size / 2, turns);
    return;
  }
  for (std::size_t part = size; part > 1; part /= 2) {
    const Phasor* w = &turns[part / 2];
    for (std::size_t begin = 0; begin < size; begin += part) {
      for (std::size_t j = 0; j < part / 2; ++j) Butterfly(x[begin + j], x[begin + j + part / 2], w[j]);
    }
  }
}

std::size_t ReversedBits(std::size_t k, int bits) {
  std::uint64_t v = k;
  v = ((v >> 1) & 0x5555555555555555u) | ((v & 0x5555555555555555u) << 1);
  v = ((v >> 2) & 0x3333333333333333u) | ((v & 0x3333333333333333u) << 2);
  v = ((v >> 4) & 0x0F0F0F0F0F0F0F0Fu) | ((v & 0x0F0F0F0F0F0F0F0Fu) << 4);
  v = ((v >> 8) & 0x00FF00FF00FF00FFu) | ((v & 0x00FF00FF00FF00FFu) << 8);
  v = ((v >> 16) & 0x0000FFFF0000FFFFu) | ((v & 0x0000FFFF0000FFFFu) << 16);
  v = (v >> 32) | (v << 32);
  return static_cast<std::size_t>(v >> (64 - bits));
}

}  // namespace

FourierSums::FourierSums(std::size_t reach) {
  std::size_t size = kLeastGrid;
  while (size < 4 * reach) size *= 2;
  m_grid.resize(size);
  while (size >>= 1) ++m_levels;
  for (int l = 0; l <= kSpread; ++l) m_fall[l] = Exp(-kSteepness * l * l);
}

// e^(-s (d - l)^2) = e^(-s d^2) e^(2 s d)^l e^(-s l^2), with d the place of the sample between two grid points.
FourierSums::Place FourierSums::PlaceAt(double gridAngle) const {
  const double floor = std::floor(gridAngle);
  const double d = gridAngle - floor;
  const double growth = Exp(2.0 * kSteepness * d);
  const double shrink = 1.0 / growth;
  Place place;
  place.first = static_cast<std::size_t>(static_cast<std::int64_t>(floor)) - (kSpread - 1);
  double* nearest = place.weight + kSpread - 1;
  double up = Exp(-kSteepness * d * d);
  double down = up;
  *nearest = up;
  for (int l = 1; l <= kSpread; ++l) {
    up *= growth;
    down *= shrink;
    nearest[l] = up * m_fall[l];
    if (l < kSpread) nearest[-l] = down * m_fall[l];
  }
  return place;
}

void FourierSums::Transform() {
  TransformPart(m_grid.data(), m_grid.size(), SmallTurns());
}

double FourierSums::Factor(std::ptrdiff_t k) const {
  const double turn = kPi * static_cast<double>(k) / static_cast<double>(m_grid.size());
  return std::sqrt(kSteepness / kPi) * Exp(turn * turn / kSteepness);
}

std::ptrdiff_t FourierSums::IndexAt(std::size_t place) const {
  const auto k = static_cast<std::ptrdiff_t>(ReversedBits(place, m_levels));
  return place % 2 == 0 ? k : k - static_cast<std::ptrdiff_t>(m_grid.size());
}

}  // namespace nu::engine::least_squares
