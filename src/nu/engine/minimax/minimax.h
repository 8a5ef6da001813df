#ifndef NU_ENGINE_MINIMAX_MINIMAX_H
#define NU_ENGINE_MINIMAX_MINIMAX_H

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "nu/engine/base/floating_point.h"
#include "nu/engine/base/step_monitor.h"
#include "nu/engine/minimax/contacts.h"
#include "nu/engine/minimax/curved_minimax.h"
#include "nu/engine/minimax/linear_minimax.h"
#include "nu/engine/minimax/minimax_points.h"

// The parameters of a feature for which the largest deviation of a point set is the least.
//
// Steps. At the current parameters the deviations are replaced by their tangents, and the linear program for the least
// largest one within a bound on the step is solved (M. R. Osborne, G. A. Watson, Computer Journal 12, 1969; the bound
// of K. Madsen, IMA J. Applied Mathematics 16, 1975: it shrinks after a step that does not do what it promised). The
// rows that hold its solution give multipliers, these the curvature of the Lagrangian, and the quadratic program with
// it Newton's step for the equations of the optimum (R. H. Byrd, N. I. M. Gould, J. Nocedal, R. A. Waltz, Mathematical
// Programming 100, 2004). While such steps succeed no further linear program is needed; they converge quadratically
// whether or not the contacts are as many as the unknowns. A step that the curving of single rows spoils is corrected
// once to second order (R. Fletcher, 1982). Newton's step has a bound of its own, which follows what comes of it: where
// the curvature is negative, or the step too long, the curvature is raised until the step just keeps the bound
// (J. J. More, D. C. Sorensen, SIAM Journal on Scientific and Statistical Computing 4, 1983).
//
// Working set. The problem is solved for some of the points; then one pass over all adds the worst of those that
// deviate more, and after many steps also before the optimum of the few is known. It ends when none does: the optimum
// of the few is then one of all. It counts as one only where the multipliers of its contacts balance their gradients.
namespace nu::engine::minimax {

enum class MinimaxEnd {
  converged,
  limitReached,
  stalled,    // no step leads down, although the multipliers do not prove an optimum
  unsolved,   // the linear program ran out of pivots, or no deviation is a number
  cancelled,  // by the monitor
};

// A Model has
//   static constexpr int kUnknowns, kStrata;
//   void Deviations(const PointBlock&, double* deviation, double& smallest, double& largest) const: a kernel; the last
//     lanes are copies of the last point and are written too;
//   void Gradients(const PointBlock&, double* deviation, double (*gradient)[kMostRows]) const: the same deviations, to
//     the bit, and their derivatives by the unknowns, which are scaled to lengths: no derivative is much larger than 1;
//   void AddCurvature(const Vec3& point, double weight, double (&sum)[kUnknowns][kUnknowns]) const: weight times the
//     second derivatives of a point's deviation;
//   Model Moved(const double (&step)[kUnknowns]) const;
//   int Stratum(const Vec3& point) const: 0 to kStrata - 1; of each part of the feature extreme points are seen to.

// Of the contacts the sum of multiplier * sign * gradient is zero to rounding.
template<class Model>
struct MinimaxSolution : Contacts {
  MinimaxEnd end = MinimaxEnd::stalled;
  Model model;
  double value = 0.0;  // the largest deviation in question, of all points
  double range = 0.0;  // of an optimum, how much the deviations of all points differ
  long steps = 0;
};

template<class Model>
class Minimax {
 public:
  static constexpr int K = Model::kUnknowns;

  // rounding: the error of a deviation. limit: on the steps of Solve; above 1000 it is 1000. The monitor sees the
  // largest deviation of the working set and the length of the step that led there, over all starts; once it has
  // cancelled, every further run ends so at once. The scale of the blocks stays as it is.
  Minimax(PointBlocks& points, MinimaxSide side, double rounding, long limit, const StepMonitor& monitor = {})
      : m_points(points, side),
        m_side(side),
        m_rounding(rounding),
        m_limit(std::min(limit, kMostSteps)),
        m_runLimit(m_limit),
        m_monitor(monitor),
        m_unit(1.0 / points.Scale()) {}

