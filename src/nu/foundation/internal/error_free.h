#ifndef NU_FOUNDATION_INTERNAL_ERROR_FREE_H
#define NU_FOUNDATION_INTERNAL_ERROR_FREE_H

#include <cmath>

// Sums and products with their rounding errors (T. J. Dekker, A floating-point technique for extending the available
// precision, Numerische Mathematik 18, 1971). They do without a fused multiply-add, which is a call of the library on
// machines of which no more is known than that they have 64 bits.
namespace nu::internal {

// value + error is the exact result.
struct ValueAndError {
  double value;
  double error;
};

inline ValueAndError TwoSum(double a, double b) {
  const double sum = a + b;
  const double share = sum - a;
  return {sum, (a - (sum - share)) + (b - share)};
}

// The upper and the lower half of the digits. No overflow below 2^996.
struct Halves {
  explicit Halves(double x) {
    constexpr double kSplitter = 134217729.0;  // 2^27 + 1
    const double spread = kSplitter * x;
    high = spread - (spread - x);
    low = x - high;
  }
  double high;
  double low;
};

inline ValueAndError TwoProduct(double a, Halves halvesOfA, double b) {
  const double product = a * b;
  const Halves y(b);
  const Halves& x = halvesOfA;
  return {product, x.low * y.low - (((product - x.high * y.high) - x.low * y.high) - x.high * y.low)};
}

inline ValueAndError TwoProduct(double a, double b) {
  return TwoProduct(a, Halves(a), b);
}

// What rounding takes from a * b; exact while it neither overflows nor falls below the normal numbers.
inline double ProductError(double a, double b) {
  return std::fma(a, b, -(a * b));
}

}  // namespace nu::internal

#endif
