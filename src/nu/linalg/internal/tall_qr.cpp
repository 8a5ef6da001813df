#include "nu/linalg/internal/tall_qr.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "nu/foundation/internal/simd.h"

namespace nu::internal {
namespace {

// While the squared norm of a pivot column lies between these, its products with columns of any other usual size
// neither overflow nor sink to where digits are lost; other pivots are scaled first.
constexpr double kSafeSquareLow = 1e-40;
constexpr double kSafeSquareHigh = 1e200;

// Powers of two beyond these could not be undone in one multiplication.
constexpr int kLargestExponent = 1000;

// The reflector I - tau v v^T with v = (head, pivot column of the block).
struct Reflector {
  double head;
  double tau;
  double diagonal;
};

// One step of one column: column -= weight p, and its product with q on the sums.
NU_ALWAYS_INLINE void Step(const double* __restrict p, double weight, const double* __restrict q,
                           double* __restrict column, double* __restrict sum) {
  NU_LANE_LOOP
  for (int l = 0; l < kLanes; ++l) {
    column[l] -= weight * p[l];
    sum[l] += q[l] * column[l];
  }
}

// The same for the column that is q itself.
NU_ALWAYS_INLINE void OwnStep(const double* __restrict p, double weight, double* __restrict column,
                              double* __restrict sum) {
  NU_LANE_LOOP
  for (int l = 0; l < kLanes; ++l) {
    column[l] -= weight * p[l];
    sum[l] += column[l] * column[l];
  }
}

NU_ALWAYS_INLINE void DotStep(const double* q, const double* column, double* sum) {
  NU_LANE_LOOP
  for (int l = 0; l < kLanes; ++l) sum[l] += q[l] * column[l];
}

template<int W>
NU_ALWAYS_INLINE void Totals(const double* s0, const double* s1, const double* s2, const double* s3, double* dot) {
  dot[0] = SumLanes(s0);
  if constexpr (W > 1) dot[1] = SumLanes(s1);
  if constexpr (W > 2) dot[2] = SumLanes(s2);
  if constexpr (W > 3) dot[3] = SumLanes(s3);
}

// W columns from c on lose their share of the reflector p; dot[i] = q . column i.
template<int W>
NU_ALWAYS_INLINE void UpdateAndDot(const double* __restrict p, const double* __restrict q, double* __restrict c,
                                   std::size_t stride, int rows, const double* weight, double* dot) {
  double s0[kLanes] = {}, s1[kLanes] = {}, s2[kLanes] = {}, s3[kLanes] = {};
  const double w0 = weight[0], w1 = W > 1 ? weight[1] : 0.0, w2 = W > 2 ? weight[2] : 0.0, w3 = W > 3 ? weight[3] : 0.0;
  double* __restrict c1 = c + stride;
  double* __restrict c2 = c + 2 * stride;
  double* __restrict c3 = c + 3 * stride;
  for (int r = 0; r < rows; r += kLanes) {
    Step(p + r, w0, q + r, c + r, s0);
    if constexpr (W > 1) Step(p + r, w1, q + r, c1 + r, s1);
    if constexpr (W > 2) Step(p + r, w2, q + r, c2 + r, s2);
    if constexpr (W > 3) Step(p + r, w3, q + r, c3 + r, s3);
  }
  Totals<W>(s0, s1, s2, s3, dot);
}

// The next pivot column first: the others need its new values.
NU_ALWAYS_INLINE void UpdateNext(const double* __restrict p, double* __restrict q, int rows, double weight,
                                 double* dot) {
  double s0[kLanes] = {}, s1[kLanes] = {};
  int r = 0;
  for (; r + 2 * kLanes <= rows; r += 2 * kLanes) {
    OwnStep(p + r, weight, q + r, s0);
    OwnStep(p + r + kLanes, weight, q + r + kLanes, s1);
  }
  if (r < rows) OwnStep(p + r, weight, q + r, s0);
  for (int l = 0; l < kLanes; ++l) s0[l] += s1[l];
  *dot = SumLanes(s0);
}

// dot[i] = q . column i, for the first pass, and for a pivot column that had to be scaled.
template<int W>
NU_ALWAYS_INLINE void Dots(const double* q, const double* c, std::size_t stride, int rows, double* dot) {
  double s0[kLanes] = {}, s1[kLanes] = {}, s2[kLanes] = {}, s3[kLanes] = {};
  for (int r = 0; r < rows; r += kLanes) {
    DotStep(q + r, c + r, s0);
    if constexpr (W > 1) DotStep(q + r, c + stride + r, s1);
    if constexpr (W > 2) DotStep(q + r, c + 2 * stride + r, s2);
    if constexpr (W > 3) DotStep(q + r, c + 3 * stride + r, s3);
  }
  Totals<W>(s0, s1, s2, s3, dot);
}

NU_ALWAYS_INLINE Reflector MakeReflector(double alpha, double square) {
  const double norm = std::sqrt(alpha * alpha + square);
  const double head = alpha + std::copysign(norm, alpha);
  return {head, 1.0 / (norm * std::fabs(head)), -std::copysign(norm, alpha)};
}

// Brings the pivot column to moderate size by a power of two, which changes the length of v and nothing else.
Reflector MakeScaledReflector(double alpha, double* p, int rows) {
  double largest = std::fabs(alpha);
  double anyNaN = alpha;
  for (int r = 0; r < rows; ++r) {
    largest = std::max(largest, std::fabs(p[r]));
    anyNaN += p[r];
  }
  if (!std::isfinite(largest) || std::isnan(anyNaN)) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    return {nan, nan, nan};
  }
  if (largest == 0.0) return {0.0, 0.0, alpha};
  const int exponent = std::clamp(std::ilogb(largest), -kLargestExponent, kLargestExponent);
  const double scale = std::ldexp(1.0, -exponent);
  double square = 0.0;
  for (int r = 0; r < rows; ++r) {
    p[r] *= scale;
    square += p[r] * p[r];
  }
  Reflector h = MakeReflector(alpha * scale, square);
  h.diagonal = std::ldexp(h.diagonal, exponent);
  return h;
}

// The columns from `first` on, four at a time.
NU_ALWAYS_INLINE void DotsFrom(int first, int columns, const double* q, const double* block, std::size_t stride,
                               int rows, double* dot) {
  int c = first;
  for (; c + 4 <= columns; c += 4) Dots<4>(q, block + c * stride, stride, rows, dot + c);
  const double* rest = block + c * stride;
  if (columns - c == 3) Dots<3>(q, rest, stride, rows, dot + c);
  if (columns - c == 2) Dots<2>(q, rest, stride, rows, dot + c);
  if (columns - c == 1) Dots<1>(q, rest, stride, rows, dot + c);
}

NU_ALWAYS_INLINE void UpdateFrom(int first, int columns, const double* p, const double* q, double* block,
                                 std::size_t stride, int rows, const double* weight, double* dot) {
  int c = first;
  for (; c + 4 <= columns; c += 4) UpdateAndDot<4>(p, q, block + c * stride, stride, rows, weight + c, dot + c);
  double* rest = block + c * stride;
  if (columns - c == 3) UpdateAndDot<3>(p, q, rest, stride, rows, weight + c, dot + c);
  if (columns - c == 2) UpdateAndDot<2>(p, q, rest, stride, rows, weight + c, dot + c);
  if (columns - c == 1) UpdateAndDot<1>(p, q, rest, stride, rows, weight + c, dot + c);
}

// Reduces the stacked [triangle; block] column by column. `rows` is a multiple of the lanes. The products of a pivot
// column with itself and the later ones (`dot`) come out of the pass that applies the reflector before it, so every
// step reads and writes the block once.
NU_KERNEL void ReduceStack(double* triangle, double* block, std::size_t stride, int columns, int rows, double* dot,
                           double* weight) {
  DotsFrom(0, columns, block, block, stride, rows, dot);
  for (int j = 0; j < columns; ++j) {
    double* p = block + j * stride;
    double* top = triangle + static_cast<std::size_t>(j) * columns;
    const double whole = top[j] * top[j] + dot[j];
    const bool safe = whole >= kSafeSquareLow && whole <= kSafeSquareHigh;
    const Reflector h = safe ? MakeReflector(top[j], dot[j]) : MakeScaledReflector(top[j], p, rows);
    if (!safe) DotsFrom(j + 1, columns, p, block, stride, rows, dot);
    top[j] = h.diagonal;
    for (int c = j + 1; c < columns; ++c) {
      weight[c] = h.tau * (h.head * top[c] + dot[c]);
      top[c] -= weight[c] * h.head;
    }
    if (j + 1 == columns) break;
    UpdateNext(p, p + stride, rows, weight[j + 1], dot + j + 1);
    UpdateFrom(j + 2, columns, p, p + stride, block, stride, rows, weight, dot);
  }
}

}  // namespace

