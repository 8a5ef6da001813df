#include <array>
#include <cmath>
#include <cstddef>

#include "nu/engine/base/elementary.h"
#include "nu/engine/base/elementary_parts.h"
#include "nu/engine/base/elementary_tables.h"

// The inverses of sine, cosine and tangent: Taylor series about the nearest c = i / 64, whose coefficients follow from
// the differential equations by recurrence (J.-M. Muller, Elementary Functions, 3rd edition, 2016, on table-driven
// methods). The difference from c is exact, and h f'(c) is summed as h + h (f'(c) - 1).
//   |x| > 1:      atan(x) = pi / 2 - atan(1 / x)
//   |x| > 1 / 2:  asin(x) = pi / 2 - 2 asin(sqrt((1 - x) / 2)), where 1 - x is exact
// Quotients and roots are taken with their rounding errors.
namespace nu::engine::base {

namespace {

constexpr int kDegree = 8;

// Stands for f(c + h) = high + low + h + h slopeLessOne + h^2 (higher[0] + higher[1] h + ...).
struct Expansion {
  double high, low, slopeLessOne;
  double higher[kDegree - 1];
};

// The coefficients of f'(c + h) = sum of slope_n h^n, of which the first two are given.
constexpr Expansion MakeExpansion(const Angle& at, double slopeLessOne, const double (&slopes)[kDegree]) {
  Expansion made{at.high, at.low, slopeLessOne, {}};
  for (int n = 1; n < kDegree; ++n) made.higher[n - 1] = slopes[n] / (n + 1);
  return made;
}

// atan: (1 + (c + h)^2) f'(c + h) = 1.
constexpr std::array<Expansion, 65> MakeArcTangents() {
  std::array<Expansion, 65> made{};
  for (int i = 0; i <= 64; ++i) {
    const double c = i / 64.0;
    const double a = 1.0 + c * c;
    double slopes[kDegree] = {1.0 / a, -2.0 * c / (a * a)};
    for (int n = 2; n < kDegree; ++n) slopes[n] = -(2.0 * c * slopes[n - 1] + slopes[n - 2]) / a;
    made[i] = MakeExpansion(kArcTangents[i], -c * c / a, slopes);
  }
  return made;
}

constexpr double SquareRoot(double a) {
  double root = 1.0;
  for (int i = 0; i < 8; ++i)
    root = 0.5 * (root + a / root);  // doubles the digits from one at least, for 3/4 <= a <= 1
  return root;
}

// asin: (1 - (c + h)^2) f''(c + h) = (c + h) f'(c + h).
constexpr std::array<Expansion, 33> MakeArcSines() {
  std::array<Expansion, 33> made{};
  for (int i = 0; i <= 32; ++i) {
    const double c = i / 64.0;
    const double a = 1.0 - c * c;
    const double root = SquareRoot(a);
    double slopes[kDegree] = {1.0 / root, c / (a * root)};
    for (int n = 1; n < kDegree - 1; ++n)
      slopes[n + 1] = (c * (2 * n + 1) * slopes[n] + n * slopes[n - 1]) / (a * (n + 1));
    made[i] = MakeExpansion(kArcSines[i], c * c / (root * (1.0 + root)), slopes);
  }
  return made;
}

constexpr std::array<Expansion, 65> kArcTangentAt = MakeArcTangents();
constexpr std::array<Expansion, 33> kArcSineAt = MakeArcSines();

// Returns f(x + low) for x >= 0.
template<std::size_t n>
inline DoubleDouble Expand(const std::array<Expansion, n>& expansions, double x, double low) {
  const NearestMultiple c = RoundToMultiple<6>(x);
  const Expansion& at = expansions[static_cast<std::size_t>(c.count)];
  const double h = x - c.value;
  const double h2 = h * h;
  const double* a = at.higher;
  const double higher = (a[0] + h * a[1]) + h2 * ((a[2] + h * a[3]) + h2 * ((a[4] + h * a[5]) + h2 * a[6]));
  const DoubleDouble leading = FastTwoSum(at.high, h);
  return {leading.high, leading.low + (((at.slopeLessOne * h + at.low) + (low + at.slopeLessOne * low)) + h2 * higher)};
}

// Returns base + factor * part, where |base| >= |part| or base = 0.
inline double Combine(const Angle& base, double factor, const DoubleDouble& part) {
  const DoubleDouble leading = FastTwoSum(base.high, factor * part.high);
  return leading.high + (leading.low + (base.low + factor * part.low));
}

constexpr Angle kNoTurn = {0.0, 0.0};
constexpr Angle kQuarterTurn = {0.5 * kPiHigh, 0.5 * kPiLow};
constexpr Angle kHalfTurn = {kPiHigh, kPiLow};

// Arguments below this round to themselves; zeros keep their signs.
constexpr double kOwnArc = 0x1p-27;

// Returns asin(sqrt((1 - x) / 2)) for 1/2 <= x < 1.
inline DoubleDouble HalfArcCosine(double x) {
  const double square = 0.5 * (1.0 - x);
  const double root = std::sqrt(square);
  const DoubleDouble product = TwoProduct(root, root);
  const double rest = (square - product.high) - product.low;
  return Expand(kArcSineAt, root, rest * (root * (0.5 / square)));
}

// Returns atan(y / x) for x >= y > 0.
inline DoubleDouble ArcTangentOfQuotient(double y, double x) {
  const double inverse = 1.0 / x;
  const double quotient = y * inverse;
  const DoubleDouble product = TwoProduct(quotient, x);
  return Expand(kArcTangentAt, quotient, ((y - product.high) - product.low) * inverse);
}

struct Sector {
  Angle base;
  double factor;
};

// Both quotients must be 2^-64 at least, and both coordinates must not be far from 1.
inline double AngleOf(double y, double x) {
  static constexpr Sector kSectors[4] = {
      {kNoTurn, 1.0}, {kHalfTurn, -1.0}, {kQuarterTurn, -1.0}, {kQuarterTurn, 1.0}};  // x < 0 in every other one
  const double v = std::fabs(x);
  const double u = std::fabs(y);
  const bool isSteep = u > v;
  const Sector& at = kSectors[2 * static_cast<int>(isSteep) + static_cast<int>(x < 0.0)];
  const double shorter = isSteep ? v : u;
  const double longer = isSteep ? u : v;
  return std::copysign(Combine(at.base, at.factor, ArcTangentOfQuotient(shorter, longer)), y);
}

// Quotients below this and above its inverse turn an axis by less than rounding does.
constexpr double kNoTilt = 0x1p-64;

// Handles zeros, infinities, NaN, coordinates far from 1 and directions close to an axis.
double Atan2AtEdge(double y, double x) {
  if (std::isnan(x) || std::isnan(y)) return x + y;
  double v = std::fabs(x);
  double u = std::fabs(y);
  if (std::isinf(v) || std::isinf(u)) {
    v = std::isinf(v) ? 1.0 : 0.0;
    u = std::isinf(u) ? 1.0 : 0.0;
  } else {
    const double scale = v > 1.0 || u > 1.0 ? 0x1p-600 : 0x1p700;
    v *= scale;
    u *= scale;
  }
  if (v <= u * kNoTilt && u > 0.0) return std::copysign(kQuarterTurn.high, y);
  if (u > v * kNoTilt) return AngleOf(std::copysign(u, y), std::copysign(v, x));
  if (std::signbit(x)) return std::copysign(kHalfTurn.high, y);
  return v == 0.0 ? y : y / x;
}

}  // namespace

double Atan(double x) {
  const double magnitude = std::fabs(x);
  if (magnitude < kOwnArc) return x;
  if (magnitude <= 1.0) return std::copysign(SumOf(Expand(kArcTangentAt, magnitude, 0.0)), x);
  if (magnitude < 0x1p60) return std::copysign(Combine(kQuarterTurn, -1.0, ArcTangentOfQuotient(1.0, magnitude)), x);
  return std::isnan(x) ? x : std::copysign(kQuarterTurn.high, x);
}

double Atan2(double y, double x) {
  const double v = std::fabs(x);
  const double u = std::fabs(y);
  const double longer = u > v ? u : v;
  const double shorter = u > v ? v : u;
  if (!(longer < 0x1p400 && longer > 0x1p-400 && shorter > longer * kNoTilt)) return Atan2AtEdge(y, x);
  return AngleOf(y, x);
}

double Asin(double x) {
  const double magnitude = std::fabs(x);
  if (magnitude < kOwnArc) return x;
  if (magnitude < 0.5) return std::copysign(SumOf(Expand(kArcSineAt, magnitude, 0.0)), x);
  if (magnitude < 1.0) return std::copysign(Combine(kQuarterTurn, -2.0, HalfArcCosine(magnitude)), x);
  return magnitude == 1.0 ? std::copysign(kQuarterTurn.high, x) : Undefined(x);
}

double Acos(double x) {
  const double magnitude = std::fabs(x);
  if (magnitude < 0.5) return Combine(kQuarterTurn, std::copysign(1.0, -x), Expand(kArcSineAt, magnitude, 0.0));
  if (magnitude < 1.0) return Combine(x > 0.0 ? kNoTurn : kHalfTurn, x > 0.0 ? 2.0 : -2.0, HalfArcCosine(magnitude));
  if (magnitude == 1.0) return x > 0.0 ? 0.0 : kHalfTurn.high;
  return Undefined(x);
}

}  // namespace nu::engine::base
