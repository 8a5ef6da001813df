// Any coordinates, any tolerance: every fit and every operation of a point set ends in a result or in an exception of
// the library, and a fit that succeeds has finite points and finite results.

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "nu/nu.h"

namespace {

constexpr double kTol = 4.45e-16;

template<class Operation>
bool Ends(Operation operation) {
  try {
    operation();
    return true;
  } catch (const CNuException&) {
    return false;
  }
}

void RequireFinite(double value) {
  if (!std::isfinite(value)) std::abort();
}

void RequireSize(double value) {
  RequireFinite(value);
  if (value < 0.0) std::abort();
}

// A host's own tolerance may spoil the canonical sign.
void RequireUnit(const CNuVector& direction) {
  if (NuGetTol() == kTol && !(std::fabs(direction.Magnitude() - 1.0) < 1e-12)) std::abort();
}

template<class Conic>
void RequireConic(const Conic& conic) {
  double a = 0.0, b = 0.0;
  CNuPoint centre;
  CNuVector xAxis, normal;
  conic.GetData(&a, &b, &centre, &xAxis, &normal);
  for (const double c : {a, b, centre.x(), centre.y(), centre.z()}) RequireFinite(c);
  if (!(a > 0.0) || !(b > 0.0)) std::abort();
}

void RequireWave(const CNuSineCurve& curve) {
  double a = 0.0, b = 0.0, c = 0.0, d = 0.0;
  curve.GetData(&a, &b, &c, &d);
  for (const double value : {a, b, c, d}) RequireFinite(value);
  if (!(a > 0.0) || !(b > 0.0)) std::abort();
}

bool AreFinite(const CNuPointArray& points) {
  double sum = 0.0;  // 0 or NaN
  for (int i = 0; i < points.GetSize(); ++i) {
    for (const double c : {points[i].x(), points[i].y(), points[i].z()}) sum += 0.0 * c;
  }
  return sum == 0.0;
}

void FitAll(const CNuPointArray& points) {
  double form = 0.0, sumsq = 0.0;
  const bool areFinite = AreFinite(points);
  const auto fits = [areFinite](auto fit) {
    const bool succeeds = Ends(fit);
    if (succeeds && !areFinite) std::abort();
    return succeeds;
  };
  CNuLine line;
  if (fits([&] { line.Fit(points, &form, &sumsq); })) RequireUnit(line.GetDirection());
  CNuPlane plane;
  if (fits([&] { plane.Fit(points, &form, &sumsq); })) RequireUnit(plane.GetNormal());
  CNuCircle circle(1.0);
  if (fits([&] { circle.Fit(points, &form, &sumsq, 50); })) RequireFinite(circle.GetRadius());
  CNuConSurf cone(1.0), inner(1.0), outer(1.0);
  CNuSphSurf sphere(1.0);
  if (fits([&] { sphere.Fit(points, &form, &sumsq, 50); })) RequireFinite(sphere.GetRadius());
  CNuCylSurf cylinder(1.0);
  if (fits([&] { cylinder.Fit(points, &form, &sumsq, 50); })) RequireUnit(cylinder.GetAxisDirection());
  for (const double tol : {1e-9, 1e300}) {
    if (fits([&] { cone.FitMinZone(points, &form, &inner, &outer, tol, 50); })) {
      RequireSize(form);
      RequireUnit(cone.GetAxisDirection());
      RequireSize(cone.GetSemiAngle());
    }
    if (fits([&] { line.FitMinZone(points, &form, tol, 50); })) {
      RequireSize(form);
      RequireUnit(line.GetDirection());
    }
    if (fits([&] { plane.FitMinZone(points, &form, tol); })) {
      RequireSize(form);
      RequireUnit(plane.GetNormal());
    }
    if (fits([&] { circle.FitMin(points, tol); })) RequireSize(circle.GetRadius());
    if (fits([&] { circle.FitMax(points, tol); })) RequireSize(circle.GetRadius());
    if (fits([&] { circle.FitMinZone(points, &form, tol, 50); })) RequireSize(circle.GetRadius() + form);
    if (fits([&] { sphere.FitMin(points, tol); })) RequireSize(sphere.GetRadius());
    if (fits([&] { sphere.FitMax(points, tol); })) RequireSize(sphere.GetRadius());
    if (fits([&] { sphere.FitMinZone(points, &form, tol, 50); })) RequireSize(sphere.GetRadius() + form);
    if (fits([&] { cylinder.FitMin(points, tol, 50); })) RequireSize(cylinder.GetRadius());
    if (fits([&] { cylinder.FitMax(points, tol, 50); })) RequireSize(cylinder.GetRadius());
    if (fits([&] { cylinder.FitMinZone(points, &form, tol, 50); })) RequireSize(cylinder.GetRadius() + form);
  }
  CNuTorSurf torus(2.0, 1.0);
  if (fits([&] { torus.FitMin(points, 1e-9, 50); })) RequireSize(torus.GetMajorRadius() + torus.GetMinorRadius());
  if (fits([&] { cone.Fit(points, &form, &sumsq, 50); })) {
    RequireUnit(cone.GetAxisDirection());
    if (!(cone.GetSemiAngle() > 0.0 && cone.GetSemiAngle() < 90.0)) std::abort();
  }
  CNuEllipse ellipse(2.0, 1.0);
  if (fits([&] { ellipse.Fit(points, &form, &sumsq, 50); })) RequireConic(ellipse);
  CNuHyperbola hyperbola(2.0, 1.0);
  if (fits([&] { hyperbola.Fit(points, &form, &sumsq, 50); })) RequireConic(hyperbola);
  CNuParabola parabola(1.0);
  if (fits([&] { parabola.Fit(points, &form, &sumsq, 50); })) RequireSize(parabola.GetFocalLength());
  CNuSineCurve sine(1.0, 1.0, 0.0, 0.0);
  if (fits([&] { sine.Fit(points, &form, &sumsq, 50); })) RequireWave(sine);
  CNuCosineCurve(1.0, 1.0, 0.0, 0.0).FitEx(points, 50);
  line.FitMinZoneEx(points, &form, NuGetTol(), 50);
  circle.FitMinEx(points, NuGetTol());
  circle.FitMaxEx(points, NuGetTol());
  circle.FitMinZoneEx(points, &form, NuGetTol(), 50);
  circle.FitEx(points, 50);
  sphere.FitEx(points, 50);
  cone.FitMinZoneEx(points, &form, NuGetTol(), 50);
  sphere.FitMinEx(points, NuGetTol());
  sphere.FitMinZoneEx(points, &form, NuGetTol(), 50);
  cylinder.FitEx(points, 50);
  cylinder.FitMinEx(points, NuGetTol(), 50);
  cylinder.FitMaxEx(points, NuGetTol(), 50);
  cylinder.FitMinZoneEx(points, &form, NuGetTol(), 50);
}

void Question(const CNuPointArray& points, double tol) {
  int i = 0, j = 0;
  CNuIntArray index(0);
  CNuPoint low, high;
  double radius = 0.0;
  Ends([&] { points.MeanPoint(); });
  Ends([&] { points.MaxEdge(&i, &j); });
  Ends([&] { points.MinEdge(&i, &j); });
  Ends([&] { points.IsNoncollinear(&index, tol); });
  Ends([&] { points.IsNoncoplanar(&index, tol); });
  Ends([&] { points.BoundingBox(&low, &high); });
  Ends([&] { points.BoundingSphere(&radius, &low); });
  Ends([&] { CNuGeometry::NumberDistinctPoints(points, 5, tol); });
  Ends([&] { CNuGeometry::AreCoplanar(points, tol); });
  Ends([&] { CNuSimplifiedCurve(points, tol); });
  Ends([&] { CNuSimplifiedCurve(points, 0.1); });
  CNuVector normal(0.3, -0.2, 0.9);
  CNuPointArray flat = CNuGeometry::Projection2D(points, normal);
  Ends([&] { flat.ConvexHull(&index); });
  Ends([&] { flat.IsEqual(points, tol); });
  Ends([&] { flat.RemoveDuplicate(tol); });
  Ends([&] { flat.RemoveAdjacentDuplicate(tol); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  double tol = 1e-9;
  if (size >= sizeof tol) std::memcpy(&tol, data, sizeof tol);
  CNuPointArray points(0);
  for (std::size_t at = sizeof tol; at + 24 <= size; at += 24) {
    double c[3];
    std::memcpy(c, data + at, sizeof c);
    points.Add(CNuPoint(c[0], c[1], c[2]));
  }
  Question(points, tol);
  FitAll(points);
  NuSetTol(tol);
  NuSetLengthTol(tol);
  FitAll(points);
  NuSetTol(kTol);
  NuSetLengthTol(1e-12);
  return 0;
}
