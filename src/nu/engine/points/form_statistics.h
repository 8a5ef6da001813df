#ifndef NU_ENGINE_POINTS_FORM_STATISTICS_H
#define NU_ENGINE_POINTS_FORM_STATISTICS_H

#include "nu/engine/base/floating_point.h"
#include "nu/engine/points/point_blocks.h"

namespace nu::engine::points {

// Sum of the squared deviations of a point set from a feature, and the extreme deviations, in the unit of the points.
struct Deviations {
  double sumSquares = 0.0;
  double smallest = 0.0;
  double largest = 0.0;
};

// Of no points.
inline constexpr Deviations kNoDeviations{0.0, kInfinity, -kInfinity};

inline void WidenExtremes(const Deviations& part, Deviations& total) {
  total.smallest = std::min(total.smallest, part.smallest);
  total.largest = std::max(total.largest, part.largest);
}

// In the unit of the points, of those of the blocks.
inline Deviations InUnit(const Deviations& d, double scale) {
  return {d.sumSquares / scale / scale, d.smallest / scale, d.largest / scale};
}

// Of all points, N sums and the extremes: `kernel(block, sums, part)` finds those of a block.
template<int N, class Kernel>
BlockSums<N> SumOver(PointBlocks& points, Deviations& extremes, Kernel kernel) {
  extremes = kNoDeviations;
  points.BeginRanges();
  return SumOver<N>(points, [&](const PointBlock& block, double(&sums)[N]) {
    Deviations part;
    kernel(block, sums, part);
    WidenExtremes(part, extremes);
    points.NoteRange(part.smallest, part.largest);
  });
}

// Of all points, in the unit of the blocks: `kernel(block, part)` finds those of a block.
template<class Kernel>
Deviations OverBlocks(PointBlocks& points, Kernel kernel) {
  Deviations total;
  const auto sum = SumOver<1>(points, total, [&](const PointBlock& block, double(&sums)[1], Deviations& part) {
    kernel(block, part);
    sums[0] = part.sumSquares;
  });
  total.sumSquares = sum[0];
  return total;
}

// From a plane through `mean` (as the blocks have it: relative to their origin, scaled), along its unit normal.
Deviations PlaneDeviations(PointBlocks& points, const Vec3& mean, const Vec3& normal);

// From a line in a plane z = const: the z component of direction x (p - mean).
Deviations PlanarLineDeviations(PointBlocks& points, const Vec3& mean, const Vec3& direction);

// Distances from a line in space; the smallest is given as 0.
Deviations SpaceLineDeviations(PointBlocks& points, const Vec3& mean, const Vec3& direction);

}  // namespace nu::engine::points

#endif