  // The optimum next to the start, and no worse than it.
  MinimaxSolution<Model> Solve(const Model& start) {
    const double value = m_points.Seed(start);
    m_runLimit = m_limit;
    return Run(start, value, kInfinity);
  }

  // After Solve, from another start: `stalled` as soon as the points known so far cannot get below `value`.
  // The limit is not that of Solve, so that its optimum does not depend on the limit.
  MinimaxSolution<Model> Improve(const Model& start, double value, long limit = kMostSteps) {
    m_runLimit = limit;
    return Run(start, value, value);
  }

  // Those that have mattered so far.
  std::vector<Vec3> KnownPoints() const {
    std::vector<Vec3> known;
    known.reserve(static_cast<std::size_t>(m_points.Size()));
    for (int row = 0; row < m_points.Size(); ++row) known.push_back(m_points.Point(row));
    return known;
  }

 private:
  // Steps on points that are nothing like the feature may creep, whatever limit a host passes. Measured parts need up
  // to some tens.
  static constexpr long kMostSteps = 1000;
  // So many steps without a gain beyond rounding: the deviations are noise.
  static constexpr int kMostIdle = 16;
  // An optimum of the working set this far below what all points have reached says that too few points are known.
  static constexpr double kSmallPart = 0.125;
  // A step has to bring this part of what it promised.
  static constexpr double kFairPart = 0.1;
  static constexpr double kGoodPart = 0.75;
  static constexpr double kShrink = 0.25;
  static constexpr double kGrow = 2.0;
  // Longer steps, in units of Scale(), may lead to another optimum or out of a bore.
  static constexpr double kFarthest = 4.0;
  // The scale in a bore is that of its form, but not less than this part of its radius.
  static constexpr double kLeastForm = 1e-3;
  // The curvature is raised by such parts of its largest entry, first by factors, then by halving between what is too
  // little and what is enough.
  static constexpr double kLeastDamping = 1e-3;
  static constexpr double kMoreDamping = 8.0;
  static constexpr double kMostDamping = 64.0;
  static constexpr double kSameDamping = 2.0;
  static constexpr int kMostDampings = 40;
  // A step at least this part of the bound need not be longer.
  static constexpr double kLongEnough = 0.25;
  // A step that fails is bent up to so many times, then tried again with a smaller bound.
  static constexpr int kMostCorrections = 3;
  static constexpr int kAttempts = 5;
  // After so many steps on the working set the other points are looked at.
  static constexpr int kStepsPerPass = 32;
  // After so many steps of which the curvature had to be raised the bound is used up.
  static constexpr int kCreeping = 8;
  // So many passes that add no point and bring less than this part of Scale() each are the last.
  static constexpr int kMostVain = 4;
  static constexpr double kVain = 1e-6;
  // What the weighted gradients of the contacts may miss zero by: about the square root of the rounding unit, since in
  // a direction in which the value is curved, not bent, a step of the root of the rounding changes nothing.
  static constexpr double kStationary = 1e-7;
  // So many roundings of the contacts' places turn their directions, and no more are noise.
  static constexpr double kTurns = 16.0;
  static constexpr double kNoise = 4.0;
  // How far a saddle is left, in units of Scale().
  static constexpr double kEscape = 0.125;
  static constexpr double kLeastEscape = 1e-3;

  enum class Progress { converged, stationary, moved, none };

  // How far an optimum may be: the deviations that can be levelled out.
  double Scale() const {
    const double value = std::fabs(m_value);
    return std::max(m_points.Range(), m_side == MinimaxSide::inner ? kLeastForm * value : value);
  }

  double Enough(double best) const {
    return m_side == MinimaxSide::inner ? best - m_points.Range() : kSmallPart * best;
  }

