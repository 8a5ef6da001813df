#include "nu/engine/least_squares/conic_least_squares.h"

#include "nu/engine/base/floating_point.h"
#include "nu/engine/least_squares/conic_kernels.h"
#include "nu/engine/least_squares/surface_kernels.h"

// Least squares of the orthogonal distances from a conic (S. J. Ahn, W. Rauh, H.-J. Warnecke, Pattern Recognition 34,
// 2001) by the coefficients of its equation. Gauss-Newton steps lead to the neighbourhood of the optimum; where they
// slow down, exact second derivatives make them Newton steps. Damping holds both.

namespace nu::engine::least_squares {
namespace {

// A deviation is known to so many roundings of the coordinates.
constexpr double kNoise = 16.0 * kEpsilon;

// Where the full step should gain less than this part of the sum, it leads to the optimum.
constexpr double kSettled = 1e-6;

// Gauss-Newton steps suffice as long as the next one should gain so much less than the last one.
constexpr double kFastGain = 1e-4;

// In units of the spread. Rounding hardly tells an ellipse or a hyperbola with its centre or its vertices farther away
// from a parabola or from lines.
constexpr double kFarCentre = 0x1p26;

// A descent from a start ends with a step that should gain less than this part of the sum.
constexpr double kIdleGain = 1e-12;

// Squared, and in units of the spread: longer than any step that ends a fit.
constexpr double kEndless = kFarCentre * kFarCentre;

constexpr int kTriangle = TriangleSize(kConicUnknowns);
constexpr int kConicSums = 2 * kTriangle + kConicUnknowns;

// The lower triangles of the products of the first derivatives and of what the second ones add, and the gradient; what
// is added remains 0 for Gauss-Newton steps.
template<bool WithCurvature>
NU_ALWAYS_INLINE void ProductsBody(const PointBlock& block, const ConicView& given, double (&sums)[kConicSums],
                                   Deviations& found) {
  const ConicView view = given;
  Lanes metric[kTriangle] = {};
  Lanes bend[kTriangle] = {};
  Lanes gradient[kConicUnknowns] = {};
  Lanes square = {};
  LaneExtremes extremes;
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    LaneDeviation at;
    Lanes weight;
    Lanes w[kMonomials];
    DeviateAt(block, i, view, at);
    extremes.Add(at.e);
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
  for (const Lanes& sum : metric) *out++ = Sum(sum);
  for (const Lanes& sum : bend) *out++ = Sum(sum);
  for (const Lanes& sum : gradient) *out++ = Sum(sum);
  found = {Sum(square), extremes.Smallest(), extremes.Largest()};
}

NU_KERNEL void SumFirstOrder(const PointBlock& b, const ConicView& v, double (&s)[kConicSums], Deviations& d) {
  ProductsBody<false>(b, v, s, d);
}
NU_KERNEL void SumSecondOrder(const PointBlock& b, const ConicView& v, double (&s)[kConicSums], Deviations& d) {
  ProductsBody<true>(b, v, s, d);
}

struct ConicLanes {
  NU_ALWAYS_INLINE void Deviate(const PointBlock& block, std::size_t i, Lanes& e) const {
    LaneDeviation at;
    DeviateAt(block, i, view, at);
    e = at.e;
  }

