#include "nu/surfaces/cylinder.h"

#include "nu/foundation/internal/outputs.h"
#include "nu/geometry/internal/conversions.h"
#include "nu/geometry/line.h"

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuCylSurf";

}  // namespace

CNuCylSurf::CNuCylSurf(double radius) : CNuSurface(NuTypeCylSurf), m_radius(RequireLength(radius, kName, "radius")) {}

CNuCylSurf::CNuCylSurf(double radius, const CNuPoint& axisPoint, const CNuVector& axisDirection) : CNuCylSurf(radius) {
  if (axisDirection.GetSize() != 3) throw CNuConstructionException(NuConstructionDirection, kName, nullptr, 0, 0);
  Place(radius, axisPoint, RequireDirection(axisDirection, NuConstructionZeroDirection, kName));
}

void CNuCylSurf::Place(double radius, const CNuPoint& axisPoint, const CNuVector& axisDirection) {
  CNuVector zaxis = axisDirection;
  CNuVector xaxis;
  zaxis.OrthonormalX(&xaxis);
  SetPosition(axisPoint, xaxis, zaxis);
  m_radius = radius;
}

CNuPoint CNuCylSurf::GetAxisPoint() const {
  return GetFrame().origin;
}

CNuVector CNuCylSurf::GetAxisDirection() const {
  return GetFrame().zaxis;
}

CNuLine CNuCylSurf::GetAxis() const {
  const Frame frame = GetFrame();
  return CNuLine(frame.origin, frame.zaxis);
}

void CNuCylSurf::GetData(double* radius, CNuPoint* axisPoint, CNuVector* axisDirection) const {
  const Frame frame = GetFrame();
  Output(radius, m_radius);
  Output(axisPoint, frame.origin);
  Output(axisDirection, frame.zaxis);
}
