#include "nu/engine/quadrature/quadrature.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "nu/engine/base/compensated_sum.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/quadrature/break_search.h"

// Globally adaptive integration. The interval starts as equal panels, each under a Gauss-Kronrod rule. In every round
// the panels with the largest errors are divided, those that the goal can bear stay. Where the samples of a panel are
// not those of a smooth function, the place is searched at which the integrand breaks, and the panel ends there.
// Otherwise it is halved. A rough panel at an end of the interval or at a break that carries much of the error, or any
// panel that halving has isolated, is given to the double-exponential rule first; where that fails, a rough one is
// extrapolated. A sample that is not finite is taken for a singularity that was hit, and its place for a break.
//
// No rule sees what lies between its last sample and its end. Therefore the panels are extrapolated to their common
// joint, and where they disagree there, a jump may hide between the two nearest samples: its height times the wider gap
// counts as error of both. The ends of the interval and the breaks are probed instead, at distances that fall
// geometrically to the resolution of double.

namespace nu::engine::quadrature {

namespace {

// Rounding error of an integral, in units of the integral of the absolute value: about one rounding from the samples,
// one from the width, one from each of the weighted and the total sum.
constexpr double kRoundings = 4.0;
// A narrower panel, in roundings of its place, has no room for the 15 samples.
constexpr double kLeastWidth = 256.0;
// Halvings after which a panel inside the interval counts as isolated, and between two trials of the same place.
constexpr int kIsolated = 6;
constexpr int kTrialPeriod = 4;
// Halvings after which two panels that are both rough are searched for a break on their joint.
constexpr int kJointDepth = 3;
// A panel is tried when it carries this share of the error, divided among the intervals between breaks, and is settled
// within this share of the goal, divided likewise.
constexpr double kDominant = 0.25;
constexpr double kSettledShare = 0.4;
// The panels that stay may carry this share of the goal; the halved ones need the rest.
constexpr double kStayingShare = 0.5;

// These are the probes on one side of a place.
constexpr std::size_t kMostProbes = 24;
struct ProbedSide {
  std::array<Probe, kMostProbes> probe;
  std::size_t count = 0;

  Probes All() const { return Probes(probe.data(), count); }
};

// An end of the interval, or a place inside where the integrand breaks.
struct Break {
  double place;
  ProbedSide below;
  ProbedSide above;

  // The place of a probe that is not finite: a singularity, beside which the break was found.
  std::optional<double> Hit() const {
    for (const Probe& probe : below.All()) {
      if (!std::isfinite(probe.value)) return place - probe.distance;
    }
    for (const Probe& probe : above.All()) {
      if (!std::isfinite(probe.value)) return place + probe.distance;
    }
    return std::nullopt;
  }
};
constexpr int kBreakA = 0;
constexpr int kBreakB = 1;
constexpr std::size_t kMostBreaks = 64;
// After so many an integrand is rough everywhere.
constexpr int kMostVainSearches = 32;

struct Totals {
  double value;
  double error;
  double absolute;
};

class Subdivision {
 public:
  Subdivision(const Integrand& f, double a, double b, QuadratureLimits& limits)
      : m_f(f), m_a(a), m_b(b), m_limits(limits) {}

  Quadrature Run(const QuadratureGoal& goal, const Surroundings& surroundings) {
    const std::span<const double> expected = surroundings.expected.All();
    if (!MakeRoom(static_cast<std::size_t>(m_limits.panels) + expected.size())) return {QuadratureEnd::noMemory};
    Start(expected);
    for (long round = 0;; ++round) {
      if (m_notFinite) return {QuadratureEnd::notFinite};
      if (m_unresolved) return {QuadratureEnd::limitReached};
      const Totals totals = Sum();
      if (!std::isfinite(totals.value)) return {QuadratureEnd::notFinite};
      const double target =
          std::max({goal.absolute, goal.ofValue * std::fabs(totals.value), goal.ofAbsolute * totals.absolute});
      const bool reached = totals.error <= target;
      const bool last = round >= m_limits.halvings || m_limits.samples <= 0;
      const bool confirm = round < m_limits.confirmations && !last;
      if (reached && !(confirm && AnyRough())) {
        if (surroundings.recheck && Recheck()) continue;
        return {QuadratureEnd::converged, totals.value, totals.error};
      }
      if (last) return {QuadratureEnd::limitReached};
      if (!MakeRoom(2 * m_panels.size())) return {QuadratureEnd::noMemory};
      if (!Refine(totals, target, reached, confirm) && !reached) return {QuadratureEnd::limitReached};
    }
  }

