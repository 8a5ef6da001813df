#include "nu/engine/chains/offset_trace2.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "nu/engine/base/elementary.h"
#include "nu/foundation/constants.h"

// Where a chain turns towards its offset, here to the right, the moved pieces run past each other:
//
//            /\              chain
//           /  \           .
//          / \/ \          .
//         /  /\  \           node
//        /  /  \  \        .
//       /  /    \  \        raw offset
//
// Beyond the node both moved pieces are closer to the other side of the chain than the distance: these parts are left
// out before the trace begins.
//
// What remains is a directed graph of edges with the free side on their right. Its curves are found node by node.
// Counter-clockwise around a node, an edge that comes in goes on with the next unmatched one that goes out, as brackets
// match, so that curves which touch at a node do not cross there:
//
//     out 1   in 2
//         \   /
//          \ /             2 goes on with 1, 4 with 3.
//           *
//          / \             .
//         /   \            .
//      in 4   out 3
//
// Edges without a successor or a predecessor are left by rounding; they are pruned before. Crossings that are closer
// together than the tolerance may leave an edge unmatched; they are mended after.

namespace nu::engine::chains {

namespace {

// The area between a piece and the segments from the origin to its ends, positive counter-clockwise.
double AreaOf(const Piece2& piece) {
  const double area = 0.5 * Cross(piece.start, piece.end);
  if (piece.curvature == 0.0) return area;
  const double turn = piece.curvature * piece.length;
  return area + 0.5 * (turn - Sin(turn)) / (piece.curvature * piece.curvature);
}

class Trace {
 public:
  Trace(const RawOffset& raw, const std::vector<int>& group, const std::vector<TraceEdge>& edges)
      : m_raw(raw),
        m_edges(edges),
        m_out(group.size()),
        m_in(group.size()),
        m_isEnd(group.size(), 0),
        m_isGone(edges.size(), 0),
        m_next(edges.size(), -1),
        m_previous(edges.size(), -1),
        m_isPassed(group.size(), 0) {
    for (int e = 0; e < static_cast<int>(edges.size()); ++e) {
      const std::vector<int>& out = m_out[Index(edges[Index(e)].start)];
      m_isGone[Index(e)] = std::any_of(out.begin(), out.end(), [&](int other) { return IsSame(e, other); }) ? 1 : 0;
      if (m_isGone[Index(e)]) continue;
      m_out[Index(edges[Index(e)].start)].push_back(e);
      m_in[Index(edges[Index(e)].end)].push_back(e);
    }
  }

  // A group of nodes where a curve may start and end.
  void AllowEnd(int group) { m_isEnd[Index(group)] = 1; }

  // Paths that have a start come first; what is left then is closed.
  std::vector<std::vector<Piece2>> Curves() {
    Prune();
    Match();
    Mend();
    std::vector<std::vector<Piece2>> curves;
    TakeOpen(curves);
    AddLoops(curves);
    return curves;
  }

  // Whether these leave out more than short paths, up to a length, that join two of their nodes once more.
  bool IsTorn(double longest) const {
    const std::vector<char> follows = NodesReached(true);
    const std::vector<char> leads = NodesReached(false);
    return std::any_of(m_leftOut.begin(), m_leftOut.end(), [&](const Path& path) {
      const bool joins =
          follows[Index(m_edges[Index(path.front())].start)] != 0 && leads[Index(m_edges[Index(path.back())].end)] != 0;
      return !joins || LengthOf(path) > longest;
    });
  }

 private:
  using Path = std::vector<int>;  // of edges
  // An edge as it is seen from a node.
  struct Ray {
    double angle;
    int edge;
    bool isIn;
  };

  // An edge that has no successor, or no predecessor, is no part of a curve: rounding leaves such edges.
  void Prune() {
    std::vector<int> nodes(m_out.size());
    std::iota(nodes.begin(), nodes.end(), 0);
    while (!nodes.empty()) {
      const int node = nodes.back();
      nodes.pop_back();
      if (!m_isEnd[Index(node)]) DropWithout(node, nodes);
    }
  }

  void DropWithout(int node, std::vector<int>& open) {
    const auto isLeft = [&](int e) { return !m_isGone[Index(e)]; };
    const std::vector<int>& in = m_in[Index(node)];
    const std::vector<int>& out = m_out[Index(node)];
    const bool comes = std::any_of(in.begin(), in.end(), isLeft);
    const bool goes = std::any_of(out.begin(), out.end(), isLeft);
    if (comes == goes) return;
    for (const int e : comes ? in : out) {
      if (!isLeft(e)) continue;
      m_isGone[Index(e)] = 1;
      open.push_back(comes ? m_edges[Index(e)].start : m_edges[Index(e)].end);
    }
  }

