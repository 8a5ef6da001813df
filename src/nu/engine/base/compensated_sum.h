#ifndef NU_ENGINE_BASE_COMPENSATED_SUM_H
#define NU_ENGINE_BASE_COMPENSATED_SUM_H

#include <cmath>

#include "nu/engine/base/error_free.h"

namespace nu::engine::base {

// A sum that carries its rounding errors along (T. Ogita, S. M. Rump, S. Oishi, Accurate sum and dot product, SIAM J.
// Sci. Comput. 26, 2005).
class CompensatedSum {
 public:
  void Add(double term) {
    const DoubleDouble sum = TwoSum(m_sum, term);
    m_lost += sum.low;
    m_sum = sum.high;
  }
  void AddProduct(double x, double y) {
    Add(x * y);
    AddSmall(ProductError(x, y));
  }
  // Adds a term of the size of the rounding errors.
  void AddSmall(double term) { m_lost += term; }
  // The rounding errors of a sum that has overflowed are meaningless.
  double Value() const { return std::isfinite(m_sum) ? m_sum + m_lost : m_sum; }

 private:
  double m_sum = 0.0;
  double m_lost = 0.0;
};

}  // namespace nu::engine::base

#endif
