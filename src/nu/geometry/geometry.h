#ifndef NU_GEOMETRY_GEOMETRY_H
#define NU_GEOMETRY_GEOMETRY_H

#include "nu/export.h"
#include "nu/foundation/object.h"
#include "nu/fwd.h"

// The root of the geometric features, and the helpers that need no feature: rotation matrices, tests of point sets,
// projections.
class NU_EXPORT CNuGeometry : public CNuObject {
 public:
  enum EAxisType { X_AXIS = 0, Y_AXIS = 1, Z_AXIS = 2 };
  // Where a point lies: left or right of a line, outside or inside a curve or surface, or on it. The three tests share
  // their values.
  enum ESideType { SIDE_LEFT = 0, SIDE_OUTSIDE = 0, SIDE_RIGHT = 1, SIDE_INSIDE = 1, SIDE_ON = 2 };
  using ELineSideType = ESideType;
  using ECurveSideType = ESideType;
  using ESurfaceSideType = ESideType;

  CNuGeometry(const CNuGeometry&) = default;
  CNuGeometry& operator=(const CNuGeometry&) = default;

  // 1 when the points lie on one line, else 0 and the unit normal of the plane that they span is written to `normal`,
  // in the canonical sign of CNuVector::SymmetricAxis. tol bounds coordinates of differences and of their cross
  // product, not a distance; the fits judge by distances instead, see nu/geometry/fit_result.h.
  static int AreCollinear(const CNuPointArray& pts, CNuVector* normal, double tol);
  // 1 when the points lie in one plane within the distance tol, else 0. `plane` receives a plane through the first
  // point: the common one, or for collinear points one across their line; it is left alone below four points.
  static int AreCoplanar(const CNuPointArray& pts, double tol);
  static int AreCoplanar(const CNuPointArray& pts, CNuPlane* plane, double tol);
  // 1 when at least n points, taken greedily in order, have a CNuPoint::DistanceTo of tol or more from each other, else
  // 0. Reads NuGetZero() as DistanceTo does.
  static int NumberDistinctPoints(const CNuPointArray& pts, int n, double tol);

  // The coordinates (u, v, 0) of the points in a plane through the global origin, with the in-plane axes that
  // CNuVector::OrthonormalXY gives (which normalises `normal`), or in a frame whose axes are taken as they are. Not
  // three components: cause 10 for a normal, 5 for the axes; a zero normal: cause 9.
  static CNuPointArray Projection2D(const CNuPointArray& pts, CNuVector& normal);
  static CNuPointArray Projection2D(const CNuPointArray& pts, const CNuPoint& origin, const CNuVector& xaxis,
                                    const CNuVector& yaxis);

  // The 3 x 3 matrix M that turns a row vector v, as v * M, by `angle` degrees about a coordinate axis or a direction,
  // right-handed: its rows are where the axes go. An angle whose cosine or sine rounds to 1 or -1, within 6e-7 degrees
  // of a multiple of 90, gives that multiple, without the linear term of a small rotation. An axis that has not three
  // components: CNuOperationException cause 10; a zero axis, within NuGetZero(): cause 9.
  static CNuMatrix RotationMatrix(double angle, EAxisType axis);
  static CNuMatrix RotationMatrix(double angle, const CNuVector& axis);

 protected:
  CNuGeometry() = default;
  explicit CNuGeometry(ENuObjectType type) : CNuObject(type) {}
};

#endif
