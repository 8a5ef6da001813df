// A bore of 20 mm, probed at eight places: the four circles that standards associate with a
// profile.
#include <nu/nu.h>

#include <cstdio>

int main() {
  const double probed[][2] = {{10.004, 0.001},   {7.069, 7.074},   {0.002, 9.996},
                              {-7.075, 7.069},   {-9.997, -0.003}, {-7.066, -7.071},
                              {-0.001, -10.003}, {7.073, -7.068}};
  CNuPointArray points(8);
  for (const auto& p : probed) points.Add(CNuPoint(p[0], p[1], 0.0));
  const double tol = 1e-6;  // mm: points may be so far off one plane
  const long maxIter = 100;

  CNuCircle gauss(1.0), chebyshev(1.0), circumscribed(1.0), inscribed(1.0);
  double form = 0.0, sumSquares = 0.0, zone = 0.0;
  gauss.Fit(points, &form, &sumSquares, maxIter);
  chebyshev.FitMinZone(points, &zone, tol, maxIter);
  circumscribed.FitMin(points, tol);
  inscribed.FitMax(points, tol);

  std::printf("least squares    diameter %.4f  roundness %.4f\n", 2.0 * gauss.GetRadius(),
              form);
  std::printf("minimum zone     diameter %.4f  roundness %.4f\n",
              2.0 * chebyshev.GetRadius(), zone);
  std::printf("circumscribed    diameter %.4f\n", 2.0 * circumscribed.GetRadius());
  std::printf("inscribed        diameter %.4f\n", 2.0 * inscribed.GetRadius());
}
