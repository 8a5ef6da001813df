#ifndef NU_CURVES_BOUNDED_CURVE_H
#define NU_CURVES_BOUNDED_CURVE_H

#include "nu/curves/curve.h"
#include "nu/export.h"
#include "nu/geometry/point.h"

// The root of the curves that start and end somewhere: segments, arcs and what is composed of them.
class NU_EXPORT CNuBoundedCurve : public CNuCurve {
 public:
  CNuBoundedCurve(const CNuBoundedCurve&) = default;
  CNuBoundedCurve& operator=(const CNuBoundedCurve&) = default;

  virtual CNuPoint GetStartPoint() = 0;
  virtual CNuPoint GetEndPoint() = 0;
  // The end point with the tangent and the normal there.
  virtual void GetStartData(CNuPoint* point, CNuVector* tangent, CNuVector* normal) const = 0;
  virtual void GetEndData(CNuPoint* point, CNuVector* tangent, CNuVector* normal) const = 0;
  // Corners of the axis-aligned box, and a circle, around the curve.
  virtual void BoundingBox(CNuPoint* min, CNuPoint* max) const = 0;
  virtual void BoundingCircle(double* radius, CNuPoint* centre) const = 0;
  // The least distance to another curve, with the two points where it is found, and to a point.
  virtual double DistanceTo(const CNuBoundedCurve* other, CNuPoint* p1, CNuPoint* p2) const = 0;
  virtual double DistanceTo(const CNuPoint& p) const = 0;
  virtual double Length() const = 0;
  // A new curve at a signed distance, in the plane with the given normal or in the curve's own; the caller owns it.
  virtual CNuBoundedCurve* Offset(double distance, const CNuVector& normal, int shape) = 0;
  virtual CNuBoundedCurve* Offset(double distance) = 0;

 protected:
  CNuBoundedCurve() = default;
  explicit CNuBoundedCurve(ENuObjectType type) : CNuCurve(type) {}
};

#endif
