#ifndef NU_ENGINE_LEAST_SQUARES_AXIS_CURVATURES_H
#define NU_ENGINE_LEAST_SQUARES_AXIS_CURVATURES_H

#include "nu/engine/points/point_blocks.h"
#include "nu/engine/shapes/pivot_frame.h"

namespace nu::engine::least_squares {

// A surface of revolution from which a point at the distance d from the axis and at the height z over M deviates by
// e = d cos a - (z sin a + k + H cos a): a cone, or a cylinder with a = 0.
struct RevolvedSurface {
  PivotFrame frame;
  double cosine = 1.0, sine = 0.0;
  // Points behind the apex count from the nappe there.
  bool bothNappes = false;
};

// The sum over all points of e times its second derivatives by the angle a, the shift s of the axis across, its height
// H, and its tilts A, B about M, in this order. The mathematics is at the top of the source.
inline constexpr int kAxisUnknowns = 5;
void SumCurvatures(PointBlocks& points, const RevolvedSurface& surface, double (&second)[kAxisUnknowns][kAxisUnknowns]);

}  // namespace nu::engine::least_squares

#endif
