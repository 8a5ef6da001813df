#include "nu/engine/quadrature/singular_end.h"

#include <algorithm>
#include <cmath>

#include "nu/engine/base/elementary.h"
#include "nu/engine/base/floating_point.h"

// A sample is taken at the double beside the place that is asked for. The distance of that double from c is exact, and
// its value is carried to the distance asked for by the local exponent p, the slope of log |f| over log d:
//   f(d) = f(d') (1 + p (d - d') / d').
//
// Probes at distances that fall by the ratio 4 show the law that f follows next to c: a power, times a straight line,
// times a logarithm if there is one,
//   log |f| = a + p log d + log (log s - log d) + b d.
// Of four successive values, the second difference less a quarter of the one before is free of a, p and b. It gives s
// at one place; what it differs at the others, beyond rounding, times the integral of all that lies nearer, bounds the
// effect of an edge that no rule samples.
//
// What noise remains is that of the integrand. Some know their distance from c exactly, as 1 / sqrt(1 - x) does; others
// to a rounding of c, as 1 / sqrt(1 - x^2) does, or are singular at a place that is no double, as the tangent is. So it
// is measured: by eighth differences over small equal steps of log d, which leave nothing of the law, and by what the
// nearest values differ from it.

namespace nu::engine::quadrature {

namespace {

// These are the ratio of the distances of successive probes, and its logarithm.
constexpr double kRatio = 4.0;
constexpr double kLogRatio = 1.38629436111989061883;
// The farthest probe, as a share of the reach, whose end is never sampled.
constexpr double kFarthest = 0.5;
// The law is taken from here, as a share of |c|: nearer the noise grows, farther a straight line is not all.
constexpr double kLawAt = 0x1p-18;
// Values that differ as much from the law follow none.
constexpr double kLawful = 0.02;
// There is a logarithm if the law leaves less than this share of what it leaves without one.
constexpr double kLeastGain = 0.1;
// Fixed-point steps to its zero, each of which at least halves the error.
constexpr int kStartSteps = 40;
// What exceeds this noise of the distances is no rounding, but an edge.
constexpr double kMostDistanceNoise = 4.0;
// Where values have this relative error, they say nothing of the law.
constexpr double kMostNoise = 0.1;
// Distances at which the noise is measured, as shares of |c|: at the first that of the values prevails, at the others
// that of the distances. Fewer than kLeastWindows might miss it by chance; then it is taken to be kUsualNoise.
constexpr double kFirstWindow = 0x1p-10;
constexpr double kLastWindow = 0x1p-26;
constexpr double kWindowRatio = 0.125;
constexpr int kLeastWindows = 4;
constexpr double kUsualNoise = 0.5;
// The steps of log d, and where the first is, so that no distance is a power of 2: there integrands are rounded less.
constexpr double kStep = 0x1p-6;
constexpr double kOffset = 0.123;
constexpr std::array<double, 9> kEighthDifference = {1, -8, 28, -56, 70, -56, 28, -8, 1};
constexpr double kEighthNorm = 113.4460;  // root of the sum of their squares
// From the largest of some differences to a bound of the noise.
constexpr double kSafety = 4.0;
// What a product of some elementary functions is wrong by, which is no noise of the distances.
constexpr double kValueNoise = 4.0 * kEpsilon;
// Rounding errors of a value, relative to it.
constexpr double kRoundings = 2.0 * kEpsilon;
// Where a shell is divided, in units of its inner end: a geometric sequence.
constexpr std::array<double, 3> kParts = {1.58740105196819947475, 1.25992104989487316477, 1.0};
// A step of the integrand in a panel is at most so many times the error of the panel, relative to it; and how much
// larger the noise of the values at its ends is than that of the samples.
constexpr double kEdge = 8.0;
constexpr double kStepNoise = 4.0;
// A shell is of no use where the distances have this relative error.
constexpr double kRoughest = 1e-6;

// Second difference of log k around k + 1.
double LogBend(double k) {
  return Log((k + 2.0) * k / ((k + 1.0) * (k + 1.0)));
}

// What a logarithm leaves of four values that start k steps from its zero.
double LogRemainder(double k) {
  return LogBend(k + 1.0) - LogBend(k) / kRatio;
}

}  // namespace

SingularEnd::SingularEnd(const Integrand& f, double c, double direction, double reach, long* samples)
    : m_f(f),
      m_c(c),
      m_direction(direction),
      m_resolution(kEpsilon * std::fabs(c)),
      m_samples(samples),
      m_start(kInfinity) {
  Scan(reach);
  FindLaw();
  MeasureNoise(reach);
  JudgeProbes();
}

// In parts, since the Gauss and the Kronrod rule leave 1e-12 between them for a power over an octave.
Shell SingularEnd::Octave(double from) {
  const auto f = [&](double distance) { return At(distance); };
  const double noise = kSafety * RelativeError(from);
  Shell shell = {.from = from};
  double end = 2.0 * from;
  for (std::size_t i = 0; i < kParts.size(); ++i) {
    const double start = kParts[i] * from;
    const Panel panel = KronrodPanel(f, start, end, 0, {}, {});
    shell.value += panel.value;
    shell.absolute += panel.absolute;
    shell.carried += panel.carried;
    shell.error += panel.error;
    shell.edges += kEdge * std::max(panel.error - noise * panel.absolute, 0.0);
    if (i == 0) shell.gap = panel.gap;
    if (i == 0) shell.atOuter = panel.atHi;
    if (i > 0) shell.edges += StepAt(end, shell.atInner, panel.atHi);
    shell.atInner = panel.atLo;
    shell.notFinite = shell.notFinite || panel.notFinite;
    end = start;
  }
  return shell;
}

double SingularEnd::StepAt(double distance, double outer, double inner) const {
  const double noise = kStepNoise * kSafety * RelativeError(distance) * std::fabs(outer);
  return distance * std::max(std::fabs(outer - inner) - noise, 0.0);
}

double SingularEnd::Nearest() const {
  return m_resolution / kRoughest;
}

// The place of the logarithm's zero is uncertain by the cube of the steps from it, its slope by the inverse square.
double SingularEnd::PowerError() const {
  const double error = kSafety * RelativeError(m_probe[m_lawAt].distance);
  return std::isfinite(m_start) ? error * (1.0 + static_cast<double>(m_lawAt) + m_start) : error;
}

double SingularEnd::RelativeError(double distance) const {
  return kRoundings + m_valueNoise + m_distanceNoise * (m_resolution / distance);
}

double SingularEnd::ErrorWithin(double distance) const {
  for (std::size_t i = 0; i < m_count; ++i) {
    if (m_probe[i].distance < distance) return std::isnan(m_probe[i].hidden) ? kInfinity : m_probe[i].hidden;
  }
  return kInfinity;
}

Sample SingularEnd::At(double distance) {
  ++*m_samples;
  const double x = m_c + m_direction * distance;
  const double actual = std::fabs(x - m_c);
  const Sample sample = m_f(x);
  return {sample.value * (1.0 + ExponentAt(distance) * ((distance - actual) / actual)), sample.error};
}

// At powers of 2: they are exact distances of doubles.
void SingularEnd::Scan(double reach) {
  const double farthest = std::ldexp(1.0, std::ilogb(kFarthest * reach));
  for (double distance = farthest; m_count < m_probe.size() && distance > m_resolution; distance /= kRatio) {
    const double x = m_c + m_direction * distance;
    const double actual = std::fabs(x - m_c);
    if (!(actual > 0.0)) return;
    ++*m_samples;
    const Sample sample = m_f(x);
    m_probe[m_count++] = {actual, sample.value, sample.error};
  }
}

// The law that fits better decides whether there is a logarithm.
void SingularEnd::FindLaw() {
  std::size_t i = 3;
  while (i + 1 < m_count && m_probe[i - 3].distance > kLawAt * std::fabs(m_c)) ++i;
  if (i >= m_count) return;
  const double start = LogarithmicStart(i);
  double with = 0.0;
  double without = 0.0;
  for (std::size_t k = i; k < m_count && m_resolution < kMostNoise * m_probe[k].distance; ++k) {
    with += std::fabs(Departure(k, start));
    without += std::fabs(Departure(k, kInfinity));
  }
  if (with < kLeastGain * without) m_start = start;
  m_power = PowerAt(i - 1);
  m_lawAt = i;
}

// What a departure from the law is beyond noise: infinite where there is no law, 0 where noise is all.
double SingularEnd::Excess(double departure, double distance, double relativeError) const {
  const double roundings = std::min(m_distanceNoise, kMostDistanceNoise) * (m_resolution / distance);
  const double noise = kSafety * (kRoundings + m_valueNoise + roundings + relativeError);
  if (noise > kMostNoise) return 0.0;
  return departure <= kLawful ? std::max(departure - noise, 0.0) : kInfinity;
}

// The first three probes have no four values yet.
void SingularEnd::JudgeProbes() {
  double nearer = 0.0;
  double hidden = 0.0;
  for (std::size_t i = m_count; i-- > 0;) {
    Value& probe = m_probe[i];
    nearer += kRatio * std::fabs(probe.value) * probe.distance;
    const double own = probe.error > 0.0 ? probe.error / std::fabs(probe.value) : 0.0;
    const double excess = i < 3 ? kInfinity : Excess(std::fabs(Departure(i, m_start)), probe.distance, own);
    if (excess > 0.0) hidden += excess * nearer;
    probe.nearer = nearer;
    probe.hidden = hidden;
  }
}

// Each lies between probe i and the one before, which have no edge between them if the law leads from one to the other.
void SingularEnd::Compare(Probes others) {
  for (const Probe& other : others) {
    if (m_count < 3 || !(other.distance < m_probe[2].distance)) continue;
    const std::size_t i = Beside(other.distance);
    const double ratio = other.distance / m_probe[i].distance;
    const double steps = static_cast<double>(i) + m_start;
    double expected = PowerAt(i) * Log(ratio) + LineAt(i) * (ratio - 1.0);
    if (std::isfinite(m_start)) expected += Log(1.0 - Log(ratio) / (kLogRatio * steps));
    const double departure = std::fabs(Log(other.value / m_probe[i].value) - expected);
    const double excess = Excess(departure, other.distance, 0.0);
    for (std::size_t k = 0; k <= i && excess > 0.0; ++k) m_probe[k].hidden += excess * m_probe[i].nearer;
  }
}

void SingularEnd::MeasureNoise(double reach) {
  int windows = 0;
  m_valueNoise = kInfinity;
  for (double share = kFirstWindow; share >= kLastWindow && m_c != 0.0; share *= kWindowRatio) {
    const double distance = share * std::fabs(m_c);
    if (!(kRatio * distance < reach)) continue;
    const double noise = NoiseAt(distance);
    m_valueNoise = std::min(m_valueNoise, noise);
    if (++windows == 1) continue;
    m_distanceNoise = std::max(m_distanceNoise, (noise - kSafety * kValueNoise) * (distance / m_resolution));
  }
  if (windows < kLeastWindows || m_count < 4) {
    m_valueNoise = 0.0;
    m_distanceNoise = kUsualNoise;
    return;
  }
  const double departure = std::fabs(Departure(m_count - 1, m_start));
  const double nearest = m_probe[m_count - 1].distance;
  m_distanceNoise = std::max(m_distanceNoise, kSafety * departure * (nearest / m_resolution));
}

// Relative to the values; infinite where they are not finite.
double SingularEnd::NoiseAt(double distance) {
  double difference = 0.0;
  double largest = 0.0;
  for (std::size_t i = 0; i < kEighthDifference.size(); ++i) {
    const double value = At(distance * Exp(kOffset + kStep * static_cast<double>(i))).value;
    difference += kEighthDifference[i] * value;
    largest = std::max(largest, std::fabs(value));
  }
  const double noise = kSafety * std::fabs(difference) / (kEighthNorm * largest);
  return noise >= 0.0 ? noise : kInfinity;
}

// What the values i - 3 to i differ from the law, when the zero of its logarithm is `start` steps before probe 0. No
// number or infinite where they have no common sign.
double SingularEnd::Departure(std::size_t i, double start) const {
  std::array<double, 3> ratio{};
  for (std::size_t k = 0; k < 3; ++k) {
    ratio[k] = m_probe[i + k - 2].value / m_probe[i + k - 3].value;
    if (!(ratio[k] > 0.0)) return kInfinity;
  }
  const double remainder = Log(ratio[2] / ratio[1]) - Log(ratio[1] / ratio[0]) / kRatio;
  const double steps = static_cast<double>(i) - 3.0 + start;
  return std::isfinite(start) && steps > 0.0 ? remainder - LogRemainder(steps) : remainder;
}

// From what one place leaves, which falls as the inverse square of the steps.
double SingularEnd::LogarithmicStart(std::size_t i) const {
  const double remainder = Departure(i, kInfinity);
  double steps = 1.0;
  for (int n = 0; n < kStartSteps; ++n) steps *= std::sqrt(LogRemainder(steps) / remainder);
  return std::isfinite(steps) ? steps - (static_cast<double>(i) - 3.0) : kInfinity;
}

// Mean slope of log |f| over log d between probe i and the next, less that of the logarithm; 0 where there is none.
double SingularEnd::Slope(std::size_t i) const {
  const double ratio = m_probe[i].value / m_probe[i + 1].value;
  if (!(ratio > 0.0 && std::isfinite(ratio))) return 0.0;
  const double slope = Log(ratio) / Log(m_probe[i].distance / m_probe[i + 1].distance);
  const double steps = static_cast<double>(i) + m_start;
  return std::isfinite(m_start) && steps > 0.0 ? slope + Log((steps + 1.0) / steps) / kLogRatio : slope;
}

// The straight line counts a quarter in the slope that lies nearer.
double SingularEnd::PowerAt(std::size_t i) const {
  return (Slope(i) - Slope(i - 1) / kRatio) / (1.0 - 1.0 / kRatio);
}

// The straight line at probe i, by the slopes beside it.
double SingularEnd::LineAt(std::size_t i) const {
  return (Slope(i - 1) - Slope(i)) * (kLogRatio / ((kRatio - 1.0) * (1.0 - 1.0 / kRatio)));
}

// The next probe that is nearer, or the one before if it is the last.
std::size_t SingularEnd::Beside(double distance) const {
  const double place = Log(m_probe[0].distance / distance) / kLogRatio;
  return std::clamp<std::size_t>(place > 0.0 ? static_cast<std::size_t>(place) + 1 : 1, 1, m_count - 2);
}

// The slope at a distance, with the straight line and the logarithm.
double SingularEnd::ExponentAt(double distance) const {
  if (m_count < 3) return 0.0;
  const std::size_t i = Beside(distance);
  const double exponent = PowerAt(i) + LineAt(i) * (distance / m_probe[i].distance);
  const double steps = Log(m_probe[0].distance / distance) / kLogRatio + m_start;
  return std::isfinite(m_start) && steps > 0.0 ? exponent - 1.0 / (steps * kLogRatio) : exponent;
}

}  // namespace nu::engine::quadrature
