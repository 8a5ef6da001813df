#include "nu/engine/points/form_statistics.h"

#include "nu/engine/points/point_lanes.h"

namespace nu::engine::points {
namespace {

// The deviation along `normal` from the plane through `mean` across it.
NU_KERNEL void SumAlong(const PointBlock& block, const Vec3& mean, const Vec3& normal, Deviations& result) {
  const Vec3 m = mean;
  const Vec3 n = normal;
  Lanes sum = {};
  LaneExtremes extremes;
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    Lanes x, y, z, weight;
    LoadPoints(block, i, x, y, z, weight);
    const Lanes e = n.x * (x - m.x) + n.y * (y - m.y) + n.z * (z - m.z);
    sum += weight * e * e;
    extremes.Add(e);
  }
  result = {Sum(sum), extremes.Smallest(), extremes.Largest()};
}

// The squared distance from the line along `direction` through `mean`.
NU_KERNEL void SumAcross(const PointBlock& block, const Vec3& mean, const Vec3& direction, Deviations& result) {
  const Vec3 m = mean;
  const Vec3 d = direction;
  Lanes sum = {};
  Lanes largest = {};
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    Lanes x, y, z, weight;
    LoadPoints(block, i, x, y, z, weight);
    x -= m.x;
    y -= m.y;
    z -= m.z;
    const Lanes crossX = d.y * z - d.z * y;
    const Lanes crossY = d.z * x - d.x * z;
    const Lanes crossZ = d.x * y - d.y * x;
    const Lanes square = crossX * crossX + crossY * crossY + crossZ * crossZ;
    sum += weight * square;
    largest = square > largest ? square : largest;
  }
  result = {Sum(sum), 0.0, Largest(largest)};
}

}  // namespace

Deviations PlaneDeviations(PointBlocks& points, const Vec3& mean, const Vec3& normal) {
  const auto kernel = [&](const PointBlock& block, Deviations& part) { SumAlong(block, mean, normal, part); };
  return InUnit(OverBlocks(points, kernel), points.Scale());
}

Deviations PlanarLineDeviations(PointBlocks& points, const Vec3& mean, const Vec3& direction) {
  return PlaneDeviations(points, mean, {-direction.y, direction.x, 0.0});
}

Deviations SpaceLineDeviations(PointBlocks& points, const Vec3& mean, const Vec3& direction) {
  Deviations found =
      OverBlocks(points, [&](const PointBlock& block, Deviations& part) { SumAcross(block, mean, direction, part); });
  found.largest = std::sqrt(found.largest);
  return InUnit(found, points.Scale());
}

}  // namespace nu::engine::points
