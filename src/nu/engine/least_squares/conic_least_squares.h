#ifndef NU_ENGINE_LEAST_SQUARES_CONIC_LEAST_SQUARES_H
#define NU_ENGINE_LEAST_SQUARES_CONIC_LEAST_SQUARES_H

#include "nu/engine/least_squares/conic_kernels.h"
#include "nu/engine/least_squares/conic_unknowns.h"
#include "nu/engine/least_squares/gauss_newton.h"
#include "nu/engine/points/form_statistics.h"
#include "nu/engine/points/point_blocks.h"
#include "nu/engine/shapes/conic_equation.h"

namespace nu::engine::least_squares {

// A conic in space: the origin of its frame, relative to that of the blocks, and the direction of its x axis. The curve
// and the origin are in the unit of the points.
template<class Curve>
struct PlacedConic {
  Curve curve;
  Vec3 origin;
  Vec3 axis;
};

// Least-squares conic: the one that minimises the sum of the squared distances from it. The mathematics is at the top
// of the source.
template<class Curve>
class ConicLeastSquares {
 public:
  ConicLeastSquares(PointBlocks& points, const ConicFrame& frame);

  // Places the conic; false when no distances from it can be found.
  bool Start(const ConicEquation& equation);
  const ConicEquation& Equation() const { return m_now; }
  const ConicFrame& Frame() const { return m_frame; }
  double SumSquares() const { return m_model.sumSquares; }
  // False when the conic is none of this kind.
  bool Find(PlacedConic<Curve>& conic) const { return Place(m_now, conic); }

  // For RunGaussNewton. The squared length is that of the undamped step in the parameters of the conic, in the unit of
  // the points; a rotation counts by its effect on them. Not solvable is a step from an optimum that is no conic of
  // this kind.
  GaussNewtonStep SolveStep();
  void TakeStep();

  Deviations DeviationsNow();

 private:
  static constexpr int kUnknowns = kUnknownsOf<Curve>;
  using Model = SecondOrderModel<kUnknowns>;

  ConicView ViewOf(const ConicEquation& equation) const;
  bool Sum(const ConicEquation& equation, Model& model);
  bool Place(const ConicEquation& equation, PlacedConic<Curve>& conic) const;
  double Rounding() const;
  void AdaptRadius(double sumSquares);
  bool Descend();
  bool IsIdle();

  PointBlocks& m_points;
  ConicFrame m_frame;
  double m_rounding = 0.0;  // the sum of squares that rounding errors of the coordinates make
  bool m_started = false;
  // The best conic so far, what the sum of squares is around it, and how far steps from there may go.
  ConicEquation m_best;
  Model m_model;
  TrustRegion<kUnknowns> m_region;
  double m_radius = 0.0;
  // The next one, by a step whose effect is not known yet if it is pending.
  ConicEquation m_now;
  double m_step[kUnknowns] = {};
  typename TrustRegion<kUnknowns>::Step m_predicted;
  bool m_isPending = false;
  bool m_isExact = false;  // with second derivatives
  int m_steps = 0;
  double m_earlier = 0.0;  // the sum of squares some steps ago
};

extern template class ConicLeastSquares<Ellipse2>;
extern template class ConicLeastSquares<Hyperbola2>;
extern template class ConicLeastSquares<Parabola2>;

}  // namespace nu::engine::least_squares

#endif
