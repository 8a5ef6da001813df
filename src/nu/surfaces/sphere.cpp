#include "nu/surfaces/sphere.h"

#include "nu/foundation/internal/outputs.h"
#include "nu/geometry/internal/conversions.h"

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuSphSurf";

}  // namespace

CNuSphSurf::CNuSphSurf(double radius) : CNuSurface(NuTypeSphSurf), m_radius(RequireLength(radius, kName, "radius")) {}

CNuSphSurf::CNuSphSurf(double radius, const CNuPoint& centre) : CNuSphSurf(radius) {
  SetPosition(centre, CNuVector(1.0, 0.0, 0.0), CNuVector(0.0, 0.0, 1.0));
}

CNuPoint CNuSphSurf::GetCentre() const {
  return GetFrame().origin;
}

void CNuSphSurf::GetCentre(double* x, double* y, double* z) const {
  GetCentre().GetData(x, y, z);
}

void CNuSphSurf::GetData(double* radius, CNuPoint* centre) const {
  Output(radius, m_radius);
  Output(centre, GetCentre());
}
