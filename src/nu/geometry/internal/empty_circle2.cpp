#include "nu/geometry/internal/empty_circle2.h"

#include <algorithm>

#include "nu/geometry/internal/convex_polygon2.h"
#include "nu/geometry/internal/voronoi_edge2.h"

// The distance from the nearest point has its largest values within the hull at Voronoi vertices and where Voronoi
// edges leave the hull (M. I. Shamos, D. Hoey, Closest-point problems, FOCS 1975; G. T. Toussaint, Computing largest
// empty circles with location constraints, 1983). Both are the ends of a Voronoi edge, cut off where it leaves the
// hull.

namespace nu::internal {
namespace {

// Radii, and coordinates of centres, that differ by no more are equal within the rounding of the points' coordinates,
// which is up to two steps of the grid.
constexpr double kSameRadius = 4.0;
constexpr double kSameCentre = 64.0;

void SetThreeContacts(EmptyCircle& circle, Vec2 p, Vec2 q, Vec2 r) {
  const Vec2 corner[] = {p, q, r, p, q};
  double sum = 0.0;
  circle.contacts = 3;
  for (int k = 0; k < 3; ++k) {
    const Vec2 across = corner[k + 2] - corner[k + 1];
    circle.contact[k] = corner[k];
    circle.multiplier[k] = Dot(across, across) * AccurateDot(corner[k + 1] - corner[k], corner[k + 2] - corner[k]);
    sum += circle.multiplier[k];
  }
  for (double& multiplier : circle.multiplier) multiplier /= sum;
}

void SetTwoContacts(EmptyCircle& circle, Vec2 p, Vec2 q, Vec2 alongBorder) {
  const double reachP = Dot(p - circle.centre, alongBorder);
  const double reachQ = Dot(q - circle.centre, alongBorder);
  circle.contacts = 2;
  circle.contact[0] = p;
  circle.contact[1] = q;
  circle.multiplier[0] = reachQ / (reachQ - reachP);
  circle.multiplier[1] = 1.0 - circle.multiplier[0];
}

class Search {
 public:
  explicit Search(const std::vector<Vec2>& points) : m_hull(points), m_mesh(points) {}

  // Finds nothing when signs contradict each other.
  EmptyCircle Run() {
    if (!m_mesh.IsSound()) return {};
    for (Delaunay2::Edge e = 0; e < m_mesh.Edges(); e += 2) {
      if (m_mesh.InUse(e)) Consider(e);
    }
    EmptyCircle best;
    for (const Candidate& candidate : m_candidates) {
      if (!MayReach(candidate.square)) continue;
      const VoronoiEdge2 edge(m_mesh, candidate.edge);
      if (best.found && !Precedes(edge.PointAt(candidate.t), best.centre)) continue;
      best = CircleAt(edge, candidate.t);
    }
    return best;
  }

 private:
  struct Candidate {
    Delaunay2::Edge edge;
    double t;
    double square;
  };

  // Keeps the ends within the hull that may be as far from the points as the farthest so far.
  void Consider(Delaunay2::Edge e) {
    const VoronoiEdge2 edge(m_mesh, e);
    if (!MayReach(edge.SquareAt(edge.end[0])) && !MayReach(edge.SquareAt(edge.end[1]))) return;
    const double left = std::min(edge.end[0], m_hull.ExitOf(edge.middle, edge.normal).way);
    const double right = std::max(edge.end[1], -m_hull.ExitOf(edge.middle, -1.0 * edge.normal).way);
    if (!(left >= right)) return;
    for (const double t : {left, right}) {
      const double square = edge.SquareAt(t);
      if (!MayReach(square)) continue;
      if (square > m_largest) Raise(square);
      m_candidates.push_back({e, t, square});
    }
  }
  bool MayReach(double square) const { return square >= m_limit; }
  void Raise(double square) {
    const double before = m_largest;
    m_largest = square;
    const double limit = std::max(0.0, std::sqrt(square) - kSameRadius);
    m_limit = limit * limit;
    if (!MayReach(before)) m_candidates.clear();
  }

  static bool Precedes(Vec2 a, Vec2 b) {
    return a.x < b.x - kSameCentre || (a.x <= b.x + kSameCentre && a.y < b.y - kSameCentre);
  }

  EmptyCircle CircleAt(const VoronoiEdge2& edge, double t) const {
    EmptyCircle circle;
    circle.found = true;
    circle.centre = edge.PointAt(t);
    circle.radius = std::sqrt(edge.SquareAt(t));
    for (const int side : {0, 1}) {
      if (t == edge.end[side] && edge.apex[side] != Delaunay2::kNoSite) {
        SetThreeContacts(circle, edge.p, edge.q, m_mesh.At(edge.apex[side]));
        return circle;
      }
    }
    const Vec2 outward = t < 0.0 ? -1.0 * edge.normal : edge.normal;
    SetTwoContacts(circle, edge.p, edge.q, m_hull.ExitOf(edge.middle, outward).alongBorder);
    return circle;
  }

  ConvexPolygon2 m_hull;
  Delaunay2 m_mesh;
  double m_largest = 0.0;               // squared radius
  double m_limit = 0.0;                 // the least squared radius that counts as the same
  std::vector<Candidate> m_candidates;  // the last ones, which agree about the radius
};

}  // namespace

EmptyCircle LargestEmptyCircle(PointBlocks& points, const Vec3 (&axes)[2]) {
  const Grid2 grid = GridOf(points, axes);
  if (!grid.finite || grid.points.size() < 2) return {};
  EmptyCircle circle = Search(grid.points).Run();
  circle.centre = grid.InPlane(circle.centre);
  circle.radius *= grid.unit;
  for (Vec2& contact : circle.contact) contact = grid.InPlane(contact);
  return circle;
}

}  // namespace nu::internal
