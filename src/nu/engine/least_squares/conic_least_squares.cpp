#include "nu/engine/least_squares/conic_least_squares.h"

#include <limits>
#include <utility>

// Least squares of the orthogonal distances from a conic (S. J. Ahn, W. Rauh, H.-J. Warnecke, Pattern Recognition 34,
// 2001) by the coefficients of its equation. Gauss-Newton steps lead to the neighbourhood of the optimum; where they
// slow down, exact second derivatives make them Newton steps. A trust region holds both.

namespace nu::engine::least_squares {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// A deviation is known to so many roundings of the coordinates.
constexpr double kNoise = 16.0 * std::numeric_limits<double>::epsilon();

// A step that gains less than the first part of what was predicted shortens those that follow it, one that gains more
// than the second lets them grow.
constexpr double kPoorGain = 0.25;
constexpr double kGoodGain = 0.75;
constexpr double kShorter = 0.25;
constexpr double kLonger = 2.5;
constexpr int kMostTrials = 30;

// Where the full step should gain less than this part of the sum, it leads to the optimum.
constexpr double kSettled = 1e-6;

// Gauss-Newton steps suffice as long as the next one should gain so much less than the last one.
constexpr double kFastGain = 1e-4;

// In units of the spread. Rounding hardly tells an ellipse or a hyperbola with its centre or its vertices farther away
// from a parabola or from lines.
constexpr double kFarCentre = 0x1p26;

// A descent that gains less than this part of the sum in so many steps has come as far as it gets: feet that jump from
// one side to the other, where the points fill the plane, make the sum unsmooth. One that takes more steps than those
// creeps towards lines.
constexpr int kPatience = 10;
constexpr double kIdleGain = 1e-10;
constexpr int kMostSteps = 100;

constexpr int TriangleSize(int n) {
  return n * (n + 1) / 2;
}

constexpr int kTriangle = TriangleSize(kConicUnknowns);
constexpr int kSums = 2 * kTriangle + kConicUnknowns;

// The lower triangles of the products of the first derivatives and of what the second ones add, and the gradient; what
// is added remains 0 for Gauss-Newton steps.
template<bool WithCurvature>
NU_ALWAYS_INLINE void ProductsBody(const PointBlock& block, const ConicView& given, double (&sums)[kSums],
                                   Deviations& found) {
  const ConicView view = given;
  Lanes metric[kTriangle] = {};
  Lanes bend[kTriangle] = {};
  Lanes gradient[kConicUnknowns] = {};
  Lanes square = {};
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    LaneDeviation at;
    Lanes weight;
    Lanes w[kMonomials];
    DeviateAt(block, i, view, at);
    Load(block.Weights(i), weight);
    at.e *= weight;
    square += at.e * at.e;
    Differentiate(at, w);
    if constexpr (WithCurvature) {
      LaneCurvature d;
      DifferentiateTwice(view, at, w, d);
      d.z[view.fixed] = d.z[kConicUnknowns];
      d.v[view.fixed] = d.v[kConicUnknowns];
      w[view.fixed] = w[kConicUnknowns];
      for (int j = 0; j < kConicUnknowns; ++j) {
        const Lanes v = d.v[j] * d.turn;
        for (int k = 0; k <= j; ++k) bend[TriangleSize(j) + k] += w[j] * d.z[k] + d.z[j] * w[k] - v * d.v[k];
      }
    } else {
      w[view.fixed] = w[kConicUnknowns];
    }
    for (int j = 0; j < kConicUnknowns; ++j) {
      gradient[j] += w[j] * at.e;
      w[j] *= weight;
      for (int k = 0; k <= j; ++k) metric[TriangleSize(j) + k] += w[j] * w[k];
    }
  }
  double* out = sums;
  for (int j = 0; j < kTriangle; ++j) *out++ = Sum(metric[j]);
  for (int j = 0; j < kTriangle; ++j) *out++ = Sum(bend[j]);
  for (int j = 0; j < kConicUnknowns; ++j) *out++ = Sum(gradient[j]);
  found.sumSquares = Sum(square);
}

NU_KERNEL void SumFirstOrder(const PointBlock& b, const ConicView& v, double (&s)[kSums], Deviations& d) {
  ProductsBody<false>(b, v, s, d);
}
NU_KERNEL void SumSecondOrder(const PointBlock& b, const ConicView& v, double (&s)[kSums], Deviations& d) {
  ProductsBody<true>(b, v, s, d);
}

NU_KERNEL void FindDeviations(const PointBlock& block, const ConicView& given, Deviations& found) {
  const ConicView view = given;
  Lanes square = {};
  Lanes smallest = kInfinity - Lanes{};
  Lanes largest = -smallest;
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    LaneDeviation at;
    Lanes weight;
    DeviateAt(block, i, view, at);
    smallest = at.e < smallest ? at.e : smallest;
    largest = at.e > largest ? at.e : largest;
    Load(block.Weights(i), weight);
    at.e *= weight;
    square += at.e * at.e;
  }
  found = {Sum(square), Smallest(smallest), Largest(largest)};
}

