#include "nu/engine/least_squares/round_least_squares.h"

#include <limits>

#include "nu/engine/least_squares/surface_kernels.h"
#include "nu/engine/points/point_sample.h"
#include "nu/engine/shapes/axis_frame.h"

// Start. The centre c and q = r^2 - |c|^2 that minimise the sum of (|p|^2 - 2 c . p - q)^2 (I. Kasa, IEEE Trans.
// Instrum. Meas. 25, 1976). With the points p relative to their mean M the system falls apart:
//
//   2 (sum of p p^T) c = sum of |p|^2 p,    r^2 = |c|^2 + mean of |p|^2.
//
// The best circle or sphere of a large set is no farther from that of a sample than the noise of the sample's, and one
// Gauss-Newton step from there leaves less than the algebraic fit of all points does, in as many passes. On rough parts
// one step gains too little.
//
// The sums of the algebraic fit come from one pass. For a flat cap or a short arc they are summed again along the
// principal axes of the points, where each entry is accurate relative to its own row and column.
//
// Refinement. Gauss-Newton on e = |p - c| - r (W. Gander, G. H. Golub, R. Strebel, BIT 34, 1994). A short arc says
// little about c and r but much about its apex and curvature, so the unknowns are the height H of M above the centre
// along axis 0, the rise k of the apex above M, and the shift s of the centre across. For a point with the coordinate
// a along axis 0 and t across, relative to M and to the shifted centre,
//
//   h = H + a,   d = sqrt(h^2 + |t|^2),   r = H + k,   l = d - h = |t|^2 / (d + h),
//   e = l + (a - k),   de/dk = -1,   de/ds = -t / d,   de/dH = -l / d.
//
// All terms are of the size of the arc, not of the radius, so nothing cancels, however short the arc is; and the
// columns are about as independent as 1, x and x^2. The map to (c, r) is linear, so the steps are those of the usual
// parameters. The normal equations drive the steps; their right-hand side is the gradient itself, so they do not limit
// the accuracy of the result, only the speed of convergence. Where even these columns are nearly dependent (points in a
// few clusters) the rows are reduced by orthogonal steps instead.
//
// Newton. On rough parts the second derivatives of e matter, without which the steps creep or swing:
//
//   d2e/ds_j ds_k = (delta_jk - p_j p_k) / d,   d2e/ds_j dH = p_j h / d^2,   d2e/dH^2 = |p|^2 / d,   p = t / d.
//
// Damped steps with these end every fit whose plain ones grow or do not shrink fast.

