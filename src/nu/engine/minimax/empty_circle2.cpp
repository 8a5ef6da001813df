#include "nu/engine/minimax/empty_circle2.h"

#include <algorithm>

#include "nu/engine/base/floating_point.h"
#include "nu/engine/hulls/convex_polygon2.h"
#include "nu/engine/hulls/voronoi_edge2.h"
#include "nu/engine/minimax/far_squares.h"

// The distance from the nearest point has its largest values within the hull at Voronoi vertices and where Voronoi
// edges leave the hull (M. I. Shamos, D. Hoey, Closest-point problems, FOCS 1975; G. T. Toussaint, Computing largest
// empty circles with location constraints, 1983). Both are the ends of a Voronoi edge, cut off where it leaves the
// hull.

namespace nu::engine::minimax {
namespace {

// Radii, and coordinates of centres, that differ by no more are equal within the rounding of the points' coordinates,
// which is up to two steps of the grid.
constexpr double kSameRadius = 4.0;
constexpr double kSameCentre = 64.0;

void SetThreeContacts(EmptyCircle& circle, Vec2 p, Vec2 q, Vec2 r) {
  Vec2 corner[] = {p, q, r, p, q};
  std::sort(corner, corner + 3, [](Vec2 a, Vec2 b) { return a.x < b.x || (a.x == b.x && a.y < b.y); });
  corner[3] = corner[0], corner[4] = corner[1];
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

// By the longest side, from which the centre is least far: with the same bits from whatever triangulation.
void SetCentreOnThree(EmptyCircle& circle) {
  const Vec2* corner = circle.contact;
  int apex = 2;
  double longest = 0.0;
  for (int k = 0; k < 3; ++k) {
    const Vec2 side = corner[(k + 2) % 3] - corner[(k + 1) % 3];
    if (Dot(side, side) > longest) longest = Dot(side, side), apex = k;
  }
  const Vec2 p = corner[apex == 0 ? 1 : 0];
  const Vec2 q = corner[apex == 2 ? 1 : 2];
  const double t = HalfCotangent(p, q, corner[apex]);
  circle.centre = 0.5 * (p + q) + t * Perpendicular(q - p);
  circle.radius = std::sqrt(longest * (0.25 + t * t));
}

class Search {
 public:
  explicit Search(const std::vector<Vec2>& points) : m_hull(points), m_mesh(points) {}
  // Of more points, about which these are all that matter while the centre is in one of the squares.
  Search(const std::vector<Vec2>& points, const ConvexPolygon2& hull, const FarSquares& squares)
      : m_hull(hull), m_mesh(points), m_squares(&squares) {
    const double limit = std::max(0.0, squares.Radius() - kSameRadius);
    m_limit = limit * limit;
  }

  const std::vector<Vec2>& Corners() const { return m_hull.Corners(); }

  // Finds nothing when signs contradict each other.
  EmptyCircle Run() {
    if (!m_mesh.IsSound()) return {};
    ConsiderAll();
    if (m_tooMany) {
      // Now that the radius is known, they are chosen from as they come.
      m_choosesAtOnce = true;
      ConsiderAll();
    }
    for (const Candidate& candidate : m_candidates) Choose(candidate);
    return m_best;
  }

 private:
  struct Candidate {
    Delaunay2::Edge edge;
    double t;
    double square;
  };

  void ConsiderAll() {
    for (Delaunay2::Edge e = 0; e < m_mesh.Edges(); e += 2) {
      if (m_mesh.InUse(e) && !EndsBelowLimit(e)) Consider(e);
    }
  }

  // Both ends of an edge are clearly too near to the points, as most are; the others are considered with more care.
  bool EndsBelowLimit(Delaunay2::Edge e) const {
    constexpr double kMargin = 1e-9;  // far above the rounding of a product
    const Vec2 p = m_mesh.At(m_mesh.Origin(e)), q = m_mesh.At(m_mesh.Destination(e));
    const double most = (1.0 - kMargin) * m_limit / Dot(q - p, q - p) - 0.25;  // the square of t
    return LeftEndIsBelow(e, p, q, most) && LeftEndIsBelow(Delaunay2::Opposite(e), q, p, most);
  }
  bool LeftEndIsBelow(Delaunay2::Edge e, Vec2 p, Vec2 q, double most) const {
    constexpr double kSlim = 1e-5;  // of the cross product against its factors: far above its rounding
    const Vec2 apex = m_mesh.At(m_mesh.Destination(m_mesh.Next(e)));
    const Vec2 u = p - apex, v = q - apex;
    const double dot = Dot(u, v), cross = Cross(u, v);
    if (cross > kSlim * (Dot(u, u) + Dot(v, v))) return 0.25 * dot * dot < most * cross * cross;
    // A side of the hull has no triangle here. It ends in its middle, up to roundings of the grid.
    return most > 16.0 && m_mesh.Apex(e) == Delaunay2::kNoSite;
  }

  // The first place of those that agree about the radius.
  void Choose(const Candidate& candidate) {
    if (!MayReach(candidate.square)) return;
    const VoronoiEdge2 edge(m_mesh, candidate.edge);
    if (m_best.found && !Precedes(edge.PointAt(candidate.t), m_best.centre)) return;
    m_best = CircleAt(edge, candidate.t);
  }

  // Keeps the ends within the hull that may be as far from the points as the farthest so far.
  void Consider(Delaunay2::Edge e) {
    const VoronoiEdge2 edge(m_mesh, e);
    if (!MayReach(edge.SquareAt(edge.end[0])) && !MayReach(edge.SquareAt(edge.end[1]))) return;
    const double left = std::min(edge.end[0], m_hull.ExitOf(edge.middle, edge.normal).multiple);
    const double right = std::max(edge.end[1], -m_hull.ExitOf(edge.middle, -1.0 * edge.normal).multiple);
    if (!(left >= right)) return;
    for (const double t : {left, right}) {
      const double square = edge.SquareAt(t);
      if (!MayReach(square) || (m_squares != nullptr && !m_squares->Hold(edge.PointAt(t)))) continue;
      if (square > m_largest) Raise(square);
      Keep({e, t, square});
    }
  }
  void Keep(const Candidate& candidate) {
    if (m_choosesAtOnce) return Choose(candidate);
    if (m_candidates.size() == kMostCandidates) {
      m_candidates.clear();
      m_tooMany = true;
    }
    if (!m_tooMany) m_candidates.push_back(candidate);
  }
  bool MayReach(double square) const { return square >= m_limit; }
  void Raise(double square) {
    const double before = m_largest;
    m_largest = square;
    const double limit = std::max(0.0, std::sqrt(square) - kSameRadius);
    m_limit = limit * limit;
    if (MayReach(before)) return;
    m_candidates.clear();
    m_tooMany = false;
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
        SetCentreOnThree(circle);
        return circle;
      }
    }
    const Vec2 outward = t < 0.0 ? -1.0 * edge.normal : edge.normal;
    SetTwoContacts(circle, edge.p, edge.q, m_hull.ExitOf(edge.middle, outward).alongBorder);
    return circle;
  }

