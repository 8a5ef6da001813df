#include "nu/numerics/internal/cubature.h"

#include <algorithm>
#include <cmath>
#include <limits>

// Integrals over several dimensions are iterated: the integrand over x is the integral over y, and so on inwards. An
// inner integral takes a share of the outer goal and hands its error estimate on with its value; the outer rule
// integrates that too, so the final estimate holds them all.

namespace nu::internal {

namespace {

constexpr double kEpsilon = std::numeric_limits<double>::epsilon();
// No tolerance below this is aimed at: it is four times what rounding costs one integral, so that three can be nested.
constexpr double kLeastTolerance = 16.0 * kEpsilon;
// Of the outer goal. Its noise stays invisible to the outer rule, whose estimates magnify it by up to ten.
constexpr double kInnerShare = 1.0 / 16.0;
// Three halvings a level: the customary limit of 20 levels then goes down to the resolution of doubles.
constexpr long kHalvingsPerLevel = 3;
// What a host may ask for at most; there is nothing to halve beyond.
constexpr long kMostLevels = 40;

// Panels at the start and samples for each level, by the number of dimensions. On a line, 128 panels and three further
// halvings where anything stirs find peaks of 1/5000 of the interval; over an area and a volume that cannot be paid.
struct Effort {
  int panels;
  int probeHalvings;
  int confirmations;
  long samplesPerLevel;
};
constexpr Effort kLine = {128, 4, 3, 1L << 18};
constexpr Effort kArea = {16, 8, 0, 1L << 21};
constexpr Effort kVolume = {4, 14, 0, 1L << 22};

QuadratureLimits LimitsOf(const Effort& effort, long maxIter) {
  const long levels = std::clamp(maxIter, 0L, kMostLevels);
  return {effort.panels, effort.probeHalvings, effort.confirmations, levels * kHalvingsPerLevel,
          std::max(levels, 1L) * effort.samplesPerLevel};
}

// NaN counts as the least.
QuadratureGoal GoalOf(double tol) {
  const double tolerance = tol > kLeastTolerance ? tol : kLeastTolerance;
  return {tolerance, tolerance, 0.0};
}

// What is left of the goal for the integrals that are the samples over a width. Their rounding errors must pass:
// whether they matter is decided outside, where larger values may drown them.
QuadratureGoal InnerGoal(const QuadratureGoal& goal, double width) {
  return {kInnerShare * goal.absolute / width, std::max(kInnerShare * goal.ofValue, kLeastTolerance), kLeastTolerance};
}

// Inner: Quadrature(double x, const QuadratureGoal&).
template<class Inner>
Quadrature IntegrateOuter(double a, double b, const QuadratureGoal& goal, QuadratureLimits& limits,
                          const Inner& inner) {
  const QuadratureGoal innerGoal = InnerGoal(goal, std::fabs(b - a));
  QuadratureEnd failure = QuadratureEnd::converged;
  const auto slice = [&](double x) -> Sample {
    if (failure != QuadratureEnd::converged) return {std::numeric_limits<double>::quiet_NaN()};
    const Quadrature q = inner(x, innerGoal);
    failure = q.end;
    return {q.end == QuadratureEnd::converged ? q.value : std::numeric_limits<double>::quiet_NaN(), q.error};
  };
  Quadrature q = Integrate(slice, a, b, goal, limits);
  if (failure != QuadratureEnd::converged) q.end = failure;
  return q;
}

}  // namespace

Quadrature IntegrateLine(const Function1& f, double ax, double bx, double tol, long maxIter) {
  QuadratureLimits limits = LimitsOf(kLine, maxIter);
  return Integrate([&](double x) -> Sample { return {f(x)}; }, ax, bx, GoalOf(tol), limits);
}

Quadrature IntegrateArea(const Function2& f, const Bounds2& bounds, double tol, long maxIter) {
  QuadratureLimits limits = LimitsOf(kArea, maxIter);
  return IntegrateOuter(bounds.ax, bounds.bx, GoalOf(tol), limits, [&](double x, const QuadratureGoal& goal) {
    return Integrate([&](double y) -> Sample { return {f(x, y)}; }, bounds.ay(x), bounds.by(x), goal, limits);
  });
}

Quadrature IntegrateVolume(const Function3& f, const Bounds3& bounds, double tol, long maxIter) {
  QuadratureLimits limits = LimitsOf(kVolume, maxIter);
  return IntegrateOuter(bounds.ax, bounds.bx, GoalOf(tol), limits, [&](double x, const QuadratureGoal& goalX) {
    return IntegrateOuter(bounds.ay(x), bounds.by(x), goalX, limits, [&](double y, const QuadratureGoal& goalY) {
      const auto line = [&](double z) -> Sample { return {f(x, y, z)}; };
      return Integrate(line, bounds.az(x, y), bounds.bz(x, y), goalY, limits);
    });
  });
}

}  // namespace nu::internal
