#include <array>
#include <bit>
#include <cmath>

#include "nu/engine/base/elementary.h"
#include "nu/engine/base/elementary_parts.h"
#include "nu/engine/base/elementary_tables.h"

// Sine, cosine and tangent. With a = k pi / 256 and x = a + r, |r| <= pi / 512, modulo 2 pi:
//   sin(a + r) = sin(a) + r cos(a) + cos(a) (sin(r) - r) + sin(a) (cos(r) - 1)
// cos(a) is parted into the nearest of 0, +-1/2, +-1 and a rest: the product of the first with r is exact, that of the
// second is small beside the result. The cosine is the sine a quarter turn on.
//
// Reduction by parts of pi / 256 whose products with k are exact (W. J. Cody, W. Waite, Software Manual for the
// Elementary Functions, 1980). Large arguments, and those close to a multiple of pi / 2, take as many digits of 2 / pi
// as they need (M. Payne, R. Hanek, Radian reduction for trigonometric functions, SIGNUM Newsletter 18, 1983).
// Tables and remainders: P. T. P. Tang, Table-lookup algorithms for elementary functions and their error analysis,
// 1991.
namespace nu::engine::base {

namespace {

// Holds the sine of i pi / 256, and its cosine as factor + rest.
struct Direction {
  double sine, sineLow, factor, rest;
};

constexpr double NearestHalf(double cosine) {
  return cosine > 0.75 ? 1.0 : cosine > 0.25 ? 0.5 : 0.0;
}

// Extends the table from an eighth of a turn to half a turn.
constexpr std::array<Direction, 256> MakeDirections() {
  std::array<Direction, 256> made{};
  for (int i = 0; i <= 128; ++i) {
    const SineAndCosine& at = kSines[i <= 64 ? i : 128 - i];
    const double sine = i <= 64 ? at.sine : at.cosine;
    const double sineLow = i <= 64 ? at.sineLow : at.cosineLow;
    const double cosine = i <= 64 ? at.cosine : at.sine;
    const double cosineLow = i <= 64 ? at.cosineLow : at.sineLow;
    const double factor = NearestHalf(cosine);
    const double rest = (cosine - factor) + cosineLow;
    made[i] = {sine, sineLow, factor, rest};
    if (i > 0) made[256 - i] = {sine, sineLow, -factor, -rest};
  }
  made[128] = {1.0, 0.0, 0.0, 0.0};
  return made;
}

constexpr std::array<Direction, 256> kDirections = MakeDirections();

// Stands for step pi / 256 + high + low, modulo 2 pi.
struct ReducedAngle {
  double high, low;
  std::uint64_t step;
};

// Returns the upper word of the product.
std::uint64_t MultiplyHigh(std::uint64_t a, std::uint64_t b) {
  constexpr std::uint64_t kHalf = 0xffffffff;
  const std::uint64_t low = (a & kHalf) * (b & kHalf);
  const std::uint64_t first = (a >> 32) * (b & kHalf) + (low >> 32);
  const std::uint64_t second = (a & kHalf) * (b >> 32) + (first & kHalf);
  return (a >> 32) * (b >> 32) + (first >> 32) + (second >> 32);
}

// Let x = m 2^e with |x| >= 1/2. Only those digits of 2 / pi count which neither make multiples of 2 pi nor fall below
// the result: 192 of them, from the place e - 2 on. Their product with m has nine digits before the binary point.
ReducedAngle ReduceWithAllDigits(double x) {
  const std::uint64_t bits = BitsOf(x);
  const std::uint64_t m = (bits & ((std::uint64_t{1} << 52) - 1)) | (std::uint64_t{1} << 52);
  const std::uint64_t first = ((bits >> 52) & 0x7ff) - 1075 - 2 + 64;
  const std::uint64_t* word = kTwoOverPi + first / 64;
  const std::uint64_t shift = first % 64;
  const auto digits = [&](int i) { return shift == 0 ? word[i] : word[i] << shift | word[i + 1] >> (64 - shift); };

  std::uint64_t low = m * digits(2);
  std::uint64_t middle = m * digits(1);
  std::uint64_t high = m * digits(0) + MultiplyHigh(m, digits(1));
  const std::uint64_t carried = MultiplyHigh(m, digits(2));
  middle += carried;
  if (middle < carried) ++high;

  std::uint64_t step = high >> 55;
  high = high << 9 | middle >> 55;
  middle = middle << 9 | low >> 55;
  low <<= 9;
  const bool isAbove = (high >> 63) != 0;  // more than half a step: counts back from the next one
  if (isAbove) {
    ++step;
    low = ~low + 1;
    middle = ~middle + (low == 0 ? 1 : 0);
    high = ~high + (low == 0 && middle == 0 ? 1 : 0);
  }
  const int zeros = high != 0 ? std::countl_zero(high) : 64 + std::countl_zero(middle);
  if (zeros >= 64) {
    high = middle;
    middle = low;
  }
  if (zeros % 64 != 0) {
    high = high << (zeros % 64) | middle >> (64 - zeros % 64);
    middle = middle << (zeros % 64) | low >> (64 - zeros % 64);
  }
  const double unit = PowerOfTwoAt(-zeros - 53);
  const double upper = static_cast<double>(high >> 11) * unit;
  const double lower = static_cast<double>((high & 0x7ff) << 42 | middle >> 22) * (unit * 0x1p-53);
  const DoubleDouble product = TwoProduct(upper, kStepHigh);
  const double rest = product.low + (upper * kStepLow + lower * kStepHigh);
  const bool isBackwards = isAbove != (x < 0.0);
  return {isBackwards ? -product.high : product.high, isBackwards ? -rest : rest, x < 0.0 ? 0 - step : step};
}

inline ReducedAngle Reduce(double x) {
  constexpr double kLargestQuick = 1.6e6;     // k has up to 27 digits, and its products with parts of 26 are exact
  constexpr double kSmallestQuick = 0x1p-18;  // of the remainder, which is known to 2^-84
  if (std::fabs(x) < kLargestQuick) {
    const NearestMultiple k = RoundToMultiple<0>(x * kStepInverse);
    const double first = x - k.value * kStep1;
    const DoubleDouble second = FastTwoSum(first, -(k.value * kStep2));
    const DoubleDouble third = FastTwoSum(second.high, -(k.value * kStep3));
    if (std::fabs(third.high) > kSmallestQuick || k.count == 0)
      return {third.high, third.low + second.low, static_cast<std::uint64_t>(k.count)};
  }
  if (!std::isfinite(x)) return {x - x, 0.0, 0};
  return ReduceWithAllDigits(x);
}

// Returns the sine of step pi / 256 + high + low with the sign changed in every odd half turn.
inline DoubleDouble SineBySteps(std::uint64_t step, double high, double low) {
  const Direction& at = kDirections[step % 256];
  const double t = high * high;
  const double sineRest = t * high * (-1.0 / 6.0 + t * (1.0 / 120.0 - t * (1.0 / 5040.0)));
  const double cosineRest = t * (-0.5 + t * (1.0 / 24.0 - t * (1.0 / 720.0)));
  const DoubleDouble leading = FastTwoSum(at.sine, at.factor * high);
  const double cosine = at.factor + at.rest;
  return {leading.high,
          leading.low + ((at.rest * high + at.sineLow) + (cosine * (sineRest + low) + at.sine * cosineRest))};
}

inline double SignOfStep(std::uint64_t step) {
  return 1.0 - static_cast<double>(static_cast<int>(step >> 7 & 2));
}

inline DoubleDouble Normalised(const DoubleDouble& x) {
  return FastTwoSum(x.high, x.low);
}

inline double SineOf(const ReducedAngle& at, std::uint64_t ahead) {
  const DoubleDouble sine = SineBySteps(at.step + ahead, at.high, at.low);
  return SignOfStep(at.step + ahead) * (sine.high + sine.low);
}

constexpr std::uint64_t kQuarterTurn = 128;
// The sine and the tangent of arguments below this round to the argument; zeros keep their signs.
constexpr double kOwnSine = 0x1p-27;

}  // namespace

double Sin(double x) {
  if (std::fabs(x) < kOwnSine) return x;
  return SineOf(Reduce(x), 0);
}

double Cos(double x) {
  return SineOf(Reduce(x), kQuarterTurn);
}

SineCosine SinCos(double x) {
  const ReducedAngle at = Reduce(x);
  return {std::fabs(x) < kOwnSine ? x : SineOf(at, 0), SineOf(at, kQuarterTurn)};
}

double Tan(double x) {
  if (std::fabs(x) < kOwnSine) return x;
  const ReducedAngle at = Reduce(x);
  const DoubleDouble sine = Normalised(SineBySteps(at.step, at.high, at.low));
  const DoubleDouble cosine = Normalised(SineBySteps(at.step + kQuarterTurn, at.high, at.low));
  const double inverse = 1.0 / cosine.high;
  const double quotient = sine.high * inverse;
  const DoubleDouble product = TwoProduct(quotient, cosine.high);
  const double rest = ((sine.high - product.high) - product.low) + (sine.low - quotient * cosine.low);
  return SignOfStep(at.step) * SignOfStep(at.step + kQuarterTurn) * (quotient + rest * inverse);
}

}  // namespace nu::engine::base
