#ifndef NU_CURVES_CIRCLE_H
#define NU_CURVES_CIRCLE_H

#include "nu/curves/curve.h"
#include "nu/export.h"
#include "nu/geometry/fit_result.h"
#include "nu/geometry/point.h"
#include "nu/linalg/vector.h"

// The circle in space: in its local frame it lies in the xy plane around the origin. Its position has the centre as
// origin and the normal as z axis; without one it lies in the global xy plane around the global origin.
class NU_EXPORT CNuCircle : public CNuCurve {
 public:
  // A radius that is not above 0 and finite: CNuConstructionException cause 5, "radius"; after that a normal that has
  // not three components, is zero within NuGetZero() or is not finite: cause 4. The normal is normalised, (0, 0, 1) if
  // not given; a radius alone leaves the circle without a position.
  explicit CNuCircle(double radius);
  CNuCircle(double radius, const CNuPoint& centre);
  CNuCircle(double radius, const CNuPoint& centre, const CNuVector& normal);

  double GetRadius() const { return m_radius; }
  CNuPoint GetCentre() const;
  CNuVector GetNormal() const;
  CNuVector GetXaxis() const;
  CNuPlane GetPlane() const;
  void GetData(double* radius, CNuPoint* centre, CNuVector* normal) const;

  // The points common to both, 0 to 2; returns how many there are. As for lines, cause 45 for what is not finite. What
  // comes as close as NuGetLengthTol(), or as the rounding of the coordinates, touches. With a line in its order, with
  // a plane in the order of this normal x the plane's. None for a circle in the plane. With a circle: none for circles
  // that coincide; of two in one plane the first point lies to the left of the way from this centre to the other, seen
  // from the tip of this normal.
  int IntersectWith(const CNuLine& l, CNuPoint* p1, CNuPoint* p2) const;
  int IntersectWith(const CNuCircle& circle, CNuPoint* p1, CNuPoint* p2) const;
  int IntersectWith(const CNuPlane& pl, CNuPoint* p1, CNuPoint* p2) const;

  // n points that divide the circle evenly, counter-clockwise about the normal from the x axis; the last is the first
  // again. n below 2 or above 10,000,000: CNuOperationException cause 12.
  CNuPointArray ToPointArray(int n) const;
  CNuPolyline ToPolyline(int n) const;

  // Least-squares circle in the least-squares plane of the points, by at most `maxiter` Gauss-Newton steps on the
  // distances from it (Gander, Golub and Strebel, BIT 34, 1994); it ends with a correction to centre and radius whose
  // squared length is below NuGetTol(), or that is down to rounding. `form` receives the largest minus the smallest
  // signed distance in that plane, `sumsq` the sum of the squared ones; both are 0 for three points, which need no
  // step. CNuBestfitException, for which the circle and the outputs stay as they were: cause 13 (size 0) for a limit
  // below 1, before all else; causes 1 and 3 of the plane, named "CNuPlane"; else named "CNuCircle" with size 0: cause
  // 11 for coordinates that are not finite, a start radius of 0.1 NuGetLarge() or more and whatever else fails on the
  // way; cause 12 when the limit, or 100 000 steps, is reached. FitEx throws cause 13 only: NuFitNoConvergence stands
  // for cause 12, NuFitFailure for every other failure.
  void Fit(const CNuPointArray& pts, long maxiter);
  void Fit(const CNuPointArray& pts, double* form, double* sumsq, long maxiter);
  ENuFitResult FitEx(const CNuPointArray& pts, long maxiter);
  ENuFitResult FitEx(const CNuPointArray& pts, double* form, double* sumsq, long maxiter);

