#include "nu/geometry/plane.h"

#include "nu/foundation/internal/outputs.h"
#include "nu/geometry/internal/conversions.h"
#include "nu/geometry/line.h"

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuPlane";

CNuVector NormalThrough(const CNuPoint& point, const CNuLine& line) {
  const Vec3 direction = Components(line.GetDirection());
  const Vec3 fromLine = Rejection(Components(point - line.GetPoint()), direction);
  if (point.DistanceTo(line) < NuGetLengthTol())
    throw CNuConstructionException(NuConstructionPlane, kName, nullptr, 0, 0);
  return RequireDirection(Cross(direction, fromLine), NuConstructionPlane, kName);
}

}  // namespace

CNuPlane::CNuPlane() : CNuGeometry(NuTypePlane), m_normal(0.0, 0.0, 1.0) {}

CNuPlane::CNuPlane(const CNuPoint& point, const CNuVector& normal)
    : CNuGeometry(NuTypePlane), m_point(point), m_normal(RequireDirection(normal, NuConstructionDirection, kName)) {}

CNuPlane::CNuPlane(const CNuPoint& point, const CNuLine& line)
    : CNuGeometry(NuTypePlane), m_point(point), m_normal(NormalThrough(point, line)) {}

void CNuPlane::GetData(CNuPoint* point, CNuVector* normal) const {
  Output(point, m_point);
  Output(normal, m_normal);
}

void CNuPlane::Translate(const CNuPoint& p) {
  m_point.Translate(p);
}

void CNuPlane::Translate(double dx, double dy, double dz) {
  m_point.Translate(dx, dy, dz);
}

// The normal goes first: it is never zero, so it is where a useless axis shows, before anything has changed.
void CNuPlane::Rotate(double angle, CNuGeometry::EAxisType axis) {
  m_normal = TurnedDirection(m_normal, angle, axis);
  m_point.Rotate(angle, axis);
}

void CNuPlane::Rotate(double angle, const CNuVector& axis) {
  m_normal = TurnedDirection(m_normal, angle, axis);
  m_point.Rotate(angle, axis);
}

void CNuPlane::Rotate(double angle, CNuGeometry::EAxisType axis, const CNuPoint& centre) {
  m_normal = TurnedDirection(m_normal, angle, axis);
  m_point.Rotate(angle, axis, centre);
}

void CNuPlane::Rotate(double angle, const CNuVector& axis, const CNuPoint& centre) {
  m_normal = TurnedDirection(m_normal, angle, axis);
  m_point.Rotate(angle, axis, centre);
}
