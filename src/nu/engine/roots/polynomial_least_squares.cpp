#include "nu/engine/roots/polynomial_least_squares.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "nu/engine/base/simd.h"
#include "nu/engine/linear/svd.h"
#include "nu/engine/linear/tall_qr.h"
#include "nu/engine/roots/chebyshev_series.h"

// The design matrix A of the powers x_i^j, j = 0 .. n, is never formed. With t running from -1 to 1 over the samples,
//
//   A = B C,   B_ij = T_j(t_i),   C: the Chebyshev series of the powers, x^j = sum_k C_kj T_k(t)
//
// and B is well conditioned where A is not: what is lost to rounding in B does not come back multiplied by the square
// of the condition of A. B exists in blocks of rows only; each is stacked under the triangle of the rows before it and
// reduced together with y, which leaves B = Q R. The small triangle R C has the singular values, the right singular
// vectors and the minimum-norm solution of A. With full rank the series z = R^-1 Q^T y is solved for and written in
// powers of x.

namespace nu::engine::roots {
namespace {

struct Extent {
  double lowest;
  double highest;
  double largest;  // |y|
  bool finite;     // all x and y
};

NU_ALWAYS_INLINE void Widen(double x, double y, double& low, double& high, double& size, double& difference) {
  low = x < low ? x : low;
  high = x > high ? x : high;
  size = std::fabs(y) > size ? std::fabs(y) : size;
  difference += (x - x) + (y - y);
}

NU_KERNEL Extent Measure(const Samples& samples) {
  double low[kLanes], high[kLanes], size[kLanes] = {}, difference[kLanes] = {};
  std::fill_n(low, kLanes, samples.x[0]);
  std::fill_n(high, kLanes, samples.x[0]);
  int i = 0;
  for (; i + kLanes <= samples.count; i += kLanes) {
    NU_LANE_LOOP
    for (int l = 0; l < kLanes; ++l) Widen(samples.x[i + l], samples.y[i + l], low[l], high[l], size[l], difference[l]);
  }
  for (; i < samples.count; ++i) Widen(samples.x[i], samples.y[i], low[0], high[0], size[0], difference[0]);
  return {*std::min_element(low, low + kLanes), *std::max_element(high, high + kLanes),
          *std::max_element(size, size + kLanes), SumLanes(difference) == 0.0};
}

SeriesFrame FrameOf(const Extent& extent) {
  const double stretch = 1.0 / (0.5 * extent.highest - 0.5 * extent.lowest);
  // Where all x are the same, any frame serves.
  return {0.5 * extent.lowest + 0.5 * extent.highest, std::isfinite(stretch) ? stretch : 1.0};
}

// Huge y are scaled to 1 by a power of two, which changes no digit of the solution.
int ExponentOf(double largest) {
  return largest > 1.0 && std::isfinite(largest) ? std::ilogb(largest) : 0;
}

NU_KERNEL void FillSeries(const double* x, const SeriesFrame& frame, int rows, int degree, double* block,
                          std::ptrdiff_t stride) {
  std::fill_n(block, rows, 1.0);
  if (degree == 0) return;
  const double* t = block + stride;
  for (int r = 0; r < rows; ++r) block[stride + r] = frame.stretch * (x[r] - frame.centre);
  for (int j = 2; j <= degree; ++j) {
    double* __restrict column = block + j * stride;
    const double* last = column - stride;
    const double* beforeLast = last - stride;
    for (int r = 0; r < rows; ++r) column[r] = 2.0 * t[r] * last[r] - beforeLast[r];
  }
}

void Reduce(const Samples& samples, const SeriesFrame& frame, double scale, TallReduction& reduction) {
  const int degree = reduction.Columns() - 2;
  const std::ptrdiff_t stride = reduction.Column(1) - reduction.Column(0);
  for (int i = 0; i < samples.count; i += TallReduction::kBlockRows) {
    const int rows = std::min(TallReduction::kBlockRows, samples.count - i);
    FillSeries(samples.x + i, frame, rows, degree, reduction.Column(0), stride);
    double* y = reduction.Column(degree + 1);
    for (int r = 0; r < rows; ++r) y[r] = scale * samples.y[i + r];
    reduction.AbsorbBlock(rows);
  }
}

// A square block, stored row by row.
class Square {
 public:
  explicit Square(int size)
      : m_size(size), m_elements(static_cast<std::size_t>(size) * static_cast<std::size_t>(size)) {}
  double* operator[](int i) { return m_elements.data() + static_cast<std::ptrdiff_t>(i) * m_size; }
  const double* operator[](int i) const { return m_elements.data() + static_cast<std::ptrdiff_t>(i) * m_size; }

