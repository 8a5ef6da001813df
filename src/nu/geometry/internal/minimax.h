#ifndef NU_GEOMETRY_INTERNAL_MINIMAX_H
#define NU_GEOMETRY_INTERNAL_MINIMAX_H

#include <algorithm>
#include <cmath>
#include <limits>

#include "nu/geometry/internal/curved_minimax.h"
#include "nu/geometry/internal/linear_minimax.h"
#include "nu/geometry/internal/minimax_points.h"

// The parameters of a feature for which the largest deviation of a point set is the least.
//
// Steps. At the current parameters the deviations are replaced by their tangents, and the linear program for the least
// largest one within a bound on the step is solved (M. R. Osborne, G. A. Watson, Computer Journal 12, 1969; the bound
// of K. Madsen, IMA J. Applied Mathematics 16, 1975: it shrinks after a step that does not do what it promised). The
// rows that hold its solution give multipliers, these the curvature of the Lagrangian, and the quadratic program with
// it Newton's step for the equations of the optimum (R. H. Byrd, N. I. M. Gould, J. Nocedal, R. A. Waltz, Mathematical
// Programming 100, 2004). While such steps succeed no further linear program is needed; they converge quadratically
// whether or not the contacts are as many as the unknowns. A step that the curving of single rows spoils is corrected
// once to second order (R. Fletcher, 1982).
//
// Working set. The problem is solved for some of the points; then one pass over all adds the worst of those that
// deviate more. It ends when none does: the optimum of the few is then one of all.
namespace nu::internal {

enum class MinimaxEnd {
  converged,
  limitReached,
  stalled,   // no step leads down, although the linear program promises one
  unsolved,  // the linear program ran out of pivots, or no deviation is a number
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
template<class Model>
struct MinimaxSolution {
  static constexpr int kMostContacts = Model::kUnknowns + 1;

  MinimaxEnd end = MinimaxEnd::stalled;
  Model model;
  double value = 0.0;  // the largest deviation in question, of all points
  long steps = 0;
  // The points that hold the solution, the signs of their deviations and their multipliers (positive, sum 1): the sum
  // of multiplier * sign * gradient is zero to rounding.
  int contacts = 0;
  Vec3 contact[kMostContacts];
  double sign[kMostContacts] = {};
  double multiplier[kMostContacts] = {};
};

template<class Model>
class Minimax {
 public:
  static constexpr int K = Model::kUnknowns;

  // rounding: the error of a deviation. limit: on the steps of one solution.
  Minimax(PointBlocks& points, MinimaxSide side, double rounding, long limit)
      : m_points(points, side), m_side(side), m_rounding(rounding), m_limit(std::min(limit, kMostSteps)) {}

  // The optimum next to the start, and no worse than it.
  MinimaxSolution<Model> Solve(const Model& start) {
    const double value = m_points.Seed(start);
    return Run(start, value, kInfinity);
  }

  // After Solve, from another start: `stalled` as soon as the points known so far cannot get below `value`.
  MinimaxSolution<Model> Improve(const Model& start, double value) { return Run(start, value, value); }

 private:
  static constexpr double kInfinity = std::numeric_limits<double>::infinity();
  // Steps on points that are nothing like the feature may creep, whatever limit a host passes.
  static constexpr long kMostSteps = 100'000;
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
  // A step that fails is tried again with the curvature raised by this part of its largest entry, and so on.
  static constexpr double kLeastDamping = 1e-3;
  static constexpr double kMoreDamping = 8.0;
  static constexpr int kAttempts = 5;
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
    bool downOnly = false;
    MinimaxEnd end = MinimaxEnd::limitReached;
    for (long round = 0; round < m_limit; ++round) {
      const double enough = Enough(bestValue);
      end = SolveSet(enough);
      if (end == MinimaxEnd::limitReached) break;
      if (m_value >= stop) {
        end = MinimaxEnd::stalled;
        break;
      }
      const bool tooFew = m_value < enough;
      const double value = m_points.Collect(m_model, m_value + m_rounding);
      if (m_points.IsRenumbered()) m_contacts.count = 0;
      // At the level of rounding too few points stay too few: there is nothing to add, and nothing to gain.
      const bool complete = m_points.Added() == 0 && !(tooFew && value < bestValue - m_rounding);
      if (value < bestValue) {
        bestValue = value;
        best = m_model;
      }
      if (complete && (downOnly || !(value > bestValue + m_rounding))) break;
      // The points known so far led away from what all points had reached: only down from there, from now on.
      downOnly = downOnly || complete;
      if (downOnly || tooFew) {
        m_model = best;
        m_contacts.count = 0;
      }
      end = MinimaxEnd::limitReached;
    }
    return Describe(end);
  }

