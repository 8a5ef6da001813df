#include "nu/surfaces/cone.h"

#include "nu/foundation/internal/outputs.h"
#include "nu/surfaces/internal/axis_members.h"

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuConSurf";

// Also rejects NaN.
double RequireSemiAngle(double semiAngle) {
  if (!(semiAngle > 0.0 && semiAngle < 90.0))
    throw CNuConstructionException(NuConstructionConeAngle, kName, nullptr, 0, 0);
  return semiAngle;
}

}  // namespace

CNuConSurf::CNuConSurf(double semiAngle) : CNuSurface(NuTypeConSurf), m_semiAngle(RequireSemiAngle(semiAngle)) {}

CNuConSurf::CNuConSurf(double semiAngle, const CNuPoint& apex, const CNuVector& axisDirection) : CNuConSurf(semiAngle) {
  if (axisDirection.GetSize() != 3) throw CNuConstructionException(NuConstructionDirection, kName, nullptr, 0, 0);
  Place(semiAngle, apex, RequireDirection(axisDirection, NuConstructionZeroDirection, kName));
}

void CNuConSurf::Place(double semiAngle, const CNuPoint& apex, const CNuVector& axisDirection) {
  const FrameAxes axes = AxesAlong(axisDirection);
  SetPosition(apex, axes.x, axes.z);
  m_semiAngle = semiAngle;
}

NU_DEFINE_AXIS_OF_SURFACE(CNuConSurf, GetApex)

void CNuConSurf::GetData(double* semiAngle, CNuPoint* apex, CNuVector* axisDirection) const {
  const Frame frame = GetFrame();
  Output(semiAngle, m_semiAngle);
  Output(apex, frame.origin);
  Output(axisDirection, frame.zaxis);
}
