#include "nu/engine/minimax/spherical_shell.h"

#include <limits>

#include "nu/engine/base/lanes.h"
#include "nu/engine/minimax/round_minimax.h"

// The sphere from which the largest distance of a point is the least. It is given by its apex a, a point of it on the
// side of the points, the direction w that leads there from the centre, and k = 1 / radius: so a plane is nothing
// special (k = 0), the centre may pass to the other side (k < 0), and small caps lose no digits. With q = p - a,
//
//   P = k |q|^2 + 2 q . w,  D = |k q + w|,  k f^2 + 2 f = P,  1 + k f = D,  f = P / (1 + D)
//
// f is the signed distance of a point p. The unknowns move the apex along w, tilt w and change k; differentiating the
// equation for f twice gives
//
//   2 D df = dP - f^2 dk,  2 D d2f = d2P - 4 f df dk - 2 k df^2.
//
// They are scaled to lengths at the points.

namespace nu::engine::minimax {
namespace {

constexpr double kEpsilon = std::numeric_limits<double>::epsilon();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// A sphere so much larger than the set of points, the square root of the rounding unit, has its centre nowhere.
constexpr double kLeastBend = 0x1p-26;

enum Unknown { kTiltX, kTiltY, kApex, kBend };

struct ShellModel {
  static constexpr int kUnknowns = 4;
  static constexpr int kStrata = kDirectionCells;

  AxisFrame frame;    // the apex; z is w
  double bend = 0.0;  // k
  double half = 0.0;  // how far the points reach from the apex

  Vec3 Centre() const { return frame.origin - (1.0 / bend) * frame.z; }
  bool IsRound() const { return std::fabs(bend) * half > kLeastBend; }

  void Deviations(const PointBlock& block, double* deviation, double& smallest, double& largest) const;
  void Gradients(const PointBlock& block, double* deviation, double (*gradient)[kMostRows]) const;
  void AddCurvature(const Vec3& point, double weight, double (&sum)[kUnknowns][kUnknowns]) const;
  ShellModel Moved(const double (&step)[kUnknowns]) const;
  int Stratum(const Vec3& point) const;

  bool IsCap() const { return std::fabs(bend) * half < 1.0; }
  double Lever() const { return IsCap() ? half : 1.0 / std::fabs(bend); }
  double Sweep() const { return std::max(bend * bend, 2.0 / (half * half)); }
};

struct LaneVector {
  Lanes x, y, z;
};

// q and D; returns f by reference.
NU_ALWAYS_INLINE void LoadFrom(const PointBlock& block, std::size_t i, const AxisFrame& f, double bend, LaneVector& q,
                               Lanes& d, Lanes& deviation) {
  Load(block.x + i, q.x);
  Load(block.y + i, q.y);
  Load(block.z + i, q.z);
  q.x -= f.origin.x;
  q.y -= f.origin.y;
  q.z -= f.origin.z;
  const Lanes x = bend * q.x + f.z.x;
  const Lanes y = bend * q.y + f.z.y;
  const Lanes z = bend * q.z + f.z.z;
  d = x * x + y * y + z * z;
  TakeSquareRoot(d);
  deviation = (q.x * (x + f.z.x) + q.y * (y + f.z.y) + q.z * (z + f.z.z)) / (1.0 + d);
}

NU_KERNEL void FindDeviations(const PointBlock& block, const AxisFrame& frame, double bend, double* deviation,
                              double& smallest, double& largest) {
  const AxisFrame f = frame;
  Lanes low = kInfinity - Lanes{};
  Lanes high = -low;
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    LaneVector q;
    Lanes d, e;
    LoadFrom(block, i, f, bend, q, d, e);
    Store(e, deviation + i);
    low = e < low ? e : low;
    high = e > high ? e : high;
  }
  smallest = Smallest(low);
  largest = Largest(high);
}

NU_KERNEL void FindGradients(const PointBlock& block, const AxisFrame& frame, double bend, double lever, double sweep,
                             double* deviation, double (*gradient)[kMostRows]) {
  const AxisFrame f = frame;
  const Lanes zero = {};
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    LaneVector q;
    Lanes d, e;
    LoadFrom(block, i, f, bend, q, d, e);
    Store(e, deviation + i);
    // From the centre any direction leads away.
    const Lanes inverse = d > zero ? 1.0 / d : zero;
    const Lanes along = q.x * f.z.x + q.y * f.z.y + q.z * f.z.z;
    const Lanes square = q.x * q.x + q.y * q.y + q.z * q.z - e * e;
    Store((q.x * f.x.x + q.y * f.x.y + q.z * f.x.z) * inverse / lever, gradient[kTiltX] + i);
    Store((q.x * f.y.x + q.y * f.y.y + q.z * f.y.z) * inverse / lever, gradient[kTiltY] + i);
    Store(-(1.0 + bend * along) * inverse, gradient[kApex] + i);
    Store(0.5 * square * inverse * sweep, gradient[kBend] + i);
  }
}

