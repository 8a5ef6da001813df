#ifndef NU_ENGINE_ROOTS_POLYNOMIAL_LEAST_SQUARES_H
#define NU_ENGINE_ROOTS_POLYNOMIAL_LEAST_SQUARES_H

#include "nu/engine/rooms.h"

namespace nu::engine::roots {

struct Samples {
  const double* x;
  const double* y;
  int count;
};

// The coefficients a[0..degree] that minimise the sum of (y - p(x))^2 over at least one sample; where the powers of x
// are linearly dependent, by singular values not above `tolerance` times the largest, those of the smallest norm. A
// value y that is not finite makes all of them NaN. False when a power of an x is not finite or a singular value is not
// found; `zero` is the decomposition's. Throws std::bad_alloc.
bool SolvePolynomial(const Samples& samples, int degree, double tolerance, double zero, double* a);

// Returns the sum of (y - p(x))^2 for the polynomial with coefficients a[0..degree].
double ResidualSum(const Samples& samples, const double* a, int degree);

}  // namespace nu::engine::roots

#endif
