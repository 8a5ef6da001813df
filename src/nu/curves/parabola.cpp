#include "nu/curves/parabola.h"

#include "nu/curves/internal/conic_class.h"
#include "nu/curves/internal/conic_members.h"
#include "nu/curves/polyline.h"
#include "nu/foundation/internal/outputs.h"

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuParabola";
constexpr const char* kSampling = "CNuParabola::ToPolyline/PointArray()";

}  // namespace

CNuParabola::CNuParabola(double f) : CNuCurve(NuTypeParabola), m_f(RequireLength(f, kName, "focal-length")) {}

CNuParabola::CNuParabola(double f, const CNuPoint& vertex) : CNuParabola(f) {
  SetPosition(vertex, CNuVector(1.0, 0.0, 0.0), CNuVector(0.0, 0.0, 1.0));
}

CNuParabola::CNuParabola(double f, const CNuPoint& vertex, const CNuVector& normal) : CNuParabola(f) {
  const FrameAxes axes = RequireAxes(normal, kName);
  SetPosition(vertex, axes.x, axes.z);
}

CNuParabola::CNuParabola(double f, const CNuPoint& vertex, const CNuVector& xAxis, const CNuVector& normal)
    : CNuParabola(f) {
  const FrameAxes axes = RequireAxes(xAxis, normal, kName);
  SetPosition(vertex, axes.x, axes.z);
}

NU_DEFINE_PLACE_OF_CONIC(CNuParabola, GetVertex)
NU_DEFINE_RELATIONS_OF_CONIC(CNuParabola)

void CNuParabola::GetData(double* f, CNuPoint* vertex, CNuVector* xAxis, CNuVector* normal) const {
  GetPosition(vertex, xAxis, normal);
  Output(f, m_f);
}

CNuPointArray CNuParabola::ToPointArray(int n, double t0, double t1, int side) const {
  RequireSamples(n, t0, t1, side, kSampling);
  if (!(t1 > 0.0)) FailOperation(NuOperationArgument, "conversion", kSampling);
  const double root = (side == 0 ? 2.0 : -2.0) * std::sqrt(m_f);
  return SampledPoints(nu::internal::DataOf(*this), n, std::fmax(t0, 0.0), t1, kSampling, [root](double t) {
    return Vec2{t, root * std::sqrt(t)};
  });
}

CNuPolyline CNuParabola::ToPolyline(int n, double t0, double t1, int side) const {
  return CNuPolyline(ToPointArray(n, t0, t1, side));
}
