#include "nu/engine/linear/lu.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <utility>

#include "nu/engine/base/simd.h"
#include "nu/engine/base/workspace.h"
#include "nu/engine/linear/matmul.h"
#include "nu/engine/linear/row_kernels.h"

namespace nu::engine::linear {
namespace {

// Rows whose sizes are within this ratio are pivoted as they are, so that the multipliers of ordinary matrices stay
// below 1.
constexpr double kRowSpread = 1024.0;
// Beyond these sizes a product of two elements overflows or loses digits to underflow.
constexpr double kLargestSafe = 0x1p500;
constexpr double kSmallestSafe = 0x1p-500;
// The scale of a row is at most this power of two, so that ratios of scales remain representable.
constexpr int kWidestExponent = 1020;
// A panel is narrow enough for its columns to stay in registers and the first-level cache, and wide enough for the
// product kernel.
constexpr int kPanel = 16;
constexpr int kSmall = 16;
// A pivot within this multiple of its floor, some 1e-6 n of its column at the default tolerance, makes the rank
// uncertain. One in 1e4 random matrices has such a pivot, and the matrices of rank n - 1 that kept all pivots above
// their floors were below it by 1e4, at every size up to 200.
constexpr double kWeak = 0x1p30;

struct Panel {
  double* a;  // the top left of the whole block
  std::ptrdiff_t ld;
  int n;
  int* rows;
  const double* columnFloor;  // a pivot of column j must exceed columnFloor[j]
  LuResult* result;
};

// Exchanges whole rows, factored columns included, so that the permutation is that of complete rows.
void ExchangeRows(const Panel& p, int i, int j) {
  if (i == j) return;
  std::swap_ranges(p.a + i * p.ld, p.a + i * p.ld + p.n, p.a + j * p.ld);
  std::swap(p.rows[i], p.rows[j]);
  p.result->parity = -p.result->parity;
}

// A kN above 0 fixes the size for the unrolled small cases.
template<int kN>
int FindPivot(const Panel& p, int j) {
  const int n = kN > 0 ? kN : p.n;
  int best = j;
  double largest = std::fabs(p.a[j * p.ld + j]);
  for (int i = j + 1; i < n; ++i) {
    const double size = std::fabs(p.a[i * p.ld + j]);
    if (size > largest || (std::isnan(largest) && !std::isnan(size))) {
      largest = size;
      best = i;
    }
  }
  return best;
}

double SettlePivot(const Panel& p, int j) {
  double& pivot = p.a[j * p.ld + j];
  if (!(std::fabs(pivot) > p.columnFloor[j])) {
    p.result->singular = true;
    const double usable = p.columnFloor[j] > 0.0 && p.columnFloor[j] < DBL_MAX ? p.columnFloor[j] : DBL_EPSILON;
    pivot = std::signbit(pivot) ? -usable : usable;
  }
  return pivot;
}

// Returns the weakest pivot, -1 where every pivot is far above its floor.
template<int kN>
int WeakestPivot(const double* a, int size, std::ptrdiff_t ld, const double* floor) {
  const int n = kN > 0 ? kN : size;
  int weakest = -1;
  double share = kWeak;
  for (int j = 0; j < n; ++j) {
    const double pivot = std::fabs(a[j * ld + j]);
    if (!(pivot < share * floor[j])) continue;
    share = pivot / floor[j];
    weakest = j;
  }
  return weakest;
}

// Factors columns first .. last-1 of the rows from `first` on, right-looking.
template<int kN>
void FactorColumns(const Panel& p, int first, int last) {
  const int n = kN > 0 ? kN : p.n;
  for (int j = first; j < last; ++j) {
    ExchangeRows(p, j, FindPivot<kN>(p, j));
    const double pivot = SettlePivot(p, j);
    const double* pivotRow = p.a + j * p.ld;
    for (int i = j + 1; i < n; ++i) {
      double* row = p.a + i * p.ld;
      const double factor = row[j] / pivot;
      row[j] = factor;
      for (int k = j + 1; k < last; ++k) row[k] -= factor * pivotRow[k];
    }
  }
}

// Solves L X = B for the unit lower triangle of a and overwrites B; halves the triangle until the product kernel does
// nearly all the work.
void SolveLower(const double* a, std::ptrdiff_t ld, int n, double* x, int count, std::ptrdiff_t ldx) {
  if (n > kPanel) {
    const int half = n / 2;
    SolveLower(a, ld, half, x, count, ldx);
    SubtractProduct({a + half * ld, ld}, {x, ldx}, x + half * ldx, ldx, n - half, half, count);
    SolveLower(a + half * ld + half, ld, n - half, x + half * ldx, count, ldx);
    return;
  }
  for (int i = 1; i < n; ++i) SubtractProduct({a + i * ld, ld}, {x, ldx}, x + i * ldx, ldx, 1, i, count);
}

void SolveUpper(const double* a, std::ptrdiff_t ld, int n, double* x, int count, std::ptrdiff_t ldx) {
  if (n > kPanel) {
    const int half = n / 2;
    SolveUpper(a + half * ld + half, ld, n - half, x + half * ldx, count, ldx);
    SubtractProduct({a + half, ld}, {x + half * ldx, ldx}, x, ldx, half, n - half, count);
    SolveUpper(a, ld, half, x, count, ldx);
    return;
  }
  for (int i = n - 1; i >= 0; --i) {
    double* row = x + i * ldx;
    SubtractProduct({a + i * ld + i + 1, ld}, {x + (i + 1) * ldx, ldx}, row, ldx, 1, n - 1 - i, count);
    const double pivot = a[i * ld + i];
    for (int j = 0; j < count; ++j) row[j] /= pivot;
  }
}

// Factors by recursion over the columns (S. Toledo, Locality of reference in LU decomposition with partial pivoting,
// SIAM J. Matrix Anal. Appl. 18, 1997).
void FactorRecursive(const Panel& p, int first, int last) {
  if (last - first <= kPanel) return FactorColumns<0>(p, first, last);
  const int middle = first + (last - first) / 2;
  FactorRecursive(p, first, middle);
  double* corner = p.a + first * p.ld;
  SolveLower(corner + first, p.ld, middle - first, corner + middle, last - middle, p.ld);
  double* below = p.a + middle * p.ld;
  SubtractProduct({below + first, p.ld}, {corner + middle, p.ld}, below + middle, p.ld, p.n - middle, middle - first,
                  last - middle);
  FactorRecursive(p, middle, last);
}

struct RowSizes {
  double smallest = HUGE_VAL, largest = 0.0;
};

template<int kN>
RowSizes MeasureRows(const double* a, int size, std::ptrdiff_t ld, double* largest) {
  const int n = kN > 0 ? kN : size;
  RowSizes all;
  for (int i = 0; i < n; ++i) {
    double m = 0.0;
    for (int j = 0; j < n; ++j) m = std::max(m, std::fabs(a[i * ld + j]));
    largest[i] = m;
    all.smallest = std::min(all.smallest, m);
    all.largest = std::max(all.largest, m);
  }
  return all;
}

// Sets the exponents of the row scales; zero rows keep theirs.
void RowExponents(const double* size, int n, double largest, double* exponent) {
  const int top = std::ilogb(largest);
  for (int i = 0; i < n; ++i) exponent[i] = size[i] > 0.0 ? std::max(std::ilogb(size[i]), top - kWidestExponent) : top;
}

// Removes the row scales from the factors: U is multiplied by the scale of its row, L by the ratio of two.
void RestoreScales(double* a, int n, std::ptrdiff_t ld, const int* rows, const double* exponent) {
  for (int i = 0; i < n; ++i) {
    const int own = static_cast<int>(exponent[rows[i]]);
    for (int j = 0; j < n; ++j)
      a[i * ld + j] = std::ldexp(a[i * ld + j], j < i ? own - static_cast<int>(exponent[rows[j]]) : own);
  }
}

template<int kN>
void ColumnFloors(const double* a, int size, std::ptrdiff_t ld, double tolerance, double* floor) {
  const int n = kN > 0 ? kN : size;
  std::fill_n(floor, n, 0.0);
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) floor[j] = std::max(floor[j], std::fabs(a[i * ld + j]));
  const double share = tolerance > 0.0 ? n * tolerance : 0.0;
  for (int j = 0; j < n; ++j) floor[j] *= share;
}

// The newest unknown enters each sum last, so that the sums of later rows are formed while it is being divided.
template<int kN>
void SubstituteSmall(const double* lu, int size, std::ptrdiff_t ld, double* x) {
  const int n = kN > 0 ? kN : size;
  for (int i = 1; i < n; ++i) {
    double sum = x[i];
    for (int k = 0; k < i; ++k) sum = KeepScalar(sum - lu[i * ld + k] * x[k]);
    x[i] = sum;
  }
  for (int i = n - 1; i >= 0; --i) {
    double sum = x[i];
    for (int k = n - 1; k > i; --k) sum = KeepScalar(sum - lu[i * ld + k] * x[k]);
    x[i] = sum / lu[i * ld + i];
  }
}

NU_KERNEL void SubstituteRows(const double* lu, int n, std::ptrdiff_t ld, double* x) {
  for (int i = 0; i < n; ++i) x[i] -= DotRow(lu + i * ld, x, i);
  for (int i = n - 1; i >= 0; --i) {
    const double* row = lu + i * ld;
    x[i] = (x[i] - DotRow(row + i + 1, x + i + 1, n - 1 - i)) / row[i];
  }
}

template<int kN>
LuResult Factor(double* a, int size, std::ptrdiff_t ld, int* rows, double tolerance, double zero) {
  const int n = kN > 0 ? kN : size;
  LuResult result;
  Workspace<2 * kSmall> work(2 * static_cast<std::size_t>(n));
  double* largest = work.Take(n);
  double* floor = work.Take(n);
  for (int i = 0; i < n; ++i) rows[i] = i;
  const RowSizes all = MeasureRows<kN>(a, n, ld, largest);
  result.singular = all.smallest < zero || !(all.smallest > 0.0);
  const bool scaled =
      all.largest > 0.0 && all.largest <= DBL_MAX &&
      (all.largest > kRowSpread * all.smallest || all.largest > kLargestSafe || all.smallest < kSmallestSafe);
  if (scaled) {
    RowExponents(largest, n, all.largest, largest);
    for (int i = 0; i < n; ++i)
      for (int j = 0; j < n; ++j) a[i * ld + j] = std::ldexp(a[i * ld + j], -static_cast<int>(largest[i]));
  }
  ColumnFloors<kN>(a, n, ld, tolerance, floor);
  const Panel panel = {a, ld, n, rows, floor, &result};
  if constexpr (kN > 0) {
    FactorColumns<kN>(panel, 0, kN);
  } else {
    FactorRecursive(panel, 0, n);
  }
  result.weakest = WeakestPivot<kN>(a, n, ld, floor);
  if (scaled) RestoreScales(a, n, ld, rows, largest);
  return result;
}

// Solves A x = P b for the columns of x at once, in registers or a padded copy.
template<int kN>
void SubstituteSquare(const double* lu, std::ptrdiff_t ld, double* x, std::ptrdiff_t ldx) {
  for (int i = 1; i < kN; ++i)
    for (int k = 0; k < i; ++k)
      for (int j = 0; j < kN; ++j) x[i * ldx + j] -= lu[i * ld + k] * x[k * ldx + j];
  for (int i = kN - 1; i >= 0; --i) {
    for (int k = kN - 1; k > i; --k)
      for (int j = 0; j < kN; ++j) x[i * ldx + j] -= lu[i * ld + k] * x[k * ldx + j];
    for (int j = 0; j < kN; ++j) x[i * ldx + j] /= lu[i * ld + i];
  }
}

template<int kPacks>
NU_ALWAYS_INLINE void SubstitutePacks(const double* lu, int n, std::ptrdiff_t ld, double* x) {
  constexpr int width = kPacks * kLanes;
  Lanes sum[kPacks], other;
  for (int i = 0; i < n; ++i) {
    for (int p = 0; p < kPacks; ++p) Load(x + i * width + p * kLanes, sum[p]);
    for (int k = 0; k < i; ++k)
      for (int p = 0; p < kPacks; ++p) {
        Load(x + k * width + p * kLanes, other);
        sum[p] -= lu[i * ld + k] * other;
      }
    for (int p = 0; p < kPacks; ++p) Store(sum[p], x + i * width + p * kLanes);
  }
  for (int i = n - 1; i >= 0; --i) {
    for (int p = 0; p < kPacks; ++p) Load(x + i * width + p * kLanes, sum[p]);
    for (int k = n - 1; k > i; --k)
      for (int p = 0; p < kPacks; ++p) {
        Load(x + k * width + p * kLanes, other);
        sum[p] -= lu[i * ld + k] * other;
      }
    double* row = x + i * width;
    for (int p = 0; p < kPacks; ++p) Store(sum[p], row + p * kLanes);
    const double pivot = lu[i * ld + i];
    for (int j = 0; j < width; ++j) row[j] /= pivot;
  }
}

NU_KERNEL void SubstituteFew(const double* lu, int n, std::ptrdiff_t ld, double* x, int count, std::ptrdiff_t ldx) {
  alignas(64) double padded[kSmall * kSmall];
  const int width = Padded(count);
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < width; ++j) padded[i * width + j] = j < count ? x[i * ldx + j] : 0.0;
  if (width == kLanes) {
    SubstitutePacks<1>(lu, n, ld, padded);
  } else {
    SubstitutePacks<2>(lu, n, ld, padded);
  }
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < count; ++j) x[i * ldx + j] = padded[i * width + j];
}

}  // namespace