namespace nu::engine::least_squares {
namespace {

// Smallest pivot, as a part of its diagonal entry, of a system that is taken for well-conditioned: half of the digits
// are left.
constexpr double kClearPivot = 1e-8;

// A step that moves the deviations by no more than this many roundings of the coordinates is noise.
constexpr double kNoise = 16.0 * kEpsilon;

// So many plain steps are made. Where the last one is not shorter than this part of the one before, in squares, the
// points are rough, and further ones would creep.
constexpr long kPlainSteps = 12;
constexpr double kSlow = 1e-2;
// Where it is longer than this part and no longer than the one before, they have shown where they lead.
constexpr double kCreeping = 0.5;
// Damped Newton steps that have not arrived after so many lead nowhere.
constexpr long kMostNewtonSteps = 1000;
// A step leaves at least this part of the curvature of a cap.
constexpr double kLeastCurvature = 1e-3;

// So many points and more start from the fit of a sample, of this part of them.
constexpr std::size_t kSampledFrom = std::size_t{1} << 15;
constexpr std::size_t kSampledPart = 32;
constexpr std::size_t kMostSample = 8192;
// A sample whose mean squared deviation is less than that of all points by this factor has missed some.
constexpr double kUnlike = 4.0;
// One step leads from the fit of a sample nearer to that of all points where it is shorter than this part of the
// extent.
constexpr double kNear = 1e-2;

// Sums outside have overflowed or vanished, or are about to in a product.
constexpr double kSafeSmall = 1e-80;
constexpr double kSafeLarge = 1e80;

// Of D coordinates: their sums, their products, their products with the squared distance.
template<int D>
inline constexpr int kPowers = D + TriangleSize(D) + D;

template<int D>
inline constexpr int kCurvatures = 1 + (D - 1) + TriangleSize(D - 1) + 1;

template<int D>
NU_ALWAYS_INLINE void LoadCoordinates(const PointBlock& block, std::size_t i, const RoundModel<D>& model,
                                      const double (&offset)[D], Lanes (&u)[D]) {
  Lanes x, y, z;
  LoadPoints(block, i, x, y, z);
  for (int j = 0; j < D; ++j) u[j] = model.axis[j].x * x + model.axis[j].y * y + model.axis[j].z * z - offset[j];
}

template<int D>
NU_ALWAYS_INLINE void PowersBody(const PointBlock& block, const RoundModel<D>& given, double (&sums)[kPowers<D>]) {
  const RoundModel<D> model = given;
  Lanes sum[D] = {};
  Lanes product[TriangleSize(D)] = {};
  Lanes cubic[D] = {};
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    Lanes u[D];
    Lanes weight;
    LoadCoordinates(block, i, model, model.mean, u);
    Load(block.Weights(i), weight);
    Lanes square = {};
    for (int j = 0; j < D; ++j) {
      u[j] *= weight;
      square += u[j] * u[j];
    }
    for (int j = 0; j < D; ++j) {
      sum[j] += u[j];
      cubic[j] += square * u[j];
      for (int k = 0; k <= j; ++k) product[TriangleSize(j) + k] += u[j] * u[k];
    }
  }
  double* out = sums;
  for (int j = 0; j < D; ++j) *out++ = Sum(sum[j]);
  for (int j = 0; j < TriangleSize(D); ++j) *out++ = Sum(product[j]);
  for (int j = 0; j < D; ++j) *out++ = Sum(cubic[j]);
}

// A circle or sphere for the kernels. The unknowns are the rise, the shifts, the height.
template<int D>
struct RoundLanes {
  static constexpr int kUnknowns = D + 1;
  static constexpr int kExtras = 0;

  explicit RoundLanes(const RoundModel<D>& m) : model(m) {
    for (int j = 0; j < D; ++j) offset[j] = j == 0 ? m.mean[0] : m.mean[j] + m.shift[j];
  }

  NU_ALWAYS_INLINE void Locate(const PointBlock& block, std::size_t i, Lanes (&u)[D], Lanes& square) const {
    LoadCoordinates(block, i, model, offset, u);
    square = u[1] * u[1];
    for (int j = 2; j < D; ++j) square += u[j] * u[j];
  }

  NU_ALWAYS_INLINE void Deviate(const PointBlock& block, std::size_t i, Lanes& e) const {
    Lanes u[D], square, lift;
    Locate(block, i, u, square);
    FindLift(u[0] + model.height, square, lift);
    e = lift + (u[0] - model.rise);
  }

  NU_ALWAYS_INLINE void Deviate(const PointBlock& block, std::size_t i, Lanes& e, Lanes (&column)[kUnknowns]) const {
    Lanes u[D], square, lift, inverseDistance;
    Locate(block, i, u, square);
    FindLift(u[0] + model.height, square, lift, inverseDistance);
    e = lift + (u[0] - model.rise);
    column[0] = 1.0 - Lanes{};
    for (int j = 1; j < D; ++j) column[j] = u[j] * inverseDistance;
    column[D] = lift * inverseDistance;
  }

  RoundModel<D> model;
  double offset[D];
};

template<int D>
NU_ALWAYS_INLINE void SumDeviationsBody(const PointBlock& block, const RoundLanes<D>& given, double (&sums)[1]) {
  const RoundLanes<D> surface = given;
  Lanes sum = {};
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    Lanes e, weight;
    surface.Deviate(block, i, e);
    Load(block.Weights(i), weight);
    sum += weight * e;
  }
  sums[0] = Sum(sum);
}

