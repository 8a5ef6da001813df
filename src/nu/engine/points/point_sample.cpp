#include "nu/engine/points/point_sample.h"

#include <algorithm>
#include <cstdint>

namespace nu::engine::points {

PointSample::PointSample(PointView points, std::size_t most) : m_view(points) {
  const std::size_t n = points.Size();
  if (n <= most) return;
  m_copy = std::make_unique<double[]>(3 * most);
  std::uint64_t state = 1;
  for (std::size_t k = 0; k < most; ++k) {
    // The multiplier and addend of D. E. Knuth's MMIX; the upper bits are the random ones.
    state = state * 6364136223846793005u + 1442695040888963407u;
    const std::size_t begin = n * k / most;
    const std::size_t length = n * (k + 1) / most - begin;
    const std::size_t chosen = begin + static_cast<std::size_t>(state >> 33) % length;
    std::copy_n(points[chosen], 3, m_copy.get() + 3 * k);
  }
  m_view = {m_copy.get(), 3 * sizeof(double), most};
}

}  // namespace nu::engine::points
