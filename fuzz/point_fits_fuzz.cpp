// Any coordinates, any tolerance: every fit and every operation of a point set ends in a result or in an exception of
// the library, and a fit that succeeds has finite results.

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "nu/nu.h"

namespace {

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

void FitAll(const CNuPointArray& points) {
  double form = 0.0, sumsq = 0.0;
  CNuLine line;
  if (Ends([&] { line.Fit(points, &form, &sumsq); })) RequireFinite(line.GetDirection().Magnitude());
  if (Ends([&] { line.FitMinZone(points, &form, NuGetLengthTol(), 50); })) {
    RequireFinite(form);
    RequireFinite(line.GetDirection().Magnitude());
  }
  CNuPlane plane;
  if (Ends([&] { plane.Fit(points, &form, &sumsq); })) RequireFinite(plane.GetNormal().Magnitude());
  CNuCircle circle(1.0);
  if (Ends([&] { circle.Fit(points, &form, &sumsq, 50); })) RequireFinite(circle.GetRadius());
  for (const double tol : {1e-9, 1e300}) {
    if (Ends([&] { circle.FitMin(points, tol); })) RequireFinite(circle.GetRadius());
    if (Ends([&] { circle.FitMax(points, tol); })) RequireFinite(circle.GetRadius());
    if (Ends([&] { circle.FitMinZone(points, &form, tol, 50); })) RequireFinite(circle.GetRadius() + form);
  }
  CNuSphSurf sphere(1.0);
  if (Ends([&] { sphere.Fit(points, &form, &sumsq, 50); })) RequireFinite(sphere.GetRadius());
  circle.FitEx(points, 50);
  sphere.FitEx(points, 50);
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
  NuSetTol(4.45e-16);
  NuSetLengthTol(1e-12);
  return 0;
}
