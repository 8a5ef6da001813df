#ifndef NU_ENGINE_SHAPES_PIVOT_FRAME_H
#define NU_ENGINE_SHAPES_PIVOT_FRAME_H

#include <limits>

#include "nu/engine/shapes/axis_frame.h"

namespace nu::engine::shapes {

// A surface of revolution seen from a point M among the data. u points from the axis to M, v = w x u. The axis runs
// along w through M - height * u. Lengths stay of the size of the data when only the height is larger.
struct PivotFrame {
  Vec3 pivot;  // M, relative to the origin of the blocks and scaled as they are
  Vec3 u;
  Vec3 v;
  Vec3 w;
  double height = 0.0;
  double rise = 0.0;  // of the surface over M

  // Along u, v and w, from M.
  Vec3 Local(const Vec3& p) const {
    const Vec3 q = p - pivot;
    return {Dot(q, u), Dot(q, v), Dot(q, w)};
  }

  // The axis has this unit direction and passes through pivot + toAxis.
  void PlaceAxis(Vec3 direction, Vec3 toAxis) {
    const Vec3 across = Rejection(toAxis, direction);
    Turn(direction, -1.0 * across);
    height = std::sqrt(Dot(across, across));
  }

  // w becomes this unit direction and u that of `fromAxis` across it.
  void Turn(Vec3 direction, Vec3 fromAxis) {
    w = direction;
    u = Rejection(fromAxis, direction);
    if (IsNull(u, std::numeric_limits<double>::min())) u = AnyOrthogonal(direction);
    u = Unit(Rejection(Unit(u), direction));
    v = Cross(w, u);
  }

  void Rescale(double factor) {
    pivot = factor * pivot;
    height *= factor;
    rise *= factor;
  }
};

}  // namespace nu::engine::shapes

#endif
