// What a polyline encloses, the plane it lies in, and its offset.
//
// With w_i = p_i - p_0 the vector area is the sum of w_i x w_(i+1) over two: its length is the area of a plane polygon,
// its direction the normal from whose tip the polygon runs counter-clockwise. The centroid is that of the triangles
// p_0 p_i p_(i+1), each weighed by its signed area along that direction.

#include <cfloat>
#include <memory>

#include "nu/curves/internal/curve_pieces.h"
#include "nu/curves/internal/offset_polygon2.h"
#include "nu/curves/internal/placement.h"
#include "nu/curves/polyline.h"
#include "nu/foundation/internal/failures.h"
#include "nu/geometry/internal/incidence.h"
#include "nu/geometry/internal/point_set.h"
#include "nu/geometry/internal/principal_direction.h"

using nu::internal::BlockSums;
using nu::internal::CoincidenceTol;
using nu::internal::Components;
using nu::internal::FailOperation;
using nu::internal::LargestComponent;
using nu::internal::OffsetPolygon;
using nu::internal::PieceChain;
using nu::internal::PointBlocks;
using nu::internal::SafeNorm;
using nu::internal::Segment3;
using nu::internal::ToPoint;
using nu::internal::ToVector;
using nu::internal::Vec2;
using nu::internal::Vec3;

namespace {

constexpr const char* kOffset = "CNuPolyline::Offset()";

Vec3 At(const CNuPointArray& points, int i) {
  return Components(points.GetData()[i]);
}

double LargestCoordinate(const CNuPointArray& points) {
  double largest = 0.0;
  for (int i = 0; i < points.GetSize(); ++i) largest = std::max(largest, LargestComponent(At(points, i)));
  return largest;
}

Vec3 VectorArea(const CNuPointArray& points) {
  BlockSums<3> sums;
  const Vec3 first = At(points, 0);
  for (int i = 1; i + 1 < points.GetSize(); ++i) {
    const Vec3 twice = Cross(At(points, i) - first, At(points, i + 1) - first);
    sums.Add({twice.x, twice.y, twice.z});
  }
  return 0.5 * Vec3{sums[0], sums[1], sums[2]};
}

struct Carrier {
  Vec3 point, normal;
};

double LargestDistance(const CNuPointArray& points, const Carrier& plane) {
  double largest = 0.0;
  for (int i = 0; i < points.GetSize(); ++i) {
    const double height = std::fabs(Dot(At(points, i) - plane.point, plane.normal));
    if (!(height <= largest)) largest = height;  // a NaN stays
  }
  return largest;
}

bool IsOnLine(const CNuPointArray& points, Vec3 mean, Vec3 direction, double tol) {
  for (int i = 0; i < points.GetSize(); ++i) {
    if (!(SafeNorm(Rejection(At(points, i) - mean, direction)) <= tol)) return false;
  }
  return true;
}

// The least-squares plane, without one the plane of a segment.
Carrier CarrierOf(const CNuPointArray& points) {
  PointBlocks blocks(nu::internal::ViewOf(points), At(points, 0));
  const auto along = FindPrincipalDirection(blocks, nu::internal::Extent::largest);
  const Vec3 mean = blocks.InCallersFrame(along.mean);
  if (!along.finite || !IsFinite(along.direction)) return {At(points, 0), {0.0, 0.0, 1.0}};
  const double tol = CoincidenceTol(NuGetLengthTol(), LargestCoordinate(points));
  if (IsOnLine(points, mean, along.direction, tol)) return {mean, nu::internal::UprightNormal(along.direction)};
  const Vec3 normal = FindPrincipalDirection(blocks, nu::internal::Extent::smallest).direction;
  const double side = Dot(VectorArea(points), normal);
  const bool down = side != 0.0 ? side < 0.0 : Dot(normal, {0.0, 0.0, 1.0}) < 0.0;
  return {mean, down ? -1.0 * normal : normal};
}

CNuPoint MiddleOfEdges(const CNuPointArray& points, double length) {
  const Vec3 first = At(points, 0);
  if (!(length > 0.0)) return points[0];
  BlockSums<3> sums;
  for (int i = 1; i < points.GetSize(); ++i) {
    const Vec3 before = At(points, i - 1) - first;
    const Vec3 here = At(points, i) - first;
    const Vec3 moment = (0.5 * SafeNorm(here - before) / length) * (before + here);
    sums.Add({moment.x, moment.y, moment.z});
  }
  return ToPoint(first + Vec3{sums[0], sums[1], sums[2]});
}

// A plane with two axes, for offsets.
struct PlaneAxes {
  explicit PlaneAxes(const Carrier& plane) : origin(plane.point), normal(plane.normal) {
    CNuVector direction = ToVector(normal);
    CNuVector first, second;
    direction.OrthonormalXY(&first, &second);
    x = Components(first);
    y = Components(second);
  }
  Vec2 Local(Vec3 p) const { return {Dot(p - origin, x), Dot(p - origin, y)}; }
  CNuPoint Global(Vec2 p) const { return ToPoint(origin + p.x * x + p.y * y); }

