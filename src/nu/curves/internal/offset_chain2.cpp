#include "nu/curves/internal/offset_chain2.h"

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <unordered_map>

#include "nu/curves/internal/offset_trace2.h"
#include "nu/curves/internal/piece_tree2.h"

namespace nu::internal {

namespace {

constexpr double kRounding = 1e-14;  // of places of crossings, for coordinates of about 1

std::size_t Index(int i) {
  return static_cast<std::size_t>(i);
}

std::vector<Piece2> Reversed(const std::vector<Piece2>& chain) {
  std::vector<Piece2> reversed;
  reversed.reserve(chain.size());
  for (std::size_t i = chain.size(); i-- > 0;) reversed.push_back(chain[i].Reversed());
  return reversed;
}

// Both sides of a closed chain, or there and back of another one. Returns the ends of what is asked for.
RawEnds AddBothSides(const std::vector<Piece2>& chain, bool closed, double distance, OffsetCorner corner, double snap,
                     RawOffset& raw) {
  const std::vector<Piece2> back = Reversed(chain);
  if (closed) {
    const RawEnds ends = AddRawOffset(chain, chain.size(), distance, corner, snap, raw);
    const std::size_t kept = raw.pieces.size();
    AddRawOffset(back, back.size(), distance, OffsetCorner::round, snap, raw);
    std::fill(raw.roles.begin() + static_cast<std::ptrdiff_t>(kept), raw.roles.end(), RawRole::border);
    return ends;
  }
  std::vector<Piece2> around = chain;
  around.insert(around.end(), back.begin(), back.end());
  return AddRawOffset(around, chain.size(), distance, corner, snap, raw);
}

// Leaves out pieces that are too close to one point of the chain all along: where the distance is far above the radii
// of curvature those are most of them, and they cross each other many times.
void DropCovered(const PieceTree2& chain, double distance, RawOffset& raw) {
  std::vector<int> places(raw.pieces.size(), -1);
  int left = 0;
  for (int i = 0; i < static_cast<int>(raw.pieces.size()); ++i) {
    const Piece2& piece = raw.pieces[Index(i)];
    const std::optional<Vec2> closest = chain.ClosestWithin(distance, piece.At(0.5 * piece.length));
    if (closest && piece.ReachFrom(*closest) < distance) continue;
    raw.pieces[Index(left)] = piece;
    raw.from[Index(left)] = raw.from[Index(i)];
    raw.to[Index(left)] = raw.to[Index(i)];
    raw.roles[Index(left)] = raw.roles[Index(i)];
    places[Index(i)] = left++;
  }
  raw.pieces.resize(Index(left));
  std::vector<RawCut> cuts;
  for (std::size_t i = 0; i < raw.cuts.size(); i += 2) {
    const int first = places[Index(raw.cuts[i].piece)];
    const int second = places[Index(raw.cuts[i + 1].piece)];
    if (first < 0 || second < 0) continue;
    cuts.push_back({first, raw.cuts[i].at, raw.cuts[i].node});
    cuts.push_back({second, raw.cuts[i + 1].at, raw.cuts[i + 1].node});
  }
  raw.cuts = std::move(cuts);
}

// Cuts pieces where they cross others. Nodes at crossings with borders are marked.
class Cutter {
 public:
  Cutter(RawOffset& raw, double touchTol) : m_raw(raw), m_touchTol(touchTol), m_isBorder(raw.nodes.size(), 0) {
    m_cornerOf.assign(raw.pieces.size(), -1);
    // Corners cut the end of a piece before the start of another one, so that the first is known by its piece.
    for (std::size_t i = 0; i < raw.cuts.size(); i += 2) m_cornerOf[Index(raw.cuts[i].piece)] = static_cast<int>(i);
  }

  void Run() {
    const PieceTree2 tree(m_raw.pieces);
    tree.VisitPairs(m_touchTol, [&](int i, int j) {
      if (!IsKept(i) && !IsKept(j)) return;
      CutPair(i, j);
      CutAtEnds(i, j);
      CutAtEnds(j, i);
    });
  }

  bool IsBorderNode(std::size_t node) const { return m_isBorder[node] != 0; }

