#ifndef NU_CURVES_CURVE_H
#define NU_CURVES_CURVE_H

#include "nu/export.h"
#include "nu/fwd.h"
#include "nu/geometry/nonlinear_geometry.h"

// The root of the curves.
class NU_EXPORT CNuCurve : public CNuNonLinearGeometry {
 public:
  CNuCurve(const CNuCurve&) = default;
  CNuCurve& operator=(const CNuCurve&) = default;

 protected:
  CNuCurve() = default;
  explicit CNuCurve(ENuObjectType type) : CNuNonLinearGeometry(type) {}

  // The quadratic equation a x^2 + b x y + c y^2 + d x + e y + f = 0 of points in a plane z = const, as (a, b, c, d, e,
  // f). It minimises the sum of the squares of its values with a^2 + b^2 / 2 + c^2 = 1, and so does not depend on the
  // position and orientation of the points. The largest of a, b and c in magnitude is positive; coefficients down to
  // rounding are 0.
  // Fails with CNuBestfitException ("CNuCurve"), `six` unchanged, checked in this order:
  //   1  fewer than 5 points     45  CNuOperationException, "3D calculation": z differ by more than NuGetLengthTol()
  //   2  fewer than 5 distinct points     11  the equation overflows
  static void FitQuadratic(const CNuPointArray& xy, CNuVector* six);

  // The curve of such an equation: 1 an ellipse, 2 a hyperbola, 3 a parabola, 4 lines (two that cross or are parallel,
  // or one). `tol` is relative: an eigenvalue of the quadratic part counts as zero below tol times the other one, the
  // constant about the centre, or the slope along the axis, below tol times the terms of its sum. The result depends
  // neither on the unit of length nor on a factor. Fails with CNuOperationException ("CNuCurve::ClassifyQuadratic()"):
  //   5  "data checking": not six numbers     46  "classification": a single point, or nothing
  static int ClassifyQuadratic(const CNuVector& six, double tol);
};

#endif