  void Report(Places* found) const {
    for (std::size_t i = kBreakB + 1; i < m_breaks.size(); ++i) found->Add(m_breaks[i].place);
  }

 private:
  // All memory that a round needs, so that whatever else fails comes from the integrand.
  bool MakeRoom(std::size_t panels) {
    try {
      panels += kMostHits;
      m_next.reserve(panels);
      m_panels.reserve(panels);
      m_shares.reserve(panels);
      m_ordered.reserve(panels);
      m_breaks.reserve(std::min(kMostBreaks, m_breaks.size() + panels));
      return true;
    } catch (const std::bad_alloc&) {
      return false;
    }
  }

  // Joint i lies between the ends; the formula does not overflow.
  double Joint(int i) const {
    if (i == m_limits.panels) return m_b;
    const double share = static_cast<double>(i) / m_limits.panels;
    return std::clamp(m_a * (1.0 - share) + m_b * share, m_a, m_b);
  }

  // From the gap of a panel of this width down to the resolution of double, upwards or downwards.
  ProbedSide ProbeSide(double place, double width, double direction) {
    ProbedSide side;
    const double ratio = std::ldexp(1.0, -m_limits.probeHalvings);
    const double least = kEpsilon * (0.5 * m_b - 0.5 * m_a);
    double before = kKronrodGap * width;
    for (double asked = ratio * before; asked >= least && side.count < kMostProbes; asked *= ratio) {
      const double x = place + direction * asked;
      const double distance = std::fabs(x - place);
      if (!(distance > 0.0 && distance < before)) break;
      side.probe[side.count++] = {distance, before, m_f(x).value};
      --m_limits.samples;
      before = distance;
    }
    return side;
  }

  void Start(std::span<const double> expected) {
    const double first = Joint(1) - m_a;
    const double last = m_b - Joint(m_limits.panels - 1);
    m_breaks.push_back({m_a, {}, ProbeSide(m_a, first, 1.0)});
    m_breaks.push_back({m_b, ProbeSide(m_b, last, -1.0), {}});
    std::size_t next = 0;
    double lo = m_a;
    for (int i = 1; i <= m_limits.panels && !m_notFinite; ++i) {
      const double joint = Joint(i);
      for (; next < expected.size() && expected[next] < joint; ++next) Append(&lo, expected[next]);
      Append(&lo, joint);
    }
    std::swap(m_panels, m_next);
  }

  // A panel from *lo on, which then is the end of it.
  void Append(double* lo, double hi) {
    const bool skipped = hi != m_b && !HasRoom(*lo, hi);
    if (!(*lo < hi) || skipped) return;
    AddKronrod(*lo, hi, 0, *lo == m_a ? kBreakA : kNoBreak, hi == m_b ? kBreakB : kNoBreak);
    *lo = hi;
  }

  void AddKronrod(double lo, double hi, int depth, int breakLo, int breakHi) {
    Panel panel = KronrodPanel(m_f, lo, hi, depth, ProbesAbove(breakLo), ProbesBelow(breakHi));
    panel.breakLo = breakLo;
    panel.breakHi = breakHi;
    m_limits.samples -= kKronrodSamples;
    if (panel.notFinite && SplitAtHit(panel, panel.hit)) return;
    m_next.push_back(panel);
    const bool unresolved = std::isfinite(panel.hit) && !HasRoomAround(panel, panel.hit);
    m_unresolved = m_unresolved || unresolved;
    m_notFinite = m_notFinite || (panel.notFinite && !unresolved);
  }

  // Divides a panel at a sample that was not finite, if there is room and there were few. The panels may be hit again.
  bool SplitAtHit(const Panel& panel, double hit) {
    if (m_breaks.size() >= kMostBreaks || m_limits.hits <= 0 || !HasRoomAround(panel, hit)) return false;
    --m_limits.hits;
    DivideAt(BreakAt(hit, panel.lo, panel.hi), panel, panel);
    return true;
  }

  // From the start of one panel to the end of another.
  void DivideAt(const Break& at, const Panel& first, const Panel& last) {
    const int here = static_cast<int>(m_breaks.size());
    m_breaks.push_back(at);
    AddKronrod(first.lo, at.place, 0, first.breakLo, here);
    AddKronrod(at.place, last.hi, 0, here, last.breakHi);
  }

  Break BreakAt(double place, double lo, double hi) {
    return {place, ProbeSide(place, place - lo, -1.0), ProbeSide(place, hi - place, 1.0)};
  }

