#ifndef NU_NUMERICS_INTERNAL_ERROR_FREE_H
#define NU_NUMERICS_INTERNAL_ERROR_FREE_H

// Sums and products with their rounding errors (T. J. Dekker, A floating-point technique for extending the available
// precision, Numerische Mathematik 18, 1971). They do without a fused multiply-add, which is a call of the library on
// machines of which no more is known than that they have 64 bits.
namespace nu::internal {

// value + error is the exact result.
struct Rounded {
  double value;
  double error;
};

inline Rounded TwoSum(double a, double b) {
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

inline Rounded TwoProduct(double a, Halves halvesOfA, double b) {
  const double product = a * b;
  const Halves y(b);
  const Halves& x = halvesOfA;
  return {product, x.low * y.low - (((product - x.high * y.high) - x.low * y.high) - x.high * y.low)};
}

inline Rounded TwoProduct(double a, double b) {
  return TwoProduct(a, Halves(a), b);
}

}  // namespace nu::internal

#endif
