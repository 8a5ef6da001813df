#include "nu/curves/hyperbola.h"

#include "nu/curves/internal/conic_class.h"
#include "nu/curves/internal/conic_members.h"
#include "nu/curves/polyline.h"
#include "nu/engine/base/elementary.h"
#include "nu/foundation/internal/outputs.h"

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuHyperbola";
constexpr const char* kSampling = "CNuHyperbola::ToPolyline/PointArray()";

double RequireSemiAxis(double length) {
  return RequireLength(length, kName, "semi-axis");
}

}  // namespace

CNuHyperbola::CNuHyperbola(double a, double b)
    : CNuCurve(NuTypeHyperbola), m_a(RequireSemiAxis(a)), m_b(RequireSemiAxis(b)) {}

CNuHyperbola::CNuHyperbola(double a, double b, const CNuPoint& centre) : CNuHyperbola(a, b) {
  SetPosition(centre, CNuVector(1.0, 0.0, 0.0), CNuVector(0.0, 0.0, 1.0));
}

CNuHyperbola::CNuHyperbola(double a, double b, const CNuPoint& centre, const CNuVector& normal) : CNuHyperbola(a, b) {
  const FrameAxes axes = RequireAxes(normal, kName);
  SetPosition(centre, axes.x, axes.z);
}

CNuHyperbola::CNuHyperbola(double a, double b, const CNuPoint& centre, const CNuVector& xAxis, const CNuVector& normal)
    : CNuHyperbola(a, b) {
  const FrameAxes axes = RequireAxes(xAxis, normal, kName);
  SetPosition(centre, axes.x, axes.z);
}

NU_DEFINE_PLACE_OF_CONIC(CNuHyperbola, GetCentre)
NU_DEFINE_RELATIONS_OF_CONIC(CNuHyperbola)

void CNuHyperbola::GetData(double* a, double* b, CNuPoint* centre, CNuVector* xAxis, CNuVector* normal) const {
  GetPosition(centre, xAxis, normal);
  Output(a, m_a);
  Output(b, m_b);
}

CNuPointArray CNuHyperbola::ToPointArray(int n, double t0, double t1, int branch) const {
  RequireSamples(n, t0, t1, branch, kSampling);
  const double a = branch == 0 ? m_a : -m_a;
  return SampledPoints(nu::internal::DataOf(*this), n, t0, t1, kSampling, [this, a](double t) {
    return Vec2{a * Cosh(t), m_b * Sinh(t)};
  });
}

CNuPolyline CNuHyperbola::ToPolyline(int n, double t0, double t1, int branch) const {
  return CNuPolyline(ToPointArray(n, t0, t1, branch));
}
