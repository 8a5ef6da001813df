#include "nu/engine/points/low_moments.h"

#include "nu/engine/points/point_lanes.h"

namespace nu::engine::points {
namespace {

NU_KERNEL void SumBlock(const PointBlock& block, double (&sums)[kLowSums]) {
  Lanes sum[kLowSums] = {};
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    Lanes x, y, z, weight;
    LoadPoints(block, i, x, y, z, weight);
    x *= weight;
    y *= weight;
    z *= weight;
    sum[0] += x;
    sum[1] += y;
    sum[2] += z;
    sum[3] += x * x;
    sum[4] += y * y;
    sum[5] += z * z;
    sum[6] += x * y;
    sum[7] += x * z;
    sum[8] += y * z;
  }
  for (int k = 0; k < kLowSums; ++k) sums[k] = Sum(sum[k]);
}

}  // namespace

BlockSums<kLowSums> SumLowPowers(PointBlocks& points) {
  return SumOver<kLowSums>(points, SumBlock);
}

}  // namespace nu::engine::points
