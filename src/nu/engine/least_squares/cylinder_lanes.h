#ifndef NU_ENGINE_LEAST_SQUARES_CYLINDER_LANES_H
#define NU_ENGINE_LEAST_SQUARES_CYLINDER_LANES_H

#include "nu/engine/least_squares/surface_kernels.h"
#include "nu/engine/shapes/pivot_frame.h"

namespace nu::engine::least_squares {

// A cylinder for the kernels, with the letters of cylinder_least_squares.cpp.
struct CylinderLanes {
  static constexpr int kUnknowns = 5;  // rise, shift, height, tilts
  static constexpr int kExtras = 2;    // z; the squared distance from M

  explicit CylinderLanes(const PivotFrame& m)
      : u(m.u),
        v(m.v),
        w(m.w),
        offset{Dot(m.u, m.pivot), Dot(m.v, m.pivot), Dot(m.w, m.pivot)},
        height(m.height),
        rise(m.rise) {}

  NU_ALWAYS_INLINE void Locate(const PointBlock& block, std::size_t i, Lanes& x, Lanes& t, Lanes& z) const {
    Lanes px, py, pz;
    LoadPoints(block, i, px, py, pz);
    x = u.x * px + u.y * py + u.z * pz - offset.x;
    t = v.x * px + v.y * py + v.z * pz - offset.y;
    z = w.x * px + w.y * py + w.z * pz - offset.z;
  }

  NU_ALWAYS_INLINE void Deviate(const PointBlock& block, std::size_t i, Lanes& e) const {
    Lanes x, t, z, lift;
    Locate(block, i, x, t, z);
    FindLift(x + height, t * t, lift);
    e = lift + (x - rise);
  }

  NU_ALWAYS_INLINE void Deviate(const PointBlock& block, std::size_t i, Lanes& e, Lanes (&column)[kUnknowns]) const {
    Lanes x, t, z, lift, inverseDistance;
    Locate(block, i, x, t, z);
    const Lanes h = x + height;
    FindLift(h, t * t, lift, inverseDistance);
    e = lift + (x - rise);
    column[0] = 1.0 - Lanes{};
    column[1] = t * inverseDistance;
    column[2] = lift * inverseDistance;
    column[3] = z * h * inverseDistance;
    column[4] = z * column[1];
  }

  NU_ALWAYS_INLINE void AddExtras(const PointBlock& block, std::size_t i, const Lanes& weight, Lanes* sum) const {
    Lanes x, t, z;
    Locate(block, i, x, t, z);
    z *= weight;
    sum[0] += z;
    sum[1] += z * z + weight * (x * x + t * t);
  }

  Vec3 u, v, w;
  Vec3 offset;  // of M along them
  double height;
  double rise;
};

}  // namespace nu::engine::least_squares

#endif