 private:
  bool IsKept(int i) const { return m_raw.roles[Index(i)] == RawRole::kept; }
  bool IsBorder(int i) const { return m_raw.roles[Index(i)] == RawRole::border; }

  void CutPair(int i, int j) {
    const Crossings2 found = Cross(m_raw.pieces[Index(i)], m_raw.pieces[Index(j)], kRounding);
    for (int k = 0; k < found.count; ++k) {
      const Crossing2& at = found.at[k];
      const Vec2 p = m_raw.pieces[Index(i)].At(at.onFirst);
      if (IsShared(i, j, p) || IsKnown(i, j, at) || IsKnown(j, i, {at.onSecond, at.onFirst, at.sine})) continue;
      const int node = static_cast<int>(m_raw.nodes.size());
      m_raw.nodes.push_back(p);
      m_isBorder.push_back(IsBorder(i) || IsBorder(j) ? 1 : 0);
      m_raw.cuts.push_back({i, at.onFirst, node});
      m_raw.cuts.push_back({j, at.onSecond, node});
    }
  }

  // Where one piece ends on another: pieces that run along each other for a while do not cross.
  void CutAtEnds(int i, int j) {
    const Piece2& piece = m_raw.pieces[Index(i)];
    if (!IsKept(i)) return;
    for (const int node : {m_raw.from[Index(j)], m_raw.to[Index(j)]}) {
      if (node == m_raw.from[Index(i)] || node == m_raw.to[Index(i)]) continue;
      const Vec2 p = m_raw.nodes[Index(node)];
      const double s = piece.ParameterOf(p);
      if (!(s > m_touchTol && s < piece.length - m_touchTol)) continue;
      if (!(std::fabs(piece.HeightOf(p)) <= m_touchTol)) continue;
      m_raw.cuts.push_back({i, s, node});
      if (IsBorder(j)) m_isBorder[Index(node)] = 1;
    }
  }

  // Pieces that follow each other touch where one ends, as the arc that a sharp corner hides touches the corner's
  // sides; roundings can make crossings around that.
  bool IsShared(int i, int j, Vec2 p) const {
    constexpr double kNear = 1e-7;
    const auto isAt = [&](int node) { return Norm(p - m_raw.nodes[Index(node)]) <= kNear; };
    const auto follows = [&](int a, int b) {
      return m_raw.to[Index(a)] == m_raw.from[Index(b)] && isAt(m_raw.to[Index(a)]);
    };
    const auto touches = [&](int a) {
      return m_raw.roles[Index(a)] == RawRole::hidden && (isAt(m_raw.from[Index(a)]) || isAt(m_raw.to[Index(a)]));
    };
    return follows(i, j) || follows(j, i) || touches(i) || touches(j);
  }

  // The corner between the pieces, which is better known.
  bool IsKnown(int i, int j, const Crossing2& at) const {
    const int corner = m_cornerOf[Index(i)];
    if (corner < 0 || m_raw.cuts[Index(corner) + 1].piece != j) return false;
    const double off = std::fabs(m_raw.cuts[Index(corner)].at - at.onFirst) +
                       std::fabs(m_raw.cuts[Index(corner) + 1].at - at.onSecond);
    constexpr double kRoundings = 100.0;
    return off * std::fabs(at.sine) <= kRoundings * kRounding;
  }

  RawOffset& m_raw;
  double m_touchTol;
  std::vector<char> m_isBorder;
  std::vector<int> m_cornerOf;
};

// Nodes no farther apart than the tolerance, directly or through others, are one: the least number stands for all.
class NodeMerger {
 public:
  NodeMerger(const std::vector<Vec2>& nodes, double tol) : m_nodes(nodes), m_tol(tol), m_parent(nodes.size()) {
    std::iota(m_parent.begin(), m_parent.end(), 0);
    std::unordered_map<std::uint64_t, int> last;  // of the nodes in a cell
    last.reserve(nodes.size());
    std::vector<int> before(nodes.size(), -1);
    for (int i = 0; i < static_cast<int>(nodes.size()); ++i) {
      const std::int64_t x = CellOf(nodes[Index(i)].x);
      const std::int64_t y = CellOf(nodes[Index(i)].y);
      for (std::int64_t k = 0; k < 9; ++k) {
        const auto cell = last.find(KeyOf(x + k / 3 - 1, y + k % 3 - 1));
        // One node of each group in reach is enough, and most cells hold one.
        for (int j = cell == last.end() ? -1 : cell->second; j >= 0; j = before[Index(j)]) {
          if (Unite(i, j)) break;
        }
      }
      const auto own = last.try_emplace(KeyOf(x, y), -1).first;
      before[Index(i)] = own->second;
      own->second = i;
    }
    for (int i = 0; i < static_cast<int>(nodes.size()); ++i) m_parent[Index(i)] = Root(i);
  }

