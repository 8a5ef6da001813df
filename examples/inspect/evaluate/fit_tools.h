#ifndef NU_INSPECT_FIT_TOOLS_H
#define NU_INSPECT_FIT_TOOLS_H

#include <nu/nu.h>

#include <chrono>
#include <climits>

#include "evaluate/fits.h"

// What the fits of all features share.

// Well-conditioned fits need fewer than a hundred steps; only hopeless ones come here.
inline constexpr long kMaxIterations = 200;

inline Vec3 ToVec3(const CNuPoint& point) {
  return {point.x(), point.y(), point.z()};
}
inline Vec3 ToVec3(const CNuVector& vector) {
  return {vector[0], vector[1], vector[2]};
}

inline Parameter Point(const std::string& name, const CNuPoint& point) {
  return {name, Parameter::Kind::kPoint, {point.x(), point.y(), point.z()}};
}
inline Parameter Direction(const std::string& name, const CNuVector& direction) {
  return {name, Parameter::Kind::kDirection, {direction[0], direction[1], direction[2]}};
}
inline Parameter Length(const std::string& name, double length) {
  return {name, Parameter::Kind::kLength, {length}};
}

inline CNuPointArray ToPointArray(const std::vector<Vec3>& points) {
  if (points.size() > INT_MAX) throw FitFailure("more points than the library can count");
  CNuPointArray array(static_cast<int>(points.size()));
  for (const Vec3& p : points) array.Add(CNuPoint(p[0], p[1], p[2]));
  return array;
}

// A unit vector across z, along the global axis `preferred` as far as z permits.
inline Vec3 AxisAcross(const Vec3& z, std::size_t preferred) {
  constexpr double kNearlyParallel = 0.9;
  if (std::fabs(z[preferred]) > kNearlyParallel) preferred = (preferred + 1) % 3;
  Vec3 x{};
  x[preferred] = 1;
  const double along = z[preferred];
  return Unit({x[0] - along * z[0], x[1] - along * z[1], x[2] - along * z[2]});
}

inline Frame FrameAlong(const CNuPoint& origin, const CNuVector& direction) {
  const Vec3 z = ToVec3(direction);
  const Vec3 x = AxisAcross(z, 0);
  return {ToVec3(origin), x, Cross(z, x), z};
}

template<typename Deviation>
void AddDeviations(const std::vector<Vec3>& points, const Deviation& deviation, Inspection* inspection) {
  inspection->local.reserve(points.size());
  inspection->deviations.reserve(points.size());
  for (const Vec3& point : points) {
    inspection->local.push_back(inspection->frame.ToLocal(point));
    inspection->deviations.push_back(deviation(inspection->local.back()));
  }
}

// Runs fit(array, &feature, &inspection) and takes the time of that and nothing else; then describe(points, feature,
// &inspection) puts the parameters of the feature before those that the fit may have added, and its deviations.
template<typename Feature, typename Fit, typename Describe>
Inspection FitAndDescribe(const std::vector<Vec3>& points, Feature feature, const Fit& fit, const Describe& describe) {
  const CNuPointArray array = ToPointArray(points);
  Inspection result;
  const auto start = std::chrono::steady_clock::now();
  fit(array, &feature, &result);
  result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  const std::vector<Parameter> boundary = std::move(result.parameters);
  describe(points, feature, &result);
  result.parameters.insert(result.parameters.end(), boundary.begin(), boundary.end());
  return result;
}

// Coordinates that were projected, and the tests of the fits for points that coincide or lie in one plane, are good to
// this part of the size of the part.
inline double SameLength(const std::vector<Vec3>& points) {
  constexpr double kOfSize = 1e-9;
  return kOfSize * SizeOf(points);
}

#endif
