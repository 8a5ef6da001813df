// The widest gap in the angles of any number of points is found in constant memory: each of many sectors keeps the
// first and the last angle that fall into it. A gap inside a sector is too narrow to count.

#include <algorithm>
#include <cmath>

#include "nu/engine/association/explain.h"
#include "nu/engine/base/elementary.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/points/point_blocks.h"
#include "nu/foundation/constants.h"

namespace nu::engine::association {
namespace {

double InDegrees(double radians) {
  return radians * (180.0 / Nu_PI);
}

class AngleSectors {
 public:
  AngleSectors() {
    std::fill_n(m_first, kSectors, kInfinity);
    std::fill_n(m_last, kSectors, -kInfinity);
  }

  // Angles are ordered by their measure on a square, from 0 to 4, which takes no elementary function.
  void Add(double x, double y) {
    const double across = x / (std::fabs(x) + std::fabs(y));
    if (!std::isfinite(across)) return;
    const double turned = y >= 0.0 ? 1.0 - across : 3.0 + across;
    const double measure = turned < 4.0 ? turned : 0.0;  // just below the x axis it rounds to a full turn
    const int sector = std::min(static_cast<int>(measure * (0.25 * kSectors)), kSectors - 1);
    m_first[sector] = std::min(m_first[sector], measure);
    m_last[sector] = std::max(m_last[sector], measure);
  }

  // In degrees; 0 without a point or with one.
  void FindArc(double& arc, double& start) const {
    int first = 0;
    while (first < kSectors && !(m_last[first] >= m_first[first])) ++first;
    if (first == kSectors) return;
    double before = DegreesOf(m_last[first]);
    double widest = 0.0;
    for (int step = 1; step <= kSectors; ++step) {
      const int sector = (first + step) % kSectors;
      if (!(m_last[sector] >= m_first[sector])) continue;
      const bool isAround = first + step >= kSectors;
      const double gap = DegreesOf(m_first[sector]) + (isAround ? 360.0 : 0.0) - before;
      if (gap > widest) {
        widest = gap;
        start = DegreesOf(m_first[sector]);
      }
      before = DegreesOf(m_last[sector]) + (isAround ? 360.0 : 0.0);
    }
    arc = std::max(360.0 - widest, 0.0);
  }

 private:
  static constexpr int kSectors = 1024;

  static double DegreesOf(double measure) {
    const double x = measure <= 2.0 ? 1.0 - measure : measure - 3.0;
    const double y = measure <= 2.0 ? 1.0 - std::fabs(x) : std::fabs(x) - 1.0;
    const double degrees = InDegrees(Atan2(y, x));
    return degrees < 0.0 ? degrees + 360.0 : degrees;
  }

  double m_first[kSectors];
  double m_last[kSectors];
};

// Directions in the cells of a cube about the centre. The direction that is farthest from the mean directions of all
// cells with points is the middle of the widest empty cap.
class DirectionCells {
 public:
  void Add(const Vec3& q) {
    const double largest = std::max({std::fabs(q.x), std::fabs(q.y), std::fabs(q.z)});
    if (!(largest > 0.0) || !std::isfinite(largest)) return;
    const double along[3] = {q.x / largest, q.y / largest, q.z / largest};
    const int axis = std::fabs(along[0]) == 1.0 ? 0 : std::fabs(along[1]) == 1.0 ? 1 : 2;
    const int face = 2 * axis + (along[axis] < 0.0 ? 1 : 0);
    Vec3& sum = m_sum[(face * kSide + Step(along[(axis + 1) % 3])) * kSide + Step(along[(axis + 2) % 3])];
    sum = sum + Unit(q);
  }

  Vec3 EmptiestDirection() {
    for (const Vec3& sum : m_sum)
      if (Dot(sum, sum) > 0.0) m_mean[m_means++] = Unit(sum);
    Vec3 best{0.0, 0.0, 1.0};
    double least = Nearest(best);
    for (int cell = 0; cell < kCells; ++cell) Try(MiddleOf(cell), best, least);
    double step = 1.0 / kSide;  // radians
    for (int halving = 0; halving < kHalvings; ++halving, step *= 0.5) {
      bool gained = true;
      for (int move = 0; gained && move < kMostMoves; ++move) {
        const AxisFrame frame = AxisFrame::Along({}, best);
        gained = false;
        for (const Vec3& side : {frame.x, frame.y, -1.0 * frame.x, -1.0 * frame.y})
          gained = Try(Unit(frame.z + step * side), best, least) || gained;
      }
    }
    return best;
  }

