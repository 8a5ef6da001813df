#ifndef NU_ENGINE_CHAINS_OFFSET_POLYGON2_H
#define NU_ENGINE_CHAINS_OFFSET_POLYGON2_H

#include <vector>

#include "nu/engine/shapes/vec2.h"

namespace nu::engine::chains {

struct OffsetPolygon {
  bool vanished = false;  // nothing is left, an end edge of an open polygon is lost, or a corner folds back
  std::vector<Vec2> vertices;
};

// The edges moved by the distance to their right and prolonged or cut back to sharp corners. Edges that shrink to
// nothing at a smaller distance are left out, in the order in which that happens, as in a straight skeleton (O.
// Aichholzer, F. Aurenhammer, COCOON 1996). Intersections of separate parts are not detected. Neighbouring vertices
// differ; a closed polygon has its first vertex once. n log n.
OffsetPolygon OffsetEdges(const std::vector<Vec2>& vertices, bool closed, double distance);

}  // namespace nu::engine::chains

#endif