  // A round that takes no step is rare; they share the limit.
  MinimaxSolution<Model> Run(const Model& start, double bestValue, double stop) {
    m_steps = 0;
    m_contacts.count = 0;
    m_model = start;
    Model best = start;
    bool isBestKnown = !(stop < kInfinity);  // or only the value to be bettered
    bool downOnly = false;
    double lowestAtPass = kInfinity;
    int vainPasses = 0;
    MinimaxEnd end = MinimaxEnd::limitReached;
    Begin();
    if (m_cancelled) return Describe(MinimaxEnd::cancelled);
    for (long round = 0; round < m_runLimit; ++round) {
      const double enough = Enough(bestValue);
      m_pause = m_steps + kStepsPerPass;
      end = SolveSet(enough);
      if (end == MinimaxEnd::cancelled) break;
      const bool paused = end == MinimaxEnd::limitReached;
      if (paused && m_steps >= m_runLimit) break;
      if (!paused && m_value >= stop) {
        end = MinimaxEnd::stalled;
        break;
      }
      const bool tooFew = m_value < enough;
      const double lowest = std::exchange(lowestAtPass, m_value);
      const double value = m_points.Collect(m_model, m_value + m_rounding);
      if (m_points.IsRenumbered()) m_contacts.count = 0;
      // At the level of rounding too few points stay too few: there is nothing to add, and nothing to gain.
      const bool complete = !paused && m_points.Added() == 0 && !(tooFew && value < bestValue - m_rounding);
      if (value < bestValue) {
        bestValue = value;
        best = m_model;
        isBestKnown = true;
      }
      if (complete && (downOnly || !(value > bestValue + m_rounding))) {
        if (end != MinimaxEnd::unsolved) end = IsHeld() ? MinimaxEnd::converged : MinimaxEnd::stalled;
        break;
      }
      // The points known so far led away from what all points had reached: only down from there, from now on.
      const bool astray = paused && isBestKnown && m_value > bestValue + m_rounding;
      downOnly = downOnly || complete || astray;
      if (astray || (!paused && (downOnly || tooFew))) {
        m_model = best;
        m_contacts.count = 0;
      }
      if (!paused || astray || m_points.Added() > 0) {
        Begin();
        lowestAtPass = kInfinity;
      }
      end = MinimaxEnd::limitReached;
      const bool vain = paused && m_points.Added() == 0 && m_value > lowest - kVain * Scale();
      vainPasses = vain ? vainPasses + 1 : 0;
      if (vainPasses >= kMostVain) {
        end = MinimaxEnd::stalled;
        break;
      }
    }
    return Describe(end);
  }

  // The optimum of the working set, from the current model down, or a value below `enough`. The limit is reached when
  // it is time for a pass, too.
  MinimaxEnd SolveSet(double enough) {
    while (!IsNoise()) {
      if (m_value < enough) return MinimaxEnd::converged;
      if (m_steps >= std::min(m_runLimit, m_pause)) return MinimaxEnd::limitReached;
      ++m_steps;
      if (!GoesOn()) return MinimaxEnd::cancelled;
      if (!m_settled && !SolveLinear()) return MinimaxEnd::unsolved;
      const Progress progress = TryCurvedStep();
      if (progress == Progress::converged) return MinimaxEnd::converged;
      const bool failed = progress == Progress::none && !m_settled;
      if (progress == Progress::stationary || (failed && LinearPromise() <= m_rounding)) {
        if (!Escape()) return MinimaxEnd::converged;
        m_settled = false;
      } else if (failed) {
        if (!TryLinearStep()) return MinimaxEnd::stalled;
      } else {
        m_settled = progress == Progress::moved;
      }
    }
    return MinimaxEnd::converged;
  }

  bool GoesOn() {
    m_cancelled = m_cancelled || !m_monitor.GoesOn(++m_monitored, m_unit * m_value, m_unit * m_taken);
    return !m_cancelled;
  }

  void Begin() {
    StandAt(m_model);
    m_lowest = kInfinity;
    m_idle = 0;
    m_bound = Scale();
    m_reach = kFarthest * m_bound;
    m_damping = 0.0;
    m_damped = 0;
    m_lastLength = kInfinity;
    m_settled = m_contacts.count > 0;
  }

  void StandAt(const Model& model) {
    m_model = model;
    m_points.Linearise(model, *m_rows);
    m_value = m_rows->Largest();
  }

