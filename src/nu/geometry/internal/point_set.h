#ifndef NU_GEOMETRY_INTERNAL_POINT_SET_H
#define NU_GEOMETRY_INTERNAL_POINT_SET_H

#include <cstddef>

#include "nu/engine/points/point_view.h"
#include "nu/geometry/point_array.h"

namespace nu::internal {

// The points of an array where they lie; valid until the array changes.
inline PointView ViewOf(const CNuPointArray& points) {
  if (points.GetSize() == 0) return {};
  // Only the writable access gives the place of a coordinate; nothing is written.
  CNuPoint& first = const_cast<CNuPoint&>(points.GetData()[0]);
  return {&first.x(), sizeof(CNuPoint), static_cast<std::size_t>(points.GetSize())};
}

}  // namespace nu::internal

#endif
