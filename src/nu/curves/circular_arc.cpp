#include "nu/curves/circular_arc.h"

#include <cfloat>
#include <memory>

#include "nu/curves/circle.h"
#include "nu/curves/internal/curve_pieces.h"
#include "nu/curves/internal/placement.h"
#include "nu/curves/internal/sampling.h"
#include "nu/curves/polyline.h"
#include "nu/engine/base/elementary.h"
#include "nu/engine/points/extents.h"
#include "nu/engine/shapes/wide_vec3.h"
#include "nu/foundation/constants.h"
#include "nu/foundation/internal/failures.h"
#include "nu/foundation/internal/outputs.h"
#include "nu/geometry/internal/feature_data.h"

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuCircularArc";
constexpr const char* kOffset = "CNuCircularArc::Offset()";

[[noreturn]] void FailArc(ENuConstructionCause cause) {
  throw CNuConstructionException(cause, kName, nullptr, 0, 0);
}

// Directions that come from coordinates of this size at this distance are off by some roundings of that.
double AngularTol(double size, double distance) {
  constexpr double kRoundings = 8.0;
  return std::max(ParallelTol(), kRoundings * DBL_EPSILON * std::max(1.0, size / distance));
}

// The one of two opposite normals that stands for the plane.
bool PointsUp(Vec3 n) {
  const double tol = ParallelTol();
  if (std::fabs(n.z) > tol) return n.z > 0.0;
  return std::fabs(n.y) > tol ? n.y > 0.0 : n.x > 0.0;
}

Vec3 Upwards(Vec3 n) {
  return PointsUp(n) ? n : -1.0 * n;
}

// From the start over the chord to the end, which is known better than the angle between the radii of a flat arc. In a
// half turn both are on one line; a full turn has no chord.
Vec3 NormalOf(Vec3 toStart, Vec3 chord, double tol) {
  const Vec3 x = Unit(toStart);
  const Vec3 across = Cross(x, Unit(chord));
  const double sine = 2.0 * SafeNorm(across);  // of the sweep, near a half turn
  if (IsParallel(sine, tol)) return UprightNormal(x);
  // Near a half turn the product is small and off a right angle by its roundings.
  return Upwards(Unit(Rejection(Unit(across), x)));
}

double TurnBetween(Vec3 toStart, Vec3 toEnd, Vec3 axis) {
  const Vec3 x = Unit(toStart);
  const Vec3 e = Unit(toEnd);
  const double angle = Atan2(Dot(Cross(axis, x), e), Dot(x, e));
  return angle > 0.0 ? angle : angle + Nu_2PI;
}

// The circle through the common corner of two sides and their ends: its axis, and from the corner its centre,
// (|u|^2 v - |v|^2 u) x (u x v) / 2 |u x v|^2, turned to u, v. On a flat arc all digits of doubles cancel
// in these products.
struct CornerCircle {
  Vec3 axis, toCentre;
};
CornerCircle CircleThrough(Vec3 u, Vec3 v) {
  const double scale = ScaleFor(std::max(LargestComponent(u), LargestComponent(v)));
  const WideVec3 a = Wide(scale * u);
  const WideVec3 b = Wide(scale * v);
  const WideVec3 n = Cross(a, b);
  const DoubleDouble aa = Dot(a, a);
  const DoubleDouble bb = Dot(b, b);
  const WideVec3 sum = Cross({aa * b.x - bb * a.x, aa * b.y - bb * a.y, aa * b.z - bb * a.z}, n);
  // The scale comes last: of large coordinates its product with the other divisor may vanish.
  return {Unit(Rounded(n)), (1.0 / scale) * ((0.5 / Dot(n, n).high) * Rounded(sum))};
}

}  // namespace

CNuCircularArc::CNuCircularArc()
    : CNuCircularArc(CNuPoint(), CNuPoint(1.0, 0.0, 0.0), CNuPoint(1.0, 0.0, 0.0), CNuVector(0.0, 0.0, 1.0), 1.0,
                     Nu_2PI) {}

