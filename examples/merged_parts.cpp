// Two ends of a ball are measured and fitted apart. Joined, they become one association,
// and a few steps lead from the sphere of one end to that of all points.
#include <nu/nu.h>

#include <cmath>
#include <cstdio>

static CNuPointArray Cap(double lowest, double highest) {
  CNuPointArray points(60);
  for (int i = 0; i < 60; ++i) {
    const double v = (lowest + (highest - lowest) * (i / 12) / 4.0) * Nu_PI / 180.0,
                 u = 30.0 * i * Nu_PI / 180.0, radius = 10.0 + 0.0005 * ((7 * i) % 5 - 2);
    points.Add(CNuPoint(radius * std::cos(u) * std::cos(v),
                        radius * std::sin(u) * std::cos(v), radius * std::sin(v)));
  }
  return points;
}

int main() {
  const CNuPointArray top = Cap(20.0, 70.0), bottom = Cap(-70.0, -20.0);
  CNuAssociation all(top);
  CNuSphSurf ball(1.0);
  all.Fit(NuLeastSquares, &ball);
  std::printf("one end:   radius %.5f\n", ball.GetRadius());

  all.Merge(CNuAssociation(bottom));
  const CNuAssociationReport report = all.Refit(NuLeastSquares, &ball);
  std::printf("both ends: radius %.5f, %d points, form %.5f\n", ball.GetRadius(),
              all.GetNumberPoints(), report.GetForm());
}
