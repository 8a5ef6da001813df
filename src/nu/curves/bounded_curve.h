#ifndef NU_CURVES_BOUNDED_CURVE_H
#define NU_CURVES_BOUNDED_CURVE_H

#include "nu/curves/curve.h"
#include "nu/export.h"
#include "nu/geometry/point.h"

// The root of the curves with two ends: segments, arcs and chains of them. Each has a frame from construction on, with
// the axes of the global frame and its origin in one of the curve's own points; the motions of the base class move that
// frame and the curve with it. Before a motion the curve returns its points to the bit.
class NU_EXPORT CNuBoundedCurve : public CNuCurve {
 public:
  CNuBoundedCurve(const CNuBoundedCurve&) = default;
  CNuBoundedCurve& operator=(const CNuBoundedCurve&) = default;

  // The ends in global coordinates.
  virtual CNuPoint GetStartPoint() = 0;
  virtual CNuPoint GetEndPoint() = 0;
  // The same for a constant curve; the operations above do not change theirs, although they are not const.
  CNuPoint GetStartPoint() const { return const_cast<CNuBoundedCurve*>(this)->GetStartPoint(); }
  CNuPoint GetEndPoint() const { return const_cast<CNuBoundedCurve*>(this)->GetEndPoint(); }
  // The end point with the unit tangent, in the direction of the curve, and the unit normal of the curve's plane.
  virtual void GetStartData(CNuPoint* point, CNuVector* tangent, CNuVector* normal) const = 0;
  virtual void GetEndData(CNuPoint* point, CNuVector* tangent, CNuVector* normal) const = 0;
  // Corners of the smallest box along the axes, and centre and radius of the smallest circle, around the curve; around
  // one that is not planar, of the smallest sphere. NaN where coordinates are not finite.
  virtual void BoundingBox(CNuPoint* min, CNuPoint* max) const = 0;
  virtual void BoundingCircle(double* radius, CNuPoint* centre) const = 0;
  // The least distance to another curve, with the closest points on this one and on the other, and to a point.
  // Fails with CNuOperationException ("CNuBoundedCurve::DistanceTo()", "calculation"):
  //   45  other is null, or a curve of a class that is not the library's
  virtual double DistanceTo(const CNuBoundedCurve* other, CNuPoint* p1, CNuPoint* p2) const = 0;
  virtual double DistanceTo(const CNuPoint& p) const = 0;
  // The length along the curve.
  virtual double Length() const = 0;
  // A new curve that the caller owns, at a distance in the plane with the given normal or, with sharp corners, in the
  // curve's own. A positive distance is to the right of the curve, seen from the tip of the normal: it enlarges a curve
  // that runs counter-clockwise. `shape` 0 asks for sharp corners, 1 for round ones; a curve without corners ignores
  // it. Fails with CNuOperationException (Offset() of the class, "Offset"), then as the class says:
  //   10  normal has not three components     9  normal is zero within NuGetZero(), or not finite
  //   29  distance is not finite
  virtual CNuBoundedCurve* Offset(double distance, const CNuVector& normal, int shape) = 0;
  virtual CNuBoundedCurve* Offset(double distance) = 0;

 protected:
  CNuBoundedCurve() = default;
  explicit CNuBoundedCurve(ENuObjectType type) : CNuCurve(type) {}
};

#endif
