#ifndef NU_ENGINE_MINIMAX_SMALLEST_TUBE_H
#define NU_ENGINE_MINIMAX_SMALLEST_TUBE_H

#include "nu/engine/minimax/minimax.h"
#include "nu/engine/minimax/tube_distance.h"

namespace nu::engine::minimax {

enum class TubeStarts {
  one,
  many,  // unless the tube found from the first one is clear
};

struct Tube {
  MinimaxSolution<TubeDistance> solution;
  bool isClear = false;  // so thin that hardly another circle is near all points
};

// The circle in space whose largest distance to a point is the least, the middle of the thinnest tube that holds all
// points. The first start is the circle in the plane of the points, the others are circles in other planes and straight
// lines and, unless the points are on the tube found from these, larger circles beside them and tilted ones about that
// tube. The best of the local optima reached is taken. May set the scale of the blocks. The limit is on the steps from
// the first start.
Tube SmallestTube(PointBlocks& points, TubeStarts starts, long limit, const StepMonitor& monitor = {});

}  // namespace nu::engine::minimax

#endif
