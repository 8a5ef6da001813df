#ifndef NU_ENGINE_HULLS_ORIENTATION2_H
#define NU_ENGINE_HULLS_ORIENTATION2_H

#include <cmath>

#include "nu/engine/base/double_double.h"

namespace nu::engine::hulls {

// (q - p) x (s - r), exact but for the last of about 100 bits; its sign is right. Here and below: as long as no product
// of two coordinates overflows or falls below the smallest normal numbers.
DoubleDouble ExactCross2(const double* p, const double* q, const double* r, const double* s);

// The sign, as -1, 0 or 1, of (q - p) x (s - r), without error. The rounded determinant decides where its error bound
// allows; J. R. Shewchuk, Adaptive precision floating-point arithmetic and fast robust geometric predicates, Discrete &
// Computational Geometry 18 (1997).
inline int Turn2(const double* p, const double* q, const double* r, const double* s) {
  // (3 + 16 u) u with the unit roundoff u = 2^-53, rounded up.
  constexpr double kRelativeError = 0x1.8000000000010p-52;
  const double left = (q[0] - p[0]) * (s[1] - r[1]);
  const double right = (q[1] - p[1]) * (s[0] - r[0]);
  const double determinant = left - right;
  if (std::fabs(determinant) > kRelativeError * (std::fabs(left) + std::fabs(right))) return determinant > 0.0 ? 1 : -1;
  const double exact = ExactCross2(p, q, r, s).high;
  return (exact > 0.0) - (exact < 0.0);
}

// 1 when a, b, c turn counter-clockwise, -1 when clockwise, 0 when they lie on one line, without error.
inline int Orientation2(const double* a, const double* b, const double* c) {
  return Turn2(c, a, c, b);
}

}  // namespace nu::engine::hulls

#endif
