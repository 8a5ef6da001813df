#include "nu/engine/chains/piece_chain.h"

#include <cfloat>
#include <cstdint>
#include <limits>

#include "nu/engine/base/floating_point.h"
#include "nu/engine/chains/chain_tree.h"
#include "nu/engine/chains/space_search.h"
#include "nu/engine/minimax/enclosing_ball.h"
#include "nu/engine/points/extents.h"

namespace nu::engine::chains {

namespace {

constexpr Vec3 kNoPoint{kQuietNaN, kQuietNaN, kQuietNaN};
constexpr NearPair kNoPair{kQuietNaN, kNoPoint, kNoPoint};

// The trees along the chains answer for measured curves in a few visits for each piece. Where many more do not do, as
// for edges that join scattered points, the space is searched with the pair found so far.
class Search {
 public:
  Search(const ChainTree& first, const ChainTree& second)
      : m_first(first),
        m_second(second),
        m_contact(DBL_EPSILON * std::max(first.Chain().LargestCoordinate(), second.Chain().LargestCoordinate())),
        m_visitsLeft(kVisitsPerPiece * (first.Chain().Size() + second.Chain().Size())),
        m_best(PairOf(first.Chain().Ends(0).start, second.Chain().Ends(0).start)) {}

  NearPair Run() {
    VisitPairs(m_first.Halves(), 0, m_second.Halves(), 0, *this);
    if (m_visitsLeft < 0) SpaceSearch(m_first.Chain(), m_second.Chain(), *this).Run();
    return m_best;
  }

  double Reach() const { return m_best.distance; }
  bool CanReach(double gap) const { return CanWin(gap); }
  bool CanHold(int a, int b) {
    return --m_visitsLeft >= 0 && CanWin(Gap(m_first[a], m_second[b], m_best.distance)) &&
           CanReach(m_first[a].box, m_second, m_second[b]) && CanReach(m_second[b].box, m_first, m_first[a]);
  }
  bool ComesFirst(int c, int d, int a, int b) const {
    return Gap(m_first[c].box, m_second[d].box) < Gap(m_first[a].box, m_second[b].box);
  }
  bool VisitLeaves(const ChainTree::Node& a, const ChainTree::Node& b) {
    for (int i = a.begin; i < a.end; ++i) {
      const Box box = m_first.Chain().BoxOf(i);
      for (int j = b.begin; j < b.end; ++j) {
        const Box other = m_second.Chain().BoxOf(j);
        if (CanWin(Gap(box, other)) && CanReach(box, m_second.Chain().ArcAt(j)) &&
            CanReach(other, m_first.Chain().ArcAt(i))) {
          Offer(i, j);
        }
      }
    }
    return true;
  }
  // False when nothing nearer is left to find.
  bool Compare(int i, int j) {
    Offer(i, j);
    return CanWin(0.0);
  }

 private:
  static constexpr std::int64_t kVisitsPerPiece = 50;

  // Pairs closer than the rounding of their coordinates touch, and none is closer.
  bool CanWin(double gap) const {
    if (std::isnan(m_best.distance)) return gap < kInfinity;
    return gap < m_best.distance && m_best.distance > m_contact;
  }

  bool CanReach(const Box& box, const Arc3* arc) const { return arc == nullptr || CanWin(Gap(box, *arc)); }
  bool CanReach(const Box& box, const ChainTree& tree, const ChainTree::Node& node) const {
    return node.Size() > 1 || CanReach(box, tree.Chain().ArcAt(node.begin));
  }

  void Offer(int i, int j) {
    if (AreApart(m_first.Chain(), i, m_second.Chain(), j, m_best.distance, m_contact)) return;
    const NearPair pair = ClosestPieces(m_first.Chain(), i, m_second.Chain(), j);
    if (pair.IsNearerThan(m_best)) m_best = pair;
  }

