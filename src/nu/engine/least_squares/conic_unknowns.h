#ifndef NU_ENGINE_LEAST_SQUARES_CONIC_UNKNOWNS_H
#define NU_ENGINE_LEAST_SQUARES_CONIC_UNKNOWNS_H

#include "nu/engine/base/floating_point.h"
#include "nu/engine/least_squares/damped_gauss_newton.h"
#include "nu/engine/shapes/conic_equation.h"

// How a fit moves a conic. The mathematics is at the top of the source.
namespace nu::engine::least_squares {

inline constexpr int kConicUnknowns = kMonomials - 1;

// What is moved. `kind` is the one to be fitted; but for a parabola, the equation may be of another during the descent.
struct ConicModel {
  ConicKind kind = ConicKind::none;
  ConicFrame frame;
  ConicEquation equation;
  double gain = kInfinity;  // that the step to this conic predicted
  bool isExact = false;     // steps use the second derivatives
};

using ConicSystem = StepSystem<kConicUnknowns>;

int FixedCoefficient(const ConicModel& model);

// The quadratic part of a parabola counts as an exact square.
ConicCurvature CurvatureOf(const ConicModel& model);

ConicEquation Moved(const ConicModel& model, const double (&step)[kConicUnknowns]);

// Replaces the coefficients, all but the fixed one, by the unknowns of a parabola.
void RestrictToParabola(const ConicModel& model, ConicSystem& system);

}  // namespace nu::engine::least_squares

#endif
