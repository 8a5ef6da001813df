#include "nu/engine/roots/chebyshev_series.h"

#include <algorithm>
#include <utility>

namespace nu::engine::roots {

void SeriesToPowers(double constant, const double* c, int n, const SeriesFrame& frame, double* p, double* work) {
  // Clenshaw's recurrence on polynomials in y, which never forms the large coefficients of T_n: p becomes 2y p - work
  // + c_j, and work the former p.
  std::fill_n(p, n + 1, 0.0);
  std::fill_n(work, n + 1, 0.0);
  for (int j = n; j >= 1; --j) {
    for (int i = n - j; i >= 1; --i) work[i] = std::exchange(p[i], 2.0 * p[i - 1] - work[i]);
    work[0] = std::exchange(p[0], c[j] - work[0]);
  }
  for (int i = n; i >= 1; --i) p[i] = p[i - 1] - work[i];
  p[0] = constant - work[0];

  double power = 1.0;
  for (int i = 1; i <= n; ++i) p[i] *= power *= frame.stretch;
  if (frame.centre == 0.0) return;
  // Shifts the polynomial by synthetic division.
  for (int j = 0; j < n; ++j) {
    for (int i = n - 1; i >= j; --i) p[i] -= frame.centre * p[i + 1];
  }
}

}  // namespace nu::engine::roots
