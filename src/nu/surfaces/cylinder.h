#ifndef NU_SURFACES_CYLINDER_H
#define NU_SURFACES_CYLINDER_H

#include "nu/export.h"
#include "nu/geometry/fit_result.h"
#include "nu/surfaces/surface.h"

// The infinite circular cylinder: the points at the distance `radius` from an axis, which is the z axis of its
// position. The x axis of the position is any direction across, and the origin any point of the axis.
class NU_EXPORT CNuCylSurf : public CNuSurface {
 public:
  // CNuConstructionException, checked in this order: cause 5, "radius", for a radius that is not above 0 and finite;
  // cause 4 for a direction that has not three components; cause 3 for one that is zero within NuGetZero() or not
  // finite. The direction is normalised. A radius alone leaves the cylinder without a position, around the z axis.
  explicit CNuCylSurf(double radius);
  CNuCylSurf(double radius, const CNuPoint& axisPoint, const CNuVector& axisDirection);

  double GetRadius() const { return m_radius; }
  CNuPoint GetAxisPoint() const;
  CNuVector GetAxisDirection() const;
  CNuLine GetAxis() const;
  void GetData(double* radius, CNuPoint* axisPoint, CNuVector* axisDirection) const;

  // The points common to the line and the cylinder, in the order of the line; returns how many there are, 0 to 2. What
  // comes as close as NuGetLengthTol(), or as the rounding of the coordinates, touches. None for a line that is
  // parallel to the axis within NuGetDegreeTol(), also when it lies on the cylinder.
  int IntersectWith(const CNuLine& line, CNuPoint* p1, CNuPoint* p2) const;
  // As CNuPlane::IntersectWith.
  int IntersectWith(const CNuPlane& plane, CNuObjArray* result) const;
  // Where the two surfaces meet, as new objects that the caller owns: the contents of `result` are replaced by them,
  // and their number is returned. Each connected branch is one CNuPCurve, but where it is a conic or a line it is that,
  // and a contact in a single point, within NuGetLengthTol() or the rounding of the coordinates, is a CNuPoint.
  // - Cylinders with parallel axes, within NuGetDegreeTol(): their common CNuLine, none to two; none for equal ones.
  //   Cylinders of one radius whose axes meet: two ellipses.
  // - A cone with the same axis, within NuGetDegreeTol(): two CNuCircle. One around a sphere that the cylinder is
  //   around, too: the two conics, or a conic and the line along which they touch. One that shares a generator: that
  //   CNuLine and the other branches.
  // - A sphere around a point of the axis: none to two CNuCircle.
  // Surfaces that are not finite: cause 45. A contact, line or circle that is not on both surfaces by this
  // tolerance, which takes a large one, or a branch that cannot be followed, as where roundings decide how it runs:
  // CNuOperationException cause 46, "calculation", and `result` stays as it was.
  int IntersectWith(const CNuCylSurf& other, CNuObjArray* result) const;
  int IntersectWith(const CNuConSurf& other, CNuObjArray* result) const;
  int IntersectWith(const CNuSphSurf& sphere, CNuObjArray* result) const;

  // The symmetric 4 x 4 matrix Q for which p Q p^T = 0 if and only if p = (x, y, z, 1) is on the cylinder, with p in
  // global coordinates or in those of the position of `frame`.
  CNuMatrix ToAlgebraicForm() const;
  CNuMatrix ToAlgebraicForm(const CNuNonLinearGeometry& frame) const;

  // Least-squares cylinder, by Gauss-Newton steps on the distances from its axis, taken from the algebraic quadric or,
  // where that leaves doubt, from the best of many directions. The axis point is the one nearest to the mean of the
  // points; the direction has its component of largest magnitude positive. The iteration ends with a step that moves
  // the axis, where the points are, by a squared length below NuGetTol(), or that is down to rounding; it fails when
  // `maxIter` steps were used up, even by one that ended it, so a limit of 1 never suffices. `formError` receives the
  // largest minus the smallest signed distance, `sumSquares` the sum of the squared ones; both are set to 0 once the
  // limit is found good.
  // CNuBestfitException, for which the cylinder stays as it was, named "CNuCylSurf" but for cause 12: cause 13 (size 0)
  // for a limit below 1, before all else; cause 1 (size 5) below five points; cause 4 (size 4) for points in one plane
  // and cause 2 (size 5) for fewer than five distinct ones by CNuGeometry::NumberDistinctPoints, both within
  // NuGetLengthTol(); cause 11 (size 0) for points that do not determine a cylinder or are not finite; cause 12 (size
  // 0, named "CNuCircle") when the limit, or 100 000 steps, is reached. The failure of QuadricAxes and lack of memory
  // pass through as they are. FitEx throws cause 13 only: NuFitNoConvergence stands for cause 12, NuFitFailure for
  // every other failure.
  void Fit(const CNuPointArray& points, long maxIter);
  void Fit(const CNuPointArray& points, double* formError, double* sumSquares, long maxIter);
  ENuFitResult FitEx(const CNuPointArray& points, long maxIter);
  ENuFitResult FitEx(const CNuPointArray& points, double* formError, double* sumSquares, long maxIter);

