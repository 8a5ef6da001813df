#ifndef NU_ENGINE_MINIMAX_TUBE_DISTANCE_H
#define NU_ENGINE_MINIMAX_TUBE_DISTANCE_H

#include "nu/engine/minimax/minimax_rows.h"
#include "nu/engine/points/point_blocks.h"
#include "nu/engine/shapes/axis_frame.h"
#include "nu/engine/shapes/least_bend.h"

namespace nu::engine::minimax {

// The distances of points from a circle in space, the line in the middle of a tube. The circle is given by one of its
// points, which lies among the data: so straight tubes are nothing special, and short arcs of large circles lose no
// digits. A model of the minimax driver; the mathematics is at the top of the source.
struct TubeDistance {
  static constexpr int kUnknowns = 6;
  static constexpr int kStrata = 32;

  AxisFrame frame;    // its origin on the circle, x away from the centre, y along the circle, z along the axis
  double bend = 0.0;  // 1 / radius, or 0 for a straight line
  double half = 0.0;  // how far the points reach from the origin of the frame

  double Radius() const { return 1.0 / bend; }
  // False when the circle is so large that rounding hides its centre from the points.
  bool IsRound() const { return bend * half > kLeastBend; }

  void Deviations(const PointBlock& block, double* deviation, double& smallest, double& largest) const;
  void Gradients(const PointBlock& block, double* deviation, double (*gradient)[kMostRows]) const;
  void AddCurvature(const Vec3& point, double weight, double (&sum)[kUnknowns][kUnknowns]) const;
  TubeDistance Moved(const double (&step)[kUnknowns]) const;
  int Stratum(const Vec3& point) const;

 private:
  bool IsShort() const { return bend * half < 1.0; }
  double Lever() const { return IsShort() ? half : 1.0 / bend; }
  double Sweep() const { return std::max(bend * bend, 2.0 / (half * half)); }
};

}  // namespace nu::engine::minimax

#endif
