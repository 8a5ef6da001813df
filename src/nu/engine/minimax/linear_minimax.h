#ifndef NU_ENGINE_MINIMAX_LINEAR_MINIMAX_H
#define NU_ENGINE_MINIMAX_LINEAR_MINIMAX_H

#include <algorithm>

#include "nu/engine/base/floating_point.h"
#include "nu/engine/minimax/minimax_rows.h"

namespace nu::engine::minimax {

// The linear program of a minimax step: the least t with value[i] + gradient[i] . s <= t for all rows and every
// component of s within +-bound.
//
// Dual simplex method (C. E. Lemke, Naval Research Logistics Quarterly 1, 1954) for few unknowns and many rows: K + 1
// constraints hold as equations; the inverse of their matrix gives the vertex and the multipliers. The start, the
// steepest corner of the bounds for the largest row, has no negative multiplier, so the most violated constraint enters
// until none is violated. Where that could go round in circles, the choice changes to the least index (R. G. Bland,
// Mathematics of Operations Research 2, 1977).
template<int K>
class LinearMinimax {
 public:
  // False without a row, and when the permitted number of pivots was not enough. A violation up to `rounding` is none.
  bool Solve(const MinimaxRows<K>& rows, double bound, double rounding) {
    m_contacts.count = 0;
    if (rows.size == 0) return false;
    StartAtCorner(rows, bound);
    // Bounds hold in a unit of their own.
    m_boundSlack = std::max(rounding, kBoundRounding * bound);
    for (int pivot = 0; pivot < kMostPivots; ++pivot) {
      const bool patient = pivot < kPatience;
      const int entering = FindViolated(rounding, patient);
      if (entering == kNone) {
        CollectContacts();
        return true;
      }
      if (!Exchange(entering)) return false;
    }
    return false;
  }

  const double (&Step() const)[K] { return m_step; }
  double Value() const { return m_value; }
  const MinimaxContacts<K>& Contacts() const { return m_contacts; }

 private:
  static constexpr int kUnknowns = K + 1;
  static constexpr int kNone = -1;
  // Ten or twenty pivots are usual.
  static constexpr int kPatience = 100;
  static constexpr int kMostPivots = 1000;
  static constexpr double kBoundRounding = 64.0 * kEpsilon;
  // An equation may only be replaced by one whose share of it is not a rounding error.
  static constexpr double kLeastPivot = 64.0 * kEpsilon;

  // Constraints are numbered: the rows, then for each component its upper and its lower bound.
  int BoundIndex(int k, bool upper) const { return m_rows->size + 2 * k + (upper ? 0 : 1); }

  void StartAtCorner(const MinimaxRows<K>& rows, double bound) {
    m_rows = &rows;
    m_bound = bound;
    std::fill_n(m_taken, kMostRows, false);
    std::fill_n(m_boundTaken, 2 * K, false);
    const int top = static_cast<int>(std::max_element(rows.value, rows.value + rows.size) - rows.value);
    std::fill_n(&m_inverse[0][0], kUnknowns * kUnknowns, 0.0);
    m_value = rows.value[top];
    for (int k = 0; k < K; ++k) {
      const double g = rows.gradient[k][top];
      const double sign = g > 0.0 ? -1.0 : 1.0;
      m_step[k] = sign * bound;
      m_value += g * m_step[k];
      m_active[k] = BoundIndex(k, sign > 0.0);
      m_boundTaken[m_active[k] - rows.size] = true;
      m_inverse[k][k] = sign;
      m_inverse[K][k] = g * sign;
    }
    m_active[K] = top;
    m_taken[top] = true;
    m_inverse[K][K] = -1.0;
  }

  // By how much the step is beyond a bound.
  double Beyond(int boundIndex) const {
    const double s = m_step[boundIndex / 2];
    return (boundIndex % 2 == 0 ? s : -s) - m_bound;
  }

