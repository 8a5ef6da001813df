#include "nu/engine/chains/path_simplification.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <numeric>

#include "nu/engine/base/floating_point.h"
#include "nu/engine/chains/block_tree.h"
#include "nu/engine/points/extents.h"
#include "nu/engine/shapes/box.h"

// The shortest path in the graph whose edges are the allowed shortcuts (H. Imai, M. Iri, Computational Morphology,
// 1988), found in breadth: from the points reached with k edges, the latest first, those that k + 1 edges reach. Only
// few of the edges are ever looked at.
//
// Points on the way from a point narrow the cone of directions that an edge from it may take (W. S. Chan, F. Chin, Int.
// J. Computational Geometry & Applications 6, 1996): in the projections onto coordinate planes, a wedge. Each also
// bounds from below how long the edge must be. What lies outside is passed over in whole blocks of consecutive points,
// by the box of those that are not reached yet: points that run to and fro fill all blocks alike, and only the reached
// ones are where an edge may lead. Nothing is left once a wedge is empty. Blocks that are passed over narrow the wedge
// by a few of their points.
//
// An edge that remains is tested against all points on its way, again in blocks: a block whose points are all close to
// a segment of its own is, when the ends of that segment are close enough to the edge; and so is one whose corners, the
// vertices of its convex hull, are.

namespace nu::engine::chains {
namespace {

// A block closer to the start than so many times its size is taken apart.
constexpr std::size_t kNear = 4;

// The wedges are wider than exact ones by this part of the size of the points: they only choose what is tested.
constexpr double kWidening = 1e-12;

// The bound for a block is trusted up to this part of that size.
constexpr double kTrust = 16.0 * kEpsilon;

bool IsEmpty(const Box& box) {
  return box.low[0] > box.high[0];
}

bool IsSame(const Box& a, const Box& b) {
  return std::equal(a.low, a.low + 3, b.low) && std::equal(a.high, a.high + 3, b.high);
}

// Tests edges between two of the points.
class EdgeTest {
 public:
  EdgeTest(const std::vector<Vec3>& points, BlockTree& tree, double tolerance)
      : m_points(points), m_tree(tree), m_tolerance(tolerance), m_squared(tolerance * tolerance) {}

  // Whether no point between is farther than the tolerance. Otherwise Offender() is one that is.
  bool Allows(std::size_t i, std::size_t j) {
    m_edge = {m_points[i], m_points[j]};
    for (const std::size_t k : m_offenders)
      if (k > i && k < j && !Holds(k)) return false;
    if (j - i > kLeafPoints && !Holds(i + (j - i) / 2)) return Remember();
    const bool holds = m_tree.Walk(
        i + 1, j, [&](std::size_t k) { return Holds(k); },
        [&](std::size_t level, std::size_t index) { return HoldsBlock(level, index); });
    return holds || Remember();
  }
  std::size_t Offender() const { return m_offender; }

 private:
  // Points that spoilt an edge are likely to spoil the next one.
  bool Remember() {
    m_offenders[m_oldest] = m_offender;
    m_oldest = (m_oldest + 1) % m_offenders.size();
    return false;
  }

  double Distance(Vec3 p) const { return std::sqrt(SquaredDistance(p, m_edge.start, m_edge.end)); }

  bool Holds(std::size_t k) {
    if (SquaredDistance(m_points[k], m_edge.start, m_edge.end) <= m_squared) return true;
    m_offender = k;
    return false;
  }

  bool HoldsBlock(std::size_t level, std::size_t index) {
    const Block& block = m_tree.At(level, index);
    const double byCore = std::max(Distance(block.core.start), Distance(block.core.end)) + block.width;
    if (byCore <= m_tolerance - kTrust || Distance(block.centre) + block.radius <= m_tolerance - kTrust) return true;
    if (const std::vector<std::size_t>* corners = m_tree.CornersOf(level, index)) {
      return std::all_of(corners->begin(), corners->end(), [&](std::size_t k) { return Holds(k); });
    }
    if (level > 0) return HoldsBlock(level - 1, 2 * index) && HoldsBlock(level - 1, 2 * index + 1);
    for (std::size_t k = m_tree.Begin(0, index); k < m_tree.End(0, index); ++k)
      if (!Holds(k)) return false;
    return true;
  }

  const std::vector<Vec3>& m_points;
  BlockTree& m_tree;
  double m_tolerance;
  double m_squared;
  Edge3 m_edge;
  std::size_t m_offender = 0;
  std::array<std::size_t, 8> m_offenders{};
  std::size_t m_oldest = 0;
};

// The directions, in a plane, of the rays from the origin that come within a tolerance of all points added.
class Wedge {
 public:
  struct Direction {
    double x = 0.0;
    double y = 0.0;
  };

