#include "nu/engine/chains/offset_chain2.h"

#include <algorithm>
#include <numeric>

#include "nu/engine/base/elementary.h"
#include "nu/engine/chains/near_pieces2.h"
#include "nu/engine/chains/offset_trace2.h"

namespace nu::engine::chains {

namespace {

constexpr double kRounding = 1e-14;  // of places of crossings, for coordinates of about 1

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

// A grid that knows one piece of a chain for most cells that the chain passes.
class PassingPieces {
 public:
  PassingPieces(const std::vector<Piece2>& chain, double cell) {
    for (const Piece2& piece : chain) m_bounds.Include(BoxOf(piece));
    const double side = std::max(m_bounds.high.x - m_bounds.low.x, m_bounds.high.y - m_bounds.low.y);
    // No more cells than sixteen times the pieces.
    m_size = static_cast<int>(std::clamp(side / cell, 1.0, std::sqrt(16.0 * static_cast<double>(chain.size()))));
    m_cell = side / m_size;
    if (!(m_cell > 0.0)) return;
    m_pieces.assign(Index(m_size) * Index(m_size), -1);
    Fill(chain);
  }

  // A piece closer to p than the distance, from its cell and those around it; -1 where none is known.
  int PieceWithin(const std::vector<Piece2>& chain, double distance, Vec2 p) const {
    constexpr int kOrder[9] = {4, 1, 3, 5, 7, 0, 2, 6, 8};  // the own cell first
    for (const int k : kOrder) {
      if (m_pieces.empty()) break;
      const int column = k % 3 - 1, row = k / 3 - 1;
      const int piece = m_pieces[CellOf({p.x + column * m_cell, p.y + row * m_cell})];
      if (piece >= 0 && chain[Index(piece)].DistanceTo(p) < distance) return piece;
    }
    return -1;
  }

 private:
  // Long pieces fill the grid before all of them are entered.
  void Fill(const std::vector<Piece2>& chain) {
    constexpr double kStepsPerCell = 4.0;
    double stepsLeft = kStepsPerCell * static_cast<double>(m_pieces.size() + chain.size());
    for (int i = 0; i < static_cast<int>(chain.size()) && stepsLeft > 0.0; ++i) {
      const Piece2& piece = chain[Index(i)];
      const double steps = std::ceil(piece.length / m_cell);
      for (double k = 0.0; k < steps; k += 1.0) m_pieces[CellOf(piece.At((k + 0.5) / steps * piece.length))] = i;
      stepsLeft -= steps;
    }
  }

  std::size_t CellOf(Vec2 p) const {
    const double last = m_size - 1.0;
    const double x = std::clamp(std::floor((p.x - m_bounds.low.x) / m_cell), 0.0, last);
    const double y = std::clamp(std::floor((p.y - m_bounds.low.y) / m_cell), 0.0, last);
    return static_cast<std::size_t>(y) * Index(m_size) + static_cast<std::size_t>(x);
  }

  Box2 m_bounds;
  int m_size = 0;
  double m_cell = 0.0;
  std::vector<int> m_pieces;
};

// Whether pieces are closer to a chain than the distance all along. A part is when all of it is that close to a point
// of the chain near its middle, or when both its halves are.
class Cover {
 public:
  Cover(const std::vector<Piece2>& chain, NearPieces2& near, double distance)
      : m_chain(chain),
        m_near(near),
        m_distance(distance),
        m_passing(chain, 0.5 * distance),
        m_last(chain.front().start) {}

  bool Holds(const Piece2& piece) {
    constexpr int kMaxHalvings = 10;
    return Holds(piece, 0.0, piece.length, kMaxHalvings);
  }

 private:
  bool Holds(const Piece2& piece, double from, double to, int halvings) {
    const Piece2 part = piece.Part(from, to);
    if (part.ReachFrom(m_last) < m_distance) return true;
    const double middle = from + 0.5 * (to - from);
    if (!FindNear(piece.At(middle))) return false;
    if (part.ReachFrom(m_last) < m_distance) return true;
    return halvings > 0 && Holds(piece, from, middle, halvings - 1) && Holds(piece, middle, to, halvings - 1);
  }

  // A piece that is near enough is found sooner than the closest one, in a tangle by far.
  bool FindNear(Vec2 p) {
    const double near = 0.5 * m_distance;
    m_near.CountVisit();
    int piece = m_passing.PieceWithin(m_chain, near, p);
    if (piece < 0) piece = m_near.PieceWithin(near, p);
    const std::optional<Vec2> found =
        piece >= 0 ? m_chain[Index(piece)].ClosestTo(p) : m_near.ClosestWithin(m_distance, p);
    if (found) m_last = *found;
    return found.has_value();
  }

