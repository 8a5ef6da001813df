#ifndef NU_ENGINE_LEAST_SQUARES_DAMPED_GAUSS_NEWTON_H
#define NU_ENGINE_LEAST_SQUARES_DAMPED_GAUSS_NEWTON_H

#include <algorithm>
#include <cmath>
#include <optional>

#include "nu/engine/base/floating_point.h"
#include "nu/engine/least_squares/gauss_newton.h"
#include "nu/engine/least_squares/learned_curvature.h"
#include "nu/engine/linear/small_cholesky.h"
#include "nu/engine/points/form_statistics.h"
#include "nu/engine/points/small_systems.h"

namespace nu::engine::least_squares {

// The normal equations of a step from a model, and sums over the points. Lengths are scaled as the blocks are.
template<int N>
struct StepSystem {
  double product[N][N];
  double second[N][N] = {};  // what the second derivatives of the deviations add to it, where the feature gives them
  double right[N];
  Deviations deviations;
  double unit = 1.0;    // of the ranges that the walk noted
  double count = 0.0;   // of the points
  double spread = 0.0;  // sum of their squared distances from the pivot of the model
  double along = 0.0;   // mean of their coordinates along the axis, or along the generator

  double MeanSquare() const { return spread / count; }
};

// What a last step makes of the deviations of a large set. Where the step is so short that its equations tell the sum
// of squares, only the blocks are walked in which an extreme may lie.
class LastStep {
 public:
  LastStep() = default;
  // `walk` noted the ranges for `system`. By its equations the step lowers the sum of squares by `gain`; `rate` is its
  // length over that of the step before, which is about the relative error of the equations.
  template<int N>
  LastStep(std::size_t walk, const StepSystem<N>& system, const double (&step)[N], double gain, double rate) {
    const Deviations& d = system.deviations;
    if (!(gain >= 0.0 && rate * gain <= kEpsilon * d.sumSquares)) return;
    constexpr double kRoundings = 16.0 * kEpsilon;
    // No derivative is larger than the root of the sum of its squares over all points.
    double change = kRoundings * (std::sqrt(system.spread) + std::max(std::fabs(d.smallest), std::fabs(d.largest)));
    for (int k = 0; k < N; ++k) change += std::fabs(step[k]) * std::sqrt(system.product[k][k]);
    m_walk = walk;
    m_above = (d.smallest + kRoom * change) / system.unit;
    m_below = (d.largest - kRoom * change) / system.unit;
    m_sumSquares = d.sumSquares - gain;
  }

  // After the step: `find` walks over the points.
  template<class Find>
  Deviations FindDeviations(PointBlocks& points, Find find) const {
    if (m_walk == 0 || m_walk != points.RangedWalk()) return find();
    points.Narrow(m_above, m_below);
    Deviations found = find();
    points.Widen();
    found.sumSquares = m_sumSquares;
    return found;
  }

 private:
  // For both the extreme and the others, and for what is beyond first order.
  static constexpr double kRoom = 4.0;

