#include "evaluate/geometry.h"

#include <algorithm>

#include "evaluate/fit_tools.h"

namespace {

// The form of a feature in the plane z = 0 that holds all points by that criterion.
template<typename Feature>
double WidthOf(const std::vector<Vec3>& planar, ENuCriterion criterion, Feature feature) {
  const CNuAssociationReport report = AssociationOf(planar).Fit(criterion, &feature);
  if (report.HasConverged() == NuFalse) throw FitFailure(report.Explain());
  if constexpr (std::is_same_v<Feature, CNuCircle>) return 2 * feature.GetRadius();
  return report.GetForm();
}

Vec3 MeanOf(const std::vector<Vec3>& points) {
  Vec3 sum{};
  for (const Vec3& point : points) sum = Plus(sum, Minus(point, points.front()));
  return Plus(points.front(), Times(1 / static_cast<double>(points.size()), sum));
}

}  // namespace

FeatureGeometry GeometryOf(const FeaturePlan& plan, const std::vector<Vec3>& points, const Inspection& inspection) {
  FeatureGeometry geometry;
  geometry.shape = ShapeOf(plan);
  geometry.points = &points;
  geometry.criterion = plan.method.criterion;
  geometry.type = plan.method.terms.feature;
  const Frame& frame = inspection.frame;
  geometry.place = frame.origin;
  const bool isLine = geometry.type == "line";
  geometry.direction = isLine ? frame.x : frame.z;
  if (geometry.shape == FeatureShape::kPlane) {
    const Vec3 mean = MeanOf(points);
    geometry.place = Minus(mean, Times(Dot(Minus(mean, frame.origin), frame.z), frame.z));
  }
  if (geometry.shape != FeatureShape::kAxis) return geometry;
  const std::size_t along = isLine ? 0 : 2;
  const auto less = [along](const Vec3& a, const Vec3& b) { return a[along] < b[along]; };
  const auto [low, high] = std::minmax_element(inspection.local.begin(), inspection.local.end(), less);
  const auto at = [&](double length) { return Plus(frame.origin, Times(length, geometry.direction)); };
  geometry.ends = {at((*low)[along]), at((*high)[along])};
  geometry.place = at(((*low)[along] + (*high)[along]) / 2);
  return geometry;
}

std::vector<Vec3> SeenAlong(const std::vector<Vec3>& points, const Vec3& direction, const Vec3& x) {
  const Vec3 y = Cross(direction, x);
  std::vector<Vec3> planar;
  planar.reserve(points.size());
  for (const Vec3& point : points) {
    const Vec3 v = Minus(point, points.front());
    planar.push_back({Dot(v, x), Dot(v, y), 0});
  }
  return planar;
}

double WidthAlong(const std::vector<Vec3>& points, const Vec3& direction) {
  double low = 0;
  double high = 0;
  for (const Vec3& point : points) {
    const double height = Dot(Minus(point, points.front()), direction);
    low = std::min(low, height);
    high = std::max(high, height);
  }
  return high - low;
}

double WidthAround(const std::vector<Vec3>& points, const Vec3& direction) {
  return WidthOf(SeenAlong(points, direction, AxisAcross(direction, 0)), NuMinimumZone, CNuLine());
}

double DiameterAround(const std::vector<Vec3>& points, const Vec3& direction) {
  return WidthOf(SeenAlong(points, direction, AxisAcross(direction, 0)), NuMinimumCircumscribed, CNuCircle(1.0));
}
