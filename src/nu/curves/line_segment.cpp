#include "nu/curves/line_segment.h"

#include <memory>

#include "nu/curves/circular_arc.h"
#include "nu/curves/internal/curve_pieces.h"
#include "nu/curves/internal/placement.h"
#include "nu/curves/internal/sampling.h"
#include "nu/curves/polyline.h"
#include "nu/foundation/internal/failures.h"
#include "nu/foundation/internal/outputs.h"
#include "nu/geometry/internal/feature_data.h"

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuLineSegment";
constexpr const char* kOffset = "CNuLineSegment::Offset()";

const CNuPoint& RequireApart(const CNuPoint& start, const CNuPoint& end) {
  if (start.IsEqual(end, NuGetLengthTol()) || !IsFinite(Components(end - start))) {
    throw CNuConstructionException(NuConstructionCoincident, kName, nullptr, 0, 0);
  }
  return start;
}

Vec3 DirectionOf(const Segment3& s) {
  return Unit(s.end - s.start);
}

// How long the common stretch of parallel segments is; below 0 the gap between them.
double Overlap(const Segment3& first, const Segment3& second) {
  const Vec3 d = DirectionOf(first);
  const double a = Dot(second.start - first.start, d);
  const double b = Dot(second.end - first.start, d);
  return std::min(std::max(a, b), SafeNorm(first.end - first.start)) - std::max(std::min(a, b), 0.0);
}

CNuPoint MiddleOf(const NearPair& pair) {
  return ToPoint(pair.first + 0.5 * (pair.second - pair.first));
}

}  // namespace

CNuLineSegment::CNuLineSegment() : CNuBoundedCurve(NuTypeLineSegment), m_end(1.0, 0.0, 0.0) {
  SetPosition(m_anchor, CNuVector(1.0, 0.0, 0.0), CNuVector(0.0, 0.0, 1.0));
}

CNuLineSegment::CNuLineSegment(const CNuPoint& start, const CNuPoint& end)
    : CNuBoundedCurve(NuTypeLineSegment), m_start(RequireApart(start, end)), m_end(end), m_anchor(start) {
  SetPosition(m_anchor, CNuVector(1.0, 0.0, 0.0), CNuVector(0.0, 0.0, 1.0));
}

Segment3 CNuLineSegment::Data() const {
  const Placement place(GetFrame(), Components(m_anchor));
  return {place.At(Components(m_start)), place.At(Components(m_end))};
}

CNuLine CNuLineSegment::GetLine() const {
  const Segment3 s = Data();
  return CNuLine(ToPoint(s.start), ToVector(DirectionOf(s)));
}

CNuPoint CNuLineSegment::MidPoint() const {
  return ToPoint(Data().At(0.5));
}

void CNuLineSegment::Reverse() {
  CNuPoint::Swap(m_start, m_end);
}

CNuPolyline CNuLineSegment::ToPolyline(int n) const {
  RequireSamples(n, "CNuLineSegment::ToPolyline()");
  const Segment3 s = Data();
  CNuPointArray points(n);
  for (int i = 0; i < n; ++i) points.Add(ToPoint(s.At(static_cast<double>(i) / (n - 1))));
  return CNuPolyline(points);
}

int CNuLineSegment::IntersectWith(const CNuLineSegment& segment, CNuPoint* p) const {
  const Segment3 first = Data();
  const Segment3 second = segment.Data();
  RequireFinite("CNuLineSegment::IntersectWith(CNuLineSegment)", first.start, first.end, second.start, second.end);
  const double tol = TouchTol(0.0, first.start, first.end, second.start, second.end);
  const NearPair pair = ClosestBetween(first, second);
  if (!(pair.distance <= tol)) return 0;
  const double sine = SafeNorm(Cross(DirectionOf(first), DirectionOf(second)));
  if (IsParallel(sine, ParallelTol()) && Overlap(first, second) > tol) return 0;
  Output(p, MiddleOf(pair));
  return 1;
}