  std::size_t m_walk = 0;
  double m_above = 0.0, m_below = 0.0;
  double m_sumSquares = 0.0;
};

// What a distance between points may be off by through the rounding errors of their coordinates, with room for a few of
// them. `place` is among the points, `meanSquare` that of their distances from there; lengths are those of the blocks.
inline double RoundingAt(const PointBlocks& points, const Vec3& place, double meanSquare) {
  constexpr double kRoundings = 16.0 * kEpsilon;
  const Vec3 far = points.InCallersFrame(place);
  return kRoundings * (std::sqrt(meanSquare) + points.Scale() * std::sqrt(Dot(far, far)));
}

// Whether an unknown of this size stands out by six standard deviations, those of the best of all directions, from the
// scatter of the points, where that is of the size of rounding errors. Noise above them refuses nothing.
template<int N>
bool StandsOut(const StepSystem<N>& system, int unknown, double size, double rounding) {
  constexpr double kSignificant = 6.0;
  constexpr double kLeast = 1.0 / 16.0;  // of RoundingAt, which has room for several
  constexpr double kMost = 4.0;
  const double degrees = std::max(1.0, system.count - N);
  const double scatter = std::sqrt(system.deviations.sumSquares / degrees);
  double unit[N] = {};
  unit[unknown] = 1.0;
  double column[N];
  if (!(SolvePositive(system.product, unit, column) > 0.0)) return true;
  return size > kSignificant * std::clamp(scatter, kLeast * rounding, kMost * rounding) * std::sqrt(column[unknown]);
}

// By how much two steps of a descent should lower the sum of squares.
struct StepGains {
  double now = 0.0;
  double before = kInfinity;  // for the first step
  bool damped = false;
};

// Least squares by Gauss-Newton steps from a start that is given. The normal equations drive the steps; their
// right-hand side is the gradient itself, so they do not limit the accuracy of the result. Where their columns are
// nearly dependent the rows are reduced by orthogonal steps instead. A step that leads uphill is taken back and
// shortened (D. W. Marquardt, J. SIAM 11, 1963). Where a feature gives its second derivatives, and they show a valley,
// the steps are Newton's: on points that are no such feature Gauss-Newton creeps. Where they show a ridge, or next to
// no curvature, a step follows them as far as a trust region allows, which grows as long as they hold (J. J. More, D.
// C. Sorensen, SIAM J. Sci. Stat. Comput. 4, 1983). A feature may also add them only where plain steps creep: from
// there on all steps are Newton's, within a trust region.
//
// A feature is static functions; lengths in it are scaled as the blocks are:
//
//   Model, kUnknowns                         what is moved, and by how many parameters
//   kHasSecond                               whether Sum gives the second derivatives
//   kHasRows                                 whether there is Reduce; without it nearly dependent columns are damped
//   kFirstDamping                            after the first step that leads uphill
//   void Complete(Model&)                    fills in what steps need and a start does not give
//   StepSystem<kUnknowns> Sum(points, model)
//   TallReduction Reduce(points, model)      the finished rows (columns | deviation)
//   Deviations DeviationsFrom(points, model)
//   double SquaredLength(model, system, step)
//   void Move(points, system, step, Model&)
//   bool IsEnough(StepGains, sumSquares)     whether a descent ends with this step
//   void AddSecond(points, model, system)    optional: adds the second derivatives to a system without them, which is
//                                            worth a pass where plain steps creep
//   bool AreAlike(model, model)              optional: whether both have the same unknowns and second derivatives, so
//                                            that steps from one to the other tell what these leave out
template<class Feature>
class DampedGaussNewton {
 public:
  explicit DampedGaussNewton(PointBlocks& points) : m_points(points) { m_points.NoteRanges(); }

  // After so many plain steps that led there.
  void Place(const typename Feature::Model& model, int plainSteps = 0) {
    m_model = model;
    Feature::Complete(m_model);
    m_hasBest = false;
    m_damping = 0.0;
    m_steps = 0;
    m_isLengthened = false;
    m_usesSecond = false;
    m_reach = kFirstReach;
    m_plainSteps = plainSteps;
    m_learned = {};
    m_squaredLength = 0.0;
    m_lastStep = {};
    m_deviations.reset();
  }

  const typename Feature::Model& Model() const { return m_model; }

  // For RunGaussNewton.
  GaussNewtonStep SolveStep() {
    const System system = Feature::Sum(m_points, m_model);
    m_deviations = system.deviations;
    GaussNewtonStep step;
    if (LeadsUphill(system)) {
      m_model = m_best;
      if (m_usesSecond) {
        m_radius = kLessRadius * std::sqrt(SquaredReach(m_step));
      } else {
        m_isLengthened ? LessReach() : MoreDamping();
      }
      m_deviations.reset();
      m_walk = 0;
    } else {
      if (!std::isfinite(system.deviations.sumSquares)) return step;
      if (m_hasBest) Adapt(system.deviations.sumSquares);
      if constexpr (kLearns) {
        const bool areAlike = m_hasBest && Feature::AreAlike(m_best, m_model);
        areAlike ? m_learned.Learn(m_system, m_step, system) : m_learned.Forget();
      }
      m_best = m_model;
      m_system = system;
      m_walk = m_points.RangedWalk();
      if (m_usesSecond) AddSecond();
      m_hasBest = true;
    }
    double before[kUnknowns];
    std::copy_n(m_step, kUnknowns, before);
    step.solvable = Solve();
    if (Creeps()) {
      m_radius = kFirstRadius * std::sqrt(SquaredReach(m_step));
      m_usesSecond = true;
      AddSecond();
      step.solvable = Solve();
    }
    // Convergence is judged by the full step: a damped one is short without having arrived.
    const double gain = Gain();
    step.squaredLength = SquaredLength();
    m_squaredLengthBefore = m_squaredLength;
    m_squaredLength = step.squaredLength;
    step.sumSquares = m_system.deviations.sumSquares / (m_points.Scale() * m_points.Scale());
    step.atRoundingLevel = gain <= RoundingLevel();
    m_isShortened = m_damping > 0.0;
    if (m_usesSecond) {
      KeepWithinRadius();
    } else if (m_damping > 0.0) {
      Damp();
    }
    m_predicted = PredictedGain();
    // Where the sum is not smooth, every step leads uphill until damping leaves nothing to gain.
    const bool isIdle = m_isShortened && m_predicted <= kIdleGain * m_system.deviations.sumSquares;
    if (Feature::kHasSecond || m_usesSecond) {
      step.atRoundingLevel = step.atRoundingLevel || isIdle;
    } else {
      LengthenAfter(before);
    }
    return step;
  }

