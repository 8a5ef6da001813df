#include "nu/curves/internal/conic_least_squares.h"

#include <limits>

#include "nu/curves/internal/conic_kernels.h"
#include "nu/curves/internal/conic_start.h"
#include "nu/geometry/internal/small_cholesky.h"
#include "nu/geometry/internal/small_systems.h"

// Gauss-Newton on the orthogonal distances (S. J. Ahn, W. Rauh, H.-J. Warnecke, Pattern Recognition 34, 2001) from the
// best of some algebraic fits. The unknowns are the change of the origin along the axes of the conic, of its lengths
// and of its direction. Those of an ellipse are the change of the symmetric matrix that maps the unit circle to it,
//
//   a' = a + s2, b' = b + s3, off the diagonal s4,
//
// whose eigenvalues and eigenvectors are the new semi-axes and axes: unlike an angle, the last one keeps its meaning
// for a circle. The normal equations drive the steps; their right-hand side is the gradient itself, so they limit the
// speed of convergence only. Where their columns are nearly dependent, the rows are reduced by orthogonal steps.
//
// A step after which the sum of squares is larger is taken back and repeated with more of the diagonal added
// (D. W. Marquardt, J. SIAM 11, 1963), until the sum falls.

namespace nu::internal {
namespace {

constexpr double kEpsilon = std::numeric_limits<double>::epsilon();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Smallest pivot, as a part of its diagonal entry, of a system that is taken for well-conditioned: half of the digits
// are left.
constexpr double kClearPivot = 1e-8;

// A deviation is known to so many roundings of the coordinates.
constexpr double kNoise = 16.0 * kEpsilon;

// An ellipse or a hyperbola whose centre moves away by more than this part of the squared distance at the start is on
// its way to a parabola, from which rounding no longer tells it.
constexpr double kFarthest = 0x1p52;

constexpr double kFirstDamping = 1e-3;
constexpr double kDampingFactor = 10.0;
constexpr double kNoDamping = 1e-9;
constexpr int kMostTrials = 40;

constexpr int TriangleSize(int n) {
  return n * (n + 1) / 2;
}

// The products of the columns, those with the deviation, the squared distance from the origin.
template<int K>
inline constexpr int kSums = TriangleSize(K) + K + 1;

template<class Curve, int K>
NU_ALWAYS_INLINE void ProductsBody(const PointBlock& block, const ConicView<Curve>& given, double (&sums)[kSums<K>],
                                   Deviations& found) {
  const ConicView<Curve> view = given;
  Lanes product[TriangleSize(K)] = {};
  Lanes right[K] = {};
  Lanes reach = {};
  Lanes square = {};
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    Lanes x, y, e, weight;
    Lanes column[K];
    DeviateAt<true>(block, i, view, x, y, e, column);
    Load(block.Weights(i), weight);
    e *= weight;
    square += e * e;
    reach += weight * (x * x + y * y);
    for (int j = 0; j < K; ++j) {
      right[j] += column[j] * e;
      column[j] *= weight;
      for (int k = 0; k <= j; ++k) product[TriangleSize(j) + k] += column[j] * column[k];
    }
  }
  double* out = sums;
  for (int j = 0; j < TriangleSize(K); ++j) *out++ = Sum(product[j]);
  for (int j = 0; j < K; ++j) *out++ = Sum(right[j]);
  *out = Sum(reach);
  found.sumSquares = Sum(square);
}

template<class Curve, int K>
NU_ALWAYS_INLINE void DeviationsBody(const PointBlock& block, const ConicView<Curve>& given, Deviations& found) {
  const ConicView<Curve> view = given;
  Lanes square = {};
  Lanes smallest = kInfinity - Lanes{};
  Lanes largest = -smallest;
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    Lanes x, y, e, weight;
    Lanes column[K];
    DeviateAt<false>(block, i, view, x, y, e, column);
    smallest = e < smallest ? e : smallest;
    largest = e > largest ? e : largest;
    Load(block.Weights(i), weight);
    e *= weight;
    square += e * e;
  }
  found = {Sum(square), Smallest(smallest), Largest(largest)};
}

