#include "nu/engine/linear/householder.h"

#include <algorithm>
#include <cmath>

#include "nu/engine/base/workspace.h"
#include "nu/engine/linear/matmul.h"
#include "nu/engine/linear/row_kernels.h"

namespace nu::engine::linear {
namespace {

constexpr int kWorkingExponent = 400;
// 2^1000 is the largest factor that never meets the ends of the exponent range on its way.
constexpr int kWidestScale = 1000;
// Reflections per block of the compact form; fewer columns than kBlocked are not worth the triangles.
constexpr int kBlock = 32;
constexpr int kBlocked = 48;

template<bool kDot, bool kSum>
NU_ALWAYS_INLINE void PassRow(double* row, int from, int to, double f, const double* y, double g, const double* v,
                              const double* r, double* dot, double s, double* sum) {
  Pack dots = {};
  for (int j = from; j < to; j += kLanes) {
    Pack a, left, right;
    Load(row + j, a);
    Load(y + j, left);
    Load(v + j, right);
    a -= f * left + g * right;
    Store(a, row + j);
    if constexpr (kDot) {
      Pack factor;
      Load(r + j, factor);
      dots += a * factor;
    }
    if constexpr (kSum) {
      Pack total;
      Load(sum + j, total);
      total += s * a;
      Store(total, sum + j);
    }
  }
  if constexpr (kDot) *dot = SumPack(dots);
}

}  // namespace

double ScaleToWorkingSize(double largest) {
  if (!(largest > 0.0)) return 1.0;
  return std::ldexp(1.0, std::clamp(kWorkingExponent - std::ilogb(largest), -kWidestScale, kWidestScale));
}

NU_KERNEL BlockSize MeasureBlock(const double* a, int rows, int columns, std::ptrdiff_t ld, double* rowLargest) {
  double largest = 0.0;
  double poison = 0.0;  // stays 0 for finite elements, turns NaN otherwise
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
  const double head = x[0];
  const double tail = Dot(x + 1, x + 1, n - 1);
  x[0] = 1.0;
  if (!(tail > kNegligibleSquares)) {
    std::fill(x + 1, x + n, 0.0);
    return {0.0, head};
  }
  const double norm = std::sqrt(head * head + tail);
  const double beta = head > 0.0 ? -norm : norm;
  const double scale = 1.0 / (head - beta);
  for (int i = 1; i < n; ++i) x[i] *= scale;
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

// Rows first .. n-1 of q times I - tau v v^T.
NU_KERNEL void ReflectRows(double* q, std::ptrdiff_t ldq, int first, int n, int from, int to, const double* v,
                           double tau) {
  for (int i = first; i < n; ++i) {
    double* row = q + i * ldq;
    const double f = tau * DotRow(row + from, v + from, to - from);
    for (int j = from; j < to; j += kLanes) {
      Pack a, factor;
      Load(row + j, a);
      Load(v + j, factor);
      a -= f * factor;
      Store(a, row + j);
    }
  }
}

// The upper triangle T of H_0 ... H_{count-1} = I - V T V^T.
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
