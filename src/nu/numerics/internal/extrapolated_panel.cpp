#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "nu/foundation/internal/compensated_sum.h"
#include "nu/foundation/internal/elementary.h"
#include "nu/numerics/internal/panel_rules.h"

// An integrand that is singular at c = lo or hi, where c is not 0, is known near c only to the digits that double
// leaves of the distance. So the panel is halved towards c, each half is integrated by the Gauss-Kronrod rule, and the
// limit of the partial sums is extrapolated by the epsilon algorithm (P. Wynn, Math. Tables Aids Comput. 10, 1956): for
// a power of the distance times a power series, also with a logarithm, they are sums of geometric sequences, which it
// removes one by one. The error is what the last two steps changed, and what rounding of the distances leaves.
//
// The limit says nothing about an edge between the last half and c. Therefore the values at distances that fall
// geometrically from the width of the panel to the last double, where the probes are, must follow one law, and what
// they differ from it counts as error.

namespace nu::internal {

namespace {

constexpr double kEpsilon = std::numeric_limits<double>::epsilon();
constexpr int kMostHalvings = 40;
constexpr int kLeastHalvings = 6;
// More than these halvings at once add nothing but rounding errors to the extrapolation.
constexpr int kColumns = 14;
// The estimate is believed to have changed as much as it did in the last three steps, times this.
constexpr double kTrust = 6.0;
// Rounding of the distances changes a half by its relative error. With the ratio r of the halves, that counts 1 / (1 -
// r)^2 times in the limit, and where a logarithm makes r a double root, 1 / (1 - r)^4.
constexpr double kAmplification = 6.0;
// The halvings end where distances have this relative error.
constexpr double kRoughest = 1e-6;
// Distances fall by this ratio, that of the probes, from this share of the width.
constexpr double kRatio = 4.0;
constexpr double kFarthest = 0.125;
// No law is so loose; and the rounding errors of the probes' distances, in units of double, and relative to them when
// the probes say nothing any more.
constexpr double kLawful = 0.02;
constexpr double kProbeRoundings = 16.0;
constexpr double kMostRoundings = 0.1;

// The limit of a sequence whose elements come one by one.
class Epsilon {
 public:
  // The new estimate of the limit.
  double Add(double element) {
    double diagonal = element;  // of the column that is being entered
    double before = 0.0;        // of the one before it, old
    double estimate = element;
    const int most = std::min(m_count, kColumns);
    for (int column = 0; column < most; ++column) {
      const auto at = static_cast<std::size_t>(column);
      const double old = m_last[at];
      m_last[at] = diagonal;
      const double difference = diagonal - old;
      if (difference == 0.0) return estimate;
      const double next = before + 1.0 / difference;
      before = old;
      diagonal = next;
      if (column % 2 == 1) estimate = next;
    }
    if (most < kColumns) m_last[static_cast<std::size_t>(most)] = diagonal;
    ++m_count;
    return estimate;
  }

 private:
  std::array<double, kColumns> m_last{};
  int m_count = 0;
};

// The value at a distance that is a quarter of the one before, and whether the logarithm of four such follows
//   a + b log d + c d,
// a power times a straight line. A jump by a share of the value shows as that share.
class Law {
 public:
  // What is not so, beyond rounding.
  double Excess(double value, double roundings) {
    if (!std::isfinite(value) || value == 0.0) return std::numeric_limits<double>::infinity();
    std::rotate(m_log.begin(), m_log.begin() + 1, m_log.end());
    m_log[3] = Log(std::fabs(value));
    if (++m_known < 4) return 0.0;
    const double before = (m_log[2] - m_log[1]) - (m_log[1] - m_log[0]);
    const double now = (m_log[3] - m_log[2]) - (m_log[2] - m_log[1]);
    return std::max(std::fabs(now - 0.25 * before) - roundings, 0.0);
  }
  bool IsKnown() const { return m_known >= 4; }

