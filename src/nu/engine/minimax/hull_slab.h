#ifndef NU_ENGINE_MINIMAX_HULL_SLAB_H
#define NU_ENGINE_MINIMAX_HULL_SLAB_H

#include "nu/engine/base/floating_point.h"
#include "nu/engine/hulls/hull3.h"
#include "nu/engine/minimax/direction_cells.h"
#include "nu/engine/shapes/wide_vec3.h"

namespace nu::engine::minimax {

// Squared widths that agree to this are equal: it is above the rounding of a width in double-double arithmetic for
// slabs down to about 1e-8 of the size, and below what tells the faces of a part apart that only looks symmetrical.
inline constexpr double kSameSlab = 0x1p-70;
// Relative, far above the rounding of a square or a root.
inline constexpr double kSlabMargin = 1e-12;
// Slabs are found that far beyond the border of a cell of directions.
inline constexpr double kCellSlack = 0x1p-48;

// A slab on points of the hull. The normal points from the plane of `low` to that of `high`.
struct HullSlab {
  HullSlab() = default;
  HullSlab(int a, int b, int c, int d, int countAbove) : corner{a, b, c, d}, above(countAbove) {}

  WideVec3 normal;  // unit length
  DoubleDouble width;
  DoubleDouble square{kInfinity};  // of the width
  const double* high = nullptr;
  const double* low = nullptr;
  int corner[4] = {-1, -1, -1, -1};
  int above = 0;  // so many of the corners, the first ones, are on the upper plane
  double share[4] = {};
  double leastShare = 0.0;
};

// By the width; of slabs whose widths agree by the normal, as NarrowestSlab promises.
bool IsBetter(const HullSlab& found, const HullSlab& best);

// The narrowest slab of a hull of dimension 3, of those along the directions of a cell if one is given. Its square
// stays infinite when no slab is within the limit. False when signs contradict each other.
bool FindNarrowest(const Hull3& hull, double limit, const DirectionCell* cell, HullSlab& narrowest);

// Points in one plane or less: a plane that holds them, of a line the one that is nearest to level. Of a hull all of
// whose faces are slivers it is such a plane of three corners.
HullSlab FlatSlab(const Hull3& hull);

}  // namespace nu::engine::minimax

#endif
