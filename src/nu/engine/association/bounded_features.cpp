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

AxisFrame AxisAt(int chart, const double* x) {
  const AxisFrame axes = FrameOfChart(chart);
  const Vec3 direction = Unit(x[0] * axes.x + x[1] * axes.y + axes.z);
  return AxisFrame::Along(Rejection(x[2] * axes.x + x[3] * axes.y, direction), direction);
}

void BoundedByAxis::Domain(double far, double, double* low, double* high) {
  low[0] = low[1] = -kMostSlope;
  high[0] = high[1] = kMostSlope;
  low[2] = low[3] = -kSlantedReach * far;
  high[2] = high[3] = kSlantedReach * far;
}

void BoundedCone::Domain(double far, double reach, double* low, double* high) {
  BoundedByAxis::Domain(far, reach, low, high);
  low[4] = -kRightAngle;
  high[4] = kRightAngle;
}

}  // namespace nu::engine::association
