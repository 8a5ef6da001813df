#include "nu/curves/circle.h"

#include "nu/foundation/internal/outputs.h"
#include "nu/geometry/internal/conversions.h"
#include "nu/geometry/plane.h"

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuCircle";

}  // namespace

CNuCircle::CNuCircle(double radius) : CNuCurve(NuTypeCircle), m_radius(RequireLength(radius, kName, "radius")) {}

CNuCircle::CNuCircle(double radius, const CNuPoint& centre) : CNuCircle(radius) {
  SetPosition(centre, CNuVector(1.0, 0.0, 0.0), CNuVector(0.0, 0.0, 1.0));
}

CNuCircle::CNuCircle(double radius, const CNuPoint& centre, const CNuVector& normal) : CNuCircle(radius) {
  CNuVector zaxis = nu::internal::RequireDirection(normal, NuConstructionDirection, kName);
  CNuVector xaxis;
  zaxis.OrthonormalX(&xaxis);
  SetPosition(centre, xaxis, zaxis);
}

CNuPoint CNuCircle::GetCentre() const {
  return GetFrame().origin;
}

CNuVector CNuCircle::GetNormal() const {
  return GetFrame().zaxis;
}

CNuVector CNuCircle::GetXaxis() const {
  return GetFrame().xaxis;
}

CNuPlane CNuCircle::GetPlane() const {
  return CNuPlane(GetCentre(), GetNormal());
}

void CNuCircle::GetData(double* radius, CNuPoint* centre, CNuVector* normal) const {
  CNuVector xaxis;
  GetPosition(centre, &xaxis, normal);
  Output(radius, m_radius);
}

void CNuCircle::Place(double radius, const CNuPoint& centre, const CNuVector& xaxis, const CNuVector& normal) {
  SetPosition(centre, xaxis, normal);
  m_radius = radius;
}
