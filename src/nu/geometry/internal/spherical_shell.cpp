#include "nu/geometry/internal/spherical_shell.h"

#include <limits>

#include "nu/geometry/internal/lanes.h"
#include "nu/geometry/internal/round_minimax.h"

// The sphere, with centre c and radius r, from which the largest distance |f(p)| = ||p - c| - r| of a point is the
// least. With a unit direction w from c to among the points, the apex a = c + r w, q = p - a and v = q + r w = p - c,
//
//   f = |v| - r = q . (v + r w) / (|v| + r)
//
// loses nothing on a small cap, however large r is. The unknowns shift c across w, shift it along w, and lengthen r
// with the apex held; with u = v / |v| the derivatives of f are minus the components of u, and u . w - 1 = (q . w - f)
// / |v|. On a cap they differ little from one another but for the second, so the first two are divided by the largest
// sine between u and w, and the last by the largest 1 - u . w: all are lengths at the points then.

namespace nu::internal {
namespace {

constexpr double kEpsilon = std::numeric_limits<double>::epsilon();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Points next to a plane make the radius creep towards infinity. Measured spheres and caps need up to some tens.
constexpr long kMostSteps = 1000;

// A step leaves this part of the radius.
constexpr double kLeastPart = 0.125;

struct ShellModel {
  static constexpr int kUnknowns = 4;
  static constexpr int kStrata = kDirectionCells;

  AxisFrame frame;  // the apex; z is w
  double radius = 0.0;
  double across = 1.0;  // what the unknowns are multiplied by
  double along = 1.0;

  Vec3 Centre() const { return frame.origin - radius * frame.z; }

  void Deviations(const PointBlock& block, double* deviation, double& smallest, double& largest) const;
  void Gradients(const PointBlock& block, double* deviation, double (*gradient)[kMostRows]) const;
  void AddCurvature(const Vec3& point, double weight, double (&sum)[kUnknowns][kUnknowns]) const;
  ShellModel Moved(const double (&step)[kUnknowns]) const;
  int Stratum(const Vec3& point) const;
};

struct LaneVector {
  Lanes x, y, z;
};

// q, v and |v|; returns f by reference.
NU_ALWAYS_INLINE void LoadFrom(const PointBlock& block, std::size_t i, const AxisFrame& f, double r, LaneVector& q,
                               LaneVector& v, Lanes& d, Lanes& deviation) {
  Load(block.x + i, q.x);
  Load(block.y + i, q.y);
  Load(block.z + i, q.z);
  const Vec3 radius = r * f.z;
  q.x -= f.origin.x;
  q.y -= f.origin.y;
  q.z -= f.origin.z;
  v.x = q.x + radius.x;
  v.y = q.y + radius.y;
  v.z = q.z + radius.z;
  d = v.x * v.x + v.y * v.y + v.z * v.z;
  TakeSquareRoot(d);
  deviation = (q.x * (v.x + radius.x) + q.y * (v.y + radius.y) + q.z * (v.z + radius.z)) / (d + r);
}

NU_KERNEL void FindDeviations(const PointBlock& block, const AxisFrame& frame, double radius, double* deviation,
                              double& smallest, double& largest) {
  const AxisFrame f = frame;
  Lanes low = kInfinity - Lanes{};
  Lanes high = -low;
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    LaneVector q, v;
    Lanes d, e;
    LoadFrom(block, i, f, radius, q, v, d, e);
    Store(e, deviation + i);
    low = e < low ? e : low;
    high = e > high ? e : high;
  }
  smallest = Smallest(low);
  largest = Largest(high);
}

NU_KERNEL void FindGradients(const PointBlock& block, const ShellModel& model, double* deviation,
                             double (*gradient)[kMostRows]) {
  const ShellModel m = model;
  const AxisFrame& f = m.frame;
  const Lanes zero = {};
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    LaneVector q, v;
    Lanes d, e;
    LoadFrom(block, i, f, m.radius, q, v, d, e);
    Store(e, deviation + i);
    // From the centre any direction leads away.
    const Lanes inverse = d > zero ? 1.0 / d : zero;
    Store((v.x * f.x.x + v.y * f.x.y + v.z * f.x.z) * inverse * -m.across, gradient[0] + i);
    Store((v.x * f.y.x + v.y * f.y.y + v.z * f.y.z) * inverse * -m.across, gradient[1] + i);
    Store((v.x * f.z.x + v.y * f.z.y + v.z * f.z.z) * -inverse, gradient[2] + i);
    Store(((q.x * f.z.x + q.y * f.z.y + q.z * f.z.z) - e) * inverse * m.along, gradient[3] + i);
  }
}

