#ifndef NU_NUMERICS_INTERNAL_COMPENSATED_SUM_H
#define NU_NUMERICS_INTERNAL_COMPENSATED_SUM_H

#include <cmath>

namespace nu::internal {

// A sum that carries the rounding errors of its additions along (A. Neumaier, ZAMM 54, 1974).
class CompensatedSum {
 public:
  void Add(double term) {
    const double sum = m_sum + term;
    m_lost += std::fabs(m_sum) >= std::fabs(term) ? (m_sum - sum) + term : (term - sum) + m_sum;
    m_sum = sum;
  }
  double Value() const { return m_sum + m_lost; }

 private:
  double m_sum = 0.0;
  double m_lost = 0.0;
};

}  // namespace nu::internal

#endif
