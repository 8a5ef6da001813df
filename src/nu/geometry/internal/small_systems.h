#ifndef NU_GEOMETRY_INTERNAL_SMALL_SYSTEMS_H
#define NU_GEOMETRY_INTERNAL_SMALL_SYSTEMS_H

#include <algorithm>
#include <cmath>
#include <limits>

#include "nu/geometry/internal/small_svd.h"
#include "nu/linalg/internal/tall_qr.h"

// The few equations that a step of a fit comes down to.
namespace nu::internal {

// Of a finished reduction with N unknowns and one right-hand side, the solution of least length in columns of unit
// length. False when it is not finite.
template<int N>
bool SolveReduced(const TallReduction& reduction, double (&x)[N]) {
  constexpr double kSingular = N * std::numeric_limits<double>::epsilon();
  double scaled[N][N] = {};
  double norm[N];
  for (int j = 0; j < N; ++j) {
    norm[j] = 0.0;
    for (int i = 0; i <= j; ++i) norm[j] = std::hypot(norm[j], reduction.R(i, j));
    for (int i = 0; i <= j && norm[j] > 0.0; ++i) scaled[j][i] = reduction.R(i, j) / norm[j];
  }
  const SmallSvd<N> svd = SvdOfColumns(scaled);
  if (!std::isfinite(svd.value[0])) return false;
  std::fill_n(x, N, 0.0);
  for (int k = 0; k < N; ++k) {
    if (!(svd.value[k] > kSingular * svd.value[0])) break;
    double part = 0.0;
    for (int i = 0; i < N; ++i) part += svd.work[k][i] * reduction.R(i, N);
    for (int j = 0; j < N; ++j)
      if (norm[j] > 0.0) x[j] += svd.axis[k][j] * (part / svd.value[k] / svd.value[k]) / norm[j];
  }
  return true;
}

}  // namespace nu::internal

#endif