// With w = e / d and p = t / d: the sums of w; per shift of p h / d w, then of the products of the p with w; last of
// the squared distances from M.
template<int D>
NU_ALWAYS_INLINE void CurvaturesBody(const PointBlock& block, const RoundLanes<D>& given,
                                     double (&sums)[kCurvatures<D>]) {
  const RoundLanes<D> surface = given;
  const RoundModel<D>& model = surface.model;
  Lanes sum[kCurvatures<D>] = {};
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    Lanes u[D], e, weight;
    Lanes column[D + 1];
    surface.Deviate(block, i, e, column);
    LoadCoordinates(block, i, model, model.mean, u);
    Load(block.Weights(i), weight);
    Lanes square = u[0] * u[0];
    for (int j = 1; j < D; ++j) square += u[j] * u[j];
    const Lanes d = e + (model.height + model.rise);
    const Lanes quotient = e / d;
    const Lanes w = weight * (d > 0.0 ? quotient : Lanes{});
    int next = 0;
    sum[next++] += w;
    for (int j = 1; j < D; ++j) {
      const Lanes product = w * column[j];
      sum[next++] += product * (1.0 - column[D]);
      for (int k = 1; k <= j; ++k) sum[next++] += product * column[k];
    }
    sum[next] += weight * square;
  }
  for (int k = 0; k < kCurvatures<D>; ++k) sums[k] = Sum(sum[k]);
}

NU_KERNEL void SumPowers(const PointBlock& b, const RoundModel<2>& m, double (&s)[kPowers<2>]) {
  PowersBody(b, m, s);
}
NU_KERNEL void SumPowers(const PointBlock& b, const RoundModel<3>& m, double (&s)[kPowers<3>]) {
  PowersBody(b, m, s);
}
NU_KERNEL void SumProducts(const PointBlock& b, const RoundLanes<2>& m, double (&s)[kSums<RoundLanes<2>>],
                           Deviations& e) {
  ProductsBody(b, m, s, e);
}
NU_KERNEL void SumProducts(const PointBlock& b, const RoundLanes<3>& m, double (&s)[kSums<RoundLanes<3>>],
                           Deviations& e) {
  ProductsBody(b, m, s, e);
}
NU_KERNEL void SumCurvatures(const PointBlock& b, const RoundLanes<2>& m, double (&s)[kCurvatures<2>]) {
  CurvaturesBody(b, m, s);
}
NU_KERNEL void SumCurvatures(const PointBlock& b, const RoundLanes<3>& m, double (&s)[kCurvatures<3>]) {
  CurvaturesBody(b, m, s);
}
NU_KERNEL void SumDeviations(const PointBlock& b, const RoundLanes<2>& m, double (&s)[1]) {
  SumDeviationsBody(b, m, s);
}
NU_KERNEL void SumDeviations(const PointBlock& b, const RoundLanes<3>& m, double (&s)[1]) {
  SumDeviationsBody(b, m, s);
}
NU_KERNEL void FindDeviations(const PointBlock& b, const RoundLanes<2>& m, Deviations& e) {
  DeviationsBody(b, m, e);
}
NU_KERNEL void FindDeviations(const PointBlock& b, const RoundLanes<3>& m, Deviations& e) {
  DeviationsBody(b, m, e);
}
// What SumPowers gave, moved from the given mean to the true one.
template<int D>
struct CentralPowers {
  double mean[D];  // relative to the given one
  double product[D][D];
  double cubic[D];
  double rawTrace = 0.0;
  double trace = 0.0;
};

template<int D>
CentralPowers<D> PowersAbout(PointBlocks& points, const RoundModel<D>& model) {
  const BlockSums<kPowers<D>> total = SumOver<kPowers<D>>(
      points, [&](const PointBlock& block, double(&sums)[kPowers<D>]) { SumPowers(block, model, sums); });
  const double n = static_cast<double>(points.Size());
  CentralPowers<D> found;
  double meanSquare = 0.0;
  for (int j = 0; j < D; ++j) {
    found.mean[j] = total[j] / n;
    meanSquare += found.mean[j] * found.mean[j];
    found.rawTrace += total[D + TriangleSize(j) + j];
  }
  found.trace = found.rawTrace - n * meanSquare;
  for (int j = 0; j < D; ++j) {
    found.cubic[j] = total[D + TriangleSize(D) + j] + (2.0 * n * meanSquare - found.rawTrace) * found.mean[j];
    for (int k = 0; k < D; ++k) {
      const double raw = total[D + (k <= j ? TriangleSize(j) + k : TriangleSize(k) + j)];
      found.cubic[j] -= 2.0 * raw * found.mean[k];
      found.product[j][k] = raw - n * found.mean[j] * found.mean[k];
    }
  }
  return found;
}

