#ifndef NU_ENGINE_POINTS_LOW_MOMENTS_H
#define NU_ENGINE_POINTS_LOW_MOMENTS_H

#include "nu/engine/points/point_blocks.h"

namespace nu::engine::points {

// Sums of x, y, z, xx, yy, zz, xy, xz and yz over all points.
inline constexpr int kLowSums = 9;
BlockSums<kLowSums> SumLowPowers(PointBlocks& points);

}  // namespace nu::engine::points

#endif