  Vec3 origin, normal, x, y;
};

// Points that are as close as the tolerance make no edge to move.
std::vector<Vec2> Corners(const CNuPointArray& points, const PlaneAxes& plane, bool closed, double tol) {
  std::vector<Vec2> corners;
  const auto isNew = [&](Vec2 p, Vec2 q) { return !(std::hypot(p.x - q.x, p.y - q.y) <= tol); };
  for (int i = 0; i < points.GetSize(); ++i) {
    const Vec2 p = plane.Local(At(points, i));
    if (corners.empty() || isNew(corners.back(), p)) corners.push_back(p);
  }
  while (closed && corners.size() > 1 && !isNew(corners.back(), corners.front())) corners.pop_back();
  return corners;
}

CNuPointArray GlobalPoints(const OffsetPolygon& moved, const PlaneAxes& plane, bool closed) {
  CNuPointArray points(static_cast<int>(moved.vertices.size()) + 1);
  for (const Vec2 p : moved.vertices) points.Add(plane.Global(p));
  if (closed) points.Add(points[0]);
  return points;
}

}  // namespace

ENuBoolean CNuPolyline::IsPlanar(double tol) const {
  const CNuPointArray points = GetPoints();
  return LargestDistance(points, CarrierOf(points)) <= tol ? NuTrue : NuFalse;
}

ENuBoolean CNuPolyline::IsSelfIntersecting() const {
  const CNuPointArray points = GetPoints();
  const double tol = CoincidenceTol(NuGetLengthTol(), LargestCoordinate(points));
  PieceChain chain;
  chain.Reserve(static_cast<std::size_t>(GetSize()));
  Vec3 last = At(points, 0);
  for (int i = 1; i < GetSize(); ++i) {
    const Vec3 next = At(points, i);
    if (SafeNorm(next - last) <= tol) continue;
    chain.Add(Segment3{last, next});
    last = next;
  }
  const bool closed = SafeNorm(last - At(points, 0)) <= tol;
  return TouchesItself(chain, closed, tol) ? NuTrue : NuFalse;
}

double CNuPolyline::Area() const {
  return SafeNorm(VectorArea(m_points));
}

CNuPoint CNuPolyline::Centroid() const {
  constexpr double kRoundings = 8.0;  // of the products of the vector area
  const CNuPointArray points = GetPoints();
  const Vec3 area = VectorArea(points);
  const double size = SafeNorm(area);
  const double length = Length();
  if (!(size > kRoundings * DBL_EPSILON * length * length)) return MiddleOfEdges(points, length);
  const Vec3 normal = Unit(area);
  const Vec3 first = At(points, 0);
  BlockSums<3> sums;
  for (int i = 1; i + 1 < points.GetSize(); ++i) {
    const Vec3 p = At(points, i) - first;
    const Vec3 q = At(points, i + 1) - first;
    const Vec3 moment = (Dot(Cross(p, q), normal) / size) * (p + q);
    sums.Add({moment.x, moment.y, moment.z});
  }
  constexpr double kSixth = 1.0 / 6.0;  // twice the area, and the third of the corners' sum
  return ToPoint(first + kSixth * Vec3{sums[0], sums[1], sums[2]});
}

void CNuPolyline::GetStartData(CNuPoint* point, CNuVector* tangent, CNuVector* normal) const {
  GetData(0, 1, point, tangent, normal);
}

void CNuPolyline::GetEndData(CNuPoint* point, CNuVector* tangent, CNuVector* normal) const {
  GetData(GetSize() - 1, -1, point, tangent, normal);
}

void CNuPolyline::GetData(int at, int step, CNuPoint* point, CNuVector* tangent, CNuVector* normal) const {
  const CNuPointArray points = GetPoints();
  const Vec3 end = At(points, at);
  Vec3 way;
  for (int i = at + step; i >= 0 && i < GetSize() && SafeNorm(way) == 0.0; i += step) {
    way = static_cast<double>(step) * (At(points, i) - end);
  }
  *normal = ToVector(CarrierOf(points).normal);
  *tangent = ToVector(Unit(way));
  *point = points[at];
}

CNuBoundedCurve* CNuPolyline::Offset(double distance, const CNuVector& normal, int shape) {
  const CNuPointArray points = GetPoints();
  const Carrier plane{At(points, 0), nu::internal::RequireOffset(distance, normal, kOffset)};
  const double size = std::max(LargestCoordinate(points), std::fabs(distance));
  const double tol = CoincidenceTol(NuGetLengthTol(), size);
  if (!(LargestDistance(points, plane) <= tol)) FailOperation(45, "Offset of non-planar curve", kOffset);
  if (shape != 0) FailOperation(45, "Offset with different shape", kOffset);
  const bool closed = IsClosed(tol) == NuTrue;
  const PlaneAxes axes(plane);
  const std::vector<Vec2> corners = Corners(points, axes, closed, tol);
  if (corners.size() < (closed ? 3u : 2u)) FailOperation(28, "Offset", kOffset);
  const OffsetPolygon moved = OffsetEdges(corners, closed, distance);
  if (moved.vanished) FailOperation(28, "Offset", kOffset);
  auto result = std::make_unique<CNuPolyline>(GlobalPoints(moved, axes, closed));
  CNuPoint p, q;
  constexpr double kRoundings = 64.0;  // of the corners' velocities, the way to the plane and back
  const double slack = std::max(tol, kRoundings * DBL_EPSILON * size);
  if (result->DistanceTo(this, &p, &q) < std::fabs(distance) - slack) FailOperation(30, "Offset", kOffset);
  result->RemoveShortEdges();
  return result.release();
}

CNuBoundedCurve* CNuPolyline::Offset(double distance) {
  return Offset(distance, ToVector(CarrierOf(GetPoints()).normal), 0);
}