  // The points of a lattice leave a circle of one radius in every cell; more than so many are looked for again.
  static constexpr std::size_t kMostCandidates = std::size_t{1} << 16;

  ConvexPolygon2 m_hull;
  Delaunay2 m_mesh;
  const FarSquares* m_squares = nullptr;
  double m_largest = 0.0;               // squared radius
  double m_limit = 0.0;                 // the least squared radius that counts as the same
  std::vector<Candidate> m_candidates;  // the last ones, which agree about the radius
  bool m_tooMany = false;               // for them
  bool m_choosesAtOnce = false;
  EmptyCircle m_best;
};

// ---- many points

// A polygon seen from the origin, which is inside, by equal steps of the diamond angle.
class SeenPolygon {
 public:
  static constexpr std::size_t kCells = 1024;
  static std::size_t CellOf(Vec2 p) {
    const double angle = DiamondAngle(p);
    return angle > 0.0 ? std::min(static_cast<std::size_t>(angle * (kCells / 4.0)), kCells - 1) : 0;
  }

  // For an empty circle of the radius given. False when the origin is not clearly inside.
  bool See(const std::vector<Vec2>& corners, double radius) {
    m_isLong.clear();
    m_hasLong = false;
    m_most.clear();
    m_corners = corners;
    const std::size_t n = corners.size();
    const auto byCell = [](Vec2 a, Vec2 b) { return CellOf(a) < CellOf(b); };
    const auto first = std::min_element(m_corners.begin(), m_corners.end(), byCell);
    std::rotate(m_corners.begin(), first, m_corners.end());
    m_near.assign(kCells, kInfinity);
    m_begin.assign(kCells + 1, 0);
    for (std::size_t i = 0; i < n; ++i) {
      const Vec2 p = m_corners[i], q = m_corners[(i + 1) % n];
      m_most.push_back(AccurateCross(p, q));
      const double distance = m_most.back() / std::sqrt(Dot(q - p, q - p)) - kGridSlack;
      if (!(distance > 0.0)) return false;
      constexpr double kShort = 1.0 - 2.0 * kShare;
      m_isLong.push_back(Dot(q - p, q - p) > 4.0 * kShort * kShort * radius * radius);
      m_hasLong = m_hasLong || m_isLong.back();
      const std::size_t last = i + 1 < n ? CellOf(q) : CellOf(q) + kCells;
      for (std::size_t cell = CellOf(p); cell <= last; ++cell) {
        m_near[cell % kCells] = std::min(m_near[cell % kCells], distance * distance);
      }
      if (i + 1 < n) {
        for (std::size_t cell = CellOf(p) + 1; cell <= CellOf(q); ++cell) m_begin[cell] = static_cast<int>(i + 1);
      }
    }
    for (std::size_t cell = CellOf(m_corners[n - 1]) + 1; cell <= kCells; ++cell) m_begin[cell] = static_cast<int>(n);
    double reach = 0.0;
    for (const Vec2& p : m_corners) reach = std::max(reach, std::sqrt(Dot(p, p)));
    for (double& most : m_most) most *= kShare * radius / reach;
    m_least = *std::min_element(m_near.begin(), m_near.end());
    return true;
  }

