#ifndef NU_ENGINE_LEAST_SQUARES_CONE_LEAST_SQUARES_H
#define NU_ENGINE_LEAST_SQUARES_CONE_LEAST_SQUARES_H

#include "nu/engine/base/elementary.h"
#include "nu/engine/least_squares/damped_gauss_newton.h"
#include "nu/engine/shapes/pivot_frame.h"

namespace nu::engine::least_squares {

// A cone seen from a point M among the data: through M - height * u its radius times the cosine of the angle is
// rise + height * cosine; along w the radius grows by the tangent of the angle. All of it stays of the size of the data
// when the apex is far away.
struct ConeModel : PivotFrame {
  // Of the sphere about M - height * u that touches it.
  double Radius() const { return std::fabs(rise + height * Cos(angle)); }

  double angle = 0.0;  // radians, between -90 and 90 degrees
  double foot = 0.0;   // along the generator from M: about where the mean of the points' feet is
  // Points behind the apex count from the nappe there; otherwise from the one that holds M, as if it went on.
  bool bothNappes = false;
};

// The cone with this unit direction whose axis passes through pivot + toAxis; the radius is that around there.
ConeModel ConeAbout(const Vec3& pivot, const Vec3& direction, const Vec3& toAxis, double radius, double angle);

// The apex, axis and angle that minimise the sum of squared distances from the surface. The mathematics is at the top
// of the source.
struct ConeProblem {
  using Model = ConeModel;
  static constexpr int kUnknowns = 6;
  static constexpr bool kHasSecond = false;
  static constexpr bool kHasRows = true;
  static constexpr double kFirstDamping = 1e-2;
  using System = StepSystem<kUnknowns>;

  static void Complete(ConeModel& model);
  static System Sum(PointBlocks& points, const ConeModel& model);
  static void AddSecond(PointBlocks& points, const ConeModel& model, System& system);
  static TallReduction Reduce(PointBlocks& points, const ConeModel& model);
  static Deviations DeviationsFrom(PointBlocks& points, const ConeModel& model);
  // That of the axis' shift across and of what its turn and the change of the angle move at the points.
  static double SquaredLength(const ConeModel& model, const System& system, const double (&step)[kUnknowns]);
  static void Move(PointBlocks& points, const System& system, const double (&step)[kUnknowns], ConeModel& model);
  static bool IsEnough(const StepGains& gains, double sumSquares);
};

using ConeLeastSquares = DampedGaussNewton<ConeProblem>;
extern template class DampedGaussNewton<ConeProblem>;

}  // namespace nu::engine::least_squares

#endif