 private:
  std::array<double, 4> m_log{};
  int m_known = 0;
};

// What may be missed between the distances that are seen, from the panel's own reach down to the last double that tells
// its distance: the excess over the law times all that lies nearer. Infinite where there is no law. A jump shows at
// three places in succession, so the first probe, whose law reaches too far into the panel, need not count.
double ErrorOfLaw(const Integrand& f, double c, double signedWidth, double resolution, Probes probes, long* samples) {
  constexpr double kInfinite = std::numeric_limits<double>::infinity();
  Law law;
  if (probes.empty()) return kInfinite;
  const double nearest = probes.front().distance;
  if (!(nearest > 0.0)) return kInfinite;
  double distance = nearest;
  while (distance < kFarthest * std::fabs(signedWidth)) distance *= kRatio;
  for (; distance > 2.0 * nearest; distance /= kRatio) {
    ++*samples;
    if (law.Excess(f(c + std::copysign(distance, signedWidth)).value, 0.0) > kLawful) return kInfinite;
  }
  double nearer = 0.0;
  for (const Probe& probe : probes) nearer += std::fabs(probe.value) * probe.before;
  double error = 0.0;
  for (const Probe& probe : probes) {
    const double roundings = kProbeRoundings * resolution / probe.distance;
    if (roundings > kMostRoundings) break;
    const double excess = law.Excess(probe.value, roundings);
    if (!(excess <= kLawful)) return kInfinite;
    if (probe.distance < nearest) error += excess * nearer;
    nearer -= std::fabs(probe.value) * probe.before;
  }
  return law.IsKnown() && std::isfinite(error) ? error : kInfinite;
}

}  // namespace

Panel ExtrapolatedPanel(const Integrand& f, double lo, double hi, bool atLo, double goal, Probes probes,
                        long* samples) {
  Panel panel{.lo = lo, .hi = hi};
  const double c = atLo ? lo : hi;
  const double resolution = kEpsilon * std::fabs(c);
  const double unseen = ErrorOfLaw(f, c, atLo ? hi - lo : lo - hi, resolution, probes, samples);
  if (!(unseen <= goal)) return panel;
  Epsilon limit;
  CompensatedSum sum;
  double error = unseen;
  double best = std::numeric_limits<double>::infinity();
  std::array<double, 4> estimate{};
  double before = 0.0;
  double width = hi - lo;
  for (int k = 0; k < kMostHalvings && resolution < kRoughest * width; ++k, width *= 0.5) {
    const double from = atLo ? lo + 0.5 * width : hi - width;
    const double to = atLo ? lo + width : hi - 0.5 * width;
    const Panel half = KronrodPanel(f, from, to, 0, {}, {});
    *samples += kKronrodSamples;
    if (half.notFinite || half.carried > 0.0) return panel;
    if (k == 0) panel.gap = half.gap;
    if (k == 0) (atLo ? panel.atHi : panel.atLo) = atLo ? half.atHi : half.atLo;
    sum.Add(half.value);
    error += half.error;
    panel.absolute += half.absolute;
    estimate = {estimate[1], estimate[2], estimate[3], limit.Add(sum.Value())};
    const double rest = std::max(1.0 - half.absolute / before, 0.0);
    before = half.absolute;
    if (k < kLeastHalvings) continue;
    const double changed = std::max({std::fabs(estimate[3] - estimate[2]), std::fabs(estimate[3] - estimate[1]),
                                     std::fabs(estimate[3] - estimate[0])});
    const double rounding = half.absolute * (resolution / width) / (rest * rest * rest * rest);
    const double total = error + kTrust * changed + kAmplification * rounding;
    if (!(total < best)) continue;
    best = total;
    panel.value = estimate[3];
    if (best <= goal) break;
  }
  panel.error = best;
  panel.settled = best <= goal && std::isfinite(panel.value);
  return panel;
}

}  // namespace nu::internal
