#include "nu/linalg/internal/tall_qr.h"

#include <algorithm>
#include <cmath>

#include "nu/foundation/internal/simd.h"

namespace nu::internal {
namespace {

// Between these the squares of a pivot column neither overflow nor lose digits to underflow.
constexpr double kSafeSquareLow = 1e-260;
constexpr double kSafeSquareHigh = 1e302;

// The reflector I - tau v v^T with v = (head, pivot column of the block).
struct Reflector {
  double head;
  double tau;
  double diagonal;
};

// dot[c] = p . q_c for W columns that lie `stride` apart.
template<int W>
NU_ALWAYS_INLINE void Dots(const double* p, const double* q, std::size_t stride, int rows, double* dot) {
  double lane[W][kLanes] = {};
  for (int r = 0; r < rows; r += kLanes) {
    for (int c = 0; c < W; ++c) {
      for (int l = 0; l < kLanes; ++l) lane[c][l] += p[r + l] * q[c * stride + r + l];
    }
  }
  for (int c = 0; c < W; ++c) dot[c] = SumLanes(lane[c]);
}

// q_c -= weight[c] p.
template<int W>
NU_ALWAYS_INLINE void Subtract(const double* p, double* q, std::size_t stride, int rows, const double* weight) {
  for (int r = 0; r < rows; r += kLanes) {
    for (int c = 0; c < W; ++c) {
      for (int l = 0; l < kLanes; ++l) q[c * stride + r + l] -= weight[c] * p[r + l];
    }
  }
}

template<int W>
NU_ALWAYS_INLINE void Reflect(const Reflector& h, const double* p, double* q, std::size_t stride, int rows,
                              double* top) {
  double weight[W];
  Dots<W>(p, q, stride, rows, weight);
  for (int c = 0; c < W; ++c) {
    weight[c] = h.tau * (h.head * top[c] + weight[c]);
    top[c] -= weight[c] * h.head;
  }
  Subtract<W>(p, q, stride, rows, weight);
}

NU_ALWAYS_INLINE Reflector MakeReflector(double alpha, double square) {
  const double norm = std::sqrt(alpha * alpha + square);
  const double head = alpha + std::copysign(norm, alpha);
  return {head, 1.0 / (norm * std::fabs(head)), -std::copysign(norm, alpha)};
}

// For columns whose squares would leave the range: the pivot column is brought to unit size by a power of two, which
// changes the scale of v and of nothing else.
NU_ALWAYS_INLINE Reflector MakeScaledReflector(double alpha, double* p, int rows) {
  double largest = std::fabs(alpha);
  for (int r = 0; r < rows; ++r) {
    // Written so that a NaN stays.
    if (!(std::fabs(p[r]) <= largest)) largest = std::fabs(p[r]);
    if (std::isnan(largest)) break;
  }
  if (largest == 0.0) return {0.0, 0.0, alpha};
  const int exponent = std::isfinite(largest) ? std::ilogb(largest) : 0;
  for (int r = 0; r < rows; ++r) p[r] = std::ldexp(p[r], -exponent);
  double square;
  Dots<1>(p, p, 0, rows, &square);
  Reflector h = MakeReflector(std::ldexp(alpha, -exponent), square);
  h.diagonal = std::ldexp(h.diagonal, exponent);
  return h;
}

// One pass of reflectors over the stacked [triangle; block], columns by columns. `rows` is a multiple of the lanes.
NU_KERNEL void ReduceStack(double* triangle, double* block, std::size_t stride, int columns, int rows) {
  for (int j = 0; j < columns; ++j) {
    double* p = block + j * stride;
    double* top = triangle + static_cast<std::size_t>(j) * columns;
    double square;
    Dots<1>(p, p, 0, rows, &square);
    const double whole = top[j] * top[j] + square;
    const bool safe = whole >= kSafeSquareLow && whole <= kSafeSquareHigh;
    const Reflector h = safe ? MakeReflector(top[j], square) : MakeScaledReflector(top[j], p, rows);
    if (h.tau == 0.0) continue;
    top[j] = h.diagonal;
    int c = j + 1;
    for (; c + 4 <= columns; c += 4) Reflect<4>(h, p, block + c * stride, stride, rows, top + c);
    if (c + 2 <= columns) {
      Reflect<2>(h, p, block + c * stride, stride, rows, top + c);
      c += 2;
    }
    if (c < columns) Reflect<1>(h, p, block + c * stride, stride, rows, top + c);
  }
}

}  // namespace

TallReduction::TallReduction(int columns)
    : m_columns(columns),
      m_block(static_cast<double*>(
          ::operator new[](static_cast<std::size_t>(columns) * kStride * sizeof(double), std::align_val_t{64}))),
      m_triangle(new double[static_cast<std::size_t>(columns) * columns]()) {}

void TallReduction::AbsorbBlock(int rows) {
  const int padded = (rows + kLanes - 1) / kLanes * kLanes;
  if (padded != rows) {
    for (int j = 0; j < m_columns; ++j) std::fill(Column(j) + rows, Column(j) + padded, 0.0);
  }
  ReduceStack(m_triangle.get(), m_block.get(), kStride, m_columns, padded);
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
