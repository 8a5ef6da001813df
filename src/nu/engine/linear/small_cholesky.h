#ifndef NU_ENGINE_LINEAR_SMALL_CHOLESKY_H
#define NU_ENGINE_LINEAR_SMALL_CHOLESKY_H

#include <algorithm>

#include "nu/engine/rooms.h"

namespace nu::engine::linear {

// Solves the symmetric positive definite system a x = b by L D L^T. Returns the smallest pivot relative to its diagonal
// element: the pivot of a system scaled to ones on the diagonal. x is to be used only when it is positive.
template<int N>
double SolvePositive(const double (&a)[N][N], const double (&b)[N], double (&x)[N]) {
  double lower[N][N];
  double inverse[N];
  double smallest = 1.0;
  for (int i = 0; i < N; ++i) {
    double partial[N];
    double pivot = a[i][i];
    x[i] = b[i];
    for (int j = 0; j < i; ++j) {
      partial[j] = a[i][j];
      for (int k = 0; k < j; ++k) partial[j] -= partial[k] * lower[j][k];
      lower[i][j] = partial[j] * inverse[j];
      pivot -= partial[j] * lower[i][j];
      x[i] -= lower[i][j] * x[j];
    }
    if (!(pivot > 0.0)) return 0.0;
    smallest = std::min(smallest, pivot / a[i][i]);
    inverse[i] = 1.0 / pivot;
  }
  for (int i = N - 1; i >= 0; --i) {
    x[i] *= inverse[i];
    for (int k = i + 1; k < N; ++k) x[i] -= lower[k][i] * x[k];
  }
  return smallest;
}

}  // namespace nu::engine::linear

#endif