  void TakeStep() {
    const double rate = std::sqrt(m_squaredLength / m_squaredLengthBefore);
    m_lastStep = m_isShortened || m_isLengthened ? LastStep() : LastStep(m_walk, m_system, m_step, m_predicted, rate);
    Feature::Move(m_points, m_system, m_step, m_model);
    m_deviations.reset();
  }

  // Goes downhill by at most so many steps, until one is not worth its pass. False when there were not enough of them,
  // or they creep. Trials that are compared with others stay plain: so do the optima that they lead to.
  bool Descend(int mostSteps) {
    m_isTrial = true;
    const bool settled = DescendAnyhow(mostSteps);
    m_isTrial = false;
    return settled;
  }

  // The same, by second derivatives where plain steps creep.
  bool DescendAnyhow(int mostSteps) {
    StepGains gains;
    CreepWatch watch(kPatientRule);
    for (int k = 0; k < mostSteps; ++k) {
      const GaussNewtonStep step = SolveStep();
      if (!step.solvable || !std::isfinite(step.squaredLength) || step.atRoundingLevel) return true;
      gains.now = m_predicted;
      gains.damped = m_isShortened;
      TakeStep();
      if (Feature::IsEnough(gains, m_system.deviations.sumSquares)) return true;
      if (watch.Creeps(gains.now, RoundingLevel())) return false;
      gains.before = gains.now;
    }
    return false;
  }

  // In the unit of the points, from the current model; known already after a step that was not taken.
  Deviations DeviationsNow() {
    const auto find = [this] { return Feature::DeviationsFrom(m_points, m_model); };
    if (!m_deviations) m_deviations = m_lastStep.FindDeviations(m_points, find);
    return InUnit(*m_deviations, m_points.Scale());
  }

  // At the best place so far, scaled as the blocks are; infinite before one is known.
  double SumSquares() const { return m_hasBest ? m_system.deviations.sumSquares : kInfinity; }
  // Whether the points determined all parameters when the last step was solved.
  bool Determined() {
    if constexpr (Feature::kHasRows) {
      double step[kUnknowns];
      if (m_isOpen) m_determined = SolveReduced(Feature::Reduce(m_points, m_best), step).determined;
      m_isOpen = false;
    }
    return m_determined;
  }
  // Sum of the squared deviations that rounding errors of the coordinates make.
  double RoundingLevel() const { return kNoise * kNoise * m_system.spread; }
  // Of the points, from the pivot; known after a step was solved.
  double MeanAlong() const { return m_system.along; }
  double MeanSquare() const { return m_system.MeanSquare(); }
  const StepSystem<Feature::kUnknowns>& Equations() const { return m_system; }

 private:
  static constexpr int kUnknowns = Feature::kUnknowns;
  static constexpr bool kAddsSecond = requires { &Feature::AddSecond; };
  static constexpr bool kLearns = requires(const typename Feature::Model& m) { Feature::AreAlike(m, m); };

  // Smallest pivot, as a part of its diagonal entry, of a system that is taken for well-conditioned: half of the digits
  // are left.
  static constexpr double kClearPivot = 1e-8;

  // A step that moves the deviations by no more than this many roundings of the coordinates is noise.
  static constexpr double kNoise = 16.0 * kEpsilon;

