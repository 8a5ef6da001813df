#include "nu/engine/minimax/near_points.h"

#include <algorithm>
#include <utility>

#include "nu/engine/base/floating_point.h"

namespace nu::engine::minimax {
namespace {

// A level keeps about one in kShare of the points of the level before. Making it costs as much as some searches of
// those: it is made after kUses of them, with a reach of about kSteps steps of the centre.
constexpr std::size_t kShare = 8;
constexpr int kUses = 32;
constexpr double kSteps = 32.0;
// Searching so few points takes less time than finding the ball around the contacts.
constexpr std::size_t kSmallLevel = 2048;

}  // namespace

struct NearPoints::Ball {
  // How far the centre may move, in the measure of the region, before it is as near to the point as to a contact.
  double LeewayOf(const Vec3& p) const {
    const Vec3* nearest = contact;
    double square = kInfinity;
    for (const Vec3* q = contact; q < contact + contacts; ++q) {
      const Vec3 e = p - *q;
      if (Dot(e, e) < square) square = Dot(e, e), nearest = q;
    }
    const Vec3 e = p - *nearest;
    const double support = region.Support(e);
    // A contact itself stays.
    return support > 0.0 ? Dot(e, (p - region.centre) + (*nearest - region.centre)) / (2.0 * support) : 0.0;
  }

  Region region;
  const Vec3* contact;
  int contacts;
};

bool NearPoints::Covers(int level, const Vec3& centre) const {
  return std::all_of(m_levels.begin(), m_levels.begin() + level,
                     [&](const auto& l) { return l->region.SizeOf(centre - l->region.centre) <= l->reach; });
}

void NearPoints::Follow(const Vec3& centre, const Vec3* contact, int contacts) {
  m_travel += Norm(centre - m_centre);
  m_centre = centre;
  while (!Covers(Levels() - 1, centre)) {
    m_levels.pop_back();
    StartCount();
  }
  if (++m_uses > kUses && LastPoints().Size() > kSmallLevel) Narrow(contact, contacts);
}

// As slender as the last steps, which may run along one direction.
NearPoints::Region NearPoints::RegionOfSteps() const {
  constexpr double kMostSlender = 1.0 / 16.0;
  const Vec3 moved = m_centre - m_start;
  const double length = Norm(moved);
  if (!(length > 0.0)) return {m_centre, {0.0, 0.0, 1.0}, 1.0};
  const double straight = std::min(length / m_travel, 1.0);
  return {m_centre, Unit(moved), std::clamp(2.0 * std::sqrt(1.0 - straight * straight), kMostSlender, 1.0)};
}

// The leeway that about one in kShare of the points stays below, from a sample.
double NearPoints::SampledLeeway(const Ball& ball) {
  constexpr std::size_t kSampleSize = 1024;
  const std::size_t step = LastPoints().Size() / kSampleSize + 1;
  std::vector<double> leeways;
  std::size_t next = 0;
  LastPoints().ForEach([&](const PointBlock& block) {
    for (; next < block.size; next += step) leeways.push_back(ball.LeewayOf(block.At(next)));
    next -= block.size;
  });
  const auto wanted = leeways.begin() + static_cast<std::ptrdiff_t>(leeways.size() / kShare);
  std::nth_element(leeways.begin(), wanted, leeways.end());
  return *wanted;
}

void NearPoints::Narrow(const Vec3* contact, int contacts) {
  // Of the reach, far above the rounding of distances and far below what would cost searches.
  constexpr double kMargin = 1e-3;
  constexpr double kLeastReach = 0x1p20;  // in roundings
  const Ball ball{RegionOfSteps(), contact, contacts};
  const double reach =
      std::max({SampledLeeway(ball), kSteps / kUses * m_travel, kLeastReach * m_rounding / ball.region.across});
  StartCount();
  std::vector<Vec3> near;
  LastPoints().ForEachPoint([&](const Vec3& p) {
    if (!(ball.LeewayOf(p) > reach)) near.push_back(p);
  });
  if (near.empty() || near.size() > LastPoints().Size() / 2) return;
  m_levels.push_back(std::make_unique<Level>(std::move(near), ball.region, (1.0 - kMargin) * reach));
}

}  // namespace nu::engine::minimax
