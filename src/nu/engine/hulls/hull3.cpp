#include "nu/engine/hulls/hull3.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <optional>
#include <utility>

#include "nu/engine/shapes/axis_frame.h"
#include "nu/engine/shapes/vec2.h"

namespace nu::engine::hulls {
namespace {

// A face's mark holds twice the apex, and one more where the face sees it.
int Mark(int apex, bool isSeen) {
  return 2 * apex + (isSeen ? 1 : 0);
}

// Sets up to this size grow at once, and so do the first points of larger ones. Measured, and so is the growth.
constexpr std::size_t kFirstStage = 1000;
constexpr int kGrowthBits = 3;  // each stage takes 2^3 times the points before

int StagesFor(std::size_t size) {
  int stages = 0;
  for (; size > kFirstStage; size >>= kGrowthBits) ++stages;
  return stages;
}

// By a fixed hash, so that no pattern of the data decides (T. Wang, integer hash functions, 1997).
int StageOf(std::uint32_t i, int last) {
  i = (i ^ 61u) ^ (i >> 16);
  i *= 9u;
  i ^= i >> 4;
  i *= 0x27d4eb2du;
  i ^= i >> 15;
  return last - std::min(last, std::countl_zero(i) / kGrowthBits);
}

// Along a space-filling curve (G. M. Morton, 1966) in the coordinates that a simplex spans.
class SpaceOrder {
 public:
  SpaceOrder(const std::vector<IndexedPoint>& points, const Vec3 (&simplex)[4]) : m_origin(simplex[0]) {
    const Vec3 a = simplex[1] - m_origin, b = simplex[2] - m_origin, c = simplex[3] - m_origin;
    m_across[0] = Unit(Cross(b, c)), m_across[1] = Unit(Cross(c, a)), m_across[2] = Unit(Cross(a, b));
    for (const IndexedPoint& p : points) {
      for (int k = 0; k < 3; ++k) {
        const double t = Along(p, k);
        m_least[k] = std::min(m_least[k], t);
        m_most[k] = std::max(m_most[k], t);
      }
    }
  }

  static constexpr int kBits = 10;  // of a coordinate
  std::uint64_t CodeOf(const IndexedPoint& p) const {
    std::uint32_t cell[3];
    for (int k = 0; k < 3; ++k) {
      constexpr double kLast = (1 << kBits) - 1;
      const double t = (Along(p, k) - m_least[k]) / (m_most[k] - m_least[k]) * kLast;
      cell[k] = t > 0.0 ? static_cast<std::uint32_t>(std::min(t, kLast)) : 0u;
    }
    std::uint64_t code = 0;
    for (int bit = kBits - 1; bit >= 0; --bit) {
      for (const std::uint32_t c : cell) code = 2 * code + ((c >> bit) & 1u);
    }
    return code;
  }

 private:
  double Along(const IndexedPoint& p, int k) const { return Dot(m_across[k], LoadVec3(p.xyz) - m_origin); }

