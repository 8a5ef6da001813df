#ifndef NU_SURFACES_INTERNAL_CYLINDER_LEAST_SQUARES_H
#define NU_SURFACES_INTERNAL_CYLINDER_LEAST_SQUARES_H

#include "nu/geometry/internal/form_statistics.h"
#include "nu/geometry/internal/gauss_newton.h"
#include "nu/geometry/internal/point_blocks.h"

namespace nu::internal {

// A cylinder seen from a point M among the data. u points from the axis to M, v = w x u. The axis runs along w through
// M - height * u; the radius is height + rise.
struct CylinderModel {
  Vec3 pivot;  // M, relative to the origin of the blocks and scaled as they are
  Vec3 u;
  Vec3 v;
  Vec3 w;
  double height = 0.0;
  double rise = 0.0;
};

// The cylinder with this unit direction whose axis passes through pivot + toAxis.
CylinderModel CylinderAbout(const Vec3& pivot, const Vec3& direction, const Vec3& toAxis, double radius);

// Least-squares cylinder: the axis and the radius that minimise the sum of (distance from the axis - radius)^2, from a
// start that is given. The mathematics is at the top of the source.
class CylinderLeastSquares {
 public:
  explicit CylinderLeastSquares(PointBlocks& points) : m_points(points) {}

  void Place(const CylinderModel& model);
  const CylinderModel& Model() const { return m_model; }

  // For RunGaussNewton. The squared length is that of the axis' shift across and of what its turn moves at the points.
  GaussNewtonStep SolveStep();
  void TakeStep();

  // Goes downhill by at most so many steps, until one is not worth its pass. False when there were not enough of them.
  bool Descend(int mostSteps);

  // From the current cylinder; known already after a step that was not taken.
  Deviations DeviationsNow();
  // The mean of the points along the axis, from M; known after a step was solved.
  double MeanAlong() const { return m_system.along; }
  // Whether the points determined all five parameters when the last step was solved.
  bool Determined() const { return m_determined; }
  // Sum of the squared deviations that rounding errors of the coordinates make.
  double RoundingLevel() const;

 private:
  static constexpr int kUnknowns = 5;

  struct System {
    double product[kUnknowns][kUnknowns];
    double right[kUnknowns];
    double sumSquares = 0.0;
    double spread = 0.0;  // sum of the squared distances from M
    double along = 0.0;   // mean of the coordinates along the axis
  };

  System SumSystem();
  bool Solve(double (&step)[kUnknowns]);
  bool SolveByRows(double (&step)[kUnknowns]);
  void Damp(double (&step)[kUnknowns]) const;
  void AdaptDamping(double sumSquares);

  PointBlocks& m_points;
  CylinderModel m_model;
  // The best place so far, to which a step that led uphill returns, its equations, and how much steps are shortened.
  CylinderModel m_best;
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
