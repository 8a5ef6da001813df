#include "nu/engine/roots/trig_sum.h"

#include <cstdlib>

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

// A product of two waves is half the sum of those with the sum and the difference of their numbers.
void AddTrigProduct(const double* a, const double* b, int n, const double* c, const double* d, int m, double* cosines,
                    double* sines) {
  for (int j = 0; j <= n; ++j) {
    const double halfCosine = 0.5 * a[j];
    const double halfSine = j == 0 ? 0.0 : 0.5 * b[j];
    for (int k = 0; k <= m; ++k) {
      const double sine = k == 0 ? 0.0 : d[k];
      cosines[j + k] += halfCosine * c[k] - halfSine * sine;
      sines[j + k] += halfSine * c[k] + halfCosine * sine;
      cosines[std::abs(j - k)] += halfCosine * c[k] + halfSine * sine;
      sines[std::abs(j - k)] += j > k ? halfSine * c[k] - halfCosine * sine : halfCosine * sine - halfSine * c[k];
    }
  }
  sines[0] = 0.0;
}

}  // namespace nu::engine::roots
