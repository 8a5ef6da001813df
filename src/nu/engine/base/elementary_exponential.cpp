#include <cmath>
#include <limits>

#include "nu/engine/base/elementary.h"
#include "nu/engine/base/elementary_parts.h"
#include "nu/engine/base/elementary_tables.h"
#include "nu/engine/base/floating_point.h"

// Exponentials, logarithms, powers, hyperbolic functions and their inverses.
//   exp(x) = 2^(k / 128) exp(r), |r| <= log(2) / 256   (P. T. P. Tang, ACM TOMS 15, 1989)
//   log(2^k m) = k log(2) - log(b) + log(1 + z), b of ten binary places near 1 / m, z = m b - 1, |z| < 2^-7.9
//                                                       (P. T. P. Tang, ACM TOMS 16, 1990)
// z is a sum of two doubles without error, of which the first has at most 19 digits. It is a multiple of 2^-42, as are
// the leading parts of log(2) and log(b): their sum is exact.
namespace nu::engine::base {

namespace {

constexpr double kSmallestNormal = std::numeric_limits<double>::min();

// Stands for (high + low) 2^exponent, with high from 1/4 to 2.
struct Scaled {
  double high, low;
  std::int64_t exponent;
};

// Stands for exp(+-x) = 2^(+-step / 128) (1 + even +- odd).
struct ExponentialParts {
  std::int64_t step;
  double even, odd;
};

// Expands exp(x + low) for |low| < 0.005, where |r| < 0.008.
inline ExponentialParts ReduceExponent(double x, double low) {
  const NearestMultiple k = RoundToMultiple<0>(x * kLog2StepInverse);
  const double r = ((x - k.value * kLog2Step1) - k.value * kLog2Step2) + low;
  const double t = r * r;
  const double even = t * (1.0 / 2.0 + t * (1.0 / 24.0 + t * (1.0 / 720.0)));
  return {k.count, even, r + r * t * (1.0 / 6.0 + t * (1.0 / 120.0))};
}

inline Scaled TimesPowerOfTwo(std::int64_t step, double increment) {
  const PowerOfTwo& at = kPowersOfTwo[step & 127];
  return {at.high, at.low + at.high * increment, step >> 7};
}

inline Scaled ExponentialOf(const ExponentialParts& parts) {
  return TimesPowerOfTwo(parts.step, parts.odd + parts.even);
}

// Finishes the largest and the subnormal results, which are rounded once.
double UnscaledAtEdge(const Scaled& value) {
  if (value.exponent > 1025) return kInfinity;
  if (value.exponent > 0) return (value.high + value.low) * 0x1p1000 * PowerOfTwoAt(value.exponent - 1000);
  return value.exponent < -1080 ? 0.0 : RoundOnceBelow({value.high, value.low}, static_cast<int>(value.exponent));
}

inline double Unscaled(const Scaled& value) {
  if (static_cast<std::uint64_t>(value.exponent + 1020) > 2040) return UnscaledAtEdge(value);
  return (value.high + value.low) * PowerOfTwoAt(value.exponent);
}

// x = 2^k m: k log(2) - log(b) + zHigh = leading + constants, and z = zHigh + zLow.
struct LogarithmParts {
  double leading, constants, zHigh, zLow;
};

// Expands the logarithm of x 2^exponent for a positive normal x.
inline LogarithmParts ReduceLogarithm(double x, std::int64_t exponent) {
  constexpr std::uint64_t kLeastM = 0x3fe6a00000000000;  // 0.70703125: 1 is a centre
  constexpr std::uint64_t kMantissa = (std::uint64_t{1} << 52) - 1;
  const std::uint64_t above = BitsOf(x) - kLeastM;
  const auto k = static_cast<double>((static_cast<std::int64_t>(above) >> 52) + exponent);
  const double m = FromBits(BitsOf(x) - (above & ~kMantissa));
  const Reciprocal& at = kReciprocals[((above & kMantissa) + (std::uint64_t{1} << 44)) >> 45];
  const double upper = RoundToMultiple<16>(m).value;
  const double zHigh = upper * at.inverse - 1.0;
  return {(k * kLog2High + at.logarithm) + zHigh, k * kLog2Low + at.logarithmLow, zHigh, (m - upper) * at.inverse};
}

// The correction is at most 2^-8 of the leading part.
inline DoubleDouble QuickLogarithm(double x, std::int64_t exponent) {
  const LogarithmParts parts = ReduceLogarithm(x, exponent);
  const double z = parts.zHigh + parts.zLow;
  const double t = z * z;
  const double higher =
      (-1.0 / 2.0 + z * (1.0 / 3.0)) + t * ((-1.0 / 4.0 + z * (1.0 / 5.0)) + t * (-1.0 / 6.0 + z * (1.0 / 7.0)));
  const DoubleDouble leading = FastTwoSum(parts.leading, parts.zLow);
  return {leading.high, leading.low + (t * higher + parts.constants)};
}

// The error is below 2^-68 of the logarithm, and the low part below 2^-17 of it. -zHigh^2 / 2 is exact.
inline DoubleDouble AccurateLogarithm(double x, std::int64_t exponent) {
  const LogarithmParts parts = ReduceLogarithm(x, exponent);
  const double z = parts.zHigh + parts.zLow;
  const double t = z * z;
  const double higher = (1.0 / 3.0 - z * (1.0 / 4.0)) +
                        t * ((1.0 / 5.0 - z * (1.0 / 6.0)) + t * ((1.0 / 7.0 - z * (1.0 / 8.0)) + t * (1.0 / 9.0)));
  const DoubleDouble first = FastTwoSum(parts.leading, parts.zLow);
  const DoubleDouble leading = FastTwoSum(first.high, -0.5 * (parts.zHigh * parts.zHigh));
  const double square = -(parts.zHigh + 0.5 * parts.zLow) * parts.zLow;
  return {leading.high, (leading.low + first.low) + (square + (z * t * higher + parts.constants))};
}

// Returns the logarithm of arguments that are no positive normal numbers.
double LogarithmAtEdge(double x) {
  if (x == 0.0) return -kInfinity;
  if (x == kInfinity) return x;
  return x > 0.0 ? SumOf(QuickLogarithm(x * 0x1p54, -54)) : Undefined(x);
}

// A square root and the difference between the radicand and its square.
struct Root {
  double value, residual;
};

// Returns sqrt(square + rest) for |rest| < 2^-26 square.
inline Root RootOf(double square, double rest) {
  const double root = std::sqrt(square);
  return {root, ((square - root * root) - ProductError(root, root)) + rest};
}

// Returns log(sum), where the root is a part of the sum: the error e of the sum adds e / sum.
inline double LogarithmOfSum(const DoubleDouble& sum, const Root& root) {
  const DoubleDouble logarithm = QuickLogarithm(sum.high, 0);
  const double twice = 2.0 * root.value;
  return logarithm.high + (logarithm.low + (root.residual + twice * sum.low) / (twice * sum.high));
}

// Whether y is an integer, and an odd one. All doubles from 2^53 on are even.
struct Parity {
  bool isInteger, isOdd;
};
Parity ParityOf(double y) {
  if (!(std::fabs(y) < 0x1p53)) return {!std::isnan(y), false};
  const std::int64_t integer = static_cast<std::int64_t>(y);
  const bool isInteger = static_cast<double>(integer) == y;
  return {isInteger, isInteger && (integer & 1) != 0};
}

// Returns (x 2^exponent)^y for a positive normal x.
inline double PowerOf(double x, std::int64_t exponent, double y) {
  constexpr double kBeyond = 800.0;  // arguments of the exponential whose results are zero and infinity
  const DoubleDouble logarithm = AccurateLogarithm(x, exponent);
  const double product = y * logarithm.high;
  if (!(std::fabs(product) < kBeyond)) return product > 0.0 ? kInfinity : 0.0;
  const double low = ProductError(y, logarithm.high) + y * logarithm.low;
  return Unscaled(ExponentialOf(ReduceExponent(product, low)));
}

// Returns all powers but those of positive normal numbers with finite exponents.
double PowerAtEdge(double x, double y) {
  if (y == 0.0 || x == 1.0) return 1.0;
  if (std::isnan(x) || std::isnan(y)) return x + y;
  const double magnitude = std::fabs(x);
  if (std::isinf(y)) {
    if (magnitude == 1.0) return 1.0;
    return (magnitude > 1.0) == (y > 0.0) ? kInfinity : 0.0;
  }
  const Parity parity = ParityOf(y);
  double power;
  if (magnitude == 0.0 || magnitude == kInfinity) {
    power = (magnitude == 0.0) == (y > 0.0) ? 0.0 : kInfinity;
  } else {
    if (x < 0.0 && !parity.isInteger) return Undefined(x);
    const bool isNormal = magnitude >= kSmallestNormal;
    power = PowerOf(isNormal ? magnitude : magnitude * 0x1p54, isNormal ? 0 : -54, y);
  }
  return std::signbit(x) && parity.isOdd ? -power : power;
}

// Returns (exp(|x|) + factor exp(-|x|)) / 2. With the factor -1, |x| must be at least 1/4, so that nothing cancels.
inline double HalfSum(double magnitude, double factor) {
  constexpr double kAlone = 40.0;  // from here on the second is below 2^-115 of the first
  constexpr double kOverflow = 720.0;
  if (magnitude > kAlone) {
    if (magnitude > kOverflow) return kInfinity;
    Scaled first = ExponentialOf(ReduceExponent(magnitude, 0.0));
    --first.exponent;
    return Unscaled(first);
  }
  const ExponentialParts parts = ReduceExponent(magnitude, 0.0);
  const Scaled first = TimesPowerOfTwo(parts.step, parts.even + parts.odd);
  const Scaled second = TimesPowerOfTwo(-parts.step, parts.even - parts.odd);
  const double firstScale = PowerOfTwoAt(first.exponent - 1);
  const double secondScale = factor * PowerOfTwoAt(second.exponent - 1);
  const DoubleDouble leading = FastTwoSum(first.high * firstScale, second.high * secondScale);
  return leading.high + (leading.low + (first.low * firstScale + second.low * secondScale));
}

// Beyond this x^2 +- 1 rounds to x^2, and the inverses of sinh and cosh to log(2 x).
constexpr double kSquareAlone = 0x1p30;

}  // namespace

double Exp(double x) {
  constexpr double kLargest = 709.8;    // beyond the largest double
  constexpr double kSmallest = -745.2;  // below half the smallest
  if (x > kLargest) return kInfinity;
  if (x < kSmallest) return 0.0;
  if (std::isnan(x)) return x;
  return Unscaled(ExponentialOf(ReduceExponent(x, 0.0)));
}

double Log(double x) {
  if (!(x >= kSmallestNormal && x < kInfinity)) return LogarithmAtEdge(x);
  return SumOf(QuickLogarithm(x, 0));
}

double Pow(double x, double y) {
  if (x >= kSmallestNormal && x < kInfinity && std::fabs(y) < kInfinity) return PowerOf(x, 0, y);
  return PowerAtEdge(x, y);
}

double Sinh(double x) {
  const double magnitude = std::fabs(x);
  if (magnitude < 0.25) {
    const double t = x * x;
    const double higher =
        1.0 / 120.0 + t * (1.0 / 5040.0 + t * (1.0 / 362880.0 + t * (1.0 / 39916800.0 + t * (1.0 / 6227020800.0))));
    return x + x * t * (1.0 / 6.0 + t * higher);
  }
  return std::isnan(x) ? x : std::copysign(HalfSum(magnitude, -1.0), x);
}

double Cosh(double x) {
  return std::isnan(x) ? x : HalfSum(std::fabs(x), 1.0);
}

double Asinh(double x) {
  constexpr double kSeries = 0x1p-10;  // below it two terms of the series are enough
  const double magnitude = std::fabs(x);
  if (magnitude < kSeries) {
    const double t = x * x;
    return std::copysign(magnitude - magnitude * t * (1.0 / 6.0 - t * (3.0 / 40.0)), x);
  }
  if (!(magnitude < kInfinity)) return x;
  if (magnitude > kSquareAlone) return std::copysign(SumOf(QuickLogarithm(magnitude, 1)), x);
  const double square = x * x;
  const DoubleDouble sum = TwoSum(1.0, square);
  const Root root = RootOf(sum.high, sum.low + ProductError(x, x));
  return std::copysign(LogarithmOfSum(FastTwoSum(root.value, magnitude), root), x);
}

double Acosh(double x) {
  constexpr double kSeries = 32.0;  // above it five terms of the series in 1 / x^2 are enough
  if (!(x > 1.0)) return x == 1.0 ? 0.0 : Undefined(x);
  if (x > kSquareAlone) return x < kInfinity ? SumOf(QuickLogarithm(x, 1)) : x;
  if (x > kSeries) {
    const double t = 1.0 / (x * x);
    const double higher =
        t * (1.0 / 4.0 + t * (3.0 / 32.0 + t * (5.0 / 96.0 + t * (35.0 / 1024.0 + t * 63.0 / 2560.0))));
    const DoubleDouble logarithm = QuickLogarithm(x, 1);
    return logarithm.high + (logarithm.low - higher);
  }
  const double square = x * x;
  const double difference = square - 1.0;
  const Root root = RootOf(difference, ((square - difference) - 1.0) + ProductError(x, x));
  return LogarithmOfSum(FastTwoSum(x, root.value), root);
}

}  // namespace nu::engine::base
