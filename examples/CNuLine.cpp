// The straightness of an edge, and where it meets another one.
#include <nu/nu.h>

#include <cstdio>

int main() {
  const double heights[] = {0.0012, -0.0004, -0.0011, 0.0003, 0.0009, -0.0007, 0.0005};
  CNuPointArray points(7);
  for (int i = 0; i < 7; ++i)
    points.Add(CNuPoint(10.0 * i, 5.0 + 0.001 * i + heights[i], 0.0));

  CNuLine edge;
  double form = 0.0, sumSquares = 0.0, zone = 0.0;
  edge.Fit(points, &form, &sumSquares);
  CNuLine narrowest;
  narrowest.FitMinZone(points, &zone, 1e-6, 100);
  std::printf("straightness: %.5f by least squares, %.5f as the minimum zone\n", form,
              zone);

  const CNuLine side(CNuPoint(0.0, 0.0, 0.0), CNuVector(0.0, 1.0, 0.0));
  CNuPoint corner;
  if (edge.IntersectWith(side, &corner) == 1)
    std::printf("corner at %.4f %.4f, angle %.4f degrees\n", corner.x(), corner.y(),
                edge.AngleWith(side));
}
