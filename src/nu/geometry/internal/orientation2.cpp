#include "nu/geometry/internal/orientation2.h"

#include <array>

namespace nu::internal {
namespace {

// A sum of doubles without rounding, as components that do not overlap, in ascending magnitude.
template<int kCapacity>
class ExactSum {
 public:
  void Add(double value) {
    int kept = 0;
    for (int i = 0; i < m_size; ++i) {
      const double sum = value + m_parts[i];
      const double share = sum - value;
      const double rest = (value - (sum - share)) + (m_parts[i] - share);
      if (rest != 0.0) m_parts[kept++] = rest;
      value = sum;
    }
    if (value != 0.0) m_parts[kept++] = value;
    m_size = kept;
  }
  void AddProduct(double x, double y) {
    const double product = x * y;
    Add(std::fma(x, y, -product));
    Add(product);
  }
  int Sign() const {
    if (m_size == 0) return 0;
    return m_parts[m_size - 1] > 0.0 ? 1 : -1;
  }

 private:
  std::array<double, kCapacity> m_parts;
  int m_size = 0;
};

}  // namespace

int ExactOrientation2(const double* a, const double* b, const double* c) {
  ExactSum<12> sum;
  const double* corner[] = {a, b, c, a};
  for (int i = 0; i < 3; ++i) {
    sum.AddProduct(corner[i][0], corner[i + 1][1]);
    sum.AddProduct(-corner[i][1], corner[i + 1][0]);
  }
  return sum.Sign();
}

}  // namespace nu::internal
