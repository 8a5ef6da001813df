#ifndef NU_ENGINE_ASSOCIATION_FIRST_ORDER_H
#define NU_ENGINE_ASSOCIATION_FIRST_ORDER_H

#include <algorithm>
#include <cmath>

#include "nu/engine/association/enclosure_operators.h"
#include "nu/engine/base/elementary.h"
#include "nu/engine/base/floating_point.h"

// First-order enclosures of functions over a box: Taylor models of order one (K. Makino, M. Berz, Taylor models and
// other validated functional inclusion methods, International Journal of Pure and Applied Mathematics 4, 2003).
//
// For all x in a box with the middle m and the half sides h, and d_k = (x_k - m_k) / h_k, so |d_k| <= 1,
//
//   value + sum of slope_k d_k + low  <=  f(x)  <=  value + sum of slope_k d_k + high.
//
// As the box shrinks, low and high shrink with the square of its size, never more slowly. Roundings are not enclosed;
// who uses the bounds has to allow for some units in the last place of the largest number in them.
namespace nu::engine::association {

template<int N>
struct FirstOrder : EnclosureOperators<FirstOrder<N>> {
  double value = 0.0;
  double slope[N] = {};
  double low = 0.0;
  double high = 0.0;

  FirstOrder() = default;
  FirstOrder(double constant) : value(constant) {}  // NOLINT(google-explicit-constructor): numbers mix with functions

  // How far the linear part reaches from the value, and all of it from the linear part.
  double Reach() const {
    double sum = 0.0;
    for (const double s : slope) sum += std::fabs(s);
    return sum;
  }
  double Error() const { return std::max(-low, high); }
  double Least() const { return value - Reach() + low; }
  double Greatest() const { return value + Reach() + high; }

  FirstOrder& operator+=(const FirstOrder& b) {
    value += b.value;
    for (int k = 0; k < N; ++k) slope[k] += b.slope[k];
    low += b.low;
    high += b.high;
    return *this;
  }
  FirstOrder& operator*=(double factor) {
    value *= factor;
    for (double& s : slope) s *= factor;
    low *= factor;
    high *= factor;
    if (factor < 0.0) std::swap(low, high);
    return *this;
  }

  friend FirstOrder operator*(const FirstOrder& a, const FirstOrder& b) {
    FirstOrder product;
    product.value = a.value * b.value;
    for (int k = 0; k < N; ++k) product.slope[k] = a.value * b.slope[k] + b.value * a.slope[k];
    const double reachA = a.Reach();
    const double reachB = b.Reach();
    const double second = reachA * reachB + reachA * b.Error() + a.Error() * reachB + a.Error() * b.Error();
    product.high = second + std::max(a.value * b.low, a.value * b.high) + std::max(b.value * a.low, b.value * a.high);
    product.low = -second + std::min(a.value * b.low, a.value * b.high) + std::min(b.value * a.low, b.value * a.high);
    return product;
  }
};

// The length of (x, y, z). It is convex: along the direction n of its middle it is not below the linear function n . v;
// with l the largest part of v across n, and s the least n . v, it is above that by no more than sqrt(s^2 + l^2) - s.
template<int N>
FirstOrder<N> Length(const FirstOrder<N>& x, const FirstOrder<N>& y, const FirstOrder<N>& z) {
  const FirstOrder<N>* v[] = {&x, &y, &z};
  FirstOrder<N> length;
  length.value = std::sqrt(x.value * x.value + y.value * y.value + z.value * z.value);
  const double inverse = length.value > 0.0 ? 1.0 / length.value : 0.0;
  double n[3];
  for (int i = 0; i < 3; ++i) n[i] = inverse * v[i]->value;
  for (int k = 0; k < N; ++k) length.slope[k] = n[0] * x.slope[k] + n[1] * y.slope[k] + n[2] * z.slope[k];
  double across = 0.0;
  double error = 0.0;
  for (int i = 0; i < 3; ++i) {
    double most = 0.0;
    for (int k = 0; k < N; ++k) most += std::fabs(v[i]->slope[k] - n[i] * length.slope[k]);
    across += most * most;
    error += v[i]->Error() * v[i]->Error();
    length.low += std::min(n[i] * v[i]->low, n[i] * v[i]->high);
    length.high += std::max(n[i] * v[i]->low, n[i] * v[i]->high);
  }
  const double least = length.Least();
  const double widest = std::sqrt(across) + std::sqrt(error);
  length.high += std::sqrt(least * least + widest * widest) - least;
  return length;
}

// 1 / x for x that stay positive: convex; else NaN, which no bound survives. With d the change of x it is
// 1 / v - d / v^2 + d^2 / (v^2 x).
template<int N>
FirstOrder<N> Reciprocal(const FirstOrder<N>& x) {
  const double inverse = 1.0 / x.value;
  FirstOrder<N> result = (-inverse * inverse) * x;
  result.value = inverse;
  const double change = (x.Reach() + x.Error()) * inverse;
  const double least = x.Least();
  result.high += change * change / (least > 0.0 ? least : kQuietNaN);
  return result;
}

// f with the values given in the middle of x, and |f''| <= 1.
template<int N>
FirstOrder<N> WithDerivative(const FirstOrder<N>& x, double value, double derivative) {
  FirstOrder<N> result = derivative * x;
  result.value = value;
  const double change = x.Reach() + x.Error();
  result.low -= 0.5 * change * change;
  result.high += 0.5 * change * change;
  return result;
}

template<int N>
FirstOrder<N> Sine(const FirstOrder<N>& x) {
  return WithDerivative(x, Sin(x.value), Cos(x.value));
}
template<int N>
FirstOrder<N> Cosine(const FirstOrder<N>& x) {
  return WithDerivative(x, Cos(x.value), -Sin(x.value));
}

// Whether a length is nowhere in the box below a number.
template<int N>
bool IsNowhereBelow(const FirstOrder<N>& length, double least) {
  return length.Least() >= least;
}

// The same functions of plain numbers. What is written for enclosures alone is not for these.
inline bool IsNowhereBelow(double, double) {
  return false;
}
inline double Length(double x, double y, double z) {
  return std::sqrt(x * x + y * y + z * z);
}
inline double Reciprocal(double x) {
  return 1.0 / x;
}
inline double Magnitude(double x) {
  return std::fabs(x);
}
inline double Sine(double x) {
  return Sin(x);
}
inline double Cosine(double x) {
  return Cos(x);
}

}  // namespace nu::engine::association

#endif
