#ifndef NU_SURFACES_CONE_H
#define NU_SURFACES_CONE_H

#include "nu/export.h"
#include "nu/geometry/fit_result.h"
#include "nu/surfaces/surface.h"

namespace nu::internal {
class QuadricIntersection;
}

// The infinite circular cone with both of its nappes: the lines through the apex that make the semi-angle with the
// axis. The apex is the origin of the position, the axis its z axis, and its x axis any direction across. A fitted
// cone's axis points from the apex into the data.
class NU_EXPORT CNuConSurf : public CNuSurface {
 public:
  // The semi-angle is in degrees. CNuConstructionException, checked in this order: cause 6 for a semi-angle that is not
  // strictly between 0 and 90, or NaN; cause 4 for a direction that has not three components; cause 3 for one that is
  // zero within NuGetZero() or not finite. The direction is normalised. A semi-angle alone leaves the cone without a
  // position, with the apex at the origin and around the z axis.
  explicit CNuConSurf(double semiAngle);
  CNuConSurf(double semiAngle, const CNuPoint& apex, const CNuVector& axisDirection);

  double GetSemiAngle() const { return m_semiAngle; }  // degrees
  CNuPoint GetApex() const;
  CNuVector GetAxisDirection() const;
  CNuLine GetAxis() const;
  void GetData(double* semiAngle, CNuPoint* apex, CNuVector* axisDirection) const;

  // Least-squares fit: the cone that minimises the sum of squared orthogonal distances of the points: of d cos a - h
  // sin a with the distance d from the axis, the height h over the apex and the semi-angle a. Behind the apex h is
  // negative, but for points that are spread over both nappes: there each counts from its own. maxIter bounds the
  // refinement steps on all points, and the fit must converge before the last permitted one: ten are plenty for
  // measured points. formError and sumSquares may be null together: the largest minus the smallest deviation, signed,
  // positive outside, and the sum of squares. CNuBestfitException, checked in this order: cause 13 for maxIter below 1;
  // cause 1 for fewer than 6 points; cause 4 for points in one plane; cause 2 for fewer than 6 that differ by
  // NuGetLengthTol(), which the check before uses as well. Cause 11 when a coordinate is not finite, when the points
  // determine no cone, or when it is a cylinder or a plane to within the rounding errors of the coordinates; cause 12
  // when the limit is reached. A failure of the start is the CNuOperationException of QuadricAxes. A step whose squared
  // length is below NuGetTol() ends the iteration and is taken. A fit that fails leaves the cone as it was.
  void Fit(const CNuPointArray& points, long maxIter);
  void Fit(const CNuPointArray& points, double* formError, double* sumSquares, long maxIter);
  // Returns 0 for success, 1 for cause 12 and 2 for any other failure; only maxIter below 1 still throws.
  ENuFitResult FitEx(const CNuPointArray& points, long maxIter);
  ENuFitResult FitEx(const CNuPointArray& points, double* formError, double* sumSquares, long maxIter);

  // Minimum-zone cone: half-way between the two parallel cones, of the same axis and semi-angle, that hold all points
  // between them at the least distance, `zone`, along the normal; those next to the least-squares cone or, where none
  // are next to it, next to another one, and never farther apart than its form. `inner` and `outer` receive the two, or
  // both the result where `zone` is below NuGetTol(): their apexes are zone / (2 sin semi-angle) from that of the
  // result along the axis. Of points on both nappes, each counted from the nappe that it is next to, `zone` is the
  // range of the deviations; the cone need not be in the middle of it, as no parallel surface of two nappes is a cone.
  // The start is that of Fit with the same limit; `tol` decides whether points are in one plane or coincide.
  // CNuBestfitException, for which the cone and the outputs stay as they were: cause 13 (size 0) for a limit below 1,
  // before all else; cause 1 (size 6) for fewer than six points; cause 4 (size 4) for points in one plane; cause 2
  // (size 6) for fewer than six distinct ones; the causes of Fit; cause 12 (size 0) when the steps use up the limit,
  // even the one that ends the search; cause 11 (size 0) for coordinates that are not finite and for
  // points along which the cone becomes a plane or a cylinder, and named "CNuConSurf::FitMinZone" when no step leads
  // down although one should. CNuOperationException: cause 46 when the deviations cannot be linearised, cause 17 when a
  // linear program of the search is not solved; neither has been seen to occur. The twins throw cause 13 only:
  // NuFitNoConvergence stands for cause 12, NuFitFailure for every other failure. They make `tol` the thread's
  // NuGetLengthTol() for as long as they run.
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
  // Where the two surfaces meet, both nappes, with the results and failures of CNuCylSurf::IntersectWith. Axes and
  // semi-angles are equal within NuGetDegreeTol().
  // - Cones with one apex: their common generators as CNuLine, none to four, or else the apex as a CNuPoint. Cones with
  //   one axis: two CNuCircle, one for equal semi-angles. Cones of one semi-angle with parallel axes: a conic, or the
  //   CNuLine along which they touch. Cones around one sphere: two conics. Cones that share a generator: that CNuLine
  //   and the other branches. Equal cones: nothing.
  // - A sphere around a point of the axis: none to two CNuCircle, and the apex as a CNuPoint.
  int IntersectWith(const CNuCylSurf& cylinder, CNuObjArray* result) const;
  int IntersectWith(const CNuConSurf& other, CNuObjArray* result) const;
  int IntersectWith(const CNuSphSurf& sphere, CNuObjArray* result) const;

 private:
  friend class CNuCylSurf;

  void Place(double semiAngle, const CNuPoint& apex, const CNuVector& axisDirection);
  // IntersectWith() of a pair that is in order.
  int IntersectOrdered(const CNuConSurf& other, CNuObjArray* result) const;
  // As CNuCylSurf::Intersect, with the distance t from the apex along the generator. `asymptotes` receives the up to
  // four angles where curve[0] = 0, so that a crossing goes to infinity: first `simple` ones, where it changes its
  // sign, then `twofold` ones. `apexSide` is the sign of the quadric at the apex.
  int Intersect(const CNuMatrix& quadric, CNuTriagPolynomial* curve, CNuInterval* range, double* asymptotes,
                int* simple, int* twofold, int* apexSide) const;
  bool IntersectSpecialCase(const CNuConSurf& other, nu::internal::QuadricIntersection& intersection) const;

  double m_semiAngle;
};

#endif