NU_KERNEL void SumProducts(const PointBlock& b, const ConicView<Ellipse2>& v, double (&s)[kSums<5>], Deviations& d) {
  ProductsBody<Ellipse2, 5>(b, v, s, d);
}
NU_KERNEL void SumProducts(const PointBlock& b, const ConicView<Hyperbola2>& v, double (&s)[kSums<5>], Deviations& d) {
  ProductsBody<Hyperbola2, 5>(b, v, s, d);
}
NU_KERNEL void SumProducts(const PointBlock& b, const ConicView<Parabola2>& v, double (&s)[kSums<4>], Deviations& d) {
  ProductsBody<Parabola2, 4>(b, v, s, d);
}
NU_KERNEL void FindDeviations(const PointBlock& b, const ConicView<Ellipse2>& v, Deviations& d) {
  DeviationsBody<Ellipse2, 5>(b, v, d);
}
NU_KERNEL void FindDeviations(const PointBlock& b, const ConicView<Hyperbola2>& v, Deviations& d) {
  DeviationsBody<Hyperbola2, 5>(b, v, d);
}
NU_KERNEL void FindDeviations(const PointBlock& b, const ConicView<Parabola2>& v, Deviations& d) {
  DeviationsBody<Parabola2, 4>(b, v, d);
}

Vec3 InSpace(const PlaneAxes& axes, Vec2 p) {
  return p.x * axes.u + p.y * axes.v;
}

double Lever(const Ellipse2& curve) {
  return curve.a;
}
double Lever(const Hyperbola2& curve) {
  return std::sqrt(curve.a * curve.a + curve.b * curve.b);
}
double Lever(const Parabola2& curve) {
  return curve.f;
}

template<class Curve>
ConicView<Curve> ViewIn(const PlaneAxes& axes, const PlacedConic<Curve>& conic) {
  const Vec2 across = Perpendicular(conic.axis);
  return {conic.curve,
          InSpace(axes, conic.axis),
          InSpace(axes, across),
          Dot(conic.origin, conic.axis),
          Dot(conic.origin, across),
          Lever(conic.curve)};
}

bool IsUsable(const Ellipse2& curve) {
  return curve.b > 0.0 && std::isfinite(curve.a);
}
bool IsUsable(const Hyperbola2& curve) {
  return curve.a > 0.0 && curve.b > 0.0 && std::isfinite(curve.a) && std::isfinite(curve.b);
}
bool IsUsable(const Parabola2& curve) {
  return curve.f > 0.0 && std::isfinite(curve.f);
}

template<class Curve, int K>
Vec2 Shifted(const PlacedConic<Curve>& conic, const double (&step)[K]) {
  return conic.origin + step[0] * conic.axis + step[1] * Perpendicular(conic.axis);
}

// The direction with these coordinates in the frame of the conic.
template<class Curve>
Vec2 Turned(const PlacedConic<Curve>& conic, double along, double across) {
  const Vec2 turned = along * conic.axis + across * Perpendicular(conic.axis);
  return (1.0 / std::sqrt(Dot(turned, turned))) * turned;
}

PlacedConic<Ellipse2> Moved(const PlacedConic<Ellipse2>& conic, const double (&step)[5]) {
  const double first = conic.curve.a + step[2];
  const double second = conic.curve.b + step[3];
  const double across = step[4];
  const double half = 0.5 * (first - second);
  const double root = std::sqrt(half * half + across * across);
  const double a = 0.5 * (first + second) + root;
  const double b = (first * second - across * across) / a;
  // The eigenvector of a is (half + root, across), or (across, root - half).
  const bool leans = half < 0.0;
  const double along = leans ? std::fabs(across) : root + half;
  const double beside = leans ? std::copysign(root - half, across) : across;
  return {{a, b}, Shifted(conic, step), root > 0.0 ? Turned(conic, along, beside) : conic.axis};
}

