#ifndef NU_ENGINE_LINEAR_SMALL_SVD_H
#define NU_ENGINE_LINEAR_SMALL_SVD_H

#include <algorithm>
#include <cmath>
#include <utility>

#include "nu/engine/base/floating_point.h"
#include "nu/engine/rooms.h"

namespace nu::engine::linear {

// Singular values, descending, and right singular vectors of an N x N matrix; axis[k] belongs to value[k]. `work[k]` is
// the matrix times axis[k].
template<int N>
struct SmallSvd {
  double value[N];
  double axis[N][N];
  double work[N][N];
};

// One-sided Jacobi rotations (M. R. Hestenes, J. SIAM 6, 1958): pairs of columns are rotated until all are orthogonal,
// which is also accurate for the small singular values of graded matrices. columns[j][i] is entry (i, j); entries
// should be within 1e+-100. NaN gives NaN.
template<int N>
SmallSvd<N> SvdOfColumns(const double (&columns)[N][N]) {
  constexpr double kOrthogonal = kEpsilon;
  constexpr int kMaxSweeps = 40;  // five or six are enough; the bound ends the loop for NaN
  SmallSvd<N> svd;
  std::copy_n(&columns[0][0], N * N, &svd.work[0][0]);
  for (int i = 0; i < N; ++i)
    for (int j = 0; j < N; ++j) svd.axis[i][j] = i == j ? 1.0 : 0.0;
  const auto dot = [](const double* a, const double* b) {
    double sum = 0.0;
    for (int i = 0; i < N; ++i) sum += a[i] * b[i];
    return sum;
  };
  const auto turn = [](double* a, double* b, double c, double s) {
    for (int i = 0; i < N; ++i) {
      const double first = a[i];
      a[i] = c * first - s * b[i];
      b[i] = s * first + c * b[i];
    }
  };
  bool turned = true;
  for (int sweep = 0; sweep < kMaxSweeps && turned; ++sweep) {
    turned = false;
    for (int p = 0; p < N - 1; ++p) {
      for (int q = p + 1; q < N; ++q) {
        const double pp = dot(svd.work[p], svd.work[p]);
        const double qq = dot(svd.work[q], svd.work[q]);
        const double pq = dot(svd.work[p], svd.work[q]);
        if (!(std::fabs(pq) > kOrthogonal * std::sqrt(pp) * std::sqrt(qq))) continue;
        const double tau = (qq - pp) / (2.0 * pq);
        const double t = std::copysign(1.0, tau) / (std::fabs(tau) + std::sqrt(1.0 + tau * tau));
        const double c = 1.0 / std::sqrt(1.0 + t * t);
        turn(svd.work[p], svd.work[q], c, c * t);
        turn(svd.axis[p], svd.axis[q], c, c * t);
        turned = true;
      }
    }
  }
  for (int k = 0; k < N; ++k) svd.value[k] = std::sqrt(dot(svd.work[k], svd.work[k]));
  for (int k = 0; k < N - 1; ++k) {
    int largest = k;
    for (int j = k + 1; j < N; ++j)
      if (svd.value[j] > svd.value[largest]) largest = j;
    if (largest == k) continue;
    std::swap(svd.value[k], svd.value[largest]);
    std::swap(svd.axis[k], svd.axis[largest]);
    std::swap(svd.work[k], svd.work[largest]);
  }
  return svd;
}

}  // namespace nu::engine::linear

#endif
