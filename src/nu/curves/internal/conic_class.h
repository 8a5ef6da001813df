#ifndef NU_CURVES_INTERNAL_CONIC_CLASS_H
#define NU_CURVES_INTERNAL_CONIC_CLASS_H

#include <cmath>

#include "nu/curves/ellipse.h"
#include "nu/curves/hyperbola.h"
#include "nu/curves/internal/sampling.h"
#include "nu/curves/parabola.h"
#include "nu/engine/shapes/conics.h"
#include "nu/foundation/internal/failures.h"
#include "nu/geometry/internal/conversions.h"
#include "nu/geometry/point_array.h"

// What the classes of the conics share. Only sources include this.
namespace nu::internal {

inline FrameAxes RequireAxes(const CNuVector& normal, const char* className) {
  if (normal.GetSize() != 3) throw CNuConstructionException(NuConstructionDirection, className, nullptr, 0, 0);
  return AxesAlong(RequireDirection(normal, NuConstructionZeroDirection, className));
}

inline FrameAxes RequireAxes(const CNuVector& xAxis, const CNuVector& normal, const char* className) {
  if (xAxis.GetSize() != 3 || normal.GetSize() != 3)
    throw CNuConstructionException(NuConstructionDirection, className, nullptr, 0, 0);
  FrameAxes axes{RequireDirection(xAxis, NuConstructionZeroDirection, className),
                 RequireDirection(normal, NuConstructionZeroDirection, className)};
  if (axes.x.IsOrthogonalTo(axes.z, NuGetRadianTol()) == NuFalse) {
    throw CNuConstructionException(NuConstructionShape, className, nullptr, 0, 0);
  }
  // A coarse tolerance may let the two be parallel.
  const Vec3 across = Rejection(Components(axes.x), Components(axes.z));
  if (IsNull(across, NuGetZero())) throw CNuConstructionException(NuConstructionShape, className, nullptr, 0, 0);
  axes.x = ToVector(Unit(across));
  return axes;
}

template<class Curve>
Conic3<Curve> InSpace(const CNuPoint& origin, const CNuVector& xAxis, const CNuVector& normal, const Curve& curve) {
  const Vec3 x = Components(xAxis);
  return {{Components(origin), x, Cross(Components(normal), x)}, curve};
}

inline Conic3<Ellipse2> DataOf(const CNuEllipse& ellipse) {
  CNuPoint centre;
  CNuVector xAxis, normal;
  Ellipse2 curve;
  ellipse.GetData(&curve.a, &curve.b, &centre, &xAxis, &normal);
  return InSpace(centre, xAxis, normal, curve);
}

inline Conic3<Hyperbola2> DataOf(const CNuHyperbola& hyperbola) {
  CNuPoint centre;
  CNuVector xAxis, normal;
  Hyperbola2 curve;
  hyperbola.GetData(&curve.a, &curve.b, &centre, &xAxis, &normal);
  return InSpace(centre, xAxis, normal, curve);
}

inline Conic3<Parabola2> DataOf(const CNuParabola& parabola) {
  CNuPoint vertex;
  CNuVector xAxis, normal;
  Parabola2 curve;
  parabola.GetData(&curve.f, &vertex, &xAxis, &normal);
  return InSpace(vertex, xAxis, normal, curve);
}

// The guards of sampling the open conics, whose parts are numbered 0 and 1.
inline void RequireSamples(int n, double t0, double t1, int part, const char* where) {
  RequireSamples(n, where);
  if (!std::isfinite(t0) || !std::isfinite(t1)) FailOperation(NuOperationArgument, "conversion", where);
  if (!(t0 < t1)) FailOperation(NuOperationRange, "conversion", where);
  if (part != 0 && part != 1) FailOperation(NuOperationArgument, "conversion", where);
}

// The points pointAt(t) for t in n even steps from t0 to t1, both included. One that is not finite: cause 14.
template<class Curve, class PointAt>
CNuPointArray SampledPoints(const Conic3<Curve>& conic, int n, double t0, double t1, const char* where,
                            PointAt pointAt) {
  CNuPointArray points(n);
  for (int i = 0; i < n; ++i) {
    const double part = static_cast<double>(i) / (n - 1);
    const Vec3 p = conic.Global(pointAt(i == n - 1 ? t1 : (1.0 - part) * t0 + part * t1));
    if (!IsFinite(p)) FailOperation(NuOperationArgument, "conversion", where);
    points.Add(ToPoint(p));
  }
  return points;
}

}  // namespace nu::internal

#endif
