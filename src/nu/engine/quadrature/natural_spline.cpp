#include "nu/engine/quadrature/natural_spline.h"

namespace nu::engine::quadrature {

NaturalSpline::NaturalSpline(const double* x, int n) {
  const auto size = static_cast<std::size_t>(n);
  m_width.resize(size - 1);
  m_before.assign(size, 1.0);
  m_after.assign(size, 1.0);
  m_upper.resize(size);
  m_inverse.resize(size);
  for (std::size_t i = 0; i + 1 < size; ++i) m_width[i] = x[i + 1] - x[i];
  for (std::size_t i = 1; i + 1 < size; ++i) {
    const double sum = m_width[i - 1] + m_width[i];
    m_before[i] = m_width[i] / sum;
    m_after[i] = m_width[i - 1] / sum;
  }
  m_before[0] = 0.0;
  m_after[size - 1] = 0.0;
  double upper = 0.0;
  for (std::size_t i = 0; i < size; ++i) {
    m_inverse[i] = 1.0 / (2.0 - m_before[i] * upper);
    m_upper[i] = upper = m_after[i] * m_inverse[i];
  }
}

template<class Value, class Derivative>
void NaturalSpline::Solve(int count, Value value, Derivative derivative) const {
  const std::size_t last = m_width.size();
  for (std::size_t i = 0; i <= last; ++i) {
    const std::size_t below = i == 0 ? 0 : i - 1;
    const std::size_t here = i == last ? last - 1 : i;
    for (int j = 0; j < count; ++j) {
      const double slopeBefore = (value(below + 1, j) - value(below, j)) / m_width[below];
      const double slopeAfter = (value(here + 1, j) - value(here, j)) / m_width[here];
      const double right = 3.0 * (m_before[i] * slopeBefore + m_after[i] * slopeAfter);
      const double eliminated = i == 0 ? 0.0 : m_before[i] * derivative(below, j);
      derivative(i, j) = (right - eliminated) * m_inverse[i];
    }
  }
  for (std::size_t i = last; i-- > 0;) {
    for (int j = 0; j < count; ++j) derivative(i, j) -= m_upper[i] * derivative(i + 1, j);
  }
}

void NaturalSpline::Derivatives(const double* y, double* k) const {
  Solve(
      1, [y](std::size_t i, int) { return y[i]; }, [k](std::size_t i, int) -> double& { return k[i]; });
}

void NaturalSpline::Derivatives(const double* const* y, double* const* k, int count) const {
  Solve(
      count, [y](std::size_t i, int j) { return y[i][j]; }, [k](std::size_t i, int j) -> double& { return k[i][j]; });
}

}  // namespace nu::engine::quadrature
