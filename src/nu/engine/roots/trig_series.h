#ifndef NU_ENGINE_ROOTS_TRIG_SERIES_H
#define NU_ENGINE_ROOTS_TRIG_SERIES_H

#include <vector>

#include "nu/engine/rooms.h"

namespace nu::engine::roots {

// f(u) = sum of a_k cos ku + b_k sin ku for k = 0..n, and its derivatives with respect to t = n u, so that all of them
// are of one size. Harmonics are turned one from the other, which costs a few multiplications each; what that and the
// summation round away is below EvaluationError().
class TrigSeries {
 public:
  TrigSeries(const double* a, const double* b, int n);

  int Degree() const { return m_degree; }
  const double* Cos() const { return m_a.data(); }
  const double* Sin() const { return m_b.data(); }

  // The derivative with respect to t.
  TrigSeries Derivative() const;

  // Returns the derivatives from order 0 on at u.
  static constexpr int kSamples = 5;
  void Sample(double u, double* d) const;
  struct ValueAndSlope {
    double value;
    double slope;  // with respect to t
  };
  ValueAndSlope At(double u) const;
  // Does the same for any number of them.
  void Derivatives(double u, int count, double* d) const;

  // bound[j] becomes the sum of (k/n)^j |harmonic k|, j < count: no derivative of order j is larger.
  void Bounds(int count, double* bound) const;
  // Bounds the error of a computed derivative of order j, relative to Bounds.
  double EvaluationError(int j) const;

 private:
  int m_degree;
  std::vector<double> m_a;
  std::vector<double> m_b;
  std::vector<double> m_weight;  // k/n
};

}  // namespace nu::engine::roots

#endif
