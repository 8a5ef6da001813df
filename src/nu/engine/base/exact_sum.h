#ifndef NU_ENGINE_BASE_EXACT_SUM_H
#define NU_ENGINE_BASE_EXACT_SUM_H

#include <array>

#include "nu/engine/base/double_double.h"

namespace nu::engine::base {

// A sum of doubles without rounding, as components that do not overlap, in ascending magnitude (J. R. Shewchuk,
// Adaptive precision floating-point arithmetic and fast robust geometric predicates, Discrete & Computational Geometry
// 18, 1997). Every addition takes one component more at most, every product two.
template<int kCapacity>
class ExactSum {
 public:
  void Add(double value) {
    int kept = 0;
    for (int i = 0; i < m_size; ++i) {
      const DoubleDouble sum = TwoSum(value, m_parts[i]);
      if (sum.low != 0.0) m_parts[kept++] = sum.low;
      value = sum.high;
    }
    if (value != 0.0) m_parts[kept++] = value;
    m_size = kept;
  }
  void AddProduct(double x, double y) {
    const DoubleDouble product = TwoProduct(x, y);
    Add(product.low);
    Add(product.high);
  }

  int Sign() const {
    if (m_size == 0) return 0;
    return m_parts[m_size - 1] > 0.0 ? 1 : -1;
  }
  // To about 100 bits.
  DoubleDouble Value() const {
    DoubleDouble value;
    for (int i = 0; i < m_size; ++i) value = value + DoubleDouble{m_parts[i]};
    return value;
  }

 private:
  std::array<double, kCapacity> m_parts;
  int m_size = 0;
};

}  // namespace nu::engine::base

#endif
