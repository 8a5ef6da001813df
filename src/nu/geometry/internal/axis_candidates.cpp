#include "nu/geometry/internal/axis_candidates.h"

#include <limits>

#include "nu/foundation/internal/elementary.h"
#include "nu/geometry/internal/enclosing_ball.h"
#include "nu/geometry/internal/lanes.h"

namespace nu::internal {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// In units of the distance from one direction to the next: how far a direction's neighbours are, and how far an optimum
// may be from the direction that leads to it.
constexpr double kNeighbour = 1.3;
constexpr double kBasin = 0.6;

struct Extreme {
  double low = kInfinity;
  double high = -kInfinity;
  Vec3 lowest;
  Vec3 highest;
};

Vec3 PointAt(const PointBlock& block, double place, int lane) {
  // Lanes beyond the last point are copies of it.
  const std::size_t i = std::min(static_cast<std::size_t>(place) + static_cast<std::size_t>(lane), block.size - 1);
  return {block.x[i], block.y[i], block.z[i]};
}

NU_KERNEL void FindExtreme(const PointBlock& block, const Vec3& way, Extreme& found) {
  const Vec3 w = way;
  Lanes low = kInfinity - Lanes{};
  Lanes high = -low;
  Lanes lowPlace = {};
  Lanes highPlace = {};
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    Lanes x, y, z;
    Load(block.x + i, x);
    Load(block.y + i, y);
    Load(block.z + i, z);
    const Lanes s = x * w.x + y * w.y + z * w.z;
    const Lanes place = static_cast<double>(i) - Lanes{};
    lowPlace = s < low ? place : lowPlace;
    low = s < low ? s : low;
    highPlace = s > high ? place : highPlace;
    high = s > high ? s : high;
  }
  for (int l = 0; l < kLanes; ++l) {
    if (low[l] < found.low) found.low = low[l], found.lowest = PointAt(block, lowPlace[l], l);
    if (high[l] > found.high) found.high = high[l], found.highest = PointAt(block, highPlace[l], l);
  }
}

// The points that reach farthest towards the corners, edges and faces of a cube that is as the frame.
class Outline {
 public:
  Outline(PointBlocks& points, const AxisFrame& frame) : m_blocks(Extremes(points, frame), {}) {}

  // Half of the largest distance across the direction between corners.
  double HalfWidth(const Vec3& direction) const {
    double square = 0.0;
    for (int i = 0; i < 2 * kCorners; ++i) {
      for (int j = 0; j < i; ++j) {
        const Vec3 e = m_point[i] - m_point[j];
        const double along = Dot(e, direction);
        square = std::max(square, Dot(e, e) - along * along);
      }
    }
    return 0.5 * std::sqrt(square);
  }

  // With the origin in the middle of the points.
  AxisCandidate SmallestAlong(const Vec3& direction, const Vec3& across) {
    AxisCandidate found{AxisFrame::Along({}, direction, across)};
    const EnclosingBall circle = SmallestEnclosingBall<2>(m_blocks, {found.frame.x, found.frame.y});
    double low = kInfinity;
    double high = -kInfinity;
    for (const Vec3& p : m_point) {
      low = std::min(low, Dot(p, direction));
      high = std::max(high, Dot(p, direction));
    }
    const Vec3 centre = circle.centre.x * found.frame.x + circle.centre.y * found.frame.y;
    found.frame.origin = centre + (0.5 * (high + low)) * direction;
    found.half = 0.5 * (high - low);
    found.radius = circle.radius;
    return found;
  }

 private:
  static constexpr int kCorners = 4;  // and their opposites
  static constexpr int kWays = 13;
  static constexpr double kWay[kWays][3] = {{1, 1, 1},  {1, 1, -1}, {1, -1, 1}, {1, -1, -1}, {1, 1, 0},
                                            {1, -1, 0}, {1, 0, 1},  {1, 0, -1}, {0, 1, 1},   {0, 1, -1},
                                            {1, 0, 0},  {0, 1, 0},  {0, 0, 1}};

