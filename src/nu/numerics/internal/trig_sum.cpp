#include "nu/numerics/internal/trig_sum.h"

#include <cmath>

#include "nu/foundation/internal/elementary.h"
#include "nu/foundation/internal/error_free.h"

namespace nu::internal {
namespace {

// A sum and what rounding took from it.
class CompensatedSum {
 public:
  void Add(double x) {
    const double sum = m_sum + x;
    const double taken = sum - m_sum;
    m_lost += (m_sum - (sum - taken)) + (x - taken);
    m_sum = sum;
  }
  void AddProduct(double x, double y) {
    Add(x * y);
    m_lost += ProductError(x, y);
  }
  void AddSmall(double x) { m_lost += x; }
  // A sum that overflowed has lost nothing that could be told.
  double Value() const { return std::isfinite(m_sum) ? m_sum + m_lost : m_sum; }

 private:
  double m_sum = 0.0;
  double m_lost = 0.0;
};

// Adds a cos ku + b sin ku, with ku = angle + rest.
void AddHarmonic(double a, double b, double k, double u, CompensatedSum& sum) {
  const double angle = k * u;
  const double rest = ProductError(k, u);
  const double c = Cos(angle);
  const double s = Sin(angle);
  sum.AddProduct(a, c);
  sum.AddProduct(b, s);
  sum.AddSmall(rest * (b * c - a * s));
}

}  // namespace

double TrigValue(const double* a, const double* b, int n, double u) {
  CompensatedSum sum;
  sum.Add(a[0]);
  for (int k = 1; k <= n; ++k) AddHarmonic(a[k], b[k], k, u, sum);
  return sum.Value();
}

double TrigDerivative(const double* a, const double* b, int n, double u) {
  CompensatedSum sum;
  for (int k = 1; k <= n; ++k) AddHarmonic(k * b[k], -k * a[k], k, u, sum);
  return sum.Value();
}

}  // namespace nu::internal
