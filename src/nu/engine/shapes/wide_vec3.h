#ifndef NU_ENGINE_SHAPES_WIDE_VEC3_H
#define NU_ENGINE_SHAPES_WIDE_VEC3_H

#include "nu/engine/base/double_double.h"
#include "nu/engine/shapes/vec3.h"

namespace nu::engine::shapes {

// Three components of about 100 bits, for differences and products in which all digits of doubles cancel.
struct WideVec3 {
  DoubleDouble x, y, z;
};

inline WideVec3 Wide(Vec3 v) {
  return {{v.x}, {v.y}, {v.z}};
}
// a - b without rounding.
inline WideVec3 WideDifference(const double* a, const double* b) {
  return {Difference(a[0], b[0]), Difference(a[1], b[1]), Difference(a[2], b[2])};
}
inline Vec3 Rounded(const WideVec3& v) {
  return {v.x.high, v.y.high, v.z.high};
}
inline WideVec3 operator-(const WideVec3& v) {
  return {-v.x, -v.y, -v.z};
}
inline WideVec3 Cross(const WideVec3& a, const WideVec3& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline DoubleDouble Dot(const WideVec3& a, const WideVec3& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline WideVec3 Unit(const WideVec3& v) {
  const DoubleDouble length = SquareRoot(Dot(v, v));
  return {v.x / length, v.y / length, v.z / length};
}

}  // namespace nu::engine::shapes

#endif
