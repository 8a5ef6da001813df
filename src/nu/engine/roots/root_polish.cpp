#include "nu/engine/roots/root_polish.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "nu/engine/base/error_free.h"
#include "nu/engine/base/simd.h"
#include "nu/engine/roots/power_scale.h"

namespace nu::engine::roots {
namespace {

// A quadruple root takes some 50 steps from its first digits to its last one.
constexpr int kMaxNewtonSteps = 80;
constexpr int kTrials = 20;
constexpr int kTrialLanes = 3 * kLanes;
// Powers of x up to this binary exponent stay in range with all their products.
constexpr int kSafeExponent = 400;

struct Local {
  double value;
  double slope;
};

// Horner's rule with the sum of its rounding errors (S. Graillat, Ph. Langlois and N. Louvet, Compensated Horner
// scheme, 2005): the value is that of twice the working precision, rounded.
Local EvaluateCompensated(const double* c, int degree, double x) {
  double value = c[degree];
  double error = 0.0;
  double slope = 0.0;
  for (int i = degree - 1; i >= 0; --i) {
    slope = slope * x + value;
    const DoubleDouble product = TwoProduct(x, value);
    const DoubleDouble sum = TwoSum(product.high, c[i]);
    error = error * x + (product.low + sum.low);
    value = sum.high;
  }
  return {value + error, slope};
}

double HalfCurvature(const double* c, int degree, double x) {
  double f = 0.0;
  double d = 0.0;
  double b = c[degree];
  for (int i = degree - 1; i >= 0; --i) {
    f = f * x + d;
    d = d * x + b;
    b = b * x + c[i];
  }
  return f;
}

// Evaluates in working precision at x + step, ..., x + 20 step; the last lanes go beyond.
NU_KERNEL void EvaluateTrials(const double* c, int degree, double x, double step, double* values) {
  double at[kTrialLanes], value[kTrialLanes];
  NU_LANE_LOOP for (int l = 0; l < kTrialLanes; ++l) {
    at[l] = x + (l + 1) * step;
    value[l] = c[degree];
  }
  for (int i = degree - 1; i >= 0; --i) {
    NU_LANE_LOOP for (int l = 0; l < kTrialLanes; ++l) value[l] = value[l] * at[l] + c[i];
  }
  NU_LANE_LOOP for (int l = 0; l < kTrialLanes; ++l) values[l] = value[l];
}

double SumOfSizes(const double* c, int degree, double x) {
  double sum = std::fabs(c[degree]);
  for (int i = degree - 1; i >= 0; --i) sum = sum * x + std::fabs(c[i]);
  return sum;
}

// Returns, of the trial points nearer than `reach`, the last one where |p| is not larger than at all before.
double Search(const double* c, int degree, double x, double best, double step, double reach) {
  double plain[kTrialLanes];
  EvaluateTrials(c, degree, x, step, plain);
  const double rounding = ResidualLimit(degree) * SumOfSizes(c, degree, std::fabs(x) + kTrials * std::fabs(step));
  const double from = x;
  for (int k = 1; k <= kTrials && k * std::fabs(step) <= reach; ++k) {
    if (std::fabs(plain[k - 1]) - rounding > best) continue;
    const double trial = from + k * step;
    const double value = std::fabs(EvaluateCompensated(c, degree, trial).value);
    if (!(value <= best)) continue;
    best = value;
    x = trial;
  }
  return x;
}

// Whether no trial point can have a smaller value: within reach all other roots are at least as far from it as it is
// from x, so that |p| has decreased to no less than 2^(1-n) of what the slope predicts.
bool IsSimple(int degree, double error, double step, double reach) {
  return std::fabs(step) > reach || TimesPower(error, degree) < std::fabs(step);
}

double Polish(const double* c, int degree, const PolishRules& rules, double x, double reach) {
  // In the middle of its neighbourhood a simple root is found to the last digit by a step of a few roundings.
  constexpr double kLast = 4.0 * kRounding;
  constexpr double kMiddle = 0x1p-20;
  double previous = rules.large;
  bool down = false;
  Local at = EvaluateCompensated(c, degree, x);
  double best = x;
  Local atBest = at;
  for (int k = 0; k < kMaxNewtonSteps; ++k) {
    if (std::fabs(at.value) <= rules.zero) return x;
    if (!(std::fabs(at.slope) > rules.zero)) break;
    const double next = x - at.value / at.slope;
    const double step = std::fabs(x - next);
    if (!(step < previous) || step == 0.0) break;
    if (step <= kLast * std::fabs(x) && step <= kMiddle * reach && IsSimple(degree, step, rules.step, reach)) {
      return next;
    }
    down = next < x;
    previous = step;
    x = next;
    at = EvaluateCompensated(c, degree, x);
    if (std::fabs(at.value) > std::fabs(atBest.value)) continue;
    best = x;
    atBest = at;
  }
  if (IsSimple(degree, std::fabs(atBest.value / atBest.slope), rules.step, reach)) return best;
  return Search(c, degree, best, std::fabs(atBest.value), down ? -rules.step : rules.step, reach);
}

double HalfDistanceToNext(const FoundRoot* roots, int count, int self) {
  double nearest = HUGE_VAL;
  const FoundRoot& x = roots[self];
  for (int j = 0; j < count; ++j) {
    const double distance = std::fabs(x.re - roots[j].re) + std::fabs(roots[j].im);
    if (j != self && distance > 0.0) nearest = std::min(nearest, distance);
  }
  return 0.5 * nearest;
}

// Returns the roots of the parabola that fits at the middle of two roots found to working precision: the two roots of a
// near tangent, or a double root where it has none. Both must have smaller values than the middle, else there are more
// than two roots nearby.
bool SplitDouble(const double* c, int degree, double middle, double* lower, double* upper) {
  const Local at = EvaluateCompensated(c, degree, middle);
  const double curvature = HalfCurvature(c, degree, middle);
  const double shift = -0.5 * at.slope / curvature;
  const double discriminant = shift * shift - at.value / curvature;
  const double apart = discriminant > 0.0 ? std::sqrt(discriminant) : 0.0;
  *lower = middle + shift - apart;
  *upper = middle + shift + apart;
  const auto fits = [&](double x) { return std::fabs(EvaluateCompensated(c, degree, x).value) <= std::fabs(at.value); };
  return fits(*lower) && fits(*upper);
}

// The polynomial in the unit of x where powers of x would leave the range.
class LocalPolynomial {
 public:
  LocalPolynomial(const double* c, int degree, double x, double* scratch) : m_c(c) {
    if (x == 0.0 || std::abs(ExponentOf(x)) * static_cast<long long>(degree) <= kSafeExponent) return;
    m_exponent = ExponentOf(x);
    int largest = std::numeric_limits<int>::min();
    for (int i = 0; i <= degree; ++i) {
      if (c[i] != 0.0) largest = std::max(largest, ExponentOf(c[i]) + i * m_exponent);
    }
    for (int i = 0; i <= degree; ++i) scratch[i] = TimesPower(c[i], i * m_exponent - largest);
    m_c = scratch;
    m_shift = largest;
  }
  const double* Data() const { return m_c; }
  double In(double x) const { return TimesPower(x, -m_exponent); }
  double Out(double x) const { return TimesPower(x, m_exponent); }
  PolishRules Rules(const PolishRules& r) const { return {TimesPower(r.zero, -m_shift), In(r.large), In(r.step)}; }

