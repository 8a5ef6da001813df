#include <algorithm>
#include <array>
#include <cmath>

#include "nu/engine/base/compensated_sum.h"
#include "nu/engine/base/elementary.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/quadrature/panel_rules.h"
#include "nu/foundation/constants.h"

// The double-exponential rule (H. Takahasi, M. Mori, Publ. RIMS Kyoto Univ. 9, 1974) on a panel of width w:
//   x = lo + w q / (1 + q),  q = exp(-pi sinh t),  dx/dt = -w pi cosh t q / (1 + q)^2,
// summed over t = k h with h halved from level to level. The nodes approach the ends as far as double tells them from
// the ends. The error is what the last level changed, or a share of what the one before did, and
// - what lies beyond the outermost nodes: there the integrand is taken as a power of the distance d from the end;
//   with |f| d ~ d^s the rest is |f| d / s, s being that of the two outermost nodes;
// - that a node's distance from the end is not the one asked for, by the rounding of x.

namespace nu::engine::quadrature {

namespace {

constexpr int kLevels = 7;
constexpr int kLeastLevels = 3;
// A change that is smaller than this share of the one before may be so by coincidence.
constexpr double kLeastShare = 0.25;
constexpr double kDivergence = 0.5;
// A singularity inside the panel makes the changes fall slowly and by chance. The rule is at its work, and believed,
// when two in succession fall below this share of the one before, or below what is known to be missing.
constexpr double kSteady = 0.1;
constexpr int kSteadyLevels = 2;
// The changes of an integrand that is smooth inside fall by a share that squares from level to level. One that falls by
// less than the share before, and exceeds rounding, is not believed.
constexpr double kRounding = 8.0 * kEpsilon;
// At the last doubles before an end its distance is known to a factor of 2.
constexpr double kSafety = 2.0;
// exp(-pi sinh 6) is 1e-275 of the width; beyond, the distances are no normal numbers any more.
constexpr double kLargestT = 6.0;
// No node is nearer to the end than this share of the width, by the number of dimensions: the product of the distances
// from the ends of all intervals is a number yet.
constexpr std::array<double, 3> kNearest = {1e-300, 1e-150, 1e-100};
// Nearer to the end than this share an integrand may overflow on the way to its value, as a square in a quotient does.
// The nodes end there, and the rest is estimated.
constexpr std::array<double, 3> kOverflowDistance = {1e-140, 1e-70, 1e-46};

// The outermost node and the one before it, by d, the share of the width that lies beyond; g is |f| d.
struct Tail {
  double outerD = 1.0;
  double outerG = 0.0;
  double innerD = 1.0;
  double innerG = 0.0;

  void Note(double d, double g) {
    if (d < outerD) {
      innerD = outerD;
      innerG = outerG;
      outerD = d;
      outerG = g;
    } else if (d < innerD) {
      innerD = d;
      innerG = g;
    }
  }
  double Rest() const {
    if (outerG == 0.0) return 0.0;
    const double s = Log(innerG / outerG) / Log(innerD / outerD);
    if (!(s > 0.0)) return kInfinity;
    return outerG / std::min(s, 1.0);
  }
};

class DoubleExponential {
 public:
  DoubleExponential(const Integrand& f, double lo, double hi, int dimensions)
      : m_f(f),
        m_lo(lo),
        m_hi(hi),
        m_width(hi - lo),
        m_nearest(kNearest[static_cast<std::size_t>(dimensions - 1)]),
        m_overflowDistance(kOverflowDistance[static_cast<std::size_t>(dimensions - 1)]) {}

  // The first level takes t = 0, +-h, +-2h, ..., a later one the nodes between those that are there.
  void AddLevel(double h, bool first) {
    m_h = h;
    if (first) AddNode(0.0, m_hi);
    const double step = first ? h : 2.0 * h;
    AddSide(h, step, m_lo, &m_tailLo);
    AddSide(h, step, m_hi, &m_tailHi);
  }

  double Sum() const { return m_h * m_sum.Value(); }
  double Absolute() const { return m_h * m_absolute; }
  double Rest() const { return kSafety * (m_tailLo.Rest() + m_tailHi.Rest() + m_h * m_misplaced); }
  long Count() const { return m_count; }
  bool NotFinite() const { return m_notFinite; }

