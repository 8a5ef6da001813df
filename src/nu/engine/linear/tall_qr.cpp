#include "nu/engine/linear/tall_qr.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>

#include "nu/engine/base/floating_point.h"
#include "nu/engine/base/large_pages.h"
#include "nu/engine/base/simd.h"

namespace nu::engine::linear {
namespace {

// While the squared norm of a pivot column lies between these, its products with columns of any other usual size
// neither overflow nor lose digits to underflow; other pivots are scaled first.
constexpr double kSafeSquareLow = 1e-40;
constexpr double kSafeSquareHigh = 1e200;

// A larger power of two could not be undone by one multiplication.
constexpr int kLargestExponent = 1000;

// The reflector I - tau v v^T with v = (head, pivot column of the block).
struct Reflector {
  double head;
  double tau;
  double diagonal;
};

// Updates one column, column -= weight p, and adds its product with q to the sums.
NU_ALWAYS_INLINE void Step(const double* __restrict p, double weight, const double* __restrict q,
                           double* __restrict column, double* __restrict sum) {
  NU_LANE_LOOP
  for (int l = 0; l < kLanes; ++l) {
    column[l] -= weight * p[l];
    sum[l] += q[l] * column[l];
  }
}

// Does the same for the column that is q itself.
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

// Applies the reflector p to W columns from c on; dot[i] = q . column i.
template<int W>
NU_ALWAYS_INLINE void UpdateAndDot(const double* __restrict p, const double* __restrict q, double* __restrict c,
                                   std::ptrdiff_t stride, int rows, const double* weight, double* dot) {
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

// Updates the next pivot column first, as the others need its new values.
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

// Computes dot[i] = q . column i, for the first pass and for a pivot column that had to be scaled.
template<int W>
NU_ALWAYS_INLINE void Dots(const double* q, const double* c, std::ptrdiff_t stride, int rows, double* dot) {
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

// Scales the pivot column to moderate size by a power of two, which changes the length of v and nothing else.
Reflector MakeScaledReflector(double alpha, double* p, int rows) {
  double largest = std::fabs(alpha);
  double anyNaN = alpha;
  for (int r = 0; r < rows; ++r) {
    largest = std::max(largest, std::fabs(p[r]));
    anyNaN += p[r];
  }
  if (!std::isfinite(largest) || std::isnan(anyNaN)) {
    return {kQuietNaN, kQuietNaN, kQuietNaN};
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

// Updates the columns from `first` on, four at a time.
NU_ALWAYS_INLINE void DotsFrom(int first, int columns, const double* q, const double* block, std::ptrdiff_t stride,
                               int rows, double* dot) {
  int c = first;
  for (; c + 4 <= columns; c += 4) Dots<4>(q, block + c * stride, stride, rows, dot + c);
  const double* rest = block + c * stride;
  if (columns - c == 3) Dots<3>(q, rest, stride, rows, dot + c);
  if (columns - c == 2) Dots<2>(q, rest, stride, rows, dot + c);
  if (columns - c == 1) Dots<1>(q, rest, stride, rows, dot + c);
}

NU_ALWAYS_INLINE void UpdateFrom(int first, int columns, const double* p, const double* q, double* block,
                                 std::ptrdiff_t stride, int rows, const double* weight, double* dot) {
  int c = first;
  for (; c + 4 <= columns; c += 4) UpdateAndDot<4>(p, q, block + c * stride, stride, rows, weight + c, dot + c);
  double* rest = block + c * stride;
  if (columns - c == 3) UpdateAndDot<3>(p, q, rest, stride, rows, weight + c, dot + c);
  if (columns - c == 2) UpdateAndDot<2>(p, q, rest, stride, rows, weight + c, dot + c);
  if (columns - c == 1) UpdateAndDot<1>(p, q, rest, stride, rows, weight + c, dot + c);
}

struct Scratch {
  double* dot;
  double* weight;
  double* head;
  double* tau;
};

// Reduces the stacked [triangle; block] column by column. `rows` is a multiple of the lanes. The products of a pivot
// column with itself and the later ones (`dot`) come out of the pass that applies the reflector before it, so every
// step reads and writes the block once.
NU_KERNEL void ReduceStack(double* triangle, double* block, std::ptrdiff_t stride, int columns, int rows,
                           const Scratch& scratch) {
  double* dot = scratch.dot;
  DotsFrom(0, columns, block, block, stride, rows, dot);
  for (int j = 0; j < columns; ++j) {
    double* p = block + j * stride;
    double* top = triangle + static_cast<std::ptrdiff_t>(j) * columns;
    const double whole = top[j] * top[j] + dot[j];
    const bool safe = whole >= kSafeSquareLow && whole <= kSafeSquareHigh;
    const Reflector h = safe ? MakeReflector(top[j], dot[j]) : MakeScaledReflector(top[j], p, rows);
    if (!safe) DotsFrom(j + 1, columns, p, block, stride, rows, dot);
    top[j] = h.diagonal;
    scratch.head[j] = h.head;
    scratch.tau[j] = h.tau;
    for (int c = j + 1; c < columns; ++c) {
      scratch.weight[c] = h.tau * (h.head * top[c] + dot[c]);
      top[c] -= scratch.weight[c] * h.head;
    }
    if (j + 1 == columns) break;
    UpdateNext(p, p + stride, rows, scratch.weight[j + 1], dot + j + 1);
    UpdateFrom(j + 2, columns, p, p + stride, block, stride, rows, scratch.weight, dot);
  }
}

// Applies one block of reflectors to the stacked [top; b], with the operations of ReduceStack for its last column.
NU_KERNEL void ReflectStack(const double* reflectors, std::ptrdiff_t stride, const double* head, const double* tau,
                            int columns, int rows, double* top, double* b) {
  double dot;
  Dots<1>(reflectors, b, 0, rows, &dot);
  for (int j = 0; j < columns; ++j) {
    const double* p = reflectors + j * stride;
    const double weight = tau[j] * (head[j] * top[j] + dot);
    top[j] -= weight * head[j];
    if (j + 1 < columns) UpdateAndDot<1>(p, p + stride, b, 0, rows, &weight, &dot);
  }
}

using Four = double __attribute__((vector_size(4 * sizeof(double))));

// Copies a square of four rows to four columns.
NU_ALWAYS_INLINE void TransposeSquare(const double* const* row, int first, double* to, std::ptrdiff_t stride) {
  Four r[4];
  for (int i = 0; i < 4; ++i) std::memcpy(&r[i], row[i] + first, sizeof(Four));
  const Four even0 = __builtin_shufflevector(r[0], r[1], 0, 4, 2, 6);
  const Four odd0 = __builtin_shufflevector(r[0], r[1], 1, 5, 3, 7);
  const Four even1 = __builtin_shufflevector(r[2], r[3], 0, 4, 2, 6);
  const Four odd1 = __builtin_shufflevector(r[2], r[3], 1, 5, 3, 7);
  const Four column[4] = {
      __builtin_shufflevector(even0, even1, 0, 1, 4, 5), __builtin_shufflevector(odd0, odd1, 0, 1, 4, 5),
      __builtin_shufflevector(even0, even1, 2, 3, 6, 7), __builtin_shufflevector(odd0, odd1, 2, 3, 6, 7)};
  for (int j = 0; j < 4; ++j) std::memcpy(to + j * stride, &column[j], sizeof(Four));
}

// Copies rows to columns.
NU_KERNEL void Transpose(const double* const* row, int rows, int width, double* to, std::ptrdiff_t stride) {
  int r = 0;
  for (; r + 4 <= rows; r += 4) {
    int j = 0;
    for (; j + 4 <= width; j += 4) TransposeSquare(row + r, j, to + j * stride + r, stride);
    for (; j < width; ++j) {
      const double four[4] = {row[r][j], row[r + 1][j], row[r + 2][j], row[r + 3][j]};
      std::memcpy(to + j * stride + r, four, sizeof four);
    }
  }
  for (; r < rows; ++r) {
    for (int j = 0; j < width; ++j) to[j * stride + r] = row[r][j];
  }
}

int Padded(int rows) {
  return (rows + kLanes - 1) / kLanes * kLanes;
}

// The distance of columns of up to that many rows. It avoids powers of two, so that neighbouring columns do not share
// cache sets.
int Stride(int rows) {
  return Padded(std::clamp(rows, 1, TallReduction::kBlockRows)) + kLanes;
}

// Room for `size` doubles on a cache line. The memory is aligned by hand, as aligned allocation is slow for the fits of
// few points.
double* Allocate(std::size_t size, std::unique_ptr<double[]>& memory) {
  std::size_t room = (size + kLanes) * sizeof(double);
  memory.reset(new double[size + kLanes]);
  AdviseLargePages(memory.get(), room);
  void* start = memory.get();
  return static_cast<double*>(std::align(kLanes * sizeof(double), size * sizeof(double), start, room));
}

}  // namespace

TallReduction::TallReduction(int columns, int rows)
    : m_columns(columns), m_blockRows(std::clamp(rows, 1, kBlockRows)), m_stride(Stride(rows)) {
  const std::size_t n = static_cast<std::size_t>(columns);
  const std::size_t blockSize = n * static_cast<std::size_t>(m_stride);
  if (n > SIZE_MAX / sizeof(double) / (n + kBlockRows + 2 * kLanes)) throw std::bad_alloc();
  const std::size_t size = blockSize + n * n + 4 * n;
  m_block = Allocate(size, m_memory);
  m_triangle = m_block + blockSize;
  std::fill_n(m_triangle, n * n, 0.0);
}

void TallReduction::KeepReflectors(TallReflectors* reflectors) {
  m_reflectors = reflectors;
  if (reflectors != nullptr) m_block = reflectors->NextBlock();
}

void TallReduction::AbsorbBlock(int rows) {
  if (rows <= 0) return;
  const int padded = Padded(rows);
  if (padded != rows) {
    for (int j = 0; j < m_columns; ++j) std::fill(Column(j) + rows, Column(j) + padded, 0.0);
  }
  double* work = m_triangle + static_cast<std::ptrdiff_t>(m_columns) * m_columns;
  const Scratch scratch{work, work + m_columns, work + 2 * m_columns, work + 3 * m_columns};
  ReduceStack(m_triangle, m_block, m_stride, m_columns, padded, scratch);
  if (m_reflectors == nullptr) return;
  m_reflectors->Keep(scratch.head, scratch.tau);
  m_block = m_reflectors->NextBlock();
}

void TallReduction::AddRows(const double* const* row, const double* rhs, int count) {
  const int width = rhs != nullptr ? m_columns - 1 : m_columns;
  for (int i = 0; i < count;) {
    const int taken = std::min(count - i, m_blockRows - m_collected);
    Transpose(row + i, taken, width, m_block + m_collected, m_stride);
    if (rhs != nullptr) std::copy(rhs + i, rhs + i + taken, Column(width) + m_collected);
    i += taken;
    m_collected += taken;
    if (m_collected == m_blockRows) Finish();
  }
}

void TallReduction::Finish() {
  if (m_collected > 0) AbsorbBlock(m_collected);
  m_collected = 0;
}

TallReflectors::TallReflectors(int unknowns, int rows) : m_unknowns(unknowns), m_rows(rows), m_stride(Stride(rows)) {
  const std::size_t blocks = static_cast<std::size_t>(rows) / TallReduction::kBlockRows + 1;
  const std::size_t perUnknown = blocks * static_cast<std::size_t>(m_stride + 2);
  const std::size_t padding = blocks * kLanes + static_cast<std::size_t>(m_stride);
  const std::size_t n = static_cast<std::size_t>(unknowns);
  if (perUnknown > (SIZE_MAX / sizeof(double) - padding) / n) throw std::bad_alloc();
  m_first = Allocate(n * perUnknown + padding, m_values);
}

void TallReflectors::Keep(const double* head, const double* tau) {
  double* to = NextBlock() + m_unknowns * m_stride;
  to = std::copy_n(head, m_unknowns, to);
  to = std::copy_n(tau, m_unknowns, to);
  m_used = static_cast<std::size_t>(to - m_first);
  m_used = (m_used + kLanes - 1) / kLanes * kLanes;
}

void TallReflectors::Apply(const double* b, double* projected) const {
  double block[TallReduction::kBlockRows];
  std::fill_n(projected, m_unknowns, 0.0);
  const double* from = m_first;
  for (int first = 0; first < m_rows; first += TallReduction::kBlockRows) {
    const int rows = std::min(TallReduction::kBlockRows, m_rows - first);
    const int padded = Padded(rows);
    std::fill(std::copy_n(b + first, rows, block), block + padded, 0.0);
    const double* head = from + m_unknowns * m_stride;
    ReflectStack(from, m_stride, head, head + m_unknowns, m_unknowns, padded, projected, block);
    from = head + (2 * m_unknowns + kLanes - 1) / kLanes * kLanes;
  }
}

}  // namespace nu::engine::linear
