#ifndef NU_ENGINE_BASE_ELEMENTARY_PARTS_H
#define NU_ENGINE_BASE_ELEMENTARY_PARTS_H

#include <cstdint>

#include "nu/engine/base/bits.h"
#include "nu/engine/base/error_free.h"
#include "nu/engine/base/floating_point.h"

// What the elementary functions share. Each evaluates its result as a sum of two doubles: a leading one that is exact
// or nearly so, and a correction at least some seven binary places smaller, whose rounding errors then hardly count.
namespace nu::engine::base {

inline double SumOf(const DoubleDouble& value) {
  return value.high + value.low;
}

// Returns 2^exponent, which must be a normal number.
inline double PowerOfTwoAt(std::int64_t exponent) {
  return FromBits(static_cast<std::uint64_t>(exponent + 1023) << 52);
}

// Returns the leading 26 binary digits of x, whose square is exact.
inline double UpperDigits(double x) {
  return FromBits(BitsOf(x) & ~((std::uint64_t{1} << 27) - 1));
}

struct NearestMultiple {
  double value;
  std::int64_t count;
};
// Rounds x to a multiple of 2^-places, ties to even, by an addition that rounds there. |x| must be below 2^(51 -
// places).
template<int places>
inline NearestMultiple RoundToMultiple(double x) {
  constexpr double kShift =
      6755399441055744.0 / static_cast<double>(std::int64_t{1} << places);  // 1.5 * 2^(52 - places)
  const double shifted = x + kShift;
  return {shifted - kShift, static_cast<std::int64_t>(BitsOf(shifted) - BitsOf(kShift))};
}

// Returns (x.high + x.low) 2^exponent for a positive x.high and an exponent from -1080 to 0. Below the normal numbers
// the sum is rounded once, by the addition of a power of two whose last digit is the smallest double.
inline double RoundOnceBelow(const DoubleDouble& x, int exponent) {
  const double shift = PowerOfTwoAt(52 - 1074 - exponent);
  double sum = x.high + x.low;
  if (sum < shift) {
    const DoubleDouble shifted = FastTwoSum(shift, x.high);
    sum = (shifted.high + (shifted.low + x.low)) - shift;
  }
  return sum * 0x1p-500 * PowerOfTwoAt(exponent + 500);
}

// Returns the result outside the domain, and for a NaN.
inline double Undefined(double x) {
  return x + kQuietNaN;
}

}  // namespace nu::engine::base

#endif