  // Points that fit to rounding, or steps that bring nothing any more.
  bool IsNoise() {
    if (m_side != MinimaxSide::inner && m_value <= m_rounding) return true;
    m_idle = m_value < m_lowest - m_rounding ? 0 : m_idle + 1;
    m_lowest = std::min(m_lowest, m_value);
    return m_idle > kMostIdle;
  }

  bool SolveLinear() {
    const bool solved = m_linear.Solve(*m_rows, m_bound, m_rounding);
    m_contacts = m_linear.Contacts();
    return solved;
  }

  double LinearPromise() const { return m_value - m_linear.Value(); }

  // The step of the linear program; the bound follows what comes of it. False when it has shrunk to nothing.
  bool TryLinearStep() {
    const double promised = LinearPromise();
    m_lastLength = kInfinity;
    const double length = Length(m_linear.Step());
    if (!TryStep(m_linear.Step(), promised)) {
      m_bound = kShrink * length;
    } else {
      m_reach = std::max(m_reach, kGrow * length);
      if (m_gain >= kGoodPart * promised) m_bound *= kGrow;
    }
    return m_bound > m_rounding;
  }

  // Newton's step for the optimum on the contacts. One that does not keep its promise is tried again shorter.
  Progress TryCurvedStep() {
    SumCurvature(m_curvature);
    const MinimaxContacts<K> contacts = m_contacts;
    for (int attempt = 0; attempt < kAttempts && FindCurvedStep(contacts); ++attempt) {
      const double length = Length(m_curved.Step());
      const double promised = m_value - m_curved.Value() - m_curved.Bending();
      const bool isFree = m_damping == 0.0 || length < kLongEnough * m_reach;
      if (length <= m_rounding || (promised <= m_rounding && length >= 0.5 * m_lastLength)) {
        if (!isFree) break;
        return m_damping == 0.0 ? Progress::converged : Progress::stationary;
      }
      m_damped = m_damping > 0.0 ? m_damped + 1 : 0;
      if (!isFree || m_damped < kCreeping || !TryHollowStep(promised)) {
        if (!TryStep(m_curved.Step(), promised) && !TryCorrectedStep(promised)) {
          m_reach = kShrink * length;
          continue;
        }
        m_lastLength = length;
        m_bound = kGrow * length;
        if (m_gain >= kGoodPart * promised && length >= kLongEnough * m_reach) m_reach *= kGrow;
      }
      return Progress::moved;
    }
    m_contacts = contacts;
    return Progress::none;
  }

  // Where no damping makes the step as long as its bound, it goes on along a direction of negative curvature, in
  // which the value does not rise at first, to either side.
  bool TryHollowStep(double promised) {
    const double plain = Length(m_curved.Step());
    const double last = m_lastLength < kInfinity ? m_lastLength : plain;
    double length = std::min(m_reach - plain, kFarthest * std::max(plain, last));
    for (; length > plain; length *= kShrink) {
      for (const double signedLength : {length, -length}) {
        double step[K];
        for (int k = 0; k < K; ++k) step[k] = m_curved.Step()[k] + signedLength / Length(m_hollow) * m_hollow[k];
        if (!TryStep(step, promised)) continue;
        m_lastLength = length;
        m_bound = kGrow * length;
        return true;
      }
    }
    return false;
  }

  // Newton's step where the curvature is positive and the step within the bound, else one of about the bound's length.
  bool FindCurvedStep(const MinimaxContacts<K>& contacts) {
    const double damping = std::max(m_damping, kLeastDamping);
    m_damping = 0.0;
    return IsWithinReach(0.0, contacts) || FindDampedStep(damping, contacts);
  }

