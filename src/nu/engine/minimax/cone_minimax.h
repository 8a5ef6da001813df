#ifndef NU_ENGINE_MINIMAX_CONE_MINIMAX_H
#define NU_ENGINE_MINIMAX_CONE_MINIMAX_H

#include "nu/engine/minimax/cone_distance.h"
#include "nu/engine/minimax/minimax.h"

namespace nu::engine::minimax {

// The space between two parallel cones that no small move makes narrower, and the points that hold it: the multipliers
// are not negative and add up to 1. With phi the angle around the axis and y the place along the generator, the sums of
// sign * multiplier times 1, sin phi, cos phi, and of the same times y, are zero. Everything is in the unit of the
// points, from the origin of the blocks. Of points on both nappes the zone is between the extreme distances from the
// cone, and need not be in the middle of them.
struct ConeZone : Contacts {
  MinimaxEnd end = MinimaxEnd::stalled;
  bool linearised = false;  // the deviations from the start and their derivatives are finite
  long steps = 0;
  Cone3 cone;  // half-way between the two
  double width = 0.0;
  double rounding = 0.0;  // the error of a distance from it
};

// The narrowest zone next to a cone with deviations over a range of `form`, or, where none is next to it, next to
// another cone, and not wider; `mean` is that of the points. The limit is on the steps from the first.
ConeZone NarrowestConeZone(PointBlocks& points, const Vec3& mean, const Cone3& start, double form, long limit,
                           const StepMonitor& monitor = {});

}  // namespace nu::engine::minimax

#endif
