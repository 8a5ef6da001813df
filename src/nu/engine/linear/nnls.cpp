#include "nu/engine/linear/nnls.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <numeric>
#include <utility>
#include <vector>

#include "nu/engine/base/elementary.h"
#include "nu/engine/base/simd.h"

namespace nu::engine::linear {
namespace {

// Lawson and Hanson allow three exchanges per unknown; degenerate data need a few more.
constexpr int kExchangesPerUnknown = 10;

NU_ALWAYS_INLINE void AddScaled(double f, const double* __restrict x, double* __restrict y, int n) {
  for (int j = 0; j < n; ++j) y[j] += f * x[j];
}

// Adds the Householder vector times the rows to sum; then rows -= tau * vector * sum. Row i starts at a + i * ld.
NU_KERNEL void ApplyReflector(double* a, std::ptrdiff_t ld, const double* v, double tau, int rows, int columns,
                              double* sum) {
  std::fill_n(sum, columns, 0.0);
  for (int i = 0; i < rows; ++i) AddScaled(v[i], a + i * ld, sum, columns);
  for (int i = 0; i < rows; ++i) AddScaled(-tau * v[i], sum, a + i * ld, columns);
}

// Sets sum to the sum of weight_i * row i; the weight of a row stands `weightOffset` behind its start.
NU_KERNEL void WeightRows(const double* a, std::ptrdiff_t ld, int rows, int columns, int weightOffset, double* sum) {
  std::fill_n(sum, columns, 0.0);
  for (int i = 0; i < rows; ++i) AddScaled(a[i * ld + weightOffset], a + i * ld, sum, columns);
}

NU_KERNEL void RotateRows(double c, double s, double* __restrict x, double* __restrict y, int columns) {
  for (int j = 0; j < columns; ++j) {
    const double upper = c * x[j] + s * y[j];
    y[j] = c * y[j] - s * x[j];
    x[j] = upper;
  }
}

// The columns of the positive unknowns stand in front and are triangular. Every exchange of a column applies its
// rotations or its reflector to all columns and the right-hand side, so that the rows below the triangle give the
// gradients of the other unknowns, and no product with A is needed.
class ActiveSet {
 public:
  ActiveSet(const TallReduction& reduction, double tolerance, double* x)
      : m_n(reduction.Columns() - 1),
        m_ld(m_n + 1),
        m_tolerance(tolerance),
        m_x(x),
        m_rows(static_cast<std::size_t>(m_n) * m_ld),
        m_work(3 * static_cast<std::size_t>(m_ld)),
        m_unknown(m_n),
        m_columnNorm(m_n),
        m_blocked(m_n) {
    std::fill_n(x, m_n, 0.0);
    std::iota(m_unknown.begin(), m_unknown.end(), 0);
    for (int j = 0; j < m_ld; ++j) {
      double square = 0.0;
      for (int i = 0; i <= std::min(j, m_n - 1); ++i) {
        Row(i)[j] = reduction.R(i, j);
        square += Row(i)[j] * Row(i)[j];
      }
      m_finite = m_finite && std::isfinite(square);
      if (j < m_n) m_columnNorm[j] = std::sqrt(square);
    }
  }

  bool Solve() {
    if (!m_finite) return false;
    int exchanges = kExchangesPerUnknown * m_n;
    while (m_positive < m_n) {
      const int entered = EnterBest();
      if (entered < 0) return true;
      while (!SettlePositive()) {
        if (--exchanges < 0) return false;
      }
      // An unknown that entered and left at once would do so again: it is barred until another one has stayed.
      if (m_x[entered] > 0.0) {
        std::fill(m_blocked.begin(), m_blocked.end(), char{0});
      } else {
        m_blocked[entered] = 1;
      }
      if (--exchanges < 0) return false;
    }
    return true;
  }

 private:
  double* Row(int i) { return m_rows.data() + static_cast<std::ptrdiff_t>(i) * m_ld; }

