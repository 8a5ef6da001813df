#include "nu/engine/association/bounded_points.h"

#include <cmath>

namespace nu::engine::association {
namespace {

// So few points are all in the set.
constexpr std::size_t kFewPoints = 64;

// Of one of two opposite directions each.
constexpr Vec3 kDirections[] = {{1, 0, 0}, {0, 1, 0},  {0, 0, 1}, {1, 1, 0},  {1, -1, 0}, {1, 0, 1}, {1, 0, -1},
                                {0, 1, 1}, {0, 1, -1}, {1, 1, 1}, {1, 1, -1}, {1, -1, 1}, {-1, 1, 1}};

}  // namespace

BoundedPoints::BoundedPoints(PointBlocks& blocks, const AxisFrame& frame) : m_blocks(blocks), m_frame(frame) {
  constexpr int directions = sizeof(kDirections) / sizeof(Vec3);
  Extreme extreme[2 * directions];
  double square = 0.0;
  ForEach([&](const Vec3& p) {
    const double s = Dot(p, p);
    square = s <= square ? square : s;
    for (int k = 0; k < directions; ++k) {
      const double along = Dot(p, kDirections[k]);
      if (along > extreme[2 * k].value) extreme[2 * k] = {along, p};
      if (-along > extreme[2 * k + 1].value) extreme[2 * k + 1] = {-along, p};
    }
  });
  m_reach = std::sqrt(square);
  if (Size() <= kFewPoints) {
    ForEach([&](const Vec3& p) { m_set.push_back(p); });
  } else {
    for (const Extreme& e : extreme) Join(e);
  }
}

void BoundedPoints::Join(const Extreme& extreme) {
  const Vec3& p = extreme.point;
  if (!(extreme.value > -std::numeric_limits<double>::infinity()) || m_set.size() >= kMostInSet) return;
  const auto isSame = [&](const Vec3& q) { return q.x == p.x && q.y == p.y && q.z == p.z; };
  if (std::none_of(m_set.begin(), m_set.end(), isSame)) m_set.push_back(p);
}

}  // namespace nu::engine::association