template<int D>
StepSystem<D + 1> SumSystem(PointBlocks& points, const RoundModel<D>& model) {
  BlockSums<kSums<RoundLanes<D>>> total;
  const auto kernel = [](const PointBlock& block, const RoundLanes<D>& surface, double(&sums)[kSums<RoundLanes<D>>],
                         Deviations& part) { SumProducts(block, surface, sums, part); };
  return SystemOf(points, RoundLanes<D>(model), kernel, total);
}

// The points lie to one side of the centre.
template<int D>
bool IsCap(const StepSystem<D + 1>& system, const RoundModel<D>& model) {
  return model.height > std::sqrt(system.MeanSquare());
}

// Turns an orthonormal set onto the combinations given by the rows of `mix`.
template<int D>
void Combine(const double (&mix)[D][D], const Vec3 (&axes)[D], Vec3 (&turned)[D]) {
  for (int j = 0; j < D; ++j) {
    turned[j] = {};
    for (int k = 0; k < D; ++k) turned[j] = turned[j] + mix[j][k] * axes[k];
  }
}

// For the damped steps that end what Gauss-Newton steps leave.
template<int D>
struct RoundProblem {
  using Model = RoundModel<D>;
  static constexpr int kUnknowns = D + 1;  // rise, shifts, height
  static constexpr bool kHasSecond = true;
  static constexpr bool kHasRows = true;
  static constexpr double kFirstDamping = 1e-6;
  using System = StepSystem<kUnknowns>;

  // The axis points from the centre to M: no shift is left.
  static void Complete(Model& model) {
    double centre[D] = {-model.height};
    double square = 0.0;
    for (int j = 1; j < D; ++j) {
      centre[j] = model.shift[j];
      square += centre[j] * centre[j];
    }
    const double height = model.height;
    model.PlaceCentre(centre);
    // The radius less the height, without the rounding of a radius that is far larger than the extent of the points.
    if (square > 0.0) model.rise -= square / (model.height + height);
  }

  static System Sum(PointBlocks& points, const Model& model) {
    System system = SumSystem<D>(points, model);
    const RoundLanes<D> surface(model);
    const BlockSums<kCurvatures<D>> total = SumOver<kCurvatures<D>>(
        points, [&](const PointBlock& block, double(&sums)[kCurvatures<D>]) { SumCurvatures(block, surface, sums); });
    int next = 1;
    for (int j = 1; j < D; ++j) {
      system.second[j][D] = system.second[D][j] = total[next++];
      for (int k = 1; k <= j; ++k) {
        const double product = total[next++];
        system.second[j][k] = system.second[k][j] = (j == k ? total[0] : 0.0) - product;
        if (j == k) system.second[D][D] += product;
      }
    }
    system.spread = total[next];
    if (IsCap(system, model)) {
      // To second order Move changes the height by y + y^2 / H, and a shift by s + s y / H.
      for (int j = 1; j < D; ++j) {
        system.second[j][D] -= system.right[j] / model.height;
        system.second[D][j] = system.second[j][D];
      }
      system.second[D][D] -= 2.0 * system.right[D] / model.height;
    }
    return system;
  }

  static TallReduction Reduce(PointBlocks& points, const Model& model) {
    return ReduceSurface(points, RoundLanes<D>(model));
  }

  static Deviations DeviationsFrom(PointBlocks& points, const Model& model) {
    const RoundLanes<D> surface(model);
    return OverBlocks(points, [&](const PointBlock& block, Deviations& part) { FindDeviations(block, surface, part); });
  }

  // That of the step of the centre; for a circle the radius counts too.
  static double SquaredLength(const Model&, const System&, const double (&step)[kUnknowns]) {
    double square = D == 2 ? (step[0] + step[D]) * (step[0] + step[D]) : 0.0;
    for (int j = 1; j < kUnknowns; ++j) square += step[j] * step[j];
    return square;
  }

