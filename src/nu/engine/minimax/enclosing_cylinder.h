#ifndef NU_ENGINE_MINIMAX_ENCLOSING_CYLINDER_H
#define NU_ENGINE_MINIMAX_ENCLOSING_CYLINDER_H

#include "nu/engine/minimax/minimax.h"
#include "nu/engine/shapes/axis_frame.h"

namespace nu::engine::minimax {

// The distances of points from an axis. The unknowns are the shift (a, b) across and the tilt, as the way that the axis
// makes at `half`, half of the length of the points along it, from the frame's origin.
struct AxisDistance {
  static constexpr int kUnknowns = 4;
  static constexpr int kStrata = 32;

  AxisFrame frame;
  double half = 0.0;

  void Deviations(const PointBlock& block, double* deviation, double& smallest, double& largest) const;
  void Gradients(const PointBlock& block, double* deviation, double (*gradient)[kMostRows]) const;
  void AddCurvature(const Vec3& point, double weight, double (&sum)[kUnknowns][kUnknowns]) const;
  AxisDistance Moved(const double (&step)[kUnknowns]) const;
  int Stratum(const Vec3& point) const;
};

// The smallest circular cylinder that holds all points: the local optimum reached from the axis given, which is through
// `mean` along the unit `direction`, or one that a search over all directions finds smaller. The limit is on the steps
// from the first.
MinimaxSolution<AxisDistance> SmallestCylinder(PointBlocks& points, const Vec3& mean, const Vec3& direction,
                                               long limit);

}  // namespace nu::engine::minimax

#endif
