#ifndef NU_ENGINE_ASSOCIATION_AXIS_BOUND_H
#define NU_ENGINE_ASSOCIATION_AXIS_BOUND_H

#include "nu/engine/base/function_ref.h"
#include "nu/engine/points/point_blocks.h"
#include "nu/engine/shapes/axis_frame.h"

namespace nu::engine::association {

// The smallest cylinder found around some points, in the unit of their blocks, and what no radius is below.
struct AxisBound {
  AxisFrame frame;
  double radius = 0.0;
  double bound = 0.0;
  long boxes = 0;
};

// Called now and then with the boxes looked at, the smallest radius found and its bound; false ends the search.
using AxisMonitor = FunctionRef<bool(long boxes, double radius, double bound)>;

// From an axis whose frame has its origin among the points, which reach so far from there. One box of directions is one
// smallest circle; a pass over all points counts as boxes, too.
AxisBound BoundAxes(PointBlocks& points, const AxisFrame& start, double reach, double gap, long boxes,
                    AxisMonitor goesOn);

}  // namespace nu::engine::association

#endif
