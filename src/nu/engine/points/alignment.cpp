#include "nu/engine/points/alignment.h"

#include <cmath>

#include "nu/engine/base/floating_point.h"
#include "nu/engine/points/coincidence.h"
#include "nu/engine/points/extents.h"
#include "nu/engine/points/form_statistics.h"
#include "nu/engine/points/principal_direction.h"

// A few of the points answer for nearly all sets. A strip that holds a triangle is at least as wide as its least
// height, the area's double over the longest edge; a slab that holds a tetrahedron at least as wide as its volume,
// times six, over the square of the longest edge. Half of that is what a line or a plane misses some corner by.

namespace nu::engine::points {
namespace {

// Correctly rounded coordinates put a point at most so many of their roundings off its line or plane, with room for
// those of the least-squares feature itself.
constexpr double kRoundings = 8.0 * kEpsilon;

double LargestMagnitude(Vec3 v) {
  return std::max({std::fabs(v.x), std::fabs(v.y), std::fabs(v.z)});
}

double RoundingOf(PointView points) {
  const Box box = ExtentsOf(points).box;
  return kRoundings * std::max(LargestMagnitude(LoadVec3(box.low)), LargestMagnitude(LoadVec3(box.high)));
}

// Corners from all over the points: the first and others at fractions that no scan of several turns repeats at once.
struct Corners {
  explicit Corners(PointView points)
      : p(LoadVec3(points[0])),
        q(LoadVec3(points[3 * points.Size() / 8]) - p),
        r(LoadVec3(points[5 * points.Size() / 7]) - p),
        s(LoadVec3(points[points.Size() - 1 - points.Size() / 9]) - p) {}

  Vec3 p;
  Vec3 q, r, s;  // from p
};

double LongestSquared(Vec3 q, Vec3 r) {
  const Vec3 across = q - r;
  return std::max({Dot(q, q), Dot(r, r), Dot(across, across)});
}

// With room for the rounding errors of what is compared.
double LeastExtent(double tol, const Corners& c, double longest) {
  return 2.0 * std::max(tol, 0.0) + 4.0 * kRoundings * (LargestMagnitude(c.p) + longest);
}

bool SpanPlane(const Corners& c, double tol) {
  const Vec3 normal = Cross(c.q, c.r);
  const double square = LongestSquared(c.q, c.r);
  const double least = LeastExtent(tol, c, std::sqrt(square));
  return Dot(normal, normal) > least * least * square;
}

bool SpanSpace(const Corners& c, double tol) {
  const double square = std::max({LongestSquared(c.q, c.r), LongestSquared(c.r, c.s), LongestSquared(c.q, c.s)});
  return std::fabs(Dot(Cross(c.q, c.r), c.s)) > LeastExtent(tol, c, std::sqrt(square)) * square;
}

// `extent` and `deviations` are those of one least-squares feature.
template<class DeviationsFrom>
bool Reaches(PointView points, double tol, Extent extent, DeviationsFrom deviationsFrom) {
  PointBlocks blocks(points, LoadVec3(points[points.Size() / 2]));
  const PrincipalDirection found = FindPrincipalDirection(blocks, extent);
  if (!found.finite) return false;
  const double off = deviationsFrom(blocks, found);
  return off <= tol || off <= RoundingOf(points);
}

}  // namespace

bool LieOnOneLine(PointView points, double tol) {
  if (points.Size() < 3) return true;
  if (SpanPlane(Corners(points), tol)) return false;
  return Reaches(points, tol, Extent::largest, [](PointBlocks& blocks, const PrincipalDirection& line) {
    return SpaceLineDeviations(blocks, line.mean, line.direction).largest;
  });
}

bool LieInOnePlane(PointView points, double tol) {
  if (points.Size() < 4) return true;
  if (SpanSpace(Corners(points), tol)) return false;
  return Reaches(points, tol, Extent::smallest, [](PointBlocks& blocks, const PrincipalDirection& plane) {
    const Deviations d = PlaneDeviations(blocks, plane.mean, plane.direction);
    return d.largest - d.smallest;
  });
}

bool HaveOneHeight(PointView points) {
  std::size_t i = 0;
  while (i < points.Size() && points[i][2] == points[0][2]) ++i;
  return i == points.Size();
}

bool FindTriangle(PointView points, double tol, int (&corner)[3]) {
  if (points.Size() < 3) return false;
  const Vec3 start = LoadVec3(points[0]);
  std::size_t i = 1;
  while (i < points.Size() && Coincide(points[i], points[0], tol)) ++i;
  if (i == points.Size()) return false;
  const Vec3 d = Unit(LoadVec3(points[i]) - start);
  std::size_t j = i + 1;
  while (j < points.Size() && IsNull(Cross(d, LoadVec3(points[j]) - start), tol)) ++j;
  if (j == points.Size()) return false;
  corner[0] = 0;
  corner[1] = static_cast<int>(i);
  corner[2] = static_cast<int>(j);
  return true;
}

}  // namespace nu::engine::points
