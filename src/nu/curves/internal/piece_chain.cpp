#include "nu/curves/internal/piece_chain.h"

#include <limits>

#include "nu/foundation/constants.h"
#include "nu/geometry/internal/enclosing_ball.h"
#include "nu/geometry/internal/extents.h"

namespace nu::internal {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Below this number of pieces a box of their own costs more than it rules out.
constexpr int kLeafPieces = 4;

constexpr Box kNowhere{{kInfinity, kInfinity, kInfinity}, {-kInfinity, -kInfinity, -kInfinity}};

// Comparisons pass over coordinates that are no numbers.
void Include(Vec3 p, Box& box) {
  const double xyz[3] = {p.x, p.y, p.z};
  for (int k = 0; k < 3; ++k) {
    if (xyz[k] < box.low[k]) box.low[k] = xyz[k];
    if (xyz[k] > box.high[k]) box.high[k] = xyz[k];
  }
}

void Include(const Box& part, Box& box) {
  Include(Vec3{part.low[0], part.low[1], part.low[2]}, box);
  Include(Vec3{part.high[0], part.high[1], part.high[2]}, box);
}

// No point of one box is nearer to the other than this.
double Gap(const Box& a, const Box& b) {
  double gap[3];
  for (int k = 0; k < 3; ++k) gap[k] = std::max({0.0, a.low[k] - b.high[k], b.low[k] - a.high[k]});
  return std::sqrt(gap[0] * gap[0] + gap[1] * gap[1] + gap[2] * gap[2]);
}

// An arc does not fill its box: no point of another box is nearer to it than its middle, but for half the diagonal.
double Gap(const Box& box, const Arc3& arc) {
  const Vec3 low{box.low[0], box.low[1], box.low[2]};
  const Vec3 half = 0.5 * (Vec3{box.high[0], box.high[1], box.high[2]} - low);
  const Vec3 middle = low + half;
  return SafeNorm(middle - ClosestOn(arc, middle)) - SafeNorm(half);
}

// How far an arc leaves the way between its ends, at most.
double Bulge(const Arc3& arc) {
  if (arc.sweep > Nu_PI) return 2.0 * arc.radius;
  const double s = std::sin(0.25 * arc.sweep);
  return 2.0 * arc.radius * s * s;
}

// Halves of halves of a chain, each in a box, and within a width around the way between its ends: stretches of smooth
// curves hardly leave that, so that it tells curves at a constant distance apart where boxes overlap.
class ChainTree {
 public:
  struct Node {
    bool IsLeaf() const { return right == 0; }
    int Size() const { return end - begin; }

    Box box;
    int begin, end;
    int right;  // its second child; the first one follows the node
    Segment3 way;
    double width;
  };

  explicit ChainTree(const PieceChain& chain) : m_chain(chain) {
    m_nodes.reserve(static_cast<std::size_t>(chain.Size()));
    Build(0, chain.Size());
  }

  const PieceChain& Chain() const { return m_chain; }
  const Node& operator[](int i) const { return m_nodes[static_cast<std::size_t>(i)]; }

 private:
  void Build(int begin, int end) {
    const std::size_t here = m_nodes.size();
    m_nodes.push_back({kNowhere, begin, end, 0, {m_chain.Ends(begin).start, m_chain.Ends(end - 1).end}, 0.0});
    m_nodes[here].width = WidthOf(m_nodes[here]);
    if (end - begin <= kLeafPieces) {
      for (int i = begin; i < end; ++i) Include(m_chain.BoxOf(i), m_nodes[here].box);
      return;
    }
    const int middle = begin + (end - begin) / 2;
    Build(begin, middle);
    const std::size_t right = m_nodes.size();
    m_nodes[here].right = static_cast<int>(right);
    Build(middle, end);
    Include(m_nodes[here + 1].box, m_nodes[here].box);
    Include(m_nodes[right].box, m_nodes[here].box);
  }

  double WidthOf(const Node& node) const {
    double width = 0.0;
    const auto include = [&](Vec3 p, double bulge) {
      const double reach = SafeNorm(p - ClosestOn(node.way, p)) + bulge;
      if (reach > width) width = reach;
    };
    for (int i = node.begin; i < node.end; ++i) {
      const Arc3* arc = m_chain.ArcAt(i);
      const double bulge = arc != nullptr ? Bulge(*arc) : 0.0;
      include(m_chain.Ends(i).start, bulge);
      include(m_chain.Ends(i).end, bulge);
    }
    return width;
  }