LuResult FactorLu(double* a, int n, std::ptrdiff_t ld, int* rows, double tolerance, double zero) {
  if (n == 3) return Factor<3>(a, n, ld, rows, tolerance, zero);
  if (n == 4) return Factor<4>(a, n, ld, rows, tolerance, zero);
  return Factor<0>(a, n, ld, rows, tolerance, zero);
}

void SolveLu(const double* lu, int n, std::ptrdiff_t ld, const int* rows, const double* b, double* x) {
  for (int i = 0; i < n; ++i) x[i] = b[rows[i]];
  if (n == 3) return SubstituteSmall<3>(lu, n, ld, x);
  if (n == 4) return SubstituteSmall<4>(lu, n, ld, x);
  if (n <= kSmall) return SubstituteSmall<0>(lu, n, ld, x);
  SubstituteRows(lu, n, ld, x);
}

void SolveLuPermuted(const double* lu, int n, std::ptrdiff_t ld, double* x, int count, std::ptrdiff_t ldx) {
  if (n == 3 && count == 3) return SubstituteSquare<3>(lu, ld, x, ldx);
  if (n == 4 && count == 4) return SubstituteSquare<4>(lu, ld, x, ldx);
  if (n <= kSmall && count <= kSmall) return SubstituteFew(lu, n, ld, x, count, ldx);
  SolveLower(lu, ld, n, x, count, ldx);
  SolveUpper(lu, ld, n, x, count, ldx);
}

double LuDeterminant(const double* lu, int n, std::ptrdiff_t ld, int parity) {
  // frexp of a zero, infinite or NaN pivot leaves its exponent unspecified or 0; the mantissa carries the answer.
  double mantissa = parity;
  long exponent = 0;
  for (int i = 0; i < n; ++i) {
    int pivotShift = 0;
    int productShift = 0;
    const double pivot = std::frexp(lu[i * ld + i], &pivotShift);
    mantissa = std::frexp(mantissa * pivot, &productShift);
    exponent += pivotShift + productShift;
  }
  constexpr long kBeyondAnyDouble = 5000;
  return std::ldexp(mantissa, static_cast<int>(std::clamp(exponent, -kBeyondAnyDouble, kBeyondAnyDouble)));
}

}  // namespace nu::engine::linear
