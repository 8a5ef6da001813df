#ifndef NU_SURFACES_CYLINDER_H
#define NU_SURFACES_CYLINDER_H

#include "nu/export.h"
#include "nu/geometry/fit_result.h"
#include "nu/surfaces/surface.h"

// The infinite circular cylinder: the points at the distance `radius` from an axis, which is the z axis of its
// position. The x axis of the position is any direction perpendicular to it, and the origin any point of the axis.
class NU_EXPORT CNuCylSurf : public CNuSurface {
 public:
  // The direction is normalised. A radius alone leaves the cylinder without a position, around the z axis.
  // Fails with CNuConstructionException ("CNuCylSurf"), checked in this order:
  //   5  "radius": not above 0, or not finite     4  axisDirection has not three components
  //   3  axisDirection is zero within NuGetZero(), or not finite
  explicit CNuCylSurf(double radius);
  CNuCylSurf(double radius, const CNuPoint& axisPoint, const CNuVector& axisDirection);

  // The radius in the caller's length unit; a point, the unit direction and the line of the axis in global coordinates.
  double GetRadius() const { return m_radius; }
  CNuPoint GetAxisPoint() const;
  CNuVector GetAxisDirection() const;
  CNuLine GetAxis() const;
  void GetData(double* radius, CNuPoint* axisPoint, CNuVector* axisDirection) const;

  // The points common to the line and the cylinder, in the order of the line; returns their number, 0 to 2. A line that
  // comes as close as NuGetLengthTol(), or as the rounding of the coordinates, touches. A line parallel to the axis
  // within NuGetDegreeTol() has no common points, even when it lies on the cylinder.
  int IntersectWith(const CNuLine& line, CNuPoint* p1, CNuPoint* p2) const;
  // As CNuPlane::IntersectWith.
  int IntersectWith(const CNuPlane& plane, CNuObjArray* result) const;
  // The intersection of the two surfaces as new objects that the caller owns. They replace the contents of `result`;
  // returns their number. Each connected branch is a CNuPCurve, or the line or conic that it is. A contact in a single
  // point, within NuGetLengthTol() or the rounding of the coordinates, is a CNuPoint.
  // - Cylinders with parallel axes, within NuGetDegreeTol(): their common CNuLine, none to two; none for equal ones.
  //   Cylinders of one radius whose axes meet: two ellipses.
  // - A cone with the same axis, within NuGetDegreeTol(): two CNuCircle. A cone around a sphere that the cylinder is
  //   around as well: two conics, or a conic and the line of contact. A cone with a common generator: that CNuLine and
  //   the other branches.
  // - A sphere with its centre on the axis: none to two CNuCircle.
  // Fails with CNuOperationException (the operation, "calculation"), `result` unchanged:
  //   45  a surface is not finite
  //   46  a contact, line or circle is not on both surfaces within a large tolerance; rounding decides about a branch
  int IntersectWith(const CNuCylSurf& other, CNuObjArray* result) const;
  int IntersectWith(const CNuConSurf& other, CNuObjArray* result) const;
  int IntersectWith(const CNuSphSurf& sphere, CNuObjArray* result) const;

  // The symmetric 4 x 4 matrix Q for which p Q p^T = 0 if and only if p = (x, y, z, 1) is on the cylinder, with p in
  // global coordinates or in those of the position of `frame`.
  CNuMatrix ToAlgebraicForm() const;
  CNuMatrix ToAlgebraicForm(const CNuNonLinearGeometry& frame) const;