  // What the three minimax cylinders share. Points on one line within `tol` get the cylinder of radius 0 about their
  // least-squares line; where no two are at least `tol` apart, about the direction z through the first point. All
  // others start from the least-squares cylinder, by Fit with the same limit. The results have an axis point and a
  // direction as that of Fit. CNuBestfitException, for which the cylinder and the outputs stay as they were: cause 13
  // (size 0) for a limit below 1, before all else; cause 1 (size 1) without a point; for points on one line cause 2 of
  // the line's fit, named "CNuLine"; the causes of Fit, among them 12 named "CNuCircle"; cause 12 (size 0, named
  // "CNuCylSurf") when the minimax search uses up the limit, even by the step that ends it, or takes 1000 steps; cause
  // 11 (size 0) for coordinates that are not finite and when the search finds no optimum. The failure of QuadricAxes
  // and lack of memory pass through as they are. The twins throw cause 13 only: NuFitNoConvergence stands for cause 12,
  // NuFitFailure for every other failure. They make `tol` the thread's NuGetLengthTol() for as long as they run.

  // Minimum circumscribed cylinder: the smallest one that holds all points, by branch and bound over all directions of
  // its axis. Of thousands of points on a sphere it may not be quite the smallest.
  void FitMin(const CNuPointArray& points, double tol, long maxIter);
  ENuFitResult FitMinEx(const CNuPointArray& points, double tol, long maxIter);

  // Maximum inscribed cylinder: the one next to the least-squares cylinder with no point in its interior that cannot
  // grow by a small move of its axis; points around its axis hold it. Where there is none, as on less than half of the
  // circumference, out of which it grows for ever, it fails with cause 11. Points in one plane within `tol` get their
  // maximum inscribed circle, with the failures of CNuCircle::FitMax, named as there.
  void FitMax(const CNuPointArray& points, double tol, long maxIter);
  ENuFitResult FitMaxEx(const CNuPointArray& points, double tol, long maxIter);

  // Minimum-zone cylinder: half-way between the two coaxial cylinders that hold all points between them at the least
  // distance, `zone`; those next to the least-squares cylinder, or of flat points next to one that bends otherwise, and
  // never farther apart than its form. `inner` and `outer` receive the two, or both the result where `zone` is below
  // NuGetTol(). The inner radius of points that fill a cylinder is not above 0.
  void FitMinZone(const CNuPointArray& points, double* zone, double tol, long maxIter);
  void FitMinZone(const CNuPointArray& points, double* zone, CNuCylSurf* inner, CNuCylSurf* outer, double tol,
                  long maxIter);
  ENuFitResult FitMinZoneEx(const CNuPointArray& points, double* zone, double tol, long maxIter);
  ENuFitResult FitMinZoneEx(const CNuPointArray& points, double* zone, CNuCylSurf* inner, CNuCylSurf* outer, double tol,
                            long maxIter);

 private:
  void Place(double radius, const CNuPoint& axisPoint, const CNuVector& axisDirection);
  // IntersectWith() of a pair that is in order.
  int IntersectOrdered(const CNuCylSurf& other, CNuObjArray* result) const;
  // The quadric with the given matrix, in the frame of this cylinder, on its generators: at the angle u it has the
  // heights z with curve[0] z^2 + 2 curve[1] z + curve[2] = 0. Writes these three, and up to four ranges of u on which
  // the discriminant is monotone, so that it changes its sign once or not at all; returns the number of ranges.
  int Intersect(const CNuMatrix& quadric, CNuTriagPolynomial* curve, CNuInterval* range) const;

  double m_radius;
};

#endif
