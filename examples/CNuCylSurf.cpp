// A pin of 8 mm in five sections of twelve points, slightly three-lobed: all four criteria.
#include <nu/nu.h>

#include <cmath>
#include <cstdio>

int main() {
  CNuPointArray points(60);
  for (int section = 0; section < 5; ++section)
    for (int i = 0; i < 12; ++i) {
      const double u = 2.0 * Nu_PI * i / 12.0,
                   radius = 4.0 + 0.002 * std::cos(3.0 * u) + 0.0005 * (section - 2);
      points.Add(CNuPoint(radius * std::cos(u), radius * std::sin(u), 6.0 * section));
    }
  const double tol = 1e-6;
  const long maxIter = 200;

  CNuCylSurf pin(1.0), middle(1.0), gauge(1.0), plug(1.0);
  double form = 0.0, sumSquares = 0.0, zone = 0.0;
  pin.Fit(points, &form, &sumSquares, maxIter);
  middle.FitMinZone(points, &zone, tol, maxIter);
  gauge.FitMin(points, tol, maxIter);
  plug.FitMax(points, tol, maxIter);
  std::printf("least squares  diameter %.5f  cylindricity %.5f\n", 2.0 * pin.GetRadius(),
              form);
  std::printf("minimum zone   diameter %.5f  cylindricity %.5f\n", 2.0 * middle.GetRadius(),
              zone);
  std::printf("circumscribed  diameter %.5f\n", 2.0 * gauge.GetRadius());
  std::printf("inscribed      diameter %.5f\n", 2.0 * plug.GetRadius());

  const CNuLine across(CNuPoint(0.0, 0.0, 10.0), CNuVector(1.0, 0.0, 0.0));
  CNuPoint in, out;
  const int count = pin.IntersectWith(across, &in, &out);
  std::printf("a line across meets it %d times, %.4f apart\n", count, in.DistanceTo(out));
}
