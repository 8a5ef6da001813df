#ifndef NU_SURFACES_SPHERE_H
#define NU_SURFACES_SPHERE_H

#include "nu/export.h"
#include "nu/geometry/fit_result.h"
#include "nu/geometry/point.h"
#include "nu/surfaces/surface.h"

// The sphere: a radius and, as the origin of its position, a centre. Its orientation has no meaning.
class NU_EXPORT CNuSphSurf : public CNuSurface {
 public:
  // A radius that is not above 0 and finite: CNuConstructionException cause 5, "radius". A radius alone leaves the
  // sphere without a position, around the origin.
  explicit CNuSphSurf(double radius);
  CNuSphSurf(double radius, const CNuPoint& centre);

  double GetRadius() const { return m_radius; }
  CNuPoint GetCentre() const;
  void GetCentre(double* x, double* y, double* z) const;
  void GetData(double* radius, CNuPoint* centre) const;

  // The points common to the line and the sphere, in the order of the line; returns how many there are, 0 to 2. What
  // comes as close as NuGetLengthTol(), or as the rounding of the coordinates, touches; so it does in all that follows.
  int IntersectWith(const CNuLine& line, CNuPoint* p1, CNuPoint* p2) const;
  // Where the two surfaces meet, as new objects that the caller owns: the contents of `result` are replaced by them,
  // and their number is returned. A circle, the point in which they touch, or nothing for surfaces that are apart, one
  // inside the other, or spheres about one centre, equal ones among them. The normal of the circle is the plane's, or
  // points from this centre to the other one. Spheres that touch, but in no point that is on the other one, too:
  // CNuOperationException cause 46, "calculation", and `result` stays as it was.
  int IntersectWith(const CNuPlane& plane, CNuObjArray* result) const;
  int IntersectWith(const CNuSphSurf& other, CNuObjArray* result) const;
  // As CNuCylSurf::IntersectWith and CNuConSurf::IntersectWith.
  int IntersectWith(const CNuCylSurf& cylinder, CNuObjArray* result) const;
  int IntersectWith(const CNuConSurf& cone, CNuObjArray* result) const;

  // The symmetric 4 x 4 matrix Q for which p Q p^T = 0 if and only if p = (x, y, z, 1) is on the sphere, with p in
  // global coordinates or in those of the position of `frame`.
  CNuMatrix ToAlgebraicForm() const;
  CNuMatrix ToAlgebraicForm(const CNuNonLinearGeometry& frame) const;

  // Least-squares sphere, by Gauss-Newton steps on the distances from it. The iteration ends with a step of the centre
  // whose squared length is below NuGetTol(), which is not applied. Where a step is not shorter than the one before, or
  // the steps shrink slowly, damped Newton steps go on to the optimum, within the same limit; it fails when `maxIter`
  // steps were used up, even by one that ended it, so a limit of 1 suffices for four points only, which need no step.
  // `formError` receives the largest minus the smallest signed distance, `sumSquares` the sum of the squared ones; both
  // are set to 0 once the limit is found good, and stay 0 for four points. CNuBestfitException, named "CNuSphSurf", for
  // which the sphere stays as it was: cause 13 (size 0) for a limit below 1, before all else; cause 1 (size 4) below
  // four points; cause 4 (size 4) for points in one plane within NuGetLengthTol(); cause 11 (size 0) for points that do
  // not determine a sphere or are not finite; cause 12 (size 0) when the limit, or 100 000 steps, is reached. Lack of
  // memory passes through as it is. FitEx throws cause 13 only: NuFitNoConvergence stands for cause 12, NuFitFailure
  // for every other failure.
  void Fit(const CNuPointArray& points, long maxIter);
  void Fit(const CNuPointArray& points, double* formError, double* sumSquares, long maxIter);
  ENuFitResult FitEx(const CNuPointArray& points, long maxIter);
  ENuFitResult FitEx(const CNuPointArray& points, double* formError, double* sumSquares, long maxIter);

  // Minimum circumscribed sphere: the smallest one that encloses all points, to rounding (B. Gaertner, ESA 1999).
  // Points on one line within `tol` get the sphere about the middle of the two that are farthest apart along their
  // least-squares line; where no two are at least `tol` apart, one of radius 0 at the first point.
  // CNuBestfitException, for which the sphere stays as it was: cause 1 (size 1) without a point; cause 11 (size 0) for
  // coordinates that are not finite; for points on one line also cause 2 of that line's fit, named "CNuLine".
  void FitMin(const CNuPointArray& points, double tol);
  // Runs FitMaxEx: the result is the maximum inscribed sphere.
  ENuFitResult FitMinEx(const CNuPointArray& points, double tol);

  // Maximum inscribed sphere: one with no point in its interior that cannot grow by a small move of its centre, and
  // the one that is reached from the mean of the points. CNuBestfitException, for which the sphere stays as it was:
  // cause 1 (size 4) below four points; cause 3 (size 3) for points on one line within `tol`; cause 11 (size 0) for
  // points that hold no sphere between them, such as a cap, out of which it grows for ever, for more than ten steps
  // per point and for coordinates that are not finite. FitMaxEx throws nothing: every failure is NuFitFailure. It makes
  // `tol` the thread's NuGetLengthTol() for as long as it runs.
  void FitMax(const CNuPointArray& points, double tol);
  ENuFitResult FitMaxEx(const CNuPointArray& points, double tol);

  // Minimum-zone sphere: half-way between the two concentric spheres that hold all points between them at the least
  // distance, `zone`; the shell next to the least-squares sphere, and never thicker than the one about its centre. A
  // least-squares sphere with a form below `tol` is the result, with `zone` 0. Points in one plane within `tol` get the
  // radius and centre of their minimum-zone circle. `inner` and `outer` receive the two spheres, or both the result
  // where `zone` is below NuGetTol(). CNuBestfitException, for which the sphere and the outputs stay as they were:
  // cause 13 (size 0) for a limit below 1, before all else; cause 1 (size 1) without a point; the causes of Fit, which
  // has the same limit, and for points in one plane those of CNuCircle::FitMinZone, named as there; cause 12 (size 0)
  // when the search uses up its limit, even by the step that ends it, or takes 1000 steps; cause 11 (size 0) for
  // coordinates that are not finite and points so flat that rounding hides the centre of the shell. FitMinZoneEx throws
  // cause 13 only: NuFitNoConvergence stands for cause 12, NuFitFailure for every other failure. It makes `tol` the
  // thread's NuGetLengthTol() for as long as it runs.
  void FitMinZone(const CNuPointArray& points, double* zone, double tol, long maxIter);
  void FitMinZone(const CNuPointArray& points, double* zone, CNuSphSurf* inner, CNuSphSurf* outer, double tol,
                  long maxIter);
  ENuFitResult FitMinZoneEx(const CNuPointArray& points, double* zone, double tol, long maxIter);
  ENuFitResult FitMinZoneEx(const CNuPointArray& points, double* zone, CNuSphSurf* inner, CNuSphSurf* outer, double tol,
                            long maxIter);

 private:
  void Place(double radius, const CNuPoint& centre);

  double m_radius;
};

#endif