  // Damping after the first step that leads uphill or gains too small a part of what was predicted, its change after
  // further ones, and after steps that gain nearly all of it.
  static constexpr double kFirstDamping = Feature::kFirstDamping;
  static constexpr double kMoreDamping = Feature::kHasSecond ? 10.0 : 5.0;
  static constexpr double kLessDamping = 0.1;
  static constexpr double kLeastDamping = 1e-7;
  static constexpr double kPoorGain = 0.4;
  static constexpr double kGoodGain = 0.75;

  // How many times the plain step one that follows second derivatives may reach at first, and by how much more or less
  // after steps that gain nearly all that was predicted, or too little.
  static constexpr double kFirstReach = 4.0;
  static constexpr double kMoreReach = 4.0;

  // A damped step that should gain less than this part of the sum of squares gains nothing.
  static constexpr double kIdleGain = 1e-12;

  // How far steps by second derivatives may reach at first, in lengths of the plain one, and by how much less or more
  // than the step that gained too little, or nearly all that was predicted.
  static constexpr double kFirstRadius = 16.0;
  static constexpr double kLessRadius = 0.25;
  static constexpr double kMoreRadius = 4.0;

  static constexpr int kPlainSteps = 8;  // that say to which optimum the steps lead

  using System = StepSystem<kUnknowns>;

  // Whether plain steps have become so many, and shrink so little, that second derivatives are worth their pass.
  bool Creeps() {
    constexpr double kSlow = 0.04;  // in squares
    if (!kAddsSecond || m_usesSecond || m_isTrial || m_steps + m_plainSteps < kPlainSteps) return false;
    const double now = SquaredLength();
    return now > kSlow * m_squaredLength && Gain() > RoundingLevel();
  }

  double Gain() const {
    double gain = 0.0;
    for (int j = 0; j < kUnknowns; ++j) gain += m_step[j] * m_system.right[j];
    return gain;
  }

  // In the unit of the points.
  double SquaredLength() const {
    return Feature::SquaredLength(m_model, m_system, m_step) / (m_points.Scale() * m_points.Scale());
  }

  void AddSecond() {
    if constexpr (kAddsSecond) Feature::AddSecond(m_points, m_best, m_system);
  }

  // The root of a sum of squares is known to the rounding errors of its terms.
  bool LeadsUphill(const System& system) const {
    return m_hasBest && !(std::sqrt(system.deviations.sumSquares) <=
                          std::sqrt(m_system.deviations.sumSquares) + kNoise * std::sqrt(m_system.spread));
  }

  bool Solve() {
    m_isLengthened = false;
    m_isOpen = false;
    if ((Feature::kHasSecond || m_usesSecond) && SolveNewton()) return m_determined = true;
    if (m_usesSecond) return SolveRidge();
    std::copy_n(&m_system.product[0][0], kUnknowns * kUnknowns, &m_matrix[0][0]);
    m_determined = SolvePositive(m_system.product, m_system.right, m_step) > kClearPivot;
    if (m_determined) {
      if constexpr (Feature::kHasSecond) LengthenWithin(m_reach);
      return true;
    }
    if constexpr (Feature::kHasRows) {
      const ReducedSolution found = SolveReduced(Feature::Reduce(m_points, m_model), m_step);
      m_determined = found.determined;
      return found.finite;
    }
    for (int i = 0; i < kUnknowns; ++i) m_matrix[i][i] *= 1.0 + kClearPivot;
    return SolvePositive(m_matrix, m_system.right, m_step) > 0.0;
  }

  // Where the second derivatives show no valley, the plain step tells how far away its end is. Whether the points
  // determine all parameters is left open where the equations are not clear.
  bool SolveRidge() {
    const double pivot = SolvePositive(m_system.product, m_system.right, m_step);
    m_determined = pivot > kClearPivot;
    m_isOpen = !m_determined;
    if (pivot > 0.0) return true;
    double heavier[kUnknowns][kUnknowns];
    std::copy_n(&m_system.product[0][0], kUnknowns * kUnknowns, &heavier[0][0]);
    for (int i = 0; i < kUnknowns; ++i) heavier[i][i] *= 1.0 + kClearPivot;
    return SolvePositive(heavier, m_system.right, m_step) > 0.0;
  }

