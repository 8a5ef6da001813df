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

std::vector<Vec3> BoundedPoints::Spread(std::size_t most) {
  std::vector<Vec3> all;
  all.reserve(Size());
  ForEach([&](const Vec3& p) { all.push_back(p); });
  std::vector<double> square;
  square.reserve(Size());
  for (const Vec3& p : all) square.push_back(Dot(p, p));
  std::vector<Vec3> spread;
  while (spread.size() < most) {
    const std::size_t next = static_cast<std::size_t>(std::max_element(square.begin(), square.end()) - square.begin());
    if (next == square.size() || !(square[next] > 0.0)) break;
    const bool isFirst = spread.empty();
    spread.push_back(all[next]);
    Join({0.0, all[next]});
    for (std::size_t i = 0; i < all.size(); ++i) {
      const Vec3 difference = all[i] - spread.back();
      square[i] = isFirst ? Dot(difference, difference) : std::min(square[i], Dot(difference, difference));
    }
  }
  return spread;
}

void BoundedPoints::Join(const Extreme& extreme) {
  const Vec3& p = extreme.point;
  if (!(extreme.value > -kInfinity) || m_set.size() >= kMostInSet) return;
  if (std::find(m_set.begin(), m_set.end(), p) == m_set.end()) m_set.push_back(p);
}

}  // namespace nu::engine::association
