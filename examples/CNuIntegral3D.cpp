// The mean squared distance of the points of a unit cube from one corner.
#include <nu/nu.h>

#include <cstdio>

static double SquaredDistance(double x, double y, double z) {
  return x * x + y * y + z * z;
}

int main() {
  CNuIntegral3D integral;
  std::printf("%.9f\n",
              integral.Calculate(SquaredDistance, 0.0, 1.0, 0.0, 1.0, 0.0, 1.0, 1e-9));
}