  const ChainTree& m_first;
  const ChainTree& m_second;
  double m_contact;
  std::int64_t m_visitsLeft;
  NearPair m_best;
};

NearPair Closest(const PieceChain& first, const PieceChain& second) {
  return Search(ChainTree(first), ChainTree(second)).Run();
}

}  // namespace

double SafeScale(double size) {
  constexpr double kSafeSmall = 1e-30;  // to the sixth power
  constexpr double kSafeLarge = 1e30;
  const bool isSafe = !(size > 0.0) || (size >= kSafeSmall && size <= kSafeLarge);
  return isSafe ? 1.0 : ScaleFor(std::min(size, std::numeric_limits<double>::max()));
}

NearPair ClosestPieces(const PieceChain& first, int i, const PieceChain& second, int j) {
  const Arc3* arc = first.ArcAt(i);
  const Arc3* other = second.ArcAt(j);
  if (arc != nullptr && other != nullptr) return ClosestBetween(*arc, *other);
  if (other != nullptr) return ClosestBetween(first.Ends(i), *other);
  if (arc != nullptr) return ClosestBetween(second.Ends(j), *arc).Swapped();
  return ClosestBetween(first.Ends(i), second.Ends(j));
}

bool AreApart(const PieceChain& first, int i, const PieceChain& second, int j, double distance, double rounding) {
  constexpr double kLeastSine = 1e-3;
  constexpr double kRoundings = 16.0 / kLeastSine;  // of the products, along n
  if (first.ArcAt(i) != nullptr || second.ArcAt(j) != nullptr) return false;
  const Segment3& a = first.Ends(i);
  const Segment3& b = second.Ends(j);
  const Vec3 d1 = a.end - a.start;
  const Vec3 d2 = b.end - b.start;
  const Vec3 n = Cross(d1, d2);
  const double square = Dot(n, n);
  if (!(square > kLeastSine * kLeastSine * Dot(d1, d1) * Dot(d2, d2))) return false;
  const double gap = Dot(b.start - a.start, n);
  const double far = distance + kRoundings * rounding;
  return gap * gap > far * far * square;
}

// A motion by a NaN shows in the ends of an arc, too.
bool PieceChain::HasNaN() const {
  return std::any_of(m_ends.begin(), m_ends.end(),
                     [](const Segment3& ends) { return shapes::HasNaN(ends.start) || shapes::HasNaN(ends.end); });
}

Box PieceChain::BoxOf(int i) const {
  if (const Arc3* arc = ArcAt(i)) return chains::BoxOf(*arc);
  Box box = EmptyBox();
  Include(Ends(i).start, box);
  Include(Ends(i).end, box);
  return box;
}

Box PieceChain::Bounds() const {
  Box bounds = EmptyBox();
  for (int i = 0; i < Size(); ++i) {
    if (!IsFinite(Ends(i).start) || !IsFinite(Ends(i).end)) {
      return {{kQuietNaN, kQuietNaN, kQuietNaN}, {kQuietNaN, kQuietNaN, kQuietNaN}};
    }
    Include(BoxOf(i), bounds);
  }
  return bounds;
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
  if (first.HasNaN() || second.HasNaN()) return kNoPair;
  const double scale = SafeScale(std::max(first.LargestCoordinate(), second.LargestCoordinate()));
  if (scale == 1.0) return Closest(first, second);
  const NearPair scaled = Closest(first.Scaled(scale), second.Scaled(scale));
  const double back = 1.0 / scale;
  return {back * scaled.distance, back * scaled.first, back * scaled.second};
}

std::vector<Vec3> PointsOf(const PieceChain& chain, std::initializer_list<double> parts) {
  std::vector<Vec3> points;
  points.reserve(static_cast<std::size_t>(chain.Size()) + 1);
  for (int i = 0; i < chain.Size(); ++i) {
    const Segment3& ends = chain.Ends(i);
    if (points.empty() || LargestComponent(ends.start - points.back()) != 0.0) points.push_back(ends.start);
    if (const Arc3* arc = chain.ArcAt(i)) {
      for (const double part : parts) points.push_back(arc->At(part * arc->sweep));
    }
    points.push_back(ends.end);
  }
  return points;
}

namespace {

Ball BallAround(const std::vector<Vec3>& points) {
  PointBlocks blocks({&points[0].x, sizeof(Vec3), points.size()}, points[0]);
  const Vec3 axes[3] = {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}};
  const EnclosingBall ball = SmallestEnclosingBall<3>(blocks, axes);
  if (!ball.found) return {kNoPoint, kQuietNaN};
  return {points[0] + ball.centre, ball.radius};
}

// Arcs are known by some of their points, to which the farthest one outside is added until none is. The radius grows
// to the smallest one that encloses the arcs, and quickly: each point added is where its arc touches the ball, but for
// the square of what the centre still has to go.
Ball BallAround(const PieceChain& chain) {
  constexpr int kMaxRounds = 60;
  constexpr double kRoundings = 4.0 * DBL_EPSILON;
  std::vector<Vec3> points = PointsOf(chain, {0.5});
  Ball ball = BallAround(points);
  for (int round = 0; round < kMaxRounds; ++round) {
    const std::size_t known = points.size();
    for (int i = 0; i < chain.Size(); ++i) {
      const Arc3* arc = chain.ArcAt(i);
      if (arc == nullptr) continue;
      const Vec3 farthest = FarthestOn(*arc, ball.centre);
      if (SafeNorm(farthest - ball.centre) > ball.radius * (1.0 + kRoundings)) points.push_back(farthest);
    }
    if (points.size() == known) break;
    ball = BallAround(points);
  }
  return ball;
}

}  // namespace

Ball SmallestBallAround(const PieceChain& chain) {
  const double scale = SafeScale(chain.LargestCoordinate());
  if (scale == 1.0) return BallAround(chain);
  const Ball scaled = BallAround(chain.Scaled(scale));
  return {(1.0 / scale) * scaled.centre, scaled.radius / scale};
}

}  // namespace nu::engine::chains