CNuCircularArc::CNuCircularArc(const CNuPoint& centre, const CNuPoint& start, const CNuPoint& end, ENuBoolean sense)
    : CNuBoundedCurve(NuTypeCircularArc), m_centre(centre), m_start(start), m_end(end) {
  const Vec3 c = Components(centre);
  const Vec3 toStart = Components(start) - c;
  const Vec3 toEnd = Components(end) - c;
  const double first = SafeNorm(toStart);
  const double second = SafeNorm(toEnd);
  const double tol = TouchTol(0.0, c, Components(start), Components(end));
  if (!(std::fabs(first - second) <= tol) || !(first > tol) || !(second > tol)) FailArc(NuConstructionArc);
  const bool full = IsNull(Components(end - start), tol);
  const Vec3 chord = full ? Vec3{} : Components(end - start);
  const Vec3 normal = NormalOf(toStart, chord, AngularTol(LargestComponent(c) + first, first));
  const Vec3 axis = sense != NuFalse ? normal : -1.0 * normal;
  m_axis = ToVector(axis);
  m_radius = 0.5 * first + 0.5 * second;
  m_sweep = full ? Nu_2PI : TurnBetween(toStart, toEnd, axis);
  SetPosition(m_centre, CNuVector(1.0, 0.0, 0.0), CNuVector(0.0, 0.0, 1.0));
}

CNuCircularArc::CNuCircularArc(const CNuPoint& p1, const CNuPoint& p2, const CNuPoint& p3)
    : CNuBoundedCurve(NuTypeCircularArc), m_start(p1), m_end(p3) {
  const double tol = NuGetLengthTol();
  if (p1.IsEqual(p2, tol) || p2.IsEqual(p3, tol) || p3.IsEqual(p1, tol)) FailArc(NuConstructionCoincident);
  const Vec3 u = Components(p2 - p1);
  const Vec3 v = Components(p3 - p1);
  const Vec3 across = Cross(Unit(u), Unit(v));
  const double size = std::max({LargestComponent(Components(p1)), LargestComponent(u), LargestComponent(v)});
  if (!(SafeNorm(across) > AngularTol(size, std::min(SafeNorm(u), SafeNorm(v))))) FailArc(NuConstructionArc);
  const auto [axis, toCentre] = CircleThrough(u, v);
  m_radius = SafeNorm(toCentre);
  if (!std::isfinite(m_radius)) FailArc(NuConstructionArc);
  m_axis = ToVector(axis);
  m_centre = p1 + ToPoint(toCentre);
  m_sweep = TurnBetween(-1.0 * toCentre, v - toCentre, axis);
  SetPosition(m_centre, CNuVector(1.0, 0.0, 0.0), CNuVector(0.0, 0.0, 1.0));
}

CNuCircularArc::CNuCircularArc(const CNuPoint& centre, const CNuPoint& start, const CNuPoint& end,
                               const CNuVector& axis, double radius, double sweep)
    : CNuBoundedCurve(NuTypeCircularArc),
      m_centre(centre),
      m_start(start),
      m_end(end),
      m_axis(axis),
      m_radius(radius),
      m_sweep(sweep) {
  SetPosition(m_centre, CNuVector(1.0, 0.0, 0.0), CNuVector(0.0, 0.0, 1.0));
}

Arc3 nu::internal::DataOf(const CNuCircularArc& arc) {
  const Placement place(arc.GetFrame(), Components(arc.m_centre));
  Arc3 data;
  data.centre = place.At(Components(arc.m_centre));
  data.start = place.At(Components(arc.m_start));
  data.end = place.At(Components(arc.m_end));
  const Vec3 axis = place.Turned(Components(arc.m_axis));
  data.x = Unit(Rejection(data.start - data.centre, axis));
  data.y = Cross(axis, data.x);
  data.radius = arc.m_radius;
  data.sweep = arc.m_sweep;
  return data;
}

CNuPoint CNuCircularArc::GetCentre() const {
  return ToPoint(DataOf(*this).centre);
}

CNuVector CNuCircularArc::GetNormal() const {
  return ToVector(Upwards(DataOf(*this).Axis()));
}

ENuBoolean CNuCircularArc::GetSense() const {
  return PointsUp(DataOf(*this).Axis()) ? NuTrue : NuFalse;
}

double CNuCircularArc::GetSweep() const {
  constexpr double kHalfTurn = 180.0;
  return m_sweep * kHalfTurn / Nu_PI;
}

CNuCircle CNuCircularArc::GetCircle() const {
  return CNuCircle(m_radius, GetCentre(), GetNormal());
}

