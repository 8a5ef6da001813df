#ifndef NU_SURFACES_CONE_H
#define NU_SURFACES_CONE_H

#include "nu/export.h"
#include "nu/geometry/fit_result.h"
#include "nu/surfaces/surface.h"

// The infinite circular cone with both of its nappes: the lines through the apex that make the semi-angle with the
// axis. The apex is the origin of the position, the axis its z axis, and its x axis any direction perpendicular to it.
// The axis of a fitted cone points from the apex into the data.
class NU_EXPORT CNuConSurf : public CNuSurface {
 public:
  // The semi-angle is in degrees. The direction is normalised. A semi-angle alone leaves the cone without a position,
  // with the apex at the origin and around the z axis.
  // Fails with CNuConstructionException ("CNuConSurf"), checked in this order:
  //   6  semiAngle is not strictly between 0 and 90     4  axisDirection has not three components
  //   3  axisDirection is zero within NuGetZero(), or not finite
  explicit CNuConSurf(double semiAngle);
  CNuConSurf(double semiAngle, const CNuPoint& apex, const CNuVector& axisDirection);

  // The semi-angle in degrees; the apex, the unit direction and the line of the axis in global coordinates.
  double GetSemiAngle() const { return m_semiAngle; }  // degrees
  CNuPoint GetApex() const;
  CNuVector GetAxisDirection() const;
  CNuLine GetAxis() const;
  void GetData(double* semiAngle, CNuPoint* apex, CNuVector* axisDirection) const;

  // Least-squares cone: minimises the sum of squared orthogonal distances d cos a - h sin a by Gauss-Newton steps, with
  // the distance d from the axis, the height h over the apex and the semi-angle a. Points behind the apex have a
  // negative h, but where the points are spread over both nappes each counts from its own. The iteration ends with a
  // step whose squared length is below NuGetTol(), which is applied. Ten steps suffice for measured points.
  // Fails with CNuBestfitException ("CNuConSurf"), the cone unchanged, `form` and `sumSquares` 0 but for cause 13:
  //   13  maxIter < 1     1  fewer than 6 points     4  points in one plane     2  fewer than 6 distinct points
  //   11  the points determine no cone, so that steps creep, or it is a cylinder or a plane within rounding errors
  //       of the coordinates or of its own numbers: the apex is 2^26 times as far away as the points reach, or farther
  //   12  maxIter, or 100 000, steps were used up
  // The failure of QuadricAxes passes through.
  void Fit(const CNuPointArray& points, long maxIter);
  void Fit(const CNuPointArray& points, double* form, double* sumSquares, long maxIter);
  ENuFitResult FitEx(const CNuPointArray& points, long maxIter);
  ENuFitResult FitEx(const CNuPointArray& points, double* form, double* sumSquares, long maxIter);

  // Minimum-zone cone: half-way between the two parallel cones, of the same axis and semi-angle, that hold all points
  // between them at the least distance, `zone`, along the normal. It is the optimum next to the least-squares cone by
  // Fit with the same limit or, where there is none, next to another cone; `zone` is never above the form of Fit.
  // `inner` and `outer` receive the two, or both the result where `zone` is below NuGetTol(); their apexes are
  // zone / (2 sin semi-angle) from its own, along the axis.
  // Points on both nappes count each from the nappe next to it, and `zone` is the range of their deviations. The cone
  // need not be in the middle of it, as no parallel surface of two nappes is a cone.
  // Fails with CNuBestfitException ("CNuConSurf"), the cone and the outputs unchanged:
  //   13  maxIter < 1     1  fewer than 6 points     4  points in one plane     2  fewer than 6 distinct points
  //   4, 2, 11, 12  as Fit     12  maxIter steps were used up
  //   11  no step improves the zone, named "CNuConSurf::FitMinZone"     11  the optimum is a plane or a cylinder
  // The failure of QuadricAxes passes through. CNuOperationException, neither of which has been seen to occur:
  //   46  "CNuConSurf::FitMinZone()::mzconp()": a linearisation failed     17  "CNuConSurf::acm552m()": no solution
  void FitMinZone(const CNuPointArray& points, double* zone, double tol, long maxIter);
  void FitMinZone(const CNuPointArray& points, double* zone, CNuConSurf* inner, CNuConSurf* outer, double tol,
                  long maxIter);
  ENuFitResult FitMinZoneEx(const CNuPointArray& points, double* zone, double tol, long maxIter);
  ENuFitResult FitMinZoneEx(const CNuPointArray& points, double* zone, CNuConSurf* inner, CNuConSurf* outer, double tol,
                            long maxIter);

  // The symmetric 4 x 4 matrix Q for which p Q p^T = 0 if and only if p = (x, y, z, 1) is on the cone, with p in global
  // coordinates or in those of the position of `frame`.
  CNuMatrix ToAlgebraicForm() const;
  CNuMatrix ToAlgebraicForm(const CNuNonLinearGeometry& frame) const;

  // As CNuLine::IntersectWith, the points in the order of the line, and as CNuPlane::IntersectWith.
  int IntersectWith(const CNuLine& line, CNuPoint* p1, CNuPoint* p2) const;
  int IntersectWith(const CNuPlane& plane, CNuObjArray* result) const;
  // The intersection of the two surfaces, both nappes, with the results and failures of CNuCylSurf::IntersectWith.
  // Axes and semi-angles are equal within NuGetDegreeTol().
  // - Cones with one apex: their common generators as CNuLine, none to four, or else the apex as a CNuPoint. Cones with
  //   one axis: two CNuCircle, one for equal semi-angles. Cones of one semi-angle with parallel axes: a conic, or the
  //   CNuLine along which they touch. Cones around one sphere: two conics. Cones that share a generator: that CNuLine
  //   and the other branches. Equal cones: nothing.
  // - A sphere around a point of the axis: none to two CNuCircle, and the apex as a CNuPoint.
  int IntersectWith(const CNuCylSurf& cylinder, CNuObjArray* result) const;
  int IntersectWith(const CNuConSurf& other, CNuObjArray* result) const;
  int IntersectWith(const CNuSphSurf& sphere, CNuObjArray* result) const;

 private:
  friend struct nu::internal::FeatureAccess;

  void Place(double semiAngle, const CNuPoint& apex, const CNuVector& axisDirection);
  // As CNuCylSurf::Intersect, with the distance t from the apex along the generator. `asymptotes` receives the up to
  // four angles where curve[0] = 0, so that a crossing goes to infinity: first `simple` ones, where it changes its
  // sign, then `twofold` ones. `apexSide` is the sign of the quadric at the apex.
  int Intersect(const CNuMatrix& quadric, CNuTriagPolynomial* curve, CNuInterval* range, double* asymptotes,
                int* simple, int* twofold, int* apexSide) const;

  double m_semiAngle;
};

#endif
