#ifndef NU_ENGINE_SHAPES_ARC3_H
#define NU_ENGINE_SHAPES_ARC3_H

#include "nu/engine/base/elementary.h"
#include "nu/engine/shapes/box.h"
#include "nu/engine/shapes/incidence.h"
#include "nu/engine/shapes/segment3.h"

namespace nu::engine::shapes {

// The points centre + radius * (cos u x + sin u y) for u from 0 to the sweep, in radians; x points to the start. The
// ends are kept as they are known, which may be off that by rounding or by a tolerance.
struct Arc3 {
  Vec3 At(double u) const {
    const auto [s, c] = SinCos(u);
    return centre + radius * (c * x + s * y);
  }
  // In [0, 2 pi); 0 for a point on the axis.
  double AngleOf(Vec3 p) const;
  bool Contains(double angle) const { return angle <= sweep; }
  // The one about which the arc runs counter-clockwise.
  Vec3 Axis() const { return Cross(x, y); }
  Circle3 Circle() const { return {centre, Axis(), radius}; }
  Segment3 Ends() const { return {start, end}; }

  Vec3 centre, start, end, x, y;
  double radius = 0.0;
  double sweep = 0.0;
};

Vec3 ClosestOn(const Arc3& arc, Vec3 p);
Vec3 FarthestOn(const Arc3& arc, Vec3 p);
Box BoxOf(const Arc3& arc);

// Global: the ends of either, and every stationary point of the distance between the full curves.
NearPair ClosestBetween(const Segment3& segment, const Arc3& arc);
NearPair ClosestBetween(const Arc3& first, const Arc3& second);

}  // namespace nu::engine::shapes

#endif
