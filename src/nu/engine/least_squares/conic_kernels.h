#ifndef NU_ENGINE_LEAST_SQUARES_CONIC_KERNELS_H
#define NU_ENGINE_LEAST_SQUARES_CONIC_KERNELS_H

#include "nu/engine/least_squares/conic_feet.h"
#include "nu/engine/points/point_lanes.h"
#include "nu/engine/shapes/conic_equation.h"

// The distance of eight points at a time from a conic G = 0, and its derivatives by the coefficients of G.
//
// The foot of p is q = p - s grad G(q). Where the second derivatives of G are diagonal, l and m, the components of the
// gradient at q are those at p, gx and gy, over 1 + l s and 1 + m s, and s is the root of
//
//   G(q) = G(p) - s (gx^2 (1 + l s / 2) / (1 + l s)^2 + gy^2 (1 + m s / 2) / (1 + m s)^2),
//
// which falls in s as long as both denominators are positive: the foot is then on the same side of both axes of the
// conic as the point, and no other point of the conic is closer. Halley's method from s = 0 finds it. What does not
// converge, near the evolute for example, is found as FootOn does.
//
// With n the unit normal grad G / |grad G| at the foot and t the tangent, the deviation is e = n . (p - q). When the
// coefficients c change, with the monomials f of the foot and w = f / |grad G|,
//
//   de/dc = w,
//   e d2e/dc2 = e G_nn / |grad G| w w' - e (w f_n' + f_n w') / |grad G| - e^2 v v' / (1 + e k),
//   v = f_t / |grad G| - w G_nt / |grad G|,   k = G_tt / |grad G|,
//
// where indices stand for derivatives in that direction: the curve moves by -w along its normal and turns by -v, and
// the foot moves with it.
namespace nu::engine::least_squares {

// A conic as the kernels take it. A coordinate is the component along x or y minus the offset.
struct ConicView {
  Vec3 x;
  Vec3 y;
  double xOffset = 0.0;
  double yOffset = 0.0;
  ConicEquation equation;
  ConicCurvature curvature;
  ConicShape shape;  // for FootOn
  int fixed = 0;     // the coefficient that is not an unknown
};

// A step of Halley's method below this part of a radius of curvature is the last one: it cubes the error.
inline constexpr double kLastTurn = 0x1p-17;
// For a step below this one, four terms of the series for s leave less than a rounding.
inline constexpr double kSmallTurn = 0x1p-10;
inline constexpr int kHalleySteps = 6;

// 1 in the lanes whose turn, or its opposite, is above the bound or is not a number; the others stay.
NU_ALWAYS_INLINE void OpenAbove(const Lanes& bound, const Lanes& turn, Lanes& open) {
  NU_LANE_LOOP
  for (int l = 0; l < kLanes; ++l) open[l] = std::fabs(turn[l]) <= bound[l] ? open[l] : 1.0;
}

NU_ALWAYS_INLINE bool AnyOpen(const Lanes& open) {
  return Sum(open) != 0.0;
}

NU_ALWAYS_INLINE void Evaluate(const ConicEquation& equation, const Lanes& x, const Lanes& y, Lanes& value, Lanes& gx,
                               Lanes& gy) {
  const double(&c)[kMonomials] = equation.at;
  gx = 2.0 * c[0] * x + c[1] * y + c[3];
  gy = c[1] * x + 2.0 * c[2] * y + c[4];
  value = 0.5 * (x * (gx + c[3]) + y * (gy + c[4])) + c[5];
}

// The components of the gradient at the points along the axes of the conic, their squares, and G.
struct LaneGradient {
  Lanes value;
  Lanes x, y;
  Lanes xx, yy;
};

// The vector from the foot to the point, in units of the components of the gradient at the point.
struct LaneReach {
  Lanes x, y;
};

// The series for s in r = G / |grad G|^2.
NU_ALWAYS_INLINE void ReachBySeries(const ConicCurvature& curvature, const LaneGradient& g, const Lanes& inverse,
                                    const Lanes& r, LaneReach& reach) {
  const double l = curvature.steep;
  const double m = curvature.gentle;
  const Lanes lx = l * (g.xx * inverse);
  const Lanes my = m * (g.yy * inverse);
  const Lanes k1 = lx + my;
  const Lanes k2 = l * lx + m * my;
  const Lanes k3 = l * l * lx + m * m * my;
  const Lanes fourth = (16.875 * k1 * k1 - 15.0 * k2) * k1 + 2.5 * k3;
  const Lanes s = r * (1.0 + r * (1.5 * k1 + r * (4.5 * k1 * k1 - 2.0 * k2 + r * fourth)));
  const Lanes u = l * s;
  const Lanes v = m * s;
  reach.x = s * (1.0 - u * (1.0 - u * (1.0 - u * (1.0 - u))));
  reach.y = s * (1.0 - v * (1.0 - v * (1.0 - v * (1.0 - v))));
}

NU_ALWAYS_INLINE void ReachByHalley(const ConicCurvature& curvature, const LaneGradient& g, LaneReach& reach,
                                    Lanes& open) {
  const double l = curvature.steep;
  const double m = curvature.gentle;
  const double size = std::fabs(l);
  const Lanes square = g.xx + g.yy;
  Lanes s = 2.0 * g.value * square / (2.0 * square * square - 3.0 * g.value * (l * g.xx + m * g.yy));
  NU_LANE_LOOP
  for (int lane = 0; lane < kLanes; ++lane) open[lane] = std::isnan(s[lane]) ? 0.0 : 1.0;
  for (int step = 0; step < kHalleySteps && AnyOpen(open); ++step) {
    const Lanes u = 1.0 + l * s;
    const Lanes v = 1.0 + m * s;
    const Lanes inverse = 1.0 / (u * v);
    const Lanes iu = v * inverse;
    const Lanes iv = u * inverse;
    const Lanes hx = g.xx * iu * iu;
    const Lanes hy = g.yy * iv * iv;
    const Lanes rest = g.value - 0.5 * s * (hx * (1.0 + u) + hy * (1.0 + v));
    const Lanes fall = hx * iu + hy * iv;
    const Lanes bend = 3.0 * (l * hx * iu * iu + m * hy * iv * iv);
    const Lanes change = 2.0 * rest * fall / (2.0 * fall * fall - rest * bend);
    s += change;
    const Lanes turn = size * change;
    open = Lanes{};
    OpenAbove(kLastTurn * u, turn, open);
    OpenAbove(kLastTurn * v, turn, open);
  }
  const Lanes u = 1.0 + l * s;
  const Lanes v = 1.0 + m * s;
  const Lanes scaled = s / (u * v);
  reach.x = v * scaled;
  reach.y = u * scaled;
}

NU_ALWAYS_INLINE void FindFeet(const ConicView& view, const Lanes& x, const Lanes& y, Lanes& footX, Lanes& footY) {
  const Vec2 axis = view.curvature.axis;
  const double size = std::fabs(view.curvature.steep);
  LaneGradient g;
  Lanes dx, dy;
  Evaluate(view.equation, x, y, g.value, dx, dy);
  g.x = axis.x * dx + axis.y * dy;
  g.y = axis.x * dy - axis.y * dx;
  g.xx = g.x * g.x;
  g.yy = g.y * g.y;
  const Lanes inverse = 1.0 / (g.xx + g.yy);
  const Lanes r = g.value * inverse;
  const Lanes turn = size * r;
  Lanes open = {};
  OpenAbove(kSmallTurn - Lanes{}, turn, open);
  LaneReach reach;
  if (!AnyOpen(open)) {
    ReachBySeries(view.curvature, g, inverse, r, reach);
  } else {
    ReachByHalley(view.curvature, g, reach, open);
  }
  reach.x *= g.x;
  reach.y *= g.y;
  footX = x - (axis.x * reach.x - axis.y * reach.y);
  footY = y - (axis.y * reach.x + axis.x * reach.y);
  if (!AnyOpen(open)) return;
  FindFeetOn(view.shape, x, y, open, footX, footY);
}

// The deviations of the eight points from i on.
struct LaneDeviation {
  Lanes e;
  Lanes footX, footY;
  Lanes nx, ny;
  Lanes inverse;  // of the gradient's length
};

NU_ALWAYS_INLINE void DeviateAt(const PointBlock& block, std::size_t i, const ConicView& view, LaneDeviation& at) {
  Lanes px, py, pz;
  LoadPoints(block, i, px, py, pz);
  const Lanes x = view.x.x * px + view.x.y * py + view.x.z * pz - view.xOffset;
  const Lanes y = view.y.x * px + view.y.y * py + view.y.z * pz - view.yOffset;
  FindFeet(view, x, y, at.footX, at.footY);
  Lanes value, gx, gy;
  Evaluate(view.equation, at.footX, at.footY, value, gx, gy);
  Lanes length = gx * gx + gy * gy;
  TakeSquareRoot(length);
  at.inverse = 1.0 / length;
  at.nx = gx * at.inverse;
  at.ny = gy * at.inverse;
  at.e = at.nx * (x - at.footX) + at.ny * (y - at.footY) + value * at.inverse;
}

// The derivatives of the deviations by the coefficients.
NU_ALWAYS_INLINE void Differentiate(const LaneDeviation& at, Lanes (&w)[kMonomials]) {
  const Lanes& x = at.footX;
  const Lanes& y = at.footY;
  w[3] = x * at.inverse;
  w[4] = y * at.inverse;
  w[5] = at.inverse;
  w[0] = x * w[3];
  w[1] = x * w[4];
  w[2] = y * w[4];
}

// e d2e/dc2 = w z' + z w' - turn v v'.
struct LaneCurvature {
  Lanes z[kMonomials];
  Lanes v[kMonomials];
  Lanes turn;
};

// A point nearer to its centre of curvature would get a weight that spoils the step.
inline constexpr double kLeastRadius = 0x1p-6;

NU_ALWAYS_INLINE void DifferentiateTwice(const ConicView& view, const LaneDeviation& at, const Lanes (&w)[kMonomials],
                                         LaneCurvature& d) {
  const double(&c)[kMonomials] = view.equation.at;
  const Lanes& x = at.footX;
  const Lanes& y = at.footY;
  const Lanes nx = at.nx * at.inverse;
  const Lanes ny = at.ny * at.inverse;
  const Lanes xx = nx * at.nx;
  const Lanes xy = nx * at.ny;
  const Lanes yy = ny * at.ny;
  const Lanes along = 2.0 * (c[0] * xx + c[1] * xy + c[2] * yy);
  const Lanes across = 2.0 * (c[0] * yy - c[1] * xy + c[2] * xx);
  const Lanes mixed = c[1] * (xx - yy) + 2.0 * (c[2] - c[0]) * xy;
  const Lanes half = 0.5 * along * at.e;
  Lanes radius = kLeastRadius - Lanes{};
  TakeLarger(1.0 + at.e * across, radius);
  d.turn = at.e * at.e / radius;
  d.z[0] = half * w[0] - 2.0 * at.e * x * nx;
  d.z[1] = half * w[1] - at.e * (x * ny + y * nx);
  d.z[2] = half * w[2] - 2.0 * at.e * y * ny;
  d.z[3] = half * w[3] - at.e * nx;
  d.z[4] = half * w[4] - at.e * ny;
  d.z[5] = half * w[5];
  d.v[0] = -2.0 * x * ny - w[0] * mixed;
  d.v[1] = x * nx - y * ny - w[1] * mixed;
  d.v[2] = 2.0 * y * nx - w[2] * mixed;
  d.v[3] = -ny - w[3] * mixed;
  d.v[4] = nx - w[4] * mixed;
  d.v[5] = -w[5] * mixed;
}

}  // namespace nu::engine::least_squares

#endif
