#ifndef NU_ENGINE_LEAST_SQUARES_ALGEBRAIC_CONIC_H
#define NU_ENGINE_LEAST_SQUARES_ALGEBRAIC_CONIC_H

#include "nu/engine/points/point_view.h"

namespace nu::engine::least_squares {

// a x^2 + b x y + c y^2 + d x + e y + f = 0.
struct Quadratic2 {
  double a, b, c, d, e, f;
};

enum class QuadraticKind { none, ellipse, hyperbola, parabola, lines };

// The equation whose values at the points have the least sum of squares among those with a^2 + b^2 / 2 + c^2 = 1; it
// moves and turns with the points. The one of a, b and c that is largest in magnitude is positive. The points are
// finite and there is one at least; what is not finite in the result is too large for doubles. Throws std::bad_alloc.
Quadratic2 FittedQuadratic(const PointView& points);

// What the equation describes. It counts as zero: an eigenvalue of the quadratic part below tol times the other; the
// constant, or the slope along a parabola, below tol times the terms that add up to it. A single point, and an equation
// without solutions, are none of the kinds; a single line is lines.
QuadraticKind KindOf(const Quadratic2& equation, double tol);

}  // namespace nu::engine::least_squares

#endif
