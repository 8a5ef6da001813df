#ifndef NU_NUMERICS_INTEGRAL_3D_H
#define NU_NUMERICS_INTEGRAL_3D_H

#include "nu/export.h"
#include "nu/foundation/object.h"

namespace nu::engine::quadrature {
struct Quadrature;
}

// The integral of a function of three variables over x from ax to bx, y from ay to by and z from az to bz, with an
// estimate of its error. The type code is set when Calculate starts and is 0 before.
class NU_EXPORT CNuIntegral3D : public CNuNumericalAnalysis {
 public:
  // Without a result: value and estimate are 0.
  CNuIntegral3D() = default;
  CNuIntegral3D(const CNuIntegral3D&) = default;
  CNuIntegral3D& operator=(const CNuIntegral3D&) = default;
  ~CNuIntegral3D() override;

  // The integral over x of the integrals over y of the integrals of f(x, y, z) over z. Bounds are constant, or
  // functions of the outer variables. Tolerance, rules and failures ("CNuIntegral3D::Calculate()") are those of
  // CNuIntegral::Calculate; an inner integral that does not converge fails the whole. Bounds in reverse order negate,
  // the inner ones for those x and y alone. Smooth bounds are best: where an inner bound has a kink, let an outer
  // interval end. About 335,000 samples are taken at least, at most 2,097,152 on average in each of the maxIter levels
  // (42 million by default, which takes about a second for a simple f; maxIter bounds it further).
  //
  // f may jump or have kinks on surfaces in any direction. What is narrower than the distance of the samples can be
  // missed, and the estimate does not show it: slabs across the volume are found down to a width of 1/100, bodies down
  // to a diameter of 1/10 of it, smaller ones by chance. Integrate a smaller one by itself.
  double Calculate(double (*f)(double, double, double), double ax, double bx, double ay, double by, double az,
                   double bz, double tol, long maxIter = 20);
  double Calculate(double (*f)(double, double, double), double ax, double bx, double (*ay)(double),
                   double (*by)(double), double (*az)(double, double), double (*bz)(double, double), double tol,
                   long maxIter = 20);

  // Of the last successful Calculate; 0 before.
  double GetValue() const { return m_value; }
  double GetErrorEstimate() const { return m_error; }

 private:
  double Store(const nu::engine::quadrature::Quadrature& q);

  double m_value = 0.0;
  double m_error = 0.0;
};

#endif
