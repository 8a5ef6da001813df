#include "nu/engine/points/extents.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "nu/engine/base/simd.h"

namespace nu::engine::points {
namespace {

// Per lane: the least and the greatest coordinates, and a sum that is 0 as long as every coordinate is finite.
struct LaneExtents {
  double low[3][kLanes];
  double high[3][kLanes];
  double unfit[kLanes];
};

NU_KERNEL void Accumulate(PointView points, LaneExtents& lanes) {
  LaneExtents e = lanes;
  for (std::size_t i = 0; i + kLanes <= points.Size(); i += kLanes) {
    for (int l = 0; l < kLanes; ++l) {
      const double x = points[i + l][0];
      const double y = points[i + l][1];
      const double z = points[i + l][2];
      e.low[0][l] = x < e.low[0][l] ? x : e.low[0][l];
      e.low[1][l] = y < e.low[1][l] ? y : e.low[1][l];
      e.low[2][l] = z < e.low[2][l] ? z : e.low[2][l];
      e.high[0][l] = x > e.high[0][l] ? x : e.high[0][l];
      e.high[1][l] = y > e.high[1][l] ? y : e.high[1][l];
      e.high[2][l] = z > e.high[2][l] ? z : e.high[2][l];
      e.unfit[l] += x * 0.0 + y * 0.0 + z * 0.0;
    }
  }
  lanes = e;
}

}  // namespace

Extents ExtentsOf(const PointView& points) {
  LaneExtents lanes{};
  for (int k = 0; k < 3; ++k) {
    std::fill_n(lanes.low[k], kLanes, points[0][k]);
    std::fill_n(lanes.high[k], kLanes, points[0][k]);
  }
  Accumulate(points, lanes);
  Extents e{};
  bool finite = true;
  for (const double unfit : lanes.unfit) finite = finite && unfit == 0.0;
  for (int k = 0; k < 3; ++k) {
    e.box.low[k] = *std::min_element(lanes.low[k], lanes.low[k] + kLanes);
    e.box.high[k] = *std::max_element(lanes.high[k], lanes.high[k] + kLanes);
  }
  for (std::size_t i = points.Size() / kLanes * kLanes; i < points.Size(); ++i) {
    for (int k = 0; k < 3; ++k) {
      const double v = points[i][k];
      if (v < e.box.low[k]) e.box.low[k] = v;
      if (v > e.box.high[k]) e.box.high[k] = v;
      finite = finite && std::isfinite(v);
    }
  }
  e.isFinite = finite;
  return e;
}

double ScaleFor(double size) {
  constexpr int kExponentLimit = 1022;  // of normal powers whose inverse is normal too
  if (!(size > 0.0) || !std::isfinite(size)) return 1.0;
  return std::ldexp(1.0, std::clamp(-std::ilogb(size) - 1, -kExponentLimit, kExponentLimit));
}

}  // namespace nu::engine::points
