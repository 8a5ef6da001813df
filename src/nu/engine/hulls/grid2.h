#ifndef NU_ENGINE_HULLS_GRID2_H
#define NU_ENGINE_HULLS_GRID2_H

#include <cmath>
#include <vector>

#include "nu/engine/base/floating_point.h"
#include "nu/engine/points/point_blocks.h"
#include "nu/engine/shapes/vec2.h"

namespace nu::engine::hulls {

// Points of a plane on a fine grid: their coordinates are whole numbers up to 2^52, so that differences are exact and
// the sign of a determinant can be had from integers. A step of the grid is about a rounding of the extent of the
// points. They ascend in x, then in y, and no two coincide: what is made from them does not depend on the order of the
// points.
struct Grid2 {
  std::vector<Vec2> points;
  Vec2 middle;        // of the bounding box, in the frame of the points
  double unit = 1.0;  // length of a step, a power of two
  bool finite = false;

  Vec2 InPlane(Vec2 onGrid) const { return middle + unit * onGrid; }
};

inline constexpr double kGridReach = 0x1p52;

// Where the grid lies, without its points.
struct GridFrame {
  Vec2 InSteps(Vec2 p) const { return (1.0 / unit) * (p - middle); }
  static Vec2 Rounded(Vec2 steps) { return {std::nearbyint(steps.x), std::nearbyint(steps.y)}; }

  Vec2 middle;
  double unit = 1.0;
  bool finite = false;
};
GridFrame GridFrameOf(PointBlocks& points, const Vec3 (&axes)[2]);
// The order of the grid, each point once.
void SortOnGrid(std::vector<Vec2>& points);

// Of at least one point. Extents whose inverse would overflow are refused as if they were not finite.
Grid2 GridOf(std::vector<Vec2> points);

// The points' coordinates along two axes, relative to the origin of the blocks.
Grid2 GridOf(PointBlocks& points, const Vec3 (&axes)[2]);

// As GridOrientation and GridInCircle, from integers.
int ExactOrientation(Vec2 a, Vec2 b, Vec2 c);
int ExactInCircle(Vec2 a, Vec2 b, Vec2 c, Vec2 d);

// 1 when a, b, c turn counter-clockwise, -1 when clockwise, 0 when they lie on one line; exact.
inline int GridOrientation(Vec2 a, Vec2 b, Vec2 c) {
  const double left = (a.x - c.x) * (b.y - c.y);
  const double right = (a.y - c.y) * (b.x - c.x);
  const double determinant = left - right;
  // The differences are exact; two products and their difference are rounded.
  if (std::fabs(determinant) > 2.0 * kEpsilon * (std::fabs(left) + std::fabs(right))) return determinant > 0.0 ? 1 : -1;
  return ExactOrientation(a, b, c);
}

// 1 when d is inside the circle through the counter-clockwise a, b, c, -1 when it is outside, 0 when it is on it;
// exact.
inline int GridInCircle(Vec2 a, Vec2 b, Vec2 c, Vec2 d) {
  // The error bound of the rounded determinant by J. R. Shewchuk, Discrete & Computational Geometry 18 (1997).
  constexpr double kRoundoff = kEpsilon / 2.0;
  constexpr double kRelativeError = (10.0 + 96.0 * kRoundoff) * kRoundoff;
  const Vec2 p = a - d;
  const Vec2 q = b - d;
  const Vec2 r = c - d;
  const double liftP = Dot(p, p), liftQ = Dot(q, q), liftR = Dot(r, r);
  const double qr = q.x * r.y, rq = q.y * r.x;
  const double rp = r.x * p.y, pr = r.y * p.x;
  const double pq = p.x * q.y, qp = p.y * q.x;
  const double determinant = liftP * (qr - rq) + liftQ * (rp - pr) + liftR * (pq - qp);
  const double permanent = liftP * (std::fabs(qr) + std::fabs(rq)) + liftQ * (std::fabs(rp) + std::fabs(pr)) +
                           liftR * (std::fabs(pq) + std::fabs(qp));
  if (std::fabs(determinant) > kRelativeError * permanent) return determinant > 0.0 ? 1 : -1;
  return ExactInCircle(a, b, c, d);
}

}  // namespace nu::engine::hulls

#endif