ConicKind KindOf(const Ellipse2&) {
  return ConicKind::ellipse;
}
ConicKind KindOf(const Hyperbola2&) {
  return ConicKind::hyperbola;
}
ConicKind KindOf(const Parabola2&) {
  return ConicKind::parabola;
}

Ellipse2 CurveOf(const ConicShape& shape, double unit, const Ellipse2&) {
  return {unit * shape.a, unit * shape.b};
}
Hyperbola2 CurveOf(const ConicShape& shape, double unit, const Hyperbola2&) {
  return {unit * shape.a, unit * shape.b};
}
Parabola2 CurveOf(const ConicShape& shape, double unit, const Parabola2&) {
  return {unit * shape.a};
}

// In the unit of the points a length may overflow or vanish.
bool IsInRange(const Parabola2& curve) {
  return curve.f > 0.0 && std::isfinite(curve.f);
}
template<class Curve>
bool IsInRange(const Curve& curve) {
  return curve.a > 0.0 && curve.b > 0.0 && std::isfinite(curve.a) && std::isfinite(curve.b);
}

// The squared change of the lengths of a curve, and the length in which its turns are counted.
double SquaredChange(const Parabola2& p, const Parabola2& q) {
  return (p.f - q.f) * (p.f - q.f);
}
template<class Curve>
double SquaredChange(const Curve& p, const Curve& q) {
  return (p.a - q.a) * (p.a - q.a) + (p.b - q.b) * (p.b - q.b);
}
double Lever(const Ellipse2& curve) {
  return curve.a - curve.b;
}
double Lever(const Hyperbola2& curve) {
  return std::sqrt(curve.a * curve.a + curve.b * curve.b);
}
double Lever(const Parabola2& curve) {
  return curve.f;
}

}  // namespace

template<class Curve>
ConicLeastSquares<Curve>::ConicLeastSquares(PointBlocks& points, const ConicFrame& frame)
    : m_points(points), m_frame(frame) {
  m_points.Keep();
  const double n = static_cast<double>(m_points.Size());
  m_rounding = kNoise * kNoise * n * (1.0 + frame.flatness * frame.flatness);
}

template<class Curve>
ConicView ConicLeastSquares<Curve>::ViewOf(const ConicEquation& equation) const {
  ConicView view;
  const double unit = m_frame.unit;
  view.x = (1.0 / unit) * m_frame.x;
  view.y = (1.0 / unit) * m_frame.y;
  view.xOffset = m_frame.xMean / unit;
  view.yOffset = m_frame.yMean / unit;
  view.equation = equation;
  view.curvature = CurvatureAs<Curve>(equation, m_frame.flatness);
  view.shape = ShapeOf(equation, view.curvature, kFarCentre);
  view.fixed = FixedCoefficient(equation, m_frame.flatness);
  return view;
}

template<class Curve>
bool ConicLeastSquares<Curve>::Sum(const ConicEquation& equation, Model& model) {
  const ConicView view = ViewOf(equation);
  model.sumSquares = kInfinity;
  if (view.shape.kind == ConicKind::none) return false;
  BlockSums<kSums> total;
  CompensatedSum squares;
  m_points.ForEach([&](const PointBlock& block) {
    double sums[kSums];
    Deviations part;
    (m_isExact ? SumSecondOrder : SumFirstOrder)(block, view, sums, part);
    total.Add(sums);
    squares.Add(part.sumSquares);
  });
  ConicModel general;
  for (int j = 0; j < kConicUnknowns; ++j) {
    for (int k = 0; k <= j; ++k) {
      const int at = TriangleSize(j) + k;
      general.metric[j][k] = general.metric[k][j] = total[at];
      general.hessian[j][k] = general.hessian[k][j] = total[at] + total[kTriangle + at];
    }
    general.gradient[j] = total[2 * kTriangle + j];
  }
  general.sumSquares = squares.Value();
  general.isCurved = m_isExact;
  model = ModelFor<Curve>(general, equation, m_frame.flatness);
  return std::isfinite(model.sumSquares);
}

template<class Curve>
bool ConicLeastSquares<Curve>::Start(const ConicEquation& equation) {
  m_best = m_now = equation;
  m_isPending = m_isExact = false;
  m_steps = 0;
  m_earlier = kInfinity;
  m_started = Sum(equation, m_model) && m_region.Place(m_model);
  m_radius = std::sqrt(m_model.sumSquares);
  return m_started;
}

