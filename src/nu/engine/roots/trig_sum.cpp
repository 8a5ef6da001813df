#include "nu/engine/roots/trig_sum.h"

#include "nu/engine/base/compensated_sum.h"
#include "nu/engine/base/elementary.h"
#include "nu/engine/base/error_free.h"

namespace nu::engine::roots {
namespace {

// Adds a cos ku + b sin ku, with ku = angle + rest.
void AddHarmonic(double a, double b, double k, double u, CompensatedSum& sum) {
  const double angle = k * u;
  const double rest = ProductError(k, u);
  const auto [s, c] = SinCos(angle);
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

}  // namespace nu::engine::roots
