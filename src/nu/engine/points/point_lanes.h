#ifndef NU_ENGINE_POINTS_POINT_LANES_H
#define NU_ENGINE_POINTS_POINT_LANES_H

#include "nu/engine/base/floating_point.h"
#include "nu/engine/base/lanes.h"
#include "nu/engine/points/point_blocks.h"

namespace nu::engine::points {

// The coordinates, and the weights, of the eight points from i on.
NU_ALWAYS_INLINE void LoadPoints(const PointBlock& block, std::size_t i, Lanes& x, Lanes& y, Lanes& z) {
  Load(block.x + i, x);
  Load(block.y + i, y);
  Load(block.z + i, z);
}
NU_ALWAYS_INLINE void LoadPoints(const PointBlock& block, std::size_t i, Lanes& x, Lanes& y, Lanes& z, Lanes& weight) {
  LoadPoints(block, i, x, y, z);
  Load(block.Weights(i), weight);
}

class LaneExtremes {
 public:
  NU_ALWAYS_INLINE void Add(const Lanes& e) {
    TakeSmaller(e, m_smallest);
    TakeLarger(e, m_largest);
  }
  NU_ALWAYS_INLINE double Smallest() const { return base::Smallest(m_smallest); }
  NU_ALWAYS_INLINE double Largest() const { return base::Largest(m_largest); }

 private:
  Lanes m_smallest = kInfinity - Lanes{};
  Lanes m_largest = Lanes{} - kInfinity;
};

}  // namespace nu::engine::points

#endif
