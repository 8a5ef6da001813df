#include "nu/engine/minimax/hull_slab.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

#include "nu/engine/points/oriented_boxes.h"

// While a slab turns about two edges or vertices that it rests on, its width has no minimum: the narrowest slab rests
// on a face and a vertex of the hull, or on two edges (M. E. Houle, G. T. Toussaint, Computing the width of a set, IEEE
// Transactions on Pattern Analysis and Machine Intelligence 10, 1988). Seen as directions, the outward normals at an
// edge are an arc between those of its faces; the vertices across change where that arc crosses the arc of another
// edge, reversed:
//
//   the hull, seen along the edge e          the upper plane turns about e from the face F to the face G; meanwhile
//           F  __--*--__  G                  the lower plane rests on the vertex u, on the edge uv and on the vertex v
//         __---    e    ---__
//        /                   \               the normals at e, with the vertex across from each
//        \__               __/                  n(F) *-------------------x-----------* n(G)
//           ---*-------*---                         <------- u ------->   <--- v --->
//              v       u                     x, on the reversed arc of uv: a slab on two edges
//
// The crossings are found by halving the arc, exactly, and parts of it along which two vertices across already keep the
// slab wider than the best one are left out: along an arc on which its width stays positive, the slab through two fixed
// points is narrowest at the ends.

namespace nu::engine::minimax {
namespace {

// The squared sine of an angle that is 0 but for double-double rounding.
constexpr double kParallel = 0x1p-160;

// Whether the last component that is not zero is positive.
bool IsCanonical(const Vec3& v) {
  if (v.z != 0.0) return v.z > 0.0;
  return v.y != 0.0 ? v.y > 0.0 : v.x > 0.0;
}
bool ComesBefore(const Vec3& a, const Vec3& b) {
  if (a.z != b.z) return a.z > b.z;
  return a.y != b.y ? a.y > b.y : a.x > b.x;
}

// A direction and how far rounding may have turned it, in radians.
struct Direction {
  explicit Direction(const Normal3& normal) : unit(Unit(normal.Rounded())), error(normal.TurnError()) {}

  Vec3 unit;
  double error;
};

class SlabSearch {
 public:
  // Slabs clearly wider than `limit` are of no interest.
  SlabSearch(const Hull3& hull, double limit, const DirectionCell* cell = nullptr)
      : m_hull(hull), m_limit(limit), m_cell(cell) {}

  // Its square stays infinite when no slab is within the limit. False when signs contradict each other.
  bool FindNarrowest(HullSlab& narrowest) {
    FindAntipodes();
    const auto& faces = m_hull.Faces();
    for (int f = 0; f < static_cast<int>(faces.size()) && !m_contradicts; ++f) {
      if (!faces[f].isAlive) continue;
      for (int k = 0; k < 3; ++k) {
        if (f < faces[f].across[k]) AlongEdge(f, k);
      }
    }
    narrowest = m_best;
    return !m_contradicts;
  }

 private:
  // A corner so far across from a face that slabs along its normal are too wide, or else the farthest one.
  struct Across {
    int corner = -1;
    bool isLowest = false;
  };
  // From a face to a neighbour.
  struct Turn {
    int from, to;
  };
  static constexpr int kTurnClasses = 24;
  // A part of an edge's arc, with the vertices across at its ends.
  struct Part {
    Direction first, last;
    int firstAcross, lastAcross;
  };

  // A box that is still to be searched, with a bound on the height of its corners.
  struct Pending {
    int node;
    double least;
  };
  // Above the rounding of a box's height, in units of the error of the normal.
  static constexpr double kDescentError = 8.0;

  const double* At(int i) const { return m_hull.At(i); }

  // ---- vertices across

