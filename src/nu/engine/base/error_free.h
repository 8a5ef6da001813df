#ifndef NU_ENGINE_BASE_ERROR_FREE_H
#define NU_ENGINE_BASE_ERROR_FREE_H

#include <cfloat>
#include <cmath>

#include "nu/engine/rooms.h"

#ifdef __FAST_MATH__
#error "Exact arithmetic needs the rounding of IEEE 754: compile without -ffast-math"
#endif

// Sums and products with their rounding errors (T. J. Dekker, A floating-point technique for extending the available
// precision, Numerische Mathematik 18, 1971; D. E. Knuth, The Art of Computer Programming 2). The function fma of the C
// library is not used: some of them round the product first.
namespace nu::engine::base {

static_assert(FLT_EVAL_METHOD == 0, "Every operation rounds to double: compile for SSE2, not for x87");

// The unevaluated sum of two doubles, of which the second is at most half a unit in the last place of the first.
struct DoubleDouble {
  double high = 0.0;
  double low = 0.0;
};

// a + b, exact while it does not overflow.
inline DoubleDouble TwoSum(double a, double b) {
  const double sum = a + b;
  const double share = sum - a;
  return {sum, (a - (sum - share)) + (b - share)};
}
// a - b in the same way.
inline DoubleDouble Difference(double a, double b) {
  return TwoSum(a, -b);
}
// a + b for an |a| that is not below |b|.
inline DoubleDouble FastTwoSum(double a, double b) {
  const double sum = a + b;
  return {sum, b - (sum - a)};
}

// By halves of the digits: the bits of a fused multiply-add for all numbers.
double ProductErrorByHalves(double a, double b);

#if defined(__x86_64__) && defined(__GNUC__)
// Whether the processor has the instruction and the instruction fuses, found when the library is loaded; false before.
extern const bool hasFusedProducts;

// Only where `hasFusedProducts`.
inline double FusedProductError(double a, double b) {
  double result = a;
  __asm__("vfmsub213sd %2, %1, %0" : "+x"(result) : "x"(b), "x"(a * b));
  return result;
}
#endif

// a * b - fl(a * b), rounded once: what rounding takes from the product. Exact for products of at least 2^-968; where
// the product overflows, infinite with the other sign. The instruction and the halves give the same bits.
inline double ProductError(double a, double b) {
#if defined(__aarch64__) && defined(__GNUC__)
  return __builtin_fma(a, b, -(a * b));
#else
#if defined(__x86_64__) && defined(__GNUC__)
  if (hasFusedProducts) return FusedProductError(a, b);
#endif
  return ProductErrorByHalves(a, b);
#endif
}

// a * b, exact from 2^-968 on while it does not overflow.
inline DoubleDouble TwoProduct(double a, double b) {
  return {a * b, ProductError(a, b)};
}

// a b - c d to about one rounding, however much cancels (M. Cornea, J. Harrison, P. T. P. Tang, Scientific Computing on
// Itanium-based Systems, 2002, with the error of the difference added).
inline double DifferenceOfProducts(double a, double b, double c, double d) {
  const DoubleDouble first = TwoProduct(a, b);
  const DoubleDouble second = TwoProduct(c, d);
  const DoubleDouble difference = TwoSum(first.high, -second.high);
  if (!std::isfinite(difference.high)) return difference.high;
  return difference.high + (difference.low + (first.low - second.low));
}

}  // namespace nu::engine::base

#endif
