// What do the minimum-zone lines cost? In a plane the peer is a plain convex hull with rotating calipers; in space it
// is what GSL has for functions with kinks, the downhill simplex, from the principal axis.

#include <algorithm>
#include <cmath>

#include "axis_simplex.h"
#include "inputs.h"
#include "nu/geometry/line.h"
#include "question.h"

namespace {

using bench::Cloud;
using bench::Numbers;
using bench::Question;
using bench::Xyz;

constexpr double kTol = 1e-9;
constexpr long kSteps = 1000;

const auto kPoints = [](const Cloud& cloud) { return bench::ToPoints(cloud); };
const auto kCloud = [](const Cloud& cloud) { return cloud; };
const auto kOne = [](double x) { return Numbers{x}; };

double Zone(const CNuPointArray& points) {
  double width;
  CNuLine().FitMinZone(points, &width, kTol, kSteps);
  return width;
}

// A straightness profile: waves of 20 um over 150 mm, with noise.
Cloud Profile(int n) {
  return bench::Scatter(n, 131, [](bench::Dice& d) {
    const double x = d.Between(0, 150);
    return Xyz{420.0 + x, 0.3 * x - 310.0 + 0.02 * std::sin(0.1 * x) + d.Normal(bench::kNoise), 95.0};
  });
}

double TurnOf(const Xyz& p, const Xyz& q, const Xyz& r) {
  return (q.x - p.x) * (r.y - p.y) - (q.y - p.y) * (r.x - p.x);
}

// Andrew's monotone chain, then calipers.
double StripWidth(Cloud points) {
  std::sort(points.begin(), points.end(),
            [](const Xyz& a, const Xyz& b) { return a.x != b.x ? a.x < b.x : a.y < b.y; });
  Cloud hull(2 * points.size());
  std::size_t k = 0;
  const auto take = [&](const Xyz& p, std::size_t least) {
    while (k >= least + 2 && TurnOf(hull[k - 2], hull[k - 1], p) <= 0) --k;
    hull[k++] = p;
  };
  for (const Xyz& p : points) take(p, 0);
  const std::size_t lower = k - 1;
  for (std::size_t i = points.size() - 1; i-- > 0;) take(points[i], lower);
  const std::size_t n = k - 1;
  double least = std::numeric_limits<double>::infinity();
  std::size_t apex = 1;
  for (std::size_t i = 0; i < n; ++i) {
    const Xyz& p = hull[i];
    const Xyz& q = hull[i + 1];
    while (TurnOf(p, q, hull[(apex + 1) % n]) > TurnOf(p, q, hull[apex % n])) ++apex;
    least = std::min(least, TurnOf(p, q, hull[apex % n]) / std::hypot(q.x - p.x, q.y - p.y));
  }
  return least;
}

#ifdef NU_BENCH_GSL
double SimplexZone(const Cloud& points) {
  return 2.0 * bench::SimplexOverAxes(points, [](double, double high) { return high; });
}
#endif

const bool kAsked = [] {
  Question<Cloud>("minzone_line2", 1e-9, Profile)
      .Ask("nu", kPoints, Zone, kOne)
      .Ask("andrew", kCloud, StripWidth, kOne)
      .Over({100, 1000, 100000, 1000000});
  // The simplex is an anchor: it ends within some tenths of a micrometre.
  Question<Cloud> line("minzone_line3", 1e-3, bench::Edge);
  line.Ask("nu", kPoints, Zone, kOne);
#ifdef NU_BENCH_GSL
  line.Ask("gsl_simplex", kCloud, SimplexZone, kOne, 10000);
#endif
  line.Over({100, 1000, 10000, 100000, 1000000});
  return true;
}();

}  // namespace
