#ifndef NU_ENGINE_BASE_DOUBLE_DOUBLE_H
#define NU_ENGINE_BASE_DOUBLE_DOUBLE_H

#include "nu/engine/base/error_free.h"

namespace nu::engine::base {

// Numbers of about 106 bits. Operations keep about 100 bits while nothing overflows or falls below the normal numbers
// (T. J. Dekker, A floating-point technique for extending the available precision, Numerische Mathematik 18, 1971).

inline DoubleDouble operator-(DoubleDouble a) {
  return {-a.high, -a.low};
}
inline DoubleDouble operator+(DoubleDouble a, DoubleDouble b) {
  const DoubleDouble high = TwoSum(a.high, b.high);
  const DoubleDouble low = TwoSum(a.low, b.low);
  const DoubleDouble sum = FastTwoSum(high.high, high.low + low.high);
  return FastTwoSum(sum.high, sum.low + low.low);
}
inline DoubleDouble operator-(DoubleDouble a, DoubleDouble b) {
  return a + -b;
}
inline DoubleDouble operator*(DoubleDouble a, DoubleDouble b) {
  const DoubleDouble product = TwoProduct(a.high, b.high);
  return FastTwoSum(product.high, product.low + (a.high * b.low + a.low * b.high));
}
// The divisor must not be zero.
inline DoubleDouble operator/(DoubleDouble a, DoubleDouble b) {
  const double first = a.high / b.high;
  const DoubleDouble rest = a - DoubleDouble{first} * b;
  const double second = rest.high / b.high;
  const DoubleDouble rest2 = rest - DoubleDouble{second} * b;
  return FastTwoSum(first, second) + DoubleDouble{rest2.high / b.high};
}
// The square root of a positive number.
inline DoubleDouble SquareRoot(DoubleDouble a) {
  const double root = std::sqrt(a.high);
  return DoubleDouble{root} + DoubleDouble{(a - TwoProduct(root, root)).high / (2.0 * root)};
}
inline bool operator<(DoubleDouble a, DoubleDouble b) {
  return a.high < b.high || (a.high == b.high && a.low < b.low);
}

}  // namespace nu::engine::base

#endif
