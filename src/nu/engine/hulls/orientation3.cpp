#include "nu/engine/hulls/orientation3.h"

#include "nu/engine/base/exact_sum.h"
#include "nu/engine/hulls/orientation2.h"

namespace nu::engine::hulls {
namespace {

// x y z without rounding, as four doubles.
template<int kCapacity>
void AddProduct(ExactSum<kCapacity>& sum, double x, double y, double z) {
  const DoubleDouble xy = TwoProduct(x, y);
  sum.AddProduct(xy.low, z);
  sum.AddProduct(xy.high, z);
}

// The determinant of three rows, each the exact difference of two points, in two parts. With `parts` 1 the second parts
// are all zero.
template<int parts>
int SignOfDeterminant(const DoubleDouble (&row)[3][3]) {
  constexpr int kOrders[6][3] = {{0, 1, 2}, {1, 2, 0}, {2, 0, 1}, {0, 2, 1}, {2, 1, 0}, {1, 0, 2}};
  const auto part = [](const DoubleDouble& d, int k) { return k == 0 ? d.high : d.low; };
  ExactSum<24 * parts * parts * parts> sum;
  for (int order = 0; order < 6; ++order) {
    const double sign = order < 3 ? 1.0 : -1.0;
    const int* column = kOrders[order];
    for (int i = 0; i < parts; ++i) {
      for (int j = 0; j < parts; ++j) {
        for (int k = 0; k < parts; ++k) {
          AddProduct(sum, sign * part(row[0][column[0]], i), part(row[1][column[1]], j), part(row[2][column[2]], k));
        }
      }
    }
  }
  return sum.Sign();
}

// The determinant in double-double arithmetic and the sum of the magnitudes of its terms.
struct Estimate {
  double value;
  double magnitude;
};
Estimate EstimateDeterminant(const DoubleDouble (&row)[3][3]) {
  DoubleDouble value;
  double magnitude = 0.0;
  for (int i = 0; i < 3; ++i) {
    const int j = (i + 1) % 3, k = (i + 2) % 3;
    const DoubleDouble left = row[1][j] * row[2][k];
    const DoubleDouble right = row[1][k] * row[2][j];
    value = value + row[0][i] * (left - right);
    magnitude += std::fabs(row[0][i].high) * (std::fabs(left.high) + std::fabs(right.high));
  }
  return {value.high, magnitude};
}

}  // namespace

int ExactTurn3(const double* p, const double* q, const double* r, const double* s, const double* t, const double* u) {
  // Far above the rounding of about twenty operations with 104 bits.
  constexpr double kEstimateError = 0x1p-94;
  DoubleDouble row[3][3];
  bool single = true;
  for (int k = 0; k < 3; ++k) {
    row[0][k] = Difference(q[k], p[k]);
    row[1][k] = Difference(s[k], r[k]);
    row[2][k] = Difference(u[k], t[k]);
    for (const auto& vector : row) single = single && vector[k].low == 0.0;
  }
  const Estimate estimate = EstimateDeterminant(row);
  if (std::fabs(estimate.value) > kEstimateError * estimate.magnitude) return estimate.value > 0.0 ? 1 : -1;
  return single ? SignOfDeterminant<1>(row) : SignOfDeterminant<2>(row);
}

bool AreCollinear3(const double* a, const double* b, const double* c) {
  if (Orientation2(a, b, c) != 0 || Orientation2(a + 1, b + 1, c + 1) != 0) return false;
  const double ax[] = {a[0], a[2]}, bx[] = {b[0], b[2]}, cx[] = {c[0], c[2]};
  return Orientation2(ax, bx, cx) == 0;
}

}  // namespace nu::engine::hulls
