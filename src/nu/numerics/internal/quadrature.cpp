#include "nu/numerics/internal/quadrature.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <new>
#include <utility>
#include <vector>

#include "nu/numerics/internal/compensated_sum.h"

// Globally adaptive integration. The interval starts as equal panels, each under a Gauss-Kronrod rule. In every round
// the panels with the largest errors are halved, those that the goal can bear stay. A panel at an end of the interval
// that carries much of the error, or one that halving has isolated, is given to the double-exponential rule first.
//
// No rule sees what lies between its last sample and its end. Therefore the panels are extrapolated to their common
// joint, and where they disagree there, a jump may hide between the two nearest samples: its height times the wider gap
// counts as error of both. The ends of the interval are probed instead, at distances that fall geometrically to the
// resolution of double.

namespace nu::internal {

namespace {

constexpr double kEpsilon = std::numeric_limits<double>::epsilon();
// Rounding error of an integral, in units of the integral of the absolute value: about one rounding from the samples,
// one from the width, one from each of the weighted and the total sum.
constexpr double kRoundings = 4.0;
// A narrower panel, in roundings of its place, has no room for the 15 samples.
constexpr double kLeastWidth = 256.0;
// Halvings after which a panel inside the interval counts as isolated, and between two trials of the same place.
constexpr int kIsolated = 6;
constexpr int kTrialPeriod = 4;
// A panel is tried when it carries this share of the error, and is settled within this share of the goal.
constexpr double kDominant = 0.25;
constexpr double kSettledShare = 0.25;
// The panels that stay may carry this share of the goal; the halved ones need the rest.
constexpr double kStayingShare = 0.5;

// Of one end; two halvings apart they go from the gap of the shortest panel to the resolution of double.
constexpr std::size_t kMostProbes = 24;
struct ProbedEnd {
  std::array<Probe, kMostProbes> probe;
  std::size_t count = 0;

  void Add(const Probe& next) { probe[count++] = next; }
  Probes All() const { return Probes(probe.data(), count); }
};

struct Totals {
  double value;
  double error;
  double absolute;
};

class Subdivision {
 public:
  Subdivision(const Integrand& f, double a, double b, QuadratureLimits& limits)
      : m_f(f), m_a(a), m_b(b), m_limits(limits) {}

  Quadrature Run(const QuadratureGoal& goal) {
    if (!MakeRoom(static_cast<std::size_t>(m_limits.panels))) return {QuadratureEnd::noMemory};
    Start();
    for (long round = 0;; ++round) {
      if (m_notFinite) return {QuadratureEnd::notFinite};
      const Totals totals = Sum();
      if (!std::isfinite(totals.value)) return {QuadratureEnd::notFinite};
      const double target =
          std::max({goal.absolute, goal.ofValue * std::fabs(totals.value), goal.ofAbsolute * totals.absolute});
      const bool reached = totals.error <= target;
      const bool last = round >= m_limits.halvings || m_limits.samples <= 0;
      const bool confirm = round < m_limits.confirmations && !last;
      if (reached && !(confirm && AnyRough())) return {QuadratureEnd::converged, totals.value, totals.error};
      if (last) return {QuadratureEnd::limitReached};
      if (!MakeRoom(2 * m_panels.size())) return {QuadratureEnd::noMemory};
      if (!Refine(totals, target, reached, confirm) && !reached) return {QuadratureEnd::limitReached};
    }
  }

 private:
  // All memory that a round needs, so that whatever else fails comes from the integrand.
  bool MakeRoom(std::size_t panels) {
    try {
      m_next.reserve(panels);
      m_panels.reserve(panels);
      m_shares.reserve(panels);
      m_ordered.reserve(panels);
      return true;
    } catch (const std::bad_alloc&) {
      return false;
    }
  }

  // Between the ends, which overflows nowhere.
  double Joint(int i) const {
    if (i == m_limits.panels) return m_b;
    const double share = static_cast<double>(i) / m_limits.panels;
    return std::clamp(m_a * (1.0 - share) + m_b * share, m_a, m_b);
  }

  // From the gap of the first and the last panel down to the resolution of double.
  void ProbeEnds() {
    const double ratio = std::ldexp(1.0, -m_limits.probeHalvings);
    const double least = kEpsilon * (0.5 * m_b - 0.5 * m_a);
    for (int side : {0, 1}) {
      const double width = side == 0 ? Joint(1) - m_a : m_b - Joint(m_limits.panels - 1);
      double before = kKronrodGap * width;
      for (double asked = ratio * before; asked >= least && m_ends[side].count < kMostProbes; asked *= ratio) {
        const double x = side == 0 ? m_a + asked : m_b - asked;
        const double distance = side == 0 ? x - m_a : m_b - x;
        if (!(distance > 0.0 && distance < before)) break;
        m_ends[side].Add({distance, before, m_f(x).value});
        --m_limits.samples;
        before = distance;
      }
    }
  }