 private:
  int m_size;
  std::vector<double> m_elements;
};

// Forms R C. Row j of `powers` is column j of C: x^j = (centre + t / stretch) x^(j-1), with t T_k = (T_(k-1) + T_(k+1))
// / 2.
Square TriangleOfPowers(const TallReduction& reduction, const SeriesFrame& frame, int size) {
  Square powers(size);
  Square triangle(size);
  const double half = 0.5 / frame.stretch;
  powers[0][0] = 1.0;
  for (int j = 1; j < size; ++j) {
    const double* lower = powers[j - 1];
    double* power = powers[j];
    for (int k = 0; k < j; ++k) {
      power[k] += frame.centre * lower[k];
      power[k + 1] += half * lower[k];
      power[k == 0 ? 1 : k - 1] += half * lower[k];
    }
  }
  for (int i = 0; i < size; ++i) {
    for (int j = i; j < size; ++j) {
      for (int k = i; k <= j; ++k) triangle[i][j] += reduction.R(i, k) * powers[j][k];
    }
  }
  return triangle;
}

// Solves z = R^-1 Q^T y.
void SolveSeries(const TallReduction& reduction, int size, double* z) {
  for (int i = size - 1; i >= 0; --i) {
    double sum = reduction.R(i, size);
    for (int j = i + 1; j < size; ++j) sum -= reduction.R(i, j) * z[j];
    z[i] = sum / reduction.R(i, i);
  }
}

// Solves a = V W^-1 U^T Q^T y without the vanished singular values.
void SolveMinimumNorm(const TallReduction& reduction, const Square& u, const std::vector<double>& w, const Square& v,
                      int size, double* a) {
  std::fill_n(a, size, 0.0);
  for (int k = 0; k < size; ++k) {
    const double value = w[static_cast<std::size_t>(k)];
    if (value == 0.0) continue;
    double share = 0.0;
    for (int i = 0; i < size; ++i) share += u[i][k] * reduction.R(i, size);
    for (int j = 0; j < size; ++j) a[j] += v[j][k] * (share / value);
  }
}

}  // namespace

bool SolvePolynomial(const Samples& samples, int degree, double tolerance, double zero, double* a) {
  const Extent extent = Measure(samples);
  if (!extent.finite) return false;
  const SeriesFrame frame = FrameOf(extent);
  const int exponent = ExponentOf(extent.largest);
  const int size = degree + 1;
  TallReduction reduction(size + 1, samples.count);
  Reduce(samples, frame, std::ldexp(1.0, -exponent), reduction);

  Square u = TriangleOfPowers(reduction, frame, size);
  Square v(size);
  std::vector<double> w(static_cast<std::size_t>(size));
  // The threshold of the decomposition grows with the dimension; the one of the caller does not.
  if (!DecomposeSingular(u[0], size, size, size, w.data(), v[0], size, tolerance / size, zero)) return false;
  if (std::find(w.begin(), w.end(), 0.0) == w.end()) {
    SolveSeries(reduction, size, w.data());
    SeriesToPowers(w[0], w.data(), degree, frame, a, v[0]);
  } else {
    SolveMinimumNorm(reduction, u, w, v, size, a);
  }
  for (int j = 0; j <= degree; ++j) a[j] = std::ldexp(a[j], exponent);
  return true;
}

NU_KERNEL double ResidualSum(const Samples& samples, const double* a, int degree) {
  double lane[kLanes] = {};
  int i = 0;
  for (; i + kLanes <= samples.count; i += kLanes) {
    double value[kLanes];
    for (double& v : value) v = a[degree];
    for (int j = degree - 1; j >= 0; --j) {
      NU_LANE_LOOP
      for (int l = 0; l < kLanes; ++l) value[l] = value[l] * samples.x[i + l] + a[j];
    }
    for (int l = 0; l < kLanes; ++l) {
      const double residual = samples.y[i + l] - value[l];
      lane[l] += residual * residual;
    }
  }
  for (int l = 0; i < samples.count; ++i, ++l) {
    double value = a[degree];
    for (int j = degree - 1; j >= 0; --j) value = value * samples.x[i] + a[j];
    lane[l] += (samples.y[i] - value) * (samples.y[i] - value);
  }
  return SumLanes(lane);
}

}  // namespace nu::engine::roots