  // How far panel i and the one after it disagree at their joint counts as error, unless the joint is a known break.
  double Disagreement(std::size_t i) const {
    if (m_panels[i].breakHi != kNoBreak) return 0.0;
    const double gap = std::max(m_panels[i].gap, m_panels[i + 1].gap);
    return gap == 0.0 ? 0.0 : gap * std::fabs(m_panels[i].atHi - m_panels[i + 1].atLo);
  }

  Totals Sum() {
    CompensatedSum value;
    double error = m_open;
    double absolute = 0.0;
    double before = 0.0;
    m_shares.clear();
    for (std::size_t i = 0; i < m_panels.size(); ++i) {
      const Panel& panel = m_panels[i];
      const double after = Disagreement(i);
      const double share = panel.error + 0.5 * (before + after);
      before = after;
      m_shares.push_back(share);
      value.Add(panel.value);
      absolute += panel.absolute;
      error += share + panel.carried;
    }
    return {value.Value(), error + kRoundings * kEpsilon * absolute, absolute};
  }

  // A sample between those of each panel that had none yet; whether there was such a panel.
  bool Recheck() {
    bool any = false;
    for (Panel& panel : m_panels) {
      if (panel.checked || panel.settled || m_notFinite) continue;
      const Sample sample = m_f(panel.checkAt);
      --m_limits.samples;
      panel.error += (panel.hi - panel.lo) * std::fabs(sample.value - panel.checkValue);
      panel.checked = any = true;
      m_notFinite = !std::isfinite(panel.error);
    }
    return any;
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
    return kInfinity;
  }

  // Returns whether anything was divided.
  bool Refine(const Totals& totals, double target, bool reached, bool confirm) {
    const double threshold = reached ? kInfinity : Threshold(kStayingShare * target);
    const auto intervals = static_cast<double>(m_breaks.size() - 1);
    const double dominant = kDominant * totals.error / intervals;
    bool changed = false;
    m_next.clear();
    for (std::size_t i = 0; i < m_panels.size(); ++i) {
      const Panel& panel = m_panels[i];
      const bool mayGoOn = m_limits.samples > 0 && !m_notFinite;
      if (mayGoOn && (MayHideBreak(i, threshold) || HasRoughJoint(i)) &&
          SplitAtBreak(panel, m_panels[i + 1], panel.hi - panel.gap, panel.hi + m_panels[i + 1].gap)) {
        changed = true;
        ++i;
        continue;
      }
      const bool chosen = !panel.settled && (m_shares[i] >= threshold || (confirm && panel.rough));
      if (!chosen || !mayGoOn || !HasRoom(panel.lo, panel.hi)) {
        m_next.push_back(panel);
        continue;
      }
      changed = true;
      if (panel.rough && SplitAtBreak(panel, panel, panel.bendLo, panel.bendHi)) continue;
      if (!reached && m_shares[i] >= dominant && Settle(panel, kSettledShare * target / intervals)) continue;
      const double middle = panel.lo + 0.5 * (panel.hi - panel.lo);
      AddKronrod(panel.lo, middle, panel.depth + 1, panel.breakLo, kNoBreak);
      AddKronrod(middle, panel.hi, panel.depth + 1, kNoBreak, panel.breakHi);
    }
    std::swap(m_panels, m_next);
    return changed;
  }

  // True if the disagreement of panel i and the one after it is too large, and is most of the error of both.
  bool MayHideBreak(std::size_t i, double threshold) const {
    const double disagreement = 0.5 * Disagreement(i);
    return disagreement > 0.0 && disagreement >= 0.5 * threshold &&
           disagreement >= std::max(m_panels[i].error, m_panels[i + 1].error);
  }

  // True if halving has isolated panel i and the one after it, and both stayed rough beside their joint. A singularity
  // on the joint may look the same from both sides.
  bool HasRoughJoint(std::size_t i) const {
    if (i + 1 >= m_panels.size() || m_panels[i].breakHi != kNoBreak) return false;
    const auto isolated = [](const Panel& p) { return p.rough && !p.settled && p.depth >= kJointDepth; };
    return isolated(m_panels[i]) && isolated(m_panels[i + 1]);
  }

