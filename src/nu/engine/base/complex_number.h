#ifndef NU_ENGINE_BASE_COMPLEX_NUMBER_H
#define NU_ENGINE_BASE_COMPLEX_NUMBER_H

#include <cmath>

#include "nu/engine/base/simd.h"

namespace nu::engine::base {

// A complex number in the loops of the root finder. Products are the plain ones, which overflow where their parts do.
struct Number {
  double re;
  double im;
};

NU_ALWAYS_INLINE Number operator*(Number a, Number b) {
  return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}
NU_ALWAYS_INLINE Number operator+(Number a, Number b) {
  return {a.re + b.re, a.im + b.im};
}
NU_ALWAYS_INLINE Number operator-(Number a, Number b) {
  return {a.re - b.re, a.im - b.im};
}
NU_ALWAYS_INLINE Number operator*(double s, Number a) {
  return {s * a.re, s * a.im};
}
NU_ALWAYS_INLINE double Squares(Number a) {
  return a.re * a.re + a.im * a.im;
}
NU_ALWAYS_INLINE double Size(Number a) {
  return std::fabs(a.re) + std::fabs(a.im);
}

// 1 / a by Smith's quotient, for numbers whose squares leave the range.
inline Number Reciprocal(Number a) {
  if (a.im == 0.0) return {1.0 / a.re, 0.0};
  if (std::fabs(a.re) >= std::fabs(a.im)) {
    const double ratio = a.im / a.re;
    const double den = a.re + ratio * a.im;
    return {1.0 / den, -ratio / den};
  }
  const double ratio = a.re / a.im;
  const double den = a.im + ratio * a.re;
  return {ratio / den, -1.0 / den};
}

}  // namespace nu::engine::base

#endif
