#include "nu/engine/points/longest_edge.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "nu/engine/base/floating_point.h"
#include "nu/engine/base/simd.h"
#include "nu/engine/points/box_tree.h"
#include "nu/engine/points/extents.h"
#include "nu/engine/points/unbounded_points.h"

// A long edge is guessed: from the point farthest from the middle to the one farthest from there, then among the points
// farthest out. With a centre c, the largest distance R from c and the length D of that edge, only points at least D -
// R from c can belong to a longer edge. Those too near to all eight octants go as well. The others go into a tree of
// boxes, and pairs of boxes that cannot win are passed over. On a circle or sphere about c, where every point has a
// partner of almost the same distance, it is the directions from c that tell: an edge that subtends the angle a at c,
// between points at the distances s and t, has the square s^2 + t^2 - 2 s t cos a.

namespace nu::engine::points {
namespace {

constexpr double kStart = -0.1;

// Up to here the loop over all pairs is the fastest; measured.
constexpr std::size_t kPlainSize = 32;
constexpr std::size_t kBlock = 64;
// The outermost points, whose longest edge is found first.
constexpr std::size_t kCoreBlocks = 128;
constexpr std::size_t kCoreSize = 1000;
constexpr std::size_t kWalks = 16;
// Far above the rounding of any bound below.
constexpr double kMargin = 1e-13;

Edge PlainLoop(const PointView& points, double zero) {
  Edge best{kStart};
  for (std::size_t i = 0; i < points.Size(); ++i) {
    for (std::size_t j = i + 1; j < points.Size(); ++j) {
      const double length = EdgeLength(points[i], points[j], zero);
      if (length > best.length) best = {length, static_cast<int>(i), static_cast<int>(j)};
    }
  }
  return best;
}

NU_ALWAYS_INLINE double ScaledSquare(const double* p, const double* q, double scale) {
  const double x = (p[0] - q[0]) * scale;
  const double y = (p[1] - q[1]) * scale;
  const double z = (p[2] - q[2]) * scale;
  return x * x + y * y + z * z;
}

// ---- sweeps over all points

// The largest squared distance from `centre` in each block of points.
NU_KERNEL void BlockReaches(PointView points, const double* centre, double scale, double* reaches) {
  for (std::size_t begin = 0, block = 0; begin < points.Size(); begin += kBlock, ++block) {
    double lane[kLanes] = {};
    const std::size_t end = std::min(begin + kBlock, points.Size());
    std::size_t i = begin;
    for (; i + kLanes <= end; i += kLanes) {
      for (int l = 0; l < kLanes; ++l) {
        const double square = ScaledSquare(points[i + l], centre, scale);
        lane[l] = square > lane[l] ? square : lane[l];
      }
    }
    for (; i < end; ++i) lane[0] = std::max(lane[0], ScaledSquare(points[i], centre, scale));
    reaches[block] = *std::max_element(lane, lane + kLanes);
  }
}

class Sweep {
 public:
  Sweep(const PointView& points, double scale)
      : m_points(points), m_scale(scale), m_reaches((points.Size() + kBlock - 1) / kBlock) {}

  void From(const double* centre) {
    std::copy_n(centre, 3, m_centre);
    BlockReaches(m_points, m_centre, m_scale, m_reaches.data());
  }
  // A square that some points reach: at most a block each of kCoreBlocks, but for ties.
  double CoreSquare() const {
    std::vector<double> reaches = m_reaches;
    const auto rank = static_cast<std::ptrdiff_t>(std::min(kCoreBlocks, reaches.size() / 2));
    std::nth_element(reaches.begin(), reaches.begin() + rank, reaches.end(), std::greater<>());
    return reaches[static_cast<std::size_t>(rank)];
  }
  double LargestSquare() const { return *std::max_element(m_reaches.begin(), m_reaches.end()); }
  std::size_t Farthest() const {
    const auto block = std::max_element(m_reaches.begin(), m_reaches.end()) - m_reaches.begin();
    std::size_t i = static_cast<std::size_t>(block) * kBlock;
    while (i + 1 < m_points.Size() && ScaledSquare(m_points[i], m_centre, m_scale) < m_reaches[block]) ++i;
    return i;
  }
  // The points whose squared distance is at least `square`, in order, up to a number of them.
  std::vector<IndexedPoint> Beyond(double square, std::size_t most = SIZE_MAX) const {
    std::vector<IndexedPoint> beyond;
    for (std::size_t block = 0; block < m_reaches.size() && beyond.size() < most; ++block) {
      if (m_reaches[block] < square) continue;
      const std::size_t end = std::min((block + 1) * kBlock, m_points.Size());
      for (std::size_t i = block * kBlock; i < end; ++i) {
        const double* p = m_points[i];
        if (ScaledSquare(p, m_centre, m_scale) < square) continue;
        beyond.push_back({{p[0], p[1], p[2]}, static_cast<int>(i)});
      }
    }
    return beyond;
  }

