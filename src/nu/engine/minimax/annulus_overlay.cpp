#include "nu/engine/minimax/annulus_overlay.h"

#include <algorithm>

#include "nu/engine/base/elementary.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/hulls/convex_polygon2.h"
#include "nu/engine/hulls/farthest_corner2.h"
#include "nu/engine/hulls/grid2.h"
#include "nu/engine/hulls/voronoi_edge2.h"

// The centre of an annulus that cannot be made narrower by a small move lies where an edge of the Voronoi diagram of
// the nearest points crosses one of the farthest points (H. Ebara, N. Fukuyama, H. Nakano, Y. Nakanishi, Roundness
// algorithms using the Voronoi diagrams, 1st Canadian Conference on Computational Geometry, 1989), and the four points
// of these edges alternate as seen from there. Along a nearest-point edge m + t n the squared distance from a corner h
// of the hull, less t^2 |n|^2, is linear in t; so the farthest corner changes where the upper envelope of these lines
// does. The changes are found by halving: between two places with the farthest corners h and k there is none if h = k;
// otherwise the lines of h and k cross in between, and either no other corner is farther there, or there are two parts.
//
// A part is left out when its annuli are all too wide. The distance from h less that from p, along the edge, has its
// least value at an end of the part or where h and p are seen from the edge under the same angle.
//
// Along the edge the width falls where the farthest corner is seen from it outside the angle pq, as soon as the edge
// has left the chord pq behind, and grows where it is seen inside; before the chord it is the other way round. An
// optimum lies where the width stops falling. So a part is left out as well when all corners that can be the farthest
// in it, those between the first and the last along the normal, are on one side: points in convex position would
// otherwise have a corner for every part of every edge.

namespace nu::engine::minimax {
namespace {

// Widths, and coordinates of centres, that differ by no more steps of the grid are equal within the rounding of the
// points' coordinates.
constexpr double kSameWidth = 8.0;
constexpr double kSameCentre = 64.0;
// Voronoi vertices are known to about this many steps, or to this part of their distance; so far beyond an edge's end
// its crossings still count.
constexpr double kEndSteps = 64.0;
constexpr double kEndShare = 64.0 * kEpsilon;
// Values of lines that differ by less, relatively, are equal within their rounding.
constexpr double kSameValue = 64.0 * kEpsilon;
// Angles closer than this, relative to the largest one, are the same.
constexpr double kSameDirection = 1e-7;
// Contacts on common rays are rare but for lattices, where the bound soon leaves few places to look at. So many
// corners, edges and differences of directions are looked at in all, and so many for each point: points made for it
// do not take quadratic time.
constexpr std::size_t kMostLooks = 4'000'000;
constexpr std::size_t kLooksPerPoint = 16;
// So many parts of an edge are divided before it pays to look at the angles of all corners. A corner counts as seen
// inside or outside the angle pq when it is so by this part of the chord.
constexpr std::size_t kPlainParts = 8;
constexpr double kClearOfChord = 1e-6;

double Length(Vec2 v) {
  return std::sqrt(Dot(v, v));
}

// What a linear function takes on in a box, widened by its rounding.
struct Range {
  Range(Vec2 factor, const FarthestCorner2::Box& box, Vec2 from) {
    const double x[2] = {factor.x * (box.least.x - from.x), factor.x * (box.greatest.x - from.x)};
    const double y[2] = {factor.y * (box.least.y - from.y), factor.y * (box.greatest.y - from.y)};
    const double rounding = 4.0 * kEpsilon *
                            (std::max(std::fabs(x[0]), std::fabs(x[1])) +  //
                             std::max(std::fabs(y[0]), std::fabs(y[1])));
    low = std::min(x[0], x[1]) + std::min(y[0], y[1]) - rounding;
    high = std::max(x[0], x[1]) + std::max(y[0], y[1]) + rounding;
  }
  double Least() const { return std::max({0.0, low, -high}); }  // of the absolute values
  double Greatest() const { return std::max(high, -low); }

