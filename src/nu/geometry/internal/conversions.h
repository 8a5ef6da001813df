#ifndef NU_GEOMETRY_INTERNAL_CONVERSIONS_H
#define NU_GEOMETRY_INTERNAL_CONVERSIONS_H

#include <cfloat>

#include "nu/engine/base/elementary.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/shapes/vec3.h"
#include "nu/foundation/constants.h"
#include "nu/foundation/exceptions.h"
#include "nu/foundation/tolerances.h"
#include "nu/geometry/point.h"
#include "nu/linalg/vector.h"

// Points and directions of the interface as plain components, and the guard of the features' constructors.
namespace nu::internal {

inline Vec3 Components(const CNuPoint& p) {
  return {p.x(), p.y(), p.z()};
}
// For vectors that are known to have three components.
inline Vec3 Components(const CNuVector& v) {
  return LoadVec3(v.GetData());
}
inline CNuPoint ToPoint(Vec3 v) {
  return CNuPoint(v.x, v.y, v.z);
}
inline CNuVector ToVector(Vec3 v) {
  return CNuVector(v.x, v.y, v.z);
}

struct FrameAxes {
  CNuVector x, z;
};

// The axis z normalised, with any x axis across it.
inline FrameAxes AxesAlong(const CNuVector& z) {
  FrameAxes axes{{}, z};
  axes.z.OrthonormalX(&axes.x);
  return axes;
}

// Angle tolerances of features are degrees. This bounds the sine of the angle between directions that are parallel
// within one; the rounding of unit vectors needs no tolerance, and within a right angle all directions are parallel.
inline double SineTol(double degrees) {
  constexpr double kRounding = 8.0 * DBL_EPSILON;  // of the product of two unit vectors
  constexpr double kRightAngle = 90.0;
  if (!(degrees > 0.0)) return kRounding;
  if (degrees >= kRightAngle) return kInfinity;
  return std::max(Sin(degrees * (Nu_PI / 180.0)), kRounding);
}

// The one that decides wherever the caller passes none.
inline double ParallelTol() {
  return SineTol(NuGetDegreeTol());
}

// A radius, a semi-axis or a focal length is above 0 and finite: CNuConstructionException cause 5 for any other.
inline double RequireLength(double length, const char* className, const char* what) {
  if (!(length > 0.0) || !std::isfinite(length))
    throw CNuConstructionException(NuConstructionLength, className, what, 0, 0);
  return length;
}

// A direction that is zero within NuGetZero() or not finite: CNuConstructionException without a parameter word.
inline CNuVector RequireDirection(Vec3 direction, ENuConstructionCause cause, const char* className) {
  if (IsNull(direction, NuGetZero()) || !IsFinite(direction)) {
    throw CNuConstructionException(cause, className, nullptr, 0, 0);
  }
  return ToVector(Unit(direction));
}

// The same for a vector of any size; three components are required.
inline CNuVector RequireDirection(const CNuVector& direction, ENuConstructionCause cause, const char* className) {
  if (direction.GetSize() != 3) throw CNuConstructionException(cause, className, nullptr, 0, 0);
  return RequireDirection(Components(direction), cause, className);
}

// A feature's direction after a rotation. Turns round: the unit length is restored each time.
template<class Axis>
CNuVector TurnedDirection(const CNuVector& direction, double angle, const Axis& axis) {
  CNuVector turned = direction;
  turned.Rotate(angle, axis);
  return ToVector(Unit(Components(turned)));
}

}  // namespace nu::internal

#endif
