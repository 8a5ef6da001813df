#include "nu/engine/least_squares/conic_feet.h"

#include <algorithm>
#include <cmath>

#include "nu/engine/shapes/foot_steps.h"

namespace nu::engine::least_squares {
namespace {

// Newton's method from one side in all lanes at once. What rounding turns round stays where it is.
template<class FindStep, class Advance>
NU_ALWAYS_INLINE void FindRoots(const Lanes& open, FindStep findStep, Advance advance, Lanes& u) {
  for (int k = 0; k < kMostFootSteps; ++k) {
    const Lanes before = u;
    Lanes step;
    findStep(u, step);
    advance(u - step, u);
    Lanes moved = {};
    NU_LANE_LOOP
    for (int l = 0; l < kLanes; ++l) moved[l] = u[l] != before[l] ? open[l] : 0.0;
    if (Sum(moved) == 0.0) break;
  }
}

// Of the points at |x|, |y|.
struct QuadrantFeet {
  Lanes x, y;
  Lanes n;  // 0 on the major or the real axis, where the foot is found without steps
};

NU_ALWAYS_INLINE void FindInQuadrant(const Ellipse2& curve, const Lanes& open, QuadrantFeet& feet) {
  const double ratio = curve.a / curve.b;
  const double k = (ratio - 1.0) * (ratio + 1.0);
  const Lanes m = ratio * (feet.x / curve.b);
  feet.n = feet.y / curve.b;
  Lanes u = feet.n;
  TakeLarger(m - k, u);
  const auto findStep = [&](const Lanes& at, Lanes& step) { FindEllipseStep(m, feet.n, k, at, step); };
  FindRoots(open, findStep, TakeLarger, u);
  const Lanes c = m / (u + k);
  const Lanes s = feet.n / u;
  Lanes length = c * c + s * s;
  TakeSquareRoot(length);
  const Lanes inverse = 1.0 / length;
  feet.x = curve.a * (inverse * c);
  feet.y = curve.b * (inverse * s);
}

NU_ALWAYS_INLINE void FindInQuadrant(const Hyperbola2& curve, const Lanes& open, QuadrantFeet& feet) {
  const double scale = curve.Size();
  const double a = curve.a / scale;
  const double b = curve.b / scale;
  const double w = a * a + b * b;
  const Lanes m = a * (feet.x / scale) / w;
  feet.n = b * (feet.y / scale) / w;
  Lanes s = m + feet.n;
  const auto findStep = [&](const Lanes& at, Lanes& step) { FindHyperbolaStep(m, feet.n, at, step); };
  FindRoots(open, findStep, TakeSmaller, s);
  Lanes c = 1.0 + s * s;
  TakeSquareRoot(c);
  feet.x = curve.a * c;
  feet.y = curve.b * s;
}

NU_KERNEL void FindFeetOffAxis(const ConicShape& shape, const Lanes& x, const Lanes& y, const Lanes& open, Lanes& footX,
                               Lanes& footY, Lanes& n) {
  const Vec2 axis = shape.axis;
  const Vec2 across = Perpendicular(axis);
  const Lanes dx = x - shape.origin.x;
  const Lanes dy = y - shape.origin.y;
  const Lanes ownX = dx * axis.x + dy * axis.y;
  const Lanes ownY = dx * across.x + dy * across.y;
  QuadrantFeet feet;
  for (int l = 0; l < kLanes; ++l) feet.x[l] = std::fabs(ownX[l]);
  for (int l = 0; l < kLanes; ++l) feet.y[l] = std::fabs(ownY[l]);
  if (shape.kind == ConicKind::ellipse) {
    FindInQuadrant(Ellipse2{shape.a, shape.b}, open, feet);
  } else {
    FindInQuadrant(Hyperbola2{shape.a, shape.b}, open, feet);
  }
  for (int l = 0; l < kLanes; ++l) feet.x[l] = std::copysign(feet.x[l], ownX[l]);
  for (int l = 0; l < kLanes; ++l) feet.y[l] = std::copysign(feet.y[l], ownY[l]);
  footX = shape.origin.x + feet.x * axis.x + feet.y * across.x;
  footY = shape.origin.y + feet.x * axis.y + feet.y * across.y;
  n = feet.n;
}

}  // namespace

void FindFeetOn(const ConicShape& shape, const Lanes& x, const Lanes& y, const Lanes& open, Lanes& footX,
                Lanes& footY) {
  constexpr double kTogether = 2.0;
  const bool isTogether = shape.kind != ConicKind::parabola && Sum(open) >= kTogether;
  Lanes foundX = {}, foundY = {}, n = {};
  if (isTogether) FindFeetOffAxis(shape, x, y, open, foundX, foundY, n);
  for (int l = 0; l < kLanes; ++l) {
    if (open[l] == 0.0) continue;
    const Vec2 foot = n[l] == 0.0 ? FootOn(shape, {x[l], y[l]}) : Vec2{foundX[l], foundY[l]};
    footX[l] = foot.x;
    footY[l] = foot.y;
  }
}

}  // namespace nu::engine::least_squares
