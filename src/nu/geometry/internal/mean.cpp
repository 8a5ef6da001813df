#include "nu/geometry/internal/mean.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "nu/foundation/internal/simd.h"

namespace nu::internal {
namespace {

// Few additions to each lane; what they lose is a few roundings of the points' spread.
constexpr std::size_t kBlock = 64 * kLanes;

struct LaneSums {
  double sum[3][kLanes];
  double lost[3][kLanes];
};

// Differences from `origin`. The sums of the blocks are added with what each addition loses (D. E. Knuth, The Art of
// Computer Programming 2, 4.2.2).
NU_KERNEL void AddBlocks(PointView points, const double* origin, LaneSums& sums) {
  const double x0 = origin[0];
  const double y0 = origin[1];
  const double z0 = origin[2];
  for (std::size_t begin = 0; begin < points.Size(); begin += kBlock) {
    double block[3][kLanes] = {};
    const std::size_t end = std::min(begin + kBlock, points.Size());
    std::size_t i = begin;
    for (; i + kLanes <= end; i += kLanes) {
      for (int l = 0; l < kLanes; ++l) {
        block[0][l] += points[i + l][0] - x0;
        block[1][l] += points[i + l][1] - y0;
        block[2][l] += points[i + l][2] - z0;
      }
    }
    for (int l = 0; i < end; ++i, ++l) {
      block[0][l] += points[i][0] - x0;
      block[1][l] += points[i][1] - y0;
      block[2][l] += points[i][2] - z0;
    }
    for (int k = 0; k < 3; ++k) {
      for (int l = 0; l < kLanes; ++l) {
        const double sum = sums.sum[k][l] + block[k][l];
        const double share = sum - sums.sum[k][l];
        sums.lost[k][l] += (sums.sum[k][l] - (sum - share)) + (block[k][l] - share);
        sums.sum[k][l] = sum;
      }
    }
  }
}

Vec3 PlainMean(const PointView& points) {
  Vec3 sum;
  for (std::size_t i = 0; i < points.Size(); ++i) sum = sum + LoadVec3(points[i]);
  const double n = static_cast<double>(points.Size());
  return {sum.x / n, sum.y / n, sum.z / n};
}

}  // namespace

Vec3 MeanOf(const PointView& points) {
  LaneSums sums{};
  AddBlocks(points, points[0], sums);
  double mean[3];
  for (int k = 0; k < 3; ++k) {
    const double shift = (SumLanes(sums.sum[k]) + SumLanes(sums.lost[k])) / static_cast<double>(points.Size());
    mean[k] = points[0][k] + shift;
  }
  const Vec3 result = LoadVec3(mean);
  return IsFinite(result) ? result : PlainMean(points);
}

}  // namespace nu::internal