void ShellModel::Deviations(const PointBlock& block, double* deviation, double& smallest, double& largest) const {
  FindDeviations(block, frame, bend, deviation, smallest, largest);
}

void ShellModel::Gradients(const PointBlock& block, double* deviation, double (*gradient)[kMostRows]) const {
  FindGradients(block, frame, bend, Lever(), Sweep(), deviation, gradient);
}

void ShellModel::AddCurvature(const Vec3& point, double weight, double (&sum)[kUnknowns][kUnknowns]) const {
  const Vec3 q = frame.Local(point);
  const Vec3 v{bend * q.x, bend * q.y, bend * q.z + 1.0};
  const double d = Norm(v);
  if (d == 0.0) return;
  const double f = (q.x * v.x + q.y * v.y + q.z * (v.z + 1.0)) / (1.0 + d);
  const double first[kUnknowns] = {q.x / d, q.y / d, -v.z / d, 0.5 * (Dot(q, q) - f * f) / d};
  const double unit[kUnknowns] = {1.0 / Lever(), 1.0 / Lever(), 1.0, Sweep()};
  double ofP[kUnknowns][kUnknowns] = {};
  ofP[kTiltX][kTiltX] = ofP[kTiltY][kTiltY] = ofP[kApex][kBend] = ofP[kBend][kApex] = -2.0 * q.z;
  ofP[kApex][kApex] = 2.0 * bend;
  for (int i = 0; i < kUnknowns; ++i) {
    for (int j = 0; j < kUnknowns; ++j) {
      const double mixed = (j == kBend ? first[i] : 0.0) + (i == kBend ? first[j] : 0.0);
      const double second = (0.5 * ofP[i][j] - f * mixed - bend * first[i] * first[j]) / d;
      sum[i][j] += weight * unit[i] * unit[j] * second;
    }
  }
}

// A sphere that the points surround must not be bent open by a step that is meant to widen it.
ShellModel ShellModel::Moved(const double (&step)[kUnknowns]) const {
  const Vec3 z = Unit(frame.z + (1.0 / Lever()) * (step[kTiltX] * frame.x + step[kTiltY] * frame.y));
  ShellModel moved = *this;
  moved.frame = AxisFrame::Along(frame.origin + step[kApex] * frame.z, z, frame.x);
  const double change = Sweep() * step[kBend];
  moved.bend = bend + change;
  if (!IsCap() && bend * change < 0.0) moved.bend = bend / (1.0 - change / bend);
  return moved;
}

int ShellModel::Stratum(const Vec3& point) const {
  const Vec3 q = frame.Local(point);
  return DirectionCell({q.x / Lever(), q.y / Lever(), bend * q.z + 1.0});
}

// Half-way between the two spheres about the centre that hold all points.
ShellModel StartAt(PointBlocks& points, const Vec3& mean, const Vec3& centre, double radius, const NearAndFar& seen) {
  const Vec3 towards = mean - centre;
  const Vec3 w = Norm(towards) > kEpsilon * radius ? towards : seen.farthest - mean;
  AxisFrame frame = FrameAlong(centre, w, seen.farthest - mean);
  frame.origin = centre + radius * frame.z;
  double smallest = kInfinity;
  double largest = -kInfinity;
  points.ForEach([&](const PointBlock& block) {
    double deviation[kBlockPoints], low, high;
    FindDeviations(block, frame, 1.0 / radius, deviation, low, high);
    smallest = std::min(smallest, low);
    largest = std::max(largest, high);
  });
  const double middle = 0.5 * (smallest + largest);
  frame.origin = frame.origin + middle * frame.z;
  return {frame, 1.0 / (radius + middle), seen.greatest + Norm(mean - frame.origin)};
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
  Minimax<ShellModel> minimax(points, MinimaxSide::both, rounding, limit);
  const MinimaxSolution<ShellModel> solution = minimax.Solve(start);
  const double unit = 1.0 / scale;
  const double middle = 1.0 / std::fabs(solution.model.bend);
  const bool converged = solution.end == MinimaxEnd::converged;
  shell.end = converged && !solution.model.IsRound() ? MinimaxEnd::stalled : solution.end;
  shell.steps = solution.steps;
  shell.centre = unit * solution.model.Centre();
  shell.inner = unit * (middle - solution.value);
  shell.outer = unit * (middle + solution.value);
  shell.contacts = solution.contacts;
  for (int k = 0; k < solution.contacts; ++k) {
    shell.contact[k] = unit * solution.contact[k];
    shell.sign[k] = solution.model.bend < 0.0 ? -solution.sign[k] : solution.sign[k];
    shell.multiplier[k] = solution.multiplier[k];
  }
  return shell;
}

}  // namespace nu::engine::minimax
