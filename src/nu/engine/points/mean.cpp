#include "nu/engine/points/mean.h"

#include <algorithm>
#include <cstddef>

#include "nu/engine/base/error_free.h"
#include "nu/engine/base/simd.h"

namespace nu::engine::points {
namespace {

// Few additions to each lane; what they lose is a few roundings of the points' spread.
constexpr std::size_t kBlock = 64 * kLanes;

// x, y and z of a point stay together: the compiler adds neighbours in memory in one go.
struct LaneSums {
  double sum[kLanes][3];
  double lost[kLanes][3];
};

NU_ALWAYS_INLINE void AddDifference(double* lane, const double* p, double x, double y, double z) {
  lane[0] += p[0] - x;
  lane[1] += p[1] - y;
  lane[2] += p[2] - z;
}

// Sums the differences from `origin` by blocks, whose sums are added with the rounding error of each addition.
NU_KERNEL void AddBlocks(PointView points, const double* origin, LaneSums& sums) {
  const double x = origin[0];
  const double y = origin[1];
  const double z = origin[2];
  for (std::size_t begin = 0; begin < points.Size(); begin += kBlock) {
    double block[kLanes][3] = {};
    const std::size_t end = std::min(begin + kBlock, points.Size());
    std::size_t i = begin;
    for (; i + kLanes <= end; i += kLanes) {
      for (int l = 0; l < kLanes; ++l) AddDifference(block[l], points[i + l], x, y, z);
    }
    for (int l = 0; i < end; ++i, ++l) AddDifference(block[l], points[i], x, y, z);
    for (int l = 0; l < kLanes; ++l) {
      for (int k = 0; k < 3; ++k) {
        const DoubleDouble sum = TwoSum(sums.sum[l][k], block[l][k]);
        sums.lost[l][k] += sum.low;
        sums.sum[l][k] = sum.high;
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
    double sum[kLanes];
    double lost[kLanes];
    for (int l = 0; l < kLanes; ++l) {
      sum[l] = sums.sum[l][k];
      lost[l] = sums.lost[l][k];
    }
    mean[k] = points[0][k] + (SumLanes(sum) + SumLanes(lost)) / static_cast<double>(points.Size());
  }
  const Vec3 result = LoadVec3(mean);
  return IsFinite(result) ? result : PlainMean(points);
}

}  // namespace nu::engine::points
