#ifndef NU_ENGINE_SHAPES_QUADRIC_DOUBLE_POINTS_H
#define NU_ENGINE_SHAPES_QUADRIC_DOUBLE_POINTS_H

#include <optional>
#include <vector>

#include "nu/engine/shapes/quadric_trace.h"

namespace nu::engine::shapes {

// The double point of a common curve next to a place, but for the tolerance.
std::optional<QuadricPlace> DoublePointNextTo(const QuadricTask& task, QuadricPlace place);

// The pair with the other surface moved, within its tolerance, so that the curve passes twice through the double
// points.
QuadricPair TouchingAt(const std::vector<QuadricPlace>& nodes, const QuadricTask& task);

}  // namespace nu::engine::shapes

#endif
