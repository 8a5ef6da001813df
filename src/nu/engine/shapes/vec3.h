#ifndef NU_ENGINE_SHAPES_VEC3_H
#define NU_ENGINE_SHAPES_VEC3_H

#include <algorithm>
#include <cmath>

#include "nu/engine/base/simd.h"

// Three components on plain doubles, for the mathematics behind points and directions.
namespace nu::engine::shapes {

struct Vec3 {
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;

  bool operator==(const Vec3&) const = default;
};

NU_ALWAYS_INLINE Vec3 LoadVec3(const double* v) {
  return {v[0], v[1], v[2]};
}

NU_ALWAYS_INLINE Vec3 operator+(Vec3 a, Vec3 b) {
  return {a.x + b.x, a.y + b.y, a.z + b.z};
}
NU_ALWAYS_INLINE Vec3 operator-(Vec3 a, Vec3 b) {
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}
NU_ALWAYS_INLINE Vec3 operator*(double f, Vec3 a) {
  return {f * a.x, f * a.y, f * a.z};
}
NU_ALWAYS_INLINE double Dot(Vec3 a, Vec3 b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}
NU_ALWAYS_INLINE Vec3 Cross(Vec3 a, Vec3 b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

// What is left of v without its part along the unit direction d.
NU_ALWAYS_INLINE Vec3 Rejection(Vec3 v, Vec3 d) {
  return v - Dot(v, d) * d;
}

inline bool IsFinite(Vec3 v) {
  return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}
inline bool HasNaN(Vec3 v) {
  return std::isnan(v.x) || std::isnan(v.y) || std::isnan(v.z);
}
// Every |component| < tol.
inline bool IsNull(Vec3 v, double tol) {
  return std::fabs(v.x) < tol && std::fabs(v.y) < tol && std::fabs(v.z) < tol;
}

// v times a power of two that brings its largest component to about 1, when squares or products of v as it stands could
// overflow or vanish. The factor is exact, so the direction stays what it is; v is returned unchanged when it is zero
// or not finite.
inline Vec3 Rescaled(Vec3 v) {
  constexpr double kSafeSmall = 1e-60;  // four factors between these two stay within the range of a double
  constexpr double kSafeLarge = 1e60;
  const double largest = std::max({std::fabs(v.x), std::fabs(v.y), std::fabs(v.z)});
  if ((largest >= kSafeSmall && largest <= kSafeLarge) || largest == 0.0 || !IsFinite(v)) return v;
  const int exponent = -std::ilogb(largest);
  return {std::ldexp(v.x, exponent), std::ldexp(v.y, exponent), std::ldexp(v.z, exponent)};
}

// v at length 1, for any finite v but zero, which stays zero.
inline Vec3 Unit(Vec3 v) {
  const Vec3 u = Rescaled(v);
  const double magnitude = std::sqrt(Dot(u, u));
  if (magnitude == 0.0) return v;
  return {u.x / magnitude, u.y / magnitude, u.z / magnitude};
}

}  // namespace nu::engine::shapes

#endif
