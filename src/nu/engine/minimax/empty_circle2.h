#ifndef NU_ENGINE_MINIMAX_EMPTY_CIRCLE2_H
#define NU_ENGINE_MINIMAX_EMPTY_CIRCLE2_H

#include "nu/engine/hulls/grid2.h"

namespace nu::engine::minimax {

// The largest circle without a point in its interior whose centre is in the convex hull of the points. With three
// contacts the centre is the sum of multiplier * contact; with two it is on the border of the hull, and
// that sum differs from it at a right angle to the border. The multipliers add up to 1.
struct EmptyCircle {
  bool found = false;  // false when a coordinate is not finite or all points coincide
  Vec2 centre;
  double radius = 0.0;
  int contacts = 0;
  Vec2 contact[3];
  double multiplier[3] = {};
};

// Along two axes, relative to the origin of the blocks. Global; of circles whose radii agree to rounding the one with
// the least x of the centre, of these the one with the least y. A few passes over many points of which few matter, as
// on a measured outline; else n log n.
EmptyCircle LargestEmptyCircle(PointBlocks& points, const Vec3 (&axes)[2]);

}  // namespace nu::engine::minimax

#endif