  // A cap knows its rise, tilt and curvature: these are what changes, and the centre may pass through infinity to its
  // other side. Of points all around, the centre moves and the radius changes.
  static void Move(PointBlocks& points, const System& system, const double (&step)[kUnknowns], Model& model) {
    MoveCentre(system, step, model);
    // The radius that suits the centre is the mean distance: the steps need not follow the curved valley that both
    // make.
    const RoundLanes<D> surface(model);
    BlockSums<1> deviation;
    points.ForEach([&](const PointBlock& block) {
      double sums[1];
      SumDeviations(block, surface, sums);
      deviation.Add(sums);
    });
    model.rise += deviation[0] / system.count;
  }

 private:
  static void MoveCentre(const System& system, const double (&step)[kUnknowns], Model& model) {
    model.rise += step[0];
    if (!IsCap(system, model)) {
      const double radius = model.height + step[D] + model.rise;
      double centre[D] = {-(model.height + step[D])};
      for (int j = 1; j < D; ++j) centre[j] = step[j];
      model.PlaceCentre(centre);
      model.rise = radius - model.height;
      return;
    }
    const double part = 1.0 - step[D] / model.height;
    const double grown = 1.0 / std::max(std::fabs(part), kLeastCurvature);
    model.height *= grown;
    for (int j = 1; j < D; ++j) model.shift[j] = step[j] * grown;
    if (part < 0.0) {
      // The other side is seen from behind.
      model.rise = -model.rise;
      model.axis[0] = -1.0 * model.axis[0];
      model.mean[0] = -model.mean[0];
      for (int j = 1; j < D; ++j) model.shift[j] = -model.shift[j];
    }
    Complete(model);
  }
};

}  // namespace

template<int D>
void RoundModel<D>::PlaceCentre(const double (&centre)[D]) {
  double square = 0.0;
  for (const double c : centre) square += c * c;
  height = std::sqrt(square);
  std::fill_n(shift, D, 0.0);
  if (!(height > 0.0)) return;
  double mix[D][D] = {};
  for (int j = 0; j < D; ++j) mix[0][j] = -centre[j] / height;
  mix[1][0] = -mix[0][1];
  mix[1][1] = mix[0][0];
  Vec3 turned[D];
  Combine(mix, axis, turned);
  turned[0] = Unit(turned[0]);
  if constexpr (D == 3) {
    turned[1] = AnyOrthogonal(turned[0]);
    turned[2] = Cross(turned[0], turned[1]);
  }
  TurnAxes(turned);
}

template<int D>
RoundLeastSquares<D>::RoundLeastSquares(PointBlocks& points, const Vec3 (&axes)[D]) : m_points(points) {
  std::copy_n(axes, D, m_model.axis);
  m_points.NoteRanges();
}

template<int D>
bool RoundLeastSquares<D>::Start(PointView points) {
  if (points.Size() >= kSampledFrom) {
    const RoundModel<D> given = m_model;
    const bool started = StartFromSample(points);
    m_squaredLength = kInfinity;
    m_isSampled = started;
    if (started) return true;
    m_model = given;
    m_squaredLengthBefore = 0.0;
  }
  return StartFromAll();
}

template<int D>
bool RoundLeastSquares<D>::StartFromSample(PointView points) {
  const PointSample sample(points, std::min(points.Size() / kSampledPart, kMostSample));
  PointBlocks few(sample.View(), m_points.Origin());
  RoundLeastSquares fit(few, m_model.axis);
  double sumSquares;
  if (few.Scale() != m_points.Scale() || !fit.FitSample(sumSquares)) return false;
  const double part = static_cast<double>(few.Size()) / static_cast<double>(points.Size());
  m_model = fit.m_model;
  m_spread = fit.m_spread / part;
  const double rounding = kNoise * kNoise * m_spread;
  const GaussNewtonStep step = SolveStep();
  const double farthest = kNear * kNear * m_spread / static_cast<double>(points.Size());
  const bool isNear = step.solvable && m_squaredLength <= farthest;
  if (!isNear || !(m_deviations.sumSquares <= kUnlike * (sumSquares / part + rounding))) return false;
  // Exact points keep an exact start.
  if (!step.atRoundingLevel) TakeStep();
  return true;
}

