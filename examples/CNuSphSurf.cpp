// A reference sphere, measured at 25 places for the test of a probe as in ISO 10360-5: its
// diameter, its form, and the circle in which a plane cuts it.
#include <nu/nu.h>

#include <cmath>
#include <cstdio>

int main() {
  CNuPointArray points(25);
  for (int level = 0; level < 5; ++level)
    for (int i = 0; i < 5; ++i) {
      const double latitude = 0.05 + 0.3 * level,
                   longitude = 2.0 * Nu_PI * i / 5.0 + 0.5 * level;
      const double radius = 12.5 + 0.0004 * std::cos(2.0 * longitude) * std::cos(latitude);
      points.Add(CNuPoint(100.0 + radius * std::cos(latitude) * std::cos(longitude),
                          50.0 + radius * std::cos(latitude) * std::sin(longitude),
                          radius * std::sin(latitude)));
    }

  CNuSphSurf ball(1.0);
  double form = 0.0, sumSquares = 0.0;
  ball.Fit(points, &form, &sumSquares, 50);
  CNuSphSurf middle(1.0);
  double zone = 0.0;
  middle.FitMinZone(points, &zone, 1e-6, 200);
  std::printf("diameter %.5f, form %.5f, minimum zone %.5f\n", 2.0 * ball.GetRadius(), form,
              zone);

  CNuObjArray section(1);
  ball.IntersectWith(CNuPlane(CNuPoint(0.0, 0.0, 7.5), CNuVector(0.0, 0.0, 1.0)), &section);
  const auto* circle = static_cast<const CNuCircle*>(section[0]);
  std::printf("circle of radius %.3f around %.3f %.3f %.3f\n", circle->GetRadius(),
              circle->GetCentre().x(), circle->GetCentre().y(), circle->GetCentre().z());
  delete section[0];
}
