#ifndef NU_ENGINE_MINIMAX_ANNULUS_OVERLAY_H
#define NU_ENGINE_MINIMAX_ANNULUS_OVERLAY_H

#include <vector>

#include "nu/engine/shapes/vec2.h"

namespace nu::engine::minimax {

// The narrowest annulus around the points of a grid, in its steps.
struct GridAnnulus {
  bool found = false;
  Vec2 centre;
  double width = 0.0;
  Vec2 outerContact[2];
  Vec2 innerContact[2];
};

// Among all annuli that no small move of the centre makes narrower and that are no wider than `bound`. At least two
// points, in the order of the grid.
GridAnnulus NarrowestGridAnnulus(const std::vector<Vec2>& points, double bound);

}  // namespace nu::engine::minimax

#endif