 private:
  PointView m_points;
  double m_scale;
  double m_centre[3] = {};
  std::vector<double> m_reaches;
};

// ---- pairs of boxes

// Directions from the centre, as points of the unit sphere in a ball about `axis`, and the largest distance.
struct Cone {
  double axis[3];
  double radius;
  double reach;
};

class PairSearch {
 public:
  PairSearch(std::vector<IndexedPoint> points, const double* centre, double scale, double zero, Edge& best)
      : m_tree(std::move(points)), m_cones(m_tree.Nodes().size()), m_scale(scale), m_zero(zero), m_best(best) {
    std::copy_n(centre, 3, m_centre);
    for (std::size_t i = m_cones.size(); i-- > 0;) MakeCone(static_cast<int>(i));
  }

  void Run() { ComparePairs(m_tree, *this); }

  // Whether some edge between the two boxes may replace the best one, of which (i, j) comes first. Edges that are all
  // equal are settled here.
  bool CanWin(int a, int b, int i, int j) {
    const DifferenceRange range(Node(a).box, Node(b).box);
    const double most = Pythag(range.most[0], range.most[1], range.most[2], m_zero);
    if (most * (1.0 + kMargin) < m_best.length || IsTooShortByDirection(m_cones[a], m_cones[b])) return false;
    // With the largest difference fixed the rounded length grows with the others, so these are its exact bounds.
    const std::size_t main = std::max_element(range.most, range.most + 3) - range.most;
    const bool isBounded = range.least[main] == range.most[main] || range.most[main] < m_zero;
    if (!isBounded) return true;
    const double least = Pythag(range.least[0], range.least[1], range.least[2], m_zero);
    if (least == most || range.IsConstant()) {
      OfferLonger(m_best, most, i, j);
      return false;
    }
    return most > m_best.length || !m_best.IsPair() || m_best.ComesAfter(std::min(i, j), std::max(i, j));
  }

  void Compare(int p, int q) {
    const IndexedPoint& first = m_tree.PointAt(p);
    const IndexedPoint& second = m_tree.PointAt(q);
    const double best = ScaledBest();
    if (ScaledSquare(first.xyz, second.xyz, m_scale) * (1.0 + kMargin) < best * best) return;
    OfferLonger(m_best, EdgeLength(first.xyz, second.xyz, m_zero), first.index, second.index);
  }

 private:
  const BoxTree::Node& Node(int i) const { return m_tree.Nodes()[i]; }

  double Direction(const double* p, double* direction) const {
    double square = 0.0;
    for (int k = 0; k < 3; ++k) {
      direction[k] = (p[k] - m_centre[k]) * m_scale;
      square += direction[k] * direction[k];
    }
    const double length = std::sqrt(square);
    for (int k = 0; k < 3; ++k) direction[k] /= length;
    return length;
  }

