#ifndef NU_GEOMETRY_INTERNAL_FEATURE_DATA_H
#define NU_GEOMETRY_INTERNAL_FEATURE_DATA_H

#include "nu/curves/circle.h"
#include "nu/geometry/internal/directions.h"
#include "nu/geometry/internal/incidence.h"
#include "nu/geometry/line.h"
#include "nu/geometry/plane.h"

// Features of the interface on plain doubles, and points on their way back. Only sources of relations include this: it
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

inline int Store(const Points2& points, CNuPoint* p1, CNuPoint* p2) {
  if (points.count > 0) *p1 = ToPoint(points.at[0]);
  if (points.count > 1) *p2 = ToPoint(points.at[1]);
  return points.count;
}

}  // namespace nu::internal

#endif
