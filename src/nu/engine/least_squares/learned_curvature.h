#ifndef NU_ENGINE_LEAST_SQUARES_LEARNED_CURVATURE_H
#define NU_ENGINE_LEAST_SQUARES_LEARNED_CURVATURE_H

#include <algorithm>

#include "nu/engine/rooms.h"

namespace nu::engine::least_squares {

// What the second derivatives of the deviations leave out. Where a step carries points from one side of the evolute or
// the axis to the other, their feet jump and with them the gradient: in a cloud that bends the sum of squares about as
// much as the derivatives do, and always downwards, so that Newton's steps are too short. Symmetric updates of rank one
// learn it from the changes of the gradient (A. R. Conn, N. I. M. Gould, Ph. L. Toint, Math. Program. 50, 1991). It
// counts as long as it tells these clearly better than the derivatives alone (J. E. Dennis, D. M. Gay, R. E. Welsch,
// ACM Trans. Math. Softw. 7, 1981).
template<int N>
class LearnedCurvature {
 public:
  // The unknowns are others from now on.
  void Forget() {
    std::fill_n(&m_matrix[0][0], N * N, 0.0);
    m_better = 0;
  }

  // After a step from one system of equations to another one in the same unknowns.
  template<class System>
  void Learn(const System& before, const double (&step)[N], const System& after) {
    ++m_steps;
    double missed[N];
    double ofDerivatives = 0.0, ofBoth = 0.0, length = 0.0, along = 0.0;
    for (int i = 0; i < N; ++i) {
      missed[i] = before.right[i] - after.right[i];
      for (int j = 0; j < N; ++j) missed[i] -= (after.product[i][j] + after.second[i][j]) * step[j];
      ofDerivatives += missed[i] * missed[i] / after.product[i][i];
      for (int j = 0; j < N; ++j) missed[i] -= m_matrix[i][j] * step[j];
      ofBoth += missed[i] * missed[i] / after.product[i][i];
      length += step[i] * step[i] * after.product[i][i];
      along += missed[i] * step[i];
    }
    m_better = ofBoth < kBetter * kBetter * ofDerivatives ? m_better + 1 : 0;
    if (!(along * along > kClear * kClear * ofBoth * length)) return;
    for (int i = 0; i < N; ++i)
      for (int j = 0; j < N; ++j) m_matrix[i][j] += missed[i] * missed[j] / along;
  }

  bool Counts() const { return m_steps > kLeastSteps && m_better >= kOften; }
  double operator()(int i, int j) const { return m_matrix[i][j]; }

 private:
  static constexpr int kLeastSteps = 8;  // the derivatives alone end most fits before
  static constexpr int kOften = 2;
  static constexpr double kBetter = 0.5;
  static constexpr double kClear = 1e-4;  // cosine between a step and what was missed that gives an update

  double m_matrix[N][N] = {};
  int m_steps = 0;
  int m_better = 0;  // steps in a row of which both together told the change clearly better
};

}  // namespace nu::engine::least_squares

#endif
