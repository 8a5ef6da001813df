#include "nu/engine/least_squares/cylinder_least_squares.h"

#include <limits>

#include "nu/engine/base/lanes.h"

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

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// A descent ends with a step that would lower the sum of squares by less than this part. Where each step gains not much
// less than the one before, as on flat and rough parts, many more lie ahead, and it goes on.
constexpr double kGainTolerance = 1e-9;
constexpr double kFast = 1e-3;
constexpr double kWorthASlowPass = 1e-18;

constexpr int kColumns = 4;  // for shift, height and the tilts; that for the rise is constant
// Their sums, their products, their products with the deviation; the deviation and its square; z, |p - M|^2.
constexpr int kSums = kColumns + kColumns * (kColumns + 1) / 2 + kColumns + 4;

NU_ALWAYS_INLINE void LocalCoordinates(const PointBlock& block, std::size_t i, const CylinderModel& m,
                                       const Vec3& offset, Lanes& x, Lanes& t, Lanes& z) {
  Lanes px, py, pz;
  Load(block.x + i, px);
  Load(block.y + i, py);
  Load(block.z + i, pz);
  x = m.u.x * px + m.u.y * py + m.u.z * pz - offset.x;
  t = m.v.x * px + m.v.y * py + m.v.z * pz - offset.y;
  z = m.w.x * px + m.w.y * py + m.w.z * pz - offset.z;
}

Vec3 OffsetOf(const CylinderModel& m) {
  return {Dot(m.u, m.pivot), Dot(m.v, m.pivot), Dot(m.w, m.pivot)};
}

// The deviation e and the columns for shift, height and the tilts a, b, without their sign.
NU_ALWAYS_INLINE void Deviate(const CylinderModel& m, const Lanes& x, const Lanes& t, const Lanes& z, Lanes& e,
                              Lanes (&column)[kColumns]) {
  const Lanes h = x + m.height;
  const Lanes across = t * t;
  Lanes d = h * h + across;
  TakeSquareRoot(d);
  // d - |h| without cancellation is t^2 / far. A point on the axis has no direction: its columns are zero.
  const Lanes far = d + (h > 0.0 ? h : -h);
  const Lanes product = d * far;
  const Lanes quotient = 1.0 / product;
  const Lanes inverse = product > 0.0 ? quotient : Lanes{};
  const Lanes lift = h > 0.0 ? across * inverse * d : far;
  const Lanes inverseDistance = inverse * far;
  e = lift + (x - m.rise);
  column[0] = t * inverseDistance;
  column[1] = lift * inverseDistance;
  column[2] = z * h * inverseDistance;
  column[3] = z * column[0];
}

NU_KERNEL void SumProducts(const PointBlock& block, const CylinderModel& given, const Vec3& givenOffset,
                           double (&sums)[kSums], Deviations& extremes) {
  const CylinderModel model = given;
  const Vec3 offset = givenOffset;
  Lanes sum[kSums] = {};
  Lanes smallest = kInfinity - Lanes{};
  Lanes largest = -smallest;
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    Lanes x, t, z, e, weight;
    Lanes column[kColumns];
    LocalCoordinates(block, i, model, offset, x, t, z);
    Deviate(model, x, t, z, e, column);
    smallest = e < smallest ? e : smallest;
    largest = e > largest ? e : largest;
    Load(block.Weights(i), weight);
    e *= weight;
    z *= weight;
    int next = 0;
    for (int j = 0; j < kColumns; ++j) {
      column[j] *= weight;
      sum[next++] += column[j];
      sum[next++] += column[j] * e;
      for (int k = 0; k <= j; ++k) sum[next++] += column[j] * column[k];
    }
    sum[next++] += e;
    sum[next++] += e * e;
    sum[next++] += z;
    sum[next++] += z * z + weight * (x * x + t * t);
  }
  for (int k = 0; k < kSums; ++k) sums[k] = Sum(sum[k]);
  extremes = {0.0, Smallest(smallest), Largest(largest)};
}

NU_KERNEL void FindDeviations(const PointBlock& block, const CylinderModel& given, const Vec3& givenOffset,
                              Deviations& found) {
  const CylinderModel model = given;
  const Vec3 offset = givenOffset;
  Lanes square = {};
  Lanes smallest = kInfinity - Lanes{};
  Lanes largest = -smallest;
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    Lanes x, t, z, weight;
    LocalCoordinates(block, i, model, offset, x, t, z);
    const Lanes h = x + model.height;
    const Lanes across = t * t;
    Lanes d = h * h + across;
    TakeSquareRoot(d);
    const Lanes far = d + (h > 0.0 ? h : -h);
    const Lanes quotient = across / far;
    Lanes e = (h > 0.0 ? quotient : far) + (x - model.rise);
    smallest = e < smallest ? e : smallest;
    largest = e > largest ? e : largest;
    Load(block.Weights(i), weight);
    e *= weight;
    square += e * e;
  }
  found = {Sum(square), Smallest(smallest), Largest(largest)};
}

