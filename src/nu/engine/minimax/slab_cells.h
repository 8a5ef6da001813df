#ifndef NU_ENGINE_MINIMAX_SLAB_CELLS_H
#define NU_ENGINE_MINIMAX_SLAB_CELLS_H

#include <functional>
#include <vector>

#include "nu/engine/minimax/hull_slab.h"

namespace nu::engine::minimax {

// The hull of a few points and the narrowest slab of many, which is on corners of that hull.
struct CellSlab {
  Hull3 hull;
  HullSlab slab;
};

// The slab of least width of points of which very many may be corners of their hull, without that hull. No two points
// are farther apart than `reach`. `limit` is a width that the slab does not exceed, and falls. Asks about once per pass
// over the points whether it goes on. False when it does not, and where so many directions compete that the hull takes
// less time, as round a cylinder that is askew to the axes.
bool FindNarrowestByCells(const std::vector<IndexedPoint>& points, double reach, const std::function<bool()>& goesOn,
                          double& limit, CellSlab& narrowest);

}  // namespace nu::engine::minimax

#endif