  // Where the damping rules, the length goes with its inverse.
  bool FindDampedStep(double damping, const MinimaxContacts<K>& contacts) {
    double low = 0.0;
    double high = kInfinity;
    double last = 0.0;
    for (int trial = 0; trial < kMostDampings && high > kSameDamping * low; ++trial) {
      last = damping;
      double factor = kMoreDamping;
      if (IsWithinReach(damping, contacts)) {
        high = damping;
        const double part = Length(m_curved.Step()) / m_reach;
        if (part >= kLongEnough) break;
        factor = std::max(part, 1.0 / kMostDamping);
      } else {
        low = damping;
        if (m_solved) factor = std::min(Length(m_curved.Step()) / (0.5 * m_reach), kMostDamping);
      }
      damping *= factor;
      if (!(damping > low && damping < high)) damping = std::sqrt(low * high);
    }
    m_damping = high;
    return high < kInfinity && (last == high || IsWithinReach(high, contacts));
  }

  bool IsWithinReach(double damping, const MinimaxContacts<K>& contacts) {
    double scale = 0.0;
    for (int k = 0; k < K; ++k) scale = std::max(scale, std::fabs(m_curvature[k][k]));
    std::copy_n(&m_curvature[0][0], K * K, &m_raised[0][0]);
    for (int k = 0; k < K; ++k) m_raised[k][k] += damping * scale;
    m_contacts = contacts;
    m_solved = m_curved.Solve(*m_rows, m_raised, m_rounding, m_contacts);
    if (m_curved.IsIndefinite()) std::copy_n(m_curved.NegativeCurvatureDirection(), K, m_hollow);
    return m_solved && Length(m_curved.Step()) <= m_reach;
  }

  // The multipliers of the contacts prove the optimum. Points that fit to rounding need no proof; the gradient of a
  // distance is as uncertain as its direction.
  bool IsHeld() {
    if (m_side != MinimaxSide::inner && m_value <= kNoise * m_rounding) return true;
    const double most = kStationary + kTurns * m_rounding / std::fabs(m_value);
    if (m_contacts.count > 0 && Imbalance() <= most && Slack() <= kNoise * m_rounding) return true;
    // Contacts may have been lost, or be others by rounding.
    return m_linear.Solve(*m_rows, 2.0 * m_rounding, m_rounding) && (m_contacts = m_linear.Contacts()).count > 0 &&
           Imbalance() <= most;
  }

  // How far the contacts are below the value, as far as their multipliers count.
  double Slack() const {
    double sum = 0.0;
    for (int j = 0; j < m_contacts.count; ++j)
      sum += m_contacts.multiplier[j] * (m_value - m_rows->value[m_contacts.row[j]]);
    return sum;
  }

  double Imbalance() const {
    double sum[K] = {};
    for (int j = 0; j < m_contacts.count; ++j)
      for (int k = 0; k < K; ++k) sum[k] += m_contacts.multiplier[j] * m_rows->gradient[k][m_contacts.row[j]];
    return Length(sum);
  }

  void SumCurvature(double (&curvature)[K][K]) const {
    std::fill_n(&curvature[0][0], K * K, 0.0);
    for (int j = 0; j < m_contacts.count; ++j) {
      const int row = m_contacts.row[j];
      m_model.AddCurvature(m_points.Point(row), m_contacts.multiplier[j] * m_points.Sign(row), curvature);
    }
  }

  static double Length(const double (&step)[K]) {
    double length = 0.0;
    for (const double s : step) length = std::max(length, std::fabs(s));
    return length;
  }

  // Goes there if the working set gains its part of what was promised, up to rounding.
  bool TryStep(const double (&step)[K], double promised) {
    const Model moved = m_model.Moved(step);
    m_points.Linearise(moved, *m_trial);
    const double value = m_trial->Largest();
    m_gain = m_value - value;
    if (!(m_gain >= kFairPart * promised - m_rounding)) return false;
    m_model = moved;
    m_value = value;
    m_taken = Length(step);
    std::swap(m_rows, m_trial);
    return true;
  }

