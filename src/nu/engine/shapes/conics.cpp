// Closest points. All are found in the quadrant of |x|, |y|, where the foot is unique off the axes.
//
// Ellipse (D. Eberly, Distance from a Point to an Ellipse, 2011). The foot is (a C, b S), C = m / (u + k), S = n / u
// with m = a x / b^2, n = y / b, k = (a^2 - b^2) / b^2, where u > 0 solves C^2 + S^2 = 1. C^2 + S^2 falls and is convex
// in u, and u = max(n, m - k) is left of the root, so Newton's method comes from the left and cannot miss. Written in
// u, nothing cancels at the major axis, where u becomes small.
//
// Hyperbola. With w = a^2 + b^2 the foot (a sqrt(1 + S^2), b S) has
//   w S - a x S / sqrt(1 + S^2) - b y = 0,
// which is convex for S >= 0 and not positive at S = 0; at (a x + b y) / w it is not negative, and Newton's method
// comes from there.
//
// Parabola. With y = f q, the foot (f q^2 / 4, f q) has q^3 + p q = r for p = 8 - 4 x / f and r = 8 |y| / f: convex
// again, and not below r at cbrt(r) + sqrt(max(-p, 0)).

#include "nu/engine/shapes/conics.h"

#include <algorithm>

#include "nu/engine/base/elementary.h"
#include "nu/engine/shapes/foot_steps.h"