// Crossings of the line with the circle that are on both, or else an end that touches.
int CNuLineSegment::IntersectWith(const CNuCircularArc& arc, CNuPoint* p1, CNuPoint* p2) const {
  constexpr const char* where = "CNuLineSegment::IntersectWith(CNuCircularArc)";
  const Segment3 s = Data();
  const Arc3 a = DataOf(arc);
  RequireFinite(where, s.start, s.end, a.centre);
  const double tol = TouchTol(a.radius, s.start, s.end, a.centre);
  const auto met = Intersect(Line3{s.start, DirectionOf(s)}, a.Circle(), tol);
  Points2 common;
  for (int i = 0; i < met.count; ++i) {
    const Vec3 p = met.at[i];
    if (SafeNorm(p - ClosestOn(s, p)) <= tol && SafeNorm(p - ClosestOn(a, p)) <= tol) common.Add(p);
  }
  if (common.count > 0) return Store(common, p1, p2, where);
  const NearPair pair = WithMemory(where, [&] { return ClosestBetween(s, a); });
  if (!(pair.distance <= tol)) return 0;
  Output(p1, MiddleOf(pair));
  return 1;
}

int CNuLineSegment::IntersectWith(const CNuLine& l, CNuPoint* p) const {
  const Segment3 s = Data();
  const Line3 line = DataOf(l);
  RequireFinite("CNuLineSegment::IntersectWith(CNuLine)", s.start, s.end, line);
  const auto approach = ClosestApproach({s.start, DirectionOf(s)}, line, ParallelTol());
  if (approach.parallel) return 0;
  const double t = std::clamp(approach.alongFirst / SafeNorm(s.end - s.start), 0.0, 1.0);
  const Vec3 here = s.At(t);
  const Vec3 there = line.At(Dot(here - line.point, line.direction));
  if (!(SafeNorm(here - there) <= TouchTol(0.0, s.start, s.end, line.point))) return 0;
  Output(p, ToPoint(here + 0.5 * (there - here)));
  return 1;
}

CNuPoint CNuLineSegment::GetStartPoint() {
  return ToPoint(Data().start);
}

CNuPoint CNuLineSegment::GetEndPoint() {
  return ToPoint(Data().end);
}

void CNuLineSegment::GetStartData(CNuPoint* point, CNuVector* tangent, CNuVector* normal) const {
  GetEndData(point, tangent, normal);
  Output(point, ToPoint(Data().start));
}

void CNuLineSegment::GetEndData(CNuPoint* point, CNuVector* tangent, CNuVector* normal) const {
  const Segment3 s = Data();
  Output(point, ToPoint(s.end));
  Output(tangent, ToVector(DirectionOf(s)));
  Output(normal, ToVector(UprightNormal(DirectionOf(s))));
}

void CNuLineSegment::BoundingBox(CNuPoint* min, CNuPoint* max) const {
  StoreBounds(*this, min, max);
}

void CNuLineSegment::BoundingCircle(double* radius, CNuPoint* centre) const {
  const Segment3 s = Data();
  StoreBall({s.At(0.5), 0.5 * SafeNorm(s.end - s.start)}, radius, centre);
}

double CNuLineSegment::DistanceTo(const CNuBoundedCurve* other, CNuPoint* p1, CNuPoint* p2) const {
  return DistanceBetween(*this, other, p1, p2);
}

double CNuLineSegment::DistanceTo(const CNuPoint& p) const {
  const Vec3 target = Components(p);
  return SafeNorm(target - ClosestOn(Data(), target));
}

double CNuLineSegment::Length() const {
  return SafeNorm(Components(m_end - m_start));
}

CNuBoundedCurve* CNuLineSegment::Offset(double distance, const CNuVector& normal, int) {
  const Vec3 across = Cross(DirectionOf(Data()), RequireOffset(distance, normal, kOffset));
  if (IsParallel(SafeNorm(across), ParallelTol())) FailOperation(NuOperationOffsetDirection, "Offset", kOffset);
  const Vec3 shift = distance * Unit(across);
  auto moved = WithMemory(kOffset, [&] { return std::make_unique<CNuLineSegment>(*this); });
  moved->CNuNonLinearGeometry::Translate(shift.x, shift.y, shift.z);
  return moved.release();
}

CNuBoundedCurve* CNuLineSegment::Offset(double distance) {
  return Offset(distance, ToVector(UprightNormal(DirectionOf(Data()))), 0);
}
