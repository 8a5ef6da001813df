#include "nu/curves/pcurve.h"

#include <new>

#include "nu/curves/internal/quadric_curve.h"
#include "nu/curves/internal/sampling.h"
#include "nu/curves/polyline.h"
#include "nu/geometry/internal/axis_frame.h"
#include "nu/geometry/internal/directions.h"

using nu::internal::AxisFrame;
using nu::internal::Components;
using nu::internal::QuadricCurve;
using nu::internal::ToPoint;
using nu::internal::ToVector;
using nu::internal::Vec3;

namespace {

std::unique_ptr<const QuadricCurve> CopyOf(const QuadricCurve& curve) {
  try {
    return std::make_unique<const QuadricCurve>(curve);
  } catch (const std::bad_alloc&) {
    throw CNuMemoryException("CNuPCurve::Copy()");
  }
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

CNuPCurve::CNuPCurve(const QuadricCurve& curve, double scale)
    : CNuCurve(NuTypePCurve), m_curve(CopyOf(curve)), m_scale(scale) {}
CNuPCurve::CNuPCurve(const CNuPCurve& other)
    : CNuCurve(other), m_curve(CopyOf(*other.m_curve)), m_scale(other.m_scale) {}
CNuPCurve::~CNuPCurve() = default;

CNuPCurve& CNuPCurve::operator=(const CNuPCurve& other) {
  std::unique_ptr<const QuadricCurve> curve = CopyOf(*other.m_curve);
  CNuCurve::operator=(other);
  m_curve = std::move(curve);
  m_scale = other.m_scale;
  return *this;
}

CNuPCurve* nu::internal::NewPCurve(const QuadricCurve& curve, const AxisFrame& frame, double scale) {
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
  return m_scale * m_curve->FootOf((1.0 / m_scale) * AxesOf(GetFrame()).Local(Components(p))).distance;
}

CNuPointArray CNuPCurve::ToPointArray(int n) const {
  nu::internal::RequireSamples(n, "CNuPCurve::ToPolyline/PointArray()");
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