  // Solves Newton's equations with as little on the diagonal as makes them positive definite and the step this short.
  void KeepWithinRadius() {
    constexpr double kFirst = 1e-10, kFactor = 4.0, kLast = 1e20;
    constexpr double kLong = 0.7;  // of the radius
    constexpr int kHalvings = 24;
    double more = 0.0;
    while (!SolveWithin(more) && more < kLast) more = std::max(kFirst, kFactor * more);
    m_isShortened = more > 0.0;
    double low = more / kFactor;
    for (int k = 0; m_isShortened && k < kHalvings && SquaredReach(m_step) < kLong * kLong * m_radius * m_radius; ++k) {
      const double middle = std::sqrt(low * more);
      (SolveWithin(middle) ? more : low) = middle;
    }
    FillNewton(0.0, m_matrix);
  }

  // Whether there is such a step; it replaces the last one.
  bool SolveWithin(double more) {
    double matrix[kUnknowns][kUnknowns];
    double step[kUnknowns];
    FillNewton(more, matrix);
    if (!(SolvePositive(matrix, m_system.right, step) > kClearPivot)) return false;
    if (!(SquaredReach(step) <= m_radius * m_radius)) return false;
    std::copy_n(step, kUnknowns, m_step);
    return true;
  }

  // The damped step solves the equations with a heavier diagonal, which is positive definite.
  void Damp() {
    double heavier[kUnknowns][kUnknowns];
    double shorter[kUnknowns];
    for (int i = 0; i < kUnknowns; ++i)
      for (int j = 0; j < kUnknowns; ++j)
        heavier[i][j] = m_matrix[i][j] + (i == j ? m_damping * m_system.product[i][j] : 0.0);
    if (SolvePositive(heavier, m_system.right, shorter) > 0.0) std::copy_n(shorter, kUnknowns, m_step);
  }

  void MoreDamping() { m_damping = std::max(kFirstDamping, kMoreDamping * m_damping); }

  void LessReach() { m_reach = std::max(1.0, m_reach / kMoreReach); }

  void Adapt(double sumSquares) {
    if (m_usesSecond) return AdaptRadius(sumSquares);
    const double gained = m_system.deviations.sumSquares - sumSquares;
    if (gained > kGoodGain * m_predicted) m_reach = m_isLengthened ? kMoreReach * m_reach : kFirstReach;
    if (m_isLengthened && gained < kPoorGain * m_predicted) LessReach();
    if (!m_isLengthened) AdaptDamping(sumSquares);
  }

  void AdaptRadius(double sumSquares) {
    const double gained = m_system.deviations.sumSquares - sumSquares;
    if (m_predicted <= kNoise * std::sqrt(m_system.deviations.sumSquares * m_system.spread)) return;
    const double length = std::sqrt(SquaredReach(m_step));
    if (gained < kPoorGain * m_predicted) m_radius = kLessRadius * length;
    if (gained > kGoodGain * m_predicted) m_radius = std::max(m_radius, kMoreRadius * length);
  }

  // On rough parts full steps may swing from one side of the minimum to the other; as long as they do, they stay
  // damped.
  void AdaptDamping(double sumSquares) {
    const double gained = m_system.deviations.sumSquares - sumSquares;
    if (m_predicted <= kNoise * std::sqrt(m_system.deviations.sumSquares * m_system.spread))
      return;  // rounding hides it
    if (gained < kPoorGain * m_predicted) MoreDamping();
    if (gained > kGoodGain * m_predicted) m_damping = m_damping > kLeastDamping ? kLessDamping * m_damping : 0.0;
  }

  // Without second derivatives each step is, in the end, a fixed part of the one before it, which is close to 1 on
  // points that are no such feature. What is left of the way is then a geometric series; now and then its sum is tried
  // (A. C. Aitken, Proc. R. Soc. Edinburgh 46, 1926).
  void LengthenAfter(const double (&before)[kUnknowns]) {
    constexpr int kFirst = 24, kEach = 4;
    constexpr double kAlike = 0.98;  // squared cosine between steps
    constexpr double kLeastPart = 0.5;
    constexpr double kMostPart = 0.98;
    m_isLengthened = false;
    if (++m_steps < kFirst || m_steps % kEach != 0) return;
    double now = 0.0, then = 0.0, both = 0.0;
    for (int i = 0; i < kUnknowns; ++i) {
      now += m_step[i] * m_system.product[i][i] * m_step[i];
      then += before[i] * m_system.product[i][i] * before[i];
      both += before[i] * m_system.product[i][i] * m_step[i];
    }
    const double part = std::min(both / then, kMostPart);
    if (!(both * both >= kAlike * now * then && part >= kLeastPart)) return;
    for (double& component : m_step) component /= 1.0 - part;
    m_isLengthened = true;
  }

