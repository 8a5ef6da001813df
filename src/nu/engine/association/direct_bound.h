#ifndef NU_ENGINE_ASSOCIATION_DIRECT_BOUND_H
#define NU_ENGINE_ASSOCIATION_DIRECT_BOUND_H

#include "nu/engine/association/global_bound.h"

namespace nu::engine::association {

// From solvers that are global themselves, whatever their input:
//
//   line in a plane, zone: calipers around the convex hull (strip2.h); plane, zone: all pairs of parallel planes of
//   support (slab3.h); circle, zone: a bound or all corners of the two Voronoi diagrams' overlay (annulus2.h); circle
//   and sphere, circumscribed: a convex problem (enclosing_ball.h).
//
// What they find is the bound, up to rounding. `gap` is in units of the reach of the points.
GlobalBound BoundDirectly(const PointView& points, const Vec3& origin, const Feature& known, BoundedCriterion criterion,
                          double gap);

}  // namespace nu::engine::association

#endif