template<class Curve>
bool ConicLeastSquares<Curve>::Place(const ConicEquation& equation, PlacedConic<Curve>& conic) const {
  const ConicShape shape = ShapeOf(equation, CurvatureAs<Curve>(equation, m_frame.flatness), kFarCentre);
  if (shape.kind != KindOf(conic.curve)) return false;
  if (!kIsParabola<Curve> && !(std::min(shape.a, shape.b) > kNoise && std::max(shape.a, shape.b) < kFarCentre))
    return false;
  const double unit = 1.0 / m_points.Scale();
  conic.curve = CurveOf(shape, unit * m_frame.unit, conic.curve);
  conic.origin = unit * ((m_frame.xMean + m_frame.unit * shape.origin.x) * m_frame.x +
                         (m_frame.yMean + m_frame.unit * shape.origin.y) * m_frame.y);
  conic.axis = shape.axis.x * m_frame.x + shape.axis.y * m_frame.y;
  return IsInRange(conic.curve);
}

// Of the parameters; a turn counts by its effect on them.
template<class Curve>
double SquaredDistance(const PlacedConic<Curve>& from, const PlacedConic<Curve>& to) {
  const Vec3 shift = to.origin - from.origin;
  const Vec3 turn = Lever(from.curve) * Cross(from.axis, to.axis);
  return Dot(shift, shift) + Dot(turn, turn) + SquaredChange(from.curve, to.curve);
}

// What rounding may add to the sum of squares.
template<class Curve>
double ConicLeastSquares<Curve>::Rounding() const {
  return 2.0 * std::sqrt(m_model.sumSquares * m_rounding) + m_rounding;
}

template<class Curve>
void ConicLeastSquares<Curve>::AdaptRadius(double sumSquares) {
  const double gain = 0.5 * (m_model.sumSquares - sumSquares);
  if (m_predicted.gain <= Rounding()) return;  // rounding hides it
  if (!(gain >= kPoorGain * m_predicted.gain)) m_radius = kShorter * m_predicted.length;
  if (gain > kGoodGain * m_predicted.gain) m_radius = std::max(m_radius, kLonger * m_predicted.length);
}

// Tries shorter and shorter steps until one leads to a place that is not above the best, and makes it the best.
template<class Curve>
bool ConicLeastSquares<Curve>::Descend() {
  for (int trial = 0; trial < kMostTrials; ++trial) {
    Model next;
    Sum(m_now, next);
    AdaptRadius(next.sumSquares);
    TrustRegion<kUnknowns> region;
    if (next.sumSquares <= m_model.sumSquares + Rounding() && region.Place(next)) {
      m_isExact = m_isExact || !(region.FullGain() <= kFastGain * m_region.FullGain());
      m_best = m_now;
      m_model = next;
      m_region = region;
      return true;
    }
    m_radius = std::min(m_radius, kShorter * m_predicted.length);
    m_predicted = m_region.StepWithin(m_radius, m_step);
    m_now = Moved<Curve>(m_best, m_frame.flatness, m_step);
  }
  return false;
}

// Whether the last steps have gained nothing.
template<class Curve>
bool ConicLeastSquares<Curve>::IsIdle() {
  if (m_steps % kPatience != 0) return false;
  const double before = std::exchange(m_earlier, m_model.sumSquares);
  return before - m_model.sumSquares <= kIdleGain * m_model.sumSquares;
}

template<class Curve>
GaussNewtonStep ConicLeastSquares<Curve>::SolveStep() {
  GaussNewtonStep step;
  if (!m_started || ++m_steps > kMostSteps) return step;
  if (m_isPending && !Descend()) {
    m_now = m_best;
    return step;
  }
  m_isPending = false;
  step.solvable = true;
  step.squaredLength = std::numeric_limits<double>::max();
  step.atRoundingLevel = m_model.sumSquares <= m_rounding || IsIdle();
  if (m_region.IsConvex() && !step.atRoundingLevel) {
    double full[kUnknowns];
    m_region.FullStep(full);
    const double gain = m_region.FullGain();
    step.atRoundingLevel = gain <= m_rounding;
    PlacedConic<Curve> here, there;
    if (Place(Moved<Curve>(m_best, m_frame.flatness, full), there)) {
      if (Place(m_best, here)) step.squaredLength = SquaredDistance(here, there);
    } else {
      step.solvable = gain > std::max(kSettled * m_model.sumSquares, m_rounding);
    }
  }
  m_predicted = m_region.StepWithin(m_radius, m_step);
  return step;
}

template<class Curve>
void ConicLeastSquares<Curve>::TakeStep() {
  m_now = Moved<Curve>(m_best, m_frame.flatness, m_step);
  m_isPending = true;
}

template<class Curve>
Deviations ConicLeastSquares<Curve>::DeviationsNow() {
  const ConicView view = ViewOf(m_now);
  const Deviations found =
      OverBlocks(m_points, [&](const PointBlock& block, Deviations& part) { FindDeviations(block, view, part); });
  return InUnit(found, m_points.Scale() / m_frame.unit);
}

template class ConicLeastSquares<Ellipse2>;
template class ConicLeastSquares<Hyperbola2>;
template class ConicLeastSquares<Parabola2>;

}  // namespace nu::engine::least_squares
