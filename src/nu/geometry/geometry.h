#ifndef NU_GEOMETRY_GEOMETRY_H
#define NU_GEOMETRY_GEOMETRY_H

#include "nu/export.h"
#include "nu/foundation/object.h"
#include "nu/fwd.h"

// The root of the geometric features, and the helpers that need no feature: rotation matrices, tests of point sets,
// projections. Relations between features are operations of each of them; where one forwards to the other, a failure
// has the name of the one that carries it out: CNuPlane::IntersectWith a line fails as that of CNuLine.
class NU_EXPORT CNuGeometry : public CNuObject {
 public:
  // The coordinate axes.
  enum EAxisType { X_AXIS = 0, Y_AXIS = 1, Z_AXIS = 2 };
  // Where a point lies: left or right of a line, outside or inside a curve or surface, or on it. The three tests share
  // their values.
  enum ESideType { SIDE_LEFT = 0, SIDE_OUTSIDE = 0, SIDE_RIGHT = 1, SIDE_INSIDE = 1, SIDE_ON = 2 };
  using ELineSideType = ESideType;
  using ECurveSideType = ESideType;
  using ESurfaceSideType = ESideType;

  CNuGeometry(const CNuGeometry&) = default;
  CNuGeometry& operator=(const CNuGeometry&) = default;

  // 1 when the points lie on one line. Else 0, and `normal` receives the unit normal of the plane that they span, in
  // the canonical sign of CNuVector::SymmetricAxis. `tol` bounds coordinates of differences and of their cross product,
  // not a distance; the fits judge by distances, see nu/geometry/fit_result.h.
  static int AreCollinear(const CNuPointArray& points, CNuVector* normal, double tol);
  // 1 when the points lie in one plane within the distance `tol`, else 0. `plane` receives a plane through the first
  // point: the common one, or any through the line of collinear points. It is unchanged for fewer than four points.
  static int AreCoplanar(const CNuPointArray& points, double tol);
  static int AreCoplanar(const CNuPointArray& points, CNuPlane* plane, double tol);
  // 1 when at least n points, taken greedily in order, have a CNuPoint::DistanceTo of `tol` or more from each other,
  // else 0. Reads NuGetZero() as DistanceTo does.
  static int NumberDistinctPoints(const CNuPointArray& points, int n, double tol);

  // The coordinates (u, v, 0) of the points in a plane through the global origin, with the in-plane axes of
  // CNuVector::OrthonormalXY (which normalises `normal`), or in a frame whose axes are taken as they are.
  // Fails with CNuOperationException:
  //   10  normal has not three components     9  normal is zero     5  an axis has not three components
  static CNuPointArray Projection2D(const CNuPointArray& points, CNuVector& normal);
  static CNuPointArray Projection2D(const CNuPointArray& points, const CNuPoint& origin, const CNuVector& xaxis,
                                    const CNuVector& yaxis);

  // The 3 x 3 matrix M that rotates a row vector v, as v * M, by `angle` degrees about a coordinate axis or a
  // direction, right-handed: its rows are the images of the axes. An angle whose cosine or sine rounds to 1 or -1,
  // within 6e-7 degrees of a multiple of 90, gives that multiple, without the linear term of a small rotation. Fails
  // with CNuOperationException:
  //   10  axis has not three components     9  axis is zero within NuGetZero()
  static CNuMatrix RotationMatrix(double angle, EAxisType axis);
  static CNuMatrix RotationMatrix(double angle, const CNuVector& axis);

 protected:
  CNuGeometry() = default;
  explicit CNuGeometry(ENuObjectType type) : CNuObject(type) {}
};

#endif
