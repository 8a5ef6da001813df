// The groove of a ball bearing: the thinnest torus that holds the measured points.
#include <nu/nu.h>

#include <cmath>
#include <cstdio>

int main() {
  CNuPointArray points(48);
  for (int i = 0; i < 12; ++i)
    for (int j = 0; j < 4; ++j) {
      const double u = 2.0 * Nu_PI * i / 12.0, v = 2.0 * Nu_PI * j / 4.0;
      const double minor = 3.0 - 0.002 * ((i + j) % 3);
      const double distance = 20.0 + minor * std::cos(v);
      points.Add(
          CNuPoint(distance * std::cos(u), distance * std::sin(u), minor * std::sin(v)));
    }

  CNuTorSurf groove(2.0, 1.0);
  groove.FitMin(points, 1e-6, 500);
  std::printf("major radius %.4f, minor radius %.4f\n", groove.GetMajorRadius(),
              groove.GetMinorRadius());
}
