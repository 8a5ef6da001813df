#include "nu/engine/quadrature/lagrange.h"

#include <algorithm>
#include <cmath>

#include "nu/engine/base/floating_point.h"

// Lagrange's formula p(t) = sum of l_i(t) y_i, l_i(t) = product over k of (t - x_k) / (x_i - x_k). Every l_i has a
// relative error of a few roundings per factor and nothing cancels but the sum, so the result is that of data changed
// by as much (N. J. Higham, IMA J. Numer. Anal. 24, 2004); schemes of differences lose everything at a few hundred
// points.
//
// Leaving out node j multiplies l_i by (x_i - x_j) / (t - x_j). What the farther of the outermost nodes contributes, or
// both, is the estimate of the error: one alone contributes nothing where symmetry makes the highest coefficient
// vanish.

namespace nu::engine::quadrature {

namespace {

double Basis(const double* x, int n, int i, double at) {
  double product = 1.0;
  for (int k = 0; k < n; ++k) {
    if (k != i) product *= (at - x[k]) / (x[i] - x[k]);
  }
  return product;
}

}  // namespace

PolynomialValue LagrangeValue(const double* x, const double* y, int n, double at) {
  const double first = x[0];
  const double last = x[n - 1];
  const double farther = at - first > last - at ? first : last;
  double value = 0.0;
  double withoutOne = 0.0;
  double withoutBoth = 0.0;
  double magnitude = 0.0;
  for (int i = 0; i < n; ++i) {
    const double term = Basis(x, n, i, at) * y[i];
    value += term;
    magnitude += std::fabs(term);
    withoutOne += term * ((x[i] - farther) / (at - farther));
    withoutBoth += term * ((x[i] - first) / (at - first)) * ((x[i] - last) / (at - last));
  }
  const double both = n > 2 ? std::fabs(value - withoutBoth) : 0.0;
  const double rounding = n * kEpsilon * magnitude;
  return {value, std::max(std::fabs(value - withoutOne), both) + rounding};
}

}  // namespace nu::engine::quadrature
