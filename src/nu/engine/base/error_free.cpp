#include "nu/engine/base/error_free.h"

namespace nu::engine::base {
namespace {

// Splits x into the upper and the lower half of its digits (G. W. Veltkamp; Dekker).
DoubleDouble Split(double x) {
  constexpr double kSplitter = 0x1p27 + 1.0;
  const double spread = kSplitter * x;
  const double high = spread - (spread - x);
  return {high, x - high};
}

double ErrorInRange(double a, double b, double product) {
  const DoubleDouble x = Split(a);
  const DoubleDouble y = Split(b);
  return (((x.high * y.high - product) + x.high * y.low) + x.low * y.high) + x.low * y.low;
}

// Scales in two steps, so that each factor is a double.
double TimesPowerOfTwo(double x, int exponent) {
  const int half = exponent / 2;
  return x * std::ldexp(1.0, half) * std::ldexp(1.0, exponent - half);
}

// Serves factors whose halves, or whose error, may leave the range: with both scaled to between 1/2 and 1 nothing does.
double ErrorByScaling(double a, double b, double product) {
  int shiftOfA, shiftOfB;
  const double x = std::frexp(a, &shiftOfA);
  const double y = std::frexp(b, &shiftOfB);
  const int shift = shiftOfA + shiftOfB;
  // Below the normal numbers rounding takes more from the product than from x * y: the difference of the two.
  const double taken = x * y - TimesPowerOfTwo(product, -shift);
  return TimesPowerOfTwo(taken + ErrorInRange(x, y, x * y), shift);
}

#if defined(__x86_64__) && defined(__GNUC__)
bool FusesProducts() {
  __builtin_cpu_init();
  if (!__builtin_cpu_supports("fma")) return false;
  const double factors[] = {1.0 + 0x1p-52, 1.0 / 3.0, -0x1.921fb54442d18p+1, 0x1p-500 + 0x1p-552,
                            0x1.fffffffffffffp+480};
  for (const double a : factors) {
    for (const double b : factors) {
      if (FusedProductError(a, b) != ProductErrorByHalves(a, b)) return false;
    }
  }
  return true;
}
#endif

}  // namespace

#if defined(__x86_64__) && defined(__GNUC__)
const bool hasFusedProducts = FusesProducts();
#endif

double ProductErrorByHalves(double a, double b) {
  // No sum or product of halves leaves the normal numbers, not even where smaller ones are flushed to zero.
  constexpr double kLeastProduct = 0x1p-916;
  constexpr double kLargestFactor = 0x1p510;
  const double product = a * b;
  if (std::fabs(product) >= kLeastProduct && std::fabs(a) + std::fabs(b) <= kLargestFactor) {
    return ErrorInRange(a, b, product);
  }
  if (a == 0.0 || b == 0.0) return product - product;
  if (!std::isfinite(product)) return std::isfinite(a) && std::isfinite(b) ? -product : product - product;
  // The error is less than half of the smallest number.
  if (product == 0.0) return product;
  return ErrorByScaling(a, b, product);
}

}  // namespace nu::engine::base
