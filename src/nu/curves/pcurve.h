#ifndef NU_CURVES_PCURVE_H
#define NU_CURVES_PCURVE_H

#include <memory>

#include "nu/curves/curve.h"
#include "nu/export.h"
#include "nu/foundation/boolean.h"
#include "nu/foundation/interval.h"
#include "nu/geometry/point.h"

namespace nu::engine::shapes {
struct AxisFrame;
struct QuadricIntersectionCurve;
}  // namespace nu::engine::shapes
namespace nu::internal {
CNuPCurve* NewPCurve(const engine::shapes::QuadricIntersectionCurve& curve, const engine::shapes::AxisFrame& frame,
                     double scale);
}

// The intersection curve of two quadrics: one connected branch of the points common to a cylinder or a cone and another
// cylinder, cone or sphere, made by their IntersectWith(). It stores the data of both surfaces. Its frame is that of
// the surface whose generators describe it, with the z axis along that axis; motions move the curve with its frame.
//
// The parameter u grows with the angle around that axis, in radians, and with the distance along its generators,
// linearly up to the size of the surfaces and with its logarithm beyond; it is continuous, however steep the curve is.
// A closed curve has a range of 2 pi; one that passes a double point of its own twice has 4 pi, and is smooth there.
//
// A branch that goes to infinity is cut off at a distance along its generators, from the origin of its frame or from
// the apex of a second cone. That is NuGetLengthTol() over DBL_EPSILON, 4504 by default, the largest coordinates known
// to this tolerance, or a thousand times the size of the surfaces and their distance where that is more. So is a branch
// that returns from so far beyond it that rounding hides the way, as of cylinders parallel to 1e-7. A branch that
// begins farther out is kept up to a thousand times its least distance. The range is open at both ends.
class NU_EXPORT CNuPCurve : public CNuCurve {
 public:
  // Lack of memory is CNuMemoryException.
  CNuPCurve(const CNuPCurve& other);
  CNuPCurve& operator=(const CNuPCurve& other);
  ~CNuPCurve() override;

  // The point at u, on both surfaces to some roundings of the coordinates; at a contact, to the tolerance of that
  // contact. u wraps around on a closed curve and is clamped to the range of an open one. NaN for a NaN.
  CNuPoint ValueAt(double u) const;
  // The range of the parameter, and whether the curve returns to its start at the end of it.
  CNuInterval GetRange() const;
  ENuBoolean IsClosed() const;

  // The distance to the nearest point of the range.
  double DistanceTo(const CNuPoint& p) const;
  // That point, or one of several that are equally near; `u` receives its parameter. NaN for a NaN.
  CNuPoint ClosestPoint(const CNuPoint& p, double* u) const;

  // n points in equal steps of u over the range, both ends included; the last of a closed curve is the first again.
  // Fails with CNuOperationException ("CNuPCurve::ToPolyline/PointArray()", "conversion"), as the two below do:
  //   12  n < 2 or n > 10,000,000; tol is not above 0, or needs more than 10,000,000 points
  CNuPointArray ToPointArray(int n) const;
  CNuPolyline ToPolyline(int n) const;
  // Points, both ends included, whose polyline is within `tol`, or the rounding of the coordinates, of the curve.
  CNuPointArray ToPointArrayWithin(double tol) const;
  CNuPolyline ToPolylineWithin(double tol) const;

  // The part of the curve with parameters in `range`, which keep their meaning; it is not closed. The range is clipped
  // to that of an open curve. On a closed one it may begin anywhere, even beyond the end, and is clipped to one turn.
  // Fails with CNuOperationException ("CNuPCurve::Part()", "calculation"): cause 45, nothing in common, or infinite.
  CNuPCurve Part(const CNuInterval& range) const;
  // Replaces the contents of the array by the parts inside the box between two corners in global coordinates, ordered
  // by the parameter, as new CNuPCurve that the caller owns; returns their number. A closed curve inside the box stays
  // one part. Parts shorter than rounding, or that touch the box from outside, are ignored.
  // Fails with CNuOperationException ("CNuPCurve::ClipTo()", "calculation"): cause 45, a corner is NaN.
  int ClipTo(const CNuPoint& lower, const CNuPoint& upper, CNuObjArray* parts) const;

 private:
  friend CNuPCurve* nu::internal::NewPCurve(const nu::engine::shapes::QuadricIntersectionCurve& curve,
                                            const nu::engine::shapes::AxisFrame& frame, double scale);
  CNuPCurve(const nu::engine::shapes::QuadricIntersectionCurve& curve, double scale);

  std::unique_ptr<const nu::engine::shapes::QuadricIntersectionCurve> m_curve;
  double m_scale;  // the unit of length of the curve's data
};

#endif
