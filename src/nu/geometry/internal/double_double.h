#ifndef NU_GEOMETRY_INTERNAL_DOUBLE_DOUBLE_H
#define NU_GEOMETRY_INTERNAL_DOUBLE_DOUBLE_H

#include <cmath>

#include "nu/foundation/internal/error_free.h"

namespace nu::internal {

// A number of about 106 bits: the unevaluated sum of two doubles, of which the second is at most half a unit in the
// last place of the first. Operations keep about 100 bits while nothing overflows or falls below the normal numbers
// (T. J. Dekker, A floating-point technique for extending the available precision, Numerische Mathematik 18, 1971).
struct DoubleDouble {
  double high = 0.0;
  double low = 0.0;
};

// Exact.
inline DoubleDouble SumOf(double a, double b) {
  const double sum = a + b;
  const double share = sum - a;
  return {sum, (a - (sum - share)) + (b - share)};
}
// Exact; |a| is not below |b|.
inline DoubleDouble OrderedSumOf(double a, double b) {
  const double sum = a + b;
  return {sum, b - (sum - a)};
}
// Exact.
inline DoubleDouble ProductOf(double a, double b) {
  return {a * b, ProductError(a, b)};
}

inline DoubleDouble operator-(DoubleDouble a) {
  return {-a.high, -a.low};
}
inline DoubleDouble operator+(DoubleDouble a, DoubleDouble b) {
  const DoubleDouble high = SumOf(a.high, b.high);
  const DoubleDouble low = SumOf(a.low, b.low);
  const DoubleDouble sum = OrderedSumOf(high.high, high.low + low.high);
  return OrderedSumOf(sum.high, sum.low + low.low);
}
inline DoubleDouble operator-(DoubleDouble a, DoubleDouble b) {
  return a + -b;
}
inline DoubleDouble operator*(DoubleDouble a, DoubleDouble b) {
  const DoubleDouble product = ProductOf(a.high, b.high);
  return OrderedSumOf(product.high, product.low + (a.high * b.low + a.low * b.high));
}
// The divisor is not zero.
inline DoubleDouble operator/(DoubleDouble a, DoubleDouble b) {
  const double first = a.high / b.high;
  const DoubleDouble rest = a - DoubleDouble{first} * b;
  const double second = rest.high / b.high;
  const DoubleDouble rest2 = rest - DoubleDouble{second} * b;
  return OrderedSumOf(first, second) + DoubleDouble{rest2.high / b.high};
}
inline bool operator<(DoubleDouble a, DoubleDouble b) {
  return a.high < b.high || (a.high == b.high && a.low < b.low);
}

}  // namespace nu::internal

#endif