  // The point is known by its index.
  void Add(double x, double y, double tolerance, std::size_t index) {
    if (m_isBounded && Touches(m_low, x, y, tolerance) && Touches(m_high, x, y, tolerance)) return;
    const double squared = x * x + y * y;
    if (!(squared > tolerance * tolerance)) return;
    const double across = tolerance / squared;
    const double along = std::sqrt(squared - tolerance * tolerance) / squared;
    const Direction low{x * along + y * across, y * along - x * across};
    const Direction high{x * along - y * across, y * along + x * across};
    const Wedge added(low, high, index);
    if (!m_isBounded) {
      *this = added;
      return;
    }
    const bool takesLow = Contains(low);
    const bool takesHigh = Contains(high);
    m_isEmpty = (!takesLow && !added.Contains(m_low)) || (!takesHigh && !added.Contains(m_high));
    if (takesLow) {
      m_low = low;
      m_bounds[0] = index;
    }
    if (takesHigh) {
      m_high = high;
      m_bounds[1] = index;
    }
  }

  // The points that bound the wedge, 0 without.
  const std::array<std::size_t, 2>& Bounds() const { return m_bounds; }

  bool IsEmpty() const { return m_isEmpty; }

  // False only when no point of the disc, or closer to the segment than the width, is in one of the directions.
  bool MayMeet(double x, double y, double radius) const {
    return !m_isBounded || (m_low.x * y - m_low.y * x >= -radius && x * m_high.y - y * m_high.x >= -radius);
  }

  bool MayMeet(Direction start, Direction end, double width) const {
    if (!m_isBounded) return true;
    const auto isBeyond = [&](Direction p) { return m_low.x * p.y - m_low.y * p.x < -width; };
    const auto isBefore = [&](Direction p) { return p.x * m_high.y - p.y * m_high.x < -width; };
    return !(isBeyond(start) && isBeyond(end)) && !(isBefore(start) && isBefore(end));
  }

  Wedge() = default;

 private:
  Wedge(Direction low, Direction high, std::size_t index)
      : m_low(low), m_high(high), m_bounds{index, index}, m_isBounded(true) {}

  static bool Touches(Direction d, double x, double y, double tolerance) {
    return std::fabs(d.x * y - d.y * x) <= tolerance && d.x * x + d.y * y > 0.0;
  }
  bool Contains(Direction d) const { return MayMeet(d.x, d.y, 0.0); }

  Direction m_low;
  Direction m_high;
  std::array<std::size_t, 2> m_bounds{};
  bool m_isBounded = false;
  bool m_isEmpty = false;
};

// Where an edge from one point may lead.
class Outlook {
 public:
  Outlook(const std::vector<Vec3>& points, std::size_t from, double tolerance, int planes)
      : m_points(points), m_from(points[from]), m_tolerance(tolerance), m_planes(planes) {}

  // False when nothing is left.
  bool Add(std::size_t index) {
    const Vec3 d = m_points[index] - m_from;
    const double reach = Dot(d, d);
    if (reach > m_reach) {
      m_reach = reach;
      m_farthest = index;
    }
    bool isOpen = true;
    for (int k = 0; k < m_planes; ++k) {
      m_wedge[k].Add(First(d, k), Second(d, k), m_tolerance, index);
      isOpen = isOpen && !m_wedge[k].IsEmpty();
    }
    return isOpen;
  }

  // The points that left no more than this.
  std::array<std::size_t, 7> Bounds() const {
    std::array<std::size_t, 7> bounds{m_farthest};
    for (std::size_t k = 0; k < 3; ++k) {
      bounds[2 * k + 1] = m_wedge[k].Bounds()[0];
      bounds[2 * k + 2] = m_wedge[k].Bounds()[1];
    }
    return bounds;
  }

  bool MayHold(Vec3 centre, double radius) const {
    const Vec3 d = centre - m_from;
    if (!MayReach(Dot(d, d), radius)) return false;
    for (int k = 0; k < m_planes; ++k)
      if (!m_wedge[k].MayMeet(First(d, k), Second(d, k), radius + kWidening)) return false;
    return true;
  }

  bool MayHold(const Block& block) const {
    if (!MayHold(block.centre, block.radius)) return false;
    const Vec3 start = block.core.start - m_from;
    const Vec3 end = block.core.end - m_from;
    for (int k = 0; k < m_planes; ++k) {
      if (!m_wedge[k].MayMeet({First(start, k), Second(start, k)}, {First(end, k), Second(end, k)},
                              block.width + kWidening)) {
        return false;
      }
    }
    return true;
  }

