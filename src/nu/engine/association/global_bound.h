#ifndef NU_ENGINE_ASSOCIATION_GLOBAL_BOUND_H
#define NU_ENGINE_ASSOCIATION_GLOBAL_BOUND_H

#include "nu/engine/association/feature.h"
#include "nu/engine/base/step_monitor.h"
#include "nu/engine/points/point_view.h"

namespace nu::engine::association {

enum class BoundedCriterion {
  zone,           // the width; of a line and a circle in space, twice the largest distance
  circumscribed,  // the radius; of a torus, the minor one
};

struct BoundLimits {
  // Boxes of parameters to look at. A pass over all points counts as boxes of as many points. Their number bounds the
  // memory, too: some hundred bytes for each.
  long boxes = 150000;
  // How far the bound may be below the criterion of a proven feature, in units of the farthest point's distance from
  // the middle of the points.
  double gap = 1e-9;
  // Called after every 1000 boxes or so, with their number so far in the place of that of the step, the criterion, and
  // the gap in the place of the length of the step.
  StepMonitor monitor = {};
};

struct GlobalBound {
  Feature feature;     // the best one found
  double best = 0.0;   // its criterion
  double bound = 0.0;  // no feature of its kind has a lower one; not above `best`
  bool improved = false;
  bool proven = false;     // the gap between the two is within what was asked for
  long boxes = 0;          // looked at
  bool cancelled = false;  // by the monitor; the bound is what was proven so far
};

// A lower bound on the criterion over all features of a kind, from a feature known, and a better one where the search
// comes across it. Points and features are relative to `origin`, which is among the points.
//
//   line in a plane, plane, circle        zone: from solvers that are global themselves; no boxes
//   circle, sphere                        circumscribed: the same
//   line, cylinder                        circumscribed, and the zone of a line: over the directions of the axis
//   sphere, cylinder, cone                zone: over boxes of centres, axes, semi-angles
//   circle in space (zone), torus (circumscribed): over boxes of axes, for all radii and heights
//
// They hold for all features, however far away their centres or axes are; for cones, where all points count from one
// nappe, as if it went on beyond the apex, and where `known` has both nappes also where each counts from its own. These
// take some times as many boxes. Where the kind has no such criterion, or where a coordinate is not finite,
// or no deviation is a number, `bound` is 0 and nothing is proven. The same numbers for the same input, whatever the
// machine. Throws std::bad_alloc.
GlobalBound BoundGlobally(const PointView& points, const Vec3& origin, const Feature& known, BoundedCriterion criterion,
                          const BoundLimits& limits);

}  // namespace nu::engine::association

#endif
