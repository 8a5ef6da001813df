#include "nu/numerics/internal/neville.h"

#include <algorithm>
#include <cmath>
#include <limits>

// Neville's scheme (E. H. Neville, J. Indian Math. Soc. 20, 1934) on the differences between neighbouring entries: with
// P_{i..j} the polynomial through the points i to j at x,
//   up_i = P_{i..i+m} - P_{i..i+m-1},   down_i = P_{i..i+m} - P_{i+1..i+m}.
// The value is reached from the nearest node by adding points on both sides in turn, so the corrections shrink while
// the points converge. The last correction is what leaving out one outermost point changes; rounding adds to it in
// proportion to all of them.

namespace nu::internal {

PolynomialValue NevilleValue(const double* x, const double* y, int n, int nearest, double at, double* room) {
  double* up = room;
  double* down = room + n;
  std::copy_n(y, n, up);
  std::copy_n(y, n, down);
  double value = y[nearest];
  double correction = 0.0;
  double magnitude = std::fabs(value);
  int first = nearest;  // the value so far is that of the points first to first + m - 1
  for (int m = 1; m < n; ++m) {
    for (int i = 0; i + m < n; ++i) {
      const double share = (up[i + 1] - down[i]) / (x[i + m] - x[i]);
      up[i] = (x[i] - at) * -share;
      down[i] = (at - x[i + m]) * share;
    }
    const bool extendsDown = first > 0 && (first + m >= n || at - x[first - 1] < x[first + m] - at);
    if (extendsDown) --first;
    correction = extendsDown ? down[first] : up[first];
    value += correction;
    magnitude += std::fabs(correction);
  }
  return {value, std::fabs(correction) + std::numeric_limits<double>::epsilon() * magnitude};
}

}  // namespace nu::internal
