#ifndef NU_SURFACES_TORUS_H
#define NU_SURFACES_TORUS_H

#include "nu/export.h"
#include "nu/geometry/fit_result.h"
#include "nu/surfaces/surface.h"

// The torus: the points at the distance `minor radius` from a circle of the major radius. The centre of the circle is
// the origin of the position, its axis the position's z axis.
class NU_EXPORT CNuTorSurf : public CNuSurface {
 public:
  // CNuConstructionException, checked in this order: cause 5, "radius", for a radius that is not above 0 and finite;
  // cause 7, "radius", for a minor radius that is not below the major one; cause 4 for a direction that has not three
  // components; cause 3 for one that is zero within NuGetZero() or not finite. The direction is normalised. Radii alone
  // leave the torus without a position, around the origin and the z axis, which is also the axis about a given centre.
  CNuTorSurf(double majorRadius, double minorRadius);
  CNuTorSurf(double majorRadius, double minorRadius, const CNuPoint& centre);
  CNuTorSurf(double majorRadius, double minorRadius, const CNuPoint& centre, const CNuVector& axisDirection);

  double GetMajorRadius() const { return m_majorRadius; }
  double GetMinorRadius() const { return m_minorRadius; }
  CNuPoint GetCentre() const;
  CNuVector GetAxisDirection() const;
  CNuLine GetAxis() const;
  void GetData(double* majorRadius, double* minorRadius, CNuPoint* centre, CNuVector* axisDirection) const;

  // Minimum torus: the thinnest tube around a circle that holds all points (a minimax problem, solved by a
  // shrinking sequence of linear programs on a working set of the points). Its minor radius is 0 for three points, and
  // may exceed the major one for points that fill a ball. It is a local optimum to rounding; where the shape of the
  // points leaves doubt it is the best of those reached from sixteen different circles and lines, whatever the order of
  // the points. The direction of the axis has its component of largest magnitude positive. CNuBestfitException, for
  // which the torus stays as it was, named "CNuTorSurf" unless stated otherwise: cause 13 (size 0, named "CNuSphSurf")
  // for a limit below 1, before all else; cause 1 (size 3) below three points; cause 3 (size 3) for points of which no
  // three, by CNuPointArray::IsNoncollinear with `tol`, are off one line; cause 12 (size 0) when the steps from the
  // first start reach `maxIter`; cause 11 (size 0, named "CNuTorSurf::FitMin") for coordinates that are not finite, for
  // steps that lead nowhere, and for points in a tube so straight that its circle is hidden by rounding. Lack of memory
  // passes through as it is. FitMinEx throws cause 13 only, named "CNuTorSurf": NuFitNoConvergence stands for cause 12,
  // NuFitFailure for every other failure. It makes `tol` the thread's NuGetLengthTol() for as long as it runs.
  void FitMin(const CNuPointArray& points, double tol, long maxIter);
  ENuFitResult FitMinEx(const CNuPointArray& points, double tol, long maxIter);

  // Required to fail always, with CNuOperationException cause 45, "calculation".
  int IntersectWith(const CNuPlane& plane, CNuObjArray* result) const;
  int IntersectWith(const CNuCylSurf& cylinder, CNuObjArray* result) const;
  int IntersectWith(const CNuConSurf& cone, CNuObjArray* result) const;
  int IntersectWith(const CNuSphSurf& sphere, CNuObjArray* result) const;

 private:
  void Place(double majorRadius, double minorRadius, const CNuPoint& centre, const CNuVector& axisDirection);

  double m_majorRadius;
  double m_minorRadius;
};

#endif
