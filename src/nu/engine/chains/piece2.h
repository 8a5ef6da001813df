#ifndef NU_ENGINE_CHAINS_PIECE2_H
#define NU_ENGINE_CHAINS_PIECE2_H

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "nu/engine/shapes/vec2.h"

namespace nu::engine::chains {

inline std::size_t Index(std::int64_t i) {
  return static_cast<std::size_t>(i);
}

// Of coordinates of about 1: squares that vanish are of lengths far below their rounding.
inline double Norm(Vec2 v) {
  return std::sqrt(v.x * v.x + v.y * v.y);
}
// Turned to the left by an angle in radians.
Vec2 Rotated(Vec2 v, double angle);

// A segment or an arc in a plane, given from its start: with the unit direction t there and n a quarter turn to the
// left of it, the points p of its curve are those with (p - start).n = curvature |p - start|^2 / 2. No centre far away
// costs digits, and a segment is the arc without curvature.
struct Piece2 {
  Vec2 At(double s) const;
  Vec2 DirectionAt(double s) const { return curvature == 0.0 ? direction : Rotated(direction, curvature * s); }
  Vec2 EndDirection() const { return DirectionAt(length); }
  // The length along the unbounded curve to the point that is closest to p, of all turns the one nearest to the piece.
  double ParameterOf(Vec2 p) const;
  // The distance of p from the unbounded curve, positive to the left.
  double HeightOf(Vec2 p) const;
  Vec2 ClosestTo(Vec2 p) const;
  double DistanceTo(Vec2 p) const;
  // The largest distance of a point of the piece from p.
  double ReachFrom(Vec2 p) const;
  Piece2 Part(double from, double to) const { return {At(from), At(to), DirectionAt(from), curvature, to - from}; }
  Piece2 Reversed() const { return {end, start, -1.0 * EndDirection(), -curvature, length}; }
  // At the distance to the right, end by end; its length and curvature have no meaning where the factor is not above 0.
  double OffsetFactor(double distance) const { return 1.0 + curvature * distance; }
  Piece2 Offset(double distance) const;

  Vec2 start, end;
  Vec2 direction;
  double curvature = 0.0;  // above 0 to the left
  double length = 0.0;
};

Piece2 SegmentBetween(Vec2 start, Vec2 end);

struct Box2 {
  bool IsApart(const Box2& other, double gap) const {
    return low.x > other.high.x + gap || other.low.x > high.x + gap || low.y > other.high.y + gap ||
           other.low.y > high.y + gap;
  }
  double DistanceTo(Vec2 p) const {
    return Norm({std::max({0.0, low.x - p.x, p.x - high.x}), std::max({0.0, low.y - p.y, p.y - high.y})});
  }
  void Include(Vec2 p) {
    low = {std::min(low.x, p.x), std::min(low.y, p.y)};
    high = {std::max(high.x, p.x), std::max(high.y, p.y)};
  }
  void Include(const Box2& other) {
    Include(other.low);
    Include(other.high);
  }

  Vec2 low{HUGE_VAL, HUGE_VAL};
  Vec2 high{-HUGE_VAL, -HUGE_VAL};
};
Box2 BoxOf(const Piece2& piece);

// Where two pieces cross: the parameters on either, and the sine between them. Those beyond an end by no more than the
// rounding of where a crossing at that sine is are at the end. Pieces of one curve do not cross.
struct Crossing2 {
  double onFirst, onSecond, sine;
};
struct Crossings2 {
  int count = 0;
  Crossing2 at[2];
};
Crossings2 Cross(const Piece2& first, const Piece2& second, double rounding);

}  // namespace nu::engine::chains

#endif