PlacedConic<Hyperbola2> Moved(const PlacedConic<Hyperbola2>& conic, const double (&step)[5]) {
  return {{conic.curve.a + step[2], conic.curve.b + step[3]},
          Shifted(conic, step),
          Turned(conic, 1.0, step[4] / Lever(conic.curve))};
}

PlacedConic<Parabola2> Moved(const PlacedConic<Parabola2>& conic, const double (&step)[4]) {
  return {{conic.curve.f + step[2]}, Shifted(conic, step), Turned(conic, 1.0, step[3] / Lever(conic.curve))};
}

Ellipse2 Scaled(const Ellipse2& curve, double scale) {
  return {scale * curve.a, scale * curve.b};
}
Hyperbola2 Scaled(const Hyperbola2& curve, double scale) {
  return {scale * curve.a, scale * curve.b};
}
Parabola2 Scaled(const Parabola2& curve, double scale) {
  return {scale * curve.f};
}

}  // namespace

template<class Curve>
double ConicLeastSquares<Curve>::System::Rounding() const {
  const double rounding = kNoise * kNoise * reach;
  return 2.0 * std::sqrt(sumSquares * rounding) + rounding;
}

template<class Curve>
ConicLeastSquares<Curve>::ConicLeastSquares(PointBlocks& points, const PlaneAxes& axes)
    : m_points(points), m_axes(axes) {
  m_points.Keep();
}

template<class Curve>
bool ConicLeastSquares<Curve>::Start() {
  PlacedConic<Curve> candidates[kMostCandidates];
  const int count = AlgebraicFits(m_points, m_axes, candidates);
  double least = kInfinity;
  for (int i = 0; i < count; ++i) {
    if (!IsUsable(candidates[i].curve)) continue;
    m_now = candidates[i];
    const double scale = m_points.Scale();
    const double sum = count == 1 ? 0.0 : DeviationsNow().sumSquares * scale * scale;
    if (!(sum < least)) continue;
    least = sum;
    m_best = m_now;
  }
  m_now = m_best;
  m_started = false;
  return least < kInfinity;
}

template<class Curve>
void ConicLeastSquares<Curve>::StartFrom(const PlacedConic<Curve>& conic) {
  const double scale = m_points.Scale();
  m_now = {Scaled(conic.curve, scale), scale * conic.origin, conic.axis};
  m_started = m_isStuck = false;
  m_damping = 0.0;
}

template<class Curve>
PlacedConic<Curve> ConicLeastSquares<Curve>::Found() const {
  const double unit = 1.0 / m_points.Scale();
  return {Scaled(m_now.curve, unit), unit * m_now.origin, m_now.axis};
}

template<class Curve>
bool ConicLeastSquares<Curve>::IsConic() const {
  return IsUsable(m_now.curve);
}

template<class Curve>
typename ConicLeastSquares<Curve>::System ConicLeastSquares<Curve>::SumSystem() const {
  System system;
  if (!IsUsable(m_now.curve)) {
    system.sumSquares = kInfinity;
    return system;
  }
  const ConicView<Curve> view = ViewIn(m_axes, m_now);
  BlockSums<kSums<kUnknowns>> total;
  CompensatedSum squares;
  m_points.ForEach([&](const PointBlock& block) {
    double sums[kSums<kUnknowns>];
    Deviations part;
    SumProducts(block, view, sums, part);
    total.Add(sums);
    squares.Add(part.sumSquares);
  });
  for (int j = 0; j < kUnknowns; ++j) {
    for (int k = 0; k <= j; ++k) system.product[j][k] = system.product[k][j] = total[TriangleSize(j) + k];
    system.right[j] = total[TriangleSize(kUnknowns) + j];
  }
  system.reach = total[kSums<kUnknowns> - 1];
  system.sumSquares = squares.Value();
  return system;
}

