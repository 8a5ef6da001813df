#include "nu/geometry/internal/delaunay2.h"

#include <new>

#include "nu/geometry/internal/grid2.h"

// Divide and conquer: the triangulations of the left and the right half are joined from their lower common tangent
// upwards, edge by edge, each time by the one of two candidates whose circle is empty; edges that are no longer
// Delaunay are deleted on the way (L. Guibas, J. Stolfi, Primitives for the manipulation of general subdivisions and
// the computation of Voronoi diagrams, ACM Transactions on Graphics 4, 1985).

namespace nu::internal {

Delaunay2::Delaunay2(const std::vector<Vec2>& points) : m_points(points) {
  // A triangulation has fewer than three edges per point; six half-edges are to be numbered.
  if (points.size() >= kNoSite / 6) throw std::bad_alloc();
  m_edges.reserve(6 * points.size());
  Triangulate(0, static_cast<Site>(points.size()));
  m_free = {};
}

Delaunay2::Site Delaunay2::Apex(Edge e) const {
  const Site apex = Destination(m_edges[e].next);
  return Side(apex, e) > 0 ? apex : kNoSite;
}

Delaunay2::Edge Delaunay2::MakeEdge(Site from, Site to) {
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
void Delaunay2::Splice(Edge a, Edge b) {
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

void Delaunay2::Delete(Edge e) {
  Splice(e, m_edges[e].previous);
  Splice(e ^ 1u, m_edges[e ^ 1u].previous);
  m_edges[e].origin = m_edges[e ^ 1u].origin = kNoSite;
  m_free.push_back(e & ~1u);
}

// 1 to the left of the edge, -1 to the right.
int Delaunay2::Side(Site site, Edge e) const {
  return GridOrientation(At(site), At(Origin(e)), At(Destination(e)));
}

bool Delaunay2::InCircle(Site a, Site b, Site c, Site d) const {
  return GridInCircle(At(a), At(b), At(c), At(d)) > 0;
}

// Halves each time: the depth is that of the number's binary digits.
Delaunay2::Ends Delaunay2::Triangulate(Site begin, Site end) {
  const Site count = end - begin;
  if (count == 2) {
    const Edge e = MakeEdge(begin, begin + 1);
    return {e, e ^ 1u};
  }
  if (count == 3) return ThreePoints(begin);
  const Site middle = begin + count / 2;
  const Ends left = Triangulate(begin, middle);
  const Ends right = Triangulate(middle, end);
  return Merge(left, right);
}

Delaunay2::Ends Delaunay2::ThreePoints(Site first) {
  const Edge a = MakeEdge(first, first + 1);
  const Edge b = MakeEdge(first + 1, first + 2);
  Splice(a ^ 1u, b);
  const int turn = Side(first + 2, a);
  if (turn == 0) return {a, b ^ 1u};
  const Edge c = Connect(b, a);
  return turn > 0 ? Ends{a, b ^ 1u} : Ends{c ^ 1u, c};
}

// From right to left; the outer ends follow where the tangent ends in them.
Delaunay2::Edge Delaunay2::LowerTangent(Ends& left, Ends& right) {
  Edge inLeft = left.right;
  Edge inRight = right.left;
  while (true) {
    if (Side(Origin(inRight), inLeft) > 0) {
      inLeft = LeftNext(inLeft);
    } else if (Side(Origin(inLeft), inRight) < 0) {
      inRight = RightPrevious(inRight);
    } else {
      break;
    }
  }
  const Edge base = Connect(inRight ^ 1u, inLeft);
  if (Origin(inLeft) == Origin(left.left)) left.left = base ^ 1u;
  if (Origin(inRight) == Origin(right.right)) right.right = base;
  return base;
}

// The next edge of the left triangulation above the base, without those that its circles reject.
Delaunay2::Edge Delaunay2::LeftCandidate(Edge base) {
  Edge candidate = m_edges[base ^ 1u].next;
  if (Side(Destination(candidate), base) >= 0) return candidate;
  while (InCircle(Destination(base), Origin(base), Destination(candidate), Destination(m_edges[candidate].next))) {
    const Edge next = m_edges[candidate].next;
    Delete(candidate);
    candidate = next;
  }
  return candidate;
}

Delaunay2::Edge Delaunay2::RightCandidate(Edge base) {
  Edge candidate = m_edges[base].previous;
  if (Side(Destination(candidate), base) >= 0) return candidate;
  while (InCircle(Destination(base), Origin(base), Destination(candidate), Destination(m_edges[candidate].previous))) {
    const Edge next = m_edges[candidate].previous;
    Delete(candidate);
    candidate = next;
  }
  return candidate;
}

Delaunay2::Ends Delaunay2::Merge(Ends left, Ends right) {
  Edge base = LowerTangent(left, right);
  while (true) {
    const Edge fromLeft = LeftCandidate(base);
    const Edge fromRight = RightCandidate(base);
    const bool hasLeft = Side(Destination(fromLeft), base) < 0;
    const bool hasRight = Side(Destination(fromRight), base) < 0;
    if (!hasLeft && !hasRight) return {left.left, right.right};
    const bool takesRight = !hasLeft || (hasRight && InCircle(Destination(fromLeft), Origin(fromLeft),
                                                              Origin(fromRight), Destination(fromRight)));
    base = takesRight ? Connect(fromRight, base ^ 1u) : Connect(base ^ 1u, fromLeft ^ 1u);
  }
}

}  // namespace nu::internal
