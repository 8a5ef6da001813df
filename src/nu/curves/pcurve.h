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

// The curve in which two quadrics meet: one connected branch of what a cylinder or a cone has in common with another
// cylinder, cone or sphere, made by their IntersectWith(). It keeps the values of both surfaces. Its frame stands on
// the one on whose generators it is described, with the z axis along that axis; motions carry the curve with its frame.
//
// The parameter u grows with the angle around that axis, in radians, and with the way along its generators, evenly up
// to the size of the surfaces and with its logarithm beyond that; it is continuous, however steep the curve is. A
// closed curve takes a turn of 2 pi, one that passes a double point of its own twice takes 4 pi, smoothly through it.
//
// A branch that goes to infinity is cut off where it is as far along its generators, from the origin of its frame or
// from the apex of a second cone, as a part can be whose coordinates are known to NuGetLengthTol(): this over
// DBL_EPSILON, 4504 by default, or a thousand times the size of the surfaces and their distance where that is more. A
// branch that begins farther out is kept up to a thousand times its least distance. The range is open at both ends.
class NU_EXPORT CNuPCurve : public CNuCurve {
 public:
  // No memory: CNuMemoryException.
  CNuPCurve(const CNuPCurve& other);
  CNuPCurve& operator=(const CNuPCurve& other);
  ~CNuPCurve() override;

  // On both surfaces, to some roundings of the coordinates. Where they touch, as far apart there as their contact is
  // judged by. A closed curve takes u around; beyond the range of another one is its end. NaN for a NaN.
  CNuPoint ValueAt(double u) const;
  CNuInterval GetRange() const;
  ENuBoolean IsClosed() const;

  // From the nearest point of the range.
  double DistanceTo(const CNuPoint& p) const;
  // That point, of several as near one of them; `u` receives its parameter, unless it is null. NaN for a NaN.
  CNuPoint ClosestPoint(const CNuPoint& p, double* u) const;

  // n points in even steps of u over the range, both ends included; the last of a closed curve is the first again.
  // n below 2 or above 10,000,000: CNuOperationException cause 12.
  CNuPointArray ToPointArray(int n) const;
  CNuPolyline ToPolyline(int n) const;
  // Points, both ends included, whose polyline the curve leaves by no more than tol, or by the rounding of its
  // coordinates. A tol that is not above 0, or one that asks for more than 10^7 points: CNuOperationException
  // cause 12, "conversion".
  CNuPointArray ToPointArrayWithin(double tol) const;
  CNuPolyline ToPolylineWithin(double tol) const;

  // The part with parameters in the range, which keep their meaning; it is not closed. The range is cut to that of an
  // open curve. On a closed one it may begin anywhere, beyond the end too, and is cut to one turn. Nothing in common:
  // CNuOperationException cause 45, "calculation".
  CNuPCurve Part(const CNuInterval& range) const;
  // Replaces the contents of the array by the parts inside the box between two corners in global coordinates, ordered
  // by the parameter, as new CNuPCurve that the caller owns; returns their number. A closed curve that is inside is
  // one. A part that is shorter than rounding, or touches the box from outside, is left out. A NaN:
  // CNuOperationException cause 45, "calculation".
  int ClipTo(const CNuPoint& lower, const CNuPoint& upper, CNuObjArray* parts) const;

 private:
  friend CNuPCurve* nu::internal::NewPCurve(const nu::engine::shapes::QuadricIntersectionCurve& curve,
                                            const nu::engine::shapes::AxisFrame& frame, double scale);
  CNuPCurve(const nu::engine::shapes::QuadricIntersectionCurve& curve, double scale);

  std::unique_ptr<const nu::engine::shapes::QuadricIntersectionCurve> m_curve;
  double m_scale;  // the unit of length of the curve's data
};

#endif
