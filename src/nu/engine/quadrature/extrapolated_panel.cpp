#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "nu/engine/base/compensated_sum.h"
#include "nu/engine/base/elementary.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/quadrature/panel_rules.h"
#include "nu/engine/quadrature/singular_end.h"

// An integrand that is singular at c = lo or hi, where c is not 0, is known near c only to the digits that double
// leaves of the distance. So the surroundings of c are divided into shells whose distances from c halve, each is
// integrated by the Gauss-Kronrod rule, and the limit of the partial sums is extrapolated (R. Piessens et al.,
// QUADPACK, 1983). For a power of the distance times a power series, also with a logarithm, the sums approach their
// limit by geometric sequences. These are removed one by one: where their ratios are not known by the epsilon algorithm
// (P. Wynn, Math. Tables Aids Comput. 10, 1956), applied to every, every second and every fourth sum, since wider steps
// are less sensitive to errors; and with the ratios that the integrand's values suggest, which is less sensitive still.
// The shells start outside the panel, as far from c as the rule resolves the integrand: there more digits are known.
//
// The error is what the last steps changed, what an edge between the last shell and c may count, and what errors of the
// shells make of the limit. The derivatives of the limit with respect to the sums alternate in sign while all ratios
// are positive, since they are the coefficients of the square of prod (t - r) / (1 - r), or of the product itself where
// the ratios r are given. So one derivative in the direction of alternating errors bounds what they do.

namespace nu::engine::quadrature {

namespace {

constexpr std::size_t kMostShells = 44;
constexpr std::size_t kMostOuter = 22;
// So many halvings of the panel are sampled at least.
constexpr std::size_t kLeastInner = 8;
constexpr std::size_t kColumns = 18;
// A shell outside the panel is of use while its error is that of its values, times this.
constexpr double kResolved = 32.0;
// The integral of a steeper power diverges, or cannot be told from one that does.
constexpr double kSteepest = -0.99;
// The limit is believed to be wrong by what it changed, times this.
constexpr double kTrust = 4.0;
// The epsilon algorithm's own rounding errors grow as those of the sums do.
constexpr double kOwnErrors = 2.0;

// This share of the bound counts: the error of a shell is a mean over 45 samples, which do not all have one sign.
constexpr double kAligned = 0.5;
// Usual errors, as a share of their bounds.
constexpr double kUsualShare = 0.05;

// A number, and its derivative in the direction of the errors.
struct Dual {
  double value = 0.0;
  double error = 0.0;

  friend Dual operator+(const Dual& a, const Dual& b) { return {a.value + b.value, a.error + b.error}; }
  friend Dual operator-(const Dual& a, const Dual& b) { return {a.value - b.value, a.error - b.error}; }
  friend Dual operator*(double factor, const Dual& a) { return {factor * a.value, factor * a.error}; }
  Dual Reciprocal() const { return {1.0 / value, -error / (value * value)}; }
};
using Row = std::array<Dual, kColumns + 1>;

struct Limit {
  double value = 0.0;
  double error = kInfinity;

  void Improve(double otherValue, double otherError) {
    if (otherError < error) *this = {otherValue, otherError};
  }
};

// What the estimate in a column changed, from the one in the row before and the one two columns before.
double Changed(const Row& now, const Row& before, std::size_t column) {
  const double value = now[column].value;
  return std::max(std::fabs(value - before[column].value), std::fabs(value - now[column - 2].value));
}

// The table is not extended beyond a column whose differences are noise: the reciprocals of those would hold the
// estimates where they are, whatever the following sums say.
class Epsilon {
 public:
  // A sum that may be wrong by the error; *best is improved by the estimates that it brings.
  void Add(double sum, double error, Limit* best) {
    m_sign = -m_sign;
    Row now{Dual{sum, m_sign * error}};
    Dual corner;
    std::size_t column = 0;
    for (; column < std::min(m_columns, kColumns); ++column) {
      const Dual difference = now[column] - m_before[column];
      const double noise =
          column % 2 == 0 ? kUsualShare * std::fabs(difference.error) + kEpsilon * std::fabs(now[column].value) : 0.0;
      if (!(std::fabs(difference.value) > noise)) break;
      now[column + 1] = corner + difference.Reciprocal();
      corner = m_before[column];
      if (column % 2 == 0 || column + 1 >= m_columns) continue;
      const Dual& estimate = now[column + 1];
      const double changed = Changed(now, m_before, column + 1);
      best->Improve(estimate.value, kTrust * changed + kOwnErrors * std::fabs(estimate.error));
    }
    m_before = now;
    m_columns = column + 1;
  }

 private:
  Row m_before{};
  std::size_t m_columns = 0;
  double m_sign = 1.0;
};

// The same with the ratios of the powers p, p + 1, ... of halves, each twice, for a logarithm. It works on the terms:
// the differences of rounded sums would be less accurate.
class Richardson {
 public:
  explicit Richardson(double power) : m_power(power) {}

  const Row& Add(double sum, double term, double error) {
    m_sign = -m_sign;
    m_sumError += m_sign * error;
    m_before = m_estimate;
    m_estimate = {Dual{sum, m_sumError}};
    Row now{Dual{term, m_sign * error}};
    const std::size_t columns = std::min(m_count + 1, kColumns);
    for (std::size_t column = 0; column < columns; ++column) {
      const std::size_t pair = column / 2;
      const double r = Pow(0.5, m_power + static_cast<double>(pair));
      m_estimate[column + 1] = m_estimate[column] + (r / (1.0 - r)) * now[column];
      if (column < m_count) now[column + 1] = (1.0 / (1.0 - r)) * (now[column] - r * m_term[column]);
    }
    m_term = now;
    ++m_count;
    return m_estimate;
  }

