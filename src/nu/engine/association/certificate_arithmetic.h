#ifndef NU_ENGINE_ASSOCIATION_CERTIFICATE_ARITHMETIC_H
#define NU_ENGINE_ASSOCIATION_CERTIFICATE_ARITHMETIC_H

#include <algorithm>
#include <cfloat>

#include "nu/engine/base/double_double.h"
#include "nu/engine/base/floating_point.h"

// The two kinds of numbers that certificates are made with, and functions of several unknowns over either kind.
namespace nu::engine::association {

// ---- Double-doubles, for what is true at the feature itself ----

inline DoubleDouble Constant(DoubleDouble a, DoubleDouble) {
  return a;
}
inline DoubleDouble Root(DoubleDouble a) {
  return a.high > 0.0 ? SquareRoot(a) : DoubleDouble{};
}
inline DoubleDouble Reciprocal(DoubleDouble a) {
  return DoubleDouble{1.0} / a;
}
inline DoubleDouble SignOf(DoubleDouble a) {
  return {a.high < 0.0 ? -1.0 : 1.0};
}

// ---- Intervals, for what is true all around it ----

// All numbers from low to high. Every operation contains all its results, rounding included; what has no bound is the
// whole line (R. E. Moore, Interval Analysis, 1966). Of numbers about 1, products below 1e-300 may count as zero.
struct Interval {
  double low = 0.0;
  double high = 0.0;
};

inline Interval WholeLine() {
  return {-kInfinity, kInfinity};
}
inline bool IsBounded(Interval a) {
  return a.low >= -DBL_MAX && a.high <= DBL_MAX;
}
// Bounds that were rounded to nearest, moved outwards by more than that can be.
inline Interval Outward(double low, double high) {
  const auto margin = [](double a) { return std::fabs(a) * DBL_EPSILON; };
  const Interval moved{low - margin(low), high + margin(high)};
  return IsBounded(moved) ? moved : WholeLine();
}
inline Interval Around(DoubleDouble a) {
  return Outward(a.high, a.high);
}
inline double Magnitude(Interval a) {
  return std::max(-a.low, a.high);
}

inline Interval operator-(Interval a) {
  return {-a.high, -a.low};
}
inline Interval operator+(Interval a, Interval b) {
  return Outward(a.low + b.low, a.high + b.high);
}
inline Interval operator-(Interval a, Interval b) {
  return a + -b;
}
inline Interval operator*(Interval a, Interval b) {
  // Not infinity times zero, which is no number.
  if (!IsBounded(a) || !IsBounded(b)) return WholeLine();
  const double corners[] = {a.low * b.low, a.low * b.high, a.high * b.low, a.high * b.high};
  return Outward(*std::min_element(corners, corners + 4), *std::max_element(corners, corners + 4));
}
inline Interval Constant(DoubleDouble a, Interval) {
  return Around(a);
}
inline Interval Root(Interval a) {
  if (!(a.low > 0.0) || !IsBounded(a)) return WholeLine();
  return Outward(std::sqrt(a.low), std::sqrt(a.high));
}
inline Interval Reciprocal(Interval a) {
  if (!(a.low > 0.0 || a.high < 0.0) || !IsBounded(a)) return WholeLine();
  return Outward(1.0 / a.high, 1.0 / a.low);
}
// Where the sign may change, products with it have no second derivative.
inline Interval SignOf(Interval a) {
  if (a.low > 0.0) return {1.0, 1.0};
  return a.high < 0.0 ? Interval{-1.0, -1.0} : WholeLine();
}

// ---- Functions of several unknowns ----

// A value with its first and second derivatives, which follow from the rules of sums, products and functions (L. B.
// Rall, Automatic Differentiation, 1981). Over intervals all of them are bounds for a whole box of unknowns.
template<class Number>
struct Jet {
  static constexpr int kMost = 7;

  explicit Jet(int unknowns = 0) : count(unknowns) {}

  int count;  // of unknowns
  Number value{};
  Number first[kMost]{};
  Number second[kMost][kMost]{};  // [i][j] for j <= i
};

template<class Number>
Jet<Number> Constant(DoubleDouble a, const Jet<Number>& like) {
  Jet<Number> c(like.count);
  c.value = Constant(a, Number{});
  return c;
}

template<class Number, class Rule>
Jet<Number> Termwise(const Jet<Number>& a, const Jet<Number>& b, Rule rule) {
  Jet<Number> c(a.count);
  c.value = rule(a.value, b.value);
  for (int i = 0; i < a.count; ++i) {
    c.first[i] = rule(a.first[i], b.first[i]);
    for (int j = 0; j <= i; ++j) c.second[i][j] = rule(a.second[i][j], b.second[i][j]);
  }
  return c;
}
template<class Number>
Jet<Number> operator+(const Jet<Number>& a, const Jet<Number>& b) {
  return Termwise(a, b, [](Number x, Number y) { return x + y; });
}
template<class Number>
Jet<Number> operator-(const Jet<Number>& a, const Jet<Number>& b) {
  return Termwise(a, b, [](Number x, Number y) { return x - y; });
}
template<class Number>
Jet<Number> operator*(const Jet<Number>& a, const Jet<Number>& b) {
  Jet<Number> c(a.count);
  c.value = a.value * b.value;
  for (int i = 0; i < a.count; ++i) {
    c.first[i] = a.first[i] * b.value + a.value * b.first[i];
    for (int j = 0; j <= i; ++j) {
      c.second[i][j] =
          a.second[i][j] * b.value + a.value * b.second[i][j] + a.first[i] * b.first[j] + a.first[j] * b.first[i];
    }
  }
  return c;
}
// f(a) for a function with the value f and the derivatives f1 and f2 at a.
template<class Number>
Jet<Number> Chain(const Jet<Number>& a, Number f, Number f1, Number f2) {
  Jet<Number> c(a.count);
  c.value = f;
  for (int i = 0; i < a.count; ++i) {
    c.first[i] = f1 * a.first[i];
    for (int j = 0; j <= i; ++j) c.second[i][j] = f1 * a.second[i][j] + f2 * (a.first[i] * a.first[j]);
  }
  return c;
}
template<class Number>
Jet<Number> Root(const Jet<Number>& a) {
  const Number half = Constant({0.5}, Number{});
  const Number f = Root(a.value);
  const Number f1 = half * Reciprocal(f);
  return Chain(a, f, f1, -(half * f1 * Reciprocal(a.value)));
}
template<class Number>
Jet<Number> Reciprocal(const Jet<Number>& a) {
  const Number f = Reciprocal(a.value);
  return Chain(a, f, -(f * f), Constant({2.0}, Number{}) * f * f * f);
}
// The factor that makes a product positive: a constant where the sign does not change.
template<class Number>
Jet<Number> SignOf(const Jet<Number>& a) {
  Jet<Number> c(a.count);
  c.value = SignOf(a.value);
  return c;
}

}  // namespace nu::engine::association

#endif
