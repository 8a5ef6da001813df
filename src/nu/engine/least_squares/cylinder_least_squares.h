#ifndef NU_ENGINE_LEAST_SQUARES_CYLINDER_LEAST_SQUARES_H
#define NU_ENGINE_LEAST_SQUARES_CYLINDER_LEAST_SQUARES_H

#include "nu/engine/least_squares/damped_gauss_newton.h"
#include "nu/engine/shapes/pivot_frame.h"

namespace nu::engine::least_squares {

// A cylinder seen from a point M among the data.
struct CylinderModel : PivotFrame {
  double Radius() const { return height + rise; }
  Vec3 AxisPoint() const { return pivot - height * u; }

  // By changes of the rise and of the height, by a shift of the axis along v, and by its tilts about M towards u and v.
  void Move(const double (&step)[5]);  // rise, shift, height, tilts
};

// The cylinder with this unit direction whose axis passes through pivot + toAxis.
CylinderModel CylinderAbout(const Vec3& pivot, const Vec3& direction, const Vec3& toAxis, double radius);

// The axis and the radius that minimise the sum of (distance from the axis - radius)^2. The mathematics is at the top
// of the source.
struct CylinderProblem {
  using Model = CylinderModel;
  static constexpr int kUnknowns = 5;
  static constexpr bool kHasSecond = false;
  static constexpr bool kHasRows = true;
  static constexpr double kFirstDamping = 1e-2;
  using System = StepSystem<kUnknowns>;

  static void Complete(CylinderModel&) {}
  static System Sum(PointBlocks& points, const CylinderModel& model);
  static void AddSecond(PointBlocks& points, const CylinderModel& model, System& system);
  static TallReduction Reduce(PointBlocks& points, const CylinderModel& model);
  static Deviations DeviationsFrom(PointBlocks& points, const CylinderModel& model);
  // That of the axis' shift across and of what its turn moves at the points.
  static double SquaredLength(const CylinderModel& model, const System& system, const double (&step)[kUnknowns]);
  static void Move(PointBlocks&, const System&, const double (&step)[kUnknowns], CylinderModel& model) {
    model.Move(step);
  }
  static bool IsEnough(const StepGains& gains, double sumSquares);
};

using CylinderLeastSquares = DampedGaussNewton<CylinderProblem>;
extern template class DampedGaussNewton<CylinderProblem>;

}  // namespace nu::engine::least_squares

#endif
