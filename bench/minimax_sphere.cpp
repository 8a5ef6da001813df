// What do the minimax spheres cost? The peers are CGAL's: enclosing spheres of points, and the shell of least area,
// which it has instead of the one of least width.

#include <cmath>

#include "inputs.h"
#include "nu/surfaces/sphere.h"
#include "question.h"

#ifdef NU_BENCH_CGAL
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>
#include <CGAL/Gmpzf.h>
#include <CGAL/Min_annulus_d.h>
#include <CGAL/Min_sphere_annulus_d_traits_3.h>
#include <CGAL/Min_sphere_of_points_d_traits_3.h>
#include <CGAL/Min_sphere_of_spheres_d.h>
#endif

namespace {

using bench::Cloud;
using bench::Numbers;
using bench::Question;

const std::vector<int> kSizes = {1000, 100000, 1000000};
const std::vector<int> kZoneSizes = {100, 1000, 10000, 100000, 1000000};
constexpr double kTolerance = 1e-9;
constexpr double kTol = 1e-9;
constexpr long kSteps = 1000;

const auto kPoints = [](const Cloud& cloud) { return bench::ToPoints(cloud); };
const auto kOne = [](double x) { return Numbers{x}; };

#ifdef NU_BENCH_CGAL
using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
using Solid = std::vector<Kernel::Point_3>;

const auto kSolid = [](const Cloud& cloud) {
  Solid points;
  for (const bench::Xyz& p : cloud) points.emplace_back(p.x, p.y, p.z);
  return points;
};

double EnclosingRadius(const Solid& points) {
  using Traits = CGAL::Min_sphere_of_points_d_traits_3<Kernel, double>;
  CGAL::Min_sphere_of_spheres_d<Traits> sphere(points.begin(), points.end());
  return CGAL::to_double(sphere.radius());
}

double ShellByArea(const Solid& points) {
  using Traits = CGAL::Min_sphere_annulus_d_traits_3<Kernel, CGAL::Gmpzf, double>;
  const CGAL::Min_annulus_d<Traits> shell(points.begin(), points.end());
  const double d = CGAL::to_double(shell.squared_radii_denominator());
  return std::sqrt(CGAL::to_double(shell.squared_outer_radius_numerator()) / d) -
         std::sqrt(CGAL::to_double(shell.squared_inner_radius_numerator()) / d);
}
#endif

void AskEnclosing(const std::string& name, Cloud (*make)(int)) {
  Question<Cloud> q(name, kTolerance, make);
  q.Ask(
      "nu", kPoints,
      [](const CNuPointArray& points) {
        CNuSphSurf sphere(1.0);
        sphere.FitMin(points, kTol);
        return sphere.GetRadius();
      },
      kOne);
#ifdef NU_BENCH_CGAL
  q.Ask("cgal_points_d", kSolid, EnclosingRadius, kOne);
#endif
  q.Over(kSizes);
}

void AskEmpty() {
  Question<Cloud> q("maxsphere_shell", kTolerance, bench::Shell);
  q.Ask(
      "nu", kPoints,
      [](const CNuPointArray& points) {
        CNuSphSurf sphere(1.0);
        sphere.FitMax(points, kTol);
        return sphere.GetRadius();
      },
      kOne);
  q.Over(kSizes);
}

void AskZone() {
  // The width of the shell of least area is a little above the least width.
  constexpr double loose = 1e-3;
  Question<Cloud> q("minzone_sphere", loose, bench::Shell);
  q.Ask(
      "nu", kPoints,
      [](const CNuPointArray& points) {
        CNuSphSurf sphere(1.0);
        double zone = 0;
        sphere.FitMinZone(points, &zone, kTol, kSteps);
        return zone;
      },
      kOne);
#ifdef NU_BENCH_CGAL
  constexpr int areaLimit = 1000;
  q.Ask("cgal_shell_by_area", kSolid, ShellByArea, kOne, areaLimit);
#endif
  q.Over(kZoneSizes);
}

const bool registered = [] {
  AskEnclosing("minsphere_ball", bench::Ball);
  AskEnclosing("minsphere_shell", bench::Shell);
  AskEmpty();
  AskZone();
  return true;
}();

}  // namespace
