#ifndef NU_ENGINE_LEAST_SQUARES_FOURIER_SUMS_H
#define NU_ENGINE_LEAST_SQUARES_FOURIER_SUMS_H

#include <bit>
#include <cstddef>
#include <vector>

#include "nu/engine/rooms.h"

namespace nu::engine::least_squares {

struct Phasor {
  double re = 0.0;
  double im = 0.0;
};

// Sums of c_j e^(i k a_j) over samples with complex c_j and angles a_j, for all integers k with |k| <= Reach(), to
// about 1e-6 of the sum of |c_j|: the samples are spread over a grid with a Gaussian, the grid is transformed, and the
// Gaussian divided out (A. Dutt, V. Rokhlin, SIAM J. Sci. Comput. 14, 1993; L. Greengard, J.-Y. Lee, SIAM Review 46,
// 2004). The time is that of the transform, and a dozen operations for each sample.
class FourierSums {
 public:
  static constexpr int kSpread = 6;

  // Throws std::bad_alloc, or std::length_error for a reach that no memory would hold.
  explicit FourierSums(std::size_t reach);

  std::size_t Reach() const { return m_grid.size() / 4; }

  // Where a sample acts on the grid. Sums of the same reach share it.
  struct Place {
    std::size_t first;
    double weight[2 * kSpread];
  };
  // The angle is any finite number of grid units; Size() units are a full turn.
  Place PlaceAt(double gridAngle) const;
  // Before Transform.
  void Add(const Place& place, Phasor value) {
    for (std::size_t l = 0; l < 2 * kSpread; ++l) {
      Phasor& at = m_grid[(place.first + l) & (m_grid.size() - 1)];
      at.re += place.weight[l] * value.re;
      at.im += place.weight[l] * value.im;
    }
  }
  std::size_t Size() const { return m_grid.size(); }

  void Transform();
  // After it: the sum for k = IndexAt(place), from -Reach() to Reach(), is Factor(k), which depends on Size() and |k|
  // only, times At(place). The sum for -k is at MirrorOf(place). Neighbouring places differ in the highest bits of k.
  double Factor(std::ptrdiff_t k) const;
  Phasor At(std::size_t place) const { return m_grid[place]; }
  std::ptrdiff_t IndexAt(std::size_t place) const;
  static std::size_t MirrorOf(std::size_t place) { return place == 0 ? 0 : 3 * std::bit_floor(place) - 1 - place; }

 private:
  std::vector<Phasor> m_grid;
  int m_levels = 0;
  double m_fall[kSpread + 1];
};

}  // namespace nu::engine::least_squares

#endif
