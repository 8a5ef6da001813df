#include "nu/engine/linear/householder.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "nu/engine/base/workspace.h"
#include "nu/engine/linear/matmul.h"
#include "nu/engine/linear/row_kernels.h"

// Householder reflections H = I - tau v v^T with v_0 = 1 (G. H. Golub, C. F. Van Loan, Matrix Computations, 4th ed.,
// 5.1). For x = (x_0, t), with the sign of beta chosen so that nothing cancels,
//   beta = -sign(x_0) |x|,   v = (1, t / (x_0 - beta)),   tau = (beta - x_0) / beta   give   H x = (beta, 0, ..., 0).
// A matrix is scaled by a power of two to elements of up to 2^400 before anything is squared, so that no square
// overflows, and those that underflow belong to elements which are negligible beside the largest.
//
// The product of reflections takes the compact form (R. Schreiber, C. F. Van Loan, SIAM J. Sci. Stat. Comput. 10, 1989)
//   H_0 H_1 ... H_{m-1} = I - V T V^T,
// where the rows of the array v are the columns of V, and T is upper triangular with columns
//   T_jj = tau_j,   (T_0j, ..., T_{j-1,j}) = -tau_j T V^T v_j.
// The transposed product grows from the identity by Q <- Q - (Q V) T^T V^T, 32 reflections at a time, the last block
// first: reflection k leaves the rows and columns before its first component alone, so that each block works on the
// trailing part of Q only, by three matrix products. Small matrices apply their reflections one by one.
namespace nu::engine::linear {
namespace {

constexpr int kWorkingExponent = 400;
// The largest exponent of a factor such that neither the factor nor its inverse overflows or underflows.
constexpr int kWidestScale = 1000;
// The number of reflections in a block of the compact form; below kBlocked columns forming T costs more than it saves.
constexpr int kBlock = 32;
constexpr int kBlocked = 48;

template<bool kDot, bool kSum>
NU_ALWAYS_INLINE void PassRow(double* row, int from, int to, double f, const double* y, double g, const double* v,
                              const double* r, double* dot, double s, double* sum) {
  Lanes dots = {};
  for (int j = from; j < to; j += kLanes) {
    Lanes a, left, right;
    Load(row + j, a);
    Load(y + j, left);
    Load(v + j, right);
    a -= f * left + g * right;
    Store(a, row + j);
    if constexpr (kDot) {
      Lanes factor;
      Load(r + j, factor);
      dots += a * factor;
    }
    if constexpr (kSum) {
      Lanes total;
      Load(sum + j, total);
      total += s * a;
      Store(total, sum + j);
    }
  }
  if constexpr (kDot) *dot = Sum(dots);
}

}  // namespace

double ScaleToWorkingSize(double largest) {
  if (!(largest > 0.0)) return 1.0;
  return std::ldexp(1.0, std::clamp(kWorkingExponent - std::ilogb(largest), -kWidestScale, kWidestScale));
}

NU_KERNEL BlockSize MeasureBlock(const double* a, int rows, int columns, std::ptrdiff_t ld, double* rowLargest) {
  double largest = 0.0;
  double poison = 0.0;  // 0 while all elements are finite, else NaN
  for (int i = 0; i < rows; ++i) {
    const double* row = a + i * ld;
    double lane[kLanes] = {};
    double bad[kLanes] = {};
    int j = 0;
    for (; j + kLanes <= columns; j += kLanes)
      for (int l = 0; l < kLanes; ++l) {
        const double size = std::fabs(row[j + l]);
        lane[l] = size > lane[l] ? size : lane[l];
        bad[l] += row[j + l] - row[j + l];
      }
    double rowMax = 0.0;
    for (int l = 0; l < kLanes && j > 0; ++l) {
      rowMax = lane[l] > rowMax ? lane[l] : rowMax;
      poison += bad[l];
    }
    for (; j < columns; ++j) {
      const double size = std::fabs(row[j]);
      rowMax = size > rowMax ? size : rowMax;
      poison += row[j] - row[j];
    }
    if (rowLargest != nullptr) rowLargest[i] = rowMax;
    largest = rowMax > largest ? rowMax : largest;
  }
  return {largest, poison == 0.0};
}

NU_KERNEL double Dot(const double* x, const double* y, int n) {
  return DotRow(x, y, n);
}

Reflection MakeReflection(double* x, int n) {
  return MakeReflection(std::exchange(x[0], 1.0), x + 1, n - 1);
}

Reflection MakeReflection(double head, double* x, int n) {
  const double tail = Dot(x, x, n);
  if (!(tail > kNegligibleSquares)) {
    std::fill_n(x, n, 0.0);
    return {0.0, head};
  }
  const double norm = std::sqrt(head * head + tail);
  const double beta = head > 0.0 ? -norm : norm;
  const double scale = 1.0 / (head - beta);
  for (int i = 0; i < n; ++i) x[i] *= scale;
  return {(beta - head) / beta, beta};
}

NU_KERNEL void UpdateAndDot(double* a, std::ptrdiff_t ld, int first, int last, int from, int to, const double* f,
                            const double* y, const double* g, const double* v, const double* r, double* dot) {
  for (int i = first; i < last; ++i)
    PassRow<true, false>(a + i * ld, from, to, f[i], y, g[i], v, r, dot + i, 0.0, nullptr);
}

NU_KERNEL void UpdateAndSum(double* a, std::ptrdiff_t ld, int first, int last, int from, int to, const double* f,
                            const double* y, const double* g, const double* v, const double* s, double* sum) {
  for (int i = first; i < last; ++i)
    PassRow<false, true>(a + i * ld, from, to, f[i], y, g[i], v, nullptr, nullptr, s[i], sum);
}

NU_KERNEL void UpdateDotAndSum(double* a, std::ptrdiff_t ld, int first, int last, int from, int to, const double* f,
                               const double* y, const double* g, const double* v, const double* r, double* dot,
                               const double* s, double* sum) {
  for (int i = first; i < last; ++i) PassRow<true, true>(a + i * ld, from, to, f[i], y, g[i], v, r, dot + i, s[i], sum);
}

NU_KERNEL void DotRows(const double* a, std::ptrdiff_t ld, int first, int last, int from, int to, const double* r,
                       double* dot) {
  for (int i = first; i < last; ++i) dot[i] = DotRow(a + i * ld + from, r + from, to - from);
}

namespace {

// Multiplies rows first .. n-1 of q by I - tau v v^T from the right.
NU_KERNEL void ReflectRows(double* q, std::ptrdiff_t ldq, int first, int n, int from, int to, const double* v,
                           double tau) {
  for (int i = first; i < n; ++i) {
    double* row = q + i * ldq;
    const double f = tau * DotRow(row + from, v + from, to - from);
    for (int j = from; j < to; j += kLanes) {
      Lanes a, factor;
      Load(row + j, a);
      Load(v + j, factor);
      a -= f * factor;
      Store(a, row + j);
    }
  }
}

// Forms the upper triangle T of H_0 ... H_{count-1} = I - V T V^T.
void FormTriangle(const double* v, std::ptrdiff_t ldv, const double* tau, int count, int from, int to, double* t) {
  double projection[kBlock];
  for (int j = 0; j < count; ++j) {
    for (int i = 0; i < count; ++i) t[i * kBlock + j] = 0.0;
    DotRows(v, ldv, 0, j, from, to, v + j * ldv, projection);
    for (int i = 0; i < j; ++i) {
      double sum = 0.0;
      for (int k = i; k < j; ++k) sum += t[i * kBlock + k] * projection[k];
      t[i * kBlock + j] = -tau[j] * sum;
    }
    t[j * kBlock + j] = tau[j];
  }
}

}  // namespace

void FormTransposedProduct(const double* v, std::ptrdiff_t ldv, const double* tau, int count, int offset, double* q,
                           std::ptrdiff_t ldq, int n) {
  const int width = Padded(n);
  for (int i = 0; i < n; ++i) {
    std::fill_n(q + i * ldq, width, 0.0);
    q[i * ldq + i] = 1.0;
  }
  if (n < kBlocked) {
    for (int k = count - 1; k >= 0; --k) {
      const int first = k + offset;
      ReflectRows(q, ldq, first, n, first / kLanes * kLanes, width, v + k * ldv, tau[k]);
    }
    return;
  }
  Workspace<2 * kBlock * kBlock> work(kBlock * kBlock + 2 * static_cast<std::size_t>(kBlock) * n);
  double* t = work.Take(kBlock * kBlock);
  double* product = work.Take(static_cast<std::size_t>(kBlock) * n);
  double* turned = work.Take(static_cast<std::size_t>(kBlock) * n);
  for (int k = (count - 1) / kBlock * kBlock; k >= 0; k -= kBlock) {
    const int size = std::min(kBlock, count - k);
    const int first = k + offset;
    const int from = first / kLanes * kLanes;
    const MatrixView vectors = {v + k * ldv + from, ldv};
    FormTriangle(v + k * ldv, ldv, tau + k, size, from, width, t);
    double* rows = q + first * ldq + from;
    const int height = n - first;
    Multiply({rows, ldq}, vectors.Transposed(), product, kBlock, height, width - from, size);
    Multiply({product, kBlock}, MatrixView{t, kBlock}.Transposed(), turned, kBlock, height, size, size);
    SubtractProduct({turned, kBlock}, vectors, rows, ldq, height, size, width - from);
  }
}

void RowsToColumns(const double* from, std::ptrdiff_t ldFrom, const int* order, const int* place, int rows, int columns,
                   double* to, std::ptrdiff_t ldTo) {
  for (int j0 = 0; j0 < rows; j0 += kLanes) {
    const int count = std::min(kLanes, rows - j0);
    const double* source[kLanes];
    for (int l = 0; l < count; ++l) source[l] = from + (order != nullptr ? order[j0 + l] : j0 + l) * ldFrom;
    for (int i = 0; i < columns; ++i) {
      double* target = to + (place != nullptr ? place[i] : i) * ldTo + j0;
      for (int l = 0; l < count; ++l) target[l] = source[l][i];
    }
  }
}

}  // namespace nu::engine::linear
