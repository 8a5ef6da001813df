#ifndef NU_GEOMETRY_PLANE_H
#define NU_GEOMETRY_PLANE_H

#include "nu/export.h"
#include "nu/foundation/boolean.h"
#include "nu/geometry/geometry.h"
#include "nu/geometry/point.h"
#include "nu/linalg/vector.h"

// The infinite plane: the points p with (p - P0) % n = 0, with a point P0 on it and a unit normal n.
class NU_EXPORT CNuPlane : public CNuGeometry {
 public:
  // The xy plane, with the normal along z.
  CNuPlane();
  // The normal is normalised. Fails with CNuConstructionException ("CNuPlane"):
  //   4  normal has not three components, is zero within NuGetZero(), or is not finite
  CNuPlane(const CNuPoint& point, const CNuVector& normal);
  // Through the point and the line; the normal is the line's direction x the vector from the line to the point.
  // Fails with CNuConstructionException ("CNuPlane"):
  //   9  the point is closer to the line than NuGetLengthTol(), or the distance is not finite
  CNuPlane(const CNuPoint& point, const CNuLine& line);

  // The point and the unit normal as stored.
  CNuPoint GetPoint() const { return m_point; }
  CNuVector GetNormal() const { return m_normal; }
  void GetData(CNuPoint* point, CNuVector* normal) const;

  // Sets the plane's point to p: it is required not to add p, as for all features.
  void Translate(const CNuPoint& p);
  void Translate(double dx, double dy, double dz);
  // As CNuLine::Rotate, in degrees.
  void Rotate(double angle, CNuGeometry::EAxisType axis);
  void Rotate(double angle, const CNuVector& axis);
  void Rotate(double angle, CNuGeometry::EAxisType axis, const CNuPoint& centre);
  void Rotate(double angle, const CNuVector& axis, const CNuPoint& centre);

  // The angle between the normals in degrees, in [0, 180].
  double AngleWith(const CNuPlane& pl) const;
  // 0 for planes that are not parallel within NuGetDegreeTol().
  double DistanceTo(const CNuPlane& pl) const;
  // Whether they are the same set of points, whatever the sense of the normals: parallel within `degreeTol` degrees and
  // closer than `lengthTol` at the points of both.
  ENuBoolean IsEqual(const CNuPlane& pl, double degreeTol, double lengthTol) const;
  // As CNuLine::IsParallelTo, within `tol` degrees.
  ENuBoolean IsParallelTo(const CNuPlane& pl, double tol) const;

  // Relations. All of them fail with CNuOperationException (the operation, "calculation"), the outputs unchanged:
  //   45  a feature is not finite, or so large that the result overflows
  //
  // Half-way between this plane and a point: parallel to this plane. Between two planes: the bisector of their smaller
  // angle. Between a line and this plane: the plane through their bisector and the perpendicular to the line and its
  // projection. The normals point to the side of this normal. Between a line and this plane also fails:
  //   24  the line is perpendicular to the plane within NuGetDegreeTol()
  CNuPlane MidPlane(const CNuPoint& p) const;
  CNuPlane MidPlane(const CNuLine& l) const;
  CNuPlane MidPlane(const CNuPlane& pl) const;

  // The point or line common to both; returns 1, or 0 for features parallel within NuGetDegreeTol(), even when one lies
  // in the other. The common line of two planes runs along this normal x the other; its point is near both points.
  int IntersectWith(const CNuLine& l, CNuPoint* p) const;
  int IntersectWith(const CNuPlane& pl, CNuLine* l) const;
  // The intersection with a surface as new objects that the caller owns. They replace the contents of `curves`; returns
  // their number. The normals of conics are this one. Features that come as close as NuGetLengthTol(), or as the
  // rounding of the coordinates, touch. A plane perpendicular to the axis within NuGetDegreeTol() makes a circle, and
  // so does an ellipse whose semi-axes are equal to rounding. Conics of infinite size are left out.
  // - A sphere: a CNuCircle, the CNuPoint of a plane that touches it, or nothing.
  // - A cylinder: a CNuEllipse or a CNuCircle; of a plane parallel to the axis within NuGetDegreeTol(), two CNuLine in
  //   the order of this normal x axis, one where it touches, or nothing.
  // - A cone, with both nappes: a CNuEllipse, a CNuCircle or both branches of a CNuHyperbola; of a plane parallel to a
  //   generator within NuGetDegreeTol(), a CNuParabola; of one through the apex, two CNuLine in the order of this
  //   normal x axis, the one along which it touches, or the apex as a CNuPoint.
  // Lines, and the x axis of ellipses and hyperbolas, run along the axis of the surface as it appears in the plane.
  int IntersectWith(const CNuSphSurf& sphere, CNuObjArray* curves) const;
  int IntersectWith(const CNuCylSurf& cylinder, CNuObjArray* curves) const;
  int IntersectWith(const CNuConSurf& cone, CNuObjArray* curves) const;

  // Least-squares plane (Pearson, 1901): the point is the mean point, the normal the direction of least extent, in the
  // canonical sign of CNuVector::SymmetricAxis with NuGetTol(). The deviations are the signed distances, of which 0 is
  // one for `form` (required). For three points both outputs are 0.
  // Fails with CNuBestfitException ("CNuPlane"), the plane and the outputs unchanged:
  //   1  fewer than 3 points     3  points on one line     11  a numerical failure
  void Fit(const CNuPointArray& points);
  void Fit(const CNuPointArray& points, double* form, double* sumSquares);

  // Minimum-zone plane: minimises the largest distance of the points (M. E. Houle, G. T. Toussaint, 1988). It is the
  // global optimum, found without rounding in its decisions: `zone`, the distance of the two parallel planes between
  // which all points lie, is exact to some 1e-15 of itself, except for many points in an exact plane, where it is 0 to
  // rounding. The plane lies half-way, its point is the nearest to the mean point, and its normal has the canonical
  // sign of CNuVector::SymmetricAxis with NuGetTol(). Of zones of the same width that with the largest z of the normal,
  // turned upwards, is taken, then y, then x, whatever the order of the points. `p1` and `p2` receive the boundary
  // planes, with the same normal, which points from p1 to p2.
  // Fails with CNuBestfitException ("CNuPlane"), the plane and the outputs unchanged:
  //   1  fewer than 3 points     3  points on one line, by CNuPointArray::IsNoncollinear with `tol`
  //   11  a numerical failure
  void FitMinZone(const CNuPointArray& points, double* zone, double tol);
  void FitMinZone(const CNuPointArray& points, double* zone, CNuPlane* p1, CNuPlane* p2, double tol);

 private:
  friend struct nu::internal::FeatureAccess;

  CNuPoint m_point;
  CNuVector m_normal;
};

#endif
