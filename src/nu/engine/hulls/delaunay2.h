#ifndef NU_ENGINE_HULLS_DELAUNAY2_H
#define NU_ENGINE_HULLS_DELAUNAY2_H

#include <cstdint>
#include <limits>
#include <vector>

#include "nu/engine/shapes/vec2.h"

namespace nu::engine::hulls {

// The Delaunay triangulation of the points of a grid, exact: no point is inside the circle through the corners of a
// triangle. Where more than three points share such an empty circle, one of their triangulations. Points on one line
// have edges between neighbours and no triangle. n log n.
//
// Edges come in pairs of opposite half-edges 2k and 2k + 1, each with its origin and its neighbours around the origin.
class Delaunay2 {
 public:
  using Edge = std::uint32_t;
  using Site = std::uint32_t;
  static constexpr Site kNoSite = std::numeric_limits<Site>::max();

  // At least two points, no two the same, which are numbered anew. Throws std::bad_alloc also for more points than can
  // be numbered.
  explicit Delaunay2(std::vector<Vec2> points);
  // False when signs contradicted each other, as no exact ones do; then the edges are none of a triangulation.
  bool IsSound() const { return m_stepsLeft > 0; }

  // One more than the largest half-edge; some numbers below may not be in use.
  Edge Edges() const { return static_cast<Edge>(m_edges.size()); }
  bool InUse(Edge e) const { return m_edges[e].origin != kNoSite; }
  static Edge Opposite(Edge e) { return e ^ 1u; }
  Site Origin(Edge e) const { return m_edges[e].origin; }
  Site Destination(Edge e) const { return m_edges[e ^ 1u].origin; }
  // Around the origin, counter-clockwise.
  Edge Next(Edge e) const { return m_edges[e].next; }
  Site Sites() const { return static_cast<Site>(m_points.size()); }
  const Vec2& At(Site site) const { return m_points[site]; }
  // The third corner of the triangle to the left of an edge, kNoSite outside the hull.
  Site Apex(Edge e) const;

 private:
  struct HalfEdge {
    Site origin;
    Edge next;  // around the origin, counter-clockwise
    Edge previous;
  };
  static constexpr Edge kNoEdge = std::numeric_limits<Edge>::max();
  // The points are halved across x and y by turns. The y axis stands for a frame turned by a quarter, in which the
  // halves lie left and right as well.
  enum class Axis { x, y };
  static bool Precedes(Axis axis, const Vec2& a, const Vec2& b);

  Edge MakeEdge(Site from, Site to);
  void Splice(Edge a, Edge b);
  Edge Connect(Edge a, Edge b);
  void Delete(Edge e);
  Edge LeftNext(Edge e) const { return m_edges[e ^ 1u].previous; }
  Edge RightPrevious(Edge e) const { return m_edges[e ^ 1u].next; }
  int Side(Site site, Edge e) const;
  bool InCircle(Site a, Site b, Site c, Site d) const;

  // These give a counter-clockwise edge of the hull.
  Edge Triangulate(Site begin, Site end, Axis axis);
  Edge ThreePoints(Site first);
  Edge Merge(Edge left, Edge right, Axis axis);
  Edge OutermostFrom(Edge hull, Axis axis, bool first);
  Edge LowerTangent(Edge inLeft, Edge inRight);
  Edge Candidate(Edge base, Edge candidate, Edge HalfEdge::*next);
  // Whether a merge may go on; once it may not, all of them end.
  bool MayStep() { return m_stepsLeft > 0 && --m_stepsLeft > 0; }

  std::vector<Vec2> m_points;
  std::vector<HalfEdge> m_edges;
  std::vector<Edge> m_free;
  std::uint64_t m_stepsLeft = 0;
};

}  // namespace nu::engine::hulls

#endif
