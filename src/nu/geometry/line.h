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
  // The direction is normalised. One that has not three components, is zero within NuGetZero() or is not finite:
  // CNuConstructionException cause 3.
  CNuLine(const CNuPoint& point, const CNuVector& direction);
  // From p to q. Points that coincide, no coordinate NuGetLengthTol() or more apart, or whose difference is not finite:
  // CNuConstructionException cause 10.
  CNuLine(const CNuPoint& p, const CNuPoint& q);

  CNuPoint GetPoint() const { return m_point; }
  CNuVector GetDirection() const { return m_direction; }
  void GetData(CNuPoint* point, CNuVector* direction) const;

  // Sets the line's point to p: it is required not to add p, as for all features.
  void Translate(const CNuPoint& p);
  void Translate(double dx, double dy, double dz);
  // By `angle` degrees, right-handed, about an axis through the global origin or through `centre`. An angle within
  // 6e-7 degrees of a multiple of 90 counts as that multiple: a smaller rotation does nothing. An axis that has not
  // three components: CNuOperationException cause 10; a zero axis: cause 9; an angle below NuGetZero() changes nothing
  // and is not checked for these.
  void Rotate(double angle, CNuGeometry::EAxisType axis);
  void Rotate(double angle, const CNuVector& axis);
  void Rotate(double angle, CNuGeometry::EAxisType axis, const CNuPoint& centre);
  void Rotate(double angle, const CNuVector& axis, const CNuPoint& centre);
  // Expresses the line in the local frame of g.
  void MoveTo(const CNuNonLinearGeometry& g);

  // The angle in degrees, in [0, 180], between this direction and that of the other line, or the normal of the plane: a
  // line in the plane makes 90 degrees. About an axis: in [0, 360), the turn that brings this direction onto the other,
  // by CNuVector::AngleWith and with its failures.
  double AngleWith(const CNuLine& l) const;
  double AngleWith(const CNuPlane& pl) const;
  double AngleWith(const CNuLine& l, const CNuVector& axis) const;
  // Within an angle of tol degrees, either way, or the rounding of unit vectors.
  ENuBoolean IsParallelTo(const CNuLine& l, double tol) const;
  ENuBoolean IsParallelTo(const CNuPlane& pl, double tol) const;
  // Parallel within degreeTol degrees, or closer to each other than lengthTol.
  ENuBoolean IsCoplanarWith(const CNuLine& l, double degreeTol, double lengthTol) const;

  // What follows fails for features that are not finite, and for ones so large that the result overflows:
  // CNuOperationException cause 45, "calculation", named by the operation. A distance is NaN or infinite instead.
  //
  // Halfway between this line and a point: parallel to this line. Between two lines, the bisector of their smaller
  // angle in the middle of their common perpendicular; for perpendicular directions the one along their sum. Between
  // this line and a plane, the bisector of the line and its projection; a line perpendicular to the plane within
  // NuGetDegreeTol(): CNuOperationException cause 22.
  CNuLine MidLine(const CNuPoint& p) const;
  CNuLine MidLine(const CNuLine& l) const;
  CNuLine MidLine(const CNuPlane& pl) const;
  // Across the middle of the shortest way from this line to the other; the normal points to this line. Lines that meet,
  // closer than NuGetLengthTol(): CNuOperationException cause 23.
  CNuPlane MidPlane(const CNuLine& l) const;

  // Least distances, 0 where the features meet. Lines and planes are parallel within NuGetDegreeTol().
  double DistanceTo(const CNuLine& l) const;
  double DistanceTo(const CNuCircle& circle) const;
  double DistanceTo(const CNuPlane& pl) const;
  double DistanceTo(const CNuSphSurf& sphere) const;
  // Of a line that is parallel to the axis, from inside too.
  double DistanceTo(const CNuCylSurf& cylinder) const;
  // 0 for a line parallel to a generator within NuGetDegreeTol(), which comes ever closer to the cone.
  double DistanceTo(const CNuConSurf& cone) const;

  // The points of this line that are closest to the other feature, in the order of the line; returns how many there
  // are: for a line one, or none when they are parallel within NuGetDegreeTol(); for a circle two when both are equally
  // close, and not the same, within NuGetLengthTol() or the rounding of the coordinates, else one; for a sphere, a
  // cylinder or a cone the points in which the line meets it, or else one, two where both nappes of the cone are
  // equally close, but none for a line that is parallel to the axis of a cylinder or, where it does not meet the cone,
  // to a generator.
  int ClosestPointsTo(const CNuLine& l, CNuPoint* p) const;
  int ClosestPointsTo(const CNuCircle& circle, CNuPoint* p1, CNuPoint* p2) const;
  int ClosestPointsTo(const CNuSphSurf& sphere, CNuPoint* p1, CNuPoint* p2) const;
  int ClosestPointsTo(const CNuCylSurf& cylinder, CNuPoint* p1, CNuPoint* p2) const;
  int ClosestPointsTo(const CNuConSurf& cone, CNuPoint* p1, CNuPoint* p2) const;

  // The points common to both, in the order of this line; returns how many there are. What comes as close as
  // NuGetLengthTol(), or as the rounding of the coordinates, touches. None for parallel lines, planes and
  // cylinders, within NuGetDegreeTol(), also when one lies in the other. A line counts as one of the plane of a
  // circle or a conic when none of its points that are within the radius, the larger semi-axis or the focal length
  // of the centre or vertex is farther from that plane than this; any other one that is parallel to the plane of a
  // hyperbola or a parabola, within NuGetDegreeTol(), has no point. In the plane, a line parallel to an asymptote
  // or to the axis of a parabola, within NuGetDegreeTol(), has one point, the asymptote itself none. So has a line
  // parallel to a generator of a cone, and none where the plane along that generator touches the cone.
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
  // canonical sign of CNuVector::SymmetricAxis with NuGetTol(). `sumsq` receives the sum of the squared distances;
  // `form` for points in one plane z = const the largest minus the smallest signed distance, for others the diameter of
  // the cylinder around the line that holds all points; both are 0 for two points.
  // CNuBestfitException, named "CNuLine", for which the line and the outputs stay as they were: cause 1 (size 2) below
  // two points; cause 2 (size 2) for two points no coordinate of which is NuGetLengthTol() or more apart, or more
  // points whose extent is below NuGetZero(); cause 11 (size 0) for coordinates that are not finite.
  void Fit(const CNuPointArray& pts);
  void Fit(const CNuPointArray& pts, double* form, double* sumsq);

  // Minimum-zone line: the one whose farthest point is nearest. The direction has the canonical sign of
  // CNuVector::SymmetricAxis with NuGetTol(); the point is the nearest to the mean point. `form` receives the width of
  // the zone, `l1` and `l2` its boundary lines, parallel to this one on opposite sides at half of `form`.
  // - Points on one line within `tol`: the least-squares line; the zone is 0 wide.
  // - Points with one z, or in one plane within NuGetLengthTol(): the middle line of the narrowest strip in that plane,
  //   exactly (M. I. Shamos, 1978); the boundary lines are those of the strip.
  // - Others: the axis of the smallest circular cylinder that holds the points, and its diameter, which is never more
  //   than the `form` of Fit. It is a local optimum, by linear programs within a shrinking bound on the step and
  //   Newton's method on the contacts (M. R. Osborne and G. A. Watson, 1969; K. Madsen, 1975), and the global one by
  //   branch and bound over all directions, but where thousands of points lie on a sphere. One boundary line goes
  //   through a contact point, the other lies across.
  // maxiter counts the steps of the parameters, some ten for measured points; only the last case takes any. More than
  // 100 000 count as 100 000.
  // CNuBestfitException, named "CNuLine", for which the line and the outputs stay as they were: cause 13 (size 0) for a
  // limit that is not positive; cause 1 (size 2) below two points; cause 11 (size 0) for coordinates that are not
  // finite; cause 2 (size 2) without two points at least `tol` apart; what Fit throws; cause 12 (size 0) when the limit
  // is reached.
  void FitMinZone(const CNuPointArray& pts, double* form, double tol, long maxiter);
  void FitMinZone(const CNuPointArray& pts, double* form, CNuLine* l1, CNuLine* l2, double tol, long maxiter);
  // The same without throwing but for cause 13, and with `tol` as the length tolerance of the calling thread while the
  // fit runs: NuFitNoConvergence for cause 12, NuFitFailure for any other failure.
  ENuFitResult FitMinZoneEx(const CNuPointArray& pts, double* form, double tol, long maxiter);
  ENuFitResult FitMinZoneEx(const CNuPointArray& pts, double* form, CNuLine* l1, CNuLine* l2, double tol, long maxiter);

 private:
  CNuPoint m_point;
  CNuVector m_direction;
};

#endif
