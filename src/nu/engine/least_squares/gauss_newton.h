#ifndef NU_ENGINE_LEAST_SQUARES_GAUSS_NEWTON_H
#define NU_ENGINE_LEAST_SQUARES_GAUSS_NEWTON_H

#include <algorithm>
#include <cmath>

#include "nu/engine/base/elementary.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/base/step_monitor.h"

namespace nu::engine::least_squares {

// An iteration creeps when, at the rate at which what it has to bring down fell over a stretch of steps, the target is
// more than so many steps away, so many times in a row. A stretch of none never creeps.
struct CreepRule {
  int stretch;
  double mostFurther;
  int mostSlow;
};
inline constexpr CreepRule kNoCreeping = {0, 0.0, 0};
inline constexpr CreepRule kPatientRule = {50, 1000.0, 4};

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
  // Steps that creep count as too many.
  CreepRule creeping = kNoCreeping;
  StepMonitor monitor = {};  // sees the sum of squares before each step, and the step before it is taken
};

// `grew`: the rule ends at growth, and a step was not shorter than the one before without being down to rounding.
enum class GaussNewtonEnd { converged, grew, limitReached, unsolvable, cancelled };

struct GaussNewtonStep {
  bool solvable = false;
  double squaredLength = 0.0;    // of those parameters that the rule counts
  bool atRoundingLevel = false;  // moves no deviation by more than some rounding errors
  // In the unit of the points, from the parameters before the step; NaN where the problem does not tell it.
  double sumSquares = kQuietNaN;
};

// Watches what an iteration has to bring down to a target.
class CreepWatch {
 public:
  explicit CreepWatch(const CreepRule& rule) : m_rule(rule) {}

  bool Creeps(double value, double target) {
    m_least = std::min(m_least, value);
    m_largest = std::max(m_largest, value);
    if (m_rule.stretch == 0 || ++m_count % m_rule.stretch != 0) return false;
    const double ahead = Log(m_least / std::max(target, kEpsilon * kEpsilon * m_largest));
    const double gone = Log(m_before / m_least);
    m_slow = gone * m_rule.mostFurther > ahead * m_rule.stretch ? 0 : m_slow + 1;
    m_before = m_least;
    m_least = kInfinity;
    return m_slow >= m_rule.mostSlow;
  }

 private:
  CreepRule m_rule;
  double m_least = kInfinity;
  double m_largest = 0.0;
  double m_before = kInfinity;
  long m_count = 0;
  int m_slow = 0;
};

// Steps on points that are no circle at all may creep or go round for ever, whatever limit a host passes.
inline constexpr long kMostGaussNewtonSteps = 100'000;

// Drives a problem with `GaussNewtonStep SolveStep()`, which finds the step from the current parameters, and
// `void TakeStep()`, which adds it to them; `count` receives the number of steps.
template<class Problem>
GaussNewtonEnd RunGaussNewton(Problem& problem, const GaussNewtonRule& rule, long& count) {
  const long limit = std::min(rule.limit, kMostGaussNewtonSteps);
  const double tolerance = rule.tolerance < kEpsilon * kEpsilon ? 0.0 : rule.tolerance;
  double previous = rule.large;
  double current = 0.1 * rule.large;
  count = 0;
  bool ended = !(current < previous);
  bool grew = false;
  CreepWatch watch(rule.creeping);
  while (!ended && count < limit) {
    ++count;
    previous = current;
    const GaussNewtonStep step = problem.SolveStep();
    if (!step.solvable || !std::isfinite(step.squaredLength)) return GaussNewtonEnd::unsolvable;
    current = step.squaredLength;
    if (!rule.monitor.GoesOn(count, step.sumSquares, std::sqrt(current))) return GaussNewtonEnd::cancelled;
    const bool converged = current < tolerance;
    if (!converged || rule.takesLastStep) problem.TakeStep();
    const bool longer = !converged && !(current < previous);
    grew = longer && !step.atRoundingLevel;
    ended = converged || (longer && (rule.endsAtGrowth || step.atRoundingLevel));
    if (!ended && watch.Creeps(current, tolerance)) return GaussNewtonEnd::limitReached;
  }
  if (!ended || (rule.endsBeforeLimit && count >= limit)) return GaussNewtonEnd::limitReached;
  return grew ? GaussNewtonEnd::grew : GaussNewtonEnd::converged;
}

template<class Problem>
GaussNewtonEnd RunGaussNewton(Problem& problem, const GaussNewtonRule& rule) {
  long count;
  return RunGaussNewton(problem, rule, count);
}

}  // namespace nu::engine::least_squares

#endif