  Vec3 m_origin;
  Vec3 m_across[3];
  double m_least[3] = {};
  double m_most[3] = {};
};

}  // namespace

bool Hull3::Add(const std::vector<IndexedPoint>& points) {
  const int first = static_cast<int>(m_points.size());
  m_points.insert(m_points.end(), points.begin(), points.end());
  m_next.resize(m_points.size(), -1);
  m_faceOf.resize(m_points.size(), -1);
  const bool hadFaces = m_dimension == 3;
  if (!hadFaces && !FindSimplex()) return true;
  if (!hadFaces && m_points.size() > kFirstStage && FindInside()) return GrowInStages();
  if (!hadFaces) MakeSimplex();
  // Signs of corners against their own faces would take all digits.
  const auto isPlaced = [&](int i) { return std::find(m_simplex.begin(), m_simplex.end(), i) != m_simplex.end(); };
  for (int i = hadFaces ? first : 0; i < static_cast<int>(m_points.size()); ++i) {
    if (hadFaces || !isPlaced(i)) PlaceOnAnyFace(i);
  }
  return Grow();
}

// The middle of the simplex is inside all that grows from it, unless rounding brings it to a side.
bool Hull3::FindInside() {
  const Vec3 middle = 0.25 * (LoadVec3(At(m_simplex[0])) + LoadVec3(At(m_simplex[1])) + LoadVec3(At(m_simplex[2])) +
                              LoadVec3(At(m_simplex[3])));
  m_inside[0] = middle.x, m_inside[1] = middle.y, m_inside[2] = middle.z;
  for (int k = 0; k < 4; ++k) {
    const double* p = At(m_simplex[k]);
    const double* q = At(m_simplex[(k + 1) % 4]);
    const double* r = At(m_simplex[(k + 2) % 4]);
    const Normal3 normal(p, q, p, r);
    if (normal.SignOfHeight(p, m_inside) * normal.SignOfHeight(p, At(m_simplex[(k + 3) % 4])) <= 0) return false;
  }
  m_hasInside = true;
  return true;
}

// The simplex first, then all points in stages, each along a space-filling curve: what comes together is near in memory
// and in space (N. Amenta, S. Choi, G. Rote, Incremental constructions con BRIO, SCG 2003).
std::vector<int> Hull3::ArrangeInStages() {
  const int last = StagesFor(m_points.size());
  const Vec3 simplex[] = {LoadVec3(At(m_simplex[0])), LoadVec3(At(m_simplex[1])), LoadVec3(At(m_simplex[2])),
                          LoadVec3(At(m_simplex[3]))};
  const SpaceOrder order(m_points, simplex);
  constexpr int kIndexBits = 30;
  std::vector<std::uint64_t> keys(m_points.size());
  std::vector<int> ends(static_cast<std::size_t>(last) + 1, 0);
  for (std::size_t i = 0; i < keys.size(); ++i) {
    const bool isInSimplex = std::find(m_simplex.begin(), m_simplex.end(), static_cast<int>(i)) != m_simplex.end();
    const int stage = isInSimplex ? 0 : StageOf(static_cast<std::uint32_t>(i), last);
    ++ends[static_cast<std::size_t>(stage)];
    const std::uint64_t block = isInSimplex ? 0u : static_cast<std::uint64_t>(stage) + 1u;
    keys[i] = (((block << (3 * SpaceOrder::kBits)) | order.CodeOf(m_points[i])) << kIndexBits) | i;
  }
  std::sort(keys.begin(), keys.end());
  std::vector<IndexedPoint> arranged;
  arranged.reserve(m_points.size());
  for (const std::uint64_t key : keys) arranged.push_back(m_points[key & ((std::uint64_t{1} << kIndexBits) - 1)]);
  m_points.swap(arranged);
  m_simplex = {0, 1, 2, 3};
  for (std::size_t k = 1; k < ends.size(); ++k) ends[k] += ends[k - 1];
  return ends;
}

// Of many points most are covered, or find their place on the surface, by a few faces near them: the hull of an eighth
// of them leads to it.
bool Hull3::GrowInStages() {
  const std::vector<int> ends = ArrangeInStages();
  MakeSimplex();
  int i = 4;
  for (const int end : ends) {
    int f = 0;
    while (!m_faces[f].isAlive) ++f;
    for (; i < end; ++i) {
      if (WalkTowards(i, f)) {
        Offer(f, NormalOf(m_faces[f]), i);
      } else {
        PlaceOnAnyFace(i);
      }
    }
    if (!Grow()) return false;
  }
  return true;
}

// From face f to that through which the way from the inside point to a point leads; a point beyond the surface is
// beyond this face. Seen from inside, the faces are a regular triangulation of the directions, in which no walk returns
// (H. Edelsbrunner, An acyclicity theorem for cell complexes in d dimensions, Combinatorica 10, 1990). False after as
// many steps as there are faces, which flat parts of the surface might cause.
bool Hull3::WalkTowards(int point, int& f) const {
  int before = -1;
  for (std::size_t step = 0; step < m_faces.size(); ++step) {
    const Face& face = m_faces[f];
    const auto leadsOn = [&](int k) {
      if (face.across[k] == before) return false;
      const Normal3 side(m_inside, At(face.corner[k]), m_inside, At(face.corner[kNext[k]]));
      return side.SignOfHeight(m_inside, At(point)) < 0;
    };
    int k = 0;
    while (k < 3 && !leadsOn(k)) ++k;
    if (k == 3) return true;
    before = f;
    f = face.across[k];
  }
  return false;
}

// Where no point is off the space of the first ones by rounded arithmetic, exact signs have the last word.
int Hull3::AnyPointOff(int dimension, int guess) const {
  const auto isOff = [&](int i) {
    const double* p = At(m_simplex[0]);
    if (std::find(m_simplex.begin(), m_simplex.begin() + dimension + 1, i) != m_simplex.begin() + dimension + 1) {
      return false;
    }
    if (dimension == 0) return !std::equal(p, p + 3, At(i));
    if (dimension == 1) return !AreCollinear3(p, At(m_simplex[1]), At(i));
    return Normal3(p, At(m_simplex[1]), p, At(m_simplex[2])).SignOfHeight(p, At(i)) != 0;
  };
  if (isOff(guess)) return guess;
  for (int i = 0; i < static_cast<int>(m_points.size()); ++i) {
    if (isOff(i)) return i;
  }
  return -1;
}

bool Hull3::FindSimplex() {
  m_dimension = m_points.empty() ? -1 : 0;
  if (m_points.empty()) return false;
  m_simplex[0] = 0;
  const Vec3 origin = LoadVec3(At(0));
  Vec3 line, normal;
  // By the distance from the space that the points before span.
  const auto distance = [&](const Vec3& v) {
    if (m_dimension == 2) return std::fabs(Dot(normal, v));
    const Vec3 off = m_dimension == 0 ? v : Cross(line, v);
    return Dot(off, off);
  };
  for (; m_dimension < 3; ++m_dimension) {
    int farthest = 0;
    double largest = -1.0;
    for (int i = 0; i < static_cast<int>(m_points.size()); ++i) {
      const double d = distance(LoadVec3(At(i)) - origin);
      if (d > largest) largest = d, farthest = i;
    }
    const int next = AnyPointOff(m_dimension, farthest);
    if (next < 0) return false;
    m_simplex[m_dimension + 1] = next;
    if (m_dimension == 0) line = LoadVec3(At(next)) - origin;
    if (m_dimension == 1) normal = Cross(line, LoadVec3(At(next)) - origin);
  }
  return true;
}

void Hull3::MakeSimplex() {
  auto [a, b, c, d] = m_simplex;
  if (Normal3(At(a), At(b), At(a), At(c)).SignOfHeight(At(a), At(d)) > 0) std::swap(b, c);
  const int base = MakeFace(a, b, c);
  const int side[] = {MakeFace(b, a, d), MakeFace(c, b, d), MakeFace(a, c, d)};
  const int corner[] = {a, b, c};
  for (int k = 0; k < 3; ++k) {
    Link(base, corner[k], side[k]);
    Link(side[k], corner[kNext[k]], base);
    Link(side[k], corner[k], side[kNext[kNext[k]]]);
    Link(side[k], d, side[kNext[k]]);
  }
}

int Hull3::MakeFace(int a, int b, int c) {
  int f = static_cast<int>(m_faces.size());
  if (m_free.empty()) {
    m_faces.emplace_back();
    m_outside.emplace_back();
    m_mark.push_back(-1);
  } else {
    f = m_free.back();
    m_free.pop_back();
  }
  m_faces[f] = {{a, b, c}, {-1, -1, -1}, true};
  m_outside[f] = {};
  m_mark[f] = -1;
  for (const int v : {a, b, c}) m_faceOf[v] = f;
  return f;
}

// Beyond the edge of face f that begins at `from` lies face g.
void Hull3::Link(int f, int from, int g) {
  Face& face = m_faces[f];
  const int k = face.corner[0] == from ? 0 : face.corner[1] == from ? 1 : 2;
  face.across[k] = g;
}

// Puts the point into the list of the face when that sees it.
bool Hull3::Offer(int f, const Normal3& normal, int point) {
  const double* start = At(m_faces[f].corner[0]);
  if (normal.SignOfHeight(start, At(point)) <= 0) return false;
  Outside& outside = m_outside[f];
  if (outside.first < 0) m_open.push_back(f);
  const double distance = normal.Height(start, At(point));
  if (distance > outside.distance) outside.distance = distance, outside.farthest = point;
  m_next[point] = outside.first;
  outside.first = point;
  return true;
}

void Hull3::PlaceOnAnyFace(int point) {
  for (int f = 0; f < static_cast<int>(m_faces.size()); ++f) {
    if (m_faces[f].isAlive && Offer(f, NormalOf(m_faces[f]), point)) return;
  }
}

// Every turn makes one point a corner, for good or until it is covered. The oldest face comes first, so that the hull
// grows on all sides alike: one half of two rings, done before the other, would hang on few corners of that in fans, of
// which every further point sees a large part.
bool Hull3::Grow() {
  for (std::size_t i = 0; i < m_open.size(); ++i) {  // NOLINT(modernize-loop-convert): it grows
    const int f = m_open[i];
    if (!m_faces[f].isAlive || m_outside[f].first < 0) continue;
    // Rounded heights may all vanish where exact ones do not.
    const int apex = m_outside[f].farthest >= 0 ? m_outside[f].farthest : m_outside[f].first;
    CollectVisible(f, apex);
    if (!Cap(apex)) return false;
    Redistribute(apex);
  }
  m_open.clear();
  return true;
}

// The faces that see the apex, which hang together, and the edges round them.
void Hull3::CollectVisible(int f, int apex) {
  m_visible.assign(1, f);
  m_horizon.clear();
  m_mark[f] = Mark(apex, true);
  for (std::size_t i = 0; i < m_visible.size(); ++i) {
    const Face& face = m_faces[m_visible[i]];
    for (int k = 0; k < 3; ++k) {
      const int g = face.across[k];
      if (m_mark[g] != Mark(apex, true) && m_mark[g] != Mark(apex, false)) {
        const Face& beyond = m_faces[g];
        const bool isSeen = NormalOf(beyond).SignOfHeight(At(beyond.corner[0]), At(apex)) > 0;
        m_mark[g] = Mark(apex, isSeen);
        if (isSeen) m_visible.push_back(g);
      }
      if (m_mark[g] == Mark(apex, false)) m_horizon.push_back({face.corner[k], face.corner[kNext[k]], g});
    }
  }
}

// New faces from the apex to the edges of the horizon. Where that is one ring the surface stays a sphere: it has two
// faces less than twice its corners, every corner lies in one round of faces, and every turn above ends.
bool Hull3::Cap(int apex) {
  m_fresh.clear();
  for (const Edge& edge : m_horizon) {
    const int f = MakeFace(edge.from, edge.to, apex);
    Link(f, edge.from, edge.beyond);
    Link(edge.beyond, edge.to, f);
    m_fresh.push_back(f);
  }
  for (std::size_t i = 0; i < m_horizon.size(); ++i) m_faceOf[m_horizon[i].from] = m_fresh[i];
  for (std::size_t i = 0; i < m_horizon.size(); ++i) {
    const int next = m_faceOf[m_horizon[i].to];
    Link(m_fresh[i], m_horizon[i].to, next);
    Link(next, apex, m_fresh[i]);
  }
  return IsOneRing(apex);
}

bool Hull3::IsOneRing(int apex) const {
  if (m_horizon.empty()) return false;
  const int start = m_horizon.front().from;
  int v = start;
  for (std::size_t k = 1; k <= m_horizon.size(); ++k) {
    const Face& face = m_faces[m_faceOf[v]];
    if (face.corner[0] != v || face.corner[2] != apex) return false;
    v = face.corner[1];
    if (v == start) return k == m_horizon.size();
  }
  return false;
}

// The new faces by the angle, about the line from inside to the apex, at which they begin; it is rounded.
class Hull3::Fan {
 public:
  Fan(const Hull3& hull, int apex)
      : m_hull(hull),
        m_frame(AxisFrame::Along(LoadVec3(hull.m_inside), Unit(LoadVec3(hull.At(apex)) - LoadVec3(hull.m_inside)))) {
    m_faces.reserve(hull.m_fresh.size());
    for (const int f : hull.m_fresh) m_faces.emplace_back(AngleOf(hull.m_faces[f].corner[0]), f);
    std::sort(m_faces.begin(), m_faces.end());
  }