  double low, high;
};

// Where a box is for a Voronoi edge: along the chord pq and across it, in lengths of the chord from its middle.
struct BoxAtEdge {
  BoxAtEdge(const VoronoiEdge2& edge, const FarthestCorner2::Box& box)
      : along(1.0 / edge.square * Perpendicular(edge.normal), box, edge.middle),
        across(1.0 / edge.square * edge.normal, box, edge.middle) {}

  // Seen from the edge at t: whether all of the box is outside, or inside, the angle pq. Nothing is in the triangle.
  bool IsOutside(double t, bool before) const {
    const double depth = before ? across.high : -across.low;
    return depth <= 0.0 || along.Least() > 0.5 * (1.0 + depth / std::fabs(t)) * (1.0 + kClearOfChord);
  }
  bool IsInside(double t, bool before) const {
    const double depth = before ? across.low : -across.high;
    return depth > 0.0 && along.Greatest() < 0.5 * (1.0 + depth / std::fabs(t)) * (1.0 - kClearOfChord);
  }

  Range along, across;
};

// Whether 0 is inside the convex hull of the differences of directions, beyond a doubt: they leave no half-plane free.
bool Surround(const std::vector<Vec2>& outer, const std::vector<Vec2>& inner) {
  std::vector<double> angles;
  for (const Vec2& u : outer) {
    for (const Vec2& v : inner) {
      const Vec2 difference = u - v;
      if (Length(difference) > kSameDirection) angles.push_back(Atan2(difference.y, difference.x));
    }
  }
  if (angles.size() < 3) return false;
  std::sort(angles.begin(), angles.end());
  constexpr double halfTurn = 3.14159265358979323846;
  double gap = angles.front() + 2.0 * halfTurn - angles.back();
  for (std::size_t k = 1; k < angles.size(); ++k) gap = std::max(gap, angles[k] - angles[k - 1]);
  return gap < halfTurn - kSameDirection;
}

class Overlay {
 public:
  Overlay(const std::vector<Vec2>& points, double bound)
      : m_hull(points),
        m_farthest(m_hull.Corners()),
        m_mesh(points),
        m_bound(bound),
        m_looksLeft(kMostLooks + kLooksPerPoint * points.size()) {
    constexpr int kDirections = 8;
    for (int k = 0; k < kDirections; ++k) {
      const auto [sine, cosine] = SinCos(2.0 * 3.14159265358979323846 * k / kDirections);
      m_outposts.push_back(Corner(m_hull.ExtremeCorner({cosine, sine})));
    }
  }

  // Finds nothing when signs or values contradict each other.
  GridAnnulus Run() {
    if (!m_mesh.IsSound()) return {};
    for (Delaunay2::Edge e = 0; e < m_mesh.Edges(); e += 2) {
      m_delaunayEdge = e;
      if (m_mesh.InUse(e)) Search(VoronoiEdge2(m_mesh, e));
    }
    GridAnnulus best;
    if (m_contradicts) return best;
    for (const GridAnnulus& candidate : m_candidates) {
      if (!(candidate.width <= Limit())) continue;
      if (!best.found || Precedes(candidate.centre, best.centre)) best = candidate;
    }
    return best;
  }

 private:
  // A part of a Voronoi edge, with the farthest corners at its ends.
  struct Part {
    double begin;
    std::size_t first;
    double end;
    std::size_t last;
  };

  const Vec2& Corner(std::size_t i) const { return m_hull.Corners()[i]; }
  double Limit() const { return m_bound + kSameWidth; }
  static bool Precedes(Vec2 a, Vec2 b) {
    return a.x < b.x - kSameCentre || (a.x <= b.x + kSameCentre && a.y < b.y - kSameCentre);
  }

