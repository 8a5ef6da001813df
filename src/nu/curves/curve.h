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
  // f): the sum of the squares of its values is least among all with a^2 + b^2 / 2 + c^2 = 1. The one of a, b and c
  // that is largest in magnitude is positive; what is down to rounding is 0. The same equation is found wherever the
  // points lie and however they are turned. No result, in this order: CNuBestfitException cause 1 (size 5) below five
  // points; cause 11 (size 0) for coordinates that are not finite; CNuOperationException cause 45, "3D calculation",
  // for z that differ by more than NuGetLengthTol(); CNuBestfitException cause 2 (size 5) without five points that are
  // NuGetLengthTol() apart; cause 11 for an equation that overflows.
  static void FitQuadratic(const CNuPointArray& xy, CNuVector* six);

  // What such an equation describes: 1 an ellipse, 2 a hyperbola, 3 a parabola, 4 lines (two that cross or are
  // parallel, or one). Only a single point or nothing at all: CNuOperationException cause 46, "classification"; not six
  // numbers: cause 5. `tol` is relative: an eigenvalue of the quadratic part counts as zero below tol times the other
  // one, the constant about the centre, or the slope along the axis, below tol times the terms that add up to it. The
  // answer depends neither on the unit of length nor on a factor.
  static int ClassifyQuadratic(const CNuVector& six, double tol);
};

#endif