  const std::vector<int>& Groups() const { return m_parent; }

 private:
  std::int64_t CellOf(double x) const { return static_cast<std::int64_t>(std::floor(x / m_tol)); }
  static std::uint64_t KeyOf(std::int64_t x, std::int64_t y) {
    constexpr std::uint64_t kSpread = 0x9E3779B97F4A7C15u;
    return static_cast<std::uint64_t>(x) * kSpread ^ static_cast<std::uint64_t>(y);
  }

  bool Unite(int i, int j) {
    if (!(Norm(m_nodes[Index(i)] - m_nodes[Index(j)]) <= m_tol)) return false;
    const int a = Root(i);
    const int b = Root(j);
    m_parent[Index(std::max(a, b))] = std::min(a, b);
    return true;
  }

  int Root(int i) {
    while (m_parent[Index(i)] != i) i = m_parent[Index(i)] = m_parent[Index(m_parent[Index(i)])];
    return i;
  }

  const std::vector<Vec2>& m_nodes;
  double m_tol;
  std::vector<int> m_parent;
};

// The parts between cuts that are not too close to the chain, and have some room to their right: where walls are just
// two distances apart, both offsets run there and back between them. Short parts may do without, as they must where
// offsets touch.
std::vector<TraceEdge> FreeParts(const RawOffset& raw, const std::vector<int>& group, const PieceTree2& chain,
                                 double distance, double mergeTol) {
  const double keepTol = 2.0 * mergeTol;
  const double room = keepTol + 0.5 * mergeTol;  // so that what is left out has ends that are one
  constexpr double kShort = 1e-5;  // curves of a size of about 1 that touch are no farther apart than `room` for that
  const auto isFree = [&](const Piece2& piece, double from, double to) {
    const double at = from + 0.5 * (to - from);
    const double aside = to - from > kShort ? room : 0.0;
    const Vec2 p = piece.At(at) - aside * Perpendicular(piece.DirectionAt(at));
    return !chain.HasPieceWithin(distance - keepTol, p);
  };
  std::vector<std::vector<RawCut>> cuts(raw.pieces.size());
  for (const RawCut& cut : raw.cuts) cuts[Index(cut.piece)].push_back(cut);
  std::vector<TraceEdge> edges;
  for (int i = 0; i < static_cast<int>(raw.pieces.size()); ++i) {
    if (raw.roles[Index(i)] != RawRole::kept) continue;
    const Piece2& piece = raw.pieces[Index(i)];
    std::vector<RawCut>& on = cuts[Index(i)];
    std::stable_sort(on.begin(), on.end(), [](const RawCut& a, const RawCut& b) { return a.at < b.at; });
    on.push_back({i, piece.length, raw.to[Index(i)]});
    RawCut last{i, 0.0, raw.from[Index(i)]};
    for (const RawCut& cut : on) {
      const bool isPoint = group[Index(last.node)] == group[Index(cut.node)] && cut.at - last.at <= 8.0 * mergeTol;
      if (!isPoint && isFree(piece, last.at, cut.at)) {
        edges.push_back({i, last.at, cut.at, group[Index(last.node)], group[Index(cut.node)]});
      }
      last = cut;
    }
  }
  return edges;
}

// Moves an end along the piece, which stays on its circle.
void MoveStart(Piece2& piece, Vec2 to) {
  const double along = Dot(to - piece.start, piece.direction);
  piece.start = to;
  piece.direction = piece.DirectionAt(along);
  piece.length -= along;
}
void MoveEnd(Piece2& piece, Vec2 to) {
  piece.length += Dot(to - piece.end, piece.EndDirection());
  piece.end = to;
}

// An arc whose end has left its circle goes around the point on the bisector of its ends that is closest to its centre:
// an arc is rebuilt from its centre and ends where these are as far apart. Up to a half turn it stays as close to its
// circle as its end; a longer one leaves it by the way of the centre, and keeps it where that is far.
void CentreBetweenEnds(Piece2& arc, double farthest) {
  const Vec2 chord = arc.end - arc.start;
  const double half = 0.5 * Norm(chord);
  const Vec2 along = (0.5 / half) * chord;
  const Vec2 toCentre = (1.0 / arc.curvature) * Perpendicular(arc.direction);
  const double side = std::copysign(1.0, arc.curvature);
  const double height = side * Dot(toCentre, Perpendicular(along));
  if (!(height >= 0.0 || std::fabs(Dot(toCentre, along) - half) <= farthest)) return;
  const double radius = std::hypot(half, height);
  arc.direction = (height / radius) * along - (side * half / radius) * Perpendicular(along);
  arc.curvature = side / radius;
  arc.length = 2.0 * radius * std::atan2(half, height);
}

// The ends of pieces made to meet, without pieces too short to be any. False where a gap is no rounding.
bool Join(std::vector<Piece2>& pieces, double tol, double snap, double mergeTol) {
  constexpr double kLargestGap = 200.0;  // of corners that count as smooth, of nodes that are one through others
  std::erase_if(pieces, [&](const Piece2& piece) { return !(piece.length > snap); });
  const std::size_t size = pieces.size();
  if (size == 0) return false;
  const bool closed = Norm(pieces.front().start - pieces.back().end) <= kLargestGap * mergeTol;
  bool joined = true;
  for (std::size_t i = 0; i + (closed ? 0 : 1) < size; ++i) {
    Piece2& piece = pieces[i];
    Piece2& next = pieces[i + 1 < size ? i + 1 : 0];
    if (!(Norm(next.start - piece.end) <= kLargestGap * mergeTol)) joined = false;
    const Vec2 middle = piece.end + 0.5 * (next.start - piece.end);
    MoveEnd(piece, middle);
    MoveStart(next, middle);
  }
  constexpr double kPart = 0.25;  // of what an arc may be off by; the rest is for roundings of the way back
  for (Piece2& piece : pieces) {
    if (piece.curvature == 0.0 || std::fabs(piece.HeightOf(piece.end)) <= kPart * tol) continue;
    CentreBetweenEnds(piece, 10.0 * mergeTol);
  }
  return joined;
}

}  // namespace

OffsetChain OffsetPieces(const std::vector<Piece2>& chain, bool closed, double distance, OffsetCorner corner,
                         double tol) {
  const double snap = std::max(4.0 * tol, 1e-12);
  const double mergeTol = std::max(1e-11, 2.0 * snap);
  OffsetChain result;
  RawOffset raw;
  const RawEnds ends = AddBothSides(chain, closed, distance, corner, snap, raw);
  result.outcome = raw.foldsBack ? OffsetChain::Outcome::foldsBack : OffsetChain::Outcome::vanished;
  if (raw.foldsBack) return result;
  const PieceTree2 tree(chain);
  DropCovered(tree, distance - 2.0 * mergeTol, raw);
  if (raw.pieces.empty()) return result;
  Cutter cutter(raw, 0.5 * mergeTol);
  cutter.Run();
  const NodeMerger merger(raw.nodes, mergeTol);
  const std::vector<int>& group = merger.Groups();
  const std::vector<TraceEdge> edges = FreeParts(raw, group, tree, distance, mergeTol);
  if (edges.empty()) return result;
  Trace trace(raw, group, edges);
  if (!closed) {
    trace.AllowEnd(group[Index(ends.start)]);
    trace.AllowEnd(group[Index(ends.end)]);
    for (std::size_t i = 0; i < raw.nodes.size(); ++i) {
      if (cutter.IsBorderNode(i)) trace.AllowEnd(group[i]);
    }
  }
  result.pieces = closed ? trace.LargestLoop() : trace.LongestPath();
  if (result.pieces.empty()) return result;
  result.outcome =
      Join(result.pieces, tol, snap, mergeTol) ? OffsetChain::Outcome::moved : OffsetChain::Outcome::broken;
  return result;
}

}  // namespace nu::internal