  const PieceChain& m_chain;
  std::vector<Node> m_nodes;
};

// No point of one stretch is nearer to the other than this; the boxes alone answer when that is not below the limit.
double Gap(const ChainTree::Node& a, const ChainTree::Node& b, double limit) {
  const double gap = Gap(a.box, b.box);
  if (!(gap < limit)) return gap;
  return std::max(gap, ClosestBetween(a.way, b.way).distance - a.width - b.width);
}

NearPair ClosestPieces(const PieceChain& first, int i, const PieceChain& second, int j) {
  const Arc3* arc = first.ArcAt(i);
  const Arc3* other = second.ArcAt(j);
  if (arc != nullptr && other != nullptr) return ClosestBetween(*arc, *other);
  if (other != nullptr) return ClosestBetween(first.Ends(i), *other);
  if (arc != nullptr) return ClosestBetween(second.Ends(j), *arc).Swapped();
  return ClosestBetween(first.Ends(i), second.Ends(j));
}

class Search {
 public:
  Search(const ChainTree& first, const ChainTree& second)
      : m_first(first), m_second(second), m_best(PairOf(first.Chain().Ends(0).start, second.Chain().Ends(0).start)) {}

  NearPair Run() {
    Visit(0, 0);
    return m_best;
  }

 private:
  bool CanWin(double gap) const { return gap < m_best.distance || (std::isnan(m_best.distance) && gap < kInfinity); }

  bool CanReach(const Box& box, const Arc3* arc) const { return arc == nullptr || CanWin(Gap(box, *arc)); }
  bool CanReach(const Box& box, const ChainTree& tree, const ChainTree::Node& node) const {
    return node.Size() > 1 || CanReach(box, tree.Chain().ArcAt(node.begin));
  }

  void Visit(int a, int b) {
    if (!CanWin(Gap(m_first[a], m_second[b], m_best.distance))) return;
    if (!CanReach(m_first[a].box, m_second, m_second[b]) || !CanReach(m_second[b].box, m_first, m_first[a])) return;
    if (m_first[a].IsLeaf() && m_second[b].IsLeaf()) return Compare(m_first[a], m_second[b]);
    if (m_first[a].Size() >= m_second[b].Size()) return VisitNearerFirst(a + 1, b, m_first[a].right, b);
    VisitNearerFirst(a, b + 1, a, m_second[b].right);
  }

  void VisitNearerFirst(int a, int b, int c, int d) {
    const bool swap = Gap(m_first[c].box, m_second[d].box) < Gap(m_first[a].box, m_second[b].box);
    if (swap) Visit(c, d);
    Visit(a, b);
    if (!swap) Visit(c, d);
  }

  void Compare(const ChainTree::Node& a, const ChainTree::Node& b) {
    for (int i = a.begin; i < a.end; ++i) {
      const Box box = m_first.Chain().BoxOf(i);
      for (int j = b.begin; j < b.end; ++j) {
        const Box other = m_second.Chain().BoxOf(j);
        if (!CanWin(Gap(box, other)) || !CanReach(box, m_second.Chain().ArcAt(j)) ||
            !CanReach(other, m_first.Chain().ArcAt(i))) {
          continue;
        }
        const NearPair pair = ClosestPieces(m_first.Chain(), i, m_second.Chain(), j);
        if (pair.IsNearerThan(m_best)) m_best = pair;
      }
    }
  }

  const ChainTree& m_first;
  const ChainTree& m_second;
  NearPair m_best;
};

class SelfSearch {
 public:
  SelfSearch(const ChainTree& tree, bool closed, double tol)
      : m_tree(tree), m_chain(tree.Chain()), m_closed(closed), m_tol(tol), m_beyond(std::nextafter(tol, kInfinity)) {}

  bool Within(int a) const {
    const ChainTree::Node& node = m_tree[a];
    if (node.IsLeaf()) return Compare(node, node);
    return Within(a + 1) || Within(node.right) || Between(a + 1, node.right);
  }

 private:
  // All pieces of node a come before those of node b.
  bool Between(int a, int b) const {
    const ChainTree::Node& first = m_tree[a];
    const ChainTree::Node& second = m_tree[b];
    if (!(Gap(first, second, m_beyond) <= m_tol)) return false;
    if (first.IsLeaf() && second.IsLeaf()) return Compare(first, second);
    if (first.Size() >= second.Size()) return Between(a + 1, b) || Between(first.right, b);
    return Between(a, b + 1) || Between(a, second.right);
  }

  bool Compare(const ChainTree::Node& a, const ChainTree::Node& b) const {
    for (int i = a.begin; i < a.end; ++i) {
      for (int j = std::max(i + 1, b.begin); j < b.end; ++j) {
        if (Meet(i, j)) return true;
      }
    }
    return false;
  }

  bool Meet(int i, int j) const {
    if (!(Gap(m_chain.BoxOf(i), m_chain.BoxOf(j)) <= m_tol)) return false;
    const bool next = j == i + 1;
    const bool around = m_closed && i == 0 && j == m_chain.Size() - 1;
    if (next && FoldsBack(m_chain.Ends(i), m_chain.Ends(j))) return true;
    if (around && FoldsBack(m_chain.Ends(j), m_chain.Ends(i))) return true;
    return !next && !around && ClosestBetween(m_chain.Ends(i), m_chain.Ends(j)).distance <= m_tol;
  }

