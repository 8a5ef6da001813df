#ifndef NU_ENGINE_QUADRATURE_NATURAL_SPLINE_H
#define NU_ENGINE_QUADRATURE_NATURAL_SPLINE_H

#include <vector>

#include "nu/engine/rooms.h"

namespace nu::engine::quadrature {

// The natural cubic spline: twice continuously differentiable, second derivative 0 at both ends. It is kept as its
// first derivatives k_i at the nodes x_i, which solve the tridiagonal system (J. H. Ahlberg, E. N. Nilson, J. L. Walsh,
// The Theory of Splines and Their Applications, 1967)
//   2 k_0 + k_1 = 3 d_0,   l_i k_{i-1} + 2 k_i + m_i k_{i+1} = 3 (l_i d_{i-1} + m_i d_i),   k_{n-2} + 2 k_{n-1} = 3
//   d_{n-2}
// with h_i = x_{i+1} - x_i, d_i = (y_{i+1} - y_i) / h_i, l_i = h_i / (h_{i-1} + h_i), m_i = 1 - l_i. The diagonal is
// twice the rest of its row whatever the nodes are, so elimination without pivoting is stable, and no h is squared.
class NaturalSpline {
 public:
  // Ascending nodes, n >= 2.
  NaturalSpline(const double* x, int n);

  // Derivatives k for the values y.
  void Derivatives(const double* y, double* k) const;
  // The same for `count` splines at once: rows of values, one row per node.
  void Derivatives(const double* const* y, double* const* k, int count) const;

 private:
  // Value(i, j) and Derivative(i, j): node i of spline j.
  template<class Value, class Derivative>
  void Solve(int count, Value value, Derivative derivative) const;

  std::vector<double> m_width;    // h_i
  std::vector<double> m_before;   // l_i; 0 for the first node
  std::vector<double> m_after;    // m_i; 0 for the last node
  std::vector<double> m_upper;    // of the eliminated rows, whose diagonal is 1
  std::vector<double> m_inverse;  // 1 / pivot
};

}  // namespace nu::engine::quadrature

#endif
