#include "nu/surfaces/torus.h"

#include "nu/foundation/internal/failures.h"
#include "nu/foundation/internal/outputs.h"
#include "nu/surfaces/internal/axis_members.h"

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuTorSurf";

}  // namespace

CNuTorSurf::CNuTorSurf(double majorRadius, double minorRadius)
    : CNuSurface(NuTypeTorSurf),
      m_majorRadius(RequireLength(majorRadius, kName, "radius")),
      m_minorRadius(RequireLength(minorRadius, kName, "radius")) {
  if (!(minorRadius < majorRadius)) throw CNuConstructionException(NuConstructionLengthOrder, kName, "radius", 0, 0);
}

CNuTorSurf::CNuTorSurf(double majorRadius, double minorRadius, const CNuPoint& centre)
    : CNuTorSurf(majorRadius, minorRadius) {
  SetPosition(centre, CNuVector(1.0, 0.0, 0.0), CNuVector(0.0, 0.0, 1.0));
}

CNuTorSurf::CNuTorSurf(double majorRadius, double minorRadius, const CNuPoint& centre, const CNuVector& axisDirection)
    : CNuTorSurf(majorRadius, minorRadius) {
  if (axisDirection.GetSize() != 3) throw CNuConstructionException(NuConstructionDirection, kName, nullptr, 0, 0);
  Place(majorRadius, minorRadius, centre, RequireDirection(axisDirection, NuConstructionZeroDirection, kName));
}

void CNuTorSurf::Place(double majorRadius, double minorRadius, const CNuPoint& centre, const CNuVector& axisDirection) {
  const FrameAxes axes = AxesAlong(axisDirection);
  SetPosition(centre, axes.x, axes.z);
  m_majorRadius = majorRadius;
  m_minorRadius = minorRadius;
}

NU_DEFINE_AXIS_OF_SURFACE(CNuTorSurf, GetCentre)

void CNuTorSurf::GetData(double* majorRadius, double* minorRadius, CNuPoint* centre, CNuVector* axisDirection) const {
  const Frame frame = GetFrame();
  Output(majorRadius, m_majorRadius);
  Output(minorRadius, m_minorRadius);
  Output(centre, frame.origin);
  Output(axisDirection, frame.zaxis);
}

// Required: the torus offers these but computes none of them. Hosts that walk over pairs of surfaces rely on the
// failure to go another way.
int CNuTorSurf::IntersectWith(const CNuPlane&, CNuObjArray*) const {
  FailOperation(NuOperationUnsupported, "calculation", "CNuTorSurf::IntersectWith(CNuPlane)");
}

int CNuTorSurf::IntersectWith(const CNuCylSurf&, CNuObjArray*) const {
  FailOperation(NuOperationUnsupported, "calculation", "CNuTorSurf::IntersectWith(CNuCylSurf)");
}

int CNuTorSurf::IntersectWith(const CNuConSurf&, CNuObjArray*) const {
  FailOperation(NuOperationUnsupported, "calculation", "CNuTorSurf::IntersectWith(CNuConSurf)");
}

int CNuTorSurf::IntersectWith(const CNuSphSurf&, CNuObjArray*) const {
  FailOperation(NuOperationUnsupported, "calculation", "CNuTorSurf::IntersectWith(CNuSphSurf)");
}
