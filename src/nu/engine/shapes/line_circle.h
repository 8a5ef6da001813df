#ifndef NU_ENGINE_SHAPES_LINE_CIRCLE_H
#define NU_ENGINE_SHAPES_LINE_CIRCLE_H

#include "nu/engine/shapes/incidence.h"

namespace nu::engine::shapes {

// The least distance between a line and a circle, as a curve, and the points of the line that have it within the
// tolerance, in the order of the line: one, or two that are farther apart than the tolerance.
struct NearLine {
  double distance = 0.0;
  Points2 points;
};
NearLine ClosestTo(const Line3& line, const Circle3& circle, double tol);

}  // namespace nu::engine::shapes

#endif
