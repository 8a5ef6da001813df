#include "nu/curves/polyline.h"

#include <utility>

#include "nu/curves/internal/curve_pieces.h"
#include "nu/curves/internal/placement.h"
#include "nu/engine/points/point_blocks.h"
#include "nu/foundation/internal/failures.h"

using namespace nu::internal;

CNuPolyline::CNuPolyline(const CNuPointArray& points)
    : CNuBoundedCurve(NuTypePolyline), m_points(RequirePoints(points, "CNuPolyline")), m_anchor(points[0]) {
  SetPosition(m_anchor, CNuVector(1.0, 0.0, 0.0), CNuVector(0.0, 0.0, 1.0));
}

// The points come first: without memory for them the curve does not move either.
CNuPolyline& CNuPolyline::operator=(const CNuPolyline& other) {
  CNuPointArray points(other.m_points);
  CNuBoundedCurve::operator=(other);
  m_points = std::move(points);
  m_anchor = other.m_anchor;
  return *this;
}

Placement CNuPolyline::Place() const {
  return Placement(GetFrame(), Components(m_anchor));
}

CNuPoint CNuPolyline::GetPoint(int i) const {
  RequireIndex(i, GetSize(), "operation", "CNuPolyline::GetPoint()");
  return ToPoint(Place().At(Components(m_points[i])));
}

CNuPoint CNuPolyline::operator[](int i) const {
  RequireIndex(i, GetSize(), "element operator[]", "CNuPolyline");
  return GetPoint(i);
}

CNuPointArray CNuPolyline::GetPoints() const {
  return PlacedPoints(m_points, Place());
}

ENuBoolean CNuPolyline::IsClosed(double tol) const {
  return GetPoint(0).IsEqual(GetPoint(GetSize() - 1), tol);
}

void CNuPolyline::Reverse() {
  for (int i = 0, j = GetSize() - 1; i < j; ++i, --j) CNuPoint::Swap(m_points[i], m_points[j]);
}

void CNuPolyline::RemoveShortEdges() {
  const double least = NuGetMinEdgeLength();
  const auto isShort = [&](const CNuPoint& p, const CNuPoint& q) {
    return SafeNorm(Components(q) - Components(p)) < least;
  };
  CNuPointArray kept(GetSize());
  for (int i = 0; i < GetSize(); ++i) {
    const CNuPoint& p = m_points.GetData()[i];
    if (kept.GetSize() == 0 || !isShort(kept.Last(), p)) kept.Add(p);
  }
  const CNuPoint& end = m_points.GetData()[GetSize() - 1];
  int size = kept.GetSize();
  while (size > 1 && isShort(kept[size - 1], end)) --size;
  kept.Truncate(size);
  if (!isShort(kept.Last(), end)) kept.Add(end);
  m_points = std::move(kept);
}

CNuPoint CNuPolyline::GetStartPoint() {
  return GetPoint(0);
}

CNuPoint CNuPolyline::GetEndPoint() {
  return GetPoint(GetSize() - 1);
}

void CNuPolyline::BoundingBox(CNuPoint* min, CNuPoint* max) const {
  StoreBounds(*this, min, max);
}

void CNuPolyline::BoundingCircle(double* radius, CNuPoint* centre) const {
  StoreSmallestBall(*this, radius, centre);
}

double CNuPolyline::DistanceTo(const CNuBoundedCurve* other, CNuPoint* p1, CNuPoint* p2) const {
  return DistanceBetween(*this, other, p1, p2);
}

double CNuPolyline::DistanceTo(const CNuPoint& p) const {
  const Placement place = Place();
  const Vec3 target = Components(p);
  Vec3 last = place.At(Components(m_points[0]));
  NearPair best = PairOf(target, last);
  for (int i = 1; i < GetSize(); ++i) {
    const Vec3 next = place.At(Components(m_points.GetData()[i]));
    best.Include(PairOf(target, ClosestOn(Segment3{last, next}, target)));
    last = next;
  }
  return std::isnan(best.distance) ? DistanceAtAnySize(*this, target) : best.distance;
}

// A motion changes no length.
double CNuPolyline::Length() const {
  CompensatedSum sum;
  for (int i = 1; i < GetSize(); ++i) {
    const double length = SafeNorm(Components(m_points.GetData()[i]) - Components(m_points.GetData()[i - 1]));
    sum.Add(length);
  }
  return sum.Value();
}
