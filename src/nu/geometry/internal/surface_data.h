#ifndef NU_GEOMETRY_INTERNAL_SURFACE_DATA_H
#define NU_GEOMETRY_INTERNAL_SURFACE_DATA_H

#include "nu/engine/shapes/double_cone.h"
#include "nu/geometry/internal/conversions.h"
#include "nu/surfaces/cone.h"
#include "nu/surfaces/cylinder.h"
#include "nu/surfaces/sphere.h"

// Surfaces of the interface on plain doubles. Only sources of relations include this.
namespace nu::internal {

inline Sphere3 DataOf(const CNuSphSurf& sphere) {
  return {Components(sphere.GetCentre()), sphere.GetRadius()};
}

inline Cylinder3 DataOf(const CNuCylSurf& cylinder) {
  return {{Components(cylinder.GetAxisPoint()), Components(cylinder.GetAxisDirection())}, cylinder.GetRadius()};
}

inline DoubleCone DataOf(const CNuConSurf& cone) {
  double semiAngle = 0.0;
  CNuPoint apex;
  CNuVector axis;
  cone.GetData(&semiAngle, &apex, &axis);
  return DoubleCone::OfDegrees(Components(apex), Components(axis), semiAngle);
}

}  // namespace nu::internal

#endif
