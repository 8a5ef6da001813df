#include <algorithm>
#include <array>
#include <cmath>

#include "nu/engine/base/floating_point.h"
#include "nu/engine/quadrature/panel_rules.h"

// The integral over a panel by the 15-point extension of the 7-point Gauss rule (A. S. Kronrod, Nodes and Weights of
// Quadrature Formulas, 1965), and an estimate of its error that coincidence does not spoil.
//
// The difference of the two rules alone is no estimate: for a jump or a kink it vanishes at certain places, and is then
// thousands of times smaller than the error. So the samples are also projected onto the Legendre polynomials of degree
// 4, 5 and 8 to 11, which are null rules for the constants (D. P. Laurie, Null rules and orthogonal expansions, 1994).
// Where the coefficients fall by less than kDecay in six degrees, the integrand is not resolved, and the error is taken
// as large as the coefficients themselves; for jumps, kinks, roots and inverse roots anywhere in the panel this is at
// least 2.5 times the true error. Where they fall, their decay is extrapolated.

namespace nu::engine::quadrature {

namespace {

constexpr int kPairs = 7;

// From the end to the middle; the odd ones are those of the Gauss rule. Zeros of the Legendre polynomial of degree 7
// and of its Stieltjes polynomial, computed with 60 digits.
constexpr std::array<double, kPairs> kNode = {
    0.9914553711208126392069, 0.9491079123427585245261, 0.8648644233597690727897, 0.7415311855993944398638,
    0.5860872354676911302941, 0.4058451513773971669066, 0.2077849550078984676006};
constexpr std::array<double, kPairs> kKronrod = {
    0.0229353220105292249637, 0.0630920926299785532907, 0.1047900103222501838398, 0.1406532597155259187451,
    0.1690047266392679028265, 0.1903505780647854099132, 0.2044329400752988924141};
constexpr std::array<double, kPairs> kGauss = {0.0, 0.1294849661688696932706, 0.0, 0.2797053914892766679014,
                                               0.0, 0.3818300505051189449503, 0.0};
constexpr double kKronrodMiddle = 0.2094821410847278280130;

// Over six degrees, that is a factor 2 for each: a function with a singularity nearer than 1/8 of the width falls less.
constexpr double kDecay = 1.0 / 64.0;
// Rounding errors of the samples, in units of the largest, which the projections must exceed to say anything.
constexpr double kNoise = 16.0 * kEpsilon;

constexpr double Legendre(int degree, double x) {
  double before = 1.0;
  double p = x;
  for (int k = 1; k < degree; ++k) {
    const double next = ((2 * k + 1) * x * p - k * before) / (k + 1);
    before = p;
    p = next;
  }
  return p;
}

using Pairs = std::array<double, kPairs>;

// What a pair of samples counts in the Legendre coefficient of this degree, by the Kronrod rule.
constexpr Pairs ProjectionOn(int degree) {
  Pairs weight{};
  for (std::size_t i = 0; i < kPairs; ++i) weight[i] = (degree + 0.5) * kKronrod[i] * Legendre(degree, kNode[i]);
  return weight;
}
constexpr Pairs kDegree4 = ProjectionOn(4);
constexpr Pairs kDegree5 = ProjectionOn(5);
constexpr Pairs kDegree8 = ProjectionOn(8);
constexpr Pairs kDegree9 = ProjectionOn(9);
constexpr Pairs kDegree10 = ProjectionOn(10);
constexpr Pairs kDegree11 = ProjectionOn(11);

// The polynomial through all 15 samples, split into what the even and the odd parts of the samples count: with the
// squares of the nodes it is a Lagrange formula for each. The factors that do not depend on the place.
constexpr Pairs LagrangeFactors() {
  Pairs factor{};
  for (std::size_t i = 0; i < kPairs; ++i) {
    const double square = kNode[i] * kNode[i];
    factor[i] = 1.0 / square;
    for (std::size_t k = 0; k < kPairs; ++k) {
      if (k != i) factor[i] /= square - kNode[k] * kNode[k];
    }
  }
  return factor;
}
constexpr Pairs kLagrange = LagrangeFactors();

// These weights hold at the distance `rest` within the end t = 1. Each has the product of the factors of all other
// pairs: of those before times of those after.
constexpr Pairs EvenPartAt(double rest) {
  const double t = 1.0 - rest;
  Pairs factor{};
  Pairs weight{};
  double before = t * t;
  for (std::size_t i = 0; i < kPairs; ++i) {
    factor[i] = ((1.0 - kNode[i]) - rest) * (t + kNode[i]);
    weight[i] = before * kLagrange[i];
    before *= factor[i];
  }
  double after = 1.0;
  for (std::size_t i = kPairs; i-- > 0;) {
    weight[i] *= after;
    after *= factor[i];
  }
  return weight;
}
constexpr Pairs kEvenEnd = EvenPartAt(0.0);
// Half way between two nodes, beside the middle.
constexpr double kCheckRest = 1.0 - 0.5 * (kNode[5] + kNode[6]);
constexpr Pairs kEvenCheck = EvenPartAt(kCheckRest);

double Dot(const Pairs& weight, const Pairs& values) {
  double sum = 0.0;
  for (std::size_t i = 0; i < kPairs; ++i) sum += weight[i] * values[i];
  return sum;
}

// The samples less the one in the middle, so that constants leave no rounding error: sums and differences of the pairs.
struct Samples {
  double middle;
  double largest;
  Pairs sum;
  Pairs difference;
};

Samples Take(const Integrand& f, double centre, double half, Panel& panel) {
  Samples s{};
  const auto sampleAt = [&](double x) {
    const Sample sample = f(x);
    if (!std::isfinite(sample.value)) panel.hit = x;
    return sample;
  };
  const Sample middle = sampleAt(centre);
  s.middle = middle.value;
  s.largest = std::fabs(middle.value);
  panel.absolute = kKronrodMiddle * s.largest;
  panel.carried = kKronrodMiddle * middle.error;
  for (std::size_t i = 0; i < kPairs; ++i) {
    const Sample left = sampleAt(centre - half * kNode[i]);
    const Sample right = sampleAt(centre + half * kNode[i]);
    panel.absolute += kKronrod[i] * (std::fabs(left.value) + std::fabs(right.value));
    panel.carried += kKronrod[i] * (left.error + right.error);
    s.largest = std::max({s.largest, std::fabs(left.value), std::fabs(right.value)});
    s.sum[i] = (right.value - s.middle) + (left.value - s.middle);
    s.difference[i] = right.value - left.value;
  }
  return s;
}

// The neighbours of the sample at which the slope changes most.
void FindBend(const Samples& s, double centre, double half, Panel& panel) {
  std::array<double, 2 * kPairs + 1> t{};
  std::array<double, 2 * kPairs + 1> value{};
  for (std::size_t i = 0; i < kPairs; ++i) {
    t[i] = -kNode[i];
    value[i] = 0.5 * (s.sum[i] - s.difference[i]);
    t[2 * kPairs - i] = kNode[i];
    value[2 * kPairs - i] = 0.5 * (s.sum[i] + s.difference[i]);
  }
  double most = -1.0;
  for (std::size_t i = 1; i < 2 * kPairs; ++i) {
    const double left = (value[i] - value[i - 1]) / (t[i] - t[i - 1]);
    const double right = (value[i + 1] - value[i]) / (t[i + 1] - t[i]);
    const double bend = std::fabs(right - left);
    if (!(bend > most)) continue;
    most = bend;
    panel.bendLo = centre + half * t[i - 1];
    panel.bendHi = centre + half * t[i + 1];
  }
}

double LargerOf(double a, double b) {
  return std::max(std::fabs(a), std::fabs(b));
}

// The value at the distance `rest` within t = 1, and within t = -1 for the sign -1, where the even part has these
// weights. The odd part has them times the nodes over t.
double ValueNear(const Samples& s, double sign, double rest, const Pairs& even) {
  Pairs odd = even;
  for (std::size_t i = 0; i < kPairs; ++i) odd[i] *= kNode[i] / (1.0 - rest);
  return s.middle + 0.5 * (Dot(even, s.sum) + sign * Dot(odd, s.difference));
}

// The error of the integral beyond the outermost node, by the probes there: their difference from the polynomial is
// taken to grow no faster than the distance up to the probe before. Infinite where one is not finite.
double ErrorBeyond(const Samples& s, double sign, double half, double noise, Probes probes) {
  const double gap = half * (1.0 - kNode[0]);
  double error = 0.0;
  for (const Probe& probe : probes) {
    if (!(probe.distance < gap)) continue;
    const double rest = probe.distance / half;
    const double reach = std::min(probe.before, gap);
    const double difference = std::fabs(probe.value - ValueNear(s, sign, rest, EvenPartAt(rest)));
    if (difference > noise || !std::isfinite(difference)) error += difference * reach * (reach / probe.distance);
  }
  return std::isfinite(error) ? error : kInfinity;
}

// On [-1, 1].
double ErrorOf(const Samples& s, bool* rough) {
  const double rules = std::fabs(Dot(kKronrod, s.sum) - Dot(kGauss, s.sum));
  const double low = LargerOf(Dot(kDegree4, s.sum), Dot(kDegree5, s.difference));
  const double high = LargerOf(Dot(kDegree8, s.sum), Dot(kDegree9, s.difference));
  const double highest = LargerOf(Dot(kDegree10, s.sum), Dot(kDegree11, s.difference));
  *rough = highest > kNoise * s.largest && highest > kDecay * low;
  if (*rough) return std::max(rules, 2.0 * (high + highest));
  if (!(highest > kNoise * s.largest)) return rules;
  const double decay = highest / low;
  return std::max(rules, highest * decay * decay);
}

}  // namespace

Panel KronrodPanel(const Integrand& f, double lo, double hi, int depth, Probes atLo, Probes atHi) {
  Panel panel{.lo = lo, .hi = hi};
  const double half = 0.5 * (hi - lo);
  const Samples s = Take(f, lo + half, half, panel);
  panel.value = half * (2.0 * s.middle + Dot(kKronrod, s.sum));
  panel.absolute *= half;
  panel.carried *= half;
  const double noise = kNoise * s.largest + panel.carried / half;
  panel.error = half * ErrorOf(s, &panel.rough);
  panel.error += ErrorBeyond(s, -1.0, half, noise, atLo) + ErrorBeyond(s, 1.0, half, noise, atHi);
  panel.atLo = ValueNear(s, -1.0, 0.0, kEvenEnd);
  panel.atHi = ValueNear(s, 1.0, 0.0, kEvenEnd);
  panel.checkAt = lo + half * (2.0 - kCheckRest);
  panel.checkValue = ValueNear(s, 1.0, kCheckRest, kEvenCheck);
  panel.gap = half * (1.0 - kNode[0]);
  if (panel.rough) FindBend(s, lo + half, half, panel);
  panel.depth = depth;
  panel.notFinite = !std::isfinite(panel.value) || !std::isfinite(panel.absolute);
  return panel;
}

}  // namespace nu::engine::quadrature