  Panel Result(double error) const {
    Panel panel{.lo = m_lo, .hi = m_hi};
    panel.value = m_width * Sum();
    panel.absolute = m_width * m_h * m_absolute;
    panel.carried = m_width * m_h * m_carried;
    panel.error = m_width * error;
    panel.atLo = m_atLo;
    panel.atHi = m_atHi;
    panel.hit = m_hit;
    panel.notFinite = m_notFinite || !std::isfinite(panel.value) || !std::isfinite(panel.absolute);
    return panel;
  }

 private:
  void AddSide(double start, double step, double end, Tail* tail) {
    for (double t = start; t <= kLargestT && !m_notFinite; t += step) {
      const double q = Exp(-Nu_PI * Sinh(t));
      const double distance = q / (1.0 + q);
      const Node node = AddNode(t, end);
      if (!node.inside) return;
      if (tail->outerD > distance) (end == m_lo ? m_atLo : m_atHi) = node.value;
      tail->Note(distance, std::fabs(node.value) * distance);
    }
  }

  struct Node {
    bool inside;
    double value;
  };

  Node AddNode(double t, double end) {
    const double q = Exp(-Nu_PI * Sinh(t));
    const double share = q / (1.0 + q);
    const double asked = m_width * share;
    const double x = end == m_lo ? m_lo + asked : m_hi - asked;
    if (!(x > m_lo && x < m_hi && share > m_nearest)) return {false, 0.0};
    const Sample sample = m_f(x);
    ++m_count;
    if (!std::isfinite(sample.value)) {
      m_notFinite = !(share < m_overflowDistance);
      if (m_notFinite) m_hit = x;
      return {false, 0.0};
    }
    const double weight = Nu_PI * Cosh(t) * share / (1.0 + q);
    const double size = weight * std::fabs(sample.value);
    m_sum.Add(weight * sample.value);
    m_absolute += size;
    m_carried += weight * sample.error;
    m_misplaced += size * (std::fabs(std::fabs(x - end) - asked) / asked);
    return {true, sample.value};
  }

  const Integrand& m_f;
  double m_lo;
  double m_hi;
  double m_width;
  double m_nearest;
  double m_overflowDistance;
  double m_h = 0.0;
  CompensatedSum m_sum;
  double m_absolute = 0.0;
  double m_carried = 0.0;
  double m_misplaced = 0.0;
  double m_atLo = 0.0;
  double m_atHi = 0.0;
  Tail m_tailLo;
  Tail m_tailHi;
  long m_count = 0;
  bool m_notFinite = false;
  double m_hit = kQuietNaN;
};

}  // namespace

Panel DoubleExponentialPanel(const Integrand& f, double lo, double hi, double goal, int dimensions, long* samples) {
  DoubleExponential rule(f, lo, hi, dimensions);
  double h = 1.0;
  rule.AddLevel(h, true);
  double before = rule.Sum();
  double changeBefore = kInfinity;
  double shareBefore = 1.0;
  double error = changeBefore;
  bool settled = false;
  int steady = 0;
  for (int level = 1; level < kLevels && !rule.NotFinite() && !settled; ++level) {
    h *= 0.5;
    rule.AddLevel(h, false);
    const double change = std::fabs(rule.Sum() - before);
    const double rest = rule.Rest();
    const double floor = std::max(rest, kRounding * rule.Absolute());
    const bool slower = change > std::max(changeBefore * shareBefore, floor);
    steady = change <= std::max(kSteady * changeBefore, rest) && !slower ? steady + 1 : 0;
    error = std::max(change, kLeastShare * changeBefore) + rest;
    settled = level >= kLeastLevels && steady >= kSteadyLevels && (hi - lo) * error <= goal;
    if (level >= kLeastLevels && change > kDivergence * changeBefore) break;
    before = rule.Sum();
    if (level > 1) shareBefore = change / changeBefore;
    changeBefore = change;
  }
  *samples += rule.Count();
  Panel panel = rule.Result(error);
  panel.settled = settled && !panel.notFinite;
  return panel;
}

}  // namespace nu::engine::quadrature