  // From the start of one panel to the end of another, with a break between bendLo and bendHi.
  bool SplitAtBreak(const Panel& first, const Panel& last, double bendLo, double bendHi) {
    if (m_breaks.size() >= kMostBreaks || m_searches >= kMostVainSearches) return false;
    ++m_searches;
    long spent = 0;
    const std::optional<BreakPlace> found = FindBreak(m_f, bendLo, bendHi, &spent);
    m_limits.samples -= spent;
    if (!found || !HasRoom(first.lo, found->place) || !HasRoom(found->place, last.hi)) return false;
    --m_searches;
    Break at = BreakAt(found->place, first.lo, last.hi);
    const std::optional<double> hit = at.Hit();
    if (hit && HasRoom(first.lo, *hit) && HasRoom(*hit, last.hi)) at = BreakAt(*hit, first.lo, last.hi);
    DivideAt(at, first, last);
    m_open += found->open;
    return true;
  }

  static bool HasRoom(double lo, double hi) {
    return hi - lo > kLeastWidth * kEpsilon * std::max(std::fabs(lo), std::fabs(hi));
  }

  static bool HasRoomAround(const Panel& panel, double x) { return HasRoom(panel.lo, x) && HasRoom(x, panel.hi); }

  // Tries the double-exponential rule and extrapolation where they are due, and returns whether one succeeded.
  bool Settle(const Panel& panel, double goal) {
    const bool atEnd = panel.breakLo != kNoBreak || panel.breakHi != kNoBreak;
    const int since = atEnd && panel.rough ? panel.depth : panel.depth - kIsolated;
    if (since < 0 || since % kTrialPeriod != 0) return false;
    long spent = 0;
    Panel tried = DoubleExponentialPanel(m_f, panel.lo, panel.hi, goal, m_limits.dimensions, &spent);
    if (tried.notFinite && SplitAtHit(panel, tried.hit)) {
      m_limits.samples -= spent;
      return true;
    }
    if (!tried.settled && panel.rough && (panel.breakLo == kNoBreak) != (panel.breakHi == kNoBreak)) {
      const bool atLo = panel.breakLo != kNoBreak;
      const Probes probes = atLo ? ProbesAbove(panel.breakLo) : ProbesBelow(panel.breakHi);
      tried = ExtrapolatedPanel(m_f, panel.lo, panel.hi, atLo, Reach(panel, atLo), goal, probes, &spent);
    }
    m_limits.samples -= spent;
    tried.breakLo = panel.breakLo;
    tried.breakHi = panel.breakHi;
    if (tried.settled) m_next.push_back(tried);
    return tried.settled;
  }

  // From the end of the panel that is a break to the next break.
  double Reach(const Panel& panel, bool atLo) const {
    const double c = atLo ? panel.lo : panel.hi;
    double reach = atLo ? m_b - c : c - m_a;
    for (const Break& other : m_breaks) {
      const double distance = atLo ? other.place - c : c - other.place;
      if (distance > 0.0) reach = std::min(reach, distance);
    }
    return reach;
  }

  Probes ProbesAbove(int index) const {
    return index == kNoBreak ? Probes() : m_breaks[static_cast<std::size_t>(index)].above.All();
  }
  Probes ProbesBelow(int index) const {
    return index == kNoBreak ? Probes() : m_breaks[static_cast<std::size_t>(index)].below.All();
  }

  const Integrand& m_f;
  double m_a;
  double m_b;
  QuadratureLimits& m_limits;
  bool m_notFinite = false;
  int m_searches = 0;            // in vain
  bool m_unresolved = false;     // a singularity was hit too close to another break
  double m_open = 0.0;           // error that the breaks leave
  std::vector<Break> m_breaks;   // a, b, and those inside
  std::vector<Panel> m_panels;   // from a to b
  std::vector<Panel> m_next;     // those of the next round
  std::vector<double> m_shares;  // of the error, by panel
  std::vector<double> m_ordered;
};

}  // namespace

void Places::Add(double place) {
  if (m_count == m_place.size()) return;
  const auto end = m_place.begin() + static_cast<std::ptrdiff_t>(m_count);
  const auto at = std::upper_bound(m_place.begin(), end, place);
  std::copy_backward(at, end, end + 1);
  *at = place;
  ++m_count;
}

Quadrature Integrate(const Integrand& f, double a, double b, const QuadratureGoal& goal, QuadratureLimits& limits,
                     const Surroundings& surroundings) {
  if (!std::isfinite(a) || !std::isfinite(b)) return {QuadratureEnd::notFinite};
  if (a == b) return {};
  if (limits.samples <= 0) return {QuadratureEnd::limitReached};
  Subdivision subdivision(f, std::min(a, b), std::max(a, b), limits);
  Quadrature q = subdivision.Run(goal, surroundings);
  if (surroundings.found != nullptr) subdivision.Report(surroundings.found);
  if (a > b) q.value = -q.value;
  return q;
}

}  // namespace nu::engine::quadrature
