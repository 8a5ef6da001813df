#ifndef NU_ENGINE_MINIMAX_CONE_DISTANCE_H
#define NU_ENGINE_MINIMAX_CONE_DISTANCE_H

#include "nu/engine/minimax/minimax.h"
#include "nu/engine/minimax/with_offset.h"
#include "nu/engine/shapes/axis_frame.h"
#include "nu/engine/shapes/incidence.h"

namespace nu::engine::minimax {

// The signed distances of points from a cone, rho cos a - h sin a, as a model of minimax.h. It is seen from a pivot on
// the cone in the middle of the points, so that nothing is lost on a narrow sector or far from the apex. The
// mathematics is at the top of the source.
struct ConeDistance {
  static constexpr int kUnknowns = 6;
  static constexpr int kStrata = 32;

  AxisFrame frame;      // at the pivot; x is the outward normal there, z along the generator
  double angle = 0.0;   // semi-angle, radians; below 0 where the cone narrows along z
  double cosine = 1.0;  // of it
  double sine = 0.0;
  double radius = 0.0;  // distance of the pivot from the axis
  // The largest sine of the angle around the axis among the points, 1 - cosine of it, and way along a generator.
  double breadth = 1.0;
  double bulge = 1.0;
  double length = 1.0;
  // Points behind the apex count from the nappe there; otherwise from the one of the pivot, as if it went on.
  bool bothNappes = false;

  // The semi-angle is not negative, and the direction points to the nappe of the pivot.
  Cone3 Cone() const;
  bool IsFinite() const;

  void Deviations(const PointBlock& block, double* deviation, double& smallest, double& largest) const;
  void Gradients(const PointBlock& block, double* deviation, double (*gradient)[kMostRows]) const;
  void AddCurvature(const Vec3& point, double weight, double (&sum)[kUnknowns][kUnknowns]) const;
  ConeDistance Moved(const double (&step)[kUnknowns]) const;
  int Stratum(const Vec3& point) const;
};

// With points on both nappes a shift of the apex does not level the deviations.
using NappesDistance = WithOffset<ConeDistance>;

// About a cone, with the scale of the unknowns for these points, and the extreme deviations from it. A cone of both
// nappes with no points behind its apex is one of a single nappe.
ConeDistance DistanceFromCone(PointBlocks& points, const Cone3& cone, ValueRange& deviations);

}  // namespace nu::engine::minimax

#endif
