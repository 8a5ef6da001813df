#ifndef NU_ENGINE_BASE_COMPLEX_NUMBER_H
#define NU_ENGINE_BASE_COMPLEX_NUMBER_H

#include <algorithm>
#include <cmath>

#include "nu/engine/base/simd.h"

namespace nu::engine::base {

// A complex number on plain doubles. Products are formed term by term and overflow where their terms do.
struct Complex {
  double re;
  double im;
};

NU_ALWAYS_INLINE Complex operator*(Complex a, Complex b) {
  return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}
NU_ALWAYS_INLINE Complex operator+(Complex a, Complex b) {
  return {a.re + b.re, a.im + b.im};
}
NU_ALWAYS_INLINE Complex operator-(Complex a, Complex b) {
  return {a.re - b.re, a.im - b.im};
}
NU_ALWAYS_INLINE Complex operator*(double s, Complex a) {
  return {s * a.re, s * a.im};
}
NU_ALWAYS_INLINE Complex Conjugate(Complex a) {
  return {a.re, -a.im};
}
// |a|^2, |re| + |im| and max(|re|, |im|).
NU_ALWAYS_INLINE double Squares(Complex a) {
  return a.re * a.re + a.im * a.im;
}
NU_ALWAYS_INLINE double Size(Complex a) {
  return std::fabs(a.re) + std::fabs(a.im);
}

NU_ALWAYS_INLINE double LargerPart(Complex a) {
  return std::max(std::fabs(a.re), std::fabs(a.im));
}

// A divisor whose square is not in the range of the doubles is scaled by its larger part.
inline Complex operator/(Complex a, Complex b) {
  const double scale = LargerPart(b);
  const double re = b.re / scale;
  const double im = b.im / scale;
  const double length = (re * re + im * im) * scale;
  return {(a.re * re + a.im * im) / length, (a.im * re - a.re * im) / length};
}

// 1 / a for numbers whose squares leave the range (R. L. Smith, Algorithm 116: Complex division, CACM 5, 1962).
inline Complex Reciprocal(Complex a) {
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

// The root with a real part that is not negative.
inline Complex SquareRoot(Complex a) {
  const double larger = std::sqrt(0.5 * (std::sqrt(Squares(a)) + std::fabs(a.re)));
  if (larger == 0.0) return {0.0, 0.0};
  const double smaller = 0.5 * a.im / larger;
  return a.re >= 0.0 ? Complex{larger, smaller} : Complex{std::fabs(smaller), std::copysign(larger, a.im)};
}

}  // namespace nu::engine::base

#endif