template<int D>
bool RoundLeastSquares<D>::FitSample(double& sumSquares) {
  if (!StartFromAll() || m_points.Scale() != 1.0) return false;
  const GaussNewtonRule rule{.tolerance = kEpsilon * m_spread / static_cast<double>(m_points.Size()),
                             .large = std::numeric_limits<double>::max(),
                             .limit = kPlainSteps,
                             .takesLastStep = true,
                             .endsAtGrowth = false,
                             .endsBeforeLimit = false};
  const bool converged = RunGaussNewton(*this, rule) == GaussNewtonEnd::converged;
  sumSquares = m_deviations.sumSquares;
  return converged && !(m_slowness > kSlow);
}

template<int D>
bool RoundLeastSquares<D>::StartFromAll() {
  m_points.Keep();
  constexpr int kMaxPasses = 4;  // one, or two along the principal axes; a change of the scale repeats the first
  double centre[D] = {};
  CentralPowers<D> powers;
  double pivot = 0.0;
  for (int pass = 0; pass < kMaxPasses && !(pivot > kClearPivot); ++pass) {
    if (pass > 0 && pivot >= 0.0) {
      Vec3 turned[D];
      Combine(SvdOfColumns(powers.product).axis, m_model.axis, turned);
      m_model.TurnAxes(turned);
    }
    powers = PowersAbout(m_points, m_model);
    if (!(powers.rawTrace >= kSafeSmall && powers.rawTrace <= kSafeLarge)) {
      if (pass > 0 || !m_points.FitScale()) return false;
      pivot = -1.0;
      continue;
    }
    for (int j = 0; j < D; ++j) m_model.mean[j] += powers.mean[j];
    pivot = SolvePositive(powers.product, powers.cubic, centre);
  }
  if (!(pivot > 0.0)) return false;
  for (double& c : centre) c *= 0.5;
  m_spread = powers.trace;
  PlaceCentre(centre, powers.trace / static_cast<double>(m_points.Size()));
  return std::isfinite(m_model.height) && std::isfinite(m_model.rise);
}

// Puts the centre at these coordinates from M and the radius to sqrt(|centre|^2 + meanSquare).
template<int D>
void RoundLeastSquares<D>::PlaceCentre(const double (&centre)[D], double meanSquare) {
  m_model.PlaceCentre(centre);
  const double height = m_model.height;
  m_model.rise = meanSquare / (std::sqrt(height * height + meanSquare) + height);
  m_deviationsAreCurrent = false;
}

template<int D>
Vec3 RoundLeastSquares<D>::Centre() const {
  Vec3 centre;
  for (int j = 0; j < D; ++j) {
    const double coordinate = j == 0 ? m_model.mean[0] - m_model.height : m_model.mean[j] + m_model.shift[j];
    centre = centre + (coordinate / m_points.Scale()) * m_model.axis[j];
  }
  return centre;
}

template<int D>
void RoundLeastSquares<D>::MoveCentre(const Vec3& centre) {
  const double radius = m_model.height + m_model.rise;
  double coordinates[D];
  for (int j = 0; j < D; ++j) coordinates[j] = m_points.Scale() * Dot(centre, m_model.axis[j]) - m_model.mean[j];
  PlaceCentre(coordinates, 0.0);
  m_lastStep = {};
  m_model.rise = radius - m_model.height;
}

template<int D>
GaussNewtonStep RoundLeastSquares<D>::SolveStep() {
  System system = SumSystem<D>(m_points, m_model);
  system.spread = m_spread;
  m_deviations = system.deviations;
  m_deviationsAreCurrent = true;
  GaussNewtonStep step;
  if (!std::isfinite(m_deviations.sumSquares)) return step;
  step.solvable = SolvePositive(system.product, system.right, m_step) > kClearPivot ||
                  SolveReduced(RoundProblem<D>::Reduce(m_points, m_model), m_step).finite;
  double gain = 0.0;
  for (int j = 0; j < kUnknowns; ++j) gain += m_step[j] * system.right[j];
  const double squaredLength = RoundProblem<D>::SquaredLength(m_model, system, m_step);
  m_slowness = squaredLength / m_squaredLength;
  const double rate = std::sqrt(squaredLength / m_squaredLengthBefore);
  m_lastStep = LastStep(m_points.RangedWalk(), system, m_step, gain, rate);
  m_squaredLengthBefore = m_squaredLength = squaredLength;
  step.squaredLength = squaredLength / (m_points.Scale() * m_points.Scale());
  step.sumSquares = m_deviations.sumSquares / (m_points.Scale() * m_points.Scale());
  m_atRoundingLevel = step.atRoundingLevel = gain <= kNoise * kNoise * m_spread;
  return step;
}