  // Minimum circumscribed circle: the smallest one in the least-squares plane of the points that encloses them all, to
  // rounding (B. Gaertner, ESA 1999). Points on one line, or all closer together than `tol`, get the circle on their
  // longest edge; it is in a plane with that line, and has radius 0 when they coincide. Points are on one line, and in
  // one plane, within `tol`. CNuBestfitException, named "CNuCircle", for which the circle stays as it was: cause 1
  // (size 1) without a point; cause 5 (size 3) for points that are not in one plane, which is a plane fit's form above
  // `tol`; cause 11 for coordinates that are not finite and whatever else fails on the way. FitMinEx does not throw; it
  // makes `tol` the thread's NuGetLengthTol() for as long as it runs.
  void FitMin(const CNuPointArray& pts, double tol);
  ENuFitResult FitMinEx(const CNuPointArray& pts, double tol);

  // Maximum inscribed circle: the largest one in the least-squares plane of the points that has its centre in their
  // convex hull and none of them in its interior (M. I. Shamos, D. Hoey, FOCS 1975). Global, to rounding; of circles of
  // the same radius the one whose centre has the least coordinate along the x axis of the result, then along its y
  // axis, whatever the order of the points. Warning: points on an arc of up to 180 degrees have the centre of their
  // circle outside their hull, so the result is a small circle beside the arc, not the circle of the arc: check that
  // the points go farther around. CNuBestfitException, named "CNuCircle", for which the circle stays as it
  // was: cause 1 (size 3) below three points; cause 3 (size 3) for points on one line within `tol`; then as FitMin.
  // FitMaxEx does not throw; it makes `tol` the thread's NuGetLengthTol() for as long as it runs.
  void FitMax(const CNuPointArray& pts, double tol);
  ENuFitResult FitMaxEx(const CNuPointArray& pts, double tol);

  // Minimum-zone circle: concentric with the narrowest annulus in the least-squares plane of the points that holds them
  // all, and half-way between its two circles. `form` receives the width of the annulus; `inner` and `outer`, in the
  // plane of the result, its two circles. An exchange from the least-squares circle finds the annulus (T. J. Rivlin,
  // Computing 21, 1979); where a bound does not prove it the narrowest, so does a search over the crossings of Voronoi
  // edges (H. Ebara et al., 1st Canadian Conf. Comp. Geometry, 1989). Global, to rounding; of equally narrow annuli the
  // one whose centre has the least coordinate along the x axis of the result, then along its y axis. Points that are
  // not in one plane within `tol` get the circle and the position of the thinnest torus that holds them,
  // CNuTorSurf::FitMin; `form` is the diameter of its tube, and `inner` and `outer` are smaller and larger by half of
  // that, with 0 for an `inner` that would be negative. Points on one line, or all closer together than `tol`, get the
  // circle on their longest edge and form 0. CNuBestfitException, for which the circle and the outputs stay as they
  // were: cause 13 for a limit below 1, before all else; cause 1 (size 1) without a point; cause 9 when rounding leaves
  // no such centre, which takes points next to one line; cause 11 for coordinates that are not finite; cause 12 when
  // the least-squares circle takes more than `maxiter` steps (above 50 it is used as far as it has come) or, named
  // "FindMinimalAnnulus", the exchange looks at all points more than `maxiter` times; those of the torus.
  // All others are named "CNuCircle"; where nothing is said the size is 0. FitMinZoneEx throws cause 13 only and
  // makes `tol` the thread's NuGetLengthTol() for as long as it runs.
  void FitMinZone(const CNuPointArray& pts, double* form, double tol, long maxiter);
  void FitMinZone(const CNuPointArray& pts, double* form, CNuCircle* inner, CNuCircle* outer, double tol, long maxiter);
  ENuFitResult FitMinZoneEx(const CNuPointArray& pts, double* form, double tol, long maxiter);
  ENuFitResult FitMinZoneEx(const CNuPointArray& pts, double* form, CNuCircle* inner, CNuCircle* outer, double tol,
                            long maxiter);

 private:
  void Place(double radius, const CNuPoint& centre, const CNuVector& xaxis, const CNuVector& normal);

  double m_radius;
};

#endif
