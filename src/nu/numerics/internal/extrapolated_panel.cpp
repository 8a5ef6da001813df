#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "nu/numerics/internal/compensated_sum.h"
#include "nu/numerics/internal/panel_rules.h"

// An integrand that is singular at c = lo or hi, where c is not 0, is known near c only to the digits that double
// leaves of the distance. So the panel is halved towards c, each half is integrated by the Gauss-Kronrod rule, and the
// limit of the partial sums is extrapolated by the epsilon algorithm (P. Wynn, Math. Tables Aids Comput. 10, 1956): for
// a power of the distance times a power series, also with a logarithm, they are sums of geometric sequences, which it
// removes one by one. The error is what the last two steps changed, and what rounding of the distances leaves.
//
// The limit says nothing about an edge between the last half and c. Therefore the probes, which go on to the last
// double, must follow one law: on a logarithmic scale, their third differences vanish.

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
// Third difference of the logarithms that mixtures of two powers and logarithms reach; and the rounding errors of the
// probes' distances, in units of double, and relative to them when the probes say nothing any more.
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

// The third difference of the logarithms of values whose distances form a geometric sequence.
class Law {
 public:
  bool Holds(double value, double roundings) {
    if (!std::isfinite(value) || value == 0.0) return false;
    std::rotate(m_logarithm.begin(), m_logarithm.begin() + 1, m_logarithm.end());
    m_logarithm[3] = std::log(std::fabs(value));
    const double third = (m_logarithm[3] - m_logarithm[0]) - 3.0 * (m_logarithm[2] - m_logarithm[1]);
    return ++m_known < 4 || std::fabs(third) <= kLawful + roundings;
  }
  bool IsKnown() const { return m_known >= 4; }

 private:
  std::array<double, 4> m_logarithm{};
  int m_known = 0;
};

// From the panel's own reach down to the last double that tells its distance.
bool FollowOneLaw(const Integrand& f, double c, double signedWidth, double resolution, Probes probes, long* samples) {
  Law law;
  if (probes.empty()) return false;
  const double nearest = probes.front().distance;
  const double ratio = probes.front().before / nearest;
  double distance = nearest;
  while (distance * ratio < 0.5 * std::fabs(signedWidth)) distance *= ratio;
  for (; distance > nearest * std::sqrt(ratio); distance /= ratio) {
    ++*samples;
    if (!law.Holds(f(c + std::copysign(distance, signedWidth)).value, 0.0)) return false;
  }
  for (const Probe& probe : probes) {
    const double roundings = kProbeRoundings * resolution / probe.distance;
    if (roundings > kMostRoundings) break;
    if (!law.Holds(probe.value, roundings)) return false;
  }
  return law.IsKnown();
}

}  // namespace

Panel ExtrapolatedPanel(const Integrand& f, double lo, double hi, bool atLo, double goal, Probes probes,
                        long* samples) {
  Panel panel{.lo = lo, .hi = hi};
  const double c = atLo ? lo : hi;
  const double resolution = kEpsilon * std::fabs(c);
  if (!FollowOneLaw(f, c, atLo ? hi - lo : lo - hi, resolution, probes, samples)) return panel;
  Epsilon limit;
  CompensatedSum sum;
  double error = 0.0;
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