  int FindViolated(double rounding, bool patient) {
    if (!patient) return FirstViolated(rounding);
    const int row = m_rows->LargestAfter(m_step, m_taken, m_value + rounding);
    int found = row < 0 ? kNone : row;
    double most = row < 0 ? m_boundSlack : std::max(m_boundSlack, m_rows->After(m_step, row) - m_value);
    for (int b = 0; b < 2 * K; ++b) {
      if (m_boundTaken[b] || !(Beyond(b) > most)) continue;
      most = Beyond(b);
      found = m_rows->size + b;
    }
    return found;
  }

  int FirstViolated(double rounding) const {
    for (int i = 0; i < m_rows->size; ++i)
      if (!m_taken[i] && m_rows->After(m_step, i) > m_value + rounding) return i;
    for (int b = 0; b < 2 * K; ++b)
      if (!m_boundTaken[b] && Beyond(b) > m_boundSlack) return m_rows->size + b;
    return kNone;
  }

  void Mark(int constraint, bool taken) {
    if (constraint < m_rows->size) {
      m_taken[constraint] = taken;
    } else {
      m_boundTaken[constraint - m_rows->size] = taken;
    }
  }

  // Entering takes the place of the equation whose multiplier is the first to vanish. The multipliers are minus the
  // last row of the inverse.
  bool Exchange(int entering) {
    double share[kUnknowns];
    const double violation = Shares(entering, share);
    int leaving = kNone;
    double least = kInfinity;
    for (int j = 0; j < kUnknowns; ++j) {
      if (!(share[j] > kLeastPivot)) continue;
      const double ratio = std::max(0.0, -m_inverse[K][j]) / share[j];
      const bool first = ratio == least && leaving != kNone && m_active[j] < m_active[leaving];
      if (!(ratio < least) && !first) continue;
      least = ratio;
      leaving = j;
    }
    if (leaving == kNone) return false;
    for (int i = 0; i < kUnknowns; ++i) {
      const double scaled = m_inverse[i][leaving] / share[leaving];
      for (int j = 0; j < kUnknowns; ++j) m_inverse[i][j] -= share[j] * scaled;
      m_inverse[i][leaving] = scaled;
      (i < K ? m_step[i] : m_value) -= violation * scaled;
    }
    Mark(m_active[leaving], false);
    Mark(entering, true);
    m_active[leaving] = entering;
    return true;
  }

  // The normal of a constraint as a combination of those of the equations; returns its violation.
  double Shares(int constraint, double (&share)[kUnknowns]) const {
    if (constraint >= m_rows->size) {
      const int b = constraint - m_rows->size;
      const double sign = b % 2 == 0 ? 1.0 : -1.0;
      for (int j = 0; j < kUnknowns; ++j) share[j] = sign * m_inverse[b / 2][j];
      return Beyond(b);
    }
    for (int j = 0; j < kUnknowns; ++j) share[j] = -m_inverse[K][j];
    for (int k = 0; k < K; ++k) {
      const double g = m_rows->gradient[k][constraint];
      for (int j = 0; j < kUnknowns; ++j) share[j] += g * m_inverse[k][j];
    }
    return m_rows->After(m_step, constraint) - m_value;
  }

  void CollectContacts() {
    m_contacts.count = 0;
    for (int j = 0; j < kUnknowns; ++j) {
      const double multiplier = -m_inverse[K][j];
      if (m_active[j] < m_rows->size && multiplier > 0.0) m_contacts.Add(m_active[j], multiplier);
    }
  }

  const MinimaxRows<K>* m_rows = nullptr;
  double m_bound = 0.0;
  double m_boundSlack = 0.0;
  double m_step[K] = {};
  double m_value = 0.0;
  int m_active[kUnknowns] = {};
  double m_inverse[kUnknowns][kUnknowns] = {};
  bool m_taken[kMostRows] = {};
  bool m_boundTaken[2 * K] = {};
  MinimaxContacts<K> m_contacts;
};

}  // namespace nu::engine::minimax

#endif