  bool MayHold(const Box& box) const {
    if (IsEmpty(box)) return false;
    const Vec3 low = LoadVec3(box.low) - m_from;
    const Vec3 high = LoadVec3(box.high) - m_from;
    const Vec3 corner{std::max(-low.x, high.x), std::max(-low.y, high.y), std::max(-low.z, high.z)};
    return MayReach(Dot(corner, corner), 0.0);
  }

 private:
  // At a distance, given by its square, give or take the radius.
  bool MayReach(double squared, double radius) const {
    if (squared >= m_reach) return true;
    const double far = std::sqrt(squared) + radius + m_tolerance;
    return far * far >= m_reach;
  }

  static double First(Vec3 d, int plane) { return plane == 1 ? d.z : d.x; }
  static double Second(Vec3 d, int plane) { return plane == 2 ? d.z : d.y; }

  const std::vector<Vec3>& m_points;
  Vec3 m_from;
  double m_tolerance;
  int m_planes;
  double m_reach = 0.0;  // squared
  std::size_t m_farthest = 0;
  std::array<Wedge, 3> m_wedge;
};

class Search {
 public:
  Search(const std::vector<Vec3>& points, double tolerance)
      : m_points(points), m_tree(points), m_test(points, m_tree, tolerance), m_tolerance(tolerance + kWidening) {
    double low = points[0].z;
    double high = low;
    for (const Vec3& p : points) {
      low = std::min(low, p.z);
      high = std::max(high, p.z);
    }
    m_planes = high - low <= tolerance ? 1 : 3;
    m_before.resize(points.size());
    for (std::size_t i = 0; i < points.size(); ++i) m_before[i] = i;
    m_openFrom = m_before;
    m_openFrom.push_back(points.size());
    for (std::size_t level = 0; level < m_tree.Levels(); ++level) {
      m_open.emplace_back();
      for (std::size_t k = 0; m_tree.Begin(level, k) < points.size(); ++k) m_open[level].push_back(OpenBox(level, k));
    }
  }

  // The path to the last point, which is not the first one.
  std::vector<std::size_t> Path() {
    const std::size_t last = m_points.size() - 1;
    std::vector<std::size_t> frontier{0};
    // The next point after one that is reached is always reached, so a round adds one at least.
    while (m_before[last] == last && !frontier.empty()) {
      m_next.clear();
      for (const std::size_t i : frontier) {
        if (Reach(i, last)) break;
        LookFrom(i);
      }
      frontier.swap(m_next);
      std::sort(frontier.begin(), frontier.end(), std::greater<>());
    }
    for (std::size_t i = last; i > 0 && m_before[i] == i; --i) m_before[i] = i - 1;
    std::vector<std::size_t> path{last};
    while (path.back() != 0) path.push_back(m_before[path.back()]);
    std::reverse(path.begin(), path.end());
    return path;
  }

 private:
  bool Reach(std::size_t from, std::size_t to) {
    if (!m_test.Allows(from, to)) return false;
    m_before[to] = from;
    m_openFrom[to] = to + 1;
    m_next.push_back(to);
    for (std::size_t level = 0; level < m_tree.Levels(); ++level) {
      const std::size_t index = to / (kLeafPoints << level);
      const Box left = OpenBox(level, index);
      if (IsSame(left, m_open[level][index])) break;  // and so are those around it
      m_open[level][index] = left;
    }
    return true;
  }

  Box OpenBox(std::size_t level, std::size_t index) const {
    Box box = EmptyBox();
    if (level > 0) {
      const std::vector<Box>& halves = m_open[level - 1];
      for (std::size_t k = 2 * index; k < std::min(2 * index + 2, halves.size()); ++k) {
        if (!IsEmpty(halves[k])) Include(halves[k], box);
      }
      return box;
    }
    for (std::size_t k = m_tree.Begin(0, index); k < m_tree.End(0, index); ++k) {
      if (m_before[k] == k) Include(m_points[k], box);
    }
    return box;
  }

  void LookFrom(std::size_t i) {
    m_from = i;
    const std::size_t begin = OpenFrom(i + 1);
    Outlook outlook(m_points, i, m_tolerance, m_planes);
    for (const std::size_t k : m_bounds) {
      if (k > i && k < begin && !outlook.Add(k)) return;
    }
    m_tree.Walk(
        begin, m_points.size(), [&](std::size_t j) { return VisitPoint(j, outlook); },
        [&](std::size_t level, std::size_t index) { return VisitBlock(level, index, outlook); });
    m_bounds = outlook.Bounds();
  }

