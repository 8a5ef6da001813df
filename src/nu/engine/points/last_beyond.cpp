#include "nu/engine/points/last_beyond.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "nu/engine/base/simd.h"

namespace nu::engine::points {
namespace {

// Most sets show a height beyond among their last points; a set that has none is read in long stretches, forward,
// where the processor fetches ahead.
constexpr int kFirstBlock = 64;
constexpr int kLargestBlock = 8192;

NU_ALWAYS_INLINE double Height(const double* p, Vec3 origin, Vec3 normal) {
  return std::fabs(Dot(LoadVec3(p) - origin, normal));
}

NU_KERNEL double LargestHeight(PointView points, Vec3 origin, Vec3 normal) {
  double lane[kLanes] = {};
  std::size_t i = 0;
  for (; i + kLanes <= points.Size(); i += kLanes) {
    for (int l = 0; l < kLanes; ++l) {
      const double height = Height(points[i + l], origin, normal);
      lane[l] = height > lane[l] ? height : lane[l];
    }
  }
  double largest = *std::max_element(lane, lane + kLanes);
  for (; i < points.Size(); ++i) largest = std::max(largest, Height(points[i], origin, normal));
  return largest;
}

}  // namespace

int LastBeyond(const PointView& points, int from, Vec3 origin, Vec3 normal, double tol) {
  // Below zero every height is beyond, so the lanes' start would count; a NaN is beyond nothing.
  int length = kFirstBlock;
  int end = static_cast<int>(points.Size());
  while (end > from) {
    const int begin = std::max(end - length, from);
    const PointView block = points.Part(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin));
    if (LargestHeight(block, origin, normal) > tol) {
      for (int i = end - 1; i >= begin; --i) {
        if (Height(points[static_cast<std::size_t>(i)], origin, normal) > tol) return i;
      }
    }
    end = begin;
    length = std::min(2 * length, kLargestBlock);
  }
  return -1;
}

}  // namespace nu::engine::points