  bool IsInside(Vec2 steps) const { return Dot(steps, steps) <= m_near[CellOf(steps)]; }

  // Whether a point, given in steps and not yet rounded, lets the hull grow so that a larger empty circle might be
  // about a new place. When no point does, all are in the polygon blown up by a share of its distance from the origin,
  // and none is beyond a long side. A new place is then beyond a short side: no farther from one of its ends than half
  // its length and that share of the polygon's reach, which is less than the radius.
  bool Matters(Vec2 steps) const {
    const double square = Dot(steps, steps);
    if (square <= m_least) return false;
    const std::size_t cell = CellOf(steps);
    if (square <= m_near[cell]) return false;
    // It is seen through a side of the cell or of its neighbours.
    const int n = static_cast<int>(m_corners.size());
    const int from = (cell > 0 ? m_begin[cell - 1] : m_begin[kCells - 1] - n) - 1;
    const int to = cell + 2 <= kCells ? m_begin[cell + 2] : n + m_begin[1];
    const Vec2 p = GridFrame::Rounded(steps);
    const int side = SideSeenAt(p, from, to);
    for (int i = side - 1; i <= side + 1; ++i) {
      const Vec2 a = Corner(i);
      if (Cross(Corner(i + 1) - a, a - p) > m_most[Place(i)]) return true;
    }
    return m_hasLong && IsBeyondLong(side, p);
  }

 private:
  // Roundings of the grid, of distances on it and of angles.
  static constexpr double kGridSlack = 16.0;
  // Of the radius: how far the hull may lie beyond the polygon.
  static constexpr double kShare = 0.25;

  std::size_t Place(int i) const {
    const int n = static_cast<int>(m_corners.size());
    while (i < 0) i += n;
    while (i >= n) i -= n;
    return static_cast<std::size_t>(i);
  }
  Vec2 Corner(int i) const { return m_corners[Place(i)]; }

  bool IsBeyond(int side, Vec2 p) const { return GridOrientation(Corner(side), Corner(side + 1), p) < 0; }

  // Of the sides of some cells, the one through which p is seen, or next to it where rounding decides. A slender
  // polygon has most of its sides in a few cells.
  int SideSeenAt(Vec2 p, int from, int to) const {
    while (to - from > 1) {
      const int middle = from + (to - from) / 2;
      (Cross(Corner(middle), p) >= 0.0 ? from : to) = middle;
    }
    return from;
  }

  // The sides that a point is beyond follow each other.
  bool IsBeyondLong(int side, Vec2 p) const {
    const int n = static_cast<int>(m_corners.size());
    for (const int step : {-1, 1}) {
      for (int k = 0; k < n; ++k) {
        const int i = side + k * step;
        const bool isBeyond = IsBeyond(i, p);
        if (!isBeyond && k > 1) break;
        if (isBeyond && m_isLong[Place(i)]) return true;
      }
    }
    return false;
  }

