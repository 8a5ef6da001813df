#include "nu/foundation/numeric_helpers.h"

#include <algorithm>
#include <cmath>

#include "nu/engine/base/elementary.h"
#include "nu/engine/base/pythag.h"
#include "nu/engine/base/sort.h"
#include "nu/foundation/constants.h"
#include "nu/foundation/exceptions.h"
#include "nu/foundation/internal/outputs.h"
#include "nu/foundation/tolerances.h"

using namespace nu::internal;

namespace {

// The remainder is exact; a negative one is rounded once, when the turn is added, which may lead to the full turn.
double ReducedAngle(double angle, double turn) {
  double x = angle;
  if (!(x >= 0.0 && x < turn)) {
    x = std::fmod(x, turn);
    if (x < 0.0) x += turn;
    if (x >= turn) x -= turn;
  }
  const double zero = NuGetZero();
  if (std::fabs(x) < zero || std::fabs(x - turn) < zero) return 0.0;
  return x;
}

}  // namespace

ENuBoolean NuIsEqual(int na, int nb, const double* a, const double* b, double tol) {
  if (na < 0 || nb < 0 || a == nullptr || b == nullptr || na != nb) return NuFalse;
  return std::equal(a, a + na, b, [tol](double x, double y) { return std::fabs(x - y) < tol; }) ? NuTrue : NuFalse;
}

// The ratio of equal magnitudes is 1 also where both are infinite, so that the result is infinite and not a NaN. Every
// comparison is written so that a NaN among the arguments reaches the result.

double NuPythag(double a, double b) {
  double p = std::fabs(a);
  double q = std::fabs(b);
  if (p < q) std::swap(p, q);
  if (p < NuGetZero()) return 0.0 * q;
  const double qp = q == p ? 1.0 : q / p;
  return p * std::sqrt(1.0 + qp * qp);
}

double NuPythag(double a, double b, double c) {
  return Pythag(a, b, c, NuGetZero());
}

void NuSort(int n, double* a) {
  nu::internal::Sort(n, a);
}

void NuSort(int n, const double* a, int* index) {
  SortIndex(n, a, index);
}

void NuSort(int n, double* a, double* b) {
  SortTogether(n, a, b);
}

double NuAngleIn360Degree(double deg) {
  return ReducedAngle(deg, 360.0);
}

double NuAngleIn2Pi(double rad) {
  return ReducedAngle(rad, Nu_2PI);
}

double NuArcCosSin(double c, double s) {
  if (std::isnan(c) || std::isnan(s)) return c + s;
  const double zero = NuGetZero();
  if (std::fabs(c) < zero) return s <= 0.0 ? 1.5 * Nu_PI : 0.5 * Nu_PI;
  const double t = Atan(s / c);
  // A quotient that vanishes has lost the side of the axis on which s lies, but not the one on which c does.
  if (std::fabs(s) < zero || t == 0.0) return c <= 0.0 ? Nu_PI : 0.0;
  if (t > 0.0) return s < 0.0 ? t + Nu_PI : t;
  if (s > 0.0) return t + Nu_PI;
  // A tiny negative angle plus a full turn rounds to the full turn, which is no angle of the range.
  const double angle = t + Nu_2PI;
  return angle >= Nu_2PI ? 0.0 : angle;
}

void NuCosSin(double angle, double* c, double* s) {
  auto [sine, cosine] = SinCos(angle);
  const double zero = NuGetZero();
  if (std::fabs(std::fabs(cosine) - 1.0) < zero) {
    sine = 0.0;
  } else if (std::fabs(std::fabs(sine) - 1.0) < zero) {
    cosine = 0.0;
  } else if (std::fabs(cosine - sine) < NuGetTol()) {
    cosine = sine = (cosine + sine) / 2.0;
  }
  Output(c, cosine);
  Output(s, sine);
}

ENuBoolean NuIsTriangle(double a, double b, double c, double tol) {
  return c + tol < a + b && a + tol < b + c && b + tol < a + c ? NuTrue : NuFalse;
}

double nu::acosh(double x) {
  if (!(x >= 1.0)) throw CNuOperationException(NuOperationDomain, "calculation", "acosh", 0, 0, 0.0, 0.0);
  // ln(x + sqrt(x^2 - 1)), without the overflow of the square and the cancellation near 1.
  return Acosh(x);
}
