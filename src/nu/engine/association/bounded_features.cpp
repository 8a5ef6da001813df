#include "nu/engine/association/bounded_features.h"

#include <algorithm>

namespace nu::engine::association {
namespace {

constexpr double kRightAngle = 1.57079632679489661923;

// An axis meets the plane across its chart no farther out than this, in units of its distance from the origin: the foot
// (x, y, z) of the perpendicular goes to (x - u z, y - v z, 0).
const double kSlantedReach = std::sqrt(1.0 + kMostSlope * kMostSlope);

// Along the face of the cube.
Vec3 OnFace(int face, double u, double v) {
  return face == 0 ? Vec3{u, v, 1.0} : face == 1 ? Vec3{1.0, u, v} : Vec3{v, 1.0, u};
}

int TileOf(double slope) {
  return std::clamp(static_cast<int>(0.5 * (slope + 1.0) * kTiles), 0, kTiles - 1);
}
double MiddleOfTile(int tile) {
  return (2.0 * tile + 1.0) / kTiles - 1.0;
}

// The slopes and the place of an axis in a chart, and whether its direction has to be turned round.
bool PlaceAxis(int chart, const AxisFrame& frame, double* x, bool& isTurned) {
  const AxisFrame axes = FrameOfChart(chart);
  const Vec3 d{Dot(frame.z, axes.x), Dot(frame.z, axes.y), Dot(frame.z, axes.z)};
  const Vec3 p = axes.Local(frame.origin);
  isTurned = d.z < 0.0;
  x[0] = d.x / d.z;
  x[1] = d.y / d.z;
  x[2] = p.x - x[0] * p.z;
  x[3] = p.y - x[1] * p.z;
  return std::fabs(x[0]) <= kMostSlope && std::fabs(x[1]) <= kMostSlope;
}

// Through the point of the axis next to the origin.
AxisFrame AxisAt(int chart, double u, double v, double a, double b) {
  const AxisFrame axes = FrameOfChart(chart);
  const Vec3 direction = Unit(u * axes.x + v * axes.y + axes.z);
  return AxisFrame::Along(Rejection(a * axes.x + b * axes.y, direction), direction);
}

}  // namespace

AxisFrame FrameOfChart(int chart) {
  const int tile = chart / 3;
  const Vec3 middle = OnFace(chart % 3, MiddleOfTile(tile % kTiles), MiddleOfTile(tile / kTiles));
  return AxisFrame::Along({}, Unit(middle), OnFace(chart % 3, 1.0, 0.0) - OnFace(chart % 3, 0.0, 0.0));
}

int ChartOfDirection(const Vec3& d) {
  const double size[] = {std::fabs(d.z), std::fabs(d.x), std::fabs(d.y)};
  const int face = static_cast<int>(std::max_element(size, size + 3) - size);
  const double u = face == 0 ? d.x / d.z : face == 1 ? d.y / d.x : d.z / d.y;
  const double v = face == 0 ? d.y / d.z : face == 1 ? d.z / d.x : d.x / d.y;
  return face + 3 * (TileOf(u) + kTiles * TileOf(v));
}

void BoundedSphere::Domain(double far, double, double (&low)[kUnknowns], double (&high)[kUnknowns]) {
  std::fill_n(low, kUnknowns, -far);
  std::fill_n(high, kUnknowns, far);
}

void BoundedSphere::UnitBox(double reach, double (&half)[kUnknowns]) {
  std::fill_n(half, kUnknowns, reach);
}

int BoundedSphere::ChartOf(const Feature&) {
  return 0;
}

bool BoundedSphere::Place(int, const Feature& feature, double (&x)[kUnknowns]) {
  x[0] = feature.frame.origin.x;
  x[1] = feature.frame.origin.y;
  x[2] = feature.frame.origin.z;
  return true;
}

Feature BoundedSphere::At(int, const double (&x)[kUnknowns], double level) {
  return {FeatureKind::sphere, AxisFrame::Along({x[0], x[1], x[2]}, {0.0, 0.0, 1.0}), {level, 0.0}};
}

void BoundedByAxis::Domain(double far, double, double* low, double* high) {
  low[0] = low[1] = -kMostSlope;
  high[0] = high[1] = kMostSlope;
  low[2] = low[3] = -kSlantedReach * far;
  high[2] = high[3] = kSlantedReach * far;
}

void BoundedByAxis::UnitBox(double reach, double* half) {
  half[0] = half[1] = 1.0;
  half[2] = half[3] = reach;
}

int BoundedByAxis::ChartOf(const Feature& feature) {
  return ChartOfDirection(feature.frame.z);
}

bool BoundedCylinder::Place(int chart, const Feature& feature, double (&x)[kUnknowns]) {
  bool isTurned;
  return PlaceAxis(chart, feature.frame, x, isTurned);
}

Feature BoundedCylinder::At(int chart, const double (&x)[kUnknowns], double level) {
  return {FeatureKind::cylinder, AxisAt(chart, x[0], x[1], x[2], x[3]), {level, 0.0}};
}

void BoundedCone::Domain(double far, double reach, double* low, double* high) {
  BoundedByAxis::Domain(far, reach, low, high);
  low[4] = -kRightAngle;
  high[4] = kRightAngle;
}

void BoundedCone::UnitBox(double reach, double* half) {
  BoundedByAxis::UnitBox(reach, half);
  half[4] = 1.0;
}

bool BoundedCone::Place(int chart, const Feature& feature, double (&x)[kUnknowns]) {
  bool isTurned;
  const bool isIn = PlaceAxis(chart, feature.frame, x, isTurned);
  x[4] = isTurned ? -feature.size[1] : feature.size[1];
  return isIn;
}

// With the radius at the origin of the frame; a cone that narrows is turned round.
Feature BoundedCone::At(int chart, const double (&x)[kUnknowns], double level) {
  AxisFrame frame = AxisAt(chart, x[0], x[1], x[2], x[3]);
  if (x[4] < 0.0) frame = {frame.origin, frame.y, frame.x, -1.0 * frame.z};
  return {FeatureKind::cone, frame, {level / Cos(x[4]), std::fabs(x[4])}};
}

void BoundedDoubleCone::Domain(double far, double reach, double* low, double* high) {
  BoundedCone::Domain(far, reach, low, high);
  low[4] = 0.0;
  low[5] = -reach;
  high[5] = reach;
}

void BoundedDoubleCone::UnitBox(double reach, double* half) {
  BoundedCone::UnitBox(reach, half);
  half[5] = reach;
}

bool BoundedDoubleCone::Place(int chart, const Feature& feature, double (&x)[kUnknowns]) {
  bool isTurned;
  const bool isIn = PlaceAxis(chart, feature.frame, x, isTurned);
  x[4] = feature.size[1];
  const double apex = Dot(feature.frame.origin, feature.frame.z) - feature.size[0] / Tan(feature.size[1]);
  x[5] = isTurned ? -apex : apex;
  return isIn;
}

// No size shifts the middle of the zone.
Feature BoundedDoubleCone::At(int chart, const double (&x)[kUnknowns], double) {
  AxisFrame frame = AxisAt(chart, x[0], x[1], x[2], x[3]);
  frame.origin = frame.origin + x[5] * frame.z;
  return {FeatureKind::cone, frame, {0.0, x[4]}, true};
}

bool BoundedCircle::Place(int chart, const Feature& feature, double (&x)[kPlace]) {
  bool isTurned;
  const bool isIn = PlaceAxis(chart, feature.frame, x, isTurned);
  x[4] = feature.size[0];
  x[5] = (isTurned ? -1.0 : 1.0) * Dot(feature.frame.origin, feature.frame.z);
  return isIn;
}

Feature BoundedCircle::At(int chart, const double (&x)[kPlace], double level) {
  AxisFrame frame = AxisAt(chart, x[0], x[1], x[2], x[3]);
  frame.origin = frame.origin + x[5] * frame.z;
  return {FeatureKind::circleInSpace, frame, {x[4], level}};
}

}  // namespace nu::engine::association
