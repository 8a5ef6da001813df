#ifndef NU_CURVES_INTERNAL_CONIC_KERNELS_H
#define NU_CURVES_INTERNAL_CONIC_KERNELS_H

#include "nu/curves/internal/conics.h"
#include "nu/geometry/internal/lanes.h"
#include "nu/geometry/internal/point_blocks.h"

// The distance of eight points at a time from a conic, and its derivatives.
//
// In the quadrant x, y >= 0 the foot is found by Newton's method on its parameter, from the foot of the point moved
// onto the conic along the gradient, which is off by the square of the distance. A step is a rotation, circular or
// hyperbolic, by the angle whose half has the tangent h / 2 h', so that it takes one division and no root. What does
// not converge, near the evolute for example, is found by FootOn.
//
// With n the unit normal at the foot, on the side of growing x^2/a^2 + y^2/b^2 or its like, the deviation is
// e = n . (p - foot), and a change of the conic that moves the foot by d takes n . d from it; that the foot moves along
// the curve as well does not count. Columns hold n . d for the unknowns.
namespace nu::internal {

// A conic as the kernels see it: a coordinate is the component along x or y minus the offset.
template<class Curve>
struct ConicView {
  Curve curve;
  Vec3 x;
  Vec3 y;
  double xOffset = 0.0;
  double yOffset = 0.0;
  double lever = 1.0;  // the rotation is counted in this length
};

// A step below this part of a radian squares to less than a rounding.
inline constexpr double kLastTurn = 0x1p-28;
inline constexpr int kNewtonSteps = 8;

using LaneMask = decltype(Lanes{} < Lanes{});

NU_ALWAYS_INLINE bool All(const LaneMask& mask) {
  auto all = mask[0];
  for (int l = 1; l < kLanes; ++l) all &= mask[l];
  return all != 0;
}

NU_ALWAYS_INLINE void TakeMagnitude(const Lanes& from, Lanes& lanes) {
  for (int l = 0; l < kLanes; ++l) lanes[l] = std::fabs(from[l]);
}

// In a quadrant: where the foot is, as c and s or, for the parabola, its ordinate s.
struct LaneFoot {
  Lanes c;
  Lanes s;
};

NU_ALWAYS_INLINE void BeginFoot(const Ellipse2& curve, const Lanes& x, const Lanes& y, LaneFoot& foot) {
  const double aa = curve.a * curve.a;
  const double bb = curve.b * curve.b;
  const Lanes gx = x / aa;
  const Lanes gy = y / bb;
  const Lanes f = x * gx + y * gy - 1.0;
  const Lanes g = 2.0 * (gx * gx + gy * gy);
  foot.c = x * (g - f / aa) / curve.a;
  foot.s = y * (g - f / bb) / curve.b;
  Lanes length = foot.c * foot.c + foot.s * foot.s;
  TakeSquareRoot(length);
  const Lanes inverse = 1.0 / length;
  foot.c *= inverse;
  foot.s *= inverse;
}

NU_ALWAYS_INLINE void ImproveFoot(const Ellipse2& curve, const Lanes& x, const Lanes& y, LaneFoot& foot,
                                  LaneMask& done) {
  const double focal = (curve.a - curve.b) * (curve.a + curve.b);
  const Lanes ax = curve.a * x;
  const Lanes by = curve.b * y;
  const Lanes half = 0.5 * (ax * foot.s - by * foot.c - focal * foot.s * foot.c);
  const Lanes slope = ax * foot.c + by * foot.s - focal * (foot.c - foot.s) * (foot.c + foot.s);
  const Lanes inverse = 1.0 / (slope * slope + half * half);
  const Lanes cosine = (slope * slope - half * half) * inverse;
  const Lanes sine = 2.0 * slope * half * inverse;
  const Lanes c = foot.c * cosine + foot.s * sine;
  foot.s = foot.s * cosine - foot.c * sine;
  foot.c = c;
  done = (half <= kLastTurn * slope) & (half >= -kLastTurn * slope) & (foot.c >= -kLastTurn) & (foot.s >= -kLastTurn);
}

NU_ALWAYS_INLINE void RescueFoot(const Ellipse2& curve, double x, double y, int l, LaneFoot& foot) {
  const Vec2 exact = FootOn(curve, {x, y});
  foot.c[l] = exact.x / curve.a;
  foot.s[l] = exact.y / curve.b;
}

NU_ALWAYS_INLINE void BeginFoot(const Hyperbola2& curve, const Lanes& x, const Lanes& y, LaneFoot& foot) {
  const double aa = curve.a * curve.a;
  const double bb = curve.b * curve.b;
  const Lanes gx = x / aa;
  const Lanes gy = y / bb;
  const Lanes f = x * gx - y * gy - 1.0;
  const Lanes g = 2.0 * (gx * gx + gy * gy);
  foot.s = y * (1.0 + f / (bb * g)) / curve.b;
  foot.c = 1.0 + foot.s * foot.s;
  TakeSquareRoot(foot.c);
}

NU_ALWAYS_INLINE void ImproveFoot(const Hyperbola2& curve, const Lanes& x, const Lanes& y, LaneFoot& foot,
                                  LaneMask& done) {
  const double square = curve.a * curve.a + curve.b * curve.b;
  const Lanes ax = curve.a * x;
  const Lanes by = curve.b * y;
  const Lanes half = 0.5 * (square * foot.s * foot.c - ax * foot.s - by * foot.c);
  const Lanes slope = square * (foot.c * foot.c + foot.s * foot.s) - ax * foot.c - by * foot.s;
  const Lanes inverse = 1.0 / (slope * slope - half * half);
  const Lanes cosine = (slope * slope + half * half) * inverse;
  const Lanes sine = 2.0 * slope * half * inverse;
  foot.s = foot.s * cosine - foot.c * sine;
  foot.c = 1.0 + foot.s * foot.s;
  TakeSquareRoot(foot.c);
  done = (half <= kLastTurn * slope) & (half >= -kLastTurn * slope) & (foot.s >= -kLastTurn);
}

NU_ALWAYS_INLINE void RescueFoot(const Hyperbola2& curve, double x, double y, int l, LaneFoot& foot) {
  foot.s[l] = FootOn(curve, {x, y}).y / curve.b;
  foot.c[l] = std::sqrt(1.0 + foot.s[l] * foot.s[l]);
}

NU_ALWAYS_INLINE void BeginFoot(const Parabola2& curve, const Lanes& x, const Lanes& y, LaneFoot& foot) {
  const double f = curve.f;
  const Lanes value = y * y - 4.0 * f * x;
  foot.s = y * (1.0 - 0.5 * value / (4.0 * f * f + y * y));
}

NU_ALWAYS_INLINE void ImproveFoot(const Parabola2& curve, const Lanes& x, const Lanes& y, LaneFoot& foot,
                                  LaneMask& done) {
  const double cubic = 1.0 / (8.0 * curve.f * curve.f);
  const Lanes linear = 1.0 - x / (2.0 * curve.f);
  const Lanes squared = cubic * foot.s * foot.s;
  const Lanes value = (squared + linear) * foot.s - y;
  const Lanes slope = 3.0 * squared + linear;
  foot.s -= value / slope;
  const Lanes last = kLastTurn * (2.0 * curve.f + foot.s) * slope;
  done = (value <= last) & (value >= -last) & (foot.s >= -kLastTurn * curve.f) & (slope > 0.0);
}

NU_ALWAYS_INLINE void RescueFoot(const Parabola2& curve, double x, double y, int l, LaneFoot& foot) {
  foot.s[l] = FootOn(curve, {x, y}).y;
}

template<class Curve>
NU_ALWAYS_INLINE void FindFoot(const Curve& curve, const Lanes& x, const Lanes& y, LaneFoot& foot) {
  BeginFoot(curve, x, y, foot);
  LaneMask done;
  for (int step = 0; step < kNewtonSteps; ++step) {
    ImproveFoot(curve, x, y, foot, done);
    if (All(done)) return;
  }
  for (int l = 0; l < kLanes; ++l)
    if (!done[l]) RescueFoot(curve, x[l], y[l], l, foot);
}

// The normal, the deviation and the columns of the shape and of the rotation, all in the quadrant.
template<bool WithColumns>
NU_ALWAYS_INLINE void Deviate(const ConicView<Ellipse2>& view, const Lanes& x, const Lanes& y, const LaneFoot& foot,
                              Lanes& e, Lanes (&column)[5]) {
  const double a = view.curve.a;
  const double b = view.curve.b;
  Lanes nx = b * foot.c;
  Lanes ny = a * foot.s;
  Lanes length = nx * nx + ny * ny;
  TakeSquareRoot(length);
  const Lanes inverse = 1.0 / length;
  nx *= inverse;
  ny *= inverse;
  e = nx * (x - a * foot.c) + ny * (y - b * foot.s);
  if constexpr (WithColumns) {
    column[0] = nx;
    column[1] = ny;
    column[2] = nx * foot.c;
    column[3] = ny * foot.s;
    column[4] = (a + b) * foot.s * foot.c * inverse;
  }
}

template<bool WithColumns>
NU_ALWAYS_INLINE void Deviate(const ConicView<Hyperbola2>& view, const Lanes& x, const Lanes& y, const LaneFoot& foot,
                              Lanes& e, Lanes (&column)[5]) {
  const double a = view.curve.a;
  const double b = view.curve.b;
  Lanes nx = b * foot.c;
  Lanes ny = -a * foot.s;
  Lanes length = nx * nx + ny * ny;
  TakeSquareRoot(length);
  const Lanes inverse = 1.0 / length;
  nx *= inverse;
  ny *= inverse;
  e = nx * (x - a * foot.c) + ny * (y - b * foot.s);
  if constexpr (WithColumns) {
    column[0] = nx;
    column[1] = ny;
    column[2] = nx * foot.c;
    column[3] = ny * foot.s;
    column[4] = -((a * a + b * b) / view.lever) * foot.s * foot.c * inverse;
  }
}

template<bool WithColumns>
NU_ALWAYS_INLINE void Deviate(const ConicView<Parabola2>& view, const Lanes& x, const Lanes& y, const LaneFoot& foot,
                              Lanes& e, Lanes (&column)[4]) {
  const double f = view.curve.f;
  const Lanes footX = foot.s * foot.s / (4.0 * f);
  Lanes length = 4.0 * f * f + foot.s * foot.s;
  TakeSquareRoot(length);
  const Lanes inverse = 1.0 / length;
  const Lanes nx = -2.0 * f * inverse;
  const Lanes ny = foot.s * inverse;
  e = nx * (x - footX) + ny * (y - foot.s);
  if constexpr (WithColumns) {
    column[0] = nx;
    column[1] = ny;
    column[2] = -nx * footX / f;
    column[3] = (ny * footX - nx * foot.s) / view.lever;
  }
}

// The parabola has one quadrant less: x keeps its sign.
template<class Curve>
inline constexpr bool kMirrorsX = true;
template<>
inline constexpr bool kMirrorsX<Parabola2> = false;

// Eight points from i on: their coordinates in the frame of the conic, their deviations and, signed, their columns.
template<bool WithColumns, class Curve, int K>
NU_ALWAYS_INLINE void DeviateAt(const PointBlock& block, std::size_t i, const ConicView<Curve>& view, Lanes& x,
                                Lanes& y, Lanes& e, Lanes (&column)[K]) {
  Lanes px, py, pz;
  Load(block.x + i, px);
  Load(block.y + i, py);
  Load(block.z + i, pz);
  x = view.x.x * px + view.x.y * py + view.x.z * pz - view.xOffset;
  y = view.y.x * px + view.y.y * py + view.y.z * pz - view.yOffset;
  Lanes ax = x;
  Lanes ay;
  if constexpr (kMirrorsX<Curve>) TakeMagnitude(x, ax);
  TakeMagnitude(y, ay);
  LaneFoot foot = {};
  FindFoot(view.curve, ax, ay, foot);
  Deviate<WithColumns>(view, ax, ay, foot, e, column);
  if constexpr (WithColumns) {
    const Lanes one = 1.0 - Lanes{};
    const Lanes signX = kMirrorsX<Curve> ? (x < 0.0 ? -one : one) : one;
    const Lanes signY = y < 0.0 ? -one : one;
    column[0] *= signX;
    column[1] *= signY;
    column[K - 1] *= signX * signY;
  }
}

}  // namespace nu::internal

#endif
