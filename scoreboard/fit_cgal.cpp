// An adapter of the scoreboard: lines and planes by the principal component analysis of CGAL, circumscribed circles by
// its Min_circle_2, both with doubles.

#include <CGAL/Min_circle_2.h>
#include <CGAL/Min_circle_2_traits_2.h>
#include <CGAL/Simple_cartesian.h>
#include <CGAL/linear_least_squares_fitting_3.h>

#include <cmath>
#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

using Kernel = CGAL::Simple_cartesian<double>;

int main() {
  std::string feature, criterion;
  std::size_t count = 0;
  std::cin >> feature >> criterion >> count;
  std::vector<Kernel::Point_3> points;
  for (std::size_t i = 0; i < count; ++i) {
    double x = 0.0, y = 0.0, z = 0.0;
    std::cin >> x >> y >> z;
    points.emplace_back(x, y, z);
  }
  const auto print = [](const char* name, double x, double y, double z) {
    std::printf("%s %.17g %.17g %.17g\n", name, x, y, z);
  };
  Kernel::Point_3 centroid;
  if (criterion == "ls" && feature == "line") {
    Kernel::Line_3 line;
    CGAL::linear_least_squares_fitting_3(points.begin(), points.end(), line, centroid, CGAL::Dimension_tag<0>());
    const auto d = line.direction();
    const double length = std::sqrt(d.dx() * d.dx() + d.dy() * d.dy() + d.dz() * d.dz());
    print("point", centroid.x(), centroid.y(), centroid.z());
    print("direction", d.dx() / length, d.dy() / length, d.dz() / length);
  } else if (criterion == "ls" && feature == "plane") {
    Kernel::Plane_3 plane;
    CGAL::linear_least_squares_fitting_3(points.begin(), points.end(), plane, centroid, CGAL::Dimension_tag<0>());
    const auto n = plane.orthogonal_vector();
    const double length = std::sqrt(n.squared_length());
    print("point", centroid.x(), centroid.y(), centroid.z());
    print("direction", n.x() / length, n.y() / length, n.z() / length);
  } else if (criterion == "mc" && feature == "circle") {
    std::vector<Kernel::Point_2> flat;
    for (const auto& p : points) flat.emplace_back(p.x(), p.y());
    const CGAL::Min_circle_2<CGAL::Min_circle_2_traits_2<Kernel>> found(flat.begin(), flat.end(), true);
    const auto circle = found.circle();
    print("centre", circle.center().x(), circle.center().y(), 0.0);
    std::printf("radius %.17g\n", std::sqrt(circle.squared_radius()));
  } else {
    std::puts("none");
  }
  return 0;
}