  void Start() {
    ProbeEnds();
    for (int i = 0; i < m_limits.panels && !m_notFinite; ++i) {
      const double lo = Joint(i);
      const double hi = Joint(i + 1);
      if (lo < hi) AddKronrod(lo, hi, 0);
    }
    std::swap(m_panels, m_next);
  }

  void AddKronrod(double lo, double hi, int depth) {
    const Probes atLo = lo == m_a ? m_ends[0].All() : Probes();
    const Probes atHi = hi == m_b ? m_ends[1].All() : Probes();
    m_next.push_back(KronrodPanel(m_f, lo, hi, depth, atLo, atHi));
    m_limits.samples -= kKronrodSamples;
    m_notFinite = m_notFinite || m_next.back().notFinite;
  }

  // Of panel i and the one after it.
  double Disagreement(std::size_t i) const {
    const double gap = std::max(m_panels[i].gap, m_panels[i + 1].gap);
    return gap == 0.0 ? 0.0 : gap * std::fabs(m_panels[i].atHi - m_panels[i + 1].atLo);
  }

  Totals Sum() {
    CompensatedSum value;
    double error = 0.0;
    double absolute = 0.0;
    double before = 0.0;
    m_shares.clear();
    for (std::size_t i = 0; i < m_panels.size(); ++i) {
      const Panel& panel = m_panels[i];
      const double after = i + 1 < m_panels.size() ? Disagreement(i) : 0.0;
      const double share = panel.error + 0.5 * (before + after);
      before = after;
      m_shares.push_back(share);
      value.Add(panel.value);
      absolute += panel.absolute;
      error += share + panel.carried;
    }
    return {value.Value(), error + kRoundings * kEpsilon * absolute, absolute};
  }

  bool AnyRough() const {
    return std::any_of(m_panels.begin(), m_panels.end(), [](const Panel& p) { return p.rough && !p.settled; });
  }

  // The smallest share of those that must go for the rest to stay within the limit.
  double Threshold(double limit) {
    m_ordered.assign(m_shares.begin(), m_shares.end());
    std::sort(m_ordered.begin(), m_ordered.end());
    double sum = 0.0;
    for (double share : m_ordered) {
      sum += share;
      if (sum > limit) return share;
    }
    return std::numeric_limits<double>::infinity();
  }

  // Whether anything was divided.
  bool Refine(const Totals& totals, double target, bool reached, bool confirm) {
    const double threshold = reached ? std::numeric_limits<double>::infinity() : Threshold(kStayingShare * target);
    bool changed = false;
    m_next.clear();
    for (std::size_t i = 0; i < m_panels.size(); ++i) {
      const Panel& panel = m_panels[i];
      const bool chosen = !panel.settled && (m_shares[i] >= threshold || (confirm && panel.rough));
      if (!chosen || !HasRoom(panel) || m_limits.samples <= 0 || m_notFinite) {
        m_next.push_back(panel);
        continue;
      }
      changed = true;
      if (!reached && m_shares[i] >= kDominant * totals.error && Settle(panel, kSettledShare * target)) continue;
      const double middle = panel.lo + 0.5 * (panel.hi - panel.lo);
      AddKronrod(panel.lo, middle, panel.depth + 1);
      AddKronrod(middle, panel.hi, panel.depth + 1);
    }
    std::swap(m_panels, m_next);
    return changed;
  }

  static bool HasRoom(const Panel& panel) {
    return panel.hi - panel.lo > kLeastWidth * kEpsilon * std::max(std::fabs(panel.lo), std::fabs(panel.hi));
  }

  // By the double-exponential rule, where it is due and does it.
  bool Settle(const Panel& panel, double goal) {
    const bool atEnd = panel.lo == m_a || panel.hi == m_b;
    const int since = atEnd ? panel.depth : panel.depth - kIsolated;
    if (since < 0 || since % kTrialPeriod != 0) return false;
    long spent = 0;
    const Panel tried = DoubleExponentialPanel(m_f, panel.lo, panel.hi, goal, &spent);
    m_limits.samples -= spent;
    m_notFinite = m_notFinite || tried.notFinite;
    if (tried.settled) m_next.push_back(tried);
    return tried.settled;
  }

  const Integrand& m_f;
  double m_a;
  double m_b;
  QuadratureLimits& m_limits;
  bool m_notFinite = false;
  std::array<ProbedEnd, 2> m_ends;  // a and b
  std::vector<Panel> m_panels;      // from a to b
  std::vector<Panel> m_next;        // those of the next round
  std::vector<double> m_shares;     // of the error, by panel
  std::vector<double> m_ordered;
};

}  // namespace

Quadrature Integrate(const Integrand& f, double a, double b, const QuadratureGoal& goal, QuadratureLimits& limits) {
  if (!std::isfinite(a) || !std::isfinite(b)) return {QuadratureEnd::notFinite};
  if (a == b) return {};
  if (limits.samples <= 0) return {QuadratureEnd::limitReached};
  Quadrature q = Subdivision(f, std::min(a, b), std::max(a, b), limits).Run(goal);
  if (a > b) q.value = -q.value;
  return q;
}

}  // namespace nu::internal
