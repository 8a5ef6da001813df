#ifndef NU_NUMERICS_INTEGRAL_2D_H
#define NU_NUMERICS_INTEGRAL_2D_H

#include "nu/export.h"
#include "nu/foundation/object.h"

namespace nu::engine::quadrature {
struct Quadrature;
}

// The integral of a function of two variables over x from ax to bx and y from ay to by, with an estimate of its error.
// The type code is set when Calculate starts and is 0 before.
class NU_EXPORT CNuIntegral2D : public CNuNumericalAnalysis {
 public:
  // Without a result: value and estimate are 0.
  CNuIntegral2D() = default;
  CNuIntegral2D(const CNuIntegral2D&) = default;
  CNuIntegral2D& operator=(const CNuIntegral2D&) = default;
  ~CNuIntegral2D() override;

  // The integral over x of the integrals of f(x, y) over y, whose bounds are constant or functions of x. Tolerance,
  // rules and failures ("CNuIntegral2D::Calculate()") are those of CNuIntegral::Calculate; an inner integral that does
  // not converge fails the whole. Bounds in reverse order negate, the inner ones for that x alone. Smooth bounds are
  // best: where an inner bound has a kink, let x end. About 75,000 samples are taken at least, at most 524,288 on
  // average in each of the maxIter levels (10.5 million by default).
  //
  // f may jump or have kinks along lines and curves in any direction. What is narrower than the distance of the samples
  // can be missed, and the estimate does not show it: strips across the area are found down to a width of 1/1000, discs
  // and other bodies down to a diameter of 1/100 of it, smaller ones by chance. Integrate a smaller one by itself.
  double Calculate(double (*f)(double, double), double ax, double bx, double ay, double by, double tol,
                   long maxIter = 20);
  double Calculate(double (*f)(double, double), double ax, double bx, double (*ay)(double), double (*by)(double),
                   double tol, long maxIter = 20);

  // Of the last successful Calculate; 0 before.
  double GetValue() const { return m_value; }
  double GetErrorEstimate() const { return m_error; }

 private:
  double Store(const nu::engine::quadrature::Quadrature& q);

  double m_value = 0.0;
  double m_error = 0.0;
};

#endif