void CNuCircularArc::Reverse() {
  CNuPoint::Swap(m_start, m_end);
  m_axis = -m_axis;
}

void CNuCircularArc::TurnInto(const CNuVector& normal) {
  const Vec3 centre = Components(m_centre);
  const Vec3 toStart = Components(m_start) - centre;
  const Vec3 upwards = Upwards(Unit(Rejection(Components(normal), Unit(toStart))));
  const Vec3 axis = GetSense() == NuTrue ? upwards : -1.0 * upwards;
  m_axis = ToVector(axis);
  if (m_sweep != Nu_2PI) m_sweep = TurnBetween(toStart, Components(m_end) - centre, axis);
}

CNuPointArray CNuCircularArc::ToPointArray(int n) const {
  RequireSamples(n, "CNuCircularArc::ToPolyline/PointArray()");
  const Arc3 arc = DataOf(*this);
  CNuPointArray points(n);
  points.Add(ToPoint(arc.start));
  for (int i = 1; i < n - 1; ++i) points.Add(ToPoint(arc.At(i * (arc.sweep / (n - 1)))));
  points.Add(ToPoint(arc.end));
  return points;
}

CNuPolyline CNuCircularArc::ToPolyline(int n) const {
  return CNuPolyline(ToPointArray(n));
}

CNuPoint CNuCircularArc::GetStartPoint() {
  return ToPoint(DataOf(*this).start);
}

CNuPoint CNuCircularArc::GetEndPoint() {
  return ToPoint(DataOf(*this).end);
}

void CNuCircularArc::GetStartData(CNuPoint* point, CNuVector* tangent, CNuVector* normal) const {
  const Arc3 arc = DataOf(*this);
  Output(point, ToPoint(arc.start));
  Output(tangent, ToVector(arc.y));
  Output(normal, ToVector(Upwards(arc.Axis())));
}

void CNuCircularArc::GetEndData(CNuPoint* point, CNuVector* tangent, CNuVector* normal) const {
  const Arc3 arc = DataOf(*this);
  Output(point, ToPoint(arc.end));
  Output(tangent, ToVector(Unit(Cross(arc.Axis(), arc.end - arc.centre))));
  Output(normal, ToVector(Upwards(arc.Axis())));
}

void CNuCircularArc::BoundingBox(CNuPoint* min, CNuPoint* max) const {
  StoreBounds(*this, min, max);
}

void CNuCircularArc::BoundingCircle(double* radius, CNuPoint* centre) const {
  StoreSmallestBall(*this, radius, centre);
}

double CNuCircularArc::DistanceTo(const CNuBoundedCurve* other, CNuPoint* p1, CNuPoint* p2) const {
  return DistanceBetween(*this, other, p1, p2);
}

double CNuCircularArc::DistanceTo(const CNuPoint& p) const {
  const Vec3 target = Components(p);
  return SafeNorm(target - ClosestOn(DataOf(*this), target));
}

double CNuCircularArc::Length() const {
  return m_radius * m_sweep;
}

// The arc about whose axis it runs counter-clockwise has its centre to the left.
CNuBoundedCurve* CNuCircularArc::Offset(double distance, const CNuVector& normal, int) {
  const Vec3 given = RequireOffset(distance, normal, kOffset);
  const Vec3 axis = DataOf(*this).Axis();
  if (!IsParallel(SafeNorm(Cross(given, axis)), AngularTol(1.0, 1.0))) {
    FailOperation(NuOperationUnsupported, "Offset of non-planar curve", kOffset);
  }
  const double radius = m_radius + (Dot(given, axis) > 0.0 ? distance : -distance);
  const Vec3 centre = Components(m_centre);
  if (!(radius > TouchTol(0.0, centre)) || !std::isfinite(radius))
    FailOperation(NuOperationOffsetRadius, "Offset", kOffset);
  auto moved = WithMemory(kOffset, [&] { return std::make_unique<CNuCircularArc>(*this); });
  moved->m_radius = radius;
  moved->m_start = ToPoint(centre + radius * Unit(Components(m_start - m_centre)));
  moved->m_end = ToPoint(centre + radius * Unit(Components(m_end - m_centre)));
  return moved.release();
}

CNuBoundedCurve* CNuCircularArc::Offset(double distance) {
  return Offset(distance, GetNormal(), 0);
}
