#ifndef NU_GEOMETRY_LINE_H
#define NU_GEOMETRY_LINE_H

#include "nu/export.h"
#include "nu/foundation/boolean.h"
#include "nu/geometry/fit_result.h"
#include "nu/geometry/geometry.h"
#include "nu/geometry/point.h"
#include "nu/linalg/vector.h"

// The infinite straight line: the points p + t d with a point p on it and a unit direction d. The point is free along
// the line; the least-squares fit puts it at the mean of the data. Lengths are in the unit of the coordinates.
class NU_EXPORT CNuLine : public CNuGeometry {
 public:
  // The x axis.
  CNuLine();
  // The direction is normalised. Fails with CNuConstructionException ("CNuLine"):
  //   3  direction has not three components, is zero within NuGetZero(), or is not finite
  CNuLine(const CNuPoint& point, const CNuVector& direction);
  // From p to q. Fails with CNuConstructionException ("CNuLine"):
  //   10  every coordinate differs by less than NuGetLengthTol(), or the difference is not finite
  CNuLine(const CNuPoint& p, const CNuPoint& q);

  // The point and the unit direction as stored.
  CNuPoint GetPoint() const { return m_point; }
  CNuVector GetDirection() const { return m_direction; }
  void GetData(CNuPoint* point, CNuVector* direction) const;

  // Sets the line's point to p: it is required not to add p, as for all features.
  void Translate(const CNuPoint& p);
  void Translate(double dx, double dy, double dz);
  // By `angle` degrees, right-handed, about an axis through the global origin or through `centre`. An angle within
  // 6e-7 degrees of a multiple of 90 counts as that multiple: a smaller rotation does nothing.
  // Fails with CNuOperationException ("CNuVector", "rotation"), but not for an angle below NuGetZero():
  //   10  axis has not three components     9  axis is zero within NuGetZero()
  void Rotate(double angle, CNuGeometry::EAxisType axis);
  void Rotate(double angle, const CNuVector& axis);
  void Rotate(double angle, CNuGeometry::EAxisType axis, const CNuPoint& centre);
  void Rotate(double angle, const CNuVector& axis, const CNuPoint& centre);
  // Expresses the line in the local frame of g.
  void MoveTo(const CNuNonLinearGeometry& g);

  // The angle in degrees, in [0, 180], between this direction and that of the other line, or the normal of the plane: a
  // line in the plane makes 90 degrees. About an axis: in [0, 360), the rotation of this direction onto the other, by
  // CNuVector::AngleWith and with its failures.
  double AngleWith(const CNuLine& l) const;
  double AngleWith(const CNuPlane& pl) const;
  double AngleWith(const CNuLine& l, const CNuVector& axis) const;
  // Whether the angle between them, in either sense, is within `tol` degrees or the rounding of unit vectors.
  ENuBoolean IsParallelTo(const CNuLine& l, double tol) const;
  ENuBoolean IsParallelTo(const CNuPlane& pl, double tol) const;
  // Whether they are parallel within `degreeTol` degrees, or closer to each other than `lengthTol`.
  ENuBoolean IsCoplanarWith(const CNuLine& l, double degreeTol, double lengthTol) const;

  // Relations. All of them fail with CNuOperationException (the operation, "calculation"), the outputs unchanged:
  //   45  a feature is not finite, or so large that the result overflows; a distance is NaN or infinite instead
  //
  // Half-way between this line and a point: parallel to this line. Between two lines: the bisector of their smaller
  // angle through the middle of their common perpendicular; for perpendicular directions the one along their sum.
  // Between this line and a plane: the bisector of the line and its projection. That one also fails:
  //   22  the line is perpendicular to the plane within NuGetDegreeTol()
  CNuLine MidLine(const CNuPoint& p) const;
  CNuLine MidLine(const CNuLine& l) const;
  CNuLine MidLine(const CNuPlane& pl) const;
  // Perpendicular to the shortest connection of the lines, through its middle; the normal points to this line. Fails:
  //   23  the lines are closer than NuGetLengthTol()
  CNuPlane MidPlane(const CNuLine& l) const;

  // Least distances, 0 where the features meet. Lines and planes are parallel within NuGetDegreeTol().
  double DistanceTo(const CNuLine& l) const;
  double DistanceTo(const CNuCircle& circle) const;
  double DistanceTo(const CNuPlane& pl) const;
  double DistanceTo(const CNuSphSurf& sphere) const;
  // Positive inside as well, for a line parallel to the axis.
  double DistanceTo(const CNuCylSurf& cylinder) const;
  // 0 for a line parallel to a generator within NuGetDegreeTol(), which approaches the cone without limit.
  double DistanceTo(const CNuConSurf& cone) const;

