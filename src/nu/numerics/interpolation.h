#ifndef NU_NUMERICS_INTERPOLATION_H
#define NU_NUMERICS_INTERPOLATION_H

#include "nu/export.h"
#include "nu/foundation/double_array.h"
#include "nu/foundation/object.h"

// Functions through the points (x_i, y_i), x_0 < x_1 < ... < x_{n-1}, n >= 2, on [x_0, x_{n-1}]. All of them give y_i
// at x_i to the last bit. Copies are deep. No memory: CNuMemoryException.
class NU_EXPORT CNuInterpolation : public CNuNumericalAnalysis {
 public:
  // Fails with CNuOperationException ("array data checking"), checked in this order:
  //    5  x and y differ in size
  //   41  fewer than two points, x not strictly increasing, a coordinate is not finite, or the range of x overflows
  CNuInterpolation(const CNuDoubleArray& x, const CNuDoubleArray& y);
  CNuInterpolation(const CNuInterpolation&) = default;
  CNuInterpolation(CNuInterpolation&&) noexcept = default;
  CNuInterpolation& operator=(CNuInterpolation other) noexcept;
  ~CNuInterpolation() override;

  // The number of points.
  int GetSize() const { return m_x.GetSize(); }

  // All of these fail with CNuOperationException ("data checking"): cause 40, x is outside [x_0, x_{n-1}] or NaN, with
  // the range in the two doubles.

  // Straight between neighbouring points.
  double Linear(double x) const;
  // The polynomial of degree n - 1 through all points, by Lagrange's formula in about n^2 steps; of more than 512
  // points, through the 512 about x. *error, which may be null, takes an estimate of the error: what the outermost
  // points contribute, and rounding.
  double Polynomial(double x, double* error) const;
  // The natural cubic spline, whose second derivative is 0 at both ends, and its first derivative. A straight line
  // through two points.
  double Spline(double x) const;
  double SplineDerivative(double x) const;

 private:
  void RequireInside(double x, const char* where) const;

  CNuDoubleArray m_x;
  CNuDoubleArray m_y;
  CNuDoubleArray m_slopes;  // of the spline at the points
};

#endif
