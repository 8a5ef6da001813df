#ifndef NU_CURVES_INTERNAL_CONIC_MEMBERS_H
#define NU_CURVES_INTERNAL_CONIC_MEMBERS_H

#include "nu/curves/internal/conic_relations.h"
#include "nu/geometry/internal/conversions.h"
#include "nu/geometry/plane.h"

// The members that the circle and the conics define alike, once for all of them. Only sources include this.

// GetOrigin: what the class calls the origin of its frame.
#define NU_DEFINE_PLACE_OF_CONIC(Class, GetOrigin) \
  CNuPoint Class::GetOrigin() const {              \
    return GetFrame().origin;                      \
  }                                                \
  CNuVector Class::GetNormal() const {             \
    return GetFrame().zaxis;                       \
  }                                                \
  CNuVector Class::GetXaxis() const {              \
    return GetFrame().xaxis;                       \
  }                                                \
  CNuPlane Class::GetPlane() const {               \
    return CNuPlane(GetOrigin(), GetNormal());     \
  }

#define NU_DEFINE_RELATIONS_OF_CONIC(Class)                                              \
  double Class::DistanceTo(const CNuPoint& p) const {                                    \
    return nu::internal::CoordinatesFor(p, *this).Distance();                            \
  }                                                                                      \
  int Class::IntersectWith(const CNuLine& line, CNuPoint* p1, CNuPoint* p2) const {      \
    return line.IntersectWith(*this, p1, p2);                                            \
  }                                                                                      \
  int Class::IntersectWith(const CNuPlane& plane, CNuPoint* p1, CNuPoint* p2) const {    \
    constexpr const char* where = #Class "::IntersectWith(CNuPlane)";                    \
    return nu::internal::StoreCommon(nu::internal::DataOf(plane), *this, p1, p2, where); \
  }

#endif