  // A point in the centre has no direction; its ball holds the whole sphere.
  void MakeCone(int i) {
    const BoxTree::Node& node = Node(i);
    Cone& cone = m_cones[i];
    cone = {};
    if (!node.IsLeaf()) {
      const Cone& first = m_cones[i + 1];
      const Cone& second = m_cones[node.right];
      for (int k = 0; k < 3; ++k) cone.axis[k] = 0.5 * (first.axis[k] + second.axis[k]);
      cone.reach = std::max(first.reach, second.reach);
      for (const Cone* child : {&first, &second}) {
        cone.radius = std::max(cone.radius, child->radius + std::sqrt(ScaledSquare(child->axis, cone.axis, 1.0)));
      }
      return;
    }
    double direction[3];
    for (int q = node.begin; q < node.end; ++q) {
      cone.reach = std::max(cone.reach, Direction(m_tree.PointAt(q).xyz, direction));
      for (int k = 0; k < 3; ++k) cone.axis[k] += direction[k] / node.Size();
    }
    for (int q = node.begin; q < node.end; ++q) {
      Direction(m_tree.PointAt(q).xyz, direction);
      cone.radius = std::max(cone.radius, std::sqrt(ScaledSquare(direction, cone.axis, 1.0)));
    }
    if (!std::isfinite(cone.axis[0] + cone.axis[1] + cone.axis[2])) cone = {{0.0, 0.0, 0.0}, 2.0, cone.reach};
  }

  double ScaledBest() const { return std::max(m_best.length, 0.0) * m_scale; }

  // Unit vectors p, q with |p + q| >= g have the cosine g^2 / 2 - 1 at least.
  bool IsTooShortByDirection(const Cone& a, const Cone& b) const {
    const double opposite[3] = {-b.axis[0], -b.axis[1], -b.axis[2]};
    const double g = std::max(0.0, std::sqrt(ScaledSquare(a.axis, opposite, 1.0)) - a.radius - b.radius);
    const double most = a.reach * a.reach + b.reach * b.reach + a.reach * b.reach * (2.0 - std::min(g * g, 2.0));
    return most * (1.0 + kMargin) < ScaledBest() * ScaledBest();
  }

