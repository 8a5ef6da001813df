#include "nu/curves/ellipse.h"

#include "nu/curves/internal/conic_class.h"
#include "nu/curves/internal/conic_members.h"
#include "nu/curves/internal/sampling.h"
#include "nu/curves/polyline.h"
#include "nu/foundation/constants.h"
#include "nu/foundation/internal/outputs.h"
#include "nu/foundation/numeric_helpers.h"

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuEllipse";
constexpr const char* kSampling = "CNuEllipse::ToPolyline/PointArray()";

double RequireSemiAxis(double length) {
  return RequireLength(length, kName, "semi-axis");
}

}  // namespace

CNuEllipse::CNuEllipse(double a, double b) : CNuCurve(NuTypeEllipse), m_a(RequireSemiAxis(a)), m_b(RequireSemiAxis(b)) {
  if (a < b) throw CNuConstructionException(NuConstructionLengthOrder, kName, "semi-axis", 0, 0);
}

CNuEllipse::CNuEllipse(double a, double b, const CNuPoint& centre) : CNuEllipse(a, b) {
  SetPosition(centre, CNuVector(1.0, 0.0, 0.0), CNuVector(0.0, 0.0, 1.0));
}

CNuEllipse::CNuEllipse(double a, double b, const CNuPoint& centre, const CNuVector& normal) : CNuEllipse(a, b) {
  const FrameAxes axes = RequireAxes(normal, kName);
  SetPosition(centre, axes.x, axes.z);
}

CNuEllipse::CNuEllipse(double a, double b, const CNuPoint& centre, const CNuVector& xAxis, const CNuVector& normal)
    : CNuEllipse(a, b) {
  const FrameAxes axes = RequireAxes(xAxis, normal, kName);
  SetPosition(centre, axes.x, axes.z);
}

NU_DEFINE_PLACE_OF_CONIC(CNuEllipse, GetCentre)
NU_DEFINE_RELATIONS_OF_CONIC(CNuEllipse)

void CNuEllipse::GetData(double* a, double* b, CNuPoint* centre, CNuVector* xAxis, CNuVector* normal) const {
  GetPosition(centre, xAxis, normal);
  Output(a, m_a);
  Output(b, m_b);
}

CNuPointArray CNuEllipse::ToPointArray(int n) const {
  RequireSamples(n, kSampling);
  CNuPointArray points = SampledPoints(nu::internal::DataOf(*this), n, 0.0, Nu_2PI, kSampling, [this](double u) {
    double c = 0.0;
    double s = 0.0;
    NuCosSin(u, &c, &s);
    return Vec2{m_a * c, m_b * s};
  });
  points[n - 1] = points[0];
  return points;
}

CNuPolyline CNuEllipse::ToPolyline(int n) const {
  return CNuPolyline(ToPointArray(n));
}