  // The lowest corner along the normal, from corner v on downhill: on a convex surface that ends at the bottom. A
  // corner that is known to be as high as v need not be compared, which would take all digits. On a long path, as round
  // a curve, the boxes lead to the bottom but for rounding. Where v has very many neighbours, as the ends of a helix
  // have, they show that none is lower: to compare all of them for each of their faces would take quadratic time.
  // Before and after the boxes no corner comes twice.
  int Lowest(const Normal3& normal, int v, int level = -1) {
    constexpr int kShortDescent = 8;
    constexpr int kManyNeighbours = 64;
    bool isNear = false;
    for (int steps = 0; steps < 2 * m_hull.Size(); ++steps) {
      if (steps >= kShortDescent && !isNear && IsWorthBoxes()) {
        v = LowButForRounding(normal, v);
        isNear = true;
      }
      const int start = v;
      if (!FindLowerNeighbour(normal, v, level, kManyNeighbours)) return v;
      if (v == start && IsLowestInBoxes(normal, v, level)) return v;
      if (v == start && !FindLowerNeighbour(normal, v, level, std::numeric_limits<int>::max())) return v;
    }
    m_contradicts = true;
    return v;
  }

  // False when all neighbours are compared and none is lower. Where v stays the same, only `most` are compared.
  bool FindLowerNeighbour(const Normal3& normal, int& v, int level, int most) const {
    const int start = v;
    int count = 0;
    m_hull.ForNeighbours(start, [&](int w) {
      if (w != level && normal.SignOfHeight(At(start), At(w)) < 0) v = w;
      return v != start || ++count == most;
    });
    return v != start || count == most;
  }

  // A few long descents take less time than the boxes.
  bool IsWorthBoxes() { return m_boxes || ++m_longSteps > m_hull.Size(); }

  // All corners, each with its number in the hull as the index.
  void PackCorners() {
    std::vector<IndexedPoint> corners;
    std::vector<bool> isTaken(static_cast<std::size_t>(m_hull.Size()));
    for (const Hull3::Face& face : m_hull.Faces()) {
      for (const int v : face.corner) {
        const auto place = static_cast<std::size_t>(v);
        if (!face.isAlive || isTaken[place]) continue;
        isTaken[place] = true;
        corners.push_back(m_hull.PointAt(v));
        corners.back().index = v;
      }
    }
    m_boxes.emplace(std::move(corners));
  }

  // Takes boxes to visit(box) that may hold a corner more than `slack`, times the error of its height, below the height
  // `best` over v, which falls on that path. Returns false when `most` boxes are not enough.
  template<class Visit>
  bool SearchBoxes(const Normal3& normal, int v, double slack, int most, const double& best, Visit visit) {
    if (!m_boxes) PackCorners();
    const auto push = [&](int node) {
      const OrientedBoxes::Descent descent = m_boxes->DescentTo(node, LoadVec3(At(v)), normal.Rounded());
      m_pending.push_back({node, descent.height - slack * kDescentError * normal.MostHeightError(descent.distance)});
    };
    m_pending.clear();
    push(0);
    for (int count = 0; !m_pending.empty(); ++count) {
      const Pending next = m_pending.back();
      m_pending.pop_back();
      if (next.least > best) continue;
      if (count == most) return false;
      const BoxTree::Node& node = m_boxes->Nodes()[static_cast<std::size_t>(next.node)];
      if (node.IsLeaf()) {
        visit(node);
        continue;
      }
      push(next.node + 1);
      push(node.right);
      if (m_pending.back().least > m_pending[m_pending.size() - 2].least)
        std::swap(m_pending.back(), m_pending[m_pending.size() - 2]);
    }
    return true;
  }

  int LowButForRounding(const Normal3& normal, int v) {
    double best = 0.0;
    int lowest = v;
    SearchBoxes(normal, v, -1.0, std::numeric_limits<int>::max(), best, [&](const BoxTree::Node& node) {
      for (int k = node.begin; k < node.end; ++k) {
        const IndexedPoint& p = m_boxes->PointAt(k);
        const double height = normal.Height(At(v), p.xyz);
        if (height < best) best = height, lowest = p.index;
      }
    });
    return lowest;
  }

