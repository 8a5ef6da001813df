#include "nu/geometry/plane.h"

#include "nu/foundation/internal/outputs.h"
#include "nu/geometry/internal/moves.h"
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

NU_DEFINE_MOVES(CNuPlane, m_normal)
