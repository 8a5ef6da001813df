#include "nu/engine/least_squares/cylinder_least_squares.h"

#include "nu/engine/least_squares/axis_curvatures.h"
#include "nu/engine/least_squares/cylinder_lanes.h"

// Gauss-Newton on e = |p - foot on the axis| - r. A narrow part of a cylinder says little about axis and radius but
// much about the strip itself, so the unknowns are those of the strip at M: its rise k above M and its curvature
// through the height H of M above the axis, the shift s of the axis along v, and the tilts a, b of the axis towards u
// and v. For a point with the coordinates x along u, t along v, z along w from M,
//
//   h = H + x,   d = sqrt(h^2 + t^2),   r = H + k,   l = d - h = t^2 / (d + h),
//   e = l + (x - k),   de/dk = -1,   de/ds = -t / d,   de/dH = -l / d,   de/da = -z h / d,   de/db = -z t / d.
//
// All terms are of the size of the points' extent, not of the radius, so nothing cancels however narrow the strip is;
// and the columns are about as independent as 1, t, t^2, z and z t. A step turns the axis about M and not about its own
// point, which may be far away: so it moves the points' deviations as the derivatives say.

namespace nu::engine::least_squares {
namespace {

// A descent ends with a step that would lower the sum of squares by less than this part. Where each step gains not much
// less than the one before, as on flat and rough parts, many more lie ahead, and it goes on.
constexpr double kGainTolerance = 1e-9;
constexpr double kFast = 1e-3;
constexpr double kWorthASlowPass = 1e-18;

NU_KERNEL void SumProducts(const PointBlock& block, const CylinderLanes& surface, double (&sums)[kSums<CylinderLanes>],
                           Deviations& found) {
  ProductsBody(block, surface, sums, found);
}

NU_KERNEL void FindDeviations(const PointBlock& block, const CylinderLanes& surface, Deviations& found) {
  DeviationsBody(block, surface, found);
}

}  // namespace

CylinderModel CylinderAbout(const Vec3& pivot, const Vec3& direction, const Vec3& toAxis, double radius) {
  CylinderModel model;
  model.pivot = pivot;
  model.PlaceAxis(direction, toAxis);
  model.rise = radius - model.height;
  return model;
}

void CylinderModel::Move(const double (&step)[5]) {
  const auto [addedRise, shift, addedHeight, tiltU, tiltV] = step;
  const double lifted = height + addedHeight;
  const double radius = lifted + rise + addedRise;
  const Vec3 fromAxis = lifted * u - shift * v;
  Turn(Unit(w + tiltU * u + tiltV * v), fromAxis);
  height = std::sqrt(lifted * lifted + shift * shift);
  // radius - height, without the rounding of a radius that is far larger than the extent of the points.
  rise = lifted > 0.0 ? rise + addedRise - shift * shift / (height + lifted) : radius - height;
}

CylinderProblem::System CylinderProblem::Sum(PointBlocks& points, const CylinderModel& model) {
  BlockSums<kSums<CylinderLanes>> total;
  System system = SystemOf(points, CylinderLanes(model), SumProducts, total);
  system.along = total[kSums<CylinderLanes> - 2] / system.count;
  system.spread = total[kSums<CylinderLanes> - 1];
  return system;
}

// The rise is linear in e, and the angle stays.
void CylinderProblem::AddSecond(PointBlocks& points, const CylinderModel& model, System& system) {
  double second[kAxisUnknowns][kAxisUnknowns];
  SumCurvatures(points, {.frame = model}, second);
  for (int i = 1; i < kUnknowns; ++i) std::copy_n(&second[i][1], kUnknowns - 1, &system.second[i][1]);
}

TallReduction CylinderProblem::Reduce(PointBlocks& points, const CylinderModel& model) {
  return ReduceSurface(points, CylinderLanes(model));
}

Deviations CylinderProblem::DeviationsFrom(PointBlocks& points, const CylinderModel& model) {
  const CylinderLanes surface(model);
  return OverBlocks(points, [&](const PointBlock& block, Deviations& part) { FindDeviations(block, surface, part); });
}

double CylinderProblem::SquaredLength(const CylinderModel&, const System& system, const double (&step)[kUnknowns]) {
  const auto [rise, shift, height, tiltU, tiltV] = step;
  const double turned = (tiltU * tiltU + tiltV * tiltV) / system.count;
  return shift * shift + height * height + turned * system.spread;
}

bool CylinderProblem::IsEnough(const StepGains& gains, double sumSquares) {
  const bool fast = !gains.damped && gains.now <= kFast * gains.before;
  return gains.now <= (fast ? kGainTolerance : kWorthASlowPass) * sumSquares;
}

template class DampedGaussNewton<CylinderProblem>;

}  // namespace nu::engine::least_squares