  std::vector<Vec2> m_corners;  // in the order of their cells
  std::vector<double> m_near;   // per cell: the squared distance from which on a point may be outside
  std::vector<int> m_begin;     // per cell: its first corner, or the next one
  double m_least = 0.0;
  std::vector<bool> m_isLong;  // per side: it is not short against the radius
  bool m_hasLong = false;
  std::vector<double> m_most;  // per side: how far beyond it a point does not matter, times the length of the side
};

// Of measured outlines few points matter: those of the hull and those next to the empty circle. The largest empty
// circle of a part of the points with the same hull is no smaller than that of all; when no point of all is inside, it
// is theirs. So the nearest and the farthest points in all directions are solved, and points found inside the circle
// or, where that matters, outside the hull join them.
class FewPoints {
 public:
  FewPoints(PointBlocks& points, const Vec3 (&axes)[2])
      : m_points(points), m_axes{axes[0], axes[1]}, m_frame(GridFrameOf(points, axes)) {}

  const GridFrame& Frame() const { return m_frame; }

  // On the grid; not found when too many points matter.
  EmptyCircle Run() {
    constexpr int kRounds = 16;
    constexpr std::size_t kMostSearched = 4;
    if (!m_frame.finite) return {};
    AddExtremes();
    if (m_few.size() < 2) return {};
    std::size_t searched = 0;
    for (int round = 0; round < kRounds && searched <= m_points.Size() / kMostSearched; ++round) {
      searched += m_few.size();
      Search search(m_few);
      const EmptyCircle circle = search.Run();
      if (!circle.found || !m_polygon.See(search.Corners(), circle.radius)) return {};
      if (TooManyOffend(circle)) return BySquares();
      const std::size_t before = m_few.size();
      const std::size_t offenders = AddOffenders(circle);
      if (offenders == 0) return circle;
      if (m_few.size() == before || AreTooMany(offenders, round)) break;
    }
    return BySquares();
  }

 private:
  // As many rounds are worth their passes as bring the offenders down to a share of the points, and twice as many to a
  // smaller one.
  static constexpr int kPatience = 2;
  bool AreTooMany(std::size_t offenders, int round) const {
    constexpr std::size_t kShare = 256, kSmallShare = 1024;
    return (round >= kPatience && offenders > m_points.Size() / kShare) ||
           (round >= 2 * kPatience && offenders > m_points.Size() / kSmallShare);
  }
  // A round takes one offender from each cell; all of them where they are no more than one in kFewShare of the points,
  // as on a stretch that nearly touches the circle and lies in few cells. Where more than one in kMostShare offend, no
  // few rounds bring them down: the points fill an area, or a slender outline has nearly all of them in a few cells.
  static constexpr std::size_t kFewShare = 64;
  static constexpr std::size_t kMostShare = 8;
  static constexpr std::size_t kSampleStep = 64;

  // The nearest or the farthest points, one in each cell.
  struct Extreme {
    double square;
    Vec2 steps;
  };
  using Extremes = std::vector<Extreme>;
  static Extremes None(double square) { return Extremes(SeenPolygon::kCells, {square, {}}); }

  // Every step-th point.
  template<class Visit>
  void ForEach(Visit visit, std::size_t step = 1) {
    std::size_t next = 0;
    m_points.ForEach([&](const PointBlock& block) {
      for (; next < block.size; next += step) {
        const Vec3 p = block.At(next);
        visit(m_frame.InSteps({Dot(p, m_axes[0]), Dot(p, m_axes[1])}));
      }
      next -= block.size;
    });
  }

  // Where points fill an area, or the border of a slender one, few of them are next to a large circle.
  EmptyCircle BySquares() {
    std::vector<Vec2> all, outer = m_few;
    all.reserve(m_points.Size());
    ForEach([&](Vec2 steps) {
      all.push_back(GridFrame::Rounded(steps));
      if (!m_polygon.IsInside(steps)) outer.push_back(all.back());
    });
    SortOnGrid(outer);
    const ConvexPolygon2 hull(outer);
    const FarSquares squares(all, hull);
    if (!squares.IsFound()) return {};
    const std::vector<Vec2> near = squares.PointsNear(all);
    if (near.size() < 2 || near.size() > all.size() / 2) return {};
    const EmptyCircle circle = Search(near, hull, squares).Run();
    return circle.found && IsEmpty(circle, all) ? circle : EmptyCircle{};
  }

