#include "nu/engine/minimax/slab3.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

#include "nu/engine/base/floating_point.h"
#include "nu/engine/base/simd.h"
#include "nu/engine/hulls/hull3.h"
#include "nu/engine/points/extents.h"
#include "nu/engine/points/oriented_boxes.h"
#include "nu/engine/shapes/wide_vec3.h"

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
//
// The narrowest slab of some points is no wider than that of all. So a few points are solved, all points are tested
// against the result, the farthest outside join the few, and when none is outside the slab is that of all points. Sets
// with about the same width in very many directions would need very many turns; for them the hull of all is built.

namespace nu::engine::minimax {
namespace {

// The largest coordinate is brought near 2^kExponent: sixth powers of lengths do not overflow, products of three
// differences keep their last bits.
constexpr int kExponent = 120;
// Squared widths that agree to this are equal: it is above the rounding of a width in double-double arithmetic for
// slabs down to about 1e-8 of the size, and below what tells the faces of a part apart that only looks symmetrical.
constexpr double kTie = 0x1p-70;
// The squared sine of an angle that is 0 but for double-double rounding.
constexpr double kParallel = 0x1p-160;
// Relative, far above the rounding of a square or a root.
constexpr double kMargin = 1e-12;

// Whether the last component that is not zero is positive.
bool IsCanonical(const Vec3& v) {
  if (v.z != 0.0) return v.z > 0.0;
  return v.y != 0.0 ? v.y > 0.0 : v.x > 0.0;
}
bool ComesBefore(const Vec3& a, const Vec3& b) {
  if (a.z != b.z) return a.z > b.z;
  return a.y != b.y ? a.y > b.y : a.x > b.x;
}

// ---- the slab of a hull

// A slab on points of the hull. The normal points from the plane of `low` to that of `high`.
struct Candidate {
  Candidate() = default;
  Candidate(int a, int b, int c, int d, int countAbove) : corner{a, b, c, d}, above(countAbove) {}

  WideVec3 normal;  // unit length
  DoubleDouble width;
  DoubleDouble square{kInfinity};  // of the width
  const double* high = nullptr;
  const double* low = nullptr;
  int corner[4] = {-1, -1, -1, -1};
  int above = 0;  // so many of the corners, the first ones, are on the upper plane
  double share[4] = {};
  double leastShare = 0.0;
};

// A direction and how far rounding may have turned it, in radians.
struct Direction {
  explicit Direction(const Normal3& normal) : unit(Unit(normal.Rounded())), error(normal.TurnError()) {}

  Vec3 unit;
  double error;
};

class SlabSearch {
 public:
  // Slabs clearly wider than `limit` are of no interest.
  SlabSearch(const Hull3& hull, double limit) : m_hull(hull), m_limit(limit) {}

