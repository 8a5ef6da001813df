#include "nu/surfaces/cylinder.h"

#include "nu/foundation/internal/outputs.h"
#include "nu/surfaces/internal/axis_members.h"

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
  const FrameAxes axes = AxesAlong(axisDirection);
  SetPosition(axisPoint, axes.x, axes.z);
  m_radius = radius;
}

NU_DEFINE_AXIS_OF_SURFACE(CNuCylSurf, GetAxisPoint)

void CNuCylSurf::GetData(double* radius, CNuPoint* axisPoint, CNuVector* axisDirection) const {
  const Frame frame = GetFrame();
  Output(radius, m_radius);
  Output(axisPoint, frame.origin);
  Output(axisDirection, frame.zaxis);
}
