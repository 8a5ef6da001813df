#include "nu/curves/circle.h"

#include "nu/curves/internal/conic_members.h"
#include "nu/foundation/internal/outputs.h"

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuCircle";

}  // namespace

CNuCircle::CNuCircle(double radius) : CNuCurve(NuTypeCircle), m_radius(RequireLength(radius, kName, "radius")) {}

CNuCircle::CNuCircle(double radius, const CNuPoint& centre) : CNuCircle(radius) {
  SetPosition(centre, CNuVector(1.0, 0.0, 0.0), CNuVector(0.0, 0.0, 1.0));
}

CNuCircle::CNuCircle(double radius, const CNuPoint& centre, const CNuVector& normal) : CNuCircle(radius) {
  const FrameAxes axes = AxesAlong(nu::internal::RequireDirection(normal, NuConstructionDirection, kName));
  SetPosition(centre, axes.x, axes.z);
}

NU_DEFINE_PLACE_OF_CONIC(CNuCircle, GetCentre)

void CNuCircle::GetData(double* radius, CNuPoint* centre, CNuVector* normal) const {
  CNuVector xaxis;
  GetPosition(centre, &xaxis, normal);
  Output(radius, m_radius);
}

void CNuCircle::Place(double radius, const CNuPoint& centre, const CNuVector& xaxis, const CNuVector& normal) {
  SetPosition(centre, xaxis, normal);
  m_radius = radius;
}
