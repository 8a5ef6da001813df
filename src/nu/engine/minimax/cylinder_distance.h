#ifndef NU_ENGINE_MINIMAX_CYLINDER_DISTANCE_H
#define NU_ENGINE_MINIMAX_CYLINDER_DISTANCE_H

#include "nu/engine/least_squares/cylinder_least_squares.h"
#include "nu/engine/minimax/minimax.h"
#include "nu/engine/shapes/incidence.h"

namespace nu::engine::minimax {

// The distances of points from an axis, as a model of minimax.h. The unknowns are the shift (a, b) across and the tilt,
// as the distance that the axis moves at `half`, half of the length of the points along it, from the frame's origin.
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

// The signed distances of points from a cylinder, as a model of minimax.h: the least-squares model, whose pivot is on
// the cylinder in the middle of the points at the start. The unknowns are its own, scaled to lengths at the points.
struct CylinderDistance : CylinderModel {
  static constexpr int kUnknowns = 5;
  static constexpr int kStrata = 32;

  double half = 1.0;    // half of the length of the points along the axis
  double across = 1.0;  // what unknowns are multiplied by
  double along = 1.0;

  // The largest 1 - cos of the angle around the axis between the pivot and a point.
  double Bulge() const { return 1.0 / along; }

  void Deviations(const PointBlock& block, double* deviation, double& smallest, double& largest) const;
  void Gradients(const PointBlock& block, double* deviation, double (*gradient)[kMostRows]) const;
  void AddCurvature(const Vec3& point, double weight, double (&sum)[kUnknowns][kUnknowns]) const;
  CylinderDistance Moved(const double (&step)[kUnknowns]) const;
  int Stratum(const Vec3& point) const;
};

// The cylinder about an axis with the scale of its unknowns for these points. `towards` points from the axis to among
// the points; where that has no meaning any direction will do.
CylinderDistance DistanceFromCylinder(PointBlocks& points, const Cylinder3& cylinder, const Vec3& towards);

}  // namespace nu::engine::minimax

#endif
