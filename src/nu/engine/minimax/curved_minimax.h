#ifndef NU_ENGINE_MINIMAX_CURVED_MINIMAX_H
#define NU_ENGINE_MINIMAX_CURVED_MINIMAX_H

#include <algorithm>
#include <cmath>

#include "nu/engine/base/floating_point.h"
#include "nu/engine/minimax/minimax_rows.h"

namespace nu::engine::minimax {

// The quadratic program of a minimax step: the least t + s . H s / 2 with value[i] + gradient[i] . s <= t for all rows.
// With H the curvature of the rows that hold the solution, weighted with their multipliers, its step is Newton's for
// the equations of the optimum; with K + 1 such rows H drops out, and it is Newton's for "all of them are equal".
//
// Dual active-set method. On a set of rows taken as equations the optimum has a closed form; multipliers go towards
// those of that optimum until the first vanishes, whose row is dropped (the minor cycle of P. Wolfe, Mathematical
// Programming 11, 1976); then the most violated row joins. The equations are solved in the range and the null space of
// the differences of the gradients, from a Householder reduction.
template<int K>
class CurvedMinimax {
 public:
  // `contacts`, the start, must be independent, as those of the linear program are; it receives those of the solution.
  // False when H is not positive where the rows leave the step free, or for rounding errors. A violation up to
  // `rounding` is none.
  bool Solve(const MinimaxRows<K>& rows, const double (&curvature)[K][K], double rounding,
             MinimaxContacts<K>& contacts) {
    constexpr int kMostCycles = 40;  // five are usual
    m_rows = &rows;
    m_curvature = &curvature;
    for (int cycle = 0; cycle < kMostCycles; ++cycle) {
      if (!SolveOn(contacts)) return false;
      if (MoveTowards(contacts)) continue;
      bool taken[kMostRows] = {};
      for (int j = 0; j < contacts.count; ++j) taken[contacts.row[j]] = true;
      const int violated = rows.LargestAfter(m_step, taken, m_value + rounding);
      if (violated < 0) return true;
      if (!Join(violated, contacts)) return false;
    }
    return false;
  }

  // The step once more after the values of the contacts have been changed.
  bool SolveAgain(const MinimaxContacts<K>& contacts) { return SolveOn(contacts); }

  const double (&Step() const)[K] { return m_step; }
  double Value() const { return m_value; }
  // s . H s / 2 of the step.
  double Bending() const {
    double sum = 0.0;
    for (int i = 0; i < K; ++i)
      for (int j = 0; j < K; ++j) sum += m_step[i] * (*m_curvature)[i][j] * m_step[j];
    return 0.5 * sum;
  }
  // The contacts left a direction free in which the curvature is not positive.
  bool IsIndefinite() const { return m_indefinite; }
  const double (&NegativeCurvatureDirection() const)[K] { return m_hollow; }

 private:
  // Gradients are at most about 1 long: a shorter remainder, or a smaller curvature relative to the largest, is noise.
  static constexpr double kIndependent = 1024.0 * kEpsilon;

  double Gradient(int k, int row) const { return m_rows->gradient[k][row]; }

  // v becomes Q v, or with `back` its inverse.
  void Reflect(double (&v)[K], bool back) const {
    for (int at = 0; at < m_rank; ++at) {
      const int j = back ? m_rank - 1 - at : at;
      double sum = 0.0;
      for (int k = j; k < K; ++k) sum += m_mirror[j][k] * v[k];
      for (int k = j; k < K; ++k) v[k] -= sum * m_mirror[j][k];
    }
  }

  // Householder reduction of the differences of the contacts' gradients from the first one's; m_triangle[j][i], i <= j,
  // is column j. False when they depend on each other.
  bool Reduce(const MinimaxContacts<K>& contacts) {
    m_rank = 0;
    for (int j = 0; j + 1 < contacts.count; ++j) {
      double(&column)[K] = m_triangle[j];
      for (int k = 0; k < K; ++k) column[k] = Gradient(k, contacts.row[j + 1]) - Gradient(k, contacts.row[0]);
      Reflect(column, false);
      double square = 0.0;
      for (int k = j; k < K; ++k) square += column[k] * column[k];
      const double length = std::sqrt(square);
      if (!(length > kIndependent)) return false;
      // The mirror is scaled to a length of sqrt(2).
      const double pivot = column[j] > 0.0 ? -length : length;
      const double scale = 1.0 / std::sqrt(length * (length + std::fabs(column[j])));
      for (int k = j; k < K; ++k) m_mirror[j][k] = scale * (column[k] - (k == j ? pivot : 0.0));
      column[j] = pivot;
      ++m_rank;
    }
    return true;
  }

  void TurnCurvature() {
    for (int i = 0; i < K; ++i) {
      std::copy_n((*m_curvature)[i], K, m_turned[i]);
      Reflect(m_turned[i], false);
    }
    for (int j = 0; j < K; ++j) {
      double column[K];
      for (int i = 0; i < K; ++i) column[i] = m_turned[i][j];
      Reflect(column, false);
      for (int i = 0; i < K; ++i) m_turned[i][j] = column[i];
    }
  }

