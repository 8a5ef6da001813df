#ifndef NU_ENGINE_ASSOCIATION_CONSTRAINED_FIT_H
#define NU_ENGINE_ASSOCIATION_CONSTRAINED_FIT_H

#include "nu/engine/association/feature.h"
#include "nu/engine/base/step_monitor.h"
#include "nu/engine/minimax/contacts.h"
#include "nu/engine/points/point_view.h"

// Fits of every feature from a start that is given, with weights, with unknowns that stay as they are, or with all
// points on one side of the feature.
namespace nu::engine::association {

enum class FitCriterion {
  leastSquares,
  zone,           // the least largest absolute deviation; with all points on one side the least largest deviation
  circumscribed,  // circle, sphere, cylinder: the smallest with no point outside
  inscribed,      // the largest with no point inside, held between points
};

enum class PointSide {
  either,
  positive,  // no deviation is below zero
  negative,
};

struct FitProblem {
  PointView points;
  const double* weights = nullptr;  // of least squares: one per point, none negative; without them all are 1
  FitCriterion criterion = FitCriterion::leastSquares;
  PointSide side = PointSide::either;  // of least squares and zones
  UnknownMask fixed = 0;               // a fixed shift keeps the origin, fixed tilts the direction, to the bit
  long mostSteps = 200;
  double tolerance = 0.0;  // a step that moves points on the feature by less is the last; 0 asks for all digits
  StepMonitor monitor;
};

enum class FitEnd {
  converged,  // the first and second derivatives prove an optimum next to the feature
  limitReached,
  cancelled,
  noOptimum,  // no optimum is next to the start, no feature meets the constraints, or a value is not finite
};

struct FittedFeature {
  FitEnd end = FitEnd::noOptimum;
  Feature feature;
  long steps = 0;
  double lastStep = 0.0;   // a length: angles count by what they move at the farthest point
  double objective = 0.0;  // the weighted sum of squares; the largest deviation in question; the size
  Contacts contacts;       // of all criteria but least squares, with coordinates as the points have them
};

// The feature with what is fixed as another one of its kind has it.
Feature HeldAs(const Feature& held, UnknownMask fixed, Feature feature);

// The optimum next to the start. Where the origin may slide along an axis, or in a plane, it goes next to the mean of
// the points.
FittedFeature FitFrom(const FitProblem& problem, const Feature& start);

// The best of the optima next to the start and to others that meet the constraints: with a fixed radius those on either
// side of the same surface and of a patch; with all points on one side those to which the points leave room; with a
// fixed direction the optimum seen along it, which is global; for a torus by least squares the one found without a
// start, or the one next to that. The monitor counts anew for each.
FittedFeature FitNear(const FitProblem& problem, const Feature& start);

}  // namespace nu::engine::association

#endif
