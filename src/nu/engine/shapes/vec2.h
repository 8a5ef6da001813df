#ifndef NU_ENGINE_SHAPES_VEC2_H
#define NU_ENGINE_SHAPES_VEC2_H

#include <cmath>

#include "nu/engine/base/error_free.h"

namespace nu::engine::shapes {

struct Vec2 {
  double x = 0.0;
  double y = 0.0;
};

inline Vec2 operator+(Vec2 a, Vec2 b) {
  return {a.x + b.x, a.y + b.y};
}
inline Vec2 operator-(Vec2 a, Vec2 b) {
  return {a.x - b.x, a.y - b.y};
}
inline Vec2 operator*(double f, Vec2 a) {
  return {f * a.x, f * a.y};
}
inline double Dot(Vec2 a, Vec2 b) {
  return a.x * b.x + a.y * b.y;
}
inline double Cross(Vec2 a, Vec2 b) {
  return a.x * b.y - a.y * b.x;
}
// A quarter turn to the left.
inline Vec2 Perpendicular(Vec2 a) {
  return {-a.y, a.x};
}
inline bool operator==(Vec2 a, Vec2 b) {
  return a.x == b.x && a.y == b.y;
}

// The order of angles without trigonometry, by steps along the diamond |x| + |y| = 1: above 0 to 4, ascending
// counter-clockwise from the negative y axis, which has 4 itself. 0 for the zero vector.
inline double DiamondAngle(Vec2 v) {
  const double size = std::fabs(v.x) + std::fabs(v.y);
  if (!(size > 0.0)) return 0.0;
  const double height = v.y / size;
  return v.x > 0.0 ? 1.0 + height : 3.0 - height;
}

// To about one rounding, however much cancels.
inline double AccurateCross(Vec2 a, Vec2 b) {
  return DifferenceOfProducts(a.x, b.y, a.y, b.x);
}
inline double AccurateDot(Vec2 a, Vec2 b) {
  return DifferenceOfProducts(a.x, b.x, -a.y, b.y);
}

}  // namespace nu::engine::shapes

#endif
