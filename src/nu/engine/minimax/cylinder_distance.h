#ifndef NU_ENGINE_MINIMAX_CYLINDER_DISTANCE_H
#define NU_ENGINE_MINIMAX_CYLINDER_DISTANCE_H

#include "nu/engine/minimax/minimax.h"
#include "nu/engine/shapes/axis_frame.h"

namespace nu::engine::minimax {

// The signed distances of points from a cylinder, as a model of minimax.h. It is seen from the apex, the line on it
// that lies in the middle of the points, so that nothing is lost on a narrow strip, however large the radius is. The
// mathematics is at the top of the source.
struct CylinderDistance {
  static constexpr int kUnknowns = 5;
  static constexpr int kStrata = 32;

  AxisFrame frame;  // x points from the axis to the origin, which is on the cylinder; z is along the axis
  double radius = 0.0;
  double half = 1.0;    // half of the length of the points along the axis
  double across = 1.0;  // what unknowns are multiplied by
  double along = 1.0;

  Vec3 AxisPoint() const { return frame.origin - radius * frame.x; }
  // The largest 1 - cos of the angle around the axis between the origin and a point.
  double Bulge() const { return 1.0 / along; }

  void Deviations(const PointBlock& block, double* deviation, double& smallest, double& largest) const;
  void Gradients(const PointBlock& block, double* deviation, double (*gradient)[kMostRows]) const;
  void AddCurvature(const Vec3& point, double weight, double (&sum)[kUnknowns][kUnknowns]) const;
  CylinderDistance Moved(const double (&step)[kUnknowns]) const;
  int Stratum(const Vec3& point) const;
};

// The cylinder about an axis, which is along the unit `direction`, with the scale of its unknowns for these points.
// `towards` points from the axis to among the points; where that has no meaning any direction will do.
CylinderDistance DistanceFromCylinder(PointBlocks& points, const Vec3& axisPoint, const Vec3& direction, double radius,
                                      const Vec3& towards);

}  // namespace nu::engine::minimax

#endif
