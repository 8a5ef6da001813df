// Lines, planes, circles and conics.

#include <algorithm>

#include "evaluate/fit_tools.h"

namespace {

bool HaveOneZ(const std::vector<Vec3>& points) {
  return std::all_of(points.begin(), points.end(), [&points](const Vec3& p) { return p[2] == points.front()[2]; });
}

// The other criteria ask for points in one plane, and roundness is what is seen along the axis: the points go to their
// plane first.
std::vector<Vec3> InTheirPlane(const std::vector<Vec3>& points) {
  CNuPlane plane;
  AssociationOf(points).Fit(NuLeastSquares, &plane).Require();
  std::vector<Vec3> projected;
  projected.reserve(points.size());
  for (const Vec3& p : points) projected.push_back(ToVec3(CNuPoint(p[0], p[1], p[2]).ProjectionOn(plane)));
  return projected;
}

// Seen from the centre, no point lies within half a turn.
bool IsHalfCircleAtMost(const std::vector<Vec3>& points) {
  CNuCircle circle(1.0);
  if (AssociationOf(points).Fit(NuLeastSquares, &circle).HasConverged() == NuFalse) return false;
  const Frame frame = FrameAlong(circle.GetCentre(), circle.GetNormal());
  std::vector<double> angles;
  for (const Vec3& point : points) {
    const Vec3 local = frame.ToLocal(point);
    angles.push_back(std::atan2(local[1], local[0]));
  }
  std::sort(angles.begin(), angles.end());
  double gap = Nu_2PI - (angles.back() - angles.front());
  for (std::size_t i = 1; i < angles.size(); ++i) gap = std::max(gap, angles[i] - angles[i - 1]);
  return gap >= Nu_PI;
}

void PlaceConic(const CNuPoint& origin, const CNuVector& xAxis, const CNuVector& normal, Inspection* result) {
  const Vec3 x = ToVec3(xAxis);
  const Vec3 z = ToVec3(normal);
  result->frame = {ToVec3(origin), x, Cross(z, x), z};
}

// Ellipse or hyperbola.
template<typename Conic>
void DescribeAxes(const Conic& conic, ConicShape::Kind kind, Inspection* result) {
  double a = 0;
  double b = 0;
  CNuPoint centre;
  CNuVector xAxis;
  CNuVector normal;
  conic.GetData(&a, &b, &centre, &xAxis, &normal);
  result->parameters = {Point("centre", centre), Direction("axis a", xAxis), Direction("normal", normal),
                        Length("semi-axis a", a), Length("semi-axis b", b)};
  result->conic = {kind, a, b};
  PlaceConic(centre, xAxis, normal, result);
}

}  // namespace

Inspection FitLine(const std::vector<Vec3>& points, const FitTask& task) {
  return Associate(points, task, CNuLine(), [&points](const CNuLine& line, Inspection* result) {
    result->parameters = {Point("point", line.GetPoint()), Direction("direction", line.GetDirection())};
    result->zoneIsRound = !HaveOneZ(points);
    const Vec3 direction = ToVec3(line.GetDirection());
    const Vec3 up = AxisAcross(direction, 2);
    result->frame = {ToVec3(line.GetPoint()), direction, Cross(up, direction), up};
  });
}

Inspection FitPlane(const std::vector<Vec3>& points, const FitTask& task) {
  return Associate(points, task, CNuPlane(), [](const CNuPlane& plane, Inspection* result) {
    result->parameters = {Point("point", plane.GetPoint()), Direction("normal", plane.GetNormal())};
    result->frame = FrameAlong(plane.GetPoint(), plane.GetNormal());
  });
}

Inspection FitCircle(const std::vector<Vec3>& points, const FitTask& task) {
  const std::vector<Vec3> planar = task.criterion == NuLeastSquares ? points : InTheirPlane(points);
  Inspection result = Associate(planar, task, CNuCircle(1.0), [](const CNuCircle& circle, Inspection* inspection) {
    inspection->parameters = {Point("centre", circle.GetCentre()), Direction("normal", circle.GetNormal())};
    inspection->frame = FrameAlong(circle.GetCentre(), circle.GetNormal());
    inspection->radius = circle.GetRadius();
  });
  AddRadii(task.criterion, &result);
  if (task.criterion == NuMaximumInscribed && IsHalfCircleAtMost(planar)) {
    result.warning = "the points cover half a circle at most: not the circle of the arc";
  }
  return result;
}

Inspection FitEllipse(const std::vector<Vec3>& points, const FitTask& task) {
  return Associate(points, task, CNuEllipse(1.0, 1.0), [](const CNuEllipse& ellipse, Inspection* result) {
    DescribeAxes(ellipse, ConicShape::Kind::kEllipse, result);
  });
}

Inspection FitHyperbola(const std::vector<Vec3>& points, const FitTask& task) {
  return Associate(points, task, CNuHyperbola(1.0, 1.0), [](const CNuHyperbola& hyperbola, Inspection* result) {
    DescribeAxes(hyperbola, ConicShape::Kind::kHyperbola, result);
  });
}

Inspection FitParabola(const std::vector<Vec3>& points, const FitTask& task) {
  return Associate(points, task, CNuParabola(1.0), [](const CNuParabola& parabola, Inspection* result) {
    double f = 0;
    CNuPoint vertex;
    CNuVector axis;
    CNuVector normal;
    parabola.GetData(&f, &vertex, &axis, &normal);
    result->parameters = {Point("vertex", vertex), Direction("axis", axis), Direction("normal", normal),
                          Length("focal length", f)};
    result->conic = {ConicShape::Kind::kParabola, f, f};
    PlaceConic(vertex, axis, normal, result);
  });
}
