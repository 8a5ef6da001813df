#include "nu/engine/minimax/cylinder_distance.h"

#include <limits>

#include "nu/engine/base/lanes.h"
#include "nu/engine/minimax/round_minimax.h"

// Let (x, t, z) be a point in the frame, whose origin is on the cylinder, X = x + r and d = sqrt(X^2 + t^2). Then
//
//   f = d - r = (x (X + r) + t^2) / (d + r)
//
// is the deviation, and loses nothing on a narrow strip. The unknowns shift the cylinder along x, shift it along t,
// lengthen r with the apex held, and tilt the axis about the apex towards x and towards t. With the cosine X / d and
// the sine t / d the derivatives of f are
//
//   -cos, -sin, cos - 1 = (x - f) / d, -z cos, -z sin.
//
// On a narrow strip sin and cos - 1 are small: what goes with them is divided by the largest of each. Tilts count by
// the way at half of the length. All are lengths at the points then.

namespace nu::engine::minimax {
namespace {

constexpr double kEpsilon = std::numeric_limits<double>::epsilon();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// A step leaves this part of the radius.
constexpr double kLeastPart = 0.125;

struct LocalLanes {
  Lanes x, t, z, d, deviation;
};

NU_ALWAYS_INLINE void LoadLocal(const PointBlock& block, std::size_t i, const AxisFrame& f, double r, LocalLanes& p) {
  Lanes px, py, pz;
  Load(block.x + i, px);
  Load(block.y + i, py);
  Load(block.z + i, pz);
  px -= f.origin.x;
  py -= f.origin.y;
  pz -= f.origin.z;
  p.x = px * f.x.x + py * f.x.y + pz * f.x.z;
  p.t = px * f.y.x + py * f.y.y + pz * f.y.z;
  p.z = px * f.z.x + py * f.z.y + pz * f.z.z;
  const Lanes lifted = p.x + r;
  const Lanes square = p.t * p.t;
  p.d = lifted * lifted + square;
  TakeSquareRoot(p.d);
  p.deviation = (p.x * (lifted + r) + square) / (p.d + r);
}

NU_KERNEL void FindDeviations(const PointBlock& block, const AxisFrame& frame, double radius, double* deviation,
                              double& smallest, double& largest) {
  const AxisFrame f = frame;
  Lanes low = kInfinity - Lanes{};
  Lanes high = -low;
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    LocalLanes p;
    LoadLocal(block, i, f, radius, p);
    Store(p.deviation, deviation + i);
    low = p.deviation < low ? p.deviation : low;
    high = p.deviation > high ? p.deviation : high;
  }
  smallest = Smallest(low);
  largest = Largest(high);
}

NU_KERNEL void FindGradients(const PointBlock& block, const CylinderDistance& model, double* deviation,
                             double (*gradient)[kMostRows]) {
  const CylinderDistance m = model;
  const Lanes zero = {};
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    LocalLanes p;
    LoadLocal(block, i, m.frame, m.radius, p);
    Store(p.deviation, deviation + i);
    // On the axis any direction leads away.
    const Lanes inverse = p.d > zero ? 1.0 / p.d : zero;
    const Lanes cosine = (p.x + m.radius) * inverse;
    const Lanes sine = p.t * inverse * m.across;
    const Lanes height = p.z / -m.half;
    Store(-cosine, gradient[0] + i);
    Store(-sine, gradient[1] + i);
    Store((p.x - p.deviation) * inverse * m.along, gradient[2] + i);
    Store(height * cosine, gradient[3] + i);
    Store(height * sine, gradient[4] + i);
  }
}

struct Reach {
  double low = kInfinity;  // along the axis
  double high = -kInfinity;
  double bulge = 0.0;  // the largest 1 - cos
};

NU_KERNEL void FindReach(const PointBlock& block, const AxisFrame& frame, double radius, Reach& found) {
  const AxisFrame f = frame;
  Lanes low = kInfinity - Lanes{};
  Lanes high = -low;
  Lanes most = {};
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    LocalLanes p;
    LoadLocal(block, i, f, radius, p);
    const Lanes bulge = (p.deviation - p.x) / p.d;
    low = p.z < low ? p.z : low;
    high = p.z > high ? p.z : high;
    most = bulge > most ? bulge : most;
  }
  found = {Smallest(low), Largest(high), Largest(most)};
}

}  // namespace

