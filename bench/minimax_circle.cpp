// What do the minimax circles cost? The peers are CGAL's: enclosing circles, the Delaunay triangulation behind the
// largest empty circle, and the annulus of least area, which it has instead of the one of least width.

#include <algorithm>
#include <cmath>

#include "inputs.h"
#include "nu/curves/circle.h"
#include "question.h"

#ifdef NU_BENCH_CGAL
#include <CGAL/Delaunay_triangulation_2.h>
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>
#include <CGAL/Gmpzf.h>
#include <CGAL/Min_annulus_d.h>
#include <CGAL/Min_circle_2.h>
#include <CGAL/Min_circle_2_traits_2.h>
#include <CGAL/Min_sphere_annulus_d_traits_2.h>
#include <CGAL/Min_sphere_of_points_d_traits_2.h>
#include <CGAL/Min_sphere_of_spheres_d.h>
#include <CGAL/convex_hull_2.h>
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
using Flat = std::vector<Kernel::Point_2>;

const auto kFlat = [](const Cloud& cloud) {
  Flat points;
  for (const bench::Xyz& p : cloud) points.emplace_back(p.x, p.y);
  return points;
};

// Voronoi vertices in the hull, and where Voronoi edges leave it; only what beats the best so far is looked at closely.
class EmptyCircle {
 public:
  explicit EmptyCircle(const Flat& points) : m_mesh(points.begin(), points.end()) {
    CGAL::convex_hull_2(points.begin(), points.end(), std::back_inserter(m_hull));
  }

  double Radius() {
    for (auto face = m_mesh.finite_faces_begin(); face != m_mesh.finite_faces_end(); ++face) {
      const Kernel::Point_2 centre = m_mesh.circumcenter(face);
      const double square = CGAL::squared_distance(centre, face->vertex(0)->point());
      if (square <= m_best) continue;
      if (IsInHull(centre)) {
        m_best = square;
      } else {
        for (int k = 0; k < 3; ++k) LeaveHull(face->vertex(k)->point(), face->vertex((k + 1) % 3)->point());
      }
    }
    return std::sqrt(m_best);
  }

 private:
  bool IsInHull(const Kernel::Point_2& p) const {
    for (std::size_t i = 0; i < m_hull.size(); ++i) {
      if (CGAL::orientation(m_hull[i], m_hull[(i + 1) % m_hull.size()], p) == CGAL::RIGHT_TURN) return false;
    }
    return true;
  }
  // Where the bisector crosses the hull, if these two points are the nearest ones there.
  void LeaveHull(const Kernel::Point_2& p, const Kernel::Point_2& q) {
    const Kernel::Point_2 middle = CGAL::midpoint(p, q);
    const Kernel::Vector_2 along = (q - p).perpendicular(CGAL::COUNTERCLOCKWISE);
    for (std::size_t i = 0; i < m_hull.size(); ++i) {
      const Kernel::Vector_2 side = m_hull[(i + 1) % m_hull.size()] - m_hull[i];
      const double t = CGAL::determinant(m_hull[i] - middle, side) / CGAL::determinant(along, side);
      const Kernel::Point_2 at = middle + t * along;
      const double square = CGAL::squared_distance(at, p);
      const double share = (at - m_hull[i]) * side / side.squared_length();
      if (!(square > m_best) || share < 0 || share > 1) continue;
      const double nearest = CGAL::squared_distance(at, m_mesh.nearest_vertex(at)->point());
      if (nearest >= square * (1 - 1e-12)) m_best = square;
    }
  }

  CGAL::Delaunay_triangulation_2<Kernel> m_mesh;
  Flat m_hull;
  double m_best = 0;
};

double AnnulusByArea(const Flat& points) {
  using Traits = CGAL::Min_sphere_annulus_d_traits_2<Kernel, CGAL::Gmpzf, double>;
  const CGAL::Min_annulus_d<Traits> annulus(points.begin(), points.end());
  const double d = CGAL::to_double(annulus.squared_radii_denominator());
  return std::sqrt(CGAL::to_double(annulus.squared_outer_radius_numerator()) / d) -
         std::sqrt(CGAL::to_double(annulus.squared_inner_radius_numerator()) / d);
}
#endif

void AskEnclosing(const std::string& name, Cloud (*make)(int)) {
  Question<Cloud> q(name, kTolerance, make);
  q.Ask(
      "nu", kPoints,
      [](const CNuPointArray& points) {
        CNuCircle circle(1.0);
        circle.FitMin(points, kTol);
        return circle.GetRadius();
      },
      kOne);
#ifdef NU_BENCH_CGAL
  q.Ask(
      "cgal_points_d", kFlat,
      [](const Flat& points) {
        using Traits = CGAL::Min_sphere_of_points_d_traits_2<Kernel, double>;
        CGAL::Min_sphere_of_spheres_d<Traits> circle(points.begin(), points.end());
        return CGAL::to_double(circle.radius());
      },
      kOne);
  q.Ask(
      "cgal_min_circle_2", kFlat,
      [](const Flat& points) {
        const CGAL::Min_circle_2<CGAL::Min_circle_2_traits_2<Kernel>> circle(points.begin(), points.end(), true);
        return std::sqrt(CGAL::to_double(circle.circle().squared_radius()));
      },
      kOne);
#endif
  q.Over(kSizes);
}

void AskEmpty(const std::string& name, Cloud (*make)(int)) {
  Question<Cloud> q(name, kTolerance, make);
  q.Ask(
      "nu", kPoints,
      [](const CNuPointArray& points) {
        CNuCircle circle(1.0);
        circle.FitMax(points, kTol);
        return circle.GetRadius();
      },
      kOne);
#ifdef NU_BENCH_CGAL
  q.Ask(
      "cgal_delaunay", kFlat, [](const Flat& points) { return EmptyCircle(points).Radius(); }, kOne);
#endif
  q.Over(kSizes);
}

void AskZone() {
  // The width of the annulus of least area is a little above the least width.
  constexpr double loose = 1e-3;
  Question<Cloud> q("minzone_circle", loose, bench::Ring);
  q.Ask(
      "nu", kPoints,
      [](const CNuPointArray& points) {
        CNuCircle circle(1.0);
        double form = 0;
        circle.FitMinZone(points, &form, kTol, kSteps);
        return form;
      },
      kOne);
#ifdef NU_BENCH_CGAL
  constexpr int areaLimit = 1000;
  q.Ask("cgal_annulus_by_area", kFlat, AnnulusByArea, kOne, areaLimit);
#endif
  q.Over(kZoneSizes);
}

const bool registered = [] {
  AskEnclosing("mincircle_disk", bench::Disk);
  AskEnclosing("mincircle_ring", bench::Ring);
  AskEmpty("maxcircle_disk", bench::Disk);
  AskEmpty("maxcircle_ring", bench::Ring);
  AskZone();
  return true;
}();

}  // namespace