namespace nu::engine::shapes {
namespace {

// From a start on one side of the root of a convex function, whose steps all lead on in one direction until rounding
// turns one round. step(u) is the value over the slope.
template<class Step>
double MonotoneRoot(double u, bool rising, Step step) {
  for (int k = 0; k < kMostFootSteps; ++k) {
    const double next = u - step(u);
    if (!(rising ? next > u : next < u)) break;
    u = next;
  }
  return u;
}

// In the quadrant: the foot as (C, S) of unit length.
Vec2 UnitFoot(const Ellipse2& curve, Vec2 p) {
  const double ratio = curve.a / curve.b;
  const double k = (ratio - 1.0) * (ratio + 1.0);
  const double m = ratio * (p.x / curve.b);
  const double n = p.y / curve.b;
  if (n == 0.0 && m <= k) {
    const double c = k > 0.0 ? m / k : 0.0;
    return {c, std::sqrt((1.0 - c) * (1.0 + c))};
  }
  const double u = MonotoneRoot(std::max(n, m - k), true, [&](double at) {
    double step;
    FindEllipseStep(m, n, k, at, step);
    return step;
  });
  const Vec2 foot{m / (u + k), n / u};
  return (1.0 / std::sqrt(Dot(foot, foot))) * foot;
}

double Sine(const Hyperbola2& curve, Vec2 p) {
  const double scale = curve.Size();
  const double a = curve.a / scale;
  const double b = curve.b / scale;
  const double w = a * a + b * b;
  const double m = a * (p.x / scale) / w;
  const double n = b * (p.y / scale) / w;
  if (n == 0.0) return m > 1.0 ? std::sqrt((m - 1.0) * (m + 1.0)) : 0.0;
  return MonotoneRoot(m + n, false, [&](double s) {
    double step;
    FindHyperbolaStep(m, n, s, step);
    return step;
  });
}

double Ordinate(const Parabola2& curve, Vec2 p) {
  const double linear = 8.0 - 4.0 * (p.x / curve.f);
  const double right = 8.0 * (p.y / curve.f);
  if (right == 0.0) return linear < 0.0 ? std::sqrt(-linear) : 0.0;
  const double start = Cbrt(right) + std::sqrt(std::max(-linear, 0.0));
  return MonotoneRoot(start, false, [&](double q) { return ((q * q + linear) * q - right) / (3.0 * q * q + linear); });
}

Vec2 InQuadrant(Vec2 p) {
  return {std::fabs(p.x), std::fabs(p.y)};
}

Vec2 WithSigns(Vec2 foot, Vec2 p) {
  return {std::copysign(foot.x, p.x), std::copysign(foot.y, p.y)};
}

// The roots of A s^2 + 2 B s + C where the square root of B^2 - A C is known.
Crossings TwoRoots(double A, double B, double C, double root) {
  const double far = -(B + std::copysign(root, B));
  const double s[2] = {far / A, far != 0.0 ? C / far : -far / A};
  return {2, {std::min(s[0], s[1]), std::max(s[0], s[1])}};
}

Crossings OneRoot(double s) {
  return {1, {s, 0.0}};
}

}  // namespace

bool Ellipse2::Holds(Vec2 p) const {
  const double x = p.x / a;
  const double y = p.y / b;
  return x * x + y * y < 1.0;
}

bool Hyperbola2::Holds(Vec2 p) const {
  const double x = p.x / a;
  const double y = p.y / b;
  return (x - y) * (x + y) > 1.0;
}

bool Parabola2::Holds(Vec2 p) const {
  const double y = p.y / f;
  return y * y < 4.0 * (p.x / f);
}

Vec2 FootOn(const Ellipse2& curve, Vec2 p) {
  const Vec2 foot = UnitFoot(curve, InQuadrant(p));
  return WithSigns({curve.a * foot.x, curve.b * foot.y}, p);
}

Vec2 FootOn(const Hyperbola2& curve, Vec2 p) {
  const double s = Sine(curve, InQuadrant(p));
  return WithSigns({curve.a * std::sqrt(1.0 + s * s), curve.b * s}, p);
}

Vec2 FootOn(const Parabola2& curve, Vec2 p) {
  const double q = Ordinate(curve, {p.x, std::fabs(p.y)});
  return {curve.f * (0.25 * q * q), std::copysign(curve.f * q, p.y)};
}

// The tangents along d have the offsets +-h, h^2 = a^2 d.y^2 + b^2 d.x^2. The roots' discriminant is (a b)^2 times
// h^2 - offset^2, so nothing cancels but where the line touches.
Crossings Intersect(const Line2& line, const Ellipse2& curve, double tol, double) {
  const Vec2 d = line.direction;
  const double b = curve.b / curve.a;
  const double offset = line.offset / curve.a;
  const double square = d.y * d.y + b * b * d.x * d.x;
  const double h = std::sqrt(square);
  const double middle = -line.offset * d.x * d.y * (1.0 - b) * (1.0 + b) / square;
  if (std::fabs(h * curve.a - std::fabs(line.offset)) <= tol) return OneRoot(middle);
  if (!(std::fabs(offset) < h)) return {};
  const double half = curve.b * std::sqrt((h - offset) * (h + offset)) / square;
  return {2, {middle - half, middle + half}};
}

// As for the ellipse with -b^2 for b^2: there are tangents along d where h^2 is positive, and the line has to be
// outside them. Lengths are relative to a.
Crossings Intersect(const Line2& line, const Hyperbola2& curve, double tol, double sineTol) {
  const Vec2 d = line.direction;
  const double b = curve.b / curve.a;
  const double offset = line.offset / curve.a;
  const double slope = std::sqrt(1.0 + b * b);
  const double square = (std::fabs(d.y) - b * std::fabs(d.x)) * (std::fabs(d.y) + b * std::fabs(d.x));
  const double B = -offset * d.x * d.y * slope * slope;
  const double C = offset * offset * (b * d.y - d.x) * (b * d.y + d.x) - b * b;
  if (IsParallel(std::fabs(std::fabs(d.y) - b * std::fabs(d.x)) / slope, sineTol)) {
    if (std::fabs(line.offset) <= tol) return {};
    return OneRoot(-0.5 * C / B * curve.a);
  }
  const double h = square > 0.0 ? std::sqrt(square) : 0.0;
  if (square > 0.0 && std::fabs(std::fabs(offset) - h) * curve.a <= tol) return OneRoot(B / square * curve.a);
  if (square > 0.0 && !(std::fabs(offset) > h)) return {};
  Crossings crossings = TwoRoots(-square, B, C, b * std::sqrt(offset * offset - square));
  for (double& s : crossings.s) s *= curve.a;
  return crossings;
}

// The tangent along d has the offset f d.x^2 / d.y.
Crossings Intersect(const Line2& line, const Parabola2& curve, double tol, double sineTol) {
  const Vec2 d = line.direction;
  const double offset = line.offset / curve.f;
  const double B = offset * d.x * d.y - 2.0 * d.x;
  const double C = offset * (offset * d.x * d.x + 4.0 * d.y);
  if (IsParallel(std::fabs(d.y), sineTol)) return OneRoot(-0.5 * C / B * curve.f);
  const double inside = d.x * d.x / d.y - offset;
  if (std::fabs(inside) * curve.f <= tol) return OneRoot(-B / (d.y * d.y) * curve.f);
  if (!(inside * d.y > 0.0)) return {};
  Crossings crossings = TwoRoots(d.y * d.y, B, C, 2.0 * std::sqrt(inside * d.y));
  for (double& s : crossings.s) s *= curve.f;
  return crossings;
}

}  // namespace nu::engine::shapes