  // Its square stays infinite when no slab is within the limit. False when signs contradict each other.
  bool FindNarrowest(Candidate& narrowest) {
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

  double Limit() const { return std::min(m_limit, std::sqrt(m_best.square.high)) * (1.0 + kMargin); }

  // Whether the slab between two points along a normal is clearly out.
  bool IsTooWide(const Normal3& normal, const double* low, const double* high) const {
    const double least = normal.Height(low, high) - normal.HeightError(low, high);
    return least > Limit() * normal.MostLength();
  }

  void OfferFace(const Hull3::Face& face, int antipode) {
    const auto [a, b, c] = face.corner;
    if (IsTooWide(m_hull.NormalOf(face), At(antipode), At(a))) return;
    const WideVec3 normal = Cross(WideDifference(At(b), At(a)), WideDifference(At(c), At(a)));
    Candidate found(a, b, c, antipode, 3);
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
    Candidate found(a, b, c, d, 2);
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

  void Offer(const WideVec3& normal, Candidate& found) {
    found.high = At(found.corner[0]);
    found.low = At(found.corner[found.above]);
    found.normal = Unit(normal);
    found.width = Dot(found.normal, WideDifference(found.high, found.low));
    // The normal of a sliver thinner than all digits is lost to rounding.
    if (!std::isfinite(found.width.high)) return;
    found.square = found.width * found.width;
    found.leastShare = *std::min_element(found.share, found.share + 4);
    if (!IsCanonical(Rounded(found.normal))) TurnAbout(found);
    if (IsBetter(found)) m_best = found;
  }

  static void TurnAbout(Candidate& found) {
    std::rotate(found.corner, found.corner + found.above, found.corner + 4);
    std::rotate(found.share, found.share + found.above, found.share + 4);
    found.above = 4 - found.above;
    found.normal = -found.normal;
    std::swap(found.high, found.low);
  }

  bool IsBetter(const Candidate& found) const {
    if (std::isinf(m_best.square.high)) return true;
    const double tie = kTie * m_best.square.high;
    const double excess = (found.square - m_best.square).high;
    if (std::fabs(excess) > tie) return excess < 0.0;
    const Vec3 normal = Rounded(found.normal);
    const Vec3 best = Rounded(m_best.normal);
    if (ComesBefore(normal, best) || ComesBefore(best, normal)) return ComesBefore(normal, best);
    return found.leastShare > m_best.leastShare;
  }

  const Hull3& m_hull;
  double m_limit;
  std::optional<OrientedBoxes> m_boxes;  // of the corners, once they are needed
  int m_longSteps = 0;                   // that were taken without them
  std::vector<Pending> m_pending;
  std::vector<Across> m_across;  // per face
  std::vector<Turn> m_turns[kTurnClasses];
  std::vector<Part> m_parts;
  bool m_contradicts = false;
  Candidate m_best;
};

// Points in one plane or less: a plane that holds them, of a line the one that is nearest to level. Of a hull all of
// whose faces are slivers it is such a plane of three corners.
Candidate FlatSlab(const Hull3& hull) {
  const auto& corner = hull.Simplex();
  Candidate flat;
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

// ---- all points

// The multiple of 2^-198 nearest to a coordinate: products of three differences of such numbers lose nothing below the
// normal numbers, so that signs are right whatever the input.
double OnGrid(double v) {
  constexpr double kOnGrid = 0x1p-147;  // numbers between twice and four times this have the step 2^-198
  if (std::fabs(v) >= kOnGrid) return v;
  return (v + 3.0 * kOnGrid) - 3.0 * kOnGrid;
}

struct Frame {
  PointView points;
  double scale;  // a power of two
  double reach;  // no two scaled points are farther apart

  IndexedPoint PointAt(int i) const {
    const double* p = points[i];
    return {{OnGrid(p[0] * scale), OnGrid(p[1] * scale), OnGrid(p[2] * scale)}, i};
  }
};

NU_ALWAYS_INLINE double HeightOver(const double* p, double scale, Vec3 origin, Vec3 normal) {
  return Dot(Vec3{p[0] * scale - origin.x, p[1] * scale - origin.y, p[2] * scale - origin.z}, normal);
}

// The least and the greatest height over `origin` of a block of points.
NU_KERNEL void HeightRange(PointView block, double scale, Vec3 origin, Vec3 normal, double* range) {
  double least[kLanes], most[kLanes];
  for (int l = 0; l < kLanes; ++l) least[l] = kInfinity, most[l] = -kInfinity;
  std::size_t i = 0;
  for (; i + kLanes <= block.Size(); i += kLanes) {
    for (int l = 0; l < kLanes; ++l) {
      const double h = HeightOver(block[i + l], scale, origin, normal);
      least[l] = h < least[l] ? h : least[l];
      most[l] = h > most[l] ? h : most[l];
    }
  }
  for (; i < block.Size(); ++i) {
    const double h = HeightOver(block[i], scale, origin, normal);
    least[0] = h < least[0] ? h : least[0];
    most[0] = h > most[0] ? h : most[0];
  }
  range[0] = *std::min_element(least, least + kLanes);
  range[1] = *std::max_element(most, most + kLanes);
}

// One pass over all points: those outside a slab.
class OutsideScan {
 public:
  OutsideScan(const Frame& frame, const Candidate& slab)
      : m_frame(frame),
        m_slab(slab),
        m_block(std::clamp(frame.points.Size() / kBlocks, kSmallestBlock, kLargestBlock)),
        m_band(kHeightError * frame.reach),
        m_tolerance(kOutside * slab.width.high + kCoplanar * frame.reach) {
    const std::size_t n = frame.points.Size();
    for (std::size_t begin = 0; begin < n; begin += m_block) Visit(begin, std::min(m_block, n - begin));
  }

  // Of all points along the slab's normal, rounding included.
  double MostWidth() const { return m_most[kUp] + m_most[kDown] + m_slab.width.high + 2.0 * m_band; }

  // The farthest on either side, a few.
  std::vector<IndexedPoint> Farthest() {
    std::vector<IndexedPoint> farthest;
    for (const Side side : {kUp, kDown}) {
      std::vector<Block>& blocks = m_blocks[side];
      const auto most = blocks.begin() + static_cast<std::ptrdiff_t>(std::min(blocks.size(), kMostPerSide));
      std::sort(blocks.begin(), blocks.end(), [](const Block& a, const Block& b) {
        return a.distance != b.distance ? a.distance > b.distance : a.begin < b.begin;
      });
      const std::size_t before = farthest.size();
      for (auto block = blocks.begin(); block != blocks.end(); ++block) {
        // What the best blocks only seemed to have may be in the others.
        if (block >= most && farthest.size() > before) break;
        Search(*block, side, farthest);
      }
    }
    return farthest;
  }

 private:
  enum Side { kUp, kDown };
  struct Block {
    double distance;  // beyond the plane, of the farthest
    std::size_t begin, count;
  };

  static constexpr std::size_t kBlocks = 64;
  static constexpr std::size_t kSmallestBlock = 16;
  static constexpr std::size_t kLargestBlock = 1024;
  // On either side; more would make the small problems large, fewer the passes many. Measured.
  static constexpr std::size_t kMostPerSide = 8;
  // Of a height, relative to the distance.
  static constexpr double kHeightError = 0x1p-50;
  // Outside is what leaves the slab by more than this share of its width; of a plane, of the size.
  static constexpr double kOutside = kTie;
  static constexpr double kCoplanar = 0x1p-90;

  const double* Plane(Side side) const { return side == kUp ? m_slab.high : m_slab.low; }

  void Visit(std::size_t begin, std::size_t count) {
    double range[2];
    HeightRange(m_frame.points.Part(begin, count), m_frame.scale, LoadVec3(m_slab.high), Rounded(m_slab.normal), range);
    const double distance[] = {range[1], -range[0] - m_slab.width.high};
    for (const Side side : {kUp, kDown}) {
      m_most[side] = std::max(m_most[side], distance[side]);
      if (distance[side] > -m_band) m_blocks[side].push_back({distance[side], begin, count});
    }
  }

  // The farthest of a block beyond a plane; what is near it is measured in more digits.
  void Search(const Block& block, Side side, std::vector<IndexedPoint>& outside) const {
    const double sign = side == kUp ? 1.0 : -1.0;
    const Vec3 plane = LoadVec3(Plane(side));
    const Vec3 normal = sign * Rounded(m_slab.normal);
    double farthest = m_tolerance;
    int index = -1;
    for (std::size_t i = block.begin; i < block.begin + block.count; ++i) {
      const IndexedPoint p = m_frame.PointAt(static_cast<int>(i));
      if (Dot(LoadVec3(p.xyz) - plane, normal) < block.distance - 2.0 * m_band) continue;
      const double distance = sign * Dot(m_slab.normal, WideDifference(p.xyz, Plane(side))).high;
      if (distance > farthest) farthest = distance, index = p.index;
    }
    if (index >= 0) outside.push_back(m_frame.PointAt(index));
  }

  const Frame& m_frame;
  const Candidate& m_slab;
  std::size_t m_block;
  double m_band;
  double m_tolerance;
  double m_most[2] = {0.0, 0.0};
  std::vector<Block> m_blocks[2];  // those that may hold a point outside
};

std::vector<IndexedPoint> AllPoints(const Frame& frame) {
  std::vector<IndexedPoint> all;
  all.reserve(frame.points.Size());
  for (std::size_t i = 0; i < frame.points.Size(); ++i) all.push_back(frame.PointAt(static_cast<int>(i)));
  return all;
}

// Some points, at places that no regular pattern of the data shares.
std::vector<IndexedPoint> Sample(const Frame& frame, std::size_t count) {
  const std::size_t step = frame.points.Size() / count;
  std::vector<IndexedPoint> sample;
  std::uint32_t state = 1;
  for (std::size_t k = 0; k < count; ++k) {
    state = state * 1664525u + 1013904223u;
    sample.push_back(frame.PointAt(static_cast<int>(k * step + (state >> 8) % step)));
  }
  return sample;
}

struct Solution {
  Hull3 hull;
  Candidate slab;
  long passes = 0;
  bool isCancelled = false;
};

// Of the hull of more points. False when signs contradict each other.
bool Extend(Solution& solution, const std::vector<IndexedPoint>& more, double limit) {
  if (!solution.hull.Add(more)) return false;
  solution.slab = {};
  if (solution.hull.Dimension() == 3 && !SlabSearch(solution.hull, limit).FindNarrowest(solution.slab)) return false;
  if (solution.slab.high == nullptr) solution.slab = FlatSlab(solution.hull);
  return true;
}

// The monitor sees the width of the slab around the points of the next pass.
bool GoesOn(const Frame& frame, const StepMonitor& monitor, Solution& solution) {
  constexpr double kNoStep = kQuietNaN;
  const double width = solution.passes > 0 ? solution.slab.width.high / frame.scale : kNoStep;
  solution.isCancelled = !monitor.GoesOn(++solution.passes, width, kNoStep);
  return !solution.isCancelled;
}

// False when it takes too many turns; then the slab is not wider than `limit`. Also when it is cancelled.
bool SolveByFew(const Frame& frame, const StepMonitor& monitor, Solution& solution, double& limit) {
  constexpr std::size_t kSampleSize = 24;
  constexpr int kTurns = 24;
  constexpr int kMostTurns = 400;
  // From there on as long as the hull is small against the points and so many turns halve what is left between the
  // bounds: where some slabs compete each of them takes its own turns.
  constexpr int kHalving = 8;
  constexpr std::size_t kSmallHull = 16;
  std::vector<IndexedPoint> more = Sample(frame, kSampleSize);
  double leftBefore = kInfinity;
  for (int turn = 0; turn < kMostTurns; ++turn) {
    if (!GoesOn(frame, monitor, solution) || !Extend(solution, more, limit)) return false;
    OutsideScan scan(frame, solution.slab);
    more = scan.Farthest();
    if (more.empty()) return true;
    limit = std::min(limit, scan.MostWidth());
    if (turn % kHalving != 0) continue;
    const double left = limit - solution.slab.width.high;
    const bool isSmall = kSmallHull * static_cast<std::size_t>(solution.hull.Size()) < frame.points.Size();
    if (turn >= kTurns && !(isSmall && left <= 0.5 * leftBefore)) return false;
    leftBefore = left;
  }
  return false;
}

bool Solve(const Frame& frame, const StepMonitor& monitor, Solution& solution) {
  constexpr std::size_t kFew = 40;
  double limit = kInfinity;
  if (frame.points.Size() > kFew && SolveByFew(frame, monitor, solution, limit)) return true;
  if (solution.isCancelled || !GoesOn(frame, monitor, solution)) return false;
  solution.hull = Hull3();
  return Extend(solution, AllPoints(frame), limit);
}

void NormaliseShares(double* share, int count) {
  double sum = 0.0;
  for (int k = 0; k < count; ++k) sum += share[k] = std::max(share[k], 0.0);
  for (int k = 0; k < count; ++k) share[k] /= sum;
}

}  // namespace

Slab3 NarrowestSlab(const PointView& points, const Vec3& origin, const StepMonitor& monitor) {
  constexpr int kExponentLimit = 1000;
  const Extents extents = ExtentsOf(points);
  if (!extents.isFinite) return {};
  const Box& box = extents.box;
  double largest = 0.0;
  for (int k = 0; k < 3; ++k) largest = std::max({largest, std::fabs(box.low[k]), std::fabs(box.high[k])});
  const int shift = largest > 0.0 ? std::clamp(kExponent - std::ilogb(largest), -kExponentLimit, kExponentLimit) : 0;
  Frame frame{points, std::ldexp(1.0, shift), 0.0};
  for (int k = 0; k < 3; ++k) frame.reach += (box.high[k] * frame.scale) - (box.low[k] * frame.scale);

  Solution solution;
  if (!Solve(frame, monitor, solution)) return {};
  const Candidate& found = solution.slab;
  Slab3 slab;
  slab.found = true;
  slab.normal = Rounded(found.normal);
  const double scaled[] = {origin.x * frame.scale, origin.y * frame.scale, origin.z * frame.scale};
  const DoubleDouble top = Dot(found.normal, WideDifference(found.high, scaled));
  slab.height = std::ldexp((top - DoubleDouble{0.5} * found.width).high, -shift);
  // Of slivers a width below all digits may have lost its sign.
  slab.width = std::ldexp(std::max(found.width.high, 0.0), -shift);
  slab.above = found.above;
  for (int k = 0; k < 4 && found.above > 0; ++k) {
    slab.contact[k] = solution.hull.PointAt(found.corner[k]).index;
    slab.share[k] = found.share[k];
  }
  if (slab.above > 0) {
    NormaliseShares(slab.share, slab.above);
    NormaliseShares(slab.share + slab.above, 4 - slab.above);
  }
  return slab;
}

}  // namespace nu::engine::minimax