  // Offsets of different pieces can run along each other; two edges from one node are the same then.
  bool IsSame(int e, int other) const {
    constexpr double kApart = 1e-11;
    if (m_edges[Index(e)].end != m_edges[Index(other)].end) return false;
    const Piece2 first = Away(e, false);
    const Piece2 second = Away(other, false);
    return std::fabs(first.length - second.length) <= kApart &&
           Norm(first.At(0.5 * first.length) - second.At(0.5 * second.length)) <= kApart;
  }

  // The part of its piece that an edge covers, directed away from the node where the edge ends or starts.
  Piece2 Away(int e, bool isIn) const {
    const TraceEdge& edge = m_edges[Index(e)];
    const Piece2 part = m_raw.pieces[Index(edge.piece)].Part(edge.from, edge.to);
    return isIn ? part.Reversed() : part;
  }

  // Whether two rays of nearly one direction are in the wrong order. They touch at the node; the point halfway along
  // the shorter one decides on which side of the first the second lies. Of rays that coincide, the outgoing one comes
  // first.
  bool IsSwapped(const Ray& first, const Ray& second) const {
    constexpr double kTouching = 1e-6;  // radians
    constexpr double kApart = 1e-11;
    if (std::fabs(std::remainder(second.angle - first.angle, Nu_2PI)) > kTouching) return false;
    const Piece2 a = Away(first.edge, first.isIn);
    const Piece2 b = Away(second.edge, second.isIn);
    const double height = a.HeightOf(b.At(0.5 * std::min(a.length, b.length)));
    return std::fabs(height) > kApart ? height < 0.0 : first.isIn && !second.isIn;
  }

  std::vector<Ray> RaysAt(int node) const {
    std::vector<Ray> rays;
    const auto add = [&](const std::vector<int>& edges, bool isIn) {
      for (const int e : edges) {
        if (m_isGone[Index(e)]) continue;
        const Vec2 direction = Away(e, isIn).direction;
        rays.push_back({Atan2(direction.y, direction.x), e, isIn});
      }
    };
    add(m_in[Index(node)], true);
    add(m_out[Index(node)], false);
    return rays;
  }

  // Matches incoming and outgoing edges counter-clockwise, as brackets.
  void MatchAt(int node) {
    std::vector<Ray> rays = RaysAt(node);
    if (rays.size() > 2) {
      std::stable_sort(rays.begin(), rays.end(), [](const Ray& a, const Ray& b) { return a.angle < b.angle; });
      for (std::size_t i = 0; i < rays.size(); ++i) {
        Ray& next = rays[(i + 1) % rays.size()];
        if (IsSwapped(rays[i], next)) std::swap(rays[i], next);
      }
    }
    std::vector<int> open;
    for (std::size_t i = 0; i < 2 * rays.size(); ++i) {
      const Ray& ray = rays[i % rays.size()];
      if (ray.isIn) {
        if (i < rays.size()) open.push_back(ray.edge);
      } else if (!open.empty() && m_previous[Index(ray.edge)] < 0) {
        m_previous[Index(ray.edge)] = open.back();
        m_next[Index(open.back())] = ray.edge;
        open.pop_back();
      }
    }
  }

  void Match() {
    for (int node = 0; node < static_cast<int>(m_out.size()); ++node) MatchAt(node);
  }

  // Several crossings closer together than the tolerance leave parallel paths between two nodes, equal within it. The
  // angles at either end may choose different ones of them: the curve then ends at the end of one path and continues
  // from the start of another. Of the edges that leave such a start, the one from which the end is reached first is
  // left out.
  bool MendAt(int open) {
    constexpr int kMaxSteps = 1000;  // edges of a path around a few crossings
    const int node = m_edges[Index(open)].start;
    std::vector<int> starts{open};
    for (const int e : m_out[Index(node)]) {
      if (!m_isGone[Index(e)] && m_previous[Index(e)] >= 0) starts.push_back(e);
    }
    std::vector<int> heads = starts;
    for (int step = 0; step < kMaxSteps; ++step) {
      for (std::size_t k = 0; k < heads.size(); ++k) {
        const int next = m_next[Index(heads[k])];
        if (next < 0 && !m_isEnd[Index(m_edges[Index(heads[k])].end)]) {
          const int before = m_previous[Index(starts[k])];
          if (k == 0) return false;
          m_previous[Index(starts[k])] = -1;
          m_previous[Index(open)] = before;
          m_next[Index(before)] = open;
          return true;
        }
        if (next >= 0) heads[k] = next;
      }
    }
    return false;
  }

  // A path that was mended may end at the next such place: hence several passes.
  void Mend() {
    constexpr int kMaxPasses = 20;
    bool goesOn = true;
    for (int pass = 0; pass < kMaxPasses && goesOn; ++pass) {
      goesOn = false;
      for (int e = 0; e < static_cast<int>(m_edges.size()); ++e) {
        if (IsOpen(e) && !m_isEnd[Index(m_edges[Index(e)].start)]) goesOn = MendAt(e) || goesOn;
      }
    }
  }

