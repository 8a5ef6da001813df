#include "nu/engine/least_squares/conic_unknowns.h"

// A short arc says little about centre, axes and their direction, but much about the curve where the points are. So the
// unknowns are the coefficients of the equation in the frame of the points,
//
//   G = a x^2 + b x y + c y^2 + d x + e y + f:
//
// on an arc, x y and y^2 are about x^3 and x^4, and the coefficients are its height, slope, curvature, and the change
// of the curvature to first and second order, each as well determined as the points allow. Conics of all kinds are
// alike in them, and circles and parabolas are no special places: an ellipse may become a hyperbola on the way and
// return. As a multiple of G is the same conic, the largest coefficient is fixed, with y counted in units of its own
// spread.
//
// Of a parabola the quadratic part is a square, (x cos t + y sin t)^2, again with y in units of its spread, and the
// unknowns are t, d, e and f.

namespace nu::engine::least_squares {
namespace {

// Of an unknown: the last coefficient takes the place of the fixed one.
int CoefficientOf(int unknown, int fixed) {
  return unknown == fixed ? kConicUnknowns : unknown;
}

// (cos t, sin t) of a parabola.
Vec2 Square(const ConicEquation& equation, double flatness) {
  const double x = equation.at[0];
  const double y = equation.at[2] * flatness * flatness;
  const double xy = 0.5 * equation.at[1] * flatness;
  const Vec2 direction = x > y ? Vec2{x, xy} : Vec2{xy, y};
  return (1.0 / std::sqrt(Dot(direction, direction))) * direction;
}

// The model by all coefficients: nothing changes with the size of G, so that M c = 0, g . c = 0 and, as the gradient
// falls when c grows, H c = -g.
SecondOrderModel<kMonomials> WithFixed(const ConicModel& model, const ConicEquation& equation, int fixed) {
  SecondOrderModel<kMonomials> all = {};
  const double size = equation.at[fixed];
  for (int j = 0; j < kConicUnknowns; ++j) {
    const int row = CoefficientOf(j, fixed);
    double metric = 0.0;
    double hessian = model.gradient[j];
    for (int k = 0; k < kConicUnknowns; ++k) {
      const int column = CoefficientOf(k, fixed);
      all.metric[row][column] = model.metric[j][k];
      all.hessian[row][column] = model.hessian[j][k];
      metric += model.metric[j][k] * equation.at[column];
      hessian += model.hessian[j][k] * equation.at[column];
    }
    all.metric[row][fixed] = all.metric[fixed][row] = -metric / size;
    all.hessian[row][fixed] = all.hessian[fixed][row] = -hessian / size;
    all.gradient[row] = model.gradient[j];
    all.gradient[fixed] -= model.gradient[j] * equation.at[row] / size;
  }
  double hessian = all.gradient[fixed];
  for (int j = 0; j < kConicUnknowns; ++j) {
    const int row = CoefficientOf(j, fixed);
    all.metric[fixed][fixed] -= all.metric[fixed][row] * equation.at[row] / size;
    hessian += all.hessian[fixed][row] * equation.at[row];
  }
  all.hessian[fixed][fixed] = -hessian / size;
  return all;
}

// The model by the unknowns of a parabola.
SecondOrderModel<kUnknownsOf<Parabola2>> ForParabola(const SecondOrderModel<kMonomials>& all, Vec2 square,
                                                     double flatness) {
  constexpr int kUnknowns = kUnknownsOf<Parabola2>;
  const double sine = 2.0 * square.x * square.y;
  const double cosine = (square.x - square.y) * (square.x + square.y);
  const double first[3] = {-sine, 2.0 * cosine / flatness, sine / flatness / flatness};
  const double second[3] = {-2.0 * cosine, -4.0 * sine / flatness, 2.0 * cosine / flatness / flatness};
  double map[kMonomials][kUnknowns] = {};
  for (int k = 0; k < 3; ++k) map[k][0] = first[k];
  for (int k = 1; k < kUnknowns; ++k) map[k + 2][k] = 1.0;
  SecondOrderModel<kUnknowns> model = {};
  for (int i = 0; i < kUnknowns; ++i) {
    for (int k = 0; k < kMonomials; ++k) model.gradient[i] += map[k][i] * all.gradient[k];
    for (int j = 0; j < kUnknowns; ++j) {
      for (int k = 0; k < kMonomials; ++k) {
        for (int l = 0; l < kMonomials; ++l) {
          model.metric[i][j] += map[k][i] * all.metric[k][l] * map[l][j];
          model.hessian[i][j] += map[k][i] * all.hessian[k][l] * map[l][j];
        }
      }
    }
  }
  for (int k = 0; k < 3; ++k) model.hessian[0][0] += second[k] * all.gradient[k];
  return model;
}

}  // namespace

int FixedCoefficient(const ConicEquation& equation, double flatness) {
  const double weight[kMonomials] = {1.0, flatness, flatness * flatness, 1.0, flatness, 1.0};
  int largest = 0;
  for (int k = 1; k < kMonomials; ++k) {
    if (std::fabs(weight[k] * equation.at[k]) > std::fabs(weight[largest] * equation.at[largest])) largest = k;
  }
  return largest;
}

template<class Curve>
ConicCurvature CurvatureAs(const ConicEquation& equation, double flatness) {
  if constexpr (kIsParabola<Curve>) {
    const Vec2 square = Square(equation, flatness);
    const Vec2 across{square.x, square.y / flatness};
    const double length = std::sqrt(Dot(across, across));
    return {(1.0 / length) * across, 2.0 * length * length, 0.0};
  } else {
    return CurvatureOf(equation);
  }
}

template<class Curve>
ConicEquation Moved(const ConicEquation& equation, double flatness, const double (&step)[kUnknownsOf<Curve>]) {
  ConicEquation moved = equation;
  if constexpr (kIsParabola<Curve>) {
    const Vec2 square = Square(equation, flatness);
    Vec2 turned = square + step[0] * Perpendicular(square);
    turned = (1.0 / std::sqrt(Dot(turned, turned))) * turned;
    moved.at[0] = turned.x * turned.x;
    moved.at[1] = 2.0 * turned.x * turned.y / flatness;
    moved.at[2] = turned.y * turned.y / flatness / flatness;
    for (int k = 1; k < kUnknownsOf<Curve>; ++k) moved.at[k + 2] += step[k];
  } else {
    const int fixed = FixedCoefficient(equation, flatness);
    for (int k = 0; k < kConicUnknowns; ++k) moved.at[CoefficientOf(k, fixed)] += step[k];
  }
  return moved;
}

template<class Curve>
SecondOrderModel<kUnknownsOf<Curve>> ModelFor(const ConicModel& model, const ConicEquation& equation, double flatness) {
  if constexpr (kIsParabola<Curve>) {
    const int fixed = FixedCoefficient(equation, flatness);
    auto own = ForParabola(WithFixed(model, equation, fixed), Square(equation, flatness), flatness);
    own.sumSquares = model.sumSquares;
    own.isCurved = model.isCurved;
    return own;
  } else {
    return model;
  }
}

template ConicCurvature CurvatureAs<Ellipse2>(const ConicEquation&, double);
template ConicEquation Moved<Ellipse2>(const ConicEquation&, double, const double (&)[kUnknownsOf<Ellipse2>]);
template SecondOrderModel<kUnknownsOf<Ellipse2>> ModelFor<Ellipse2>(const ConicModel&, const ConicEquation&, double);
template ConicCurvature CurvatureAs<Hyperbola2>(const ConicEquation&, double);
template ConicEquation Moved<Hyperbola2>(const ConicEquation&, double, const double (&)[kUnknownsOf<Hyperbola2>]);
template SecondOrderModel<kUnknownsOf<Hyperbola2>> ModelFor<Hyperbola2>(const ConicModel&, const ConicEquation&,
                                                                        double);
template ConicCurvature CurvatureAs<Parabola2>(const ConicEquation&, double);
template ConicEquation Moved<Parabola2>(const ConicEquation&, double, const double (&)[kUnknownsOf<Parabola2>]);
template SecondOrderModel<kUnknownsOf<Parabola2>> ModelFor<Parabola2>(const ConicModel&, const ConicEquation&, double);

}  // namespace nu::engine::least_squares