  std::size_t FarthestAt(const VoronoiEdge2& edge, double t) const {
    if (std::isinf(t)) return m_hull.ExtremeCorner((t < 0.0 ? 1.0 : -1.0) * edge.normal);
    return m_farthest.From({edge.middle, 2.0 * t * edge.normal});
  }

  // The distance from a corner less that from the nearest points.
  double WidthAt(const VoronoiEdge2& edge, double t, std::size_t corner) const {
    if (std::isinf(t)) {
      return (t < 0.0 ? 1.0 : -1.0) * Dot(edge.normal, Corner(corner) - edge.middle) / std::sqrt(edge.square);
    }
    const double value = FarthestCorner2::Value({edge.middle, 2.0 * t * edge.normal}, Corner(corner));
    const double outer = std::sqrt(std::max(0.0, value + t * t * edge.square));
    return (value - 0.25 * edge.square) / (outer + std::sqrt(edge.SquareAt(t)));
  }

  double LeastWidthOn(const VoronoiEdge2& edge, const Part& part, std::size_t corner) const {
    double least = std::min(WidthAt(edge, part.begin, corner), WidthAt(edge, part.end, corner));
    const Vec2 toCorner = Corner(corner) - edge.middle;
    const double foot = Dot(edge.normal, toCorner) / edge.square;
    const double offset = std::fabs(Cross(edge.normal, toCorner)) / edge.square;
    const double sameAngle = 0.5 * foot / (0.5 - offset);
    if (sameAngle > part.begin && sameAngle < part.end) least = std::min(least, WidthAt(edge, sameAngle, corner));
    return least;
  }

  // Every place on a short edge has a corner at some distance; its points are at most at that of the ends.
  bool IsTooWide(const VoronoiEdge2& edge) const {
    if (std::isinf(edge.end[0]) || std::isinf(edge.end[1])) return false;
    const Vec2 middle = edge.PointAt(0.5 * (edge.end[0] + edge.end[1]));
    const double half = 0.5 * std::fabs(edge.end[0] - edge.end[1]) * std::sqrt(edge.square);
    const double nearest = std::sqrt(std::max(edge.SquareAt(edge.end[0]), edge.SquareAt(edge.end[1])));
    double farthest = 0.0;
    for (const Vec2& outpost : m_outposts) farthest = std::max(farthest, Length(outpost - middle));
    return farthest - half - nearest - kEndSteps > Limit();
  }

  static double Beyond(const VoronoiEdge2& edge, double t) {
    return kEndSteps / std::sqrt(edge.square) + kEndShare * std::fabs(t);
  }

  void Search(const VoronoiEdge2& edge) {
    if (IsTooWide(edge)) return;
    const double begin = edge.end[1] - Beyond(edge, edge.end[1]);
    const double end = edge.end[0] + Beyond(edge, edge.end[0]);
    if (!(begin < end)) return;
    m_open.assign(1, {begin, FarthestAt(edge, begin), end, FarthestAt(edge, end)});
    // Along an edge no corner is the farthest in two places; values that agree to rounding may add some.
    const std::size_t most = 4 * m_hull.Corners().size() + 64;
    for (std::size_t parts = 0; !m_open.empty() && !m_contradicts; ++parts) {
      const Part part = m_open.back();
      m_open.pop_back();
      if (parts < kPlainParts || !IsMonotonic(edge, part)) Divide(edge, part);
      m_contradicts = parts > most;
    }
  }

