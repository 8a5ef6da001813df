#include "nu/curves/pcurve.h"

#include "nu/curves/internal/sampling.h"
#include "nu/curves/polyline.h"
#include "nu/engine/shapes/axis_frame.h"
#include "nu/engine/shapes/quadric_intersection_curve.h"
#include "nu/foundation/internal/failures.h"
#include "nu/foundation/internal/new_objects.h"
#include "nu/geometry/internal/conversions.h"

using namespace nu::internal;

namespace {

std::unique_ptr<const QuadricIntersectionCurve> CopyOf(const QuadricIntersectionCurve& curve) {
  return WithMemory("CNuPCurve::Copy()", [&] { return std::make_unique<const QuadricIntersectionCurve>(curve); });
}

template<class Frame>
AxisFrame AxesOf(const Frame& frame) {
  const Vec3 x = Components(frame.xaxis);
  const Vec3 z = Components(frame.zaxis);
  return {Components(frame.origin), x, Cross(z, x), z};
}

CNuPoint World(const AxisFrame& frame, Vec3 p) {
  return ToPoint(frame.origin + (p.x * frame.x + p.y * frame.y + p.z * frame.z));
}

}  // namespace

CNuPCurve::CNuPCurve(const QuadricIntersectionCurve& curve, double scale)
    : CNuCurve(NuTypePCurve), m_curve(CopyOf(curve)), m_scale(scale) {}
CNuPCurve::CNuPCurve(const CNuPCurve& other)
    : CNuCurve(other), m_curve(CopyOf(*other.m_curve)), m_scale(other.m_scale) {}
CNuPCurve::~CNuPCurve() = default;

CNuPCurve& CNuPCurve::operator=(const CNuPCurve& other) {
  std::unique_ptr<const QuadricIntersectionCurve> curve = CopyOf(*other.m_curve);
  CNuCurve::operator=(other);
  m_curve = std::move(curve);
  m_scale = other.m_scale;
  return *this;
}

CNuPCurve* nu::internal::NewPCurve(const QuadricIntersectionCurve& curve, const AxisFrame& frame, double scale) {
  std::unique_ptr<CNuPCurve> made(new CNuPCurve(curve, scale));
  made->SetPosition(ToPoint(frame.origin), ToVector(frame.x), ToVector(frame.z));
  return made.release();
}

CNuPoint CNuPCurve::ValueAt(double u) const {
  return World(AxesOf(GetFrame()), m_scale * m_curve->At(u));
}

CNuInterval CNuPCurve::GetRange() const {
  const int open = m_curve->path.closed ? 0 : 1;
  return CNuInterval(m_curve->path.lower, m_curve->path.upper, open, open);
}

ENuBoolean CNuPCurve::IsClosed() const {
  return m_curve->path.closed ? NuTrue : NuFalse;
}

double CNuPCurve::DistanceTo(const CNuPoint& p) const {
  const Vec3 local = (1.0 / m_scale) * AxesOf(GetFrame()).Local(Components(p));
  return m_scale * WithMemory("CNuPCurve::DistanceTo()", [&] { return m_curve->FootOf(local); }).distance;
}

CNuPointArray CNuPCurve::ToPointArray(int n) const {
  RequireSamples(n, "CNuPCurve::ToPolyline/PointArray()");
  const AxisFrame frame = AxesOf(GetFrame());
  const double lower = m_curve->path.lower;
  const double upper = m_curve->path.upper;
  CNuPointArray points(n);
  for (int i = 0; i < n - 1; ++i)
    points.Add(World(frame, m_scale * m_curve->At(lower + i * ((upper - lower) / (n - 1)))));
  points.Add(World(frame, m_scale * m_curve->At(upper)));
  return points;
}

CNuPolyline CNuPCurve::ToPolyline(int n) const {
  return CNuPolyline(ToPointArray(n));
}

