#ifndef NU_ENGINE_ROOTS_TRIG_ISOLATION_H
#define NU_ENGINE_ROOTS_TRIG_ISOLATION_H

#include <vector>

#include "nu/engine/roots/trig_series.h"

namespace nu::engine::roots {

// An end of a cell: the derivatives with respect to t = n u at u, and the order of the cell to its right, the order of
// a derivative that keeps its sign there. On a cell of order 0 the function has no root; on one of order 1 it has at
// most one, and one exactly when its ends have different signs.
struct TrigPoint {
  double u;
  double d[TrigSeries::kSamples];
  int order;
};

// One turn of the circle, from a point where |f| is large, cut into cells.
//
// A derivative keeps its sign on a cell when its Taylor polynomials of second degree at both ends prove so on the half
// of the cell next to them, remainder and rounding included. A cell for which no low order does is cut in two; shorter
// cells may have higher orders, so that roots of any multiplicity end the cutting.
class TrigIsolation {
 public:
  // coefficientRoundings: how many roundings of themselves the coefficients are uncertain by.
  TrigIsolation(const TrigSeries& f, double coefficientRoundings);

  // The cells in ascending order from some u in [0, 2 pi) to u + 2 pi.
  const std::vector<TrigPoint>& Points() const { return m_points; }
  int HighestOrder() const { return m_highestOrder; }

  // No derivative of order j is larger.
  double Bound(int j) const { return m_bound[j]; }
  // A computed derivative of order j is off by no more.
  double EvaluationError(int j) const { return m_f.EvaluationError(j) * m_bound[j]; }
  // A value of f that is not above this is zero within the uncertainty of the coefficients, ...
  double TouchTolerance() const { return m_touchRoundings * m_bound[0]; }
  // ... and a computed derivative of order j that is not above this within that and the error of its evaluation.
  double Noise(int j) const { return m_noise[j]; }

 private:
  // Roots of higher multiplicity than a polynomial of degree 16 can have are counted with that one.
  static constexpr int kHighestOrder = 33;

  void Cut(const TrigPoint& left, const TrigPoint& right, int depth);
  int OrderOf(const TrigPoint& left, const TrigPoint& right, int depth) const;
  bool KeepsSign(int order, const double* left, const double* right, double half) const;
  bool ProvesSign(int order, double sign, const double* d, double direction, double half) const;
  int Settled(int order, const TrigPoint& left, const TrigPoint& right) const;
  int SettledConvex(const TrigPoint& left, const TrigPoint& right) const;

  const TrigSeries& m_f;
  double m_touchRoundings;
  double m_bound[kHighestOrder + 4];
  double m_noise[kHighestOrder + 1];
  std::size_t m_mostPoints;
  int m_highestOrder = 0;
  std::vector<TrigPoint> m_points;
};

}  // namespace nu::engine::roots

#endif