template<int D>
GaussNewtonEnd RoundLeastSquares<D>::Run(const GaussNewtonRule& rule) {
  GaussNewtonRule plain = rule;
  plain.limit = std::min(rule.limit, kPlainSteps);
  long used;
  GaussNewtonEnd end = RunGaussNewton(*this, plain, used);
  // A step that the rule drops costs nothing, and a sample's start leaves more to it than that of all points.
  if (m_isSampled && end == GaussNewtonEnd::converged && m_deviationsAreCurrent && !m_atRoundingLevel) TakeStep();
  const bool falls = end == GaussNewtonEnd::converged && !(m_slowness > kSlow);
  const bool isOver = falls || end == GaussNewtonEnd::unsolvable || end == GaussNewtonEnd::cancelled;
  if (!isOver) end = Settle(rule, used);
  return end == GaussNewtonEnd::converged && !IsRound() ? GaussNewtonEnd::unsolvable : end;
}

// Newton's steps, once they lead down, are few.
template<int D>
GaussNewtonEnd RoundLeastSquares<D>::Settle(GaussNewtonRule rule, long used) {
  rule.limit = std::min(rule.limit - used, kMostNewtonSteps);
  rule.takesLastStep = true;
  rule.endsAtGrowth = false;
  if (rule.limit < 1) return GaussNewtonEnd::limitReached;
  m_points.Keep();
  DampedGaussNewton<RoundProblem<D>> damped(m_points);
  const bool creeps = m_slowness > kCreeping && m_slowness <= 1.0;
  damped.Place(m_model, creeps ? static_cast<int>(used) : 0);
  const GaussNewtonEnd end = RunGaussNewton(damped, rule);
  m_model = damped.Model();
  m_lastStep = {};
  m_deviationsAreCurrent = false;
  return end;
}

// Whether the points bulge by more than rounding errors of their coordinates, and as the model does: where a line or a
// plane fits best, every further step takes most of the curvature that is left, though it changes no deviation.
template<int D>
bool RoundLeastSquares<D>::IsRound() const {
  constexpr double kFlat = 1e-8;
  constexpr double kMost = 0.5;
  Vec3 mean;
  for (int j = 0; j < D; ++j) mean = mean + m_model.mean[j] * m_model.axis[j];
  const double meanSquare = m_spread / static_cast<double>(m_points.Size());
  const double rounding = RoundingAt(m_points, mean, meanSquare);
  if (!(meanSquare > rounding * m_model.height)) return false;
  if (meanSquare > kFlat * m_model.height * m_model.height) return true;
  RoundModel<D> model = m_model;
  RoundProblem<D>::Complete(model);
  System system = RoundProblem<D>::Sum(m_points, model);
  if (!StandsOut(system, D, model.height, rounding)) return false;
  for (int i = 0; i < kUnknowns; ++i)
    for (int j = 0; j < kUnknowns; ++j) system.product[i][j] += system.second[i][j];
  double step[kUnknowns];
  return !(SolvePositive(system.product, system.right, step) > 0.0) || std::fabs(step[D]) < kMost * model.height;
}

template<int D>
void RoundLeastSquares<D>::TakeStep() {
  m_model.rise += m_step[0];
  for (int j = 1; j < D; ++j) m_model.shift[j] += m_step[j];
  m_model.height += m_step[D];
  m_deviationsAreCurrent = false;
}

template<int D>
Deviations RoundLeastSquares<D>::DeviationsNow() {
  if (!m_deviationsAreCurrent) {
    const auto find = [this] { return RoundProblem<D>::DeviationsFrom(m_points, m_model); };
    m_deviations = m_lastStep.FindDeviations(m_points, find);
    m_deviationsAreCurrent = true;
  }
  return InUnit(m_deviations, m_points.Scale());
}

template class RoundLeastSquares<2>;
template class RoundLeastSquares<3>;

}  // namespace nu::engine::least_squares
