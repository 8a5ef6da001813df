#ifndef NU_ENGINE_MINIMAX_ENCLOSING_CYLINDER_H
#define NU_ENGINE_MINIMAX_ENCLOSING_CYLINDER_H

#include "nu/engine/minimax/cylinder_distance.h"

namespace nu::engine::minimax {

// The smallest circular cylinder that holds all points: the local optimum reached from the axis given, which is through
// `mean` along the unit `direction`, or one that a search over all directions finds smaller. The limit is on the steps
// from the first.
MinimaxSolution<AxisDistance> SmallestCylinder(PointBlocks& points, const Vec3& mean, const Vec3& direction, long limit,
                                               const StepMonitor& monitor = {});

}  // namespace nu::engine::minimax

#endif
