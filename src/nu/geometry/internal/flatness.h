#ifndef NU_GEOMETRY_INTERNAL_FLATNESS_H
#define NU_GEOMETRY_INTERNAL_FLATNESS_H

#include "nu/geometry/internal/point_blocks.h"

namespace nu::internal {

struct Flatness {
  bool finite;  // every coordinate
  bool flat;    // all z are the same double
};

// One walk over one point or more. The differences of huge coordinates from the blocks' origin may overflow: such
// points are looked at once more as they are.
Flatness FlatnessOf(PointBlocks& points);

}  // namespace nu::internal

#endif
