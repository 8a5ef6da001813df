#ifndef NU_GEOMETRY_INTERNAL_FEATURE_DATA_H
#define NU_GEOMETRY_INTERNAL_FEATURE_DATA_H

#include <utility>

#include "nu/curves/circle.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/shapes/incidence.h"
#include "nu/foundation/internal/failures.h"
#include "nu/foundation/internal/outputs.h"
#include "nu/geometry/internal/conversions.h"
#include "nu/geometry/line.h"
#include "nu/geometry/plane.h"

// Features of the interface on plain doubles, and results on their way back. Only sources of relations include this: it
// knows the curves.
namespace nu::internal {

inline Line3 DataOf(const CNuLine& l) {
  return {Components(l.GetPoint()), Components(l.GetDirection())};
}
inline Plane3 DataOf(const CNuPlane& pl) {
  return {Components(pl.GetPoint()), Components(pl.GetNormal())};
}
inline Circle3 DataOf(const CNuCircle& circle) {
  return {Components(circle.GetCentre()), Components(circle.GetNormal()), circle.GetRadius()};
}

// Lines, normals or axes that are parallel within NuGetDegreeTol().
inline bool AreParallel(Vec3 first, Vec3 second) {
  return IsParallel(Norm(Cross(first, second)), ParallelTol());
}

// The tolerance of what touches between features of that many coordinates.
template<class... Points>
double TouchTol(double radius, Points... points) {
  return CoincidenceTol(NuGetLengthTol(), std::max({radius, LargestComponent(points)...}));
}

// What is not finite is related to nothing, and neither are features so large that the result overflows:
// CNuOperationException cause 45, named by the operation.
[[noreturn]] inline void FailUnrelated(const char* where) {
  FailOperation(NuOperationUnsupported, "calculation", where);
}

template<class... Features>
void RequireFinite(const char* where, const Features&... features) {
  if (!(IsFinite(features) && ...)) FailUnrelated(where);
}

// Both as they are.
template<class First, class Second>
std::pair<First, Second> FiniteData(const char* where, const First& first, const Second& second) {
  RequireFinite(where, first, second);
  return {first, second};
}

inline int Store(const Points2& points, CNuPoint* p1, CNuPoint* p2, const char* where) {
  for (int i = 0; i < points.count; ++i) RequireFinite(where, points.at[i]);
  if (points.count > 0) Output(p1, ToPoint(points.at[0]));
  if (points.count > 1) Output(p2, ToPoint(points.at[1]));
  return points.count;
}

// Distances of features that are not finite are no numbers.
template<class First, class Second, class Distance>
double DistanceOrNaN(const First& first, const Second& second, Distance distance) {
  return IsFinite(first) && IsFinite(second) ? distance(first, second) : kQuietNaN;
}

inline bool IsDirection(Vec3 v) {
  return IsFinite(v) && !IsNull(v, NuGetZero());
}
inline CNuLine LineFor(Vec3 point, Vec3 direction, const char* where) {
  if (!IsFinite(point) || !IsDirection(direction)) FailUnrelated(where);
  return CNuLine(ToPoint(point), ToVector(direction));
}
inline CNuPlane PlaneFor(Vec3 point, Vec3 normal, const char* where) {
  if (!IsFinite(point) || !IsDirection(normal)) FailUnrelated(where);
  return CNuPlane(ToPoint(point), ToVector(normal));
}

}  // namespace nu::internal

#endif