  // The face in the direction of a point from inside, or one near it.
  int FaceTowards(int point) const {
    const auto next = std::upper_bound(m_faces.begin(), m_faces.end(), AngleOf(point),
                                       [](double angle, const auto& face) { return angle < face.first; });
    return (next == m_faces.begin() ? m_faces.back() : next[-1]).second;
  }

 private:
  double AngleOf(int point) const {
    const Vec3 q = m_frame.Local(LoadVec3(m_hull.At(point)));
    return DiamondAngle({q.x, q.y});
  }

  const Hull3& m_hull;
  AxisFrame m_frame;
  std::vector<std::pair<double, int>> m_faces;
};

// Points that only faces of the past saw are seen by a new one, or lie inside. A few new faces are tested one by one;
// of many, as round the ends of a helix, the one in the point's direction is found by its angle about the apex.
void Hull3::Redistribute(int apex) {
  constexpr std::size_t kFewFaces = 32;
  if (m_hasInside && m_fresh.size() > kFewFaces) {
    std::optional<Fan> fan;
    ClearVisible(apex, [&](int point) {
      if (!fan) fan.emplace(*this, apex);
      int f = fan->FaceTowards(point);
      if (WalkTowards(point, f)) {
        Offer(f, NormalOf(m_faces[f]), point);
      } else {
        PlaceOnAnyFace(point);
      }
    });
    return;
  }
  std::vector<Normal3> normals;
  normals.reserve(m_fresh.size());
  for (const int f : m_fresh) normals.push_back(NormalOf(m_faces[f]));
  ClearVisible(apex, [&](int point) {
    for (std::size_t i = 0; i < m_fresh.size() && !Offer(m_fresh[i], normals[i], point); ++i) {
    }
  });
}

// Frees the faces that see the apex; takes all other points of theirs to place(point).
template<class Place>
void Hull3::ClearVisible(int apex, Place place) {
  for (const int f : m_visible) m_faces[f].isAlive = false;
  for (const int f : m_visible) {
    for (int point = m_outside[f].first; point >= 0;) {
      const int next = m_next[point];
      if (point != apex) place(point);
      point = next;
    }
    m_outside[f] = {};
    m_free.push_back(f);
  }
}

}  // namespace nu::engine::hulls
