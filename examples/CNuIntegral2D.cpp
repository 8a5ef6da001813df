// The volume under a paraboloid over a disc, whose bounds in y depend on x.
#include <nu/nu.h>

#include <cmath>
#include <cstdio>

static double Height(double x, double y) {
  return 1.0 - x * x - y * y;
}
static double Lower(double x) {
  return -std::sqrt(std::fmax(0.0, 1.0 - x * x));
}
static double Upper(double x) {
  return std::sqrt(std::fmax(0.0, 1.0 - x * x));
}

int main() {
  CNuIntegral2D integral;
  std::printf("over the disc   %.9f, pi / 2 is %.9f\n",
              integral.Calculate(Height, -1.0, 1.0, Lower, Upper, 1e-10), Nu_PI / 2.0);
  std::printf("over a rectangle %.9f\n",
              integral.Calculate(Height, 0.0, 0.5, 0.0, 0.5, 1e-10));
}
