#ifndef NU_GEOMETRY_INTERNAL_ORIENTATION2_H
#define NU_GEOMETRY_INTERNAL_ORIENTATION2_H

#include <cmath>

namespace nu::internal {

// The exact sign, as -1, 0 or 1, of (ax by - ay bx) + (bx cy - by cx) + (cx ay - cy ax).
int ExactOrientation2(const double* a, const double* b, const double* c);

// 1 when a, b, c turn counter-clockwise, -1 when clockwise, 0 when they lie on one line, without error as long as no
// product of two coordinates overflows or falls below the smallest normal numbers. The rounded determinant decides
// where its error bound allows; J. R. Shewchuk, Adaptive precision floating-point arithmetic and fast robust geometric
// predicates, Discrete & Computational Geometry 18 (1997).
inline int Orientation2(const double* a, const double* b, const double* c) {
  // (3 + 16 u) u with the unit roundoff u = 2^-53, rounded up.
  constexpr double kRelativeError = 0x1.8000000000010p-52;
  const double left = (a[0] - c[0]) * (b[1] - c[1]);
  const double right = (a[1] - c[1]) * (b[0] - c[0]);
  const double determinant = left - right;
  if (std::fabs(determinant) > kRelativeError * (std::fabs(left) + std::fabs(right))) return determinant > 0.0 ? 1 : -1;
  return ExactOrientation2(a, b, c);
}

}  // namespace nu::internal

#endif