  const std::vector<Piece2>& m_chain;
  NearPieces2& m_near;
  double m_distance;
  PassingPieces m_passing;
  Vec2 m_last;  // the point that held the last part often holds the next one
};

// Leaves out pieces that are too close to the chain all along: where the distance is far above the radii of curvature
// or above the gaps of a tangle those are most of them, and they cross each other many times.
void DropCovered(const std::vector<Piece2>& chain, NearPieces2& near, double distance, RawOffset& raw) {
  Cover cover(chain, near, distance);
  std::vector<int> places(raw.pieces.size(), -1);
  int left = 0;
  for (int i = 0; i < static_cast<int>(raw.pieces.size()); ++i) {
    const Piece2& piece = raw.pieces[Index(i)];
    if (near.IsExhausted()) return;
    if (cover.Holds(piece)) continue;
    raw.pieces[Index(left)] = piece;
    raw.from[Index(left)] = raw.from[Index(i)];
    raw.to[Index(left)] = raw.to[Index(i)];
    raw.roles[Index(left)] = raw.roles[Index(i)];
    places[Index(i)] = left++;
  }
  raw.pieces.resize(Index(left));
  raw.from.resize(Index(left));
  raw.to.resize(Index(left));
  raw.roles.resize(Index(left));
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

// Leaves out the nodes that no piece, cut or end refers to.
void DropNodes(RawOffset& raw, RawEnds& ends) {
  std::vector<int> places(raw.nodes.size(), -1);
  int left = 0;
  const auto keep = [&](int& node) {
    int& place = places[Index(node)];
    if (place < 0) place = left++;
    node = place;
  };
  for (int& node : raw.from) keep(node);
  for (int& node : raw.to) keep(node);
  for (RawCut& cut : raw.cuts) keep(cut.node);
  keep(ends.start);
  keep(ends.end);
  std::vector<Vec2> nodes(Index(left));
  for (std::size_t i = 0; i < places.size(); ++i) {
    if (places[i] >= 0) nodes[Index(places[i])] = raw.nodes[i];
  }
  raw.nodes = std::move(nodes);
}

// The pieces, turned so that the direction that most of their length has, if there is one, is that of the x axis: boxes
// around the strokes of a hatching are as thin as these then. A direction and its opposite are one: twice their angle
// is averaged.
std::vector<Piece2> AlongMainDirection(const std::vector<Piece2>& pieces) {
  constexpr double kMostOfLength = 0.5;
  Vec2 sum{0.0, 0.0};
  double lengths = 0.0;
  for (const Piece2& piece : pieces) {
    const Vec2 chord = piece.end - piece.start;
    const double length = Norm(chord);
    if (!(length > 0.0)) continue;
    lengths += length;
    sum = sum + (1.0 / length) * Vec2{chord.x * chord.x - chord.y * chord.y, 2.0 * chord.x * chord.y};
  }
  if (!(Norm(sum) > kMostOfLength * lengths)) return pieces;
  const double angle = -0.5 * Atan2(sum.y, sum.x);
  std::vector<Piece2> turned = pieces;
  for (Piece2& piece : turned) {
    piece.start = Rotated(piece.start, angle);
    piece.end = Rotated(piece.end, angle);
    piece.direction = Rotated(piece.direction, angle);
  }
  return turned;
}

// Cuts pieces where they cross others. Nodes at crossings with borders are marked.
class Cutter {
 public:
  Cutter(RawOffset& raw, double touchTol) : m_raw(raw), m_touchTol(touchTol), m_isBorder(raw.nodes.size(), 0) {
    m_cornerOf.assign(raw.pieces.size(), -1);
    // Corners cut the end of a piece before the start of another one, so that the first is known by its piece.
    for (std::size_t i = 0; i < raw.cuts.size(); i += 2) m_cornerOf[Index(raw.cuts[i].piece)] = static_cast<int>(i);
  }

  // False when there are too many crossings: those of long edges grow with the square of their number.
  bool Run(std::size_t pieces) {
    constexpr std::size_t kMostCuts = 8'000'000;
    constexpr std::size_t kMostCutsPerPiece = 40;
    const std::size_t most = kMostCuts + kMostCutsPerPiece * pieces;
    const std::vector<Piece2> turned = AlongMainDirection(m_raw.pieces);
    const PieceTree2 tree(turned);
    return tree.VisitPairs(m_touchTol, [&](int i, int j) {
      if (!IsKept(i) && !IsKept(j)) return true;
      CutPair(i, j);
      CutAtEnds(i, j);
      CutAtEnds(j, i);
      return m_raw.cuts.size() <= most;
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
// Sorted along one axis, nodes fall into runs where the next one is farther away than the tolerance. Runs are split
// along either axis in turn, which leaves few nodes together.
class NodeMerger {
 public:
  NodeMerger(const std::vector<Vec2>& nodes, double tol) : m_nodes(nodes), m_tol(tol), m_parent(nodes.size()) {
    std::iota(m_parent.begin(), m_parent.end(), 0);
    m_order = m_parent;
    SplitRun(0, m_order.size(), 0);
    for (int i = 0; i < static_cast<int>(nodes.size()); ++i) m_parent[Index(i)] = Root(i);
  }

  const std::vector<int>& Groups() const { return m_parent; }

 private:
  // Along x and y in turn.
  double At(std::size_t place, int depth) const {
    const Vec2 p = m_nodes[Index(m_order[place])];
    return depth % 2 == 0 ? p.x : p.y;
  }

  void SplitRun(std::size_t begin, std::size_t end, int depth) {
    constexpr int kMaxDepth = 8;
    const auto order = m_order.begin();
    std::sort(order + static_cast<std::ptrdiff_t>(begin), order + static_cast<std::ptrdiff_t>(end), [&](int i, int j) {
      const Vec2 p = m_nodes[Index(i)];
      const Vec2 q = m_nodes[Index(j)];
      const double ahead = depth % 2 == 0 ? q.x - p.x : q.y - p.y;
      return ahead > 0.0 || (ahead == 0.0 && i < j);
    });
    if (depth == kMaxDepth) return UniteRun(begin, end, depth);
    for (std::size_t first = begin, i = begin + 1; i <= end; ++i) {
      if (i < end && At(i, depth) - At(i - 1, depth) <= m_tol) continue;
      if (i - first == 2) {
        Unite(m_order[first], m_order[first + 1]);
      } else if (i - first > 2) {
        SplitRun(first, i, depth + 1);
      }
      first = i;
    }
  }

  void UniteRun(std::size_t begin, std::size_t end, int depth) {
    const auto isNearFirst = [&](int i) { return Norm(m_nodes[Index(i)] - m_nodes[Index(m_order[begin])]) <= m_tol; };
    const auto first = m_order.begin() + static_cast<std::ptrdiff_t>(begin);
    const auto last = m_order.begin() + static_cast<std::ptrdiff_t>(end);
    if (std::all_of(first, last, isNearFirst)) {
      for (std::size_t i = begin + 1; i < end; ++i) Unite(m_order[begin], m_order[i]);
      return;
    }
    for (std::size_t i = begin; i < end; ++i) {
      for (std::size_t j = i + 1; j < end && At(j, depth) - At(i, depth) <= m_tol; ++j) Unite(m_order[i], m_order[j]);
    }
  }

  void Unite(int i, int j) {
    if (!(Norm(m_nodes[Index(i)] - m_nodes[Index(j)]) <= m_tol)) return;
    const int a = Root(i);
    const int b = Root(j);
    m_parent[Index(std::max(a, b))] = std::min(a, b);
  }

  int Root(int i) {
    while (m_parent[Index(i)] != i) i = m_parent[Index(i)] = m_parent[Index(m_parent[Index(i)])];
    return i;
  }

  const std::vector<Vec2>& m_nodes;
  double m_tol;
  std::vector<int> m_parent;
  std::vector<int> m_order;
};

// The parts between cuts that are not too close to the chain, and have some room to their right: where walls are just
// two distances apart, both offsets run there and back between them. Short parts may do without, as they must where
// offsets touch.
std::vector<TraceEdge> FreeParts(const RawOffset& raw, const std::vector<int>& group, const std::vector<Piece2>& chain,
                                 NearPieces2& nearPieces, double distance, double mergeTol) {
  const double keepTol = 2.0 * mergeTol;
  const double room = keepTol + 0.5 * mergeTol;  // so that what is left out has ends that are one
  constexpr double kShort = 1e-5;  // curves of a size of about 1 that touch are no farther apart than `room` for that
  int nearest = 0;  // a piece of the chain that was too close to the last part, and often is to the next one
  const auto isFree = [&](const Piece2& piece, double from, double to) {
    const double at = from + 0.5 * (to - from);
    const double aside = to - from > kShort ? room : 0.0;
    const Vec2 p = piece.At(at) - aside * Perpendicular(piece.DirectionAt(at));
    if (chain[Index(nearest)].DistanceTo(p) < distance - keepTol) return false;
    const int near = nearPieces.PieceWithin(distance - keepTol, p);
    if (near >= 0) nearest = near;
    return near < 0;
  };
  std::vector<std::vector<RawCut>> cuts(raw.pieces.size());
  for (const RawCut& cut : raw.cuts) cuts[Index(cut.piece)].push_back(cut);
  std::vector<TraceEdge> edges;
  for (int i = 0; i < static_cast<int>(raw.pieces.size()); ++i) {
    if (nearPieces.IsExhausted()) break;
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
  const double radius = Hypot(half, height);
  arc.direction = (height / radius) * along - (side * half / radius) * Perpendicular(along);
  arc.curvature = side / radius;
  arc.length = 2.0 * radius * Atan2(half, height);
}

// The ends of pieces made to meet. False where a gap is no rounding.
bool Meet(std::vector<Piece2>& pieces, double largestGap, bool closed) {
  bool joined = true;
  for (std::size_t i = 0; i + (closed ? 0 : 1) < pieces.size(); ++i) {
    Piece2& piece = pieces[i];
    Piece2& next = pieces[i + 1 < pieces.size() ? i + 1 : 0];
    if (!(Norm(next.start - piece.end) <= largestGap)) joined = false;
    const Vec2 middle = piece.end + 0.5 * (next.start - piece.end);
    MoveEnd(piece, middle);
    MoveStart(next, middle);
  }
  return joined;
}

// Without pieces too short to be any, also those that shrink when their ends are moved; of a loop as small as that none
// are left. False where a gap is no rounding.
bool Join(std::vector<Piece2>& pieces, double tol, double snap, double mergeTol) {
  constexpr double kLargestGap = 200.0;  // of corners that count as smooth, of nodes that are one through others
  constexpr double kCoincident = 2.0;    // ends this close, in tolerances, may be one when they are mapped back
  constexpr int kMaxPasses = 20;
  const double largestGap = kLargestGap * mergeTol;
  std::erase_if(pieces, [&](const Piece2& piece) { return !(piece.length > snap); });
  if (pieces.empty()) return true;
  const bool closed = Norm(pieces.front().start - pieces.back().end) <= largestGap;
  bool joined = Meet(pieces, largestGap, closed);
  const auto hasShrunk = [&](const Piece2& piece) {
    return !((piece.curvature == 0.0 ? Norm(piece.end - piece.start) : piece.length) > kCoincident * tol);
  };
  for (int pass = 0; std::erase_if(pieces, hasShrunk) > 0; ++pass) {
    joined = Meet(pieces, largestGap, closed) && joined && pass < kMaxPasses;
    if (!joined) break;
  }
  constexpr double kPart = 0.25;  // of what an arc may be off by; the rest is for roundings of the way back
  for (Piece2& piece : pieces) {
    if (piece.curvature == 0.0 || std::fabs(piece.HeightOf(piece.end)) <= kPart * tol) continue;
    CentreBetweenEnds(piece, 10.0 * mergeTol);
  }
  return joined;
}

OffsetChain Vanished() {
  return {OffsetChain::Outcome::vanished, {}};
}

}  // namespace

OffsetChain OffsetPieces(const std::vector<Piece2>& chain, bool closed, double distance, OffsetCorner corner,
                         double tol) {
  const double snap = std::max(4.0 * tol, 1e-12);
  const double mergeTol = std::max(1e-11, 2.0 * snap);
  OffsetChain result;
  RawOffset raw;
  RawEnds ends = AddBothSides(chain, closed, distance, corner, snap, raw);
  result.outcome = OffsetChain::Outcome::foldsBack;
  if (raw.foldsBack) return result;
  result.outcome = OffsetChain::Outcome::tangle;
  NearPieces2 near(chain, distance);
  DropCovered(chain, near, distance - 2.0 * mergeTol, raw);
  if (near.IsExhausted()) return result;
  if (raw.pieces.empty()) return Vanished();
  DropNodes(raw, ends);
  Cutter cutter(raw, 0.5 * mergeTol);
  if (!cutter.Run(chain.size())) return result;
  const NodeMerger merger(raw.nodes, mergeTol);
  const std::vector<int>& group = merger.Groups();
  const std::vector<TraceEdge> edges = FreeParts(raw, group, chain, near, distance, mergeTol);
  if (near.IsExhausted()) return result;
  if (edges.empty()) return Vanished();
  std::vector<int> groupsOfEnds;
  if (!closed) {
    groupsOfEnds = {group[Index(ends.start)], group[Index(ends.end)]};
    for (std::size_t i = 0; i < raw.nodes.size(); ++i) {
      if (cutter.IsBorderNode(i)) groupsOfEnds.push_back(group[i]);
    }
  }
  // Curves of a size of about 1 that are this close to each other are hardly longer.
  TracedCurves traced = TraceCurves(raw, group, edges, groupsOfEnds, 10.0 * std::sqrt(mergeTol));
  result.curves = std::move(traced.curves);
  bool isBroken = corner == OffsetCorner::round && traced.isTorn;  // behind sharp corners others end
  for (std::vector<Piece2>& curve : result.curves) isBroken = !Join(curve, tol, snap, mergeTol) || isBroken;
  std::erase_if(result.curves, [](const std::vector<Piece2>& curve) { return curve.empty(); });
  result.outcome = isBroken                ? OffsetChain::Outcome::broken
                   : result.curves.empty() ? OffsetChain::Outcome::vanished
                                           : OffsetChain::Outcome::moved;
  return result;
}

}  // namespace nu::engine::chains