  bool FoldsBack(const Segment3& first, const Segment3& second) const {
    return PairOf(second.end, ClosestOn(first, second.end)).distance <= m_tol ||
           PairOf(first.start, ClosestOn(second, first.start)).distance <= m_tol;
  }

  const ChainTree& m_tree;
  const PieceChain& m_chain;
  bool m_closed;
  double m_tol;
  double m_beyond;
};

// Only coordinates of such sizes are scaled, whose products could leave the range of the doubles.
double ScaleOf(double size) {
  constexpr double kSafeSmall = 1e-30;  // to the sixth power
  constexpr double kSafeLarge = 1e30;
  return size > 0.0 && !(size >= kSafeSmall && size <= kSafeLarge) ? ScaleFor(size) : 1.0;
}

NearPair Closest(const PieceChain& first, const PieceChain& second) {
  return Search(ChainTree(first), ChainTree(second)).Run();
}

}  // namespace

Box PieceChain::BoxOf(int i) const {
  if (const Arc3* arc = ArcAt(i)) return nu::internal::BoxOf(*arc);
  Box box = kNowhere;
  Include(Ends(i).start, box);
  Include(Ends(i).end, box);
  return box;
}

double PieceChain::LargestCoordinate() const {
  double largest = 0.0;
  for (int i = 0; i < Size(); ++i) {
    const Box box = BoxOf(i);
    for (int k = 0; k < 3; ++k) largest = std::max({largest, -box.low[k], box.high[k]});
  }
  return largest;
}

PieceChain PieceChain::Scaled(double factor) const {
  PieceChain scaled(*this);
  for (Segment3& ends : scaled.m_ends) ends = {factor * ends.start, factor * ends.end};
  for (Arc3& arc : scaled.m_arcs) {
    arc.centre = factor * arc.centre;
    arc.start = factor * arc.start;
    arc.end = factor * arc.end;
    arc.radius *= factor;
  }
  return scaled;
}

NearPair ClosestBetween(const PieceChain& first, const PieceChain& second) {
  const double scale = ScaleOf(std::max(first.LargestCoordinate(), second.LargestCoordinate()));
  if (scale == 1.0) return Closest(first, second);
  const NearPair scaled = Closest(first.Scaled(scale), second.Scaled(scale));
  const double back = 1.0 / scale;
  return {back * scaled.distance, back * scaled.first, back * scaled.second};
}

bool TouchesItself(const PieceChain& chain, bool closed, double tol) {
  if (chain.Size() < 2) return false;
  const ChainTree tree(chain);
  return SelfSearch(tree, closed, tol).Within(0);
}

namespace {

Ball SmallestBallAround(const std::vector<Vec3>& points) {
  PointBlocks blocks({&points[0].x, sizeof(Vec3), points.size()}, points[0]);
  const Vec3 axes[3] = {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}};
  const EnclosingBall ball = SmallestEnclosingBall<3>(blocks, axes);
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  if (!ball.found) return {{nan, nan, nan}, nan};
  return {points[0] + ball.centre, ball.radius};
}

}  // namespace

// Arcs are known by some of their points, to which the farthest one outside is added until none is. The radius grows
// to the smallest one that encloses the arcs, and quickly: each point added is where its arc touches the ball, but for
// the square of what the centre still has to go.
Ball SmallestBallAround(const PieceChain& chain) {
  constexpr int kMaxRounds = 60;
  constexpr double kRoundings = 4.0 * DBL_EPSILON;
  std::vector<Vec3> points;
  points.reserve(static_cast<std::size_t>(chain.Size()) + 1);
  points.push_back(chain.Ends(0).start);
  for (int i = 0; i < chain.Size(); ++i) {
    points.push_back(chain.Ends(i).end);
    if (const Arc3* arc = chain.ArcAt(i)) points.push_back(arc->At(0.5 * arc->sweep));
  }
  Ball ball = SmallestBallAround(points);
  for (int round = 0; round < kMaxRounds; ++round) {
    const std::size_t known = points.size();
    for (int i = 0; i < chain.Size(); ++i) {
      const Arc3* arc = chain.ArcAt(i);
      if (arc == nullptr) continue;
      const Vec3 farthest = FarthestOn(*arc, ball.centre);
      if (SafeNorm(farthest - ball.centre) > ball.radius * (1.0 + kRoundings)) points.push_back(farthest);
    }
    if (points.size() == known) break;
    ball = SmallestBallAround(points);
  }
  return ball;
}

}  // namespace nu::internal
