#ifndef NU_ENGINE_MINIMAX_SLAB3_H
#define NU_ENGINE_MINIMAX_SLAB3_H

#include "nu/engine/base/step_monitor.h"
#include "nu/engine/points/point_view.h"
#include "nu/engine/shapes/vec3.h"

namespace nu::engine::minimax {

// The space between two parallel planes, with the points on them that hold it.
struct Slab3 {
  // Else a coordinate is NaN or infinite, or the monitor says stop, or signs contradict each other, as no exact ones
  // do.
  bool found = false;
  // Unit length; the last of its components that is not zero is positive.
  Vec3 normal{0.0, 0.0, 1.0};
  // Signed distance along the normal from the given origin to the middle plane.
  double height = 0.0;
  double width = 0.0;

  // Indices of contact points, with a multiplier each: not negative, of sum 1 on either plane, and the combinations of
  // the contacts of the two planes lie across from each other, so that no turn makes the slab narrower. A vertex stands
  // against a face (three contacts on one plane, one on the other) or an edge against an edge. Where a whole face lies
  // on either plane the multipliers may be those of the nearest such combination. The contacts on the plane to which
  // the normal points come first.
  int contact[4] = {-1, -1, -1, -1};
  double share[4] = {0.0, 0.0, 0.0, 0.0};
  int above = 0;  // how many these are: 1, 2 or 3; 0 when points on one plane or less leave the width 0
};

// The slab of least width over all directions, for one point or more. It is that of the given
// doubles: the width is right to about 1e-15 of itself. Of slabs whose widths agree to that, the one with the largest z
// of the normal is taken, of these the one with the largest y, then x, whatever the order of the points. A few passes
// over the points as a rule, each of which the monitor sees; n log n when most of them lie on the hull.
Slab3 NarrowestSlab(const PointView& points, const Vec3& origin, const StepMonitor& monitor = {});

}  // namespace nu::engine::minimax

#endif
