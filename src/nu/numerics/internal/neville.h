#ifndef NU_NUMERICS_INTERNAL_NEVILLE_H
#define NU_NUMERICS_INTERNAL_NEVILLE_H

namespace nu::internal {

struct PolynomialValue {
  double value;
  double error;
};

// The polynomial of least degree through the n points (x_i, y_i) at `at`, n >= 1, the nodes distinct, `nearest` the
// index of the one next to `at`. n^2 / 2 steps; the room is 2 n doubles.
PolynomialValue NevilleValue(const double* x, const double* y, int n, int nearest, double at, double* room);

}  // namespace nu::internal

#endif
