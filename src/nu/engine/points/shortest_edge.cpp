#include "nu/engine/points/shortest_edge.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cfloat>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "nu/engine/base/elementary.h"
#include "nu/engine/base/large_pages.h"
#include "nu/engine/points/box_tree.h"
#include "nu/engine/points/extents.h"
#include "nu/engine/points/unbounded_points.h"

// The points are counted into cells, a few in each. The best edge within a cell is nearly always the best of all; what
// is left is to look across the sides of the cells that are nearer to a point than that length. Sets that no cell size
// spreads (many coincident points, clusters within clusters) go through a tree of boxes.

namespace nu::engine::points {
namespace {

// Up to here the loop over all pairs is the fastest; measured.
constexpr std::size_t kPlainSize = 32;
// Far above the rounding of any bound below.
constexpr double kMargin = 1e-13;

Edge PlainLoop(const PointView& points, double zero, double large) {
  Edge best{large};
  for (std::size_t i = 0; i < points.Size(); ++i) {
    for (std::size_t j = i + 1; j < points.Size(); ++j) {
      const double length = EdgeLength(points[i], points[j], zero);
      if (length < best.length) best = {length, static_cast<int>(i), static_cast<int>(j)};
      if (best.length == 0.0) return best;
    }
  }
  return best;
}

// The best edge so far, and the square beyond which no edge needs a closer look.
class Incumbent {
 public:
  Incumbent(double zero, double large) : m_zero(zero), m_best{large} { Settle(); }

  const Edge& Best() const { return m_best; }
  double Zero() const { return m_zero; }
  void Offer(double length, int i, int j) {
    OfferShorter(m_best, length, i, j);
    Settle();
  }
  void Compare(const IndexedPoint& p, const IndexedPoint& q) {
    const double x = p.xyz[0] - q.xyz[0];
    const double y = p.xyz[1] - q.xyz[1];
    const double z = p.xyz[2] - q.xyz[2];
    if (x * x + y * y + z * z > m_square) return;
    Offer(Pythag(x, y, z, m_zero), p.index, q.index);
  }
  // How far apart points with the best length or less can be along an axis: below Zero() every length is 0.
  double Reach() const { return std::max(m_best.length, m_zero > 0.0 ? m_zero : 0.0); }
  // Whether (i, j), the first of some pairs, may replace an edge that cannot become shorter.
  bool CanImprove(int i, int j) const {
    return m_best.length > 0.0 || !m_best.IsPair() || m_best.ComesAfter(std::min(i, j), std::max(i, j));
  }

 private:
  // The smallest normal number covers what squares lose below it.
  void Settle() {
    const double zeroSquare = m_zero > 0.0 ? 3.0 * m_zero * m_zero : 0.0;
    m_square = std::max(m_best.length * m_best.length, zeroSquare) * (1.0 + kMargin) + DBL_MIN;
  }

  double m_zero;
  Edge m_best;
  double m_square = 0.0;
};

// ---- cells

class Cells {
 public:
  // Cells are tried from `side` down. HaveRoom tells whether the points could be spread.
  Cells(const PointView& points, const Extents& extents, double side) : m_points(points), m_extents(extents) {
    const auto bits = static_cast<int>(std::bit_width(points.Size()));
    m_shift = 64 - bits;
    m_starts.resize((std::size_t{1} << bits) + 1);
    m_bucket.resize(points.Size());
    for (int attempt = 0; attempt < kAttempts && !m_spread; ++attempt, side /= kRefinement) {
      m_side = side;
      m_perSide = 1.0 / side;
      if (!(extents.Side() * m_perSide < kMostCells)) return;
      m_spread = Count();
    }
    if (m_spread) Collect();
  }

  bool AreSpread() const { return m_spread; }
  double Side() const { return m_side; }

  void CompareWithin(Incumbent& incumbent) const {
    for (std::size_t b = 0; b + 1 < m_starts.size(); ++b) {
      for (std::uint32_t p = m_starts[b]; p < m_starts[b + 1]; ++p) {
        for (std::uint32_t q = p + 1; q < m_starts[b + 1]; ++q) incumbent.Compare(m_sorted[p], m_sorted[q]);
      }
    }
  }

  // Reach() is below the side.
  void CompareAcross(Incumbent& incumbent) const {
    // In units of the side, with the rounding of the place of a point.
    const double reach = incumbent.Reach() * m_perSide * (1.0 + kMargin) + 4.0 * kMostCells * DBL_EPSILON;
    for (const IndexedPoint& p : m_sorted) {
      std::int64_t first[3], last[3];
      bool across = false;
      for (int k = 0; k < 3; ++k) {
        const double place = (p.xyz[k] - m_extents.box.low[k]) * m_perSide;
        const auto cell = static_cast<std::int64_t>(place);
        const double rest = place - static_cast<double>(cell);
        first[k] = cell - (rest < reach ? 1 : 0);
        last[k] = cell + (rest > 1.0 - reach ? 1 : 0);
        across |= first[k] != last[k];
      }
      if (!across) continue;
      for (std::int64_t x = first[0]; x <= last[0]; ++x) {
        for (std::int64_t y = first[1]; y <= last[1]; ++y) {
          for (std::int64_t z = first[2]; z <= last[2]; ++z) CompareBucket(p, BucketOf(x, y, z), incumbent);
        }
      }
    }
  }

 private:
  static constexpr int kAttempts = 12;
  static constexpr double kRefinement = 3.0;
  // Beyond it a place in units of the side is too coarse for CompareAcross.
  static constexpr double kMostCells = 0x1p30;
  // The pairs within cells per point that are worth comparing.
  static constexpr std::uint64_t kPairsPerPoint = 12;

