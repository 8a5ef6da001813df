// An oval hole by least squares, and points on the curve.
#include <nu/nu.h>

#include <cstdio>

int main() {
  const double hole[][2] = {{6.001, 0.000},  {5.196, 2.001},   {3.000, 3.463},
                            {0.001, 4.000},  {-2.999, 3.465},  {-5.197, 1.999},
                            {-6.000, 0.001}, {-5.195, -2.000}, {-3.001, -3.464},
                            {0.000, -4.001}, {3.001, -3.463},  {5.196, -1.999}};
  CNuPointArray points(12);
  for (const auto& p : hole) points.Add(CNuPoint(p[0], p[1], 0.0));

  CNuEllipse ellipse(2.0, 1.0);
  double form = 0.0, sumSquares = 0.0;
  ellipse.Fit(points, &form, &sumSquares, 100);
  std::printf("semi-axes %.4f and %.4f, form %.5f\n", ellipse.GetSemiAxisA(),
              ellipse.GetSemiAxisB(), form);
  std::printf("a point at (0, 5) is %.4f away\n",
              ellipse.DistanceTo(CNuPoint(0.0, 5.0, 0.0)));
  std::printf("it as a closed polygon of 72 edges is %.3f long\n",
              ellipse.ToPolyline(73).Length());
}
