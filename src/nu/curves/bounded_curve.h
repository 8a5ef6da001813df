#ifndef NU_CURVES_BOUNDED_CURVE_H
#define NU_CURVES_BOUNDED_CURVE_H

#include "nu/curves/curve.h"
#include "nu/export.h"
#include "nu/geometry/point.h"

// The root of the curves that start and end somewhere: segments, arcs and what is composed of them. Each has a frame
// from the start, with the axes of the global frame and its origin in one of the curve's own points; the motions of the
// base class move that frame and the curve with it. Until then the curve gives its points back to the bit.
class NU_EXPORT CNuBoundedCurve : public CNuCurve {
 public:
  CNuBoundedCurve(const CNuBoundedCurve&) = default;
  CNuBoundedCurve& operator=(const CNuBoundedCurve&) = default;

  virtual CNuPoint GetStartPoint() = 0;
  virtual CNuPoint GetEndPoint() = 0;
  // The same of a constant curve: the operations above change none, though their interface does not say so.
  CNuPoint GetStartPoint() const { return const_cast<CNuBoundedCurve*>(this)->GetStartPoint(); }
  CNuPoint GetEndPoint() const { return const_cast<CNuBoundedCurve*>(this)->GetEndPoint(); }
  // The end point with the unit tangent, in the direction of the curve, and the unit normal of the curve's plane.
  virtual void GetStartData(CNuPoint* point, CNuVector* tangent, CNuVector* normal) const = 0;
  virtual void GetEndData(CNuPoint* point, CNuVector* tangent, CNuVector* normal) const = 0;
  // Corners of the smallest box along the axes, and centre and radius of the smallest circle, around the curve; around
  // one that is not planar, of the smallest sphere. NaN where coordinates are not finite.
  virtual void BoundingBox(CNuPoint* min, CNuPoint* max) const = 0;
  virtual void BoundingCircle(double* radius, CNuPoint* centre) const = 0;
  // The least distance to another curve, with the point on this one and the point on the other where it is found, and
  // to a point. A curve of a kind that is not the library's: CNuOperationException cause 45.
  virtual double DistanceTo(const CNuBoundedCurve* other, CNuPoint* p1, CNuPoint* p2) const = 0;
  virtual double DistanceTo(const CNuPoint& p) const = 0;
  virtual double Length() const = 0;
  // A new curve that the caller owns, at a distance in the plane with the given normal or, with sharp corners, in the
  // curve's own. A positive distance is to the right of the curve, seen from the tip of the normal: it makes what runs
  // counter-clockwise larger. `shape` 0 asks for sharp corners, 1 for round ones; what has no corners does not look at
  // it. CNuOperationException, named by the class's Offset(): a normal that has not three components: cause 10, that is
  // zero within NuGetZero() or not finite: cause 9; a distance that is not finite: cause 29; then as the class says.
  virtual CNuBoundedCurve* Offset(double distance, const CNuVector& normal, int shape) = 0;
  virtual CNuBoundedCurve* Offset(double distance) = 0;

 protected:
  CNuBoundedCurve() = default;
  explicit CNuBoundedCurve(ENuObjectType type) : CNuCurve(type) {}
};

#endif