template<class Curve>
bool ConicLeastSquares<Curve>::Shortens(const System& next) const {
  return next.reach <= m_farthest && next.sumSquares <= m_system.sumSquares + m_system.Rounding();
}

template<class Curve>
void ConicLeastSquares<Curve>::Damp(double (&step)[kUnknowns]) const {
  double damped[kUnknowns][kUnknowns];
  for (int j = 0; j < kUnknowns; ++j)
    for (int k = 0; k < kUnknowns; ++k) damped[j][k] = m_system.product[j][k] * (j == k ? 1.0 + m_damping : 1.0);
  if (!(SolvePositive(damped, m_system.right, step) > 0.0)) std::fill_n(step, kUnknowns, 0.0);
}

template<class Curve>
GaussNewtonStep ConicLeastSquares<Curve>::SolveStep() {
  if (m_isStuck) return m_stuckStep;
  System next = SumSystem();
  GaussNewtonStep step;
  if (!m_started && !std::isfinite(next.sumSquares)) return step;
  if (!m_started) m_farthest = kFarthest * next.reach;
  bool shortens = !m_started || Shortens(next);
  if (shortens) m_damping = m_damping < kNoDamping ? 0.0 : m_damping / kDampingFactor;
  for (int trial = 0; trial < kMostTrials && !shortens; ++trial) {
    m_damping = std::max(kFirstDamping, kDampingFactor * m_damping);
    Damp(m_step);
    m_now = Moved(m_best, m_step);
    next = SumSystem();
    shortens = Shortens(next);
  }
  m_isStuck = !shortens;
  if (shortens) {
    m_best = m_now;
    m_system = next;
  } else {
    m_now = m_best;
  }
  m_started = true;
  step.solvable = SolvePositive(m_system.product, m_system.right, m_step) > kClearPivot || SolveByRows(m_step);
  double gain = 0.0;
  for (int j = 0; j < kUnknowns; ++j) {
    gain += m_step[j] * m_system.right[j];
    step.squaredLength += m_step[j] * m_step[j];
  }
  step.squaredLength /= m_points.Scale() * m_points.Scale();
  step.atRoundingLevel = gain <= kNoise * kNoise * m_system.reach;
  if (m_damping > 0.0 && !step.atRoundingLevel) Damp(m_step);
  if (!m_isStuck) return step;
  if (!step.atRoundingLevel) std::fill_n(m_step, kUnknowns, 0.0);
  m_stuckStep = step;
  return step;
}

template<class Curve>
bool ConicLeastSquares<Curve>::SolveByRows(double (&step)[kUnknowns]) const {
  const ConicView<Curve> view = ViewIn(m_axes, m_best);
  const auto fill = [&](const PointBlock& block, std::size_t begin, std::size_t end, TallReduction& reduction) {
    for (std::size_t i = begin; i < end; i += kLanes) {
      Lanes x, y, e;
      Lanes column[kUnknowns];
      DeviateAt<true>(block, i, view, x, y, e, column);
      for (int j = 0; j < kUnknowns; ++j) Store(column[j], reduction.Column(j) + (i - begin));
      Store(e, reduction.Column(kUnknowns) + (i - begin));
    }
  };
  return SolveReduced(ReduceRows(m_points, kUnknowns + 1, fill), step).finite;
}

template<class Curve>
void ConicLeastSquares<Curve>::TakeStep() {
  m_now = Moved(m_best, m_step);
}

template<class Curve>
Deviations ConicLeastSquares<Curve>::DeviationsNow() {
  const ConicView<Curve> view = ViewIn(m_axes, m_now);
  const Deviations found =
      OverBlocks(m_points, [&](const PointBlock& block, Deviations& part) { FindDeviations(block, view, part); });
  return InUnit(found, m_points.Scale());
}

template class ConicLeastSquares<Ellipse2>;
template class ConicLeastSquares<Hyperbola2>;
template class ConicLeastSquares<Parabola2>;

}  // namespace nu::internal
