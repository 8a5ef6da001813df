#include "nu/engine/least_squares/conic_unknowns.h"

// A short arc says little about centre, axes and their direction, but much about the curve where the points are. So the
// unknowns are the coefficients of the equation in the frame of the points,
//
//   G = a x^2 + b x y + c y^2 + d x + e y + f:
//
// on an arc, x y and y^2 are about x^3 and x^4, and the coefficients are its height, slope, curvature, and the change
// of the curvature to first and second order, each as well determined as the points allow. Conics of all kinds are
// alike in them, and circles and parabolas are no special places: an ellipse may become a hyperbola during the descent
// and return. As a multiple of G is the same conic, the largest coefficient is fixed, with y counted in units of its
// own spread; in place of the fixed coefficient, its unknown stands for f.
//
// Of a parabola the quadratic part is a square, (x cos t + y sin t)^2, again with y in units of its spread, and the
// unknowns are t, d, e and f. With the coefficients c, s the fixed one of them, and p_i = (dc/du_i)_s / c_s, a change
// of the unknown u_i at the fixed s is
//
//   v_i = dc/du_i - p_i c,   and to second order   v_ij = d2c/du_i du_j - (d2c/du_i du_j)_s c / c_s - p_i v_j - p_j
//   v_i.

namespace nu::engine::least_squares {
namespace {

constexpr int kParabolaUnknowns = kConicUnknowns - 1;

int CoefficientOf(int unknown, int fixed) {
  return unknown == fixed ? kConicUnknowns : unknown;
}

// (cos t, sin t) of a parabola.
Vec2 SquareRoot(const ConicModel& model) {
  const double flatness = model.frame.flatness;
  const double x = model.equation.at[0];
  const double y = model.equation.at[2] * flatness * flatness;
  const double xy = 0.5 * model.equation.at[1] * flatness;
  const Vec2 direction = x > y ? Vec2{x, xy} : Vec2{xy, y};
  return (1.0 / std::sqrt(Dot(direction, direction))) * direction;
}

// A change of the unknowns of the general conic.
using Change = double[kConicUnknowns];

double Product(const Change& a, const Change& b) {
  double sum = 0.0;
  for (int k = 0; k < kConicUnknowns; ++k) sum += a[k] * b[k];
  return sum;
}

double Product(const Change& a, const double (&matrix)[kConicUnknowns][kConicUnknowns], const Change& b) {
  double sum = 0.0;
  for (int k = 0; k < kConicUnknowns; ++k) sum += a[k] * Product(matrix[k], b);
  return sum;
}

// The change at the fixed size of G; the result is p.
double AtFixedSize(const double (&coefficients)[kMonomials], const ConicEquation& equation, int fixed, Change& change) {
  const double part = coefficients[fixed] / equation.at[fixed];
  for (int k = 0; k < kConicUnknowns; ++k) {
    const int c = CoefficientOf(k, fixed);
    change[k] = coefficients[c] - part * equation.at[c];
  }
  return part;
}

}  // namespace

int FixedCoefficient(const ConicModel& model) {
  const double flatness = model.frame.flatness;
  const double(&c)[kMonomials] = model.equation.at;
  const double weight[kMonomials] = {1.0, flatness, flatness * flatness, 1.0, flatness, 1.0};
  int largest = 0;
  for (int k = 1; k < kMonomials; ++k)
    if (std::fabs(weight[k] * c[k]) > std::fabs(weight[largest] * c[largest])) largest = k;
  return largest;
}

ConicCurvature CurvatureOf(const ConicModel& model) {
  if (model.kind != ConicKind::parabola) return CurvatureOf(model.equation);
  const Vec2 root = SquareRoot(model);
  const Vec2 across{root.x, root.y / model.frame.flatness};
  const double length = std::sqrt(Dot(across, across));
  return {(1.0 / length) * across, 2.0 * length * length, 0.0};
}

ConicEquation Moved(const ConicModel& model, const double (&step)[kConicUnknowns]) {
  ConicEquation moved = model.equation;
  if (model.kind == ConicKind::parabola) {
    const double flatness = model.frame.flatness;
    const Vec2 root = SquareRoot(model);
    Vec2 turned = root + step[0] * Perpendicular(root);
    turned = (1.0 / std::sqrt(Dot(turned, turned))) * turned;
    moved.at[0] = turned.x * turned.x;
    moved.at[1] = 2.0 * turned.x * turned.y / flatness;
    moved.at[2] = turned.y * turned.y / flatness / flatness;
    for (int k = 1; k < kParabolaUnknowns; ++k) moved.at[k + 2] += step[k];
  } else {
    const int fixed = FixedCoefficient(model);
    for (int k = 0; k < kConicUnknowns; ++k) moved.at[CoefficientOf(k, fixed)] += step[k];
  }
  return moved;
}

void RestrictToParabola(const ConicModel& model, ConicSystem& system) {
  const double flatness = model.frame.flatness;
  const Vec2 root = SquareRoot(model);
  const int fixed = FixedCoefficient(model);
  const double sine = 2.0 * root.x * root.y;
  const double cosine = (root.x - root.y) * (root.x + root.y);
  const double turn[kMonomials] = {-sine, 2.0 * cosine / flatness, sine / flatness / flatness};
  const double bend[kMonomials] = {-2.0 * cosine, -4.0 * sine / flatness, 2.0 * cosine / flatness / flatness};
  Change v[kParabolaUnknowns];
  double p[kParabolaUnknowns];
  p[0] = AtFixedSize(turn, model.equation, fixed, v[0]);
  for (int i = 1; i < kParabolaUnknowns; ++i) {
    double unit[kMonomials] = {};
    unit[i + 2] = 1.0;
    p[i] = AtFixedSize(unit, model.equation, fixed, v[i]);
  }
  ConicSystem own = {};
  for (int i = 0; i < kParabolaUnknowns; ++i) own.right[i] = Product(v[i], system.right);
  for (int i = 0; i < kParabolaUnknowns; ++i) {
    for (int j = 0; j < kParabolaUnknowns; ++j) {
      own.product[i][j] = Product(v[i], system.product, v[j]);
      if (!model.isExact) continue;
      own.second[i][j] = Product(v[i], system.second, v[j]) + p[i] * own.right[j] + p[j] * own.right[i];
    }
  }
  Change bent;
  AtFixedSize(bend, model.equation, fixed, bent);
  if (model.isExact) own.second[0][0] -= Product(bent, system.right);
  // The unknown that a parabola does not have stays where it is.
  own.product[kParabolaUnknowns][kParabolaUnknowns] = 1.0;
  std::copy_n(&own.product[0][0], kConicUnknowns * kConicUnknowns, &system.product[0][0]);
  std::copy_n(&own.second[0][0], kConicUnknowns * kConicUnknowns, &system.second[0][0]);
  std::copy_n(own.right, kConicUnknowns, system.right);
}

}  // namespace nu::engine::least_squares
