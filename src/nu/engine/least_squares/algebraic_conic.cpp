#include "nu/engine/least_squares/algebraic_conic.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>

#include "nu/engine/base/elementary.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/linear/small_svd.h"
#include "nu/engine/linear/tall_qr.h"
#include "nu/engine/points/extents.h"
#include "nu/engine/points/mean.h"
#include "nu/engine/shapes/vec2.h"

// With the columns in the order 1, x, y, x^2, sqrt(2) x y, y^2, the triangle of their orthogonal reduction is
//
//   R1  R12
//   0   R2
//
// and the best q = (a, b / sqrt(2), c) of unit length is the right singular vector of the least singular value of R2;
// the rest of the equation solves R1 l = -R12 q.

namespace nu::engine::least_squares {
namespace {

constexpr double kRoot2 = 1.4142135623730950488;

// On points of size 1, a combination of 1, x and y below this bound is zero: the points lie on a line. A coefficient
// about their mean, and a sum relative to its terms, are zero below it as well.
constexpr double kRounding = 64.0 * kEpsilon;

struct Chart {
  Vec3 origin;
  double scale;
};

void Reduce(const PointView& points, const Chart& chart, TallReduction& reduction) {
  for (std::size_t begin = 0; begin < points.Size(); begin += TallReduction::kBlockRows) {
    const std::size_t rows = std::min<std::size_t>(TallReduction::kBlockRows, points.Size() - begin);
    for (std::size_t i = 0; i < rows; ++i) {
      const Vec3 p = chart.scale * (LoadVec3(points[begin + i]) - chart.origin);
      const double row[] = {1.0, p.x, p.y, p.x * p.x, kRoot2 * p.x * p.y, p.y * p.y};
      for (int j = 0; j < 6; ++j) reduction.Column(j)[i] = row[j];
    }
    reduction.AbsorbBlock(static_cast<int>(rows));
  }
  reduction.Finish();
}

// About the origin of the chart.
Quadratic2 SolveChart(const TallReduction& reduction) {
  double low[3][3] = {};
  double high[3][3] = {};
  for (int j = 0; j < 3; ++j) {
    for (int i = 0; i <= j; ++i) {
      low[j][i] = reduction.R(i, j);
      high[j][i] = reduction.R(3 + i, 3 + j);
    }
  }
  const SmallSvd<3> quadratic = SvdOfColumns(high);
  const double* q = quadratic.axis[2];
  const SmallSvd<3> linear = SvdOfColumns(low);
  double l[3] = {};
  for (int k = 0; k < 3 && linear.value[k] > kRounding * linear.value[0]; ++k) {
    double part = 0.0;
    for (int i = 0; i < 3; ++i) {
      const double right = reduction.R(i, 3) * q[0] + reduction.R(i, 4) * q[1] + reduction.R(i, 5) * q[2];
      part -= linear.work[k][i] * right;
    }
    for (int j = 0; j < 3; ++j) l[j] += part / linear.value[k] / linear.value[k] * linear.axis[k][j];
  }
  const auto clean = [](double value) { return std::fabs(value) > kRounding ? value : 0.0; };
  return {clean(q[0]), clean(kRoot2 * q[1]), clean(q[2]), clean(l[1]), clean(l[2]), clean(l[0])};
}

Quadratic2 Times(const Quadratic2& g, double f) {
  return {f * g.a, f * g.b, f * g.c, f * g.d, f * g.e, f * g.f};
}

// The sum, or 0 where it is only the rounding of its terms.
double CleanSum(std::initializer_list<double> terms) {
  double sum = 0.0;
  double size = 0.0;
  for (const double term : terms) {
    sum += term;
    size += std::fabs(term);
  }
  return std::fabs(sum) > kRounding * size ? sum : 0.0;
}

Quadratic2 Outside(const Quadratic2& g, const Chart& chart) {
  const double unit = 1.0 / chart.scale;
  const double x = chart.origin.x;
  const double y = chart.origin.y;
  Quadratic2 moved = g;
  moved.d = CleanSum({unit * g.d, -2.0 * g.a * x, -g.b * y});
  moved.e = CleanSum({unit * g.e, -2.0 * g.c * y, -g.b * x});
  moved.f = CleanSum({unit * unit * g.f, -unit * g.d * x, -unit * g.e * y, g.a * x * x, g.b * x * y, g.c * y * y});
  return moved;
}

// The principal axes of the quadratic part: |first| >= |second|.
struct Axes {
  double first;
  double second;
  Vec2 firstAxis;
};

Axes AxesOf(const Quadratic2& g) {
  const double mean = 0.5 * (g.a + g.c);
  const double half = 0.5 * (g.a - g.c);
  const double root = Hypot(half, 0.5 * g.b);
  const double first = mean + std::copysign(root, mean);
  // Their product is a c - b^2 / 4.
  const double second = DifferenceOfProducts(g.a, g.c, 0.5 * g.b, 0.5 * g.b) / first;
  const auto [sine, cosine] = SinCos(0.5 * Atan2(g.b, g.a - g.c));
  const Vec2 larger{cosine, sine};
  return {first, second, std::signbit(mean) ? Perpendicular(larger) : larger};
}

// Brings the quadratic part and, by the choice of a unit of length, the rest to a size of about 1.
Quadratic2 Normalised(const Quadratic2& g) {
  const double size = std::max({std::fabs(g.a), std::fabs(g.b), std::fabs(g.c)});
  const Quadratic2 unit{g.a / size, g.b / size, g.c / size, g.d / size, g.e / size, g.f / size};
  const double length = std::max({std::fabs(unit.d), std::fabs(unit.e), std::sqrt(std::fabs(unit.f))});
  if (!(length > 0.0)) return unit;
  return {unit.a, unit.b, unit.c, unit.d / length, unit.e / length, unit.f / length / length};
}

// first t^2 + linear t + constant = 0 across the axis, unless there is a slope along it.
QuadraticKind KindAlongAxis(const Quadratic2& g, const Axes& axes, double tol) {
  const double linear = Dot({g.d, g.e}, axes.firstAxis);
  const double slope = Dot({g.d, g.e}, Perpendicular(axes.firstAxis));
  const double product = 4.0 * axes.first * g.f;
  const double size = std::fabs(linear) + std::sqrt(std::fabs(product));
  if (std::fabs(slope) > tol * size) return QuadraticKind::parabola;
  const bool meets = linear * linear - product >= -tol * (linear * linear + std::fabs(product));
  return meets ? QuadraticKind::lines : QuadraticKind::none;
}

QuadraticKind KindAboutCentre(const Quadratic2& g, const Axes& axes, double tol) {
  const double along = Dot({g.d, g.e}, axes.firstAxis);
  const double across = Dot({g.d, g.e}, Perpendicular(axes.firstAxis));
  const double first = 0.25 * along * along / axes.first;
  const double second = 0.25 * across * across / axes.second;
  const double constant = g.f - first - second;
  const bool vanishes = !(std::fabs(constant) > tol * (std::fabs(g.f) + std::fabs(first) + std::fabs(second)));
  const bool sameSign = axes.first * axes.second > 0.0;
  if (vanishes) return sameSign ? QuadraticKind::none : QuadraticKind::lines;
  if (!sameSign) return QuadraticKind::hyperbola;
  return constant * axes.first < 0.0 ? QuadraticKind::ellipse : QuadraticKind::none;
}

}  // namespace

Quadratic2 FittedQuadratic(const PointView& points) {
  const Chart chart{MeanOf(points), ScaleFor(ExtentsOf(points).Side())};
  TallReduction reduction(6);
  Reduce(points, chart, reduction);
  const Quadratic2 g = Outside(SolveChart(reduction), chart);
  const double largest = std::max({g.a, g.b, g.c});
  return largest < -std::min({g.a, g.b, g.c}) ? Times(g, -1.0) : g;
}

QuadraticKind KindOf(const Quadratic2& equation, double tol) {
  for (const double g : {equation.a, equation.b, equation.c, equation.d, equation.e, equation.f})
    if (!std::isfinite(g)) return QuadraticKind::none;
  if (equation.a == 0.0 && equation.b == 0.0 && equation.c == 0.0) {
    return equation.d != 0.0 || equation.e != 0.0 ? QuadraticKind::lines : QuadraticKind::none;
  }
  const Quadratic2 g = Normalised(equation);
  const Axes axes = AxesOf(g);
  const bool isParabolic = !(std::fabs(axes.second) > tol * std::fabs(axes.first)) || axes.second == 0.0;
  return isParabolic ? KindAlongAxis(g, axes, tol) : KindAboutCentre(g, axes, tol);
}

}  // namespace nu::engine::least_squares
