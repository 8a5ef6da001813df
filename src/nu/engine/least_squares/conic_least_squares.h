#ifndef NU_ENGINE_LEAST_SQUARES_CONIC_LEAST_SQUARES_H
#define NU_ENGINE_LEAST_SQUARES_CONIC_LEAST_SQUARES_H

#include "nu/engine/least_squares/conic_unknowns.h"

namespace nu::engine::least_squares {

// A conic in space: its lengths as in ConicShape, the origin of its frame, relative to that of the blocks, and the
// direction of its x axis. Lengths are scaled as the blocks are.
struct PlacedConic {
  double a = 0.0;
  double b = 0.0;
  Vec3 origin;
  Vec3 axis;
  double sense = 1.0;  // 1 where the equation, and deviations with it, are negative on the side of the foci, else -1
};

// False when the equation is of another kind than the model.
bool Place(const ConicModel& model, PlacedConic& conic);

// Least-squares conic: the one that minimises the sum of the squared distances from it. The mathematics is at the top
// of the source.
struct ConicProblem {
  using Model = ConicModel;
  static constexpr int kUnknowns = kConicUnknowns;
  static constexpr bool kHasSecond = true;
  static constexpr bool kHasRows = false;
  static constexpr double kFirstDamping = 1e-2;

  static void Complete(Model&) {}
  // The sum of squares is infinite when no distances from the conic can be found.
  static ConicSystem Sum(PointBlocks& points, const Model& model);
  static Deviations DeviationsFrom(PointBlocks& points, const Model& model);
  // In the parameters of the conic; a rotation counts by its effect on them. Infinite is a step to an optimum that is
  // of another kind.
  static double SquaredLength(const Model& model, const ConicSystem& system, const double (&step)[kUnknowns]);
  static void Move(PointBlocks& points, const ConicSystem& system, const double (&step)[kUnknowns], Model& model);
  static bool IsEnough(const StepGains& gains, double sumSquares);
  static bool AreAlike(const Model& one, const Model& other);
};

using ConicLeastSquares = DampedGaussNewton<ConicProblem>;

}  // namespace nu::engine::least_squares

#endif
