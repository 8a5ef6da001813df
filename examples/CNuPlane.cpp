// The flatness of a face, and the line in which it meets another one.
#include <nu/nu.h>

#include <cstdio>

int main() {
  const double heights[3][3] = {
      {0.002, -0.001, 0.000}, {-0.001, -0.003, 0.001}, {0.001, 0.000, 0.003}};
  CNuPointArray points(9);
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j)
      points.Add(CNuPoint(20.0 * i, 15.0 * j, 8.0 + heights[i][j]));

  CNuPlane face;
  double form = 0.0, sumSquares = 0.0;
  face.Fit(points, &form, &sumSquares);
  CNuPlane middle, lower, upper;
  double zone = 0.0;
  middle.FitMinZone(points, &zone, &lower, &upper, 1e-6);
  std::printf("flatness: %.5f by least squares, %.5f as the minimum zone\n", form, zone);
  std::printf("boundaries %.5f apart\n", lower.DistanceTo(upper));

  const CNuPlane wall(CNuPoint(40.0, 0.0, 0.0), CNuVector(1.0, 0.0, 0.0));
  CNuLine edge;
  if (face.IntersectWith(wall, &edge) == 1)
    std::printf("edge through x %.3f z %.3f, %.4f degrees between the faces\n",
                edge.GetPoint().x(), edge.GetPoint().z(), face.AngleWith(wall));
}