  // Leads to a lower corner v when there is one. False also where too many corners are as low within rounding.
  bool IsLowestInBoxes(const Normal3& normal, int& v, int level) {
    constexpr int kMostBoxes = 1000;
    const int start = v;
    double best = 0.0;
    const bool isAll = SearchBoxes(normal, start, 1.0, kMostBoxes, best, [&](const BoxTree::Node& node) {
      for (int k = node.begin; v == start && k < node.end; ++k) {
        const IndexedPoint& p = m_boxes->PointAt(k);
        if (p.index == start || p.index == level || normal.SignOfHeight(At(start), p.xyz) >= 0) continue;
        v = p.index;
        best = -kInfinity;
      }
    });
    return isAll && v == start;
  }

  // Within a flat face all is level: the path down starts beside the top one.
  int CornerBelow(const Hull3::Face& face) const {
    const Normal3 normal = m_hull.NormalOf(face);
    for (const Hull3::Face& other : m_hull.Faces()) {
      for (const int v : other.corner) {
        if (other.isAlive && normal.SignOfHeight(At(face.corner[0]), At(v)) < 0) return v;
      }
    }
    return face.corner[0];
  }

  // Of each face, from that of a neighbour; the smallest turns first, as in R. C. Prim's algorithm for spanning trees
  // (1957). A path over a wide flat side would lead to all its edges, far from the vertices across from them.
  void FindAntipodes() {
    const auto& faces = m_hull.Faces();
    m_across.assign(faces.size(), {});
    int f = 0;
    while (!faces[f].isAlive) ++f;
    FindLowest(f, CornerBelow(faces[f]));
    QueueNeighbours(f);
    Turn turn;
    while (!m_contradicts && TakeSmallest(turn)) {
      if (m_across[turn.to].corner >= 0) continue;
      const int v = m_across[turn.from].corner;
      m_across[turn.to].corner = v;
      const Hull3::Face& face = faces[turn.to];
      if (!IsTooWide(m_hull.NormalOf(face), At(v), At(face.corner[0]))) FindLowest(turn.to, v);
      QueueNeighbours(turn.to);
    }
  }

  void QueueNeighbours(int f) {
    const Vec3 normal = m_hull.NormalOf(m_hull.Faces()[f]).Rounded();
    for (const int g : m_hull.Faces()[f].across) {
      if (m_across[g].corner >= 0) continue;
      m_turns[TurnClass(normal, m_hull.NormalOf(m_hull.Faces()[g]).Rounded())].push_back({f, g});
    }
  }

  bool TakeSmallest(Turn& turn) {
    const auto turns = std::find_if(m_turns, m_turns + kTurnClasses, [](const auto& queue) { return !queue.empty(); });
    if (turns == m_turns + kTurnClasses) return false;
    turn = turns->back();
    turns->pop_back();
    return true;
  }

  // Each class holds turns up to twice as large as the one before; the first also those that rounding hides.
  static int TurnClass(const Vec3& a, const Vec3& b) {
    constexpr int kLast = kTurnClasses - 1;
    const Vec3 cross = nu::engine::shapes::Cross(a, b);
    const double squaredSine = Dot(cross, cross) / (Dot(a, a) * Dot(b, b));
    if (!(squaredSine > 0.0)) return 0;
    return Dot(a, b) > 0.0 ? std::clamp(kLast + std::ilogb(squaredSine) / 2, 0, kLast) : kLast;
  }

  void FindLowest(int f, int start) {
    if (m_across[f].isLowest) return;
    const Hull3::Face& face = m_hull.Faces()[f];
    m_across[f] = {Lowest(m_hull.NormalOf(face), start), true};
    OfferFace(face, m_across[f].corner);
  }

  // ---- pairs of edges