  // *best by the estimates. The other row has those with a power that is wrong by its error.
  void Improve(Limit* best, const Row& other) const {
    for (std::size_t column = 2; column < std::min(m_count, kColumns + 1); column += 2) {
      const Dual& estimate = m_estimate[column];
      const double rounding = kEpsilon * std::fabs(estimate.value);
      const double ofPower = std::fabs(estimate.value - other[column].value);
      const double changed = Changed(m_estimate, m_before, column);
      best->Improve(estimate.value, kTrust * changed + kAligned * std::fabs(estimate.error) + ofPower + rounding);
    }
  }

 private:
  double m_power;
  Row m_term{};
  Row m_estimate{};
  Row m_before{};
  double m_sumError = 0.0;
  double m_sign = 1.0;
  std::size_t m_count = 0;
};

// The integrals over the shells from the outermost on. The sums count from the outer end of the panel.
class Shells {
 public:
  Shells(SingularEnd& end, double width, double reach)
      : m_end(end), m_known(1.0 + end.Power()), m_shifted(1.0 + end.Power() + end.PowerError()) {
    std::array<Shell, kMostOuter> outer{};
    std::size_t count = 0;
    for (double from = width; 2.0 * from <= reach && count < kMostOuter; from *= 2.0) {
      const Shell shell = end.Octave(from);
      if (!(shell.error <= kResolved * end.RelativeError(from) * shell.absolute)) break;
      m_sum.Add(-shell.value);
      outer[count++] = shell;
    }
    const double sum = m_sum.Value();
    Limit none;
    for (Epsilon& sequence : m_unknown) sequence.Add(sum, kEpsilon * std::fabs(sum), &none);
    while (count-- > 0) Add(outer[count]);
  }

  // The best estimate of the limit that it brings.
  Limit Add(const Shell& shell) {
    Limit best;
    m_sum.Add(shell.value);
    m_edges += shell.edges;
    if (m_count > 0) m_edges += m_end.StepAt(2.0 * shell.from, m_atInner, shell.atOuter);
    m_atInner = shell.atInner;
    ++m_count;
    const double sum = m_sum.Value();
    const double error = shell.error + shell.carried + shell.absolute * m_end.RelativeError(shell.from);
    m_known.Add(sum, shell.value, error);
    m_known.Improve(&best, m_shifted.Add(sum, shell.value, error));
    for (std::size_t i = 0; i < m_unknown.size(); ++i) {
      if (m_count % (std::size_t{1} << i) != 0) continue;
      m_unknown[i].Add(sum, std::max(error, kEpsilon * std::fabs(sum)), &best);
    }
    return best;
  }

  // What edges in the shells may count. They change all that lies nearer to c, which is 1 / (1 - r) times a shell.
  double ErrorOfEdges() const { return m_edges / (1.0 - Pow(0.5, 1.0 + m_end.Power())); }

 private:
  SingularEnd& m_end;
  CompensatedSum m_sum;
  Richardson m_known;
  Richardson m_shifted;
  std::array<Epsilon, 3> m_unknown;  // of every, every second, every fourth sum
  double m_edges = 0.0;
  double m_atInner = 0.0;
  std::size_t m_count = 0;
};

}  // namespace

Panel ExtrapolatedPanel(const Integrand& f, double lo, double hi, bool atLo, double reach, double goal, Probes probes,
                        long* samples) {
  Panel panel{.lo = lo, .hi = hi, .error = kInfinity};
  SingularEnd end(f, atLo ? lo : hi, atLo ? 1.0 : -1.0, reach, samples);
  end.Compare(probes);
  // No shell can be better than the nearest.
  if (!(end.Power() > kSteepest && end.ErrorWithin(2.0 * end.Nearest()) <= goal)) return panel;
  Shells shells(end, hi - lo, reach);
  // The limit that is known best, and what later ones differ from it. Those say that the law goes on, though their own
  // errors are larger, until the probes say so.
  Limit best;
  double spread = 0.0;
  double width = hi - lo;
  for (std::size_t k = 0; k < kMostShells && width > end.Nearest() && panel.error > goal; ++k, width *= 0.5) {
    const Shell shell = end.Octave(0.5 * width);
    if (shell.notFinite) return panel;
    if (k == 0) panel.gap = shell.gap;
    if (k == 0) (atLo ? panel.atHi : panel.atLo) = shell.atOuter;
    panel.absolute += shell.absolute;
    panel.carried += shell.carried;
    const Limit limit = shells.Add(shell);
    spread = std::max(spread, std::fabs(limit.value - best.value));
    if (limit.error < best.error + spread) {
      best = limit;
      spread = 0.0;
    }
    const double error = best.error + spread + shells.ErrorOfEdges() + end.ErrorWithin(shell.from);
    if (!(k >= kLeastInner && error < panel.error)) continue;
    panel.value = best.value;
    panel.error = error;
  }
  panel.absolute = std::max(panel.absolute, std::fabs(panel.value));
  panel.settled = panel.error <= goal && std::isfinite(panel.value);
  return panel;
}

}  // namespace nu::engine::quadrature
