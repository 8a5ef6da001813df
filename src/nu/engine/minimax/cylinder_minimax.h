#ifndef NU_ENGINE_MINIMAX_CYLINDER_MINIMAX_H
#define NU_ENGINE_MINIMAX_CYLINDER_MINIMAX_H

#include "nu/engine/minimax/minimax.h"
#include "nu/engine/shapes/incidence.h"

namespace nu::engine::minimax {

// A cylinder that no small move betters, and the points that hold it: the multipliers are not negative and add up to 1;
// the sums of sign * multiplier * direction from the axis, and of the same times the place along the axis, are zero.
// Everything is in the unit of the points, from the origin of the blocks; the axis point is next to the mean.
struct CylinderMinimax : Contacts {
  MinimaxEnd end = MinimaxEnd::stalled;
  Cylinder3 cylinder;     // the radius of a zone is half-way between the inner and the outer one
  double zone = 0.0;      // the difference of these; else 0
  double rounding = 0.0;  // the error of a distance from the axis
};

// From the least-squares cylinder and the mean of the points. `stalled`: no optimum is near, or the zone is that of
// planes, or a coordinate is not finite. The limit is on the steps of one search, none of which may take 1000.

// The two coaxial cylinders next to the start, or, where none are next to it, next to another cylinder, that hold all
// points between them at the least distance.
CylinderMinimax NarrowestCylinderZone(PointBlocks& points, const Vec3& mean, const Cylinder3& start, long limit,
                                      const StepMonitor& monitor = {});

// The smallest cylinder around all points: the best of those reached from several directions.
CylinderMinimax SmallestCylinderAround(PointBlocks& points, const Vec3& mean, const Cylinder3& start, long limit,
                                       const StepMonitor& monitor = {});

// The largest cylinder next to the start with no point inside whose axis is held between points; `stalled` when it
// escapes from among them.
CylinderMinimax LargestCylinderInside(PointBlocks& points, const Vec3& mean, const Cylinder3& start, long limit,
                                      const StepMonitor& monitor = {});

}  // namespace nu::engine::minimax

#endif