// Rows (rise, shift, height, tilts | deviation) of the points from `begin` to `end`.
void FillRows(const PointBlock& block, std::size_t begin, std::size_t end, const CylinderModel& model,
              const Vec3& offset, TallReduction& reduction) {
  for (std::size_t i = begin; i < end; i += kLanes) {
    Lanes x, t, z, e;
    Lanes column[kColumns];
    LocalCoordinates(block, i, model, offset, x, t, z);
    Deviate(model, x, t, z, e, column);
    Store(1.0 - Lanes{}, reduction.Column(0) + (i - begin));
    for (int j = 0; j < kColumns; ++j) Store(column[j], reduction.Column(j + 1) + (i - begin));
    Store(e, reduction.Column(kColumns + 1) + (i - begin));
  }
}

}  // namespace

CylinderModel CylinderAbout(const Vec3& pivot, const Vec3& direction, const Vec3& toAxis, double radius) {
  CylinderModel model;
  model.pivot = pivot;
  model.PlaceAxis(direction, toAxis);
  model.rise = radius - model.height;
  return model;
}

CylinderProblem::System CylinderProblem::Sum(PointBlocks& points, const CylinderModel& model) {
  System system;
  const Vec3 offset = OffsetOf(model);
  const auto kernel = [&](const PointBlock& block, double(&sums)[kSums], Deviations& part) {
    SumProducts(block, model, offset, sums, part);
  };
  const BlockSums<kSums> total = SumOverBlocks<kSums>(points, system.deviations, kernel);
  system.product[0][0] = system.count = static_cast<double>(points.Size());
  int next = 0;
  for (int j = 1; j < kUnknowns; ++j) {
    system.product[j][0] = system.product[0][j] = total[next++];
    system.right[j] = total[next++];
    for (int k = 1; k <= j; ++k) system.product[j][k] = system.product[k][j] = total[next++];
  }
  system.right[0] = total[next++];
  system.deviations.sumSquares = total[next++];
  system.along = total[next++] / system.count;
  system.spread = total[next];
  return system;
}

TallReduction CylinderProblem::Reduce(PointBlocks& points, const CylinderModel& model) {
  const Vec3 offset = OffsetOf(model);
  return ReduceRows(points, kUnknowns + 1,
                    [&](const PointBlock& block, std::size_t begin, std::size_t end, TallReduction& reduction) {
                      FillRows(block, begin, end, model, offset, reduction);
                    });
}

Deviations CylinderProblem::DeviationsFrom(PointBlocks& points, const CylinderModel& model) {
  const Vec3 offset = OffsetOf(model);
  return OverBlocks(points,
                    [&](const PointBlock& block, Deviations& part) { FindDeviations(block, model, offset, part); });
}

double CylinderProblem::SquaredLength(const CylinderModel&, const System& system, const double (&step)[kUnknowns]) {
  const auto [rise, shift, height, tiltU, tiltV] = step;
  const double turned = (tiltU * tiltU + tiltV * tiltV) / system.count;
  return shift * shift + height * height + turned * system.spread;
}

void CylinderProblem::Move(PointBlocks&, const System&, const double (&step)[kUnknowns], CylinderModel& model) {
  const auto [rise, shift, height, tiltU, tiltV] = step;
  const double lifted = model.height + height;
  const double radius = lifted + model.rise + rise;
  const Vec3 fromAxis = lifted * model.u - shift * model.v;
  model.Turn(Unit(model.w + tiltU * model.u + tiltV * model.v), fromAxis);
  model.height = std::sqrt(lifted * lifted + shift * shift);
  // radius - height, without the rounding of a radius that is far larger than the extent of the points.
  model.rise = lifted > 0.0 ? model.rise + rise - shift * shift / (model.height + lifted) : radius - model.height;
}

bool CylinderProblem::IsEnough(const StepGains& gains, double sumSquares) {
  const bool fast = !gains.damped && gains.now <= kFast * gains.before;
  return gains.now <= (fast ? kGainTolerance : kWorthASlowPass) * sumSquares;
}

template class DampedGaussNewton<CylinderProblem>;

}  // namespace nu::engine::least_squares
