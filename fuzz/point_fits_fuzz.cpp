// Any coordinates, or points close to those of a feature or of a degenerate one; any tolerances: every fit and every
// operation of a point set ends in a result or in an exception of the library, and a fit that succeeds has finite
// points and finite parameters.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "clouds.h"
#include "nu/nu.h"

namespace {

using namespace nu::fuzz;
using nu::test::AnyFit;
using nu::test::Fitted;

template<class Operation>
bool Ends(Operation operation) {
  try {
    operation();
    return true;
  } catch (const CNuException&) {
    return false;
  }
}

void Require(bool holds) {
  if (!holds) std::abort();
}

bool AreFinite(const CNuPointArray& points) {
  double sum = 0.0;  // 0 or NaN
  for (int i = 0; i < points.GetSize(); ++i) {
    for (const double c : {points[i].x(), points[i].y(), points[i].z()}) sum += 0.0 * c;
  }
  return sum == 0.0;
}

// What makes the result of a fit unsound; null where nothing does. Forms and sums of squares of points far apart exceed
// all numbers. A host's own tolerance may spoil a unit vector.
const char* FaultOf(const AnyFit& fit, const Fitted& f, bool tolerancesAreOdd) {
  const auto areFinite = [](const auto& numbers) {
    return std::all_of(numbers.begin(), numbers.end(), [](double x) { return std::isfinite(x); });
  };
  if (!areFinite(f.Lengths())) return "a length that is not finite";
  if (!areFinite(f.Ratios())) return "a direction or angle that is not finite";
  if ((f.form < 0.0 && f.form != fit.start.form) || std::isnan(f.form)) return "a form that is none";
  if (std::isnan(f.sumsq)) return "a sum of squares that is no number";
  const bool isWave = fit.associate == nullptr;
  if (isWave) return nullptr;
  const double axis = CNuVector(f.axis).Magnitude();
  if (!tolerancesAreOdd && axis != 0.0 && std::fabs(axis - 1.0) >= 1e-12) return "a direction that is no unit vector";
  return f.radius < 0.0 || f.minor < 0.0 ? "a negative radius" : nullptr;
}

void RequireSound(const AnyFit& fit, const Fitted& f, bool tolerancesAreOdd) {
  const char* fault = FaultOf(fit, f, tolerancesAreOdd);
  if (fault == nullptr) return;
  std::fprintf(stderr, "%s gives %s\n", fit.Name().c_str(), fault);
  std::abort();
}

void FitAll(const CNuPointArray& points, double tol, bool tolerancesAreOdd) {
  constexpr long kSteps = 50;
  const bool areFinite = AreFinite(points);
  for (const AnyFit& fit : nu::test::kAllFits) {
    Fitted f;
    if (Ends([&] { fit.run(points, tol, kSteps, f); })) {
      Require(areFinite);
      RequireSound(fit, f, tolerancesAreOdd);
    }
    if (fit.runEx != nullptr) fit.runEx(points, tol, kSteps, f);
    if (fit.associate == nullptr) continue;
    Ends([&] {
      CNuAssociation association(points);
      association.SetDetails(NuDetailAll);
      if (fit.associate(association, tol, kSteps, f).HasConverged() != NuFalse) RequireSound(fit, f, tolerancesAreOdd);
    });
  }
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

// Numbers of eight bytes: a tolerance and the points.
CNuPointArray Points(const std::uint8_t* data, std::size_t size) {
  CNuPointArray points(0);
  for (std::size_t at = sizeof(double); at + 24 <= size; at += 24) {
    double c[3];
    std::memcpy(c, data + at, sizeof c);
    points.Add(CNuPoint(c[0], c[1], c[2]));
  }
  return points;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const double defaultTol = NuGetTol(), defaultLengthTol = NuGetLengthTol();
  Input input(data, size);
  const bool isCloud = input.Byte() % 2 == 1;
  double tol = isCloud ? input.Number() : 1e-9;
  if (!isCloud && size >= sizeof tol) std::memcpy(&tol, data, sizeof tol);
  const CNuPointArray points = isCloud ? Cloud(input) : Points(data, size);
  Question(points, tol);
  FitAll(points, 1e-9, false);
  NuSetTol(tol);
  NuSetLengthTol(tol);
  FitAll(points, tol, true);
  NuSetTol(defaultTol);
  NuSetLengthTol(defaultLengthTol);
  return 0;
}
