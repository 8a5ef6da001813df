#ifndef NU_SURFACES_SPHERE_H
#define NU_SURFACES_SPHERE_H

#include "nu/export.h"
#include "nu/geometry/fit_result.h"
#include "nu/geometry/point.h"
#include "nu/surfaces/surface.h"

// The sphere: a radius and, as the origin of its position, a centre. Its orientation has no meaning.
class NU_EXPORT CNuSphSurf : public CNuSurface {
 public:
  // A radius alone leaves the sphere without a position, around the origin.
  // Fails with CNuConstructionException ("CNuSphSurf"): cause 5, "radius": not above 0, or not finite.
  explicit CNuSphSurf(double radius);
  CNuSphSurf(double radius, const CNuPoint& centre);

  // The radius in the caller's length unit, and the centre in global coordinates.
  double GetRadius() const { return m_radius; }
  CNuPoint GetCentre() const;
  void GetCentre(double* x, double* y, double* z) const;
  void GetData(double* radius, CNuPoint* centre) const;

  // The points common to the line and the sphere, in the order of the line; returns their number, 0 to 2. Features that
  // come as close as NuGetLengthTol(), or as the rounding of the coordinates, touch, here and below.
  int IntersectWith(const CNuLine& line, CNuPoint* p1, CNuPoint* p2) const;
  // The intersection of the two surfaces as new objects that the caller owns. They replace the contents of `result`;
  // returns their number: one CNuCircle, the CNuPoint of contact, or none for surfaces that are apart, for one inside
  // the other, and for concentric spheres. The normal of the circle is the plane's, or points from this centre to the
  // other one.
  // Fails with CNuOperationException (the operation, "calculation"), `result` unchanged:
  //   45  a feature is not finite     46  the point of contact is not on both spheres within a large tolerance
  int IntersectWith(const CNuPlane& plane, CNuObjArray* result) const;
  int IntersectWith(const CNuSphSurf& other, CNuObjArray* result) const;
  // As CNuCylSurf::IntersectWith and CNuConSurf::IntersectWith.
  int IntersectWith(const CNuCylSurf& cylinder, CNuObjArray* result) const;
  int IntersectWith(const CNuConSurf& cone, CNuObjArray* result) const;

  // The symmetric 4 x 4 matrix Q for which p Q p^T = 0 if and only if p = (x, y, z, 1) is on the sphere, with p in
  // global coordinates or in those of the position of `frame`.
  CNuMatrix ToAlgebraicForm() const;
  CNuMatrix ToAlgebraicForm(const CNuNonLinearGeometry& frame) const;

  // Least-squares sphere: minimises the sum of squared distances by Gauss-Newton steps. The iteration ends with a step
  // of the centre whose squared length is below NuGetTol(), which is not applied. Where a step is not shorter than the
  // one before, or the steps shrink slowly, damped Newton steps lead on to the optimum within the same limit. Four
  // points need no step; their `form` and `sumSquares` are 0.
  // Fails with CNuBestfitException ("CNuSphSurf"), the sphere unchanged, `form` and `sumSquares` 0 but for cause 13:
  //   13  maxIter < 1     1  fewer than 4 points     4  points in one plane
  //   11  the points do not determine a sphere, or its radius is 2^26 times as large as they reach
  //   12  maxIter, or 100 000, steps were used up
  void Fit(const CNuPointArray& points, long maxIter);
  void Fit(const CNuPointArray& points, double* form, double* sumSquares, long maxIter);
  ENuFitResult FitEx(const CNuPointArray& points, long maxIter);
  ENuFitResult FitEx(const CNuPointArray& points, double* form, double* sumSquares, long maxIter);

  // Minimum circumscribed sphere: the smallest one that encloses all points, to rounding (B. Gaertner, ESA 1999).
  // Points on one line within `tol` get the sphere about the middle of the two that are farthest apart along their
  // least-squares line; where no two are distinct, one of radius 0 at the first point.
  // Fails with CNuBestfitException ("CNuSphSurf"), the sphere unchanged:
  //   1  no point     2  as CNuLine::Fit and named as there, for points on one line     11  a numerical failure
  void FitMin(const CNuPointArray& points, double tol);
  // Required: runs FitMaxEx, so the result is the maximum inscribed sphere.
  ENuFitResult FitMinEx(const CNuPointArray& points, double tol);

  // Maximum inscribed sphere: one that has no point in its interior and cannot grow by a small move of its centre; the
  // one that is reached from the mean of the points. FitMaxEx never throws and returns NuFitFailure for every failure.
  // Fails with CNuBestfitException ("CNuSphSurf"), the sphere unchanged:
  //   1  fewer than 4 points     3  points on one line
  //   11  no sphere is held by the points, such as those of a cap, or the search took 10 steps per point
  void FitMax(const CNuPointArray& points, double tol);
  ENuFitResult FitMaxEx(const CNuPointArray& points, double tol);

  // Minimum-zone sphere: half-way between the two concentric spheres that hold all points between them at the least
  // distance, `zone`, which is never above the form of the least-squares sphere. It is the optimum next to that sphere,
  // or that sphere itself with `zone` 0 where its form is below `tol`. Points in one plane get the radius and centre of
  // their minimum-zone circle. `inner` and `outer` receive the two, or both the result for a `zone` below NuGetTol().
  // Fails with CNuBestfitException ("CNuSphSurf"), the sphere and the outputs unchanged:
  //   13  maxIter < 1     1  no point     9, 11, 12  as CNuCircle::FitMinZone, named as there, for points in one plane
  //   4, 11, 12  as Fit     11  the points are so flat that rounding hides the centre
  //   12  maxIter, or 1000, steps were used up
  void FitMinZone(const CNuPointArray& points, double* zone, double tol, long maxIter);
  void FitMinZone(const CNuPointArray& points, double* zone, CNuSphSurf* inner, CNuSphSurf* outer, double tol,
                  long maxIter);
  ENuFitResult FitMinZoneEx(const CNuPointArray& points, double* zone, double tol, long maxIter);
  ENuFitResult FitMinZoneEx(const CNuPointArray& points, double* zone, CNuSphSurf* inner, CNuSphSurf* outer, double tol,
                            long maxIter);

 private:
  friend struct nu::internal::FeatureAccess;

  void Place(double radius, const CNuPoint& centre);

  double m_radius;
};

#endif