  void AlongEdge(int f, int k) {
    const auto& faces = m_hull.Faces();
    const int g = faces[f].across[k];
    if (m_across[f].corner == m_across[g].corner) return;
    const int a = faces[f].corner[k];
    const int b = faces[f].corner[Hull3::kNext[k]];
    const Normal3 first = m_hull.NormalOf(faces[f]);
    const Normal3 last = m_hull.NormalOf(faces[g]);
    for (const int v : {m_across[f].corner, m_across[g].corner}) {
      if (IsTooWide(first, At(v), At(a)) && IsTooWide(last, At(v), At(a))) return;
    }
    FindLowest(f, m_across[f].corner);
    FindLowest(g, m_across[g].corner);
    if (m_across[f].corner == m_across[g].corner) return;
    const int beyond = Opposite(faces[g], a, b);
    if (first.SignOfHeight(At(a), At(beyond)) == 0) return;
    m_parts.push_back({Direction(first), Direction(last), m_across[f].corner, m_across[g].corner});
    // Along an arc no vertex is across in two places.
    for (int cuts = 0; !m_parts.empty() && !m_contradicts; ++cuts) {
      const Part part = m_parts.back();
      m_parts.pop_back();
      AlongPart(a, b, part);
      m_contradicts = m_contradicts || cuts > 2 * m_hull.Size();
    }
  }

  static int Opposite(const Hull3::Face& face, int a, int b) {
    for (const int c : face.corner) {
      if (c != a && c != b) return c;
    }
    return -1;
  }

  // The direction along which both vertices across are as low; when another one is lower, the part is cut there.
  void AlongPart(int a, int b, const Part& part) {
    if (part.firstAcross == part.lastAcross || IsTooWide(a, part)) return;
    const double* first = At(part.firstAcross);
    const double* last = At(part.lastAcross);
    const Normal3 normal(At(a), At(b), first, last);
    // On either side of this direction one of the two keeps the slab at least as wide as at the ends.
    if (IsTooWide(normal, first, At(a))) return;
    const int lowest = Lowest(normal, part.firstAcross, part.lastAcross);
    if (normal.SignOfHeight(first, At(lowest)) == 0) return OfferEdges(a, b, part.firstAcross, part.lastAcross);
    const Direction middle(normal);
    m_parts.push_back({part.first, middle, part.firstAcross, lowest});
    m_parts.push_back({middle, part.last, lowest, part.lastAcross});
  }

  bool IsTooWide(int a, const Part& part) const {
    constexpr double kDotError = 1e-15;
    const double limit = Limit();
    for (const int across : {part.firstAcross, part.lastAcross}) {
      const Vec3 offset = LoadVec3(At(a)) - LoadVec3(At(across));
      const double length = std::fabs(offset.x) + std::fabs(offset.y) + std::fabs(offset.z);
      const auto isBeyond = [&](const Direction& end) {
        return Dot(offset, end.unit) - (end.error + kDotError) * length > limit;
      };
      if (isBeyond(part.first) && isBeyond(part.last)) return true;
    }
    return false;
  }

  // ---- the best

  double Limit() const { return std::min(m_limit, std::sqrt(m_best.square.high)) * (1.0 + kSlabMargin); }

  // Whether the slab between two points along a normal is clearly out.
  bool IsTooWide(const Normal3& normal, const double* low, const double* high) const {
    const double least = normal.Height(low, high) - normal.HeightError(low, high);
    return least > Limit() * normal.MostLength();
  }

  void OfferFace(const Hull3::Face& face, int antipode) {
    const auto [a, b, c] = face.corner;
    if (IsTooWide(m_hull.NormalOf(face), At(antipode), At(a))) return;
    const WideVec3 normal = Cross(WideDifference(At(b), At(a)), WideDifference(At(c), At(a)));
    HullSlab found(a, b, c, antipode, 3);
    const Vec3 n = Rounded(normal);
    const Vec3 v = LoadVec3(At(antipode));
    const double square = Dot(n, n);
    for (int k = 0; k < 3; ++k) {
      const Vec3 from = LoadVec3(At(face.corner[Hull3::kNext[k]]));
      const Vec3 to = LoadVec3(At(face.corner[Hull3::kNext[Hull3::kNext[k]]]));
      found.share[k] = Dot(n, Cross(from - v, to - v)) / square;
    }
    found.share[3] = 1.0;
    Offer(normal, found);
  }