  // Cholesky's method on the part of the curvature that the contacts leave free; the solution is added to s.
  bool SolveFreePart(const double (&gradient)[K], double (&s)[K]) {
    double largest = 0.0;
    for (int i = 0; i < K; ++i) largest = std::max(largest, std::fabs(m_turned[i][i]));
    double factor[K][K];
    for (int i = m_rank; i < K; ++i) {
      double right = -gradient[i];
      for (int j = 0; j < m_rank; ++j) right -= m_turned[i][j] * s[j];
      for (int j = m_rank; j <= i; ++j) {
        double sum = m_turned[i][j];
        for (int k = m_rank; k < j; ++k) sum -= factor[i][k] * factor[j][k];
        if (j < i) {
          factor[i][j] = sum / factor[j][j];
          right -= factor[i][j] * s[j];
          continue;
        }
        if (!(sum > kIndependent * largest)) {
          FindHollow(factor, i);
          return false;
        }
        factor[i][i] = std::sqrt(sum);
        s[i] = right / factor[i][i];
      }
    }
    for (int i = K - 1; i >= m_rank; --i) {
      s[i] /= factor[i][i];
      for (int j = m_rank; j < i; ++j) s[j] -= factor[i][j] * s[i];
    }
    return true;
  }

  // The direction in which the curvature is what the pivot that failed is.
  void FindHollow(const double (&factor)[K][K], int failed) {
    std::fill_n(m_hollow, K, 0.0);
    m_hollow[failed] = 1.0;
    for (int i = failed - 1; i >= m_rank; --i) {
      for (int k = i + 1; k <= failed; ++k) m_hollow[i] -= factor[k][i] * m_hollow[k];
      m_hollow[i] /= factor[i][i];
    }
    Reflect(m_hollow, true);
  }

  // The optimum with the contacts as equations: m_step, m_value, m_multiplier.
  bool SolveOn(const MinimaxContacts<K>& contacts) {
    m_indefinite = false;
    if (!Reduce(contacts)) return false;
    TurnCurvature();
    const int first = contacts.row[0];
    double gradient[K];
    for (int k = 0; k < K; ++k) gradient[k] = Gradient(k, first);
    Reflect(gradient, false);
    double s[K] = {};
    for (int j = 0; j < m_rank; ++j) {
      s[j] = m_rows->value[first] - m_rows->value[contacts.row[j + 1]];
      for (int i = 0; i < j; ++i) s[j] -= m_triangle[j][i] * s[i];
      s[j] /= m_triangle[j][j];
    }
    m_indefinite = !SolveFreePart(gradient, s);
    if (m_indefinite) return false;
    SolveMultipliers(gradient, s);
    std::copy_n(s, K, m_step);
    Reflect(m_step, true);
    m_value = m_rows->After(m_step, first);
    return std::isfinite(m_value);
  }

  // The sum of multiplier * gradient is -H s.
  void SolveMultipliers(const double (&gradient)[K], const double (&s)[K]) {
    m_multiplier[0] = 1.0;
    for (int j = m_rank - 1; j >= 0; --j) {
      double right = -gradient[j];
      for (int k = 0; k < K; ++k) right -= m_turned[j][k] * s[k];
      for (int i = j + 1; i < m_rank; ++i) right -= m_triangle[i][j] * m_multiplier[i + 1];
      m_multiplier[j + 1] = right / m_triangle[j][j];
      m_multiplier[0] -= m_multiplier[j + 1];
    }
  }

  // Takes over the multipliers found, or goes as far towards them as none becomes negative and drops the one that has
  // become zero: true.
  bool MoveTowards(MinimaxContacts<K>& contacts) const {
    int dropped = -1;
    double part = 1.0;
    for (int j = 0; j < contacts.count; ++j) {
      if (!(m_multiplier[j] < 0.0)) continue;
      const double reached = contacts.multiplier[j] / (contacts.multiplier[j] - m_multiplier[j]);
      if (dropped >= 0 && !(reached < part)) continue;
      part = reached;
      dropped = j;
    }
    for (int j = 0; j < contacts.count; ++j)
      contacts.multiplier[j] += part * (m_multiplier[j] - contacts.multiplier[j]);
    if (dropped >= 0) contacts.Drop(dropped);
    return dropped >= 0;
  }

  // A row whose gradient depends on the others' takes the place of the first of them to reach multiplier zero.
  bool Join(int row, MinimaxContacts<K>& contacts) const {
    double v[K];
    for (int k = 0; k < K; ++k) v[k] = Gradient(k, row) - Gradient(k, contacts.row[0]);
    Reflect(v, false);
    double rest = 0.0;
    for (int k = m_rank; k < K; ++k) rest += v[k] * v[k];
    if (std::sqrt(rest) > kIndependent) {
      contacts.Add(row, 0.0);
      return true;
    }
    double share[K + 1];
    share[0] = 1.0;
    for (int j = m_rank - 1; j >= 0; --j) {
      for (int i = j + 1; i < m_rank; ++i) v[j] -= m_triangle[i][j] * share[i + 1];
      share[j + 1] = v[j] / m_triangle[j][j];
      share[0] -= share[j + 1];
    }
    int leaving = -1;
    double least = kInfinity;
    for (int j = 0; j < contacts.count; ++j) {
      if (!(share[j] > kIndependent) || !(contacts.multiplier[j] < least * share[j])) continue;
      least = contacts.multiplier[j] / share[j];
      leaving = j;
    }
    if (leaving < 0) return false;
    for (int j = 0; j < contacts.count; ++j) contacts.multiplier[j] -= least * share[j];
    contacts.row[leaving] = row;
    contacts.multiplier[leaving] = least;
    return true;
  }

  const MinimaxRows<K>* m_rows = nullptr;
  const double (*m_curvature)[K][K] = nullptr;
  int m_rank = 0;
  double m_mirror[K][K] = {};
  double m_triangle[K][K] = {};
  double m_turned[K][K] = {};
  double m_multiplier[K + 1] = {};
  double m_step[K] = {};
  double m_hollow[K] = {};
  double m_value = 0.0;
  bool m_indefinite = false;
};

}  // namespace nu::engine::minimax

#endif
