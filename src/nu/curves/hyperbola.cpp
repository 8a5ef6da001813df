#include "nu/curves/hyperbola.h"

#include "nu/curves/internal/conic_class.h"
#include "nu/curves/internal/conic_relations.h"
#include "nu/curves/polyline.h"
#include "nu/engine/base/elementary.h"
#include "nu/foundation/internal/outputs.h"
#include "nu/geometry/plane.h"

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
  const ConicAxes axes = RequireAxes(normal, kName);
  SetPosition(centre, axes.x, axes.normal);
}

CNuHyperbola::CNuHyperbola(double a, double b, const CNuPoint& centre, const CNuVector& xAxis, const CNuVector& normal)
    : CNuHyperbola(a, b) {
  const ConicAxes axes = RequireAxes(xAxis, normal, kName);
  SetPosition(centre, axes.x, axes.normal);
}

CNuPoint CNuHyperbola::GetCentre() const {
  return GetFrame().origin;
}

CNuVector CNuHyperbola::GetNormal() const {
  return GetFrame().zaxis;
}

CNuVector CNuHyperbola::GetXaxis() const {
  return GetFrame().xaxis;
}

CNuPlane CNuHyperbola::GetPlane() const {
  return CNuPlane(GetCentre(), GetNormal());
}

void CNuHyperbola::GetData(double* a, double* b, CNuPoint* centre, CNuVector* xAxis, CNuVector* normal) const {
  GetPosition(centre, xAxis, normal);
  Output(a, m_a);
  Output(b, m_b);
}

double CNuHyperbola::DistanceTo(const CNuPoint& p) const {
  return CoordinatesFor(p, *this).Distance();
}

int CNuHyperbola::IntersectWith(const CNuLine& line, CNuPoint* p1, CNuPoint* p2) const {
  return line.IntersectWith(*this, p1, p2);
}

int CNuHyperbola::IntersectWith(const CNuPlane& plane, CNuPoint* p1, CNuPoint* p2) const {
  return StoreCommon(nu::internal::DataOf(plane), *this, p1, p2, "CNuHyperbola::IntersectWith(CNuPlane)");
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
