#include "nu/engine/roots/trig_series.h"

#include <cmath>

#include "nu/engine/base/elementary.h"
#include "nu/engine/base/floating_point.h"

namespace nu::engine::roots {
namespace {

// A product of complex numbers of modulus 1 adds an error of sqrt(5) / 2 eps to the turned harmonic, its use in the sum
// and the summation another 1/2 each: below 2 eps for every harmonic up to the k-th, in every term of the sum.
constexpr double kRoundingsPerHarmonic = 2.0;
// The errors counted are those of the cosine and sine at the start, the two products and the sum of a term.
constexpr double kRoundingsOfTerm = 4.0;

// Produces cos ku and sin ku, k = 1, 2, ...
struct Turning {
  explicit Turning(double u) : Turning(SinCos(u)) {}
  explicit Turning(const SineCosine& step) : c(step.cosine), s(step.sine), stepCos(step.cosine), stepSin(step.sine) {}

  void Next() {
    const double turned = c * stepCos - s * stepSin;
    s = s * stepCos + c * stepSin;
    c = turned;
  }

  double c, s;
  double stepCos, stepSin;
};

}  // namespace

TrigSeries::TrigSeries(const double* a, const double* b, int n) : m_degree(n), m_a(a, a + n + 1), m_b(b, b + n + 1) {
  m_weight.resize(m_a.size());
  for (int k = 0; k <= n; ++k) m_weight[k] = static_cast<double>(k) / n;
  m_b[0] = 0.0;
}

TrigSeries TrigSeries::Derivative() const {
  TrigSeries derivative(*this);
  for (int k = 0; k <= m_degree; ++k) {
    derivative.m_a[k] = m_weight[k] * m_b[k];
    derivative.m_b[k] = -m_weight[k] * m_a[k];
  }
  return derivative;
}

void TrigSeries::Sample(double u, double* d) const {
  double sum[kSamples] = {m_a[0]};
  Turning turn(u);
  for (int k = 1;; turn.Next()) {
    const double w = m_weight[k];
    const double value = m_a[k] * turn.c + m_b[k] * turn.s;
    const double slope = w * (m_b[k] * turn.c - m_a[k] * turn.s);
    const double w2 = w * w;
    sum[0] += value;
    sum[1] += slope;
    sum[2] -= w2 * value;
    sum[3] -= w2 * slope;
    sum[4] += w2 * w2 * value;
    if (++k > m_degree) break;
  }
  for (int i = 0; i < kSamples; ++i) d[i] = sum[i];
}

TrigSeries::ValueAndSlope TrigSeries::At(double u) const {
  ValueAndSlope sum = {m_a[0], 0.0};
  Turning turn(u);
  for (int k = 1;; turn.Next()) {
    sum.value += m_a[k] * turn.c + m_b[k] * turn.s;
    sum.slope += m_weight[k] * (m_b[k] * turn.c - m_a[k] * turn.s);
    if (++k > m_degree) break;
  }
  return sum;
}

void TrigSeries::Derivatives(double u, int count, double* d) const {
  for (int j = 0; j < count; ++j) d[j] = j == 0 ? m_a[0] : 0.0;
  Turning turn(u);
  for (int k = 1;; turn.Next()) {
    const double w = m_weight[k];
    double value = m_a[k] * turn.c + m_b[k] * turn.s;
    double slope = m_b[k] * turn.c - m_a[k] * turn.s;
    for (int j = 0; j < count; ++j) {
      d[j] += value;
      const double next = w * slope;
      slope = -w * value;
      value = next;
    }
    if (++k > m_degree) break;
  }
}

void TrigSeries::Bounds(int count, double* bound) const {
  for (int j = 0; j < count; ++j) bound[j] = 0.0;
  for (int k = 0; k <= m_degree; ++k) {
    double x = std::sqrt(m_a[k] * m_a[k] + m_b[k] * m_b[k]);
    for (int j = 0; j < count; ++j) {
      bound[j] += x;
      x *= m_weight[k];
    }
  }
}

double TrigSeries::EvaluationError(int j) const {
  return (kRoundingsOfTerm + j + kRoundingsPerHarmonic * m_degree) * kEpsilon;
}

}  // namespace nu::engine::roots
