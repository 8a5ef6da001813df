#ifndef NU_ENGINE_LEAST_SQUARES_ROUND_LEAST_SQUARES_H
#define NU_ENGINE_LEAST_SQUARES_ROUND_LEAST_SQUARES_H

#include "nu/engine/base/floating_point.h"
#include "nu/engine/least_squares/damped_gauss_newton.h"

namespace nu::engine::least_squares {

// A circle in a plane (D = 2) or a sphere (D = 3), with coordinates along orthonormal axes and relative to a point M
// among the data. axis[0] points roughly from the centre to M. The centre is M - height * axis[0] + the sum of
// shift[j] * axis[j] over the other axes; the radius is height + rise.
template<int D>
struct RoundModel {
  Vec3 axis[D];
  double mean[D] = {};   // M along the axes, from the origin of the blocks
  double shift[D] = {};  // shift[0] is not used
  double height = 0.0;
  double rise = 0.0;

  // The same M along other axes.
  void TurnAxes(const Vec3 (&axes)[D]) {
    Vec3 place;
    for (int j = 0; j < D; ++j) place = place + mean[j] * axis[j];
    for (int j = 0; j < D; ++j) {
      axis[j] = axes[j];
      mean[j] = Dot(place, axes[j]);
    }
  }
  // Puts the centre at these coordinates from M and turns the axes so that axis[0] points from there to M.
  void PlaceCentre(const double (&centre)[D]);
};

// Least-squares circle or sphere: the centre and radius that minimise the sum of (distance from centre - radius)^2.
// The mathematics is at the top of the source.
template<int D>
class RoundLeastSquares {
 public:
  // A point's coordinates are its components along the axes; a circle does not see what is across its plane.
  RoundLeastSquares(PointBlocks& points, const Vec3 (&axes)[D]);

  // From the points of the blocks: the algebraic fit; of many points the fit of a sample of them and one step. False
  // when the points do not determine it or are not finite.
  bool Start(PointView points);

  // In the unit of the points; the centre is relative to the origin of the blocks.
  Vec3 Centre() const;
  double Radius() const { return (m_model.height + m_model.rise) / m_points.Scale(); }
  // Moves the centre, for example onto a round value, and keeps the radius.
  void MoveCentre(const Vec3& centre);

  // Gauss-Newton as the rule says. Where it ends at growth, or its steps shrink slowly, damped Newton steps go on to
  // the optimum; all steps count. Unsolvable, too, when what is found is as straight as rounding can tell.
  GaussNewtonEnd Run(const GaussNewtonRule& rule);

  // For RunGaussNewton.
  GaussNewtonStep SolveStep();
  void TakeStep();

  // From the current circle or sphere; known already after a step that was not taken.
  Deviations DeviationsNow();

 private:
  static constexpr int kUnknowns = D + 1;

  using System = StepSystem<kUnknowns>;

  void PlaceCentre(const double (&centre)[D], double meanSquare);
  bool StartFromSample(PointView points);
  bool FitSample(double& sumSquares);
  bool StartFromAll();
  GaussNewtonEnd Settle(GaussNewtonRule rule, long used);
  bool IsRound() const;

  PointBlocks& m_points;
  RoundModel<D> m_model;
  double m_spread = 0.0;  // sum of the squared distances from M
  double m_step[kUnknowns] = {};
  double m_squaredLength = kInfinity;  // of the last step
  double m_slowness = 0.0;             // the last squared length over the one before
  Deviations m_deviations;
  bool m_deviationsAreCurrent = false;
  bool m_isSampled = false;            // the start is from a sample
  bool m_atRoundingLevel = false;      // the last step was
  double m_squaredLengthBefore = 0.0;  // of the step before the last one, the one of the start included
  LastStep m_lastStep;
};

extern template class RoundLeastSquares<2>;
extern template class RoundLeastSquares<3>;

}  // namespace nu::engine::least_squares

#endif
