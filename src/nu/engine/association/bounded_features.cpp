#include "nu/engine/association/bounded_features.h"

#include <algorithm>

namespace nu::engine::association {
namespace {

constexpr double kRightAngle = 1.57079632679489661923;

// An axis meets the plane across its chart no farther out than this, in units of its distance from the origin: the foot
// (x, y, z) of the perpendicular goes to (x - u z, y - v z, 0).
const double kSlantedReach = std::sqrt(2.0);

// The slopes and the place of an axis in its chart; true when its direction has to be turned round.
int PlaceAxis(const AxisFrame& frame, double (&x)[4], bool& isTurned) {
  const int chart = ChartOf(frame.z);
  const Vec3 d = ToChart(chart, frame.z);
  const Vec3 p = ToChart(chart, frame.origin);
  isTurned = d.z < 0.0;
  x[0] = d.x / d.z;
  x[1] = d.y / d.z;
  x[2] = p.x - x[0] * p.z;
  x[3] = p.y - x[1] * p.z;
  return chart;
}

void DomainOfAxes(double far, double* low, double* high) {
  low[0] = low[1] = -1.0;
  high[0] = high[1] = 1.0;
  low[2] = low[3] = -kSlantedReach * far;
  high[2] = high[3] = kSlantedReach * far;
}

// Through the point of the axis next to the origin.
AxisFrame AxisAt(int chart, double u, double v, const Vec3& through) {
  const Vec3 direction = FromChart(chart, Unit({u, v, 1.0}));
  return AxisFrame::Along(Rejection(FromChart(chart, through), direction), direction);
}

}  // namespace

void BoundedSphere::Domain(double far, double (&low)[kUnknowns], double (&high)[kUnknowns]) {
  std::fill_n(low, kUnknowns, -far);
  std::fill_n(high, kUnknowns, far);
}

void BoundedSphere::UnitBox(double reach, double (&half)[kUnknowns]) {
  std::fill_n(half, kUnknowns, reach);
}

int BoundedSphere::Place(const Feature& feature, double (&x)[kUnknowns]) {
  x[0] = feature.frame.origin.x;
  x[1] = feature.frame.origin.y;
  x[2] = feature.frame.origin.z;
  return 0;
}

Feature BoundedSphere::At(int, const double (&x)[kUnknowns], double level) {
  return {FeatureKind::sphere, AxisFrame::Along({x[0], x[1], x[2]}, {0.0, 0.0, 1.0}), {level, 0.0}};
}

void BoundedCylinder::Domain(double far, double (&low)[kUnknowns], double (&high)[kUnknowns]) {
  DomainOfAxes(far, low, high);
}

void BoundedCylinder::UnitBox(double reach, double (&half)[kUnknowns]) {
  half[0] = half[1] = 1.0;
  half[2] = half[3] = reach;
}

int BoundedCylinder::Place(const Feature& feature, double (&x)[kUnknowns]) {
  bool isTurned;
  return PlaceAxis(feature.frame, x, isTurned);
}

Feature BoundedCylinder::At(int chart, const double (&x)[kUnknowns], double level) {
  return {FeatureKind::cylinder, AxisAt(chart, x[0], x[1], {x[2], x[3], 0.0}), {level, 0.0}};
}

void BoundedCone::Domain(double far, double (&low)[kUnknowns], double (&high)[kUnknowns]) {
  DomainOfAxes(far, low, high);
  low[4] = -kRightAngle;
  high[4] = kRightAngle;
}

void BoundedCone::UnitBox(double reach, double (&half)[kUnknowns]) {
  half[0] = half[1] = half[4] = 1.0;
  half[2] = half[3] = reach;
}

int BoundedCone::Place(const Feature& feature, double (&x)[kUnknowns]) {
  bool isTurned;
  double axis[4];
  const int chart = PlaceAxis(feature.frame, axis, isTurned);
  std::copy_n(axis, 4, x);
  x[4] = isTurned ? -feature.size[1] : feature.size[1];
  return chart;
}

// With the radius at the origin of the frame; a cone that narrows is turned round.
Feature BoundedCone::At(int chart, const double (&x)[kUnknowns], double level) {
  AxisFrame frame = AxisAt(chart, x[0], x[1], {x[2], x[3], 0.0});
  if (x[4] < 0.0) frame = {frame.origin, frame.y, frame.x, -1.0 * frame.z};
  return {FeatureKind::cone, frame, {level / Cos(x[4]), std::fabs(x[4])}};
}

void BoundedCircle::Domain(double far, double (&low)[kUnknowns], double (&high)[kUnknowns]) {
  DomainOfAxes(far, low, high);
}

void BoundedCircle::UnitBox(double reach, double (&half)[kUnknowns]) {
  BoundedCylinder::UnitBox(reach, half);
}

int BoundedCircle::Place(const Feature& feature, double (&x)[kPlace]) {
  bool isTurned;
  double axis[4];
  const int chart = PlaceAxis(feature.frame, axis, isTurned);
  std::copy_n(axis, 4, x);
  x[4] = feature.size[0];
  x[5] = (isTurned ? -1.0 : 1.0) * Dot(feature.frame.origin, feature.frame.z);
  return chart;
}

Feature BoundedCircle::At(int chart, const double (&x)[kPlace], double level) {
  AxisFrame frame = AxisAt(chart, x[0], x[1], {x[2], x[3], 0.0});
  frame.origin = frame.origin + x[5] * frame.z;
  return {FeatureKind::circleInSpace, frame, {x[4], level}};
}

}  // namespace nu::engine::association