  // Whether the width grows all along a part, or falls: seen from farther away the angle pq is smaller. Widths of a few
  // steps of the grid are judged one by one.
  bool IsMonotonic(const VoronoiEdge2& edge, const Part& part) const {
    const double from = Dot(edge.normal, Corner(part.last) - edge.middle) / edge.square;
    const double to = Dot(edge.normal, Corner(part.first) - edge.middle) / edge.square;
    const bool before = part.begin < 0.0;
    const bool behind = part.end > 0.0;
    const auto holds = [&](const auto& clear) {
      return m_farthest.AreAll([&](const FarthestCorner2::Box& box) {
        const BoxAtEdge at(edge, box);
        return at.across.high < from || at.across.low > to || clear(at);
      });
    };
    const auto grows = [&](const BoxAtEdge& at) {
      return (!before || at.IsOutside(std::min(part.end, 0.0), true)) && (!behind || at.IsInside(part.end, false));
    };
    const auto falls = [&](const BoxAtEdge& at) {
      return (!before || at.IsInside(part.begin, true)) && (!behind || at.IsOutside(std::max(part.begin, 0.0), false));
    };
    return (WidthAt(edge, part.begin, part.first) > kSameWidth && holds(grows)) ||
           (WidthAt(edge, part.end, part.last) > kSameWidth && holds(falls));
  }

  void Divide(const VoronoiEdge2& edge, const Part& part) {
    if (part.first == part.last) return;
    const double least = std::max(LeastWidthOn(edge, part, part.first), LeastWidthOn(edge, part, part.last));
    if (least > Limit()) return;
    const Vec2 h = Corner(part.first);
    const Vec2 k = Corner(part.last);
    const Vec2 toMiddle = 0.5 * ((h - edge.middle) + (k - edge.middle));
    const double crossing = AccurateDot(h - k, toMiddle) / AccurateDot(edge.normal, h - k);
    const double t = std::clamp(crossing, part.begin, part.end);
    if (!std::isfinite(t)) return;
    const std::size_t farthest = FarthestAt(edge, t);
    if (farthest == part.first || farthest == part.last || IsNoFarther(edge, t, farthest, part)) {
      return Judge(edge, t, h, k);
    }
    m_open.push_back({part.begin, part.first, t, farthest});
    m_open.push_back({t, farthest, part.end, part.last});
  }

  bool IsNoFarther(const VoronoiEdge2& edge, double t, std::size_t corner, const Part& than) const {
    const FarthestCorner2::Place place{edge.middle, 2.0 * t * edge.normal};
    const double other =
        std::max(FarthestCorner2::Value(place, Corner(than.first)), FarthestCorner2::Value(place, Corner(than.last)));
    return FarthestCorner2::Value(place, Corner(corner)) <= other + Rounding(edge, place, Corner(corner));
  }

  // Of a corner's value.
  static double Rounding(const VoronoiEdge2& edge, const FarthestCorner2::Place& place, Vec2 corner) {
    const double length = Length(corner - edge.middle);
    return kSameValue * length * (length + Length(place.shift));
  }

  // Corners that tie at an end of a part may cross outside of it: then both are not the farthest at t.
  void Judge(const VoronoiEdge2& edge, double t, Vec2 h, Vec2 k) {
    const FarthestCorner2::Place place{edge.middle, 2.0 * t * edge.normal};
    const double value = FarthestCorner2::Value(place, h);
    if (std::fabs(value - FarthestCorner2::Value(place, k)) > Rounding(edge, place, h)) return;
    const Vec2 centre = edge.PointAt(t);
    const double outer = Length(h - centre);
    const double inner = std::sqrt(edge.SquareAt(t));
    const double width = (value - 0.25 * edge.square) / (outer + inner);
    if (!(width <= Limit()) || !std::isfinite(outer)) return;
    if (width > kSameWidth && !IsLocalOptimum(edge, t, h, k)) return;
    if (width < m_bound) m_bound = std::max(width, 0.0);
    m_candidates.push_back({true, centre, width, {h, k}, {edge.p, edge.q}});
  }

  // The angle of a point as seen from the edge at t, from the direction in which p and q are mirrored; accurate also
  // for a centre far away, where all angles are small.
  static double AngleAt(const VoronoiEdge2& edge, double t, Vec2 point) {
    const double side = t > 0.0 ? -1.0 : 1.0;
    const Vec2 toPoint = point - edge.middle;
    return Atan2(side * Cross(edge.normal, toPoint), side * (Dot(edge.normal, toPoint) - t * edge.square));
  }

