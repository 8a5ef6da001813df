#ifndef NU_SURFACES_INTERNAL_CONE_LEAST_SQUARES_H
#define NU_SURFACES_INTERNAL_CONE_LEAST_SQUARES_H

#include "nu/geometry/internal/form_statistics.h"
#include "nu/geometry/internal/gauss_newton.h"
#include "nu/geometry/internal/point_blocks.h"

namespace nu::internal {

// A cone seen from a point M among the data. u points from the axis to M, v = w x u. The axis runs along w through
// M - height * u, where the cone's radius times the cosine of the angle is rise + height * cosine; along w the radius
// grows by the tangent of the angle. All of it stays of the size of the data when the apex is far away.
struct ConeModel {
  Vec3 pivot;  // M, relative to the origin of the blocks and scaled as they are
  Vec3 u;
  Vec3 v;
  Vec3 w;
  double height = 0.0;
  double rise = 0.0;   // of the surface over M, along its normal
  double angle = 0.0;  // radians, between -90 and 90 degrees
  double foot = 0.0;   // along the generator from M: about where the mean of the points' feet is
  // Points behind the apex count from the nappe there; otherwise from the one that holds M, as if it went on.
  bool bothNappes = false;
};

// The cone with this unit direction whose axis passes through pivot + toAxis; the radius is that around there.
ConeModel ConeAbout(const Vec3& pivot, const Vec3& direction, const Vec3& toAxis, double radius, double angle);

// Least-squares cone: the apex, axis and angle that minimise the sum of squared distances from the surface, from a
// start that is given. The mathematics is at the top of the source.
class ConeLeastSquares {
 public:
  explicit ConeLeastSquares(PointBlocks& points) : m_points(points) {}

  void Place(const ConeModel& model);
  const ConeModel& Model() const { return m_model; }

  // For RunGaussNewton. The squared length is that of the axis' shift across and of what its turn and the change of
  // the angle move at the points.
  GaussNewtonStep SolveStep();
  void TakeStep();

  // Goes downhill by at most so many steps, until one is not worth its pass. False when there were not enough of them.
  bool Descend(int mostSteps);

  // From the current cone; known already after a step that was not taken.
  Deviations DeviationsNow();
  // Whether the points determined all six parameters when the last step was solved.
  bool Determined() const { return m_determined; }
  // Sum of the squared deviations that rounding errors of the coordinates make.
  double RoundingLevel() const;
  // Mean square of the distances of the points from M; known after a step was solved.
  double MeanSquare() const { return m_system.spread / static_cast<double>(m_points.Size()); }

 private:
  static constexpr int kUnknowns = 6;

  struct System {
    double product[kUnknowns][kUnknowns];
    double right[kUnknowns];
    double sumSquares = 0.0;
    double spread = 0.0;  // sum of the squared distances from M
    double foot = 0.0;    // mean of the feet's coordinates along the generator, from the model's
  };

  System SumSystem();
  System SumOneNappe();
  System SumByRows();
  bool Solve(double (&step)[kUnknowns]);
  bool SolveByRows(double (&step)[kUnknowns]);
  void Damp(double (&step)[kUnknowns]) const;
  void AdaptDamping(double sumSquares);
  void TurnStrip();
  void MoveSphere();
  void FindDeviationsNow();

  PointBlocks& m_points;
  ConeModel m_model;
  // The best place so far, to which a step that led uphill returns, its equations, and how much steps are shortened.
  ConeModel m_best;
  System m_system;
  bool m_hasBest = false;
  double m_damping = 0.0;
  double m_predicted = 0.0;  // by how much the last step should have lowered the sum of squares
  double m_step[kUnknowns] = {};
  bool m_determined = false;
  Deviations m_deviations;
  bool m_deviationsAreCurrent = false;
};

}  // namespace nu::internal

#endif
