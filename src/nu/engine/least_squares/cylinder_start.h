#ifndef NU_ENGINE_LEAST_SQUARES_CYLINDER_START_H
#define NU_ENGINE_LEAST_SQUARES_CYLINDER_START_H

#include "nu/engine/least_squares/cylinder_least_squares.h"

namespace nu::engine::least_squares {

// Finds the cylinder next to the points and leaves it in `fit`, which runs over the same points. False when the points
// are not finite or determine no quadric.
bool StartCylinder(PointBlocks& points, CylinderLeastSquares& fit);

}  // namespace nu::engine::least_squares

#endif