  // The four points have to alternate: one of h and k is seen between p and q, the other is not.
  bool IsLocalOptimum(const VoronoiEdge2& edge, double t, Vec2 h, Vec2 k) {
    const double inner = std::fabs(AngleAt(edge, t, edge.p));
    const double outer[2] = {std::fabs(AngleAt(edge, t, h)), std::fabs(AngleAt(edge, t, k))};
    const double same = kSameDirection * std::max({inner, outer[0], outer[1]});
    const bool isShared = std::fabs(outer[0] - inner) <= same || std::fabs(outer[1] - inner) <= same;
    if (!isShared) return (outer[0] < inner) != (outer[1] < inner);
    return IsHeldByMore(edge.PointAt(t), Length(h - edge.PointAt(t)), std::sqrt(edge.SquareAt(t)));
  }

  // Where contacts lie on common rays from the centre, others have to hold it as well.
  bool IsHeldByMore(Vec2 centre, double outer, double inner) {
    const double reach = kEndSteps + kEndShare * outer;
    const auto direction = [centre](Vec2 p) { return (1.0 / Length(p - centre)) * (p - centre); };
    std::vector<Vec2> out;
    m_farthest.AreAll([&](const FarthestCorner2::Box& box) {
      const Vec2 far{std::max(centre.x - box.least.x, box.greatest.x - centre.x),
                     std::max(centre.y - box.least.y, box.greatest.y - centre.y)};
      const bool isBeyond = Look() && Length(far) >= outer - reach;
      if (isBeyond && box.least == box.greatest) out.push_back(direction(box.least));
      return !isBeyond || box.least == box.greatest;
    });
    std::vector<Vec2> in;
    for (const Delaunay2::Site site : SitesWithin(centre, inner + reach)) in.push_back(direction(m_mesh.At(site)));
    const std::size_t differences = out.size() * in.size();
    return differences < m_looksLeft && Look(differences) && Surround(out, in);
  }

  // The sites in a circle are connected by edges of the mesh: on the way from one of them to the centre, the nearest
  // site is always in the circle.
  std::vector<Delaunay2::Site> SitesWithin(Vec2 centre, double radius) {
    std::vector<Delaunay2::Edge> open{m_delaunayEdge};  // one from each site
    std::vector<Delaunay2::Site> found{m_mesh.Origin(m_delaunayEdge)};
    m_isFound.resize(m_mesh.Sites());
    m_isFound[found.front()] = true;
    while (!open.empty()) {
      const Delaunay2::Edge first = open.back();
      open.pop_back();
      Delaunay2::Edge e = first;
      do {
        const Delaunay2::Site site = m_mesh.Destination(e);
        if (!m_isFound[site] && Length(m_mesh.At(site) - centre) <= radius) {
          m_isFound[site] = true;
          found.push_back(site);
          open.push_back(Delaunay2::Opposite(e));
        }
        e = m_mesh.Next(e);
      } while (e != first && Look());
    }
    for (const Delaunay2::Site site : found) m_isFound[site] = false;
    return found;
  }

  // Whether there may be so many more looks; once there may not, there are none.
  bool Look(std::size_t count = 1) {
    m_looksLeft -= std::min(count, m_looksLeft);
    return m_looksLeft > 0;
  }

  ConvexPolygon2 m_hull;
  FarthestCorner2 m_farthest;
  Delaunay2 m_mesh;
  double m_bound;  // the least width so far
  std::size_t m_looksLeft;
  Delaunay2::Edge m_delaunayEdge = 0;
  std::vector<bool> m_isFound;
  bool m_contradicts = false;
  std::vector<Vec2> m_outposts;
  std::vector<Part> m_open;
  std::vector<GridAnnulus> m_candidates;
};

}  // namespace

GridAnnulus NarrowestGridAnnulus(const std::vector<Vec2>& points, double bound) {
  return Overlay(points, bound).Run();
}

}  // namespace nu::engine::minimax
