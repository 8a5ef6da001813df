#ifndef NU_GEOMETRY_INTERNAL_SECTION_OBJECTS_H
#define NU_GEOMETRY_INTERNAL_SECTION_OBJECTS_H

#include "nu/engine/shapes/plane_section.h"
#include "nu/foundation/internal/new_objects.h"

namespace nu::internal {

// The point, lines or conic of a section by a plane with a unit normal. A line that is not finite:
// CNuOperationException cause 45, named by the operation.
NewObjects ObjectsOf(const PlaneSection& section, Vec3 planeNormal, const char* where);

}  // namespace nu::internal

#endif