  // Least-squares cylinder: minimises the sum of squared distances by Gauss-Newton steps. The start is the algebraic
  // quadric or, where that is ambiguous, the best of many directions. The axis point is the one nearest to the mean of
  // the points; the direction has its component of largest magnitude positive. The iteration ends with a step that
  // moves the axis among the points by a squared length below NuGetTol(), or by rounding errors.
  // Fails with CNuBestfitException ("CNuCylSurf"), the cylinder unchanged, `form` and `sumSquares` 0 but for cause 13:
  //   13  maxIter < 1     1  fewer than 5 points     4  points in one plane     2  fewer than 5 distinct points
  //   11  the points determine no cylinder, so that steps creep, or its radius is 2^26 times as large as they reach
  //   12  maxIter, or 100 000, steps were used up; named "CNuCircle" (required)
  // The failure of QuadricAxes passes through.
  void Fit(const CNuPointArray& points, long maxIter);
  void Fit(const CNuPointArray& points, double* form, double* sumSquares, long maxIter);
  ENuFitResult FitEx(const CNuPointArray& points, long maxIter);
  ENuFitResult FitEx(const CNuPointArray& points, double* form, double* sumSquares, long maxIter);

  // The minimax cylinders start from the least-squares cylinder by Fit with the same limit, and have their axis point
  // and direction as there. Points on one line within `tol` get the cylinder of radius 0 about their least-squares
  // line, or about the direction z through the first point where no two of them are distinct.
  // Fails with CNuBestfitException ("CNuCylSurf"), the cylinder and the outputs unchanged:
  //   13  maxIter < 1     1  no point     2  as CNuLine::Fit and named as there, for points on one line
  //   1, 4, 2, 11, 12  as Fit, 12 named "CNuCircle"     11  no optimum was found
  //   12  maxIter steps, or 1000 but for a zone, were used up
  // The failure of QuadricAxes passes through.

  // Minimum circumscribed cylinder: the smallest one that holds all points, by branch and bound over all directions of
  // its axis. Where that ends at its limit, as for thousands of points on a sphere, it may not be quite the smallest.
  void FitMin(const CNuPointArray& points, double tol, long maxIter);
  ENuFitResult FitMinEx(const CNuPointArray& points, double tol, long maxIter);

  // Maximum inscribed cylinder: the one next to the least-squares cylinder that has no point in its interior and cannot
  // grow by a small move of its axis. Points all around the axis hold it; points on less than half of the circumference
  // do not, and the fit fails with cause 11. Points in one plane within `tol` get their maximum inscribed circle, with
  // the failures of CNuCircle::FitMax, named as there.
  void FitMax(const CNuPointArray& points, double tol, long maxIter);
  ENuFitResult FitMaxEx(const CNuPointArray& points, double tol, long maxIter);

  // Minimum-zone cylinder: half-way between the two coaxial cylinders that hold all points between them at the least
  // distance, `zone`, which is never above the form of the least-squares cylinder. It is the optimum next to that
  // cylinder or, where there is none, next to another one. `inner` and `outer` receive the two, or both the
  // result where `zone` is below NuGetTol(). The inner radius of points that fill a cylinder is not above 0.
  void FitMinZone(const CNuPointArray& points, double* zone, double tol, long maxIter);
  void FitMinZone(const CNuPointArray& points, double* zone, CNuCylSurf* inner, CNuCylSurf* outer, double tol,
                  long maxIter);
  ENuFitResult FitMinZoneEx(const CNuPointArray& points, double* zone, double tol, long maxIter);
  ENuFitResult FitMinZoneEx(const CNuPointArray& points, double* zone, CNuCylSurf* inner, CNuCylSurf* outer, double tol,
                            long maxIter);

 private:
  friend struct nu::internal::FeatureAccess;

  void Place(double radius, const CNuPoint& axisPoint, const CNuVector& axisDirection);
  // The quadric with the given matrix, in the frame of this cylinder, on its generators: at the angle u it has the
  // heights z with curve[0] z^2 + 2 curve[1] z + curve[2] = 0. Writes these three, and up to four ranges of u on which
  // the discriminant is monotone, so that it changes its sign once or not at all; returns the number of ranges.
  int Intersect(const CNuMatrix& quadric, CNuTriagPolynomial* curve, CNuInterval* range) const;

  double m_radius;
};

#endif
