// Spheres against cylinders and cones, which know how they meet.

#include "nu/surfaces/cone.h"
#include "nu/surfaces/cylinder.h"
#include "nu/surfaces/sphere.h"

int CNuSphSurf::IntersectWith(const CNuCylSurf& cylinder, CNuObjArray* result) const {
  return cylinder.IntersectWith(*this, result);
}

int CNuSphSurf::IntersectWith(const CNuConSurf& cone, CNuObjArray* result) const {
  return cone.IntersectWith(*this, result);
}