  // The first point that is not reached, from i on.
  std::size_t OpenFrom(std::size_t i) {
    while (m_openFrom[i] != i) i = m_openFrom[i] = m_openFrom[m_openFrom[i]];
    return i;
  }

  bool VisitPoint(std::size_t j, Outlook& outlook) {
    const bool isOpen = m_before[j] == j;
    if (isOpen && outlook.MayHold(m_points[j], 0.0) && !Reach(m_from, j) && !outlook.Add(m_test.Offender())) {
      return false;
    }
    return outlook.Add(j);
  }

  bool VisitBlock(std::size_t level, std::size_t index, Outlook& outlook) {
    const std::size_t begin = m_tree.Begin(level, index);
    const std::size_t end = m_tree.End(level, index);
    const Block& block = m_tree.At(level, index);
    const Box& open = m_open[level][index];
    const bool isFar = begin - m_from >= kNear * (end - begin);
    if (IsEmpty(open) || (isFar && !(outlook.MayHold(open) && outlook.MayHold(block)))) {
      return AddPointsOf(block, begin, end, outlook);
    }
    if (level > 0) {
      if (!VisitBlock(level - 1, 2 * index, outlook)) return false;
      return m_tree.Begin(level - 1, 2 * index + 1) >= end || VisitBlock(level - 1, 2 * index + 1, outlook);
    }
    for (std::size_t j = OpenFrom(begin); j < end; j = OpenFrom(j + 1)) {
      if (outlook.MayHold(m_points[j], 0.0) && !Reach(m_from, j) && !outlook.Add(m_test.Offender())) return false;
    }
    return AddPointsOf(block, begin, end, outlook);
  }

  bool AddPointsOf(const Block& block, std::size_t begin, std::size_t end, Outlook& outlook) const {
    return outlook.Add(begin) && outlook.Add(block.ends[0]) && outlook.Add(block.ends[1]) && outlook.Add(end - 1);
  }

  const std::vector<Vec3>& m_points;
  BlockTree m_tree;
  EdgeTest m_test;
  double m_tolerance;
  int m_planes;
  std::size_t m_from = 0;
  std::vector<std::size_t> m_before;      // the point before it on the path; itself while it is not reached
  std::vector<std::size_t> m_openFrom;    // leads to the first point from it on that is not reached
  std::array<std::size_t, 7> m_bounds{};  // of the last outlook
  std::vector<std::vector<Box>> m_open;   // of the points of a block that are not reached
  std::vector<std::size_t> m_next;
};

double LargestDistance(const std::vector<Vec3>& points, const std::vector<std::size_t>& kept) {
  double largest = 0.0;
  for (std::size_t e = 1; e < kept.size(); ++e) {
    for (std::size_t k = kept[e - 1] + 1; k < kept[e]; ++k) {
      largest = std::max(largest, SquaredDistance(points[k], points[kept[e - 1]], points[kept[e]]));
    }
  }
  return std::sqrt(largest);
}

std::vector<std::size_t> KeptPoints(const std::vector<Vec3>& points, double tolerance) {
  if (tolerance >= 0.0 && points.size() > 1) return Search(points, tolerance).Path();
  std::vector<std::size_t> all(points.size());
  std::iota(all.begin(), all.end(), std::size_t{0});
  return all;
}

// Some consecutive points of the path; lengths are scaled so that their squares neither overflow nor vanish.
void AddRun(std::vector<Vec3>& run, std::size_t begin, double tolerance, SimplifiedPath& path) {
  const double scale = ScaleFor(ExtentsOf({&run[0].x, sizeof(Vec3), run.size()}).Side());
  for (Vec3& p : run) p = scale * p;
  const std::vector<std::size_t> kept = KeptPoints(run, scale * tolerance);
  for (const std::size_t k : kept) path.kept.push_back(begin + k);
  path.deviation = std::max(path.deviation, LargestDistance(run, kept) / scale);
}

}  // namespace

SimplifiedPath SimplifyPath(const std::vector<Vec3>& points, double tolerance) {
  SimplifiedPath path;
  std::vector<Vec3> run;
  for (std::size_t begin = 0; begin < points.size(); begin += run.size()) {
    const bool isFinite = IsFinite(points[begin]);
    std::size_t end = begin + 1;
    while (isFinite && end < points.size() && IsFinite(points[end])) ++end;
    run.assign(points.begin() + static_cast<std::ptrdiff_t>(begin), points.begin() + static_cast<std::ptrdiff_t>(end));
    AddRun(run, begin, tolerance, path);
    if (HasNaN(points[begin])) path.deviation = kQuietNaN;  // and stays
  }
  return path;
}

}  // namespace nu::engine::chains