  // The points of this line that are closest to the other feature, in the order of the line; returns their number.
  // - A line: one, or none for lines that are parallel within NuGetDegreeTol().
  // - A circle: one, or two that are equally close and distinct within NuGetLengthTol() or the rounding of the
  //   coordinates.
  // - A sphere, a cylinder or a cone: the points common to both. If there are none: one, or two where both nappes of
  //   the cone are equally close, but none for a line parallel to the axis of the cylinder or a generator of the cone.
  int ClosestPointsTo(const CNuLine& l, CNuPoint* p) const;
  int ClosestPointsTo(const CNuCircle& circle, CNuPoint* p1, CNuPoint* p2) const;
  int ClosestPointsTo(const CNuSphSurf& sphere, CNuPoint* p1, CNuPoint* p2) const;
  int ClosestPointsTo(const CNuCylSurf& cylinder, CNuPoint* p1, CNuPoint* p2) const;
  int ClosestPointsTo(const CNuConSurf& cone, CNuPoint* p1, CNuPoint* p2) const;

  // The points common to both, in the order of this line; returns their number. Features that come as close as
  // NuGetLengthTol(), or as the rounding of the coordinates, touch. Lines, planes and cylinders parallel to this line
  // within NuGetDegreeTol() have no common points with it, even when one lies in the other.
  // - A circle or conic: the line lies in its plane when none of its points within the radius, the larger semi-axis or
  //   the focal length of the centre or vertex is farther from that plane than the tolerance above. Any other line
  //   that is parallel to the plane of a hyperbola or parabola within NuGetDegreeTol() has no point.
  // - A hyperbola or parabola, the line in its plane: a line parallel to an asymptote, or to the axis of a parabola,
  //   within NuGetDegreeTol() has one point, the asymptote itself none.
  // - A cone: a line parallel to a generator has one point, or none where the plane of both is tangent to the cone.
  int IntersectWith(const CNuLine& l, CNuPoint* p) const;
  int IntersectWith(const CNuPlane& pl, CNuPoint* p) const;
  int IntersectWith(const CNuCircle& circle, CNuPoint* p1, CNuPoint* p2) const;
  int IntersectWith(const CNuEllipse& ellipse, CNuPoint* p1, CNuPoint* p2) const;
  int IntersectWith(const CNuHyperbola& hyperbola, CNuPoint* p1, CNuPoint* p2) const;
  int IntersectWith(const CNuParabola& parabola, CNuPoint* p1, CNuPoint* p2) const;
  int IntersectWith(const CNuSphSurf& sphere, CNuPoint* p1, CNuPoint* p2) const;
  int IntersectWith(const CNuCylSurf& cylinder, CNuPoint* p1, CNuPoint* p2) const;
  int IntersectWith(const CNuConSurf& cone, CNuPoint* p1, CNuPoint* p2) const;

  // Least-squares line (Pearson, 1901): the point is the mean point, the direction the one of largest extent, in the
  // canonical sign of CNuVector::SymmetricAxis with NuGetTol(). The deviations are the distances from the line. `form`
  // is the diameter of the cylinder about the line that holds all points; for points in one plane z = const it is the
  // largest minus the smallest signed distance, of which 0 is one (required). For two points both outputs are 0.
  // Fails with CNuBestfitException ("CNuLine"), the line and the outputs unchanged:
  //   1  fewer than 2 points     2  two points with every coordinate closer than NuGetLengthTol()
  //   2  more points, with an extent below NuGetZero()     11  a numerical failure
  void Fit(const CNuPointArray& points);
  void Fit(const CNuPointArray& points, double* form, double* sumSquares);

  // Minimum-zone line: minimises the largest distance of the points. The direction has the canonical sign of
  // CNuVector::SymmetricAxis with NuGetTol(); the point is the nearest to the mean point. `l1` and `l2` receive the
  // boundary lines, parallel to this one on opposite sides at half of `zone`.
  // - Points on one line: the least-squares line; `zone` is 0.
  // - Points with one z, or in one plane within NuGetLengthTol(): the middle line of the narrowest strip in that plane,
  //   exactly (M. I. Shamos, 1978); the boundary lines are those of the strip.
  // - Others: the axis of the smallest circular cylinder that holds the points, and its diameter, which is never above
  //   the `form` of Fit. Linear programs within a shrinking step bound and Newton's method on the contacts find a local
  //   optimum (M. R. Osborne and G. A. Watson, 1969; K. Madsen, 1975), branch and bound over all directions the global
  //   one, unless it ends at its limit, as for thousands of points on a sphere. One boundary goes through a contact.
  // Only the last case iterates; measured points take some ten steps.
  // Fails with CNuBestfitException ("CNuLine"), the line and the outputs unchanged:
  //   13  maxIter < 1     1  fewer than 2 points     2  fewer than 2 distinct points     2  as Fit
  //   12  maxIter, or 1000, steps did not converge     11  a numerical failure
  void FitMinZone(const CNuPointArray& points, double* zone, double tol, long maxIter);
  void FitMinZone(const CNuPointArray& points, double* zone, CNuLine* l1, CNuLine* l2, double tol, long maxIter);
  ENuFitResult FitMinZoneEx(const CNuPointArray& points, double* zone, double tol, long maxIter);
  ENuFitResult FitMinZoneEx(const CNuPointArray& points, double* zone, CNuLine* l1, CNuLine* l2, double tol,
                            long maxIter);

 private:
  friend struct nu::internal::FeatureAccess;

  CNuPoint m_point;
  CNuVector m_direction;
};

#endif