void CylinderDistance::Deviations(const PointBlock& block, double* deviation, double& smallest, double& largest) const {
  FindDeviations(block, frame, radius, deviation, smallest, largest);
}

void CylinderDistance::Gradients(const PointBlock& block, double* deviation, double (*gradient)[kMostRows]) const {
  FindGradients(block, *this, deviation, gradient);
}

// Half of d^2, after shifts (a, b), a lengthening c of r and tilts (alpha, beta), is to second order
//
//   ((X - a + c)^2 + (t - b)^2) / 2 - z (alpha (X - a + c) + beta (t - b))
//     + alpha^2 (z^2 - x X) / 2 + beta^2 (z^2 - t^2) / 2 - alpha beta t X,
//
// and the second derivatives of d are those of it, less the product of the first derivatives of d, by d.
void CylinderDistance::AddCurvature(const Vec3& point, double weight, double (&sum)[kUnknowns][kUnknowns]) const {
  const Vec3 q = frame.Local(point);
  const double lifted = q.x + radius;
  const double d = std::sqrt(lifted * lifted + q.y * q.y);
  if (d == 0.0) return;
  const double cosine = lifted / d;
  const double sine = q.y / d;
  const double first[kUnknowns] = {-cosine, -sine, cosine, -q.z * cosine, -q.z * sine};
  const double second[kUnknowns][kUnknowns] = {{1.0, 0.0, -1.0, q.z, 0.0},
                                               {0.0, 1.0, 0.0, 0.0, q.z},
                                               {-1.0, 0.0, 1.0, -q.z, 0.0},
                                               {q.z, 0.0, -q.z, q.z * q.z - q.x * lifted, -q.y * lifted},
                                               {0.0, q.z, 0.0, -q.y * lifted, q.z * q.z - q.y * q.y}};
  const double factor[kUnknowns] = {1.0, across, along, 1.0 / half, across / half};
  for (int i = 0; i < kUnknowns; ++i)
    for (int j = 0; j < kUnknowns; ++j)
      sum[i][j] += weight / d * factor[i] * factor[j] * (second[i][j] - first[i] * first[j]);
}

CylinderDistance CylinderDistance::Moved(const double (&step)[kUnknowns]) const {
  CylinderDistance moved = *this;
  moved.frame = frame.Moved(step[0], across * step[1], step[3] / half, across * step[4] / half);
  moved.radius = std::max(radius + along * step[2], kLeastPart * radius);
  return moved;
}

// Quarters of the length, eight parts across: octants, or those of a strip.
int CylinderDistance::Stratum(const Vec3& point) const {
  const Vec3 q = frame.Local(point);
  const int quarter = q.z < 0.0 ? (q.z < -0.5 * half ? 0 : 1) : (q.z < 0.5 * half ? 2 : 3);
  const double x = q.x + radius;
  const double t = across * q.y;
  const int octant = (x < 0.0 ? 1 : 0) + (t < 0.0 ? 2 : 0) + (std::fabs(x) < std::fabs(t) ? 4 : 0);
  return 8 * quarter + octant;
}

CylinderDistance DistanceFromCylinder(PointBlocks& points, const Vec3& axisPoint, const Vec3& direction, double radius,
                                      const Vec3& towards) {
  const AxisFrame axis = FrameAlong(axisPoint, direction, towards);
  CylinderDistance model{axis, radius};
  model.frame.origin = axisPoint + radius * axis.x;
  Reach reach;
  points.ForEach([&](const PointBlock& block) {
    Reach part;
    FindReach(block, model.frame, radius, part);
    reach.low = std::min(reach.low, part.low);
    reach.high = std::max(reach.high, part.high);
    reach.bulge = std::max(reach.bulge, part.bulge);
  });
  model.frame.origin = model.frame.origin + (0.5 * (reach.low + reach.high)) * axis.z;
  model.half = std::max(0.5 * (reach.high - reach.low), kEpsilon * radius);
  const double bulge = std::max(reach.bulge, kEpsilon);
  model.along = 1.0 / bulge;
  model.across = bulge < 1.0 ? 1.0 / std::sqrt(bulge * (2.0 - bulge)) : 1.0;
  return model;
}

}  // namespace nu::engine::minimax
