// The perimeter of an ellipse with the semi-axes 2 and 1, and an integral with a singular
// end.
#include <nu/nu.h>

#include <cmath>
#include <cstdio>

static double Speed(double t) {
  return std::sqrt(4.0 * std::sin(t) * std::sin(t) + std::cos(t) * std::cos(t));
}
static double InverseRoot(double x) {
  return 1.0 / std::sqrt(x);
}

int main() {
  CNuIntegral integral;
  std::printf("perimeter %.10f\n", integral.Calculate(Speed, 0.0, Nu_2PI, 1e-12));
  std::printf("of 1/sqrt(x) from 0 to 1: %.10f\n",
              integral.Calculate(InverseRoot, 0.0, 1.0, 1e-12));
  std::printf("error estimate within the tolerance: %s\n",
              integral.GetErrorEstimate() <= 2e-12 ? "yes" : "no");
}
