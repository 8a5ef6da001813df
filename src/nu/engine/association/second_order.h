#ifndef NU_ENGINE_ASSOCIATION_SECOND_ORDER_H
#define NU_ENGINE_ASSOCIATION_SECOND_ORDER_H

#include <algorithm>
#include <cmath>
#include <utility>

#include "nu/engine/association/enclosure_operators.h"
#include "nu/engine/base/elementary.h"
#include "nu/engine/base/floating_point.h"

// Second-order enclosures of functions over a box: Taylor models of order two, see first_order.h. With the same d_k,
//
//   value + sum of slope_k d_k + sum over k <= l of bend_kl d_k d_l + low  <=  f(x)  <=  the same + high,
//
// and low and high shrink with the third power of the size of the box. They cost more than those of first order, but a
// sum of several functions keeps what their second-order parts have in common, and with opposite signs it cancels.
namespace nu::engine::association {

template<int N>
struct SecondOrder : EnclosureOperators<SecondOrder<N>> {
  double value = 0.0;
  double slope[N] = {};
  double bend[N][N] = {};  // [k][l] for k <= l
  double low = 0.0;
  double high = 0.0;

  SecondOrder() = default;
  SecondOrder(double constant) : value(constant) {}  // NOLINT(google-explicit-constructor): numbers mix with functions

  // How far the linear part reaches from the value, the quadratic part from 0, and the function from both.
  double LinearReach() const {
    double sum = 0.0;
    for (const double s : slope) sum += std::fabs(s);
    return sum;
  }
  double QuadraticReach() const {
    double sum = 0.0;
    for (int k = 0; k < N; ++k)
      for (int l = k; l < N; ++l) sum += std::fabs(bend[k][l]);
    return sum;
  }
  double Error() const { return std::max(-low, high); }
  double Change() const { return LinearReach() + QuadraticReach() + Error(); }
  double Least() const {
    double least = value + low;
    for (int k = 0; k < N; ++k) {
      least += LeastAlong(slope[k], bend[k][k]);
      for (int l = k + 1; l < N; ++l) least -= std::fabs(bend[k][l]);
    }
    return least;
  }

  void AddProductOfSlopes(const SecondOrder& a, const SecondOrder& b) {
    for (int k = 0; k < N; ++k) {
      bend[k][k] += a.slope[k] * b.slope[k];
      for (int l = k + 1; l < N; ++l) bend[k][l] += a.slope[k] * b.slope[l] + a.slope[l] * b.slope[k];
    }
  }

  SecondOrder& operator+=(const SecondOrder& b) {
    value += b.value;
    for (int k = 0; k < N; ++k) {
      slope[k] += b.slope[k];
      for (int l = k; l < N; ++l) bend[k][l] += b.bend[k][l];
    }
    low += b.low;
    high += b.high;
    return *this;
  }
  SecondOrder& operator*=(double factor) {
    value *= factor;
    for (int k = 0; k < N; ++k) {
      slope[k] *= factor;
      for (int l = k; l < N; ++l) bend[k][l] *= factor;
    }
    low *= factor;
    high *= factor;
    if (factor < 0.0) std::swap(low, high);
    return *this;
  }

  friend SecondOrder operator*(const SecondOrder& a, const SecondOrder& b) {
    SecondOrder product = a.value * b;
    product.value = 0.0;
    product += b.value * a;
    product.AddProductOfSlopes(a, b);
    const double changeA = a.Change();
    const double changeB = b.Change();
    const double third = std::max(0.0, changeA * changeB - a.LinearReach() * b.LinearReach());
    product.low -= third;
    product.high += third;
    return product;
  }

 private:
  // The least of s d + b d^2 for |d| <= 1.
  static double LeastAlong(double s, double b) {
    const double size = std::fabs(s);
    return b > 0.0 && size < 2.0 * b ? -0.25 * s * s / b : b - size;
  }
};

// f with the value, the derivative and half the second derivative in the middle of x, and a remainder of up to `third`.
template<int N>
SecondOrder<N> WithDerivatives(const SecondOrder<N>& x, double value, double first, double halfSecond, double third) {
  SecondOrder<N> change = x;
  change.value = 0.0;
  SecondOrder<N> result = first * change + halfSecond * (change * change);
  result.value = value;
  result.low -= third;
  result.high += third;
  return result;
}

// The length of (x, y, z). With s its value in the middle, n the direction there, w the part along n and e the part
// across, it is w + e^2 / (2 w) up to e^4 / (8 w^3); and e^2 is, up to third order, that of the linear parts t.
template<int N>
SecondOrder<N> Length(const SecondOrder<N>& x, const SecondOrder<N>& y, const SecondOrder<N>& z) {
  const SecondOrder<N>* v[] = {&x, &y, &z};
  const double s = std::sqrt(x.value * x.value + y.value * y.value + z.value * z.value);
  const double inverse = s > 0.0 ? 1.0 / s : 0.0;
  const double n[] = {inverse * x.value, inverse * y.value, inverse * z.value};
  SecondOrder<N> length = n[0] * x + n[1] * y + n[2] * z;
  const double along = length.Change();
  const double least = s - along;
  double across = 0.0;
  double beyond = 0.0;
  SecondOrder<N> sum = length;
  sum.value = s;
  for (int i = 0; i < 3; ++i) {
    SecondOrder<N> t;
    for (int k = 0; k < N; ++k) t.slope[k] = v[i]->slope[k] - n[i] * length.slope[k];
    const double reach = t.LinearReach();
    const double rest = v[i]->QuadraticReach() + v[i]->Error();
    across += reach * reach;
    beyond += rest * rest;
    for (double& slope : t.slope) slope *= std::sqrt(0.5 * inverse);
    sum.AddProductOfSlopes(t, t);
  }
  const double mixed = 2.0 * std::sqrt(across * beyond) + beyond;
  // w may be off s by `along`; where it may be 0, NaN is no bound.
  const double fourth = (across + mixed) * (across + mixed) / (8.0 * least * least * least);
  sum.low -= 0.5 * inverse * across * along / (s + along) + 0.5 * mixed / least + fourth;
  sum.high += 0.5 * inverse * across * along / least + 0.5 * mixed / least;
  if (!(least > 0.0)) sum.low = sum.high = kQuietNaN;
  return sum;
}

// 1 / x for x that stay positive, else NaN. With d the change of x it is 1 / v - d / v^2 + d^2 / v^3 - d^3 / (v^3 x).
template<int N>
SecondOrder<N> Reciprocal(const SecondOrder<N>& x) {
  const double inverse = 1.0 / x.value;
  const double change = x.Change();
  const double least = x.value - change;
  const double part = change * inverse;
  const double third = part * part * part / (least > 0.0 ? least : kQuietNaN);
  return WithDerivatives(x, inverse, -inverse * inverse, inverse * inverse * inverse, third);
}

template<int N>
SecondOrder<N> Sine(const SecondOrder<N>& x) {
  const double change = x.Change();
  return WithDerivatives(x, Sin(x.value), Cos(x.value), -0.5 * Sin(x.value), change * change * change / 6.0);
}
template<int N>
SecondOrder<N> Cosine(const SecondOrder<N>& x) {
  const double change = x.Change();
  return WithDerivatives(x, Cos(x.value), -Sin(x.value), -0.5 * Cos(x.value), change * change * change / 6.0);
}

// Whether a length is nowhere in the box below a number.
template<int N>
bool IsNowhereBelow(const SecondOrder<N>& length, double least) {
  return length.value - length.Change() >= least;
}

}  // namespace nu::engine::association

#endif