  BoxTree m_tree;
  std::vector<Cone> m_cones;
  double m_centre[3];
  double m_scale;
  double m_zero;
  Edge& m_best;
};

// ---- the search

void Middle(const double* p, const double* q, double* middle) {
  for (int k = 0; k < 3; ++k) middle[k] = 0.5 * p[k] + 0.5 * q[k];
}

// Offers the edge from the point `from` to the farthest one, and returns that.
std::size_t Walk(const PointView& points, std::size_t from, double zero, Sweep& sweep, Edge& best) {
  sweep.From(points[from]);
  const std::size_t to = sweep.Farthest();
  if (to != from) {
    OfferLonger(best, EdgeLength(points[from], points[to], zero), static_cast<int>(from), static_cast<int>(to));
  }
  return to;
}

// The squared distance from the centre, as the sweep from there scales it, that every point of an edge of at least
// best.length has.
double OuterSquare(double largestSquare, double scale, const Edge& best) {
  const double inner = best.length * scale - std::sqrt(largestSquare) - kMargin;
  return inner > 0.0 ? inner * inner : 0.0;
}

// Erases points all of whose edges are too short, by the boxes of the points in each octant about the middle: a dense
// clump and a few far points leave neither a ring nor a tree much to pass over. Where many go, more may.
void SiftByOctants(double scale, const Edge& best, std::vector<IndexedPoint>& points) {
  constexpr int kOctants = 8;
  std::size_t before = 2 * points.size();
  while (points.size() > kCoreSize && 2 * points.size() <= before) {
    before = points.size();
    const Box all = ExtentsOf(ViewOf(points)).box;
    double middle[3];
    Middle(all.low, all.high, middle);
    Box boxes[kOctants];
    std::fill_n(boxes, kOctants, EmptyBox());
    for (const auto& [p, index] : points)
      Include(LoadVec3(p), boxes[(p[0] > middle[0]) + 2 * (p[1] > middle[1]) + 4 * (p[2] > middle[2])]);
    const auto last =
        std::remove_if(boxes, boxes + kOctants, [](const Box& box) { return !(box.low[0] <= box.high[0]); });
    const double least = best.length * scale * (1.0 - kMargin);
    std::erase_if(points, [&](const IndexedPoint& p) {
      return std::none_of(boxes, last, [&](const Box& box) {
        double farthest[3];
        for (int k = 0; k < 3; ++k) farthest[k] = std::max(box.high[k] - p.xyz[k], p.xyz[k] - box.low[k]) * scale;
        return farthest[0] * farthest[0] + farthest[1] * farthest[1] + farthest[2] * farthest[2] >= least * least;
      });
    });
  }
}

// The first pair of finite points whose length overflows, which makes it as long as any; no pair when there is none.
Edge FirstOverflow(const PointView& points, const Box& box, double zero) {
  const auto overflows = [&](const double* p, const double* q) { return std::isinf(EdgeLength(p, q, zero)); };
  if (!overflows(box.low, box.high)) return {kStart};
  for (std::size_t i = 0; i < points.Size(); ++i) {
    double farthest[3];
    for (int k = 0; k < 3; ++k) {
      farthest[k] = std::max(box.high[k] - points[i][k], points[i][k] - box.low[k]);
    }
    if (!std::isinf(Pythag(farthest[0], farthest[1], farthest[2], zero))) continue;
    for (std::size_t j = i + 1; j < points.Size(); ++j) {
      if (overflows(points[i], points[j])) {
        return {kInfinity, static_cast<int>(i), static_cast<int>(j)};
      }
    }
  }
  return {kStart};
}

// A centre from which 2 R is at most so much longer than D leaves few points.
constexpr double kCloseFit = 1.01;

Edge LongestFinite(const PointView& points, const Extents& extents, double zero) {
  const double scale = ScaleFor(extents.Side());
  double centre[3];
  Middle(extents.box.low, extents.box.high, centre);
  Sweep around(points, scale);
  around.From(centre);
  Edge best{kStart};
  Sweep walking(points, scale);
  Walk(points, around.Farthest(), zero, walking, best);
  double largest = around.LargestSquare();
  if (best.IsPair() && 2.0 * std::sqrt(largest) > kCloseFit * scale * best.length) {
    double middle[3];
    Middle(points[best.m], points[best.n], middle);
    walking.From(middle);
    if (walking.LargestSquare() < largest) {
      std::swap(around, walking);
      std::copy_n(middle, 3, centre);
      largest = around.LargestSquare();
    }
  }
  const std::vector<IndexedPoint> core = around.Beyond(around.CoreSquare(), kCoreSize);
  PairSearch(core, centre, scale, zero, best).Run();
  std::vector<IndexedPoint> outer = around.Beyond(OuterSquare(largest, scale, best));
  SiftByOctants(scale, best, outer);
  Sweep sweep(ViewOf(outer), scale);
  for (std::size_t k = 0; k < std::min(core.size(), kWalks); ++k) {
    sweep.From(core[k].xyz);
    const IndexedPoint& farthest = outer[sweep.Farthest()];
    if (farthest.index == core[k].index) continue;
    OfferLonger(best, EdgeLength(core[k].xyz, farthest.xyz, zero), core[k].index, farthest.index);
  }
  const double square = OuterSquare(largest, scale, best);
  std::erase_if(outer, [&](const IndexedPoint& p) { return ScaledSquare(p.xyz, centre, scale) < square; });
  PairSearch(std::move(outer), centre, scale, zero, best).Run();
  return best;
}

}  // namespace

Edge LongestEdge(const PointView& points, double zero) {
  if (points.Size() <= kPlainSize) return PlainLoop(points, zero);
  const Extents extents = ExtentsOf(points);
  if (extents.isFinite) {
    const Edge overflowing = FirstOverflow(points, extents.box, zero);
    return overflowing.IsPair() ? overflowing : LongestFinite(points, extents, zero);
  }
  const std::vector<IndexedPoint> finite = FinitePoints(points);
  Edge best{kStart};
  if (!finite.empty()) best = InIndicesOf(finite, LongestEdge(ViewOf(finite), zero));
  const Edge infinite = FirstInfiniteEdge(points, zero);
  if (infinite.IsPair()) OfferLonger(best, infinite.length, infinite.m, infinite.n);
  return best;
}

}  // namespace nu::engine::points