  // Until it comes back to its first edge, or does not go on.
  Path Walk(int first) {
    Path path;
    for (int edge = first; edge >= 0 && !m_isGone[Index(edge)]; edge = m_next[Index(edge)]) {
      path.push_back(edge);
      m_isGone[Index(edge)] = 1;
    }
    return path;
  }

  bool IsOpen(int edge) const { return !m_isGone[Index(edge)] && m_previous[Index(edge)] < 0; }

  void TakeOpen(std::vector<std::vector<Piece2>>& paths) {
    for (int e = 0; e < static_cast<int>(m_edges.size()); ++e) {
      if (!IsOpen(e)) continue;
      const Path path = Walk(e);
      const int start = m_edges[Index(e)].start;
      const int end = m_edges[Index(path.back())].end;
      if (m_isEnd[Index(start)] || m_isEnd[Index(end)]) {
        MarkPassed(path);
        paths.push_back(PiecesOf(path, false));
      } else {
        m_leftOut.push_back(path);
      }
    }
  }

  void MarkPassed(const Path& path) {
    for (const int e : path) {
      m_isPassed[Index(m_edges[Index(e)].start)] = 1;
      m_isPassed[Index(m_edges[Index(e)].end)] = 1;
    }
  }

  void AddLoops(std::vector<std::vector<Piece2>>& loops) {
    constexpr double kLeastHeight = 1e-10;  // area over length of a loop; below, it only runs there and back
    for (int e = 0; e < static_cast<int>(m_edges.size()); ++e) {
      if (m_isGone[Index(e)]) continue;
      const Path path = Walk(e);
      MarkPassed(path);
      if (std::fabs(AreaOf(path)) > kLeastHeight * LengthOf(path)) loops.push_back(PiecesOf(path, true));
    }
  }

  // Edges that go on along the same piece are one.
  std::vector<Piece2> PiecesOf(const Path& path, bool closed) const {
    std::vector<TraceEdge> parts;
    for (const int e : path) {
      const TraceEdge& edge = m_edges[Index(e)];
      const bool goesOn = !parts.empty() && parts.back().piece == edge.piece && parts.back().to == edge.from;
      if (goesOn) {
        parts.back().to = edge.to;
      } else {
        parts.push_back(edge);
      }
    }
    if (closed && parts.size() > 1 && parts.back().piece == parts.front().piece &&
        parts.back().to == parts.front().from) {
      parts.front().from = parts.back().from;
      parts.pop_back();
    }
    std::vector<Piece2> pieces;
    pieces.reserve(parts.size());
    for (const TraceEdge& part : parts) pieces.push_back(m_raw.pieces[Index(part.piece)].Part(part.from, part.to));
    return pieces;
  }

  // The nodes that are reached from nodes of the curves by paths that were left out: along them, or against them.
  std::vector<char> NodesReached(bool fromStart) const {
    constexpr int kMaxPasses = 20;
    std::vector<char> reached = m_isPassed;
    bool grows = true;
    for (int pass = 0; pass < kMaxPasses && grows; ++pass) {
      grows = false;
      for (const Path& path : m_leftOut) {
        if (!reached[Index(fromStart ? m_edges[Index(path.front())].start : m_edges[Index(path.back())].end)]) continue;
        for (const int e : path) {
          char& node = reached[Index(fromStart ? m_edges[Index(e)].end : m_edges[Index(e)].start)];
          grows = grows || node == 0;
          node = 1;
        }
      }
    }
    return reached;
  }

  double AreaOf(const Path& path) const {
    double area = 0.0;
    for (const int e : path) {
      const TraceEdge& edge = m_edges[Index(e)];
      area += chains::AreaOf(m_raw.pieces[Index(edge.piece)].Part(edge.from, edge.to));
    }
    return area;
  }

  double LengthOf(const Path& path) const {
    double length = 0.0;
    for (const int e : path) length += m_edges[Index(e)].to - m_edges[Index(e)].from;
    return length;
  }

  const RawOffset& m_raw;
  const std::vector<TraceEdge>& m_edges;
  std::vector<std::vector<int>> m_out, m_in;  // edges of each group of nodes
  std::vector<char> m_isEnd;
  std::vector<char> m_isGone;           // dropped or used
  std::vector<int> m_next, m_previous;  // of each edge, or -1
  std::vector<char> m_isPassed;         // groups of nodes on the curves found
  std::vector<Path> m_leftOut;          // paths that are no curves
};

}  // namespace

TracedCurves TraceCurves(const RawOffset& raw, const std::vector<int>& group, const std::vector<TraceEdge>& edges,
                         const std::vector<int>& ends, double longest) {
  Trace trace(raw, group, edges);
  for (const int end : ends) trace.AllowEnd(end);
  std::vector<std::vector<Piece2>> curves = trace.Curves();
  return {std::move(curves), trace.IsTorn(longest)};
}

}  // namespace nu::engine::chains