  PointView Extremes(PointBlocks& points, const AxisFrame& frame) {
    Extreme extreme[kWays];
    points.ForEach([&](const PointBlock& block) {
      for (int k = 0; k < kWays; ++k)
        FindExtreme(block, kWay[k][0] * frame.x + kWay[k][1] * frame.y + kWay[k][2] * frame.z, extreme[k]);
    });
    for (int k = 0; k < kWays; ++k) {
      m_point[2 * k] = extreme[k].lowest;
      m_point[2 * k + 1] = extreme[k].highest;
    }
    return PointView(&m_point[0].x, sizeof(Vec3), 2 * kWays);
  }

  Vec3 m_point[2 * kWays];
  PointBlocks m_blocks;
};

// Directions in a cap, evenly: in a quarter of it equal steps in height, turned by the golden section of the quarter
// from one to the next; the other quarters mirror it, so that the signs of the frame, which are arbitrary, change
// nothing.
class Cap {
 public:
  // `tilt` is the sine of the angle from the middle to the rim; four times some number of directions.
  Cap(const AxisFrame& frame, double tilt, int count)
      : m_frame(frame), m_fall((1.0 - std::sqrt(1.0 - tilt * tilt)) / count) {}

  // From one to the next, as an angle.
  double Spacing() const {
    constexpr double kTurn = 6.283185307179586;
    return std::sqrt(kTurn * m_fall);
  }

  struct Place {
    Vec3 direction;
    Vec3 across;
  };
  Place At(int k) const {
    constexpr double kGoldenSection = 0.6180339887498949;
    constexpr double kQuarterTurn = 1.5707963267948966;
    const int level = k / 4;
    const double turned = kGoldenSection * level;
    const double angle = kQuarterTurn * (turned - std::floor(turned));
    const double cosine = 1.0 - m_fall * (4 * level + 2);
    const double sine = std::sqrt(1.0 - cosine * cosine);
    const double x = k % 2 == 0 ? Cos(angle) : -Cos(angle);
    const double y = k / 2 % 2 == 0 ? Sin(angle) : -Sin(angle);
    const Vec3 way = x * m_frame.x + y * m_frame.y;
    return {Unit(cosine * m_frame.z + sine * way), cosine * way - sine * m_frame.z};
  }

 private:
  AxisFrame m_frame;
  double m_fall;
};

}  // namespace

// A cylinder of the radius that is known cannot lean farther from z than the points that are `half` along it from the
// origin let it. A turn by an angle moves no point farther than this angle times `reach`.
AxisCandidates::AxisCandidates(PointBlocks& points, const AxisFrame& frame, double half, double reach, double radius) {
  Outline outline(points, frame);
  const Cap cap(frame, std::min(1.0, radius / half), kDirections);
  const double widest = radius + kBasin * cap.Spacing() * reach;
  // The axis known, for comparison, and the directions around it.
  AxisCandidate seen[1 + kDirections] = {outline.SmallestAlong(frame.z, frame.x)};
  int count = 1;
  for (int k = 0; k < kDirections; ++k) {
    const Cap::Place place = cap.At(k);
    if (outline.HalfWidth(place.direction) > widest) continue;
    seen[count] = outline.SmallestAlong(place.direction, place.across);
    if (!(seen[count].radius > widest)) ++count;
  }
  const double near = Cos(std::min(kNeighbour * cap.Spacing(), 1.0));
  for (int i = 1; i < count; ++i) {
    const bool bettered = std::any_of(seen, seen + count, [&](const AxisCandidate& other) {
      return other.radius < seen[i].radius && std::fabs(Dot(other.frame.z, seen[i].frame.z)) > near;
    });
    if (!bettered) m_list[m_count++] = seen[i];
  }
  std::sort(m_list, m_list + m_count,
            [](const AxisCandidate& a, const AxisCandidate& b) { return a.radius < b.radius; });
  m_count = std::min(m_count, kMost);
}

}  // namespace nu::internal
