#include "nu/engine/minimax/cylinder_distance.h"

#include "nu/engine/base/floating_point.h"
#include "nu/engine/least_squares/cylinder_lanes.h"
#include "nu/engine/minimax/distance_kernels.h"
#include "nu/engine/minimax/round_minimax.h"

// The deviations from a cylinder and their derivatives are those of cylinder_least_squares.cpp. On a narrow strip the
// sine t / d and the versed sine l / d of the angle around the axis are small: the unknowns that go with them are
// multiplied by the inverse of the largest of each. Tilts count by how far they move the surface at half of the length.

namespace nu::engine::minimax {
namespace {

// A step leaves this part of the height.
constexpr double kLeastPart = 0.125;

// With the point (x, t, z) in the frame.
struct AxisLanes {
  static constexpr int kUnknowns = AxisDistance::kUnknowns;

  NU_ALWAYS_INLINE void Deviate(const PointBlock& block, std::size_t i, Lanes& d) const {
    Lanes x, t, z;
    LoadLocal(block, i, frame, x, t, z);
    d = x * x + t * t;
    TakeSquareRoot(d);
  }

  // On the axis the gradient is undefined; use zero.
  NU_ALWAYS_INLINE void Deviate(const PointBlock& block, std::size_t i, Lanes& d, Lanes (&column)[kUnknowns]) const {
    Lanes x, t, z;
    LoadLocal(block, i, frame, x, t, z);
    d = x * x + t * t;
    TakeSquareRoot(d);
    const Lanes quotient = 1.0 / d;
    const Lanes inverse = d > 0.0 ? quotient : Lanes{};
    column[0] = x * inverse;
    column[1] = t * inverse;
    column[2] = column[0] * z;
    column[3] = column[1] * z;
  }

  AxisFrame frame;
};

NU_DISTANCE_KERNELS(AxisLanes)
NU_DISTANCE_KERNELS(CylinderLanes)

struct Reach {
  ValueRange along;    // the axis
  double bulge = 0.0;  // the largest 1 - cos
};

NU_KERNEL void FindReach(const PointBlock& block, const CylinderLanes& given, Reach& found) {
  const CylinderLanes surface = given;
  LaneExtremes along, bulge;
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    Lanes x, t, z, e;
    Lanes column[CylinderLanes::kUnknowns];
    surface.Locate(block, i, x, t, z);
    surface.Deviate(block, i, e, column);
    along.Add(z);
    bulge.Add(column[2]);
  }
  found = {{along.Smallest(), along.Largest()}, bulge.Largest()};
}

// Of the distance d from the axis of the point (x, t, z), by moves of the axis along x and across it, and by its tilts
// towards both, times their units. The axis is the height below the frame's origin, about which it tilts. Half of d^2
// after moves (a, b) and tilts (alpha, beta) is to second order, with X = x + height,
//
//   ((X - a)^2 + (t - b)^2) / 2 - z (alpha (X - a) + beta (t - b))
//     + alpha^2 (z^2 - x X) / 2 + beta^2 (z^2 - t^2) / 2 - alpha beta t X,
//
// and the second derivatives of d are those of it, less the product of the first derivatives of d, by d.
template<int K>
void AddAxisCurvature(const Vec3& q, double height, double weight, const double (&unit)[4], const int (&place)[4],
                      double (&sum)[K][K]) {
  const double lifted = q.x + height;
  const double d = std::sqrt(lifted * lifted + q.y * q.y);
  if (d == 0.0) return;
  const double cosine = lifted / d, sine = q.y / d;
  const double first[] = {cosine, sine, q.z * cosine, q.z * sine};
  const double mixed = -q.y * lifted;
  const double second[][4] = {{1.0, 0.0, q.z, 0.0},
                              {0.0, 1.0, 0.0, q.z},
                              {q.z, 0.0, q.z * q.z - q.x * lifted, mixed},
                              {0.0, q.z, mixed, q.z * q.z - q.y * q.y}};
  for (int i = 0; i < 4; ++i)
    for (int j = 0; j < 4; ++j)
      sum[place[i]][place[j]] += weight / d * unit[i] * unit[j] * (second[i][j] - first[i] * first[j]);
}

// Quarters of the length, octants around the origin.
int PartOf(double x, double t, double z, double half) {
  const int quarter = z < 0.0 ? (z < -0.5 * half ? 0 : 1) : (z < 0.5 * half ? 2 : 3);
  return 8 * quarter + (x < 0.0 ? 1 : 0) + (t < 0.0 ? 2 : 0) + (std::fabs(x) < std::fabs(t) ? 4 : 0);
}

}  // namespace

