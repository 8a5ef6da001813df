#ifndef NU_GEOMETRY_INTERNAL_GAUSS_NEWTON_H
#define NU_GEOMETRY_INTERNAL_GAUSS_NEWTON_H

#include <algorithm>
#include <cmath>
#include <limits>

namespace nu::internal {

// How the iteration of a feature ends; the features differ in it, and hosts see the difference at small limits.
struct GaussNewtonRule {
  // On the squared length of a step. One below the square of the machine precision asks for all the digits there are:
  // the iteration then ends when steps stop shrinking, whatever the size of the part.
  double tolerance;
  double large;  // stands for the squared step before the first one; the first one counts as a tenth of it
  long limit;    // steps
  // A step below the tolerance ends the iteration: it is taken first, or dropped.
  bool takesLastStep;
  // Any step that is not shorter than the one before ends the iteration, once taken. Otherwise only one that does not
  // move the deviations beyond their rounding errors.
  bool endsAtGrowth;
  // The iteration has failed when it ends with the last permitted step, even by convergence.
  bool endsBeforeLimit;
};

enum class GaussNewtonEnd { converged, limitReached, unsolvable };

struct GaussNewtonStep {
  bool solvable = false;
  double squaredLength = 0.0;    // of those parameters that the rule counts
  bool atRoundingLevel = false;  // moves no deviation by more than some rounding errors
};

// Drives a problem with `GaussNewtonStep SolveStep()`, which finds the step from the current parameters, and
// `void TakeStep()`, which adds it to them.
template<class Problem>
GaussNewtonEnd RunGaussNewton(Problem& problem, const GaussNewtonRule& rule) {
  constexpr double kEpsilon = std::numeric_limits<double>::epsilon();
  // Steps on points that are no circle at all may creep or go round for ever, whatever limit a host passes.
  constexpr long kMostSteps = 100'000;
  const long limit = std::min(rule.limit, kMostSteps);
  const double tolerance = rule.tolerance < kEpsilon * kEpsilon ? 0.0 : rule.tolerance;
  double previous = rule.large;
  double current = 0.1 * rule.large;
  long count = 0;
  bool ended = !(current < previous);
  while (!ended && count < limit) {
    ++count;
    previous = current;
    const GaussNewtonStep step = problem.SolveStep();
    if (!step.solvable || !std::isfinite(step.squaredLength)) return GaussNewtonEnd::unsolvable;
    current = step.squaredLength;
    const bool converged = current < tolerance;
    if (!converged || rule.takesLastStep) problem.TakeStep();
    ended = converged || (!(current < previous) && (rule.endsAtGrowth || step.atRoundingLevel));
  }
  if (!ended || (rule.endsBeforeLimit && count >= limit)) return GaussNewtonEnd::limitReached;
  return GaussNewtonEnd::converged;
}

}  // namespace nu::internal

#endif