  double SquaredReach(const double (&step)[kUnknowns]) const {
    double square = 0.0;
    for (int i = 0; i < kUnknowns; ++i) square += step[i] * m_system.product[i][i] * step[i];
    return square;
  }

  // Where the equations with the second derivatives are not clearly positive definite, solves them with as little on
  // the diagonal as keeps the step within so many times the plain one, which stays where this leads to none longer.
  void LengthenWithin(double reach) {
    constexpr double kFirst = 1e-10, kFactor = 4.0, kLast = 1.0;
    if (m_damping > 0.0 || !(reach > 1.0)) return;
    if (++m_plainSteps <= kPlainSteps && !m_learned.Counts()) return;
    const double plain = SquaredReach(m_step);
    double matrix[kUnknowns][kUnknowns];
    double longer[kUnknowns];
    for (double more = 0.0; more < kLast; more = std::max(kFirst, kFactor * more)) {
      FillNewton(more, matrix);
      if (!(SolvePositive(matrix, m_system.right, longer) > 0.0)) continue;
      const double square = SquaredReach(longer);
      if (square > reach * reach * plain) continue;
      m_isLengthened = square > plain;
      break;
    }
    if (!m_isLengthened) return;
    std::copy_n(longer, kUnknowns, m_step);
    FillNewton(0.0, m_matrix);
  }

  double PredictedGain() const {
    double gain = 0.0;
    for (int i = 0; i < kUnknowns; ++i) {
      gain += 2.0 * m_step[i] * m_system.right[i];
      for (int j = 0; j < kUnknowns; ++j) gain -= m_step[i] * m_matrix[i][j] * m_step[j];
    }
    return gain;
  }

  // The matrix of Newton's equations, with what was learned; its diagonal heavier by so many times that of the plain
  // ones.
  void FillNewton(double more, double (&matrix)[kUnknowns][kUnknowns]) const {
    for (int i = 0; i < kUnknowns; ++i)
      for (int j = 0; j < kUnknowns; ++j)
        matrix[i][j] = m_system.product[i][j] * (i == j ? 1.0 + more : 1.0) + m_system.second[i][j];
    if (!kLearns || !m_learned.Counts()) return;
    for (int i = 0; i < kUnknowns; ++i)
      for (int j = 0; j < kUnknowns; ++j) matrix[i][j] += m_learned(i, j);
  }

  bool SolveNewton() {
    FillNewton(0.0, m_matrix);
    return SolvePositive(m_matrix, m_system.right, m_step) > kClearPivot;
  }

  PointBlocks& m_points;
  typename Feature::Model m_model;
  // The best place so far, to which a step that led uphill returns, its equations, and how much steps are shortened.
  typename Feature::Model m_best;
  System m_system;
  bool m_hasBest = false;
  double m_damping = 0.0;
  int m_steps = 0;  // solved since the start
  bool m_isLengthened = false;
  bool m_isTrial = false;
  bool m_usesSecond = false;   // the steps are those of Newton within the radius
  bool m_isShortened = false;  // by damping or the radius
  double m_radius = 0.0;
  double m_reach = kFirstReach;
  int m_plainSteps = 0;  // that second derivatives might have lengthened
  LearnedCurvature<kUnknowns> m_learned;
  double m_predicted = 0.0;  // by how much the last step should have lowered the sum of squares
  double m_step[kUnknowns] = {};
  double m_matrix[kUnknowns][kUnknowns] = {};  // that the step solves, undamped
  bool m_determined = false;
  bool m_isOpen = false;                   // whether it is still to be found out
  std::optional<Deviations> m_deviations;  // from the current model
  std::size_t m_walk = 0;                  // that found m_system
  double m_squaredLength = 0.0;            // of the last step, and of the one before
  double m_squaredLengthBefore = 0.0;
  LastStep m_lastStep;
};

}  // namespace nu::engine::least_squares

#endif