  static bool IsEmpty(const EmptyCircle& circle, const std::vector<Vec2>& points) {
    const double reach = SquaredReach(circle);
    return std::none_of(points.begin(), points.end(), [&](Vec2 p) {
      const Vec2 offset = p - circle.centre;
      return Dot(offset, offset) < reach;
    });
  }

  void AddExtremes() {
    Extremes nearest = None(kInfinity), farthest = None(-1.0);
    ForEach([&](Vec2 steps) {
      const double square = Dot(steps, steps);
      const std::size_t cell = SeenPolygon::CellOf(steps);
      if (square < nearest[cell].square) nearest[cell] = {square, steps};
      if (square > farthest[cell].square) farthest[cell] = {square, steps};
    });
    Add(nearest);
    Add(farthest);
    SortOnGrid(m_few);
  }

  static double SquaredReach(const EmptyCircle& circle) {
    const double reach = std::max(0.0, circle.radius - kSameRadius);
    return reach * reach;
  }

  // By a sample.
  bool TooManyOffend(const EmptyCircle& circle) {
    const double reach = SquaredReach(circle);
    std::size_t count = 0;
    const auto look = [&](Vec2 steps) {
      const Vec2 offset = steps - circle.centre;
      if (Dot(offset, offset) < reach || m_polygon.Matters(steps)) ++count;
    };
    ForEach(look, kSampleStep);
    return count > m_points.Size() / (kSampleStep * kMostShare);
  }

  std::size_t AddOffenders(const EmptyCircle& circle) {
    Extremes inside = None(kInfinity), outside = None(-1.0), all;
    const double reach = SquaredReach(circle);
    std::size_t count = 0;
    const auto note = [&](const Extreme& offender) {
      if (count++ < m_points.Size() / kFewShare) all.push_back(offender);
    };
    ForEach([&](Vec2 steps) {
      const Vec2 offset = steps - circle.centre;
      const double square = Dot(offset, offset);
      if (square < reach) {
        Extreme& deepest = inside[SeenPolygon::CellOf(offset)];
        if (square < deepest.square) deepest = {square, steps};
        note({square, steps});
      }
      if (m_polygon.Matters(steps)) {
        Extreme& highest = outside[SeenPolygon::CellOf(steps)];
        const double height = Dot(steps, steps);
        if (height > highest.square) highest = {height, steps};
        note({height, steps});
      }
    });
    if (count <= m_points.Size() / kFewShare) {
      Add(all);
    } else {
      Add(inside);
      Add(outside);
    }
    SortOnGrid(m_few);
    return count;
  }

  void Add(const Extremes& extremes) {
    for (const Extreme& e : extremes) {
      if (e.square >= 0.0 && e.square < kInfinity) m_few.push_back(GridFrame::Rounded(e.steps));
    }
  }

  PointBlocks& m_points;
  Vec3 m_axes[2];
  GridFrame m_frame;
  SeenPolygon m_polygon;
  std::vector<Vec2> m_few;
};

// From the grid to the frame of the blocks.
EmptyCircle InPlane(EmptyCircle circle, Vec2 middle, double unit) {
  const auto inPlane = [&](Vec2 onGrid) { return middle + unit * onGrid; };
  circle.centre = inPlane(circle.centre);
  circle.radius *= unit;
  for (Vec2& contact : circle.contact) contact = inPlane(contact);
  return circle;
}

}  // namespace

EmptyCircle LargestEmptyCircle(PointBlocks& points, const Vec3 (&axes)[2]) {
  constexpr std::size_t kMany = std::size_t{1} << 15;
  if (points.Size() > kMany) {
    FewPoints few(points, axes);
    const EmptyCircle circle = few.Run();
    if (circle.found) return InPlane(circle, few.Frame().middle, few.Frame().unit);
  }
  const Grid2 grid = GridOf(points, axes);
  if (!grid.finite || grid.points.size() < 2) return {};
  return InPlane(Search(grid.points).Run(), grid.middle, grid.unit);
}

}  // namespace nu::engine::minimax
