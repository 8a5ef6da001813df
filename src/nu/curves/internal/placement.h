#ifndef NU_CURVES_INTERNAL_PLACEMENT_H
#define NU_CURVES_INTERNAL_PLACEMENT_H

#include "nu/foundation/exceptions.h"
#include "nu/geometry/internal/conversions.h"
#include "nu/geometry/point_array.h"

namespace nu::internal {

// Maps the points of a bounded curve, which are kept as they were given, into its current frame. The anchor was the
// origin of the frame then. The points of a curve that has not moved come back to the bit.
class Placement {
 public:
  template<class Frame>
  Placement(const Frame& frame, Vec3 anchor)
      : m_anchor(anchor),
        m_origin(Components(frame.origin)),
        m_x(Components(frame.xaxis)),
        m_z(Components(frame.zaxis)),
        m_y(Cross(m_z, m_x)),
        m_turned(m_x != Vec3{1.0, 0.0, 0.0} || m_z != Vec3{0.0, 0.0, 1.0}),
        m_moved(m_turned || m_origin != anchor) {}

  Vec3 At(Vec3 given) const { return m_moved ? m_origin + Turned(given - m_anchor) : given; }
  Vec3 Turned(Vec3 direction) const {
    return m_turned ? direction.x * m_x + direction.y * m_y + direction.z * m_z : direction;
  }

 private:
  Vec3 m_anchor, m_origin, m_x, m_z, m_y;
  bool m_turned, m_moved;
};

// The points of a curve at its current place.
inline CNuPointArray PlacedPoints(const CNuPointArray& given, const Placement& place) {
  CNuPointArray points(given);
  for (int i = 0; i < points.GetSize(); ++i) points.GetData()[i] = ToPoint(place.At(Components(points.GetData()[i])));
  return points;
}

inline const CNuPointArray& RequirePoints(const CNuPointArray& points, const char* className) {
  if (points.GetSize() > 0) return points;
  throw CNuConstructionException(NuConstructionSize, className, "size of CNuPointArray", 0, 0);
}

}  // namespace nu::internal

#endif
