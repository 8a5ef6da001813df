#include "nu/surfaces/internal/cylinder_least_squares.h"

#include <limits>

#include "nu/geometry/internal/lanes.h"
#include "nu/geometry/internal/small_cholesky.h"
#include "nu/geometry/internal/small_svd.h"
#include "nu/linalg/internal/tall_qr.h"

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
//
// The normal equations drive the steps; their right-hand side is the gradient itself, so they do not limit the accuracy
// of the result. Where their columns are nearly dependent the rows are reduced by orthogonal steps instead. A step that
// leads uphill is taken back and shortened (D. W. Marquardt, J. SIAM 11, 1963).

namespace nu::internal {
namespace {

constexpr double kEpsilon = std::numeric_limits<double>::epsilon();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Smallest pivot, as a part of its diagonal entry, of a system that is taken for well-conditioned: half of the digits
// are left.
constexpr double kClearPivot = 1e-8;

// A singular value of the columns, at unit length, that is a smaller part of the largest: the parameters are not
// determined. The coordinates' rounding errors in the columns are of this size.
constexpr double kUndetermined = 64.0 * kEpsilon;

// A step that moves the deviations by no more than this many roundings of the coordinates is noise.
constexpr double kNoise = 16.0 * kEpsilon;

// Damping after the first step that leads uphill or gains too small a part of what was predicted, its change after
// further ones, and after steps that gain nearly all of it.
constexpr double kFirstDamping = 1e-2;
constexpr double kMoreDamping = 5.0;
constexpr double kLessDamping = 0.1;
constexpr double kLeastDamping = 1e-7;
constexpr double kPoorGain = 0.4;
constexpr double kGoodGain = 0.75;

// A descent ends with a step that would lower the sum of squares by less than this part. Where each step gains not much
// less than the one before, as on flat and rough parts, many more lie ahead, and it goes on.
constexpr double kWorthAPass = 1e-9;
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

Vec3 AnyOrthogonal(const Vec3& unit) {
  const bool alongX = std::fabs(unit.x) > std::fabs(unit.y);
  return Unit(Cross(unit, alongX ? Vec3{0.0, 1.0, 0.0} : Vec3{1.0, 0.0, 0.0}));
}

// Turns the frame so that w is this unit direction and u that of `fromAxis` across it.
void TurnFrame(const Vec3& direction, const Vec3& fromAxis, CylinderModel& model) {
  model.w = direction;
  Vec3 u = Rejection(fromAxis, direction);
  if (IsNull(u, std::numeric_limits<double>::min())) u = AnyOrthogonal(direction);
  model.u = Unit(Rejection(Unit(u), direction));
  model.v = Cross(model.w, model.u);
}

}  // namespace

CylinderModel CylinderAbout(const Vec3& pivot, const Vec3& direction, const Vec3& toAxis, double radius) {
  CylinderModel model;
  model.pivot = pivot;
  const Vec3 across = Rejection(toAxis, direction);
  TurnFrame(direction, -1.0 * across, model);
  model.height = std::sqrt(Dot(across, across));
  model.rise = radius - model.height;
  return model;
}

void CylinderLeastSquares::Place(const CylinderModel& model) {
  m_model = model;
  m_hasBest = false;
  m_damping = 0.0;
  m_deviationsAreCurrent = false;
}

CylinderLeastSquares::System CylinderLeastSquares::SumSystem() {
  BlockSums<kSums> total;
  const Vec3 offset = OffsetOf(m_model);
  m_deviations = {0.0, kInfinity, -kInfinity};
  m_points.ForEach([&](const PointBlock& block) {
    double sums[kSums];
    Deviations part;
    SumProducts(block, m_model, offset, sums, part);
    total.Add(sums);
    m_deviations.smallest = std::min(m_deviations.smallest, part.smallest);
    m_deviations.largest = std::max(m_deviations.largest, part.largest);
  });
  const double n = static_cast<double>(m_points.Size());
  System system;
  system.product[0][0] = n;
  int next = 0;
  for (int j = 1; j < kUnknowns; ++j) {
    system.product[j][0] = system.product[0][j] = total[next++];
    system.right[j] = total[next++];
    for (int k = 1; k <= j; ++k) system.product[j][k] = system.product[k][j] = total[next++];
  }
  system.right[0] = total[next++];
  m_deviations.sumSquares = system.sumSquares = total[next++];
  system.along = total[next++] / n;
  system.spread = total[next];
  m_deviationsAreCurrent = true;
  return system;
}

double CylinderLeastSquares::RoundingLevel() const {
  return kNoise * kNoise * m_system.spread;
}

bool CylinderLeastSquares::Solve(double (&step)[kUnknowns]) {
  m_determined = SolvePositive(m_system.product, m_system.right, step) > kClearPivot;
  return m_determined || SolveByRows(step);
}

// The damped step solves the equations with a heavier diagonal, which is positive definite.
void CylinderLeastSquares::Damp(double (&step)[kUnknowns]) const {
  double heavier[kUnknowns][kUnknowns];
  double shorter[kUnknowns];
  for (int i = 0; i < kUnknowns; ++i)
    for (int j = 0; j < kUnknowns; ++j) heavier[i][j] = m_system.product[i][j] * (i == j ? 1.0 + m_damping : 1.0);
  if (SolvePositive(heavier, m_system.right, shorter) > 0.0) std::copy_n(shorter, kUnknowns, step);
}

// On rough parts full steps may swing from one side of the minimum to the other; as long as they do, they stay damped.
void CylinderLeastSquares::AdaptDamping(double sumSquares) {
  const double gained = m_system.sumSquares - sumSquares;
  if (m_predicted <= kNoise * std::sqrt(m_system.sumSquares * m_system.spread)) return;  // rounding hides it
  if (gained < kPoorGain * m_predicted) m_damping = std::max(kFirstDamping, kMoreDamping * m_damping);
  if (gained > kGoodGain * m_predicted) m_damping = m_damping > kLeastDamping ? kLessDamping * m_damping : 0.0;
}

GaussNewtonStep CylinderLeastSquares::SolveStep() {
  System system = SumSystem();
  GaussNewtonStep step;
  // The root of a sum of squares is known to the rounding errors of its terms.
  const bool uphill = m_hasBest && !(std::sqrt(system.sumSquares) <=
                                     std::sqrt(m_system.sumSquares) + kNoise * std::sqrt(m_system.spread));
  if (uphill) {
    m_model = m_best;
    m_damping = std::max(kFirstDamping, kMoreDamping * m_damping);
    m_deviationsAreCurrent = false;
  } else {
    if (!std::isfinite(system.sumSquares)) return step;
    if (m_hasBest) AdaptDamping(system.sumSquares);
    m_best = m_model;
    m_system = system;
    m_hasBest = true;
  }
  step.solvable = Solve(m_step);
  // Convergence is judged by the full step: a damped one is short without having arrived.
  double gain = 0.0;
  for (int j = 0; j < kUnknowns; ++j) gain += m_step[j] * m_system.right[j];
  const double turned = (m_step[3] * m_step[3] + m_step[4] * m_step[4]) / static_cast<double>(m_points.Size());
  step.squaredLength = m_step[1] * m_step[1] + m_step[2] * m_step[2] + turned * m_system.spread;
  step.squaredLength /= m_points.Scale() * m_points.Scale();
  step.atRoundingLevel = gain <= RoundingLevel();
  if (m_damping > 0.0) Damp(m_step);
  m_predicted = 0.0;
  for (int i = 0; i < kUnknowns; ++i) {
    m_predicted += 2.0 * m_step[i] * m_system.right[i];
    for (int j = 0; j < kUnknowns; ++j) m_predicted -= m_step[i] * m_system.product[i][j] * m_step[j];
  }
  return step;
}

// The step of least length, in columns of unit length, by orthogonal reduction.
bool CylinderLeastSquares::SolveByRows(double (&step)[kUnknowns]) {
  TallReduction reduction(kUnknowns + 1);
  const Vec3 offset = OffsetOf(m_model);
  m_points.ForEach([&](const PointBlock& block) {
    for (std::size_t begin = 0; begin < block.size; begin += TallReduction::kBlockRows) {
      const std::size_t rows = std::min<std::size_t>(TallReduction::kBlockRows, block.size - begin);
      FillRows(block, begin, begin + rows, m_model, offset, reduction);
      reduction.AbsorbBlock(static_cast<int>(rows));
    }
  });
  reduction.Finish();
  double scaled[kUnknowns][kUnknowns] = {};
  double norm[kUnknowns];
  for (int j = 0; j < kUnknowns; ++j) {
    norm[j] = 0.0;
    for (int i = 0; i <= j; ++i) norm[j] = std::hypot(norm[j], reduction.R(i, j));
    for (int i = 0; i <= j && norm[j] > 0.0; ++i) scaled[j][i] = reduction.R(i, j) / norm[j];
  }
  const SmallSvd<kUnknowns> svd = SvdOfColumns(scaled);
  if (!std::isfinite(svd.value[0])) return false;
  m_determined = svd.value[kUnknowns - 1] > kUndetermined * svd.value[0];
  std::fill_n(step, kUnknowns, 0.0);
  for (int k = 0; k < kUnknowns; ++k) {
    if (!(svd.value[k] > kUnknowns * kEpsilon * svd.value[0])) break;
    double part = 0.0;
    for (int i = 0; i < kUnknowns; ++i) part += svd.work[k][i] * reduction.R(i, kUnknowns);
    for (int j = 0; j < kUnknowns; ++j)
      if (norm[j] > 0.0) step[j] += svd.axis[k][j] * (part / svd.value[k] / svd.value[k]) / norm[j];
  }
  return true;
}

void CylinderLeastSquares::TakeStep() {
  const auto [rise, shift, height, tiltU, tiltV] = m_step;
  const double lifted = m_model.height + height;
  const double radius = lifted + m_model.rise + rise;
  const Vec3 fromAxis = lifted * m_model.u - shift * m_model.v;
  TurnFrame(Unit(m_model.w + tiltU * m_model.u + tiltV * m_model.v), fromAxis, m_model);
  m_model.height = std::sqrt(lifted * lifted + shift * shift);
  // radius - height, without the rounding of a radius that is far larger than the extent of the points.
  m_model.rise =
      lifted > 0.0 ? m_model.rise + rise - shift * shift / (m_model.height + lifted) : radius - m_model.height;
  m_deviationsAreCurrent = false;
}

bool CylinderLeastSquares::Descend(int mostSteps) {
  double previous = kInfinity;
  for (int k = 0; k < mostSteps; ++k) {
    const GaussNewtonStep step = SolveStep();
    if (!step.solvable || !std::isfinite(step.squaredLength) || step.atRoundingLevel) return true;
    const double gain = m_predicted;
    const bool fast = m_damping == 0.0 && gain <= kFast * previous;
    const bool enough = gain <= (fast ? kWorthAPass : kWorthASlowPass) * m_system.sumSquares;
    previous = gain;
    TakeStep();
    if (enough) return true;
  }
  return false;
}

Deviations CylinderLeastSquares::DeviationsNow() {
  const double scale = m_points.Scale();
  if (!m_deviationsAreCurrent) {
    CompensatedSum sum;
    const Vec3 offset = OffsetOf(m_model);
    m_deviations = {0.0, kInfinity, -kInfinity};
    m_points.ForEach([&](const PointBlock& block) {
      Deviations part;
      FindDeviations(block, m_model, offset, part);
      sum.Add(part.sumSquares);
      m_deviations.smallest = std::min(m_deviations.smallest, part.smallest);
      m_deviations.largest = std::max(m_deviations.largest, part.largest);
    });
    m_deviations.sumSquares = sum.Value();
    m_deviationsAreCurrent = true;
  }
  return {m_deviations.sumSquares / scale / scale, m_deviations.smallest / scale, m_deviations.largest / scale};
}

}  // namespace nu::internal
