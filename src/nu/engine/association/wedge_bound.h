#ifndef NU_ENGINE_ASSOCIATION_WEDGE_BOUND_H
#define NU_ENGINE_ASSOCIATION_WEDGE_BOUND_H

#include "nu/engine/association/bounded_points.h"

namespace nu::engine::association {

// A lower bound on the range that d = max(m . p + j, n . p + k) has over the points p, for all unit vectors m and n and
// all numbers j and k: how far they are at least from the surface of a wedge. Seen from far across its axis a cone of
// two nappes is one. The bound is `enough` or below, and 0 where none is found.
double BoundWedges(BoundedPoints& points, double enough);

}  // namespace nu::engine::association

#endif