  // Returns the unknown with the steepest gradient that may enter; -1 when there is none.
  int EnterBest() {
    double* gradient = m_work.data();
    const int p = m_positive;
    WeightRows(Row(p) + p, m_ld, m_n - p, m_n - p, m_n - p, gradient + p);
    for (;;) {
      int best = -1;
      for (int j = m_positive; j < m_n; ++j) {
        if (!m_blocked[m_unknown[j]] && gradient[j] > m_tolerance && (best < 0 || gradient[j] > gradient[best]))
          best = j;
      }
      if (best < 0) return -1;
      const int unknown = m_unknown[best];
      if (Enter(best)) return unknown;
      gradient[best] = 0.0;
      if (!(m_tolerance >= 0.0)) m_blocked[unknown] = 1;
    }
  }

  // Moves column t to the end of the positive ones. Refuses when what is new in it is only rounding, or when its
  // unknown would not become positive, as the sign of the gradient promises but for rounding.
  bool Enter(int t) {
    const int p = m_positive;
    const int rows = m_n - p;
    double* v = m_work.data() + m_ld;
    double square = 0.0;
    double product = 0.0;
    for (int i = 0; i < rows; ++i) {
      v[i] = Row(p + i)[t];
      square += v[i] * v[i];
      product += v[i] * Row(p + i)[m_n];
    }
    const double norm = std::sqrt(square);
    if (!(norm > m_n * DBL_EPSILON * m_columnNorm[m_unknown[t]]) || !(product > 0.0)) return false;
    for (int i = 0; i < m_n; ++i) std::swap(Row(i)[t], Row(i)[p]);
    std::swap(m_unknown[t], m_unknown[p]);
    const double diagonal = -std::copysign(norm, v[0]);
    v[0] -= diagonal;
    ApplyReflector(Row(p) + p + 1, m_ld, v, 1.0 / (norm * std::fabs(v[0])), rows, m_n - p, m_work.data() + 2 * m_ld);
    Row(p)[p] = diagonal;
    for (int i = p + 1; i < m_n; ++i) Row(i)[p] = 0.0;
    ++m_positive;
    return true;
  }

  // Solves for the positive unknowns. When one of them would not stay positive, takes the longest step with all of them
  // non-negative, removes those that reached zero and returns false.
  bool SettlePositive() {
    double* z = m_work.data();
    double step = 1.0;
    for (int i = m_positive - 1; i >= 0; --i) {
      double sum = Row(i)[m_n];
      for (int k = i + 1; k < m_positive; ++k) sum -= Row(i)[k] * z[k];
      z[i] = sum / Row(i)[i];
      const double old = m_x[m_unknown[i]];
      if (!(z[i] > 0.0)) step = std::min(step, old / (old - z[i]));
    }
    bool all = true;
    for (int i = m_positive - 1; i >= 0; --i) {
      double& x = m_x[m_unknown[i]];
      const double old = x;
      const bool falls = !(z[i] > 0.0);
      x = falls || step < 1.0 ? old + step * (z[i] - old) : z[i];
      if (falls && (!(x > 0.0) || old / (old - z[i]) <= step)) {
        x = 0.0;
        Leave(i);
        all = false;
      }
    }
    return all;
  }

  void Leave(int k) {
    for (int i = 0; i < m_positive; ++i) std::rotate(Row(i) + k, Row(i) + k + 1, Row(i) + m_positive);
    std::rotate(m_unknown.begin() + k, m_unknown.begin() + k + 1, m_unknown.begin() + m_positive);
    --m_positive;
    for (int i = k; i < m_positive; ++i) {
      const double a = Row(i)[i];
      const double b = Row(i + 1)[i];
      const double norm = Hypot(a, b);
      if (norm == 0.0) continue;
      RotateRows(a / norm, b / norm, Row(i) + i, Row(i + 1) + i, m_ld - i);
      Row(i + 1)[i] = 0.0;
    }
  }

  int m_n;
  int m_ld;
  int m_positive = 0;
  bool m_finite = true;
  double m_tolerance;
  double* m_x;
  std::vector<double> m_rows;
  std::vector<double> m_work;
  std::vector<int> m_unknown;  // the unknown that each column belongs to
  std::vector<double> m_columnNorm;
  std::vector<char> m_blocked;
};

}  // namespace

bool SolveNonNegative(const TallReduction& reduction, double tolerance, double* x) {
  return ActiveSet(reduction, tolerance, x).Solve();
}

}  // namespace nu::engine::linear
