#ifndef NU_ENGINE_SHAPES_QUADRIC_TRACE_H
#define NU_ENGINE_SHAPES_QUADRIC_TRACE_H

#include <optional>
#include <vector>

#include "nu/engine/shapes/quadric_intersection_curve.h"

namespace nu::engine::shapes {

// A generator, and on which of its crossings a branch begins, as in QuadricEquation::CrossingAt.
struct QuadricSeed {
  double u = 0.0;
  double sign = 1.0;
};

// A common curve, and where it is known to pass.
struct QuadricTask {
  QuadricPair pair;
  QuadricPath path;                // with its sheets, and a common line
  std::vector<QuadricSeed> seeds;  // on each branch
  std::vector<double> contacts;    // generators that touch amid others that cross: through double points
  std::vector<double> asymptotes;  // generators on which a crossing goes to infinity, if only to rounding
  double tol = 0.0;                // surfaces that come so close touch
  double reach = 0.0;              // how far along the generators branches are kept
};

// The branches through the seeds, each once, cut at infinity and then at the reach. A branch runs straight through
// double points. Nothing where a step cannot be proven. The mathematics is at the top of the source.
std::optional<std::vector<QuadricIntersectionCurve>> TraceBranches(const QuadricTask& task);

}  // namespace nu::engine::shapes

#endif