  // Bends the step so that the contacts, whose values after it are in m_trial, come out equal; again where they do so
  // only nearly.
  bool TryCorrectedStep(double promised) {
    double plain[K + 1];
    for (int j = 0; j < m_contacts.count; ++j) plain[j] = m_rows->value[m_contacts.row[j]];
    for (int round = 0; round < kMostCorrections; ++round) {
      double step[K], bent[K + 1];
      std::copy_n(m_curved.Step(), K, step);
      for (int j = 0; j < m_contacts.count; ++j) {
        const int row = m_contacts.row[j];
        bent[j] = plain[j] + (m_trial->value[row] - m_rows->After(step, row));
      }
      for (int j = 0; j < m_contacts.count; ++j) m_rows->value[m_contacts.row[j]] = bent[j];
      const bool solved = m_curved.SolveAgain(m_contacts);
      for (int j = 0; j < m_contacts.count; ++j) m_rows->value[m_contacts.row[j]] = plain[j];
      if (!solved) return false;
      const double before = m_gain;
      if (TryStep(m_curved.Step(), promised)) return true;
      if (!(m_gain > before)) return false;
    }
    return false;
  }

  // A stationary point is a saddle where a step along a direction of no curvature, followed by that of the linear
  // program, leads down. Looks to both sides; false, and nothing changed, when it is none.
  bool Escape() {
    double curvature[K][K];
    SumCurvature(curvature);
    MinimaxContacts<K> contacts = m_contacts;
    if (m_curved.Solve(*m_rows, curvature, m_rounding, contacts) || !m_curved.IsIndefinite()) return false;
    double away[K];
    std::copy_n(m_curved.NegativeCurvatureDirection(), K, away);
    const Model here = m_model;
    const double value = m_value;
    const double unit = Scale();
    for (double part = kEscape; part > kLeastEscape; part *= kEscape) {
      for (const double length : {part * unit, -part * unit}) {
        double step[K];
        for (int k = 0; k < K; ++k) step[k] = length / Length(away) * away[k];
        StandAt(here.Moved(step));
        if (m_linear.Solve(*m_rows, part * unit, m_rounding) && TryStep(m_linear.Step(), m_value - value) &&
            m_value < value - m_rounding) {
          return true;
        }
      }
    }
    StandAt(here);
    return false;
  }

  MinimaxSolution<Model> Describe(MinimaxEnd end) const {
    MinimaxSolution<Model> found;
    found.end = end;
    found.model = m_model;
    found.value = m_value;
    found.range = m_points.Range();
    found.steps = m_steps;
    for (int j = 0; j < m_contacts.count; ++j) {
      const int row = m_contacts.row[j];
      // Beside the others, a multiplier that is zero but for rounding is no contact.
      if (m_rows->value[row] < m_value - kNoise * m_rounding && m_contacts.multiplier[j] < kStationary) continue;
      found.AddContact(m_points.Point(row), m_points.Sign(row), m_contacts.multiplier[j]);
    }
    return found;
  }

  MinimaxPoints<Model> m_points;
  MinimaxSide m_side;
  double m_rounding;
  long m_limit;
  long m_runLimit;
  StepMonitor m_monitor;
  double m_unit;  // of the points, in that of the blocks
  long m_monitored = 0;
  bool m_cancelled = false;
  double m_taken = kQuietNaN;  // the length of the step taken last

  Model m_model;
  double m_value = 0.0;  // the largest of the working set
  long m_steps = 0;
  long m_pause = 0;     // the count of steps at which all points are looked at again
  double m_gain = 0.0;  // of the step tried last
  double m_bound = 0.0;
  double m_reach = 0.0;  // the bound on Newton's step
  double m_damping = 0.0;
  double m_curvature[K][K] = {};
  double m_raised[K][K] = {};
  int m_damped = 0;           // the steps in a row of which the curvature was raised
  bool m_solved = false;      // the quadratic program, within the bound or not
  double m_hollow[K] = {};    // in which the curvature damped last was not positive
  double m_lastLength = 0.0;  // of the Newton step taken last
  bool m_settled = false;     // the contacts need no linear program
  double m_lowest = 0.0;
  int m_idle = 0;

  MinimaxRows<K> m_storage[2];
  MinimaxRows<K>* m_rows = &m_storage[0];  // at m_model
  MinimaxRows<K>* m_trial = &m_storage[1];
  LinearMinimax<K> m_linear;
  CurvedMinimax<K> m_curved;
  MinimaxContacts<K> m_contacts;
};

}  // namespace nu::engine::minimax

#endif
