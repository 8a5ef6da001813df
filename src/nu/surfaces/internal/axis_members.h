#ifndef NU_SURFACES_INTERNAL_AXIS_MEMBERS_H
#define NU_SURFACES_INTERNAL_AXIS_MEMBERS_H

#include "nu/geometry/internal/conversions.h"
#include "nu/geometry/line.h"

// The members that cylinder, cone and torus define alike, once for all of them. Only sources include this.
// GetOrigin: what the class calls the origin of its frame.
#define NU_DEFINE_AXIS_OF_SURFACE(Class, GetOrigin) \
  CNuPoint Class::GetOrigin() const {               \
    return GetFrame().origin;                       \
  }                                                 \
  CNuVector Class::GetAxisDirection() const {       \
    return GetFrame().zaxis;                        \
  }                                                 \
  CNuLine Class::GetAxis() const {                  \
    const Frame frame = GetFrame();                 \
    return CNuLine(frame.origin, frame.zaxis);      \
  }

#endif
