#ifndef NU_ENGINE_ASSOCIATION_CIRCLE_CELL_H
#define NU_ENGINE_ASSOCIATION_CIRCLE_CELL_H

#include <vector>

#include "nu/engine/association/cell_bound.h"

// The box of axes around a circle in space that is proven by curvature. Fewer contacts than unknowns + 1 often hold a
// thin ring; then some moves of its axis change no distance to first order, and the circle is an optimum because the
// distances grow with the square of these moves.
namespace nu::engine::association {

// With weights w_i >= 0 of the sum 1, of points at the radii R_i and heights z_i of an axis, the largest distance t
// from a circle of any radius r at any height h around it has
//
//   t^2 >= sum w_i ((R_i - r)^2 + (z_i - h)^2) >= sum w_i ((R_i - R)^2 + (z_i - z)^2) = V(axis),
//
// R and z the weighted means: V is what weighted least squares minimise. The multipliers of the contacts are weights
// for which the gradient of V vanishes where t is smallest and V is t^2. Where the second derivatives of V, by interval
// arithmetic over a box, are positive definite, V is convex, and nowhere below its value in the middle by more than the
// little that the gradient there allows.
//
// A box around the middle of `unit`, no larger than that, in which sqrt(V) is proven not to be below `least`; with half
// sides of 0 where none is found.
UnknownCell<4> ConvexCell(const UnknownCell<4>& unit, const std::vector<Vec3>& points,
                          const std::vector<double>& weights, double least);

}  // namespace nu::engine::association

#endif
