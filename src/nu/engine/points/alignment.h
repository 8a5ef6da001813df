#ifndef NU_ENGINE_POINTS_ALIGNMENT_H
#define NU_ENGINE_POINTS_ALIGNMENT_H

#include "nu/engine/points/point_view.h"

// Whether points have the extent that a fit needs. `tol` is a length, so the same part in another unit, with `tol`
// converted as well, gets the same answer. What the rounding errors of the coordinates make is no extent, whatever
// `tol` is. Points that are not finite are on no line and in no plane. The first two throw std::bad_alloc.
namespace nu::engine::points {

// No point is farther than `tol` from the least-squares line of the points; always so for two of them.
bool LieOnOneLine(PointView points, double tol);

// The signed distances of the points from their least-squares plane differ by `tol` at most; always so for three.
bool LieInOnePlane(PointView points, double tol);

// The z coordinates of one point or more are equal.
bool HaveOneHeight(PointView points);

// Point 0, the first point that does not coincide with it, and the first one after that whose distance from the line
// through both has a component of at least `tol`. False where there are none.
bool FindTriangle(PointView points, double tol, int (&corner)[3]);

}  // namespace nu::engine::points

#endif
