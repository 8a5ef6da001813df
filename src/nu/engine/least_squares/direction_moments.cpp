#include "nu/engine/least_squares/direction_moments.h"

#include <initializer_list>

namespace nu::engine::least_squares {
namespace {

constexpr int kPairs[6][2] = {{0, 0}, {1, 1}, {2, 2}, {0, 1}, {0, 2}, {1, 2}};

// 1, x, x^2, x^3, x^4
struct Powers {
  explicit Powers(double x) {
    for (int k = 1; k <= 4; ++k) of[k] = of[k - 1] * x;
  }
  double of[5] = {1.0};
};

}  // namespace

JudgingMoments::JudgingMoments(const FourthMoments& m) : unit(m.spread[0]) {
  const double s[3] = {1.0, m.spread[1] / unit, m.spread[2] / unit};
  // E of the product of up to four coordinates.
  const auto moment = [&](std::initializer_list<int> coordinates) {
    int power[3] = {};
    double factor = 1.0;
    for (const int c : coordinates) {
      ++power[c];
      factor *= s[c];
    }
    return factor * m.Of(power[0], power[1], power[2]);
  };
  for (int i = 0; i < 3; ++i) {
    square[i] = moment({i, i});
    trace += square[i];
    cubic[i] = 0.0;
    for (int j = 0; j < 3; ++j) {
      cubic[i] += moment({i, j, j});
      m_mixed[i][j] = 0.0;
      for (int k = 0; k < 3; ++k) m_mixed[i][j] += moment({i, j, k, k});
    }
    for (int k = 0; k < 6; ++k) {
      const auto [p, q] = kPairs[k];
      m_third[i][k] = moment({i, p, q}) * (p == q ? 1.0 : 2.0);
    }
    fourthTrace += m_mixed[i][i];
  }
  const Powers second(s[1]), third(s[2]);
  int next = 0;
  for (int a = 0; a <= 4; ++a) {
    for (int b = 0; a + b <= 4; ++b) {
      constexpr double kFactorial[] = {1.0, 1.0, 2.0, 6.0, 24.0};
      const int c = 4 - a - b;
      const double multinomial = kFactorial[4] / (kFactorial[a] * kFactorial[b] * kFactorial[c]);
      m_fourth[next++] = multinomial * second.of[b] * third.of[c] * m.Of(a, b, c);
    }
  }
}

DirectionMoments JudgingMoments::Along(const Vec3& direction) const {
  DirectionMoments found;
  const double along[3] = {direction.x, direction.y, direction.z};
  double pairs[6];
  for (int k = 0; k < 6; ++k) pairs[k] = along[kPairs[k][0]] * along[kPairs[k][1]];
  const Powers x(direction.x), y(direction.y), z(direction.z);
  int next = 0;
  for (int a = 0; a <= 4; ++a)
    for (int b = 0; a + b <= 4; ++b) found.fourth += m_fourth[next++] * x.of[a] * y.of[b] * z.of[4 - a - b];
  for (int i = 0; i < 3; ++i) {
    for (int k = 0; k < 6; ++k) found.third[i] += m_third[i][k] * pairs[k];
    for (int j = 0; j < 3; ++j) found.mixed += m_mixed[i][j] * along[i] * along[j];
    found.square += square[i] * pairs[i];
  }
  return found;
}

}  // namespace nu::engine::least_squares
