#ifndef NU_GEOMETRY_INTERNAL_ROUND_LEAST_SQUARES_H
#define NU_GEOMETRY_INTERNAL_ROUND_LEAST_SQUARES_H

#include "nu/geometry/internal/form_statistics.h"
#include "nu/geometry/internal/gauss_newton.h"
#include "nu/geometry/internal/point_blocks.h"

namespace nu::internal {

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
};

// Least-squares circle or sphere: the centre and radius that minimise the sum of (distance from centre - radius)^2.
// The mathematics is at the top of the source.
template<int D>
class RoundLeastSquares {
 public:
  // A point's coordinates are its components along the axes; a circle does not see what is across its plane.
  RoundLeastSquares(PointBlocks& points, const Vec3 (&axes)[D]);

  // The algebraic fit. False when the points do not determine it or are not finite.
  bool Start();

  // In the unit of the points; the centre is relative to the origin of the blocks.
  Vec3 Centre() const;
  double Radius() const;
  // Moves the centre, for example onto a round value, and keeps the radius.
  void MoveCentre(const Vec3& centre);

  // For RunGaussNewton. The squared length is that of the centre's step; for a circle the radius counts too.
  GaussNewtonStep SolveStep();
  void TakeStep();

  // From the current circle or sphere; known already after a step that was not taken.
  Deviations DeviationsNow();

 private:
  static constexpr int kUnknowns = D + 1;

  struct System {
    double product[kUnknowns][kUnknowns];
    double right[kUnknowns];
  };

  void TurnAxes(const Vec3 (&axes)[D]);
  void PlaceCentre(const double (&centre)[D], double meanSquare);
  System SumSystem();
  bool SolveByRows(double (&step)[kUnknowns]);

  PointBlocks& m_points;
  RoundModel<D> m_model;
  double m_spread = 0.0;  // sum of the squared distances from M
  double m_step[kUnknowns] = {};
  Deviations m_deviations;
  bool m_deviationsAreCurrent = false;
};

extern template class RoundLeastSquares<2>;
extern template class RoundLeastSquares<3>;

}  // namespace nu::internal

#endif
