#ifndef NU_SURFACES_TORUS_H
#define NU_SURFACES_TORUS_H

#include "nu/export.h"
#include "nu/geometry/fit_result.h"
#include "nu/surfaces/surface.h"

// The torus: the points at the distance `minor radius` from a circle of the major radius. The centre of the circle is
// the origin of the position, its axis the position's z axis.
class NU_EXPORT CNuTorSurf : public CNuSurface {
 public:
  // The direction is normalised; about a given centre it is z. Radii alone leave the torus without a position, around
  // the origin and the z axis.
  // Fails with CNuConstructionException ("CNuTorSurf"), checked in this order:
  //   5  "radius": one is not above 0, or not finite     7  "radius": the minor one is not below the major one
  //   4  axisDirection has not three components     3  axisDirection is zero within NuGetZero(), or not finite
  CNuTorSurf(double majorRadius, double minorRadius);
  CNuTorSurf(double majorRadius, double minorRadius, const CNuPoint& centre);
  CNuTorSurf(double majorRadius, double minorRadius, const CNuPoint& centre, const CNuVector& axisDirection);

  // The radii in the caller's length unit; the centre, the unit direction and the line of the axis in global
  // coordinates.
  double GetMajorRadius() const { return m_majorRadius; }
  double GetMinorRadius() const { return m_minorRadius; }
  CNuPoint GetCentre() const;
  CNuVector GetAxisDirection() const;
  CNuLine GetAxis() const;
  void GetData(double* majorRadius, double* minorRadius, CNuPoint* centre, CNuVector* axisDirection) const;

  // Minimum torus: the thinnest tube around a circle that holds all points. This is a minimax problem, solved by linear
  // programs within a step bound (M. R. Osborne, G. A. Watson, Computer Journal 12, 1969). The minor radius is 0 for
  // three points, and may exceed the major one for points that fill a ball. The result is a local optimum to rounding;
  // where that is ambiguous it is the best of those reached from sixteen circles and lines, for points that are on no
  // torus from forty-four, whatever the order of the points. The direction of the axis has its component of largest
  // magnitude positive. Fails with CNuBestfitException ("CNuTorSurf"), the torus unchanged:
  //   13  maxIter < 1; FitMin names it "CNuSphSurf" (required)
  //   1  fewer than 3 points     3  no three points are off one line, by CNuPointArray::IsNoncollinear with `tol`
  //   12  maxIter, or 1000, steps from the first start did not converge
  //   11  a coordinate is not finite, no step leads on, or the tube is straight to rounding: "CNuTorSurf::FitMin"
  void FitMin(const CNuPointArray& points, double tol, long maxIter);
  ENuFitResult FitMinEx(const CNuPointArray& points, double tol, long maxIter);

  // Fails always (required) with CNuOperationException (the operation, "calculation"): cause 45.
  int IntersectWith(const CNuPlane& plane, CNuObjArray* result) const;
  int IntersectWith(const CNuCylSurf& cylinder, CNuObjArray* result) const;
  int IntersectWith(const CNuConSurf& cone, CNuObjArray* result) const;
  int IntersectWith(const CNuSphSurf& sphere, CNuObjArray* result) const;

 private:
  friend struct nu::internal::FeatureAccess;

  void Place(double majorRadius, double minorRadius, const CNuPoint& centre, const CNuVector& axisDirection);

  double m_majorRadius;
  double m_minorRadius;
};

#endif
