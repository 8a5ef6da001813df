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
  // The normal is normalised, (0, 0, 1) if not given. A radius alone leaves the circle without a position.
  // Fails with CNuConstructionException ("CNuCircle"), checked in this order:
  //   5  "radius": not above 0, or not finite
  //   4  normal has not three components, is zero within NuGetZero(), or is not finite
  explicit CNuCircle(double radius);
  CNuCircle(double radius, const CNuPoint& centre);
  CNuCircle(double radius, const CNuPoint& centre, const CNuVector& normal);

  // The radius in the caller's length unit; centre, unit normal, unit x axis and plane in global coordinates.
  double GetRadius() const { return m_radius; }
  CNuPoint GetCentre() const;
  CNuVector GetNormal() const;
  CNuVector GetXaxis() const;
  CNuPlane GetPlane() const;
  void GetData(double* radius, CNuPoint* centre, CNuVector* normal) const;

  // The points common to both; returns their number, 0 to 2. Features that come as close as NuGetLengthTol(), or as the
  // rounding of the coordinates, touch.
  // - A line: in its order.
  // - A plane: in the order of this normal x the plane's; none for the plane of the circle.
  // - A circle: the first point of two circles in one plane lies to the left of the direction from this centre to the
  //   other, seen from the tip of this normal; none for circles that coincide.
  // Fails with CNuOperationException (the operation, "calculation"), the outputs unchanged:
  //   45  a feature is not finite, or so large that the result overflows
  int IntersectWith(const CNuLine& l, CNuPoint* p1, CNuPoint* p2) const;
  int IntersectWith(const CNuCircle& circle, CNuPoint* p1, CNuPoint* p2) const;
  int IntersectWith(const CNuPlane& pl, CNuPoint* p1, CNuPoint* p2) const;

  // n points that divide the circle evenly, counter-clockwise about the normal from the x axis; the last is the first
  // again. Fails with CNuOperationException ("CNuCircle::ToPolyline/PointArray()", "conversion"):
  //   12  n < 2 or n > 10,000,000
  CNuPointArray ToPointArray(int n) const;
  CNuPolyline ToPolyline(int n) const;

  // Least-squares circle in the least-squares plane of the points: minimises the sum of squared distances in that plane
  // by Gauss-Newton steps (W. Gander, G. H. Golub, R. Strebel, BIT 34, 1994). The iteration ends with a correction of
  // centre and radius whose squared length is below NuGetTol(), or down to rounding. Three points need no step; their
  // `form` and `sumSquares` are 0.
  // Fails with CNuBestfitException ("CNuCircle"), the circle and the outputs unchanged:
  //   13  maxIter < 1     1, 3  as CNuPlane::Fit, named "CNuPlane"
  //   11  a start radius of 0.1 NuGetLarge() or more, a radius 2^26 times as large as the points reach, or a numerical
  //       failure
  //   12  maxIter, or 100 000, steps did not converge
  void Fit(const CNuPointArray& points, long maxIter);
  void Fit(const CNuPointArray& points, double* form, double* sumSquares, long maxIter);
  ENuFitResult FitEx(const CNuPointArray& points, long maxIter);
  ENuFitResult FitEx(const CNuPointArray& points, double* form, double* sumSquares, long maxIter);

  // Minimum circumscribed circle: the smallest one in the least-squares plane of the points that encloses them all, to
  // rounding (B. Gaertner, ESA 1999). Points on one line, or of which no two are distinct, get the circle on their
  // longest edge, in a plane with that line; its radius is 0 when they coincide.
  // Fails with CNuBestfitException ("CNuCircle"), the circle unchanged:
  //   1  no point     5  points not in one plane: the form of the plane fit is above `tol`     11  a numerical failure
  void FitMin(const CNuPointArray& points, double tol);
  ENuFitResult FitMinEx(const CNuPointArray& points, double tol);

  // Maximum inscribed circle: the largest one in the least-squares plane of the points that has its centre in their
  // convex hull and none of them in its interior (M. I. Shamos, D. Hoey, FOCS 1975). It is the global optimum, to
  // rounding; of circles of the same radius the one whose centre has the least coordinate along the x axis of the
  // result, then along its y axis, whatever the order of the points. Warning: the centre of an arc of up to 180 degrees
  // is outside the hull of its points, so the result is a small circle beside the arc and not the circle of the arc.
  // Fails with CNuBestfitException ("CNuCircle"), the circle unchanged:
  //   1  fewer than 3 points     3  points on one line     5, 11  as FitMin
  void FitMax(const CNuPointArray& points, double tol);
  ENuFitResult FitMaxEx(const CNuPointArray& points, double tol);

  // Minimum-zone circle: half-way between the two circles of the narrowest annulus in the least-squares plane of the
  // points that holds them all; `zone` is the width of the annulus, `inner` and `outer` are its circles. An exchange
  // from the least-squares circle finds the annulus (T. J. Rivlin, Computing 21, 1979). Where a bound does not prove it
  // the narrowest, the crossings of Voronoi edges are searched (H. Ebara et al., 1st Canadian Conf. Comp. Geometry,
  // 1989). It is the global optimum, to rounding; of equally narrow annuli the one whose centre has the least
  // coordinate along the x axis of the result, then along its y axis.
  // - Points not in one plane get the circle and position of the thinnest torus that holds them, CNuTorSurf::FitMin.
  //   `zone` is the diameter of its tube; `inner` and `outer` are smaller and larger by half of it, `inner` at least 0.
  // - Points on one line, or of which no two are distinct, get the circle on their longest edge and `zone` 0.
  // Fails with CNuBestfitException ("CNuCircle"), the circle and the outputs unchanged:
  //   13  maxIter < 1     1  no point     3, 11, 12  as CNuTorSurf::FitMin, for points not in one plane
  //   12  the least-squares circle needs more than maxIter steps, for a maxIter of at most 50
  //   12  the exchange takes more than maxIter passes over all points, named "FindMinimalAnnulus"
  //   9  two parallel lines hold the points as closely as any annulus, to rounding: points next to one line, or the
  //      points of an ellipse that is longer than three times its width     11  a numerical failure
  void FitMinZone(const CNuPointArray& points, double* zone, double tol, long maxIter);
  void FitMinZone(const CNuPointArray& points, double* zone, CNuCircle* inner, CNuCircle* outer, double tol,
                  long maxIter);
  ENuFitResult FitMinZoneEx(const CNuPointArray& points, double* zone, double tol, long maxIter);
  ENuFitResult FitMinZoneEx(const CNuPointArray& points, double* zone, CNuCircle* inner, CNuCircle* outer, double tol,
                            long maxIter);

 private:
  friend struct nu::internal::FeatureAccess;

  void Place(double radius, const CNuPoint& centre, const CNuVector& xaxis, const CNuVector& normal);

  double m_radius;
};

#endif
