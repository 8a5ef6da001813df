#include "nu/engine/linear/lu_singularity.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

#include "nu/engine/base/workspace.h"

// For any x there is a singular matrix A - E with (A - E) x = 0 and |E| <= w |A|, element by element, where
//   w = max over i of |A x|_i / (|A| |x|)_i
// (W. Oettli, W. Prager, Numerische Mathematik 6 (1964) 405), and no smaller w does for this x. A small w therefore
// proves that A is next to a singular matrix. The least w of all x is the componentwise distance to singularity, about
// 1 / spectral radius of |A^-1| |A| (S. M. Rump, SIAM Review 41 (1999) 102).
//
// Near a matrix of rank n - 1, A^-1 is nearly x0 y^T / sigma. The best x then solves A x = (|A| |x0|) with the signs of
// y: every row takes its equal share of the change. The weakest pivot, k, shows both vectors: x0 solves U x0 = u_kk
// e_k, and y is row k of A^-1.
namespace nu::engine::linear {
namespace {

constexpr std::size_t kSmall = 16;

// Solves U x = u_kk e_k.
void RightVector(const double* lu, int n, std::ptrdiff_t ld, int k, double* x) {
  std::fill_n(x, n, 0.0);
  x[k] = 1.0;
  for (int i = k - 1; i >= 0; --i) {
    const double* row = lu + i * ld;
    double sum = 0.0;
    for (int j = i + 1; j <= k; ++j) sum -= row[j] * x[j];
    x[i] = sum / row[i];
  }
}

// Returns row k of (L U)^-1 from z^T L U = e_k^T, by one row of the factors after the other.
void LeftVector(const double* lu, int n, std::ptrdiff_t ld, int k, double* z) {
  std::fill_n(z, n, 0.0);
  z[k] = 1.0;
  for (int j = k; j < n; ++j) {
    z[j] /= lu[j * ld + j];
    for (int i = j + 1; i < n; ++i) z[i] -= lu[j * ld + i] * z[j];
  }
  for (int j = n - 1; j > 0; --j)
    for (int i = 0; i < j; ++i) z[i] -= lu[j * ld + i] * z[j];
}

// Returns component i of |A| |x|.
double AbsoluteProduct(const double* row, const double* x, int n) {
  double sum = 0.0;
  for (int j = 0; j < n; ++j) sum += std::fabs(row[j] * x[j]);
  return sum;
}

}  // namespace

bool HasSingularNeighbour(const double* const* rows, const double* lu, int n, std::ptrdiff_t ld, const int* permutation,
                          int weakest, double tolerance) {
  const std::size_t count = static_cast<std::size_t>(n);
  Workspace<3 * kSmall> work(3 * count);
  double* x = work.Take(count);
  double* z = work.Take(count);
  double* b = work.Take(count);
  RightVector(lu, n, ld, weakest, x);
  LeftVector(lu, n, ld, weakest, z);
  for (int i = 0; i < n; ++i) {
    const int row = permutation[i];
    b[row] = std::copysign(AbsoluteProduct(rows[row], x, n), z[i]);
  }
  SolveLu(lu, n, ld, permutation, b, x);
  // Sums that have overflowed prove nothing.
  for (int i = 0; i < n; ++i) {
    const double sum = AbsoluteProduct(rows[i], x, n);
    if (!(std::fabs(b[i]) <= n * tolerance * sum && sum <= DBL_MAX)) return false;
  }
  return true;
}

}  // namespace nu::engine::linear