CNuPoint CNuPCurve::ClosestPoint(const CNuPoint& p, double* u) const {
  const AxisFrame frame = AxesOf(GetFrame());
  const Vec3 local = (1.0 / m_scale) * frame.Local(Components(p));
  QuadricFoot foot = WithMemory("CNuPCurve::ClosestPoint()", [&] { return m_curve->FootOf(local); });
  const QuadricPath& path = m_curve->path;
  if (path.closed && foot.v >= path.upper) foot.v -= path.upper - path.lower;
  if (path.closed && foot.v < path.lower) foot.v += path.upper - path.lower;
  if (u) *u = path.closed ? foot.v : std::clamp(foot.v, path.lower, path.upper);  // a NaN stays
  return World(frame, m_scale * foot.point);
}

CNuPointArray CNuPCurve::ToPointArrayWithin(double tol) const {
  constexpr const char* where = "CNuPCurve::ToPolyline/PointArray()";
  std::vector<double> samples;
  if (tol > 0.0) samples = WithMemory(where, [&] { return m_curve->SamplesWithin(tol / m_scale, kMostSamples); });
  if (samples.empty()) FailOperation(NuOperationCount, "conversion", where);
  const AxisFrame frame = AxesOf(GetFrame());
  CNuPointArray points(static_cast<int>(samples.size()));
  for (const double u : samples) points.Add(World(frame, m_scale * m_curve->At(u)));
  return points;
}

CNuPolyline CNuPCurve::ToPolylineWithin(double tol) const {
  return CNuPolyline(ToPointArrayWithin(tol));
}

CNuPCurve CNuPCurve::Part(const CNuInterval& range) const {
  const QuadricPath& path = m_curve->path;
  double lower = 0.0;
  double upper = 0.0;
  range.GetBounds(&lower, &upper);
  if (path.closed) {
    upper = std::fmin(upper, lower + (path.upper - path.lower));
  } else {
    lower = std::fmax(lower, path.lower);
    upper = std::fmin(upper, path.upper);
  }
  constexpr const char* where = "CNuPCurve::Part()";
  if (!(lower < upper) || !std::isfinite(lower + upper)) FailOperation(NuOperationUnsupported, "calculation", where);
  const std::unique_ptr<CNuPCurve> part = WithMemory(where, [&] {
    return std::unique_ptr<CNuPCurve>(
        nu::internal::NewPCurve(m_curve->Part(lower, upper), AxesOf(GetFrame()), m_scale));
  });
  return *part;
}

int CNuPCurve::ClipTo(const CNuPoint& lower, const CNuPoint& upper, CNuObjArray* parts) const {
  const AxisFrame frame = AxesOf(GetFrame());
  const Vec3 axes[] = {
      {frame.x.x, frame.y.x, frame.z.x}, {frame.x.y, frame.y.y, frame.z.y}, {frame.x.z, frame.y.z, frame.z.z}};
  const Vec3 least = (1.0 / m_scale) * (Components(lower) - frame.origin);
  const Vec3 most = (1.0 / m_scale) * (Components(upper) - frame.origin);
  constexpr const char* where = "CNuPCurve::ClipTo()";
  NewObjects found = WithMemory(where, [&] {
    const std::vector<HalfSpace> box = {{axes[0], most.x},          {axes[1], most.y},
                                        {axes[2], most.z},          {-1.0 * axes[0], -least.x},
                                        {-1.0 * axes[1], -least.y}, {-1.0 * axes[2], -least.z}};
    for (const HalfSpace& half : box) {
      if (std::isnan(half.height)) FailOperation(NuOperationUnsupported, "calculation", where);
    }
    NewObjects inside;
    const QuadricPath& path = m_curve->path;
    for (const QuadricRange& range : m_curve->Inside(box)) {
      const bool isWhole = range.lower == path.lower && range.upper == path.upper;
      inside.push_back(std::unique_ptr<CNuObject>(
          nu::internal::NewPCurve(isWhole ? *m_curve : m_curve->Part(range.lower, range.upper), frame, m_scale)));
    }
    return inside;
  });
  return HandOver(std::move(found), parts);
}