void AxisDistance::Deviations(const PointBlock& block, double* deviation, double& smallest, double& largest) const {
  FindEach(block, AxisLanes{frame}, deviation, smallest, largest);
}

void AxisDistance::Gradients(const PointBlock& block, double* deviation, double (*gradient)[kMostRows]) const {
  FindGradients(block, AxisLanes{frame}, {-1.0, -1.0, -1.0 / half, -1.0 / half}, deviation, gradient);
}

void AxisDistance::AddCurvature(const Vec3& point, double weight, double (&sum)[kUnknowns][kUnknowns]) const {
  AddAxisCurvature(frame.Local(point), 0.0, weight, {1.0, 1.0, 1.0 / half, 1.0 / half}, {0, 1, 2, 3}, sum);
}

AxisDistance AxisDistance::Moved(const double (&step)[kUnknowns]) const {
  return {frame.Moved(step[0], step[1], step[2] / half, step[3] / half), half};
}

int AxisDistance::Stratum(const Vec3& point) const {
  const Vec3 q = frame.Local(point);
  return PartOf(q.x, q.y, q.z, half);
}

void CylinderDistance::Deviations(const PointBlock& block, double* deviation, double& smallest, double& largest) const {
  FindEach(block, CylinderLanes(*this), deviation, smallest, largest);
}

void CylinderDistance::Gradients(const PointBlock& block, double* deviation, double (*gradient)[kMostRows]) const {
  FindGradients(block, CylinderLanes(*this), {-1.0, -across, -along, -1.0 / half, -across / half}, deviation, gradient);
}

// The radius changes with the rise and with the height, which moves the axis against u.
void CylinderDistance::AddCurvature(const Vec3& point, double weight, double (&sum)[kUnknowns][kUnknowns]) const {
  AddAxisCurvature(Local(point), height, weight, {-along, across, 1.0 / half, across / half}, {2, 1, 3, 4}, sum);
}

CylinderDistance CylinderDistance::Moved(const double (&step)[kUnknowns]) const {
  CylinderDistance moved = *this;
  const double lengthening = std::max(along * step[2], (kLeastPart - 1.0) * height);
  moved.Move({step[0], across * step[1], lengthening, step[3] / half, across * step[4] / half});
  return moved;
}

// On a narrow strip these are parts of its width.
int CylinderDistance::Stratum(const Vec3& point) const {
  const Vec3 q = Local(point);
  return PartOf(q.x + height, across * q.y, q.z, half);
}

CylinderDistance DistanceFromCylinder(PointBlocks& points, const Cylinder3& cylinder, const Vec3& towards) {
  const AxisFrame axis = FrameAlong(cylinder.axis.point, cylinder.axis.direction, towards);
  CylinderDistance model;
  model.pivot = axis.origin + cylinder.radius * axis.x;
  model.u = axis.x;
  model.v = axis.y;
  model.w = axis.z;
  model.height = cylinder.radius;
  Reach reach;
  points.ForEach([&](const PointBlock& block) {
    Reach part;
    FindReach(block, CylinderLanes(model), part);
    reach.along.Include(part.along);
    reach.bulge = std::max(reach.bulge, part.bulge);
  });
  model.pivot = model.pivot + reach.along.Middle() * axis.z;
  model.half = std::max(0.5 * reach.along.Width(), kEpsilon * cylinder.radius);
  const double bulge = std::max(reach.bulge, kEpsilon);
  model.along = 1.0 / bulge;
  model.across = bulge < 1.0 ? 1.0 / std::sqrt(bulge * (2.0 - bulge)) : 1.0;
  return model;
}

}  // namespace nu::engine::minimax
