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
  // The normal is normalised. One that has not three components, is zero within NuGetZero() or is not finite:
  // CNuConstructionException cause 4.
  CNuPlane(const CNuPoint& point, const CNuVector& normal);
  // Through the point and the line; the normal is line direction x way from the line to the point. A point closer to
  // the line than NuGetLengthTol(), or a distance that is not finite: CNuConstructionException cause 9.
  CNuPlane(const CNuPoint& point, const CNuLine& line);

  CNuPoint GetPoint() const { return m_point; }
  CNuVector GetNormal() const { return m_normal; }
  void GetData(CNuPoint* point, CNuVector* normal) const;

  // Sets the plane's point to p: it is required not to add p, as for all features.
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

  // The angle between the normals in degrees, in [0, 180].
  double AngleWith(const CNuPlane& pl) const;
  // 0 for planes that are not parallel within NuGetDegreeTol().
  double DistanceTo(const CNuPlane& pl) const;
  // The same set of points, whichever way the normals point: parallel within degreeTol degrees and, at the points of
  // both, closer than lengthTol.
  ENuBoolean IsEqual(const CNuPlane& pl, double degreeTol, double lengthTol) const;
  // As for lines, within an angle of tol degrees.
  ENuBoolean IsParallelTo(const CNuPlane& pl, double tol) const;

  // What follows fails for features that are not finite, and for ones so large that the result overflows:
  // CNuOperationException cause 45, "calculation", named by the operation.
  //
  // Halfway between this plane and a point: parallel to this plane. Between a line and this plane, the plane through
  // their bisector that stands as the line's projection does; a line perpendicular to the plane within
  // NuGetDegreeTol(): CNuOperationException cause 24. Between two planes, the bisector of their smaller angle. The
  // normals point to the side of this normal.
  CNuPlane MidPlane(const CNuPoint& p) const;
  CNuPlane MidPlane(const CNuLine& l) const;
  CNuPlane MidPlane(const CNuPlane& pl) const;

  // What is common to both; returns 1, or 0 for parallel features within NuGetDegreeTol(), also when one lies in the
  // other. Two planes meet in a line along this normal x the other, whose point is near the points of both.
  int IntersectWith(const CNuLine& l, CNuPoint* p) const;
  int IntersectWith(const CNuPlane& pl, CNuLine* l) const;
  // The curves in which this plane cuts a surface, as new objects that the caller owns: the contents of `curves` are
  // replaced by them, and their number is returned. The normals of conics are this one. What comes as close as
  // NuGetLengthTol(), or as the rounding of the coordinates, touches. A plane across the axis within NuGetDegreeTol()
  // makes a circle, and so does an ellipse whose semi-axes are equal to rounding. Conics of infinite size are left out.
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
  // canonical sign of CNuVector::SymmetricAxis with NuGetTol(). `form` receives the largest minus the smallest signed
  // distance, `sumsq` the sum of the squared ones; both are 0 for three points.
  // CNuBestfitException, named "CNuPlane", for which the plane and the outputs stay as they were: cause 1 (size 3)
  // below three points; cause 3 (size 3) for points on one line within NuGetLengthTol(); cause 11 (size 0) for
  // coordinates that are not finite.
  void Fit(const CNuPointArray& pts);
  void Fit(const CNuPointArray& pts, double* form, double* sumsq);

  // Minimum-zone plane: the one whose farthest point is nearest (M. E. Houle, G. T. Toussaint, 1988). It is the global
  // optimum, found without rounding in its choices: `form`, the distance of the two parallel planes between which all
  // points lie, is that of the given coordinates to some 1e-15 of itself, but for many points in an exact plane, for
  // which it is 0 to rounding. The plane lies half way, its point is the nearest to the mean point, and its normal has
  // the canonical sign of CNuVector::SymmetricAxis with NuGetTol(). Of zones of the same width that with the largest z
  // of the normal, turned upwards, is taken, then y, then x, whatever the order of the points. `p1` and `p2` receive
  // the boundary planes, with the same normal, which points from p1 to p2; each output may be null.
  // CNuBestfitException, named "CNuPlane", for which the plane and the outputs stay as they were: cause 1 (size 3)
  // below three points; cause 3 (size 3) for points on one line by CNuPointArray::IsNoncollinear with `tol`; cause 11
  // (size 0) for coordinates that are not finite and whatever else fails on the way.
  void FitMinZone(const CNuPointArray& pts, double* form, double tol);
  void FitMinZone(const CNuPointArray& pts, double* form, CNuPlane* p1, CNuPlane* p2, double tol);

 private:
  CNuPoint m_point;
  CNuVector m_normal;
};

#endif
