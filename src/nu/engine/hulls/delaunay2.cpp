#include "nu/engine/hulls/delaunay2.h"

#include <algorithm>
#include <bit>
#include <new>
#include <utility>

#include "nu/engine/hulls/grid2.h"

// Divide and conquer: the triangulations of the left and the right half are joined from their lower common tangent
// upwards, edge by edge, each time by the one of two candidates whose circle is empty; edges that are no longer
// Delaunay are deleted on the way (L. Guibas, J. Stolfi, Primitives for the manipulation of general subdivisions and
// the computation of Voronoi diagrams, ACM Transactions on Graphics 4, 1985).

namespace nu::engine::hulls {

namespace {

// On each level of halving a merge walks over the edges of two hulls, makes fewer than two edges per point, and deletes
// fewer than three.
constexpr std::uint64_t kStepsPerPoint = 16;

}  // namespace

Delaunay2::Delaunay2(std::vector<Vec2> points) : m_points(std::move(points)) {
  // A triangulation has fewer than three edges per point; six half-edges are to be numbered.
  if (m_points.size() >= kNoSite / 6) throw std::bad_alloc();
  m_edges.reserve(6 * m_points.size());
  m_stepsLeft = kStepsPerPoint * m_points.size() * static_cast<std::uint64_t>(std::bit_width(m_points.size()));
  Triangulate(0, static_cast<Site>(m_points.size()), Axis::x);
  for (const Edge e : m_free) m_edges[e].origin = m_edges[e ^ 1u].origin = kNoSite;
  m_free = {};
}

Delaunay2::Site Delaunay2::Apex(Edge e) const {
  const Site apex = Destination(m_edges[e].next);
  return Side(apex, e) > 0 ? apex : kNoSite;
}

inline Delaunay2::Edge Delaunay2::MakeEdge(Site from, Site to) {
  Edge e = static_cast<Edge>(m_edges.size());
  if (m_free.empty()) {
    m_edges.resize(m_edges.size() + 2);
  } else {
    e = m_free.back();
    m_free.pop_back();
  }
  m_edges[e] = {from, e, e};
  m_edges[e ^ 1u] = {to, e ^ 1u, e ^ 1u};
  return e;
}

// Joins two rings of edges around their origins, or parts one.
inline void Delaunay2::Splice(Edge a, Edge b) {
  const Edge afterA = m_edges[a].next;
  const Edge afterB = m_edges[b].next;
  m_edges[a].next = afterB;
  m_edges[b].next = afterA;
  m_edges[afterB].previous = a;
  m_edges[afterA].previous = b;
}

// A new edge from the destination of a to the origin of b, with the same face to the left.
Delaunay2::Edge Delaunay2::Connect(Edge a, Edge b) {
  const Edge e = MakeEdge(Destination(a), Origin(b));
  Splice(e, LeftNext(a));
  Splice(e ^ 1u, b);
  return e;
}

inline void Delaunay2::Delete(Edge e) {
  Splice(e, m_edges[e].previous);
  Splice(e ^ 1u, m_edges[e ^ 1u].previous);
  m_free.push_back(e & ~1u);
}

// 1 to the left of the edge, -1 to the right.
inline int Delaunay2::Side(Site site, Edge e) const {
  return GridOrientation(At(site), At(Origin(e)), At(Destination(e)));
}

inline bool Delaunay2::InCircle(Site a, Site b, Site c, Site d) const {
  return GridInCircle(At(a), At(b), At(c), At(d)) > 0;
}

bool Delaunay2::Precedes(Axis axis, const Vec2& a, const Vec2& b) {
  if (axis == Axis::x) return a.x < b.x || (a.x == b.x && a.y < b.y);
  return a.y < b.y || (a.y == b.y && a.x > b.x);
}

// Halves each time: the depth is that of the number's binary digits.
Delaunay2::Edge Delaunay2::Triangulate(Site begin, Site end, Axis axis) {
  const Site count = end - begin;
  const auto first = m_points.begin() + begin;
  const auto last = m_points.begin() + end;
  const auto precedes = [axis](const Vec2& a, const Vec2& b) { return Precedes(axis, a, b); };
  if (count <= 3) {
    std::sort(first, last, precedes);
    return count == 2 ? MakeEdge(begin, begin + 1) : ThreePoints(begin);
  }
  const Site middle = begin + count / 2;
  std::nth_element(first, m_points.begin() + middle, last, precedes);
  const Axis next = axis == Axis::x ? Axis::y : Axis::x;
  const Edge left = Triangulate(begin, middle, next);
  const Edge right = Triangulate(middle, end, next);
  return Merge(left, right, axis);
}

Delaunay2::Edge Delaunay2::ThreePoints(Site first) {
  const Edge a = MakeEdge(first, first + 1);
  const Edge b = MakeEdge(first + 1, first + 2);
  Splice(a ^ 1u, b);
  const int turn = Side(first + 2, a);
  if (turn == 0) return a;
  const Edge c = Connect(b, a);
  return turn > 0 ? a : c ^ 1u;
}

// The counter-clockwise hull edge from the first or the last point along an axis. Towards it the points of a convex
// hull ascend, one way round or the other.
Delaunay2::Edge Delaunay2::OutermostFrom(Edge hull, Axis axis, bool first) {
  Edge outermost = hull;
  const auto isFurther = [&](Edge e) {
    const Vec2& here = At(Origin(e));
    const Vec2& there = At(Origin(outermost));
    return first ? Precedes(axis, here, there) : Precedes(axis, there, here);
  };
  for (Edge e = RightPrevious(hull); isFurther(e) && MayStep(); e = RightPrevious(e)) outermost = e;
  if (outermost != hull) return outermost;
  for (Edge e = m_edges[hull].previous ^ 1u; isFurther(e) && MayStep(); e = m_edges[e].previous ^ 1u) outermost = e;
  return outermost;
}

// From right to left, given the clockwise hull edge from the last point on the left and the counter-clockwise one from
// the first point on the right.
Delaunay2::Edge Delaunay2::LowerTangent(Edge inLeft, Edge inRight) {
  while (MayStep()) {
    if (Side(Origin(inRight), inLeft) > 0) {
      inLeft = LeftNext(inLeft);
    } else if (Side(Origin(inLeft), inRight) < 0) {
      inRight = RightPrevious(inRight);
    } else {
      break;
    }
  }
  return Connect(inRight ^ 1u, inLeft);
}

// The next edge of a side's triangulation above the base, from the one beside the base on, without those that its
// circles reject; kNoEdge when there is none.
inline Delaunay2::Edge Delaunay2::Candidate(Edge base, Edge candidate, Edge HalfEdge::*next) {
  if (Side(Destination(candidate), base) >= 0) return kNoEdge;
  const auto isRejected = [&] {
    return InCircle(Destination(base), Origin(base), Destination(candidate), Destination(m_edges[candidate].*next));
  };
  if (!isRejected()) return candidate;
  for (bool goesOn = true; goesOn && MayStep(); goesOn = isRejected()) {
    const Edge after = m_edges[candidate].*next;
    Delete(candidate);
    candidate = after;
  }
  return Side(Destination(candidate), base) < 0 ? candidate : kNoEdge;
}

Delaunay2::Edge Delaunay2::Merge(Edge left, Edge right, Axis axis) {
  const Edge inLeft = m_edges[OutermostFrom(left, axis, false)].previous;
  const Edge tangent = LowerTangent(inLeft, OutermostFrom(right, axis, true));
  Edge base = tangent;
  while (MayStep()) {
    const Edge fromLeft = Candidate(base, m_edges[base ^ 1u].next, &HalfEdge::next);
    const Edge fromRight = Candidate(base, m_edges[base].previous, &HalfEdge::previous);
    if (fromLeft == kNoEdge && fromRight == kNoEdge) break;
    const bool takesRight =
        fromLeft == kNoEdge || (fromRight != kNoEdge && InCircle(Destination(fromLeft), Origin(fromLeft),
                                                                 Origin(fromRight), Destination(fromRight)));
    base = takesRight ? Connect(fromRight, base ^ 1u) : Connect(base ^ 1u, fromLeft ^ 1u);
  }
  return tangent ^ 1u;
}

}  // namespace nu::engine::hulls