  ConicView view;
};

NU_KERNEL void FindDeviations(const PointBlock& block, const ConicView& view, Deviations& found) {
  DeviationsBody(block, ConicLanes{view}, found);
}

ConicView ViewOf(const ConicModel& model) {
  const ConicFrame& frame = model.frame;
  ConicView view;
  view.x = (1.0 / frame.unit) * frame.x;
  view.y = (1.0 / frame.unit) * frame.y;
  view.xOffset = Dot(frame.origin, frame.x) / frame.unit;
  view.yOffset = Dot(frame.origin, frame.y) / frame.unit;
  view.equation = model.equation;
  view.curvature = CurvatureOf(model);
  view.shape = ShapeOf(model.equation, view.curvature, kFarCentre);
  view.fixed = FixedCoefficient(model);
  return view;
}

// The squared change of the parameters; a turn counts by its effect on them.
double SquaredDistance(ConicKind kind, const PlacedConic& from, const PlacedConic& to) {
  const double focal = std::sqrt(from.a * from.a + from.b * from.b);
  const double lever = kind == ConicKind::ellipse ? from.a - from.b : focal;
  const Vec3 shift = to.origin - from.origin;
  const Vec3 turn = lever * Cross(from.axis, to.axis);
  const Vec2 growth{to.a - from.a, to.b - from.b};
  return Dot(shift, shift) + Dot(turn, turn) + Dot(growth, growth);
}

double PredictedGain(const ConicSystem& system, const double (&step)[kConicUnknowns]) {
  double gain = 0.0;
  for (int k = 0; k < kConicUnknowns; ++k) gain += step[k] * system.right[k];
  return gain;
}

// The equation grows away from a focus across the axis of an ellipse or a parabola; along the axis of a hyperbola it
// falls towards the foci.
double SenseOf(const ConicShape& shape, const ConicCurvature& curvature) {
  const double cosine = Dot(shape.axis, curvature.axis);
  const bool isSteepAxis = cosine * cosine > 0.5;
  const double along = isSteepAxis ? curvature.steep : curvature.gentle;
  return std::copysign(1.0, shape.kind == ConicKind::hyperbola ? -along : curvature.steep);
}

}  // namespace

bool Place(const ConicModel& model, PlacedConic& conic) {
  const ConicFrame& frame = model.frame;
  const ConicCurvature curvature = CurvatureOf(model);
  const ConicShape shape = ShapeOf(model.equation, curvature, kFarCentre);
  if (shape.kind != model.kind) return false;
  const bool isInRange = std::min(shape.a, shape.b) > kNoise && std::max(shape.a, shape.b) < kFarCentre;
  if (shape.kind != ConicKind::parabola && !isInRange) return false;
  conic.a = frame.unit * shape.a;
  conic.b = frame.unit * shape.b;
  conic.origin = frame.Global(frame.unit * shape.origin);
  conic.axis = shape.axis.x * frame.x + shape.axis.y * frame.y;
  conic.sense = SenseOf(shape, curvature);
  return true;
}

ConicSystem ConicProblem::Sum(PointBlocks& points, const Model& model) {
  const ConicView view = ViewOf(model);
  const double square = model.frame.unit * model.frame.unit;
  ConicSystem system = {};
  system.count = static_cast<double>(points.Size());
  system.spread = square * system.count * (1.0 + model.frame.flatness * model.frame.flatness);
  system.deviations.sumSquares = kInfinity;
  if (view.shape.kind == ConicKind::none) return system;
  CompensatedSum squares;
  const auto kernel = [&](const PointBlock& block, double(&sums)[kConicSums], Deviations& part) {
    (model.isExact ? SumSecondOrder : SumFirstOrder)(block, view, sums, part);
    squares.Add(part.sumSquares);
  };
  const BlockSums<kConicSums> total = SumOver<kConicSums>(points, system.deviations, kernel);
  system.unit = model.frame.unit;
  system.deviations = InUnit(system.deviations, 1.0 / system.unit);
  for (int j = 0; j < kConicUnknowns; ++j) {
    for (int k = 0; k <= j; ++k) {
      const int at = TriangleSize(j) + k;
      system.product[j][k] = system.product[k][j] = square * total[at];
      system.second[j][k] = system.second[k][j] = square * total[kTriangle + at];
    }
    system.right[j] = -square * total[2 * kTriangle + j];
  }
  system.deviations.sumSquares = square * squares.Value();
  if (model.kind == ConicKind::parabola) RestrictToParabola(model, system);
  return system;
}

Deviations ConicProblem::DeviationsFrom(PointBlocks& points, const Model& model) {
  const ConicView view = ViewOf(model);
  const Deviations found =
      OverBlocks(points, [&](const PointBlock& block, Deviations& part) { FindDeviations(block, view, part); });
  return InUnit(found, 1.0 / model.frame.unit);
}

double ConicProblem::SquaredLength(const Model& model, const ConicSystem& system, const double (&step)[kUnknowns]) {
  Model moved = model;
  moved.equation = Moved(model, step);
  PlacedConic here, there;
  const bool arrives = Place(moved, there);
  if (arrives && Place(model, here)) return SquaredDistance(model.kind, here, there);
  const double settled = std::max(kSettled * system.deviations.sumSquares, kNoise * kNoise * system.spread);
  if (!arrives && !(PredictedGain(system, step) > settled)) return kInfinity;
  return kEndless * model.frame.unit * model.frame.unit;
}

void ConicProblem::Move(PointBlocks&, const ConicSystem& system, const double (&step)[kUnknowns], Model& model) {
  const double gain = PredictedGain(system, step);
  model.isExact = model.isExact || gain > kFastGain * model.gain;
  model.gain = gain;
  model.equation = Moved(model, step);
}

bool ConicProblem::IsEnough(const StepGains& gains, double sumSquares) {
  return gains.now <= kIdleGain * sumSquares;
}

bool ConicProblem::AreAlike(const Model& one, const Model& other) {
  return one.isExact && other.isExact && FixedCoefficient(one) == FixedCoefficient(other);
}

}  // namespace nu::engine::least_squares
