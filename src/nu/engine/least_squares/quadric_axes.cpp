#include "nu/engine/least_squares/quadric_axes.h"

#include "nu/engine/base/floating_point.h"
#include "nu/engine/linear/eigen_symmetric.h"
#include "nu/engine/linear/small_cholesky.h"

// The quadric q(p) = p^T M p + b . p + c = 0 with the least sum of squares of q over the points. Its normal equations
// hold moments up to degree 4 only. The coordinates are those of FourthMoments: a linear map of them does not change
// the quadric that is found with the constant c fixed to 1, and they make its equations well-conditioned.
//
// The constant is fixed as long as that determines the quadric and leaves little of the constant unexplained. A quadric
// that passes close to the mean point has no such constant; then all ten coefficients together have length 1. Where
// several quadrics hold all points (two circles; four lines), it is the one among them nearest to the constant 1, which
// is the solution of least length with the constant fixed.
//
// A cylinder has the eigenvalues 1, 1, 0 of M, a cone 1, 1 and a negative one: the one that is farther from its
// neighbour belongs to the axis.

namespace nu::engine::least_squares {
namespace {

constexpr int kCoefficients = 10;
// uu, vv, ww, uv, uw, vw, u, v, w, 1
constexpr int kExponents[kCoefficients][3] = {{2, 0, 0}, {0, 2, 0}, {0, 0, 2}, {1, 1, 0}, {1, 0, 1},
                                              {0, 1, 1}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 0, 0}};

// Smallest pivot, as a part of its diagonal entry, at which the fixed constant is taken to determine the quadric.
constexpr double kClearPivot = 1e-9;
// Mean square of what the other terms leave of the constant 1. A constant far from the rest is explained badly; noise
// of a tenth of the part is not more than this.
constexpr double kLargeResidual = 0.05;
// Eigenvalues of the normal equations within this part of the largest are rounding errors of its sums: the quadric
// holds all points.
constexpr double kVanishing = 64.0 * kEpsilon;
// Less of the constant than this in all those quadrics: they pass through the mean.
constexpr double kNoConstant = 1e-6;
// Eigenvalues of M within this part of the largest give no centre: their direction is that of a cylinder's axis.
constexpr double kFlat = 1e-9;

using Coefficients = double[kCoefficients];

double Product(const FourthMoments& m, int i, int j) {
  return m.Of(kExponents[i][0] + kExponents[j][0], kExponents[i][1] + kExponents[j][1],
              kExponents[i][2] + kExponents[j][2]);
}

bool SolveFixed(const double (&products)[kCoefficients][kCoefficients], Coefficients& found) {
  constexpr int kOthers = kCoefficients - 1;
  double system[kOthers][kOthers];
  double right[kOthers];
  double solution[kOthers];
  for (int i = 0; i < kOthers; ++i) {
    std::copy_n(products[i], kOthers, system[i]);
    right[i] = -products[i][kOthers];
  }
  if (!(SolvePositive(system, right, solution) > kClearPivot)) return false;
  double residual = 1.0;
  for (int i = 0; i < kOthers; ++i) residual -= solution[i] * right[i];
  std::copy_n(solution, kOthers, found);
  found[kOthers] = 1.0;
  return residual <= kLargeResidual;
}

bool SolveHomogeneous(const double (&products)[kCoefficients][kCoefficients], Coefficients& found) {
  constexpr int kLast = kCoefficients - 1;
  double values[kCoefficients];
  double vectors[kCoefficients][kCoefficients];
  if (!DecomposeSymmetric(&products[0][0], kCoefficients, kCoefficients, values, &vectors[0][0], kCoefficients))
    return false;
  int vanishing = 0;
  double constant = 0.0;
  while (vanishing < kLast && values[vanishing] <= kVanishing * values[kLast]) {
    constant += vectors[kLast][vanishing] * vectors[kLast][vanishing];
    ++vanishing;
  }
  if (constant <= kNoConstant) vanishing = 0;
  for (int i = 0; i < kCoefficients; ++i) {
    found[i] = vanishing == 0 ? vectors[i][0] : 0.0;
    for (int k = 0; k < vanishing; ++k) found[i] += vectors[kLast][k] * vectors[i][k];
  }
  return true;
}

// The eigenvectors and the centre in the principal frame of the points.
QuadricAxes AxesOf(const Coefficients& c, const double (&spread)[3]) {
  QuadricAxes axes;
  const Vec3 linear{c[6] / spread[0], c[7] / spread[1], c[8] / spread[2]};
  double form[3][3];
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      const double coefficient = i == j ? c[i] : 0.5 * c[i + j + 2];
      form[i][j] = coefficient / spread[i] / spread[j];
    }
  }
  double values[3];
  double vectors[3][3];
  if (!DecomposeSymmetric(&form[0][0], 3, 3, values, &vectors[0][0], 3)) return axes;
  const bool lowest = values[1] - values[0] >= values[2] - values[1];
  const int order[3] = {lowest ? 0 : 2, 1, lowest ? 2 : 0};
  const double largest = std::max(std::fabs(values[0]), std::fabs(values[2]));
  for (int k = 0; k < 3; ++k) {
    const int j = order[k];
    axes.axis[k] = {vectors[0][j], vectors[1][j], vectors[2][j]};
    if (std::fabs(values[j]) > kFlat * largest)
      axes.centre = axes.centre - (0.5 * Dot(linear, axes.axis[k]) / values[j]) * axes.axis[k];
  }
  axes.solvable = largest > 0.0 && IsFinite(axes.centre);
  return axes;
}

}  // namespace

QuadricAxes FindQuadricAxes(const FourthMoments& moments) {
  if (!moments.finite || !(moments.spread[2] > 0.0)) return {};
  double products[kCoefficients][kCoefficients];
  for (int i = 0; i < kCoefficients; ++i)
    for (int j = 0; j < kCoefficients; ++j) products[i][j] = Product(moments, i, j);
  Coefficients coefficients;
  if (!SolveFixed(products, coefficients) && !SolveHomogeneous(products, coefficients)) return {};
  QuadricAxes axes = AxesOf(coefficients, moments.spread);
  axes.centre = moments.Along(axes.centre);
  for (Vec3& a : axes.axis) a = moments.Along(a);
  return axes;
}

}  // namespace nu::engine::least_squares
