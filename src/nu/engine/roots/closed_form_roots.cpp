#include "nu/engine/roots/closed_form_roots.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <utility>

#include "nu/engine/base/elementary.h"
#include "nu/engine/base/error_free.h"
#include "nu/engine/roots/power_scale.h"

namespace nu::engine::roots {
namespace {

// a quadratic x^2 + linear x + constant
struct Factor {
  double linear;
  double constant;
};

// Returns the root of t^3 + 3 p t + 2 q that is farthest from the middle of the three, or the only real one.
double OuterRoot(double p, double q) {
  const double discriminant = q * q + p * p * p;
  if (discriminant < 0.0) {
    const double radius = std::sqrt(-p);
    const double cosine = std::min(std::fabs(q) / (radius * -p), 1.0);
    return -std::copysign(2.0 * radius * Cos(Acos(cosine) * (1.0 / 3.0)), q);
  }
  const double u = Cbrt(std::fabs(q) + std::sqrt(discriminant));
  if (u == 0.0) return 0.0;
  const double v = p / u;
  // With p > 0 the sum of the two cube roots would cancel.
  return p > 0.0 ? -2.0 * q / (u * u + v * v + p) : -std::copysign(u - v, q);
}

// Newton's method on the cubic itself, as its depressed form has lost digits of a root that is small beside the others.
double ImproveCubicRoot(const double* c, double x) {
  constexpr int kMaxSteps = 10;
  for (int k = 0; k < kMaxSteps; ++k) {
    const double high = c[3] * x + c[2];
    const double middle = high * x + c[1];
    const double value = middle * x + c[0];
    const double slope = (c[3] * x + high) * x + middle;
    const double size = ((std::fabs(c[3] * x) + std::fabs(high)) * std::fabs(x) + std::fabs(middle)) * std::fabs(x);
    const double next = x - value / slope;
    if (!std::isfinite(next)) return x;
    if (std::fabs(value) <= kRounding * (size + std::fabs(c[0]))) return next;
    x = next;
  }
  return x;
}

double LargestResolventRoot(double p, double q, double r) {
  // Returns the largest root of z^3 + 2 p z^2 + (p^2 - 4 r) z - q^2, with z = t - 2 p / 3.
  const double shift = p * (2.0 / 3.0);
  const double linear = p * p - 4.0 * r;
  const double cubicP = linear * (1.0 / 3.0) - shift * shift;
  const double cubicQ = shift * shift * shift - 0.5 * (shift * linear + q * q);
  const double discriminant = cubicQ * cubicQ + cubicP * cubicP * cubicP;
  if (!(discriminant < 0.0)) {
    const double outer = OuterRoot(cubicP, cubicQ);
    // The resolvent has a root that is not negative; where the outer root is negative, that is the double root.
    return outer >= shift ? outer - shift : -0.5 * outer - shift;
  }
  const double radius = std::sqrt(-cubicP);
  const double cosine = std::clamp(-cubicQ / (radius * -cubicP), -1.0, 1.0);
  return 2.0 * radius * Cos(Acos(cosine) * (1.0 / 3.0)) - shift;
}

// Returns the factors of y^4 + p y^2 + q y + r.
std::pair<Factor, Factor> FactorsOfDepressed(double p, double q, double r, double lengthTol) {
  const double z = LargestResolventRoot(p, q, r);
  const double u = std::sqrt(std::max(z, 0.0));
  if (!(u > lengthTol)) {
    const double half = 0.5 * p;
    const double larger = half + std::copysign(std::sqrt(std::max(half * half - r, 0.0)), half);
    return {{0.0, larger}, {0.0, larger == 0.0 ? 0.0 : r / larger}};
  }
  double v = 0.5 * (p + z - q / u);
  double w = 0.5 * (p + z + q / u);
  if (std::fabs(v) > std::fabs(w)) {
    w = r / v;
  } else if (w != 0.0) {
    v = r / w;
  }
  return {{u, v}, {-u, w}};
}

// The differences of the coefficients of x^3, x^2, x and 1 between x^4 + m_3 x^3 + ... + m_0 and (x^2 + a x + b) (x^2 +
// c x + d), and the sum of their sizes relative to the terms of each.
struct Lack {
  double e3, e2, e1, e0;
  double relative;
};

Lack LackOf(const double* m, const Factor& f, const Factor& g) {
  const double a = f.linear, b = f.constant, c = g.linear, d = g.constant;
  Lack lack = {m[3] - (a + c), m[2] - (b + d + a * c), m[1] - (a * d + b * c), m[0] - b * d, 0.0};
  const auto part = [](double e, double size) { return e == 0.0 ? 0.0 : std::fabs(e) / size; };
  lack.relative = part(lack.e3, std::fabs(a) + std::fabs(c)) +
                  part(lack.e2, std::fabs(b) + std::fabs(d) + std::fabs(a * c)) +
                  part(lack.e1, std::fabs(a * d) + std::fabs(b * c)) + part(lack.e0, std::fabs(m[0]));
  return lack;
}

// Makes a Newton step; the corrections of c and d follow from those of a and b.
void StepFactors(const Lack& lack, Factor* f, Factor* g) {
  const double a = f->linear, b = f->constant, c = g->linear, d = g->constant;
  const double k2 = lack.e2 - a * lack.e3;
  const double m11 = d - b + a * (a - c);
  const double m12 = c - a;
  const double m21 = b * (a - c);
  const double m22 = d - b;
  const double r1 = lack.e1 - a * k2 - b * lack.e3;
  const double r2 = lack.e0 - b * k2;
  const double det = m11 * m22 - m12 * m21;
  const double da = (r1 * m22 - r2 * m12) / det;
  const double db = (m11 * r2 - m21 * r1) / det;
  *f = {a + da, b + db};
  *g = {c + (lack.e3 - da), d + (k2 - db + (a - c) * da)};
}

// Improves the factors by Newton's method on the coefficients of the product, while the error decreases.
void ImproveFactors(const double* m, Factor* first, Factor* second) {
  constexpr int kMaxSteps = 8;
  constexpr double kEnough = 8.0 * kRounding;
  double bestError = HUGE_VAL;
  Factor f = *first;
  Factor g = *second;
  for (int k = 0; k < kMaxSteps; ++k) {
    const Lack lack = LackOf(m, f, g);
    if (!(lack.relative < bestError)) return;
    bestError = lack.relative;
    *first = f;
    *second = g;
    if (bestError <= kEnough) return;
    StepFactors(lack, &f, &g);
  }
}

// Solves a x^2 - 2 half x + constant = 0, with x in the unit 2^k.
int SolveModerateQuadratic(double a, double half, double constant, int k, FoundRoot* roots) {
  const double discriminant = DifferenceOfProducts(half, half, a, constant);
  // There is a double root when 4 c_0 c_2 = c_1^2 up to changes of the coefficients by this share of a rounding.
  constexpr double kHalfRounding = 0.5 * kRounding;
  if (-discriminant > 4.0 * kHalfRounding * half * half) {
    roots[0] = {TimesPower(half / a, k), TimesPower(std::sqrt(-discriminant) / std::fabs(a), k), true};
    return 1;
  }
  if (discriminant <= 0.0) {
    roots[0] = roots[1] = {TimesPower(half / a, k), 0.0, false};
    return 2;
  }
  const double larger = half + std::copysign(std::sqrt(discriminant), half);
  roots[0] = {TimesPower(larger / a, k), 0.0, false};
  roots[1] = {TimesPower(constant / larger, k), 0.0, false};
  return 2;
}

}  // namespace

int SolveLinear(const double* c, FoundRoot* roots) {
  roots[0] = {-c[0] / c[1], 0.0, false};
  return 1;
}

int SolveQuadratic(const double* c, FoundRoot* roots) {
  // The errors of products in this range are exact.
  constexpr int kSafe = 200;
  const auto isModerate = [](double x) { return std::abs(ExponentOf(x)) < kSafe; };
  if (isModerate(c[0]) && isModerate(c[2]) && (c[1] == 0.0 || isModerate(c[1]))) {
    return SolveModerateQuadratic(c[2], -0.5 * c[1], c[0], 0, roots);
  }
  // Takes the unit of x in which the outer coefficients are of the same size.
  const int k = (ExponentOf(c[0]) - ExponentOf(c[2])) / 2;
  const int e = std::max({ExponentOf(c[0]), c[1] == 0.0 ? std::numeric_limits<int>::min() : ExponentOf(c[1]) + k,
                          ExponentOf(c[2]) + 2 * k});
  return SolveModerateQuadratic(TimesPower(c[2], 2 * k - e), -0.5 * TimesPower(c[1], k - e), TimesPower(c[0], -e), k,
                                roots);
}

int SolveCubic(const double* c, FoundRoot* roots) {
  const double inverse = 1.0 / c[3];
  const double b = c[2] * inverse * (1.0 / 3.0);
  const double linear = c[1] * inverse;
  const double p = linear * (1.0 / 3.0) - b * b;
  const double q = b * b * b - 0.5 * (b * linear - c[0] * inverse);
  const double x = ImproveCubicRoot(c, OuterRoot(p, q) - b);
  roots[0] = {x, 0.0, false};
  // Divides from both ends, which meet at the largest term.
  double quotient[3] = {0.0, c[2] + x * c[3], c[3]};
  quotient[0] = c[1] + x * quotient[1];
  const double first = std::fabs(c[1] * x);
  const double upper = std::max(std::fabs(c[2] * x * x), std::fabs(c[3] * x * x * x));
  if (std::max(first, upper) > std::fabs(c[0])) {
    quotient[0] = -c[0] / x;
    if (upper > first) quotient[1] = (quotient[0] - c[1]) / x;
  }
  return 1 + SolveQuadratic(quotient, roots + 1);
}

int SolveQuartic(const double* c, double lengthTol, FoundRoot* roots) {
  const double m[4] = {c[0] / c[4], c[1] / c[4], c[2] / c[4], c[3] / c[4]};
  const double s = 0.25 * m[3];
  const double p = m[2] - 6.0 * s * s;
  const double q = m[1] - 2.0 * m[2] * s + 8.0 * s * s * s;
  const double r = ((-3.0 * s * s + m[2]) * s - m[1]) * s + m[0];
  auto [f, g] = FactorsOfDepressed(p, q, r, lengthTol);
  // Replaces y by x + s.
  f = {f.linear + 2.0 * s, f.constant + s * (f.linear + s)};
  g = {g.linear + 2.0 * s, g.constant + s * (g.linear + s)};
  ImproveFactors(m, &f, &g);
  int count = 0;
  for (const Factor& factor : {f, g}) {
    const double coefficients[3] = {factor.constant, factor.linear, 1.0};
    if (factor.constant == 0.0) {
      roots[count++] = {};
      roots[count++] = {-factor.linear, 0.0, false};
    } else {
      count += SolveQuadratic(coefficients, roots + count);
    }
  }
  return count;
}

}  // namespace nu::engine::roots