TallReduction::TallReduction(int columns)
    : m_columns(columns),
      m_block(static_cast<double*>(
          ::operator new[](static_cast<std::size_t>(columns) * kStride * sizeof(double), std::align_val_t{64}))),
      m_triangle(new double[static_cast<std::size_t>(columns) * columns]()),
      m_dots(new double[2 * static_cast<std::size_t>(columns)]) {}

void TallReduction::AbsorbBlock(int rows) {
  if (rows <= 0) return;
  const int padded = (rows + kLanes - 1) / kLanes * kLanes;
  if (padded != rows) {
    for (int j = 0; j < m_columns; ++j) std::fill(Column(j) + rows, Column(j) + padded, 0.0);
  }
  ReduceStack(m_triangle.get(), m_block.get(), kStride, m_columns, padded, m_dots.get(), m_dots.get() + m_columns);
}

void TallReduction::AddRows(const double* const* row, const double* rhs, int count) {
  const int width = rhs != nullptr ? m_columns - 1 : m_columns;
  for (int i = 0; i < count;) {
    const int taken = std::min(count - i, kBlockRows - m_collected);
    for (int r = 0; r < taken; ++r) {
      double* to = m_block.get() + m_collected + r;
      for (int j = 0; j < width; ++j) to[j * kStride] = row[i + r][j];
    }
    if (rhs != nullptr) std::copy(rhs + i, rhs + i + taken, Column(width) + m_collected);
    i += taken;
    m_collected += taken;
    if (m_collected == kBlockRows) Finish();
  }
}

void TallReduction::Finish() {
  if (m_collected > 0) AbsorbBlock(m_collected);
  m_collected = 0;
}

}  // namespace nu::internal
