#ifndef NU_ENGINE_SHAPES_GENERATOR_QUADRATIC_H
#define NU_ENGINE_SHAPES_GENERATOR_QUADRATIC_H

#include "nu/engine/roots/trig_polynomial.h"
#include "nu/engine/shapes/round_quadric.h"

namespace nu::engine::shapes {

// The quadric p Q p^T = 0, p = (x, y, z, 1), with a symmetric matrix.
struct QuadricMatrix {
  static QuadricMatrix Of(const RoundQuadric& surface);

  double at[4][4] = {};
};

// A quadric on the generators of an upright cylinder or cone: at the angle u it has the places t with
//   square(u) t^2 + 2 linear(u) t + constant(u) = 0.
struct GeneratorQuadratic {
  // With the height t.
  static GeneratorQuadratic OnCylinder(const QuadricMatrix& q, double radius);
  // With the distance t from the apex, at the origin, along the generator; sine and cosine are of the semi-angle.
  static GeneratorQuadratic OnCone(const QuadricMatrix& q, double sine, double cosine);

  bool IsFinite() const;

  // The angles at which the discriminant linear^2 - square constant is stationary, ascending; none for one whose
  // coefficients are not above `zero`, or that is constant. Its highest harmonics are left out where they are below
  // `share` of the largest coefficient.
  static constexpr int kMostStationary = 4;
  std::vector<double> StationaryAngles(double zero, double share) const;

  TrigPolynomial square;
  TrigPolynomial linear;
  TrigPolynomial constant;
};

// Each root of a trigonometric polynomial once.
std::vector<double> DistinctRoots(const TrigPolynomial& p);

// The up to four roots of `square`, at which a crossing goes to infinity.
struct Asymptotes {
  static Asymptotes Of(const TrigPolynomial& square);

  std::vector<double> angles;  // first the roots at which it changes its sign, then those at which it only touches 0
  std::size_t simple = 0;      // the number of the former
};

}  // namespace nu::engine::shapes

#endif
