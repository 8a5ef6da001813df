#include "nu/engine/quadrature/cubature.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "nu/engine/base/floating_point.h"
#include "nu/engine/quadrature/break_memory.h"

// Integrals over several dimensions are iterated: the integrand over x is the integral over y, and so on inwards. An
// inner integral takes a share of the outer goal and hands its error estimate on with its value; the outer rule
// integrates that too, so the final estimate holds them all.
//
// The breaks of an inner integral move with the outer variables, and leave its interval. Lines therefore pass the
// places of their breaks on to their neighbours. The lines of an outer panel may have known fewer breaks than later
// ones, so the panel is sampled once more before its error is believed.

namespace nu::engine::quadrature {

namespace {

// No tolerance below this is aimed at: it is four times what rounding costs one integral, so that three can be nested.
constexpr double kLeastTolerance = 16.0 * kEpsilon;
// The inner integrals take this share of the outer goal. The outer rule, whose estimates magnify noise by up to ten,
// then does not see theirs.
constexpr double kInnerShare = 1.0 / 16.0;
// Three halvings a level: the customary limit of 20 levels then goes down to the resolution of doubles.
constexpr long kHalvingsPerLevel = 3;
// What a host may ask for at most; there is nothing to halve beyond.
constexpr long kMostLevels = 40;

// Panels at the start and samples for each level, by the number of dimensions. On a line, 128 panels and three further
// halvings of every rough panel find peaks of 1/5000 of the interval; over an area or a volume that costs too much.
struct Effort {
  int dimensions;
  int panels;
  int probeHalvings;
  int confirmations;
  long samplesPerLevel;
};
constexpr Effort kLine = {1, 128, 2, 3, 1L << 18};
constexpr Effort kArea = {2, 16, 8, 0, 1L << 19};
constexpr Effort kVolume = {3, 4, 14, 0, 1L << 21};

// Slices that are parallel to an axis and thinner than the distance of samples would be missed by all lines together.
// Before an area or a volume is integrated, lines through it at these shares are searched for breaks, where all others
// then look.
constexpr double kScouts[] = {0.28571931, 0.66180339};
constexpr long kScoutSamples = 1L << 14;

QuadratureLimits LimitsOf(const Effort& effort, long maxIter) {
  const long levels = std::clamp(maxIter, 0L, kMostLevels);
  return {effort.dimensions,          effort.panels,
          effort.probeHalvings,       effort.confirmations,
          levels * kHalvingsPerLevel, std::max(levels, 1L) * effort.samplesPerLevel};
}

// A NaN counts as the least tolerance.
QuadratureGoal GoalOf(double tol) {
  const double tolerance = tol > kLeastTolerance ? tol : kLeastTolerance;
  return {tolerance, tolerance, 0.0};
}

// What is left of the goal for the integrals that are the samples over a width. Their rounding errors must pass:
// whether they matter is decided outside, where larger values may drown them.
QuadratureGoal InnerGoal(const QuadratureGoal& goal, double width) {
  return {kInnerShare * goal.absolute / width, std::max(kInnerShare * goal.ofValue, kLeastTolerance), kLeastTolerance};
}

// Inner: Quadrature(double x, const QuadratureGoal&). An inner integral that is not finite may be a singularity that x
// hit.
template<class Inner>
Quadrature IntegrateOuter(double a, double b, const QuadratureGoal& goal, QuadratureLimits& limits, const Inner& inner,
                          const Surroundings& surroundings) {
  const QuadratureGoal innerGoal = InnerGoal(goal, std::fabs(b - a));
  QuadratureEnd failure = QuadratureEnd::converged;
  const auto slice = [&](double x) -> Sample {
    if (failure != QuadratureEnd::converged) return {kQuietNaN};
    const Quadrature q = inner(x, innerGoal);
    if (q.end != QuadratureEnd::notFinite) failure = q.end;
    return {q.end == QuadratureEnd::converged ? q.value : kQuietNaN, q.error};
  };
  Quadrature q = Integrate(slice, a, b, goal, limits, surroundings);
  if (failure != QuadratureEnd::converged) q.end = failure;
  return q;
}

// The breaks along a line, sampled as densely as if it were integrated alone.
Places BreaksAlong(const Integrand& f, double a, double b, QuadratureLimits& limits) {
  QuadratureLimits own = {limits.dimensions,   kLine.panels,        kArea.probeHalvings,
                          kLine.confirmations, kLine.confirmations, kScoutSamples};
  const long before = own.samples;
  Places found;
  Integrate(f, a, b, {kInfinity, 0.0, 0.0}, own, {.found = &found});
  limits.samples -= before - own.samples;
  return found;
}

double Between(double a, double b, double share) {
  return a * (1.0 - share) + b * share;
}

}  // namespace

Quadrature IntegrateLine(const Function1& f, double ax, double bx, double tol, long maxIter) {
  QuadratureLimits limits = LimitsOf(kLine, maxIter);
  return Integrate([&](double x) -> Sample { return {f(x)}; }, ax, bx, GoalOf(tol), limits);
}

Quadrature IntegrateArea(const Function2& f, const Bounds2& bounds, double tol, long maxIter) {
  if (bounds.ax == bounds.bx) return {};
  if (!std::isfinite(bounds.ax) || !std::isfinite(bounds.bx)) return {QuadratureEnd::notFinite};
  QuadratureLimits limits = LimitsOf(kArea, maxIter);
  BreakMemory lines;
  if (!lines.MakeRoom()) return {QuadratureEnd::noMemory};
  Surroundings outer = {.recheck = true};
  for (double share : kScouts) {
    const double x = Between(bounds.ax, bounds.bx, share);
    const auto alongX = [&](double at) -> Sample { return {f(at, Between(bounds.ay(at), bounds.by(at), share))}; };
    const auto alongY = [&](double y) -> Sample { return {f(x, y)}; };
    outer.expected.Add(BreaksAlong(alongX, bounds.ax, bounds.bx, limits));
    lines.Note(x, BreaksAlong(alongY, bounds.ay(x), bounds.by(x), limits));
  }
  const auto inner = [&](double x, const QuadratureGoal& goal) {
    const auto line = [&](double y) -> Sample { return {f(x, y)}; };
    Places found;
    const Quadrature q =
        Integrate(line, bounds.ay(x), bounds.by(x), goal, limits, {.expected = lines.Near(x), .found = &found});
    lines.Note(x, found);
    return q;
  };
  return IntegrateOuter(bounds.ax, bounds.bx, GoalOf(tol), limits, inner, outer);
}

namespace {

// The iterated integral over a volume, and what its slices at one x and its lines at one x and y learn of each other.
class Volume {
 public:
  Volume(const Function3& f, const Bounds3& bounds, QuadratureLimits& limits)
      : m_f(f), m_bounds(bounds), m_limits(limits) {}