  std::uint32_t BucketOf(std::int64_t x, std::int64_t y, std::int64_t z) const {
    // Odd factors that spread the bits of the three places over the upper ones of the sum.
    const std::uint64_t sum = static_cast<std::uint64_t>(x) * 0x9E3779B97F4A7C15u +
                              static_cast<std::uint64_t>(y) * 0xC2B2AE3D27D4EB4Fu +
                              static_cast<std::uint64_t>(z) * 0x165667B19E3779F9u;
    return static_cast<std::uint32_t>(sum >> m_shift);
  }

  bool Count() {
    std::fill(m_starts.begin(), m_starts.end(), 0);
    std::uint64_t pairs = 0;
    for (std::size_t i = 0; i < m_points.Size(); ++i) {
      const double* p = m_points[i];
      std::int64_t cell[3];
      for (int k = 0; k < 3; ++k) cell[k] = static_cast<std::int64_t>((p[k] - m_extents.box.low[k]) * m_perSide);
      m_bucket[i] = BucketOf(cell[0], cell[1], cell[2]);
      pairs += m_starts[m_bucket[i]]++;
    }
    return pairs <= kPairsPerPoint * m_points.Size();
  }

  void Collect() {
    std::uint32_t end = 0;
    for (std::uint32_t& start : m_starts) start = end += start;
    m_sorted.resize(m_points.Size());
    for (std::size_t i = m_points.Size(); i-- > 0;) {
      const double* p = m_points[i];
      m_sorted[--m_starts[m_bucket[i]]] = {{p[0], p[1], p[2]}, static_cast<int>(i)};
    }
  }

  void CompareBucket(const IndexedPoint& p, std::uint32_t bucket, Incumbent& incumbent) const {
    for (std::uint32_t q = m_starts[bucket]; q < m_starts[bucket + 1]; ++q) {
      if (m_sorted[q].index > p.index) incumbent.Compare(p, m_sorted[q]);
    }
  }

  PointView m_points;
  const Extents& m_extents;
  int m_shift;
  double m_side = 0.0;
  double m_perSide = 0.0;
  bool m_spread = false;
  LargeVector<std::uint32_t> m_starts;
  LargeVector<std::uint32_t> m_bucket;
  LargeVector<IndexedPoint> m_sorted;
};

// The side that gives evenly filled boxes a few points in a cell; sides of the box shorter than that do not count.
double EvenSide(const Extents& extents, std::size_t n) {
  constexpr double kPointsPerCell = 2.0;
  std::array<double, 3> sides;
  for (int k = 0; k < 3; ++k) sides[k] = extents.box.high[k] - extents.box.low[k];
  std::sort(sides.begin(), sides.end());
  double side = 0.0;
  for (int skipped = 0; skipped < 3; ++skipped) {
    const double dimension = 3 - skipped;
    double logarithm = Log(kPointsPerCell / static_cast<double>(n));
    for (int k = skipped; k < 3; ++k) logarithm += Log(sides[k]);
    side = Exp(logarithm / dimension);
    if (side > 0.0 && side <= sides[skipped]) break;
  }
  return side;
}

// ---- the tree

class TreeSearch {
 public:
  TreeSearch(const PointView& points, Incumbent& incumbent) : m_tree(FinitePoints(points)), m_incumbent(incumbent) {}

  void Run() { ComparePairs(m_tree, *this); }

  // Whether an edge between the two boxes may replace the best one; (i, j) comes first of them. Edges that are all
  // equal are settled here.
  bool CanWin(int a, int b, int i, int j) {
    const DifferenceRange range(Node(a).box, Node(b).box);
    const double zero = m_incumbent.Zero();
    const double least = Pythag(range.least[0], range.least[1], range.least[2], zero);
    if (least * (1.0 - kMargin) > m_incumbent.Best().length || !m_incumbent.CanImprove(i, j)) return false;
    const double widest = std::max({range.most[0], range.most[1], range.most[2]});
    if (!range.IsConstant() && !(widest < zero)) return true;
    m_incumbent.Offer(least, i, j);
    return false;
  }

  void Compare(int p, int q) { m_incumbent.Compare(m_tree.PointAt(p), m_tree.PointAt(q)); }

 private:
  const BoxTree::Node& Node(int i) const { return m_tree.Nodes()[i]; }

  BoxTree m_tree;
  Incumbent& m_incumbent;
};

Edge ShortestFinite(const PointView& points, const Extents& extents, double zero, double large) {
  Incumbent incumbent(zero, large);
  {
    const Cells cells(points, extents, EvenSide(extents, points.Size()));
    if (cells.AreSpread()) {
      cells.CompareWithin(incumbent);
      if (incumbent.Reach() < cells.Side()) {
        cells.CompareAcross(incumbent);
        return incumbent.Best();
      }
    }
  }
  TreeSearch(points, incumbent).Run();
  return incumbent.Best();
}

}  // namespace

Edge ShortestEdge(const PointView& points, double zero, double large) {
  if (!(large > 0.0)) return {large};
  if (points.Size() <= kPlainSize) return PlainLoop(points, zero, large);
  const Extents extents = ExtentsOf(points);
  if (extents.isFinite) return ShortestFinite(points, extents, zero, large);
  const std::vector<IndexedPoint> finite = FinitePoints(points);
  Edge best{large};
  if (!finite.empty()) best = InIndicesOf(finite, ShortestEdge(ViewOf(finite), zero, large));
  return best;
}

}  // namespace nu::engine::points