  void OfferEdges(int a, int b, int c, int d) {
    if (IsTooWide(Normal3(At(a), At(b), At(c), At(d)), At(c), At(a))) return;
    const WideVec3 normal = Cross(WideDifference(At(b), At(a)), WideDifference(At(d), At(c)));
    HullSlab found(a, b, c, d, 2);
    const Vec3 n = Rounded(normal);
    const Vec3 e = LoadVec3(At(b)) - LoadVec3(At(a));
    const Vec3 f = LoadVec3(At(d)) - LoadVec3(At(c));
    const Vec3 offset = LoadVec3(At(c)) - LoadVec3(At(a));
    const double square = Dot(n, n);
    // Edges along each other span no direction.
    if (square <= kParallel * Dot(e, e) * Dot(f, f)) return;
    found.share[1] = Dot(n, Cross(offset, f)) / square;
    found.share[3] = Dot(n, Cross(offset, e)) / square;
    found.share[0] = 1.0 - found.share[1];
    found.share[2] = 1.0 - found.share[3];
    Offer(normal, found);
  }

  void Offer(const WideVec3& normal, HullSlab& found) {
    found.high = At(found.corner[0]);
    found.low = At(found.corner[found.above]);
    found.normal = Unit(normal);
    found.width = Dot(found.normal, WideDifference(found.high, found.low));
    // The normal of a sliver thinner than all digits is lost to rounding.
    if (!std::isfinite(found.width.high)) return;
    found.square = found.width * found.width;
    found.leastShare = *std::min_element(found.share, found.share + 4);
    if (!IsCanonical(Rounded(found.normal))) TurnAbout(found);
    if (m_cell != nullptr && !m_cell->Holds(Rounded(found.normal), kCellSlack)) return;
    if (IsBetter(found, m_best)) m_best = found;
  }

  static void TurnAbout(HullSlab& found) {
    std::rotate(found.corner, found.corner + found.above, found.corner + 4);
    std::rotate(found.share, found.share + found.above, found.share + 4);
    found.above = 4 - found.above;
    found.normal = -found.normal;
    std::swap(found.high, found.low);
  }

  const Hull3& m_hull;
  double m_limit;
  const DirectionCell* m_cell;
  std::optional<OrientedBoxes> m_boxes;  // of the corners, once they are needed
  int m_longSteps = 0;                   // that were taken without them
  std::vector<Pending> m_pending;
  std::vector<Across> m_across;  // per face
  std::vector<Turn> m_turns[kTurnClasses];
  std::vector<Part> m_parts;
  bool m_contradicts = false;
  HullSlab m_best;
};

}  // namespace

bool IsBetter(const HullSlab& found, const HullSlab& best) {
  if (std::isinf(best.square.high)) return true;
  const double tie = kSameSlab * best.square.high;
  const double excess = (found.square - best.square).high;
  if (std::fabs(excess) > tie) return excess < 0.0;
  const Vec3 normal = Rounded(found.normal);
  const Vec3 bestNormal = Rounded(best.normal);
  if (ComesBefore(normal, bestNormal) || ComesBefore(bestNormal, normal)) return ComesBefore(normal, bestNormal);
  return found.leastShare > best.leastShare;
}

bool FindNarrowest(const Hull3& hull, double limit, const DirectionCell* cell, HullSlab& narrowest) {
  return SlabSearch(hull, limit, cell).FindNarrowest(narrowest);
}

HullSlab FlatSlab(const Hull3& hull) {
  const auto& corner = hull.Simplex();
  HullSlab flat;
  flat.high = flat.low = hull.At(corner[0]);
  flat.width = flat.square = {0.0, 0.0};
  WideVec3 normal{{}, {}, {1.0}};
  if (hull.Dimension() >= 1) {
    const WideVec3 line = WideDifference(hull.At(corner[1]), hull.At(corner[0]));
    const WideVec3 level = Cross(normal, line);
    if (hull.Dimension() >= 2) {
      normal = Cross(line, WideDifference(hull.At(corner[2]), hull.At(corner[0])));
    } else if (Dot(level, level).high > 0.0) {
      normal = Cross(line, level);
    } else {
      normal = {{1.0}, {}, {}};
    }
  }
  flat.normal = Unit(normal);
  if (!IsCanonical(Rounded(flat.normal))) flat.normal = -flat.normal;
  return flat;
}

}  // namespace nu::engine::minimax
