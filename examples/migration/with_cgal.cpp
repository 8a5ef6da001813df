// Tasks of the example programs, by CGAL.
#include <CGAL/Exact_predicates_exact_constructions_kernel.h>
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>
#include <CGAL/Min_circle_2.h>
#include <CGAL/Min_circle_2_traits_2.h>
#include <CGAL/convex_hull_2.h>
#include <CGAL/linear_least_squares_fitting_3.h>

#include <cmath>
#include <cstdio>
#include <vector>

using Inexact = CGAL::Exact_predicates_inexact_constructions_kernel;
using Exact = CGAL::Exact_predicates_exact_constructions_kernel;

int main() {
  // CNuCircle: the circumscribed circle of a bore.
  const double bore[][2] = {{10.004, 0.001},   {7.069, 7.074},   {0.002, 9.996},
                            {-7.075, 7.069},   {-9.997, -0.003}, {-7.066, -7.071},
                            {-0.001, -10.003}, {7.073, -7.068}};
  std::vector<Exact::Point_2> points;
  for (const auto& p : bore) points.emplace_back(p[0], p[1]);
  const CGAL::Min_circle_2<CGAL::Min_circle_2_traits_2<Exact>> circle(points.begin(),
                                                                      points.end(), true);
  std::printf("circumscribed: diameter %.4f\n",
              2.0 * std::sqrt(CGAL::to_double(circle.circle().squared_radius())));

  // CNuPlane: the flatness of a face.
  const double heights[3][3] = {
      {0.002, -0.001, 0.000}, {-0.001, -0.003, 0.001}, {0.001, 0.000, 0.003}};
  std::vector<Inexact::Point_3> face;
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) face.emplace_back(20.0 * i, 15.0 * j, 8.0 + heights[i][j]);
  Inexact::Plane_3 plane;
  CGAL::linear_least_squares_fitting_3(face.begin(), face.end(), plane,
                                       CGAL::Dimension_tag<0>());
  const Inexact::Vector_3 normal =
      plane.orthogonal_vector() / std::sqrt(plane.orthogonal_vector().squared_length());
  double low = INFINITY, high = -INFINITY;
  for (const auto& p : face) {
    const double deviation = (p - CGAL::ORIGIN) * normal;
    low = std::fmin(low, deviation);
    high = std::fmax(high, deviation);
  }
  std::printf("plane: flatness %.5f\n", high - low);

  // CNuPointArray: the corners of the convex hull.
  const std::vector<Inexact::Point_2> plate = {{0, 0},  {40, 0},  {40, 30},
                                               {0, 30}, {20, 15}, {10, 5}};
  std::vector<Inexact::Point_2> hull;
  CGAL::convex_hull_2(plate.begin(), plate.end(), std::back_inserter(hull));
  std::printf("hull: %d corners\n", static_cast<int>(hull.size()));
}
