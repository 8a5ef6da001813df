// What do the zones of straight features cost, the flatness of a plate and the straightness of a profile? The peers are
// CGAL's hulls: in space with all pairs of faces and vertices and of edges, in the plane with its narrowest strip.

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <vector>

#include "inputs.h"
#include "nu/geometry/line.h"
#include "nu/geometry/plane.h"
#include "question.h"

#ifdef NU_BENCH_CGAL
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>
#include <CGAL/Surface_mesh.h>
#include <CGAL/convex_hull_2.h>
#include <CGAL/convex_hull_3.h>
#include <CGAL/min_quadrilateral_2.h>
#endif

namespace {

using bench::Cloud;
using bench::Numbers;
using bench::Question;

const std::vector<int> kSizes = {1000, 100000, 1000000};
constexpr double kTolerance = 1e-9;
constexpr double kTol = 1e-9;
constexpr long kSteps = 1000;

const auto kPoints = [](const Cloud& cloud) { return bench::ToPoints(cloud); };
const auto kOne = [](double x) { return Numbers{x}; };

Cloud Profile(int n) {
  return bench::Scatter(n, 115, [](bench::Dice& d) {
    const double along = d.Between(0, 150), across = d.Normal(bench::kNoise);
    return bench::Xyz{420 + 0.8 * along - 0.6 * across, 0.6 * along + 0.8 * across - 310, 4};
  });
}

#ifdef NU_BENCH_CGAL
using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
using Point2 = Kernel::Point_2;
using Point3 = Kernel::Point_3;
using Vector3 = Kernel::Vector_3;
using Mesh = CGAL::Surface_mesh<Point3>;

Vector3 Unit(const Vector3& v) {
  return v / std::sqrt(v.squared_length());
}

// The arcs of the outward normals at an edge, and an edge across where it crosses.
struct Edge {
  Point3 start;
  Vector3 way, first, second;
};

bool Crosses(const Edge& a, const Edge& b, const Vector3& normal) {
  if ((a.way * b.first) * (a.way * b.second) >= 0 || (b.way * a.first) * (b.way * a.second) >= 0) return false;
  return (normal * (a.first + a.second)) * (normal * (b.first + b.second)) < 0;
}

double WidthOf(const Mesh& hull) {
  double best = std::numeric_limits<double>::infinity();
  std::vector<Vector3> normals(hull.number_of_faces());
  for (const auto f : hull.faces()) {
    const auto h = hull.halfedge(f);
    const Point3& start = hull.point(hull.source(h));
    const Vector3 side = hull.point(hull.target(h)) - start;
    normals[f] = Unit(CGAL::cross_product(side, hull.point(hull.target(hull.next(h))) - start));
    double least = 0.0;
    for (const auto v : hull.vertices()) least = std::min(least, normals[f] * (hull.point(v) - start));
    best = std::min(best, -least);
  }
  std::vector<Edge> edges;
  for (const auto e : hull.edges()) {
    const auto h = hull.halfedge(e);
    const Point3& start = hull.point(hull.source(h));
    edges.push_back(
        {start, hull.point(hull.target(h)) - start, normals[hull.face(h)], normals[hull.face(hull.opposite(h))]});
  }
  for (std::size_t i = 0; i < edges.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      const Vector3 normal = CGAL::cross_product(edges[i].way, edges[j].way);
      if (!Crosses(edges[i], edges[j], normal)) continue;
      best = std::min(best, std::fabs(Unit(normal) * (edges[i].start - edges[j].start)));
    }
  }
  return best;
}

double HullWidth(const std::vector<Point3>& points) {
  Mesh hull;
  CGAL::convex_hull_3(points.begin(), points.end(), hull);
  return WidthOf(hull);
}

double StripWidth(const std::vector<Point2>& points) {
  std::vector<Point2> hull;
  CGAL::convex_hull_2(points.begin(), points.end(), std::back_inserter(hull));
  std::vector<Kernel::Line_2> sides;
  CGAL::min_strip_2(hull.begin(), hull.end(), std::back_inserter(sides));
  return std::sqrt(CGAL::squared_distance(sides[0], sides[1].point(0)));
}
#endif

void AskWidth() {
  Question<Cloud> question("width3_plate", kTolerance, bench::Plate);
  question.Ask(
      "nu", kPoints,
      [](const CNuPointArray& points) {
        CNuPlane plane;
        double form = 0.0;
        plane.FitMinZone(points, &form, kTol);
        return form;
      },
      kOne);
#ifdef NU_BENCH_CGAL
  question.Ask(
      "cgal_hull_all_pairs",
      [](const Cloud& cloud) {
        std::vector<Point3> points;
        for (const bench::Xyz& p : cloud) points.emplace_back(p.x, p.y, p.z);
        return points;
      },
      HullWidth, kOne);
#endif
  question.Over(kSizes);
}

void AskStrip() {
  Question<Cloud> question("strip2", kTolerance, Profile);
  question.Ask(
      "nu", kPoints,
      [](const CNuPointArray& points) {
        CNuLine line;
        double form = 0.0;
        line.FitMinZone(points, &form, kTol, kSteps);
        return form;
      },
      kOne);
#ifdef NU_BENCH_CGAL
  question.Ask(
      "cgal",
      [](const Cloud& cloud) {
        std::vector<Point2> points;
        for (const bench::Xyz& p : cloud) points.emplace_back(p.x, p.y);
        return points;
      },
      StripWidth, kOne);
#endif
  question.Over(kSizes);
}

const bool kAsked = [] {
  AskWidth();
  AskStrip();
  return true;
}();

}  // namespace