  // The optimum of the working set, from the current model down, or a value below `enough`.
  MinimaxEnd SolveSet(double enough) {
    Begin();
    while (!IsNoise()) {
      if (m_value < enough) return MinimaxEnd::converged;
      if (m_steps >= m_limit) return MinimaxEnd::limitReached;
      ++m_steps;
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

  void Begin() {
    StandAt(m_model);
    m_lowest = kInfinity;
    m_idle = 0;
    m_bound = Scale();
    m_damping = 0.0;
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
    if (!TryStep(m_linear.Step(), promised)) {
      m_bound = kShrink * Length(m_linear.Step());
    } else if (m_gain >= kGoodPart * promised) {
      m_bound *= kGrow;
    }
    return m_bound > m_rounding;
  }

  // Newton's step for the optimum on the contacts. One that does not keep its promise is tried again with a curvature
  // raised more and more, which makes it shorter.
  Progress TryCurvedStep() {
    double curvature[K][K];
    SumCurvature(curvature);
    double scale = 0.0;
    for (int k = 0; k < K; ++k) scale = std::max(scale, std::fabs(curvature[k][k]));
    const MinimaxContacts<K> contacts = m_contacts;
    double raised = 0.0;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
      for (int k = 0; k < K; ++k) curvature[k][k] += m_damping * scale - raised;
      raised = m_damping * scale;
      m_contacts = contacts;
      if (m_curved.Solve(*m_rows, curvature, m_rounding, m_contacts)) {
        const double length = Length(m_curved.Step());
        const double promised = m_value - m_curved.Value() - m_curved.Bending();
        if (length <= m_rounding || (promised <= m_rounding && length >= 0.5 * m_lastLength)) {
          if (m_damping == 0.0) return Progress::converged;
          if (attempt > 0) return Progress::stationary;
          m_damping = 0.0;  // it is left over from steps before
          continue;
        }
        if (length <= kFarthest * Scale() && (TryStep(m_curved.Step(), promised) || TryCorrectedStep(promised))) {
          m_lastLength = length;
          m_bound = kGrow * length;
          m_damping = m_damping > kLeastDamping ? m_damping / kMoreDamping : 0.0;
          return Progress::moved;
        }
      }
      m_damping = std::max(kLeastDamping, kMoreDamping * m_damping);
    }
    m_contacts = contacts;
    return Progress::none;
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
    std::swap(m_rows, m_trial);
    return true;
  }

  // Bends the step so that the contacts, whose values after it are in m_trial, come out equal.
  bool TryCorrectedStep(double promised) {
    const double(&step)[K] = m_curved.Step();
    double plain[K + 1];
    for (int j = 0; j < m_contacts.count; ++j) {
      const int row = m_contacts.row[j];
      plain[j] = m_rows->value[row];
      m_rows->value[row] += m_trial->value[row] - m_rows->After(step, row);
    }
    const bool solved = m_curved.SolveAgain(m_contacts);
    for (int j = 0; j < m_contacts.count; ++j) m_rows->value[m_contacts.row[j]] = plain[j];
    return solved && TryStep(m_curved.Step(), promised);
  }

  // A stationary point is a saddle where a step along a direction of no curvature, followed by that of the linear
  // program, leads down. Looks to both sides; false, and nothing changed, when it is none.
  bool Escape() {
    double curvature[K][K];
    SumCurvature(curvature);
    MinimaxContacts<K> contacts = m_contacts;
    if (m_curved.Solve(*m_rows, curvature, m_rounding, contacts) || !m_curved.IsIndefinite()) return false;
    double away[K];
    std::copy_n(m_curved.HollowDirection(), K, away);
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
    found.steps = m_steps;
    found.contacts = m_contacts.count;
    for (int j = 0; j < m_contacts.count; ++j) {
      found.contact[j] = m_points.Point(m_contacts.row[j]);
      found.sign[j] = m_points.Sign(m_contacts.row[j]);
      found.multiplier[j] = m_contacts.multiplier[j];
    }
    return found;
  }

  MinimaxPoints<Model> m_points;
  MinimaxSide m_side;
  double m_rounding;
  long m_limit;

  Model m_model;
  double m_value = 0.0;  // the largest of the working set
  long m_steps = 0;
  double m_gain = 0.0;  // of the step tried last
  double m_bound = 0.0;
  double m_damping = 0.0;
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

}  // namespace nu::internal

#endif
