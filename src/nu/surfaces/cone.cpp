#include "nu/surfaces/cone.h"

#include "nu/foundation/exceptions.h"
#include "nu/foundation/internal/outputs.h"
#include "nu/geometry/internal/conversions.h"
#include "nu/geometry/line.h"

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
  CNuVector zaxis = axisDirection;
  CNuVector xaxis;
  zaxis.OrthonormalX(&xaxis);
  SetPosition(apex, xaxis, zaxis);
  m_semiAngle = semiAngle;
}

CNuPoint CNuConSurf::GetApex() const {
  return GetFrame().origin;
}

CNuVector CNuConSurf::GetAxisDirection() const {
  return GetFrame().zaxis;
}

CNuLine CNuConSurf::GetAxis() const {
  const Frame frame = GetFrame();
  return CNuLine(frame.origin, frame.zaxis);
}

void CNuConSurf::GetData(double* semiAngle, CNuPoint* apex, CNuVector* axisDirection) const {
  const Frame frame = GetFrame();
  Output(semiAngle, m_semiAngle);
  Output(apex, frame.origin);
  Output(axisDirection, frame.zaxis);
}