 private:
  static constexpr int kSide = 12;
  static constexpr int kCells = 6 * kSide * kSide;
  static constexpr int kHalvings = 7;  // far below what the cells tell apart
  static constexpr double kLeastGain = 0x1p-40;
  static constexpr int kMostMoves = 64;  // of one length; a few suffice

  static int Step(double along) { return std::clamp(static_cast<int>(0.5 * (along + 1.0) * kSide), 0, kSide - 1); }

  static Vec3 MiddleOf(int cell) {
    const int face = cell / (kSide * kSide);
    const int axis = face / 2;
    double along[3];
    along[axis] = face % 2 != 0 ? -1.0 : 1.0;
    along[(axis + 1) % 3] = (2.0 * (cell / kSide % kSide) + 1.0) / kSide - 1.0;
    along[(axis + 2) % 3] = (2.0 * (cell % kSide) + 1.0) / kSide - 1.0;
    return Unit(LoadVec3(along));
  }

  // The cosine of the angle to the nearest mean direction.
  double Nearest(const Vec3& direction) const {
    double nearest = -1.0;
    for (int i = 0; i < m_means; ++i) nearest = std::max(nearest, Dot(m_mean[i], direction));
    return nearest;
  }

  bool Try(const Vec3& direction, Vec3& best, double& least) const {
    const double nearest = Nearest(direction);
    if (!(nearest < least - kLeastGain)) return false;
    least = nearest;
    best = direction;
    return true;
  }

  Vec3 m_sum[kCells] = {};
  Vec3 m_mean[kCells];
  int m_means = 0;
};

bool IsRoundAboutAxis(FeatureKind kind) {
  return kind == FeatureKind::circle || kind == FeatureKind::circleInSpace || kind == FeatureKind::ellipse ||
         kind == FeatureKind::cylinder || kind == FeatureKind::cone || kind == FeatureKind::torus;
}

// Calls visit(q) with every point in the frame of the feature.
template<class Visit>
void ForEachLocal(PointView points, const AxisFrame& frame, const Visit& visit) {
  for (std::size_t i = 0; i < points.Size(); ++i) visit(frame.Local(LoadVec3(points[i])));
}

// The cap opposite to the emptiest direction, as narrow as the points permit.
void FindCap(PointView points, const AxisFrame& frame, Coverage& coverage) {
  DirectionCells cells;
  ForEachLocal(points, frame, [&](const Vec3& q) { cells.Add(q); });
  const Vec3 empty = cells.EmptiestDirection();
  double nearest = -1.0;
  ForEachLocal(points, frame, [&](const Vec3& q) {
    const double cosine = Dot(Unit(q), empty);
    nearest = cosine > nearest ? cosine : nearest;
  });
  coverage.cap = 180.0 - InDegrees(Acos(std::min(nearest, 1.0)));
  coverage.capAxis = -1.0 * (empty.x * frame.x + empty.y * frame.y + empty.z * frame.z);
}

}  // namespace

Coverage CoverageOf(PointView points, const Feature& feature) {
  Coverage coverage;
  coverage.low = {kInfinity, kInfinity, kInfinity};
  coverage.high = -1.0 * coverage.low;
  AngleSectors around, section;
  const bool isRound = IsRoundAboutAxis(feature.kind);
  const bool isTorus = feature.kind == FeatureKind::torus;
  ForEachLocal(points, feature.frame, [&](const Vec3& q) {
    coverage.low = {std::min(coverage.low.x, q.x), std::min(coverage.low.y, q.y), std::min(coverage.low.z, q.z)};
    coverage.high = {std::max(coverage.high.x, q.x), std::max(coverage.high.y, q.y), std::max(coverage.high.z, q.z)};
    if (isRound) around.Add(q.x, q.y);
    if (isTorus) section.Add(std::sqrt(q.x * q.x + q.y * q.y) - feature.size[0], q.z);
  });
  around.FindArc(coverage.arc, coverage.arcStart);
  section.FindArc(coverage.tubeArc, coverage.tubeStart);
  if (feature.kind == FeatureKind::sphere) FindCap(points, feature.frame, coverage);
  return coverage;
}

}  // namespace nu::engine::association
