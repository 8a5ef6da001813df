#ifndef NU_CURVES_PCURVE_H
#define NU_CURVES_PCURVE_H

#include <memory>

#include "nu/curves/curve.h"
#include "nu/export.h"
#include "nu/foundation/boolean.h"
#include "nu/foundation/interval.h"
#include "nu/geometry/point.h"

namespace nu::internal {
struct AxisFrame;
struct QuadricCurve;
CNuPCurve* NewPCurve(const QuadricCurve& curve, const AxisFrame& frame, double scale);
}  // namespace nu::internal

// The curve in which two quadrics meet: one connected branch of what a cylinder or a cone has in common with another
// cylinder, cone or sphere, made by their IntersectWith(). It keeps the values of both surfaces. Its frame stands on
// the one on whose generators it is described, with the z axis along that axis; motions carry the curve with its frame.
//
// The parameter u, in radians, grows around that axis with the generators. A curve that turns back at two of them goes
// there and back again in one turn of 2 pi; one with a double point, which runs smoothly through it, may take 4 pi. A
// branch that goes to infinity is cut off where it is a thousand times as far from the origin of its frame as the
// surfaces are large and near each other; its range is open at both ends.
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

  // n points in even steps of u over the range, both ends included; the last of a closed curve is the first again.
  // n < 2: CNuOperationException cause 12.
  CNuPointArray ToPointArray(int n) const;
  CNuPolyline ToPolyline(int n) const;

 private:
  friend CNuPCurve* nu::internal::NewPCurve(const nu::internal::QuadricCurve& curve,
                                            const nu::internal::AxisFrame& frame, double scale);
  CNuPCurve(const nu::internal::QuadricCurve& curve, double scale);

  std::unique_ptr<const nu::internal::QuadricCurve> m_curve;
  double m_scale;  // the unit of length of the curve's data
};

#endif