 private:
  const double* m_c;
  int m_exponent = 0;
  int m_shift = 0;
};

bool IsReal(const FoundRoot& x) {
  return x.im == 0.0;
}

// Moves two roots from their middle to their places, if these are much nearer than any other root.
void SplitAt(const double* c, int degree, double middle, FoundRoot* roots, int count, int i, int j, double* scratch) {
  constexpr double kFar = 8.0;
  const LocalPolynomial local(c, degree, middle, scratch);
  double lower, upper;
  if (!SplitDouble(local.Data(), degree, local.In(middle), &lower, &upper)) return;
  const double first = local.Out(lower);
  const double second = local.Out(upper);
  const double shift = std::max(std::fabs(first - middle), std::fabs(second - middle));
  for (int k = 0; k < count; ++k) {
    if (k != i && k != j && std::fabs(roots[k].re - middle) + std::fabs(roots[k].im) < kFar * shift) return;
  }
  roots[i].re = first;
  roots[j].re = second;
}

// Makes two roots of every double real root that came as a pair.
int SplitPairs(const double* c, int degree, FoundRoot* roots, int count, double* scratch) {
  const int given = count;
  for (int i = 0; i < given; ++i) {
    if (!roots[i].pair || roots[i].im != 0.0) continue;
    roots[i].pair = false;
    roots[count] = roots[i];
    SplitAt(c, degree, roots[i].re, roots, count + 1, i, count, scratch);
    ++count;
  }
  return count;
}

// Two real roots that are close together are found to working precision as two differences from their middle, which is
// much better known.
void SplitClose(const double* c, int degree, FoundRoot* roots, int count, double* scratch) {
  constexpr double kClose = 0x1p-16;
  for (int i = 0; i < count; ++i) {
    if (!IsReal(roots[i])) continue;
    int nearest = -1;
    double distance = kClose * std::fabs(roots[i].re);
    for (int j = i + 1; j < count; ++j) {
      const double d = std::fabs(roots[i].re - roots[j].re);
      if (!IsReal(roots[j]) || !(d > 0.0 && d < distance)) continue;
      nearest = j;
      distance = d;
    }
    if (nearest < 0) continue;
    SplitAt(c, degree, 0.5 * (roots[i].re + roots[nearest].re), roots, count, i, nearest, scratch);
  }
}

}  // namespace

int PolishRealRoots(const double* c, int degree, const PolishRules& rules, FoundRoot* roots, int count,
                    double* scratch) {
  count = SplitPairs(c, degree, roots, count, scratch);
  SplitClose(c, degree, roots, count, scratch);
  double* polished = scratch + degree + 1;
  for (int i = 0; i < count; ++i) {
    if (!IsReal(roots[i])) continue;
    const LocalPolynomial local(c, degree, roots[i].re, scratch);
    const double reach = local.In(HalfDistanceToNext(roots, count, i));
    const double x = local.In(roots[i].re);
    const double found = Polish(local.Data(), degree, local.Rules(rules), x, reach);
    // Newton's method may leave a simple root's neighbourhood only where the root it came from was no root.
    polished[i] = local.Out(std::fabs(found - x) <= reach ? found : x);
  }
  for (int i = 0; i < count; ++i) {
    if (IsReal(roots[i])) roots[i].re = polished[i];
  }
  return count;
}

}  // namespace nu::engine::roots
