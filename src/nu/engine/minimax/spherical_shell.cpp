#include "nu/engine/minimax/spherical_shell.h"

#include "nu/engine/base/floating_point.h"
#include "nu/engine/minimax/distance_kernels.h"
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

enum Unknown { kTiltX, kTiltY, kApex, kBend };

struct ShellLanes {
  static constexpr int kUnknowns = 4;

  // Also q and D.
  NU_ALWAYS_INLINE void Find(const PointBlock& block, std::size_t i, Lanes& x, Lanes& y, Lanes& z, Lanes& d,
                             Lanes& e) const {
    LoadLocal(block, i, frame, x, y, z);
    const Lanes across = bend * x;
    const Lanes across2 = bend * y;
    const Lanes along = bend * z + 1.0;
    d = across * across + across2 * across2 + along * along;
    TakeSquareRoot(d);
    e = (x * across + y * across2 + z * (along + 1.0)) / (1.0 + d);
  }

  NU_ALWAYS_INLINE void Deviate(const PointBlock& block, std::size_t i, Lanes& e) const {
    Lanes x, y, z, d;
    Find(block, i, x, y, z, d, e);
  }

  // At the centre the gradient is undefined; use zero.
  NU_ALWAYS_INLINE void Deviate(const PointBlock& block, std::size_t i, Lanes& e, Lanes (&column)[kUnknowns]) const {
    Lanes x, y, z, d;
    Find(block, i, x, y, z, d, e);
    const Lanes quotient = 1.0 / d;
    const Lanes inverse = d > 0.0 ? quotient : Lanes{};
    column[kTiltX] = x * inverse;
    column[kTiltY] = y * inverse;
    column[kApex] = (1.0 + bend * z) * inverse;
    column[kBend] = (x * x + y * y + z * z - e * e) * inverse;
  }

  AxisFrame frame;
  double bend;
};

NU_DISTANCE_KERNELS(ShellLanes)

struct ShellModel {
  static constexpr int kUnknowns = ShellLanes::kUnknowns;
  static constexpr int kStrata = kDirectionCells;

  AxisFrame frame;    // the apex; z is w
  double bend = 0.0;  // k
  double half = 0.0;  // how far the points reach from the apex

  Vec3 Centre() const { return frame.origin - (1.0 / bend) * frame.z; }
  bool IsRound() const { return std::fabs(bend) * half > kLeastBend; }

  void Deviations(const PointBlock& block, double* deviation, double& smallest, double& largest) const {
    FindEach(block, ShellLanes{frame, bend}, deviation, smallest, largest);
  }

  void Gradients(const PointBlock& block, double* deviation, double (*gradient)[kMostRows]) const {
    const double tilt = 1.0 / Lever();
    FindGradients(block, ShellLanes{frame, bend}, {tilt, tilt, -1.0, 0.5 * Sweep()}, deviation, gradient);
  }

  void AddCurvature(const Vec3& point, double weight, double (&sum)[kUnknowns][kUnknowns]) const {
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
  ShellModel Moved(const double (&step)[kUnknowns]) const {
    const Vec3 z = Unit(frame.z + (1.0 / Lever()) * (step[kTiltX] * frame.x + step[kTiltY] * frame.y));
    ShellModel moved = *this;
    moved.frame = AxisFrame::Along(frame.origin + step[kApex] * frame.z, z, frame.x);
    const double change = Sweep() * step[kBend];
    moved.bend = bend + change;
    if (!IsCap() && bend * change < 0.0) moved.bend = bend / (1.0 - change / bend);
    return moved;
  }

  int Stratum(const Vec3& point) const {
    const Vec3 q = frame.Local(point);
    return DirectionCell({q.x / Lever(), q.y / Lever(), bend * q.z + 1.0});
  }

  bool IsCap() const { return std::fabs(bend) * half < 1.0; }
  double Lever() const { return IsCap() ? half : 1.0 / std::fabs(bend); }
  double Sweep() const { return std::max(bend * bend, 2.0 / (half * half)); }
};

// Half-way between the two spheres about the centre that hold all points.
ShellModel StartAt(PointBlocks& points, const Vec3& mean, const Vec3& centre, double radius, const NearAndFar& seen) {
  const Vec3 towards = mean - centre;
  const Vec3 w = Norm(towards) > kEpsilon * radius ? towards : seen.farthest - mean;
  AxisFrame frame = FrameAlong(centre, w, seen.farthest - mean);
  frame.origin = centre + radius * frame.z;
  const double middle = RangeOfDeviations(points, ShellModel{frame, 1.0 / radius}).Middle();
  frame.origin = frame.origin + middle * frame.z;
  return {frame, 1.0 / (radius + middle), seen.greatest + Norm(mean - frame.origin)};
}

}  // namespace

SphericalShell ThinnestShell(PointBlocks& points, const Vec3& mean, const Vec3& centre, double radius, long limit,
                             const StepMonitor& monitor) {
  SphericalShell shell;
  const ScaledProblem problem = Prepared(points, mean);
  if (!problem.isFinite) return shell;
  const double scale = problem.scale;
  const ShellModel start = StartAt(points, problem.mean, scale * centre, scale * radius, problem.seen);
  Minimax<ShellModel> minimax(points, MinimaxSide::both, problem.rounding, limit, monitor);
  const MinimaxSolution<ShellModel> solution = minimax.Solve(start);
  const double unit = 1.0 / scale;
  const double middle = 1.0 / std::fabs(solution.model.bend);
  const bool converged = solution.end == MinimaxEnd::converged;
  shell.end = converged && !solution.model.IsRound() ? MinimaxEnd::stalled : solution.end;
  shell.steps = solution.steps;
  shell.centre = unit * solution.model.Centre();
  shell.inner = unit * (middle - solution.value);
  shell.outer = unit * (middle + solution.value);
  shell.TakeContacts(solution, unit, solution.model.bend < 0.0 ? -1.0 : 1.0);
  return shell;
}

}  // namespace nu::engine::minimax
