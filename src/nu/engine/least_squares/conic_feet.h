#ifndef NU_ENGINE_LEAST_SQUARES_CONIC_FEET_H
#define NU_ENGINE_LEAST_SQUARES_CONIC_FEET_H

#include "nu/engine/base/lanes.h"
#include "nu/engine/shapes/conic_equation.h"

namespace nu::engine::least_squares {

// Finds the closest points of the conic in the lanes that are open, which are not 0, as FootOn does and to its bits;
// the others stay. Neighbours in a scan need it together.
void FindFeetOn(const ConicShape& shape, const Lanes& x, const Lanes& y, const Lanes& open, Lanes& footX, Lanes& footY);

}  // namespace nu::engine::least_squares

#endif
