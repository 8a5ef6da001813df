#include <nu/nu.h>

#include <cstdio>

int main() {
  // A bore of 20 mm, probed at eight places.
  const double probed[][2] = {{10.004, 0.001},   {7.069, 7.074},   {0.002, 9.996},
                              {-7.075, 7.069},   {-9.997, -0.003}, {-7.066, -7.071},
                              {-0.001, -10.003}, {7.073, -7.068}};
  CNuPointArray points(8);
  for (const auto& p : probed) points.Add(CNuPoint(p[0], p[1], 0.0));

  try {
    CNuCircle bore(1.0);  // any circle: the fit replaces it
    double roundness = 0.0, sumOfSquares = 0.0;
    bore.Fit(points, &roundness, &sumOfSquares, 100);
    std::printf("least squares: diameter %.4f mm, roundness %.4f mm\n",
                2.0 * bore.GetRadius(), roundness);

    bore.FitMinZone(points, &roundness, 1e-6, 100);
    std::printf("minimum zone:  diameter %.4f mm, roundness %.4f mm\n",
                2.0 * bore.GetRadius(), roundness);
  } catch (const CNuException& failure) {
    std::printf("%s cannot be fitted: %s\n", failure.m_szWhere, NuCauseText(failure));
    return 1;
  }
}
