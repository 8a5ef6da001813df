#ifndef NU_ENGINE_ROOTS_TRIG_POLYNOMIAL_H
#define NU_ENGINE_ROOTS_TRIG_POLYNOMIAL_H

#include <algorithm>
#include <cmath>
#include <functional>
#include <iterator>

#include "nu/engine/roots/trig_roots.h"
#include "nu/engine/roots/trig_sum.h"

namespace nu::engine::roots {

// The sum of cosines[k] cos ku + sines[k] sin ku for k = 0..degree, which nowhere exceeds kMostDegree.
struct TrigPolynomial {
  static constexpr int kMostDegree = 4;

  // a cos u + b sin u + c.
  static TrigPolynomial Wave(double a, double b, double c) { return {1, {c, a}, {0.0, b}}; }

  double LargestCoefficient() const {
    double largest = 0.0;
    for (int k = 0; k <= degree; ++k) largest = std::max({largest, std::fabs(cosines[k]), std::fabs(sines[k])});
    return largest;
  }
  // As TrigRoots, which asks for finite coefficients.
  std::vector<double> Roots() const { return TrigRoots(cosines, sines, degree); }

  int degree = 0;
  double cosines[kMostDegree + 1] = {};
  double sines[kMostDegree + 1] = {};
};

inline TrigPolynomial operator*(double f, TrigPolynomial p) {
  for (double& cosine : p.cosines) cosine *= f;
  for (double& sine : p.sines) sine *= f;
  return p;
}

inline TrigPolynomial operator+(TrigPolynomial p, const TrigPolynomial& q) {
  p.degree = std::max(p.degree, q.degree);
  std::transform(p.cosines, std::end(p.cosines), q.cosines, p.cosines, std::plus());
  std::transform(p.sines, std::end(p.sines), q.sines, p.sines, std::plus());
  return p;
}

inline TrigPolynomial operator*(const TrigPolynomial& p, const TrigPolynomial& q) {
  TrigPolynomial product;
  product.degree = p.degree + q.degree;
  AddTrigProduct(p.cosines, p.sines, p.degree, q.cosines, q.sines, q.degree, product.cosines, product.sines);
  return product;
}

}  // namespace nu::engine::roots

#endif