// The largest 1 - u . w.
NU_KERNEL void FindHeight(const PointBlock& block, const AxisFrame& frame, double radius, double& height) {
  const AxisFrame f = frame;
  Lanes most = {};
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    LaneVector q, v;
    Lanes d, e;
    LoadFrom(block, i, f, radius, q, v, d, e);
    const Lanes h = (e - (q.x * f.z.x + q.y * f.z.y + q.z * f.z.z)) / d;
    most = h > most ? h : most;
  }
  height = Largest(most);
}

void ShellModel::Deviations(const PointBlock& block, double* deviation, double& smallest, double& largest) const {
  FindDeviations(block, frame, radius, deviation, smallest, largest);
}

void ShellModel::Gradients(const PointBlock& block, double* deviation, double (*gradient)[kMostRows]) const {
  FindGradients(block, *this, deviation, gradient);
}

// The second derivatives of the distance by the centre are (1 - u u^T) / |v|; the radius counts by the way that it
// moves the centre, which is minus the third unknown's.
void ShellModel::AddCurvature(const Vec3& point, double weight, double (&sum)[kUnknowns][kUnknowns]) const {
  const Vec3 q = frame.Local(point);
  const Vec3 v{q.x, q.y, q.z + radius};
  const double d = Norm(v);
  if (d == 0.0) return;
  const double u[] = {v.x / d, v.y / d, v.z / d};
  double second[3][3];
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) second[i][j] = weight / d * ((i == j ? 1.0 : 0.0) - u[i] * u[j]);
  const double factor[kUnknowns] = {across, across, 1.0, -along};
  for (int i = 0; i < kUnknowns; ++i)
    for (int j = 0; j < kUnknowns; ++j) sum[i][j] += factor[i] * factor[j] * second[std::min(i, 2)][std::min(j, 2)];
}

ShellModel ShellModel::Moved(const double (&step)[kUnknowns]) const {
  ShellModel moved = *this;
  moved.frame.origin = frame.origin + (across * step[0] * frame.x + across * step[1] * frame.y + step[2] * frame.z);
  moved.radius = std::max(radius + along * step[3], kLeastPart * radius);
  return moved;
}

int ShellModel::Stratum(const Vec3& point) const {
  const Vec3 q = frame.Local(point);
  return DirectionCell({across * q.x, across * q.y, q.z + radius});
}

ShellModel StartAt(PointBlocks& points, const Vec3& mean, const Vec3& centre, double radius, const NearAndFar& seen) {
  const Vec3 towards = mean - centre;
  const Vec3 w = Norm(towards) > kEpsilon * radius ? towards : seen.farthest - mean;
  ShellModel model{FrameAlong(centre, w, seen.farthest - mean), radius};
  model.frame.origin = centre + radius * model.frame.z;
  double height = 0.0;
  points.ForEach([&](const PointBlock& block) {
    double part;
    FindHeight(block, model.frame, radius, part);
    height = std::max(height, part);
  });
  height = std::max(height, kEpsilon);
  model.along = 1.0 / height;
  model.across = height < 1.0 ? 1.0 / std::sqrt(height * (2.0 - height)) : 1.0;
  return model;
}

}  // namespace

SphericalShell ThinnestShell(PointBlocks& points, const Vec3& mean, const Vec3& centre, double radius, long limit) {
  points.Keep();
  SphericalShell shell;
  NearAndFar seen;
  if (!FindNearAndFar(points, mean, seen)) return shell;
  const double scale = points.Scale();
  const ShellModel start = StartAt(points, scale * mean, scale * centre, scale * radius, seen);
  const double rounding = kDistanceRoundings * kEpsilon * seen.greatest;
  Minimax<ShellModel> minimax(points, MinimaxSide::both, rounding, std::min(limit, kMostSteps));
  const MinimaxSolution<ShellModel> solution = minimax.Solve(start);
  const double unit = 1.0 / scale;
  shell.end = solution.end;
  shell.steps = solution.steps;
  shell.centre = unit * solution.model.Centre();
  shell.inner = unit * (solution.model.radius - solution.value);
  shell.outer = unit * (solution.model.radius + solution.value);
  shell.contacts = solution.contacts;
  for (int k = 0; k < solution.contacts; ++k) {
    shell.contact[k] = unit * solution.contact[k];
    shell.sign[k] = solution.sign[k];
    shell.multiplier[k] = solution.multiplier[k];
  }
  return shell;
}

}  // namespace nu::internal