  bool MakeRoom() { return m_slices.MakeRoom() && m_lines.MakeRoom() && m_linesBefore.MakeRoom(); }

  Quadrature Run(const QuadratureGoal& goal) {
    Surroundings outer = {.recheck = true};
    for (double share : kScouts) Scout(share, &outer.expected);
    const auto slice = [&](double x, const QuadratureGoal& goalX) { return Slice(x, goalX); };
    return IntegrateOuter(m_bounds.ax, m_bounds.bx, goal, m_limits, slice, outer);
  }

 private:
  double YAt(double x, double share) const { return Between(m_bounds.ay(x), m_bounds.by(x), share); }
  double ZAt(double x, double y, double share) const { return Between(m_bounds.az(x, y), m_bounds.bz(x, y), share); }

  // Searches one line in each direction.
  void Scout(double share, Places* expected) {
    const double x = Between(m_bounds.ax, m_bounds.bx, share);
    const double y = YAt(x, share);
    const auto alongX = [&](double at) -> Sample {
      const double yAt = YAt(at, share);
      return {m_f(at, yAt, ZAt(at, yAt, share))};
    };
    const auto alongY = [&](double at) -> Sample { return {m_f(x, at, ZAt(x, at, share))}; };
    const auto alongZ = [&](double at) -> Sample { return {m_f(x, y, at)}; };
    expected->Add(BreaksAlong(alongX, m_bounds.ax, m_bounds.bx, m_limits));
    m_slices.Note(x, BreaksAlong(alongY, m_bounds.ay(x), m_bounds.by(x), m_limits));
    m_linesBefore.Note(y, BreaksAlong(alongZ, m_bounds.az(x, y), m_bounds.bz(x, y), m_limits));
  }

  Quadrature Slice(double x, const QuadratureGoal& goal) {
    if (!m_lines.IsEmpty()) {
      std::swap(m_lines, m_linesBefore);
      m_lines.Clear();
    }
    Places found;
    const auto line = [&](double y, const QuadratureGoal& goalY) { return Line(x, y, goalY); };
    const Surroundings surroundings = {.expected = m_slices.Near(x), .found = &found, .recheck = true};
    const Quadrature q = IntegrateOuter(m_bounds.ay(x), m_bounds.by(x), goal, m_limits, line, surroundings);
    m_slices.Note(x, found);
    return q;
  }

  Quadrature Line(double x, double y, const QuadratureGoal& goal) {
    Places found;
    Surroundings surroundings = {.expected = m_lines.Near(y), .found = &found};
    surroundings.expected.Add(m_linesBefore.Near(y));
    const auto line = [&](double z) -> Sample { return {m_f(x, y, z)}; };
    const Quadrature q = Integrate(line, m_bounds.az(x, y), m_bounds.bz(x, y), goal, m_limits, surroundings);
    m_lines.Note(y, found);
    return q;
  }

  const Function3& m_f;
  const Bounds3& m_bounds;
  QuadratureLimits& m_limits;
  BreakMemory m_slices;  // the breaks in y of the slices, by x
  BreakMemory m_lines;   // those in z of the lines of this slice, by y
  BreakMemory m_linesBefore;
};

}  // namespace

Quadrature IntegrateVolume(const Function3& f, const Bounds3& bounds, double tol, long maxIter) {
  if (bounds.ax == bounds.bx) return {};
  if (!std::isfinite(bounds.ax) || !std::isfinite(bounds.bx)) return {QuadratureEnd::notFinite};
  QuadratureLimits limits = LimitsOf(kVolume, maxIter);
  Volume volume(f, bounds, limits);
  if (!volume.MakeRoom()) return {QuadratureEnd::noMemory};
  return volume.Run(GoalOf(tol));
}

}  // namespace nu::engine::quadrature
