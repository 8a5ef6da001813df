#ifndef NU_ENGINE_HULLS_ORIENTATION3_H
#define NU_ENGINE_HULLS_ORIENTATION3_H

#include <cmath>

#include "nu/engine/base/double_double.h"
#include "nu/engine/shapes/vec3.h"

namespace nu::engine::hulls {

// The sign, as -1, 0 or 1, of ((q - p) x (s - r)) . (u - t), without error as long as no product of three coordinates
// overflows or falls below the smallest normal numbers.
int ExactTurn3(const double* p, const double* q, const double* r, const double* s, const double* t, const double* u);

// The direction (q - p) x (s - r): a face's normal, or that of a plane along two edges. It keeps the places of the
// points; signs of heights along it are those of the given doubles, decided by the rounded normal where its error bound
// allows (J. R. Shewchuk, Adaptive precision floating-point arithmetic and fast robust geometric predicates, Discrete &
// Computational Geometry 18, 1997).
class Normal3 {
 public:
  Normal3(const double* p, const double* q, const double* r, const double* s) : m_p(p), m_q(q), m_r(r), m_s(s) {
    // (7 + 56 u) u with the unit roundoff u = 2^-53, rounded up.
    constexpr double kRelativeError = 0x1.c0000000000e0p-51;
    const Vec3 a = LoadVec3(q) - LoadVec3(p);
    const Vec3 b = LoadVec3(s) - LoadVec3(r);
    m_rounded = Cross(a, b);
    const double x = std::fabs(a.y * b.z) + std::fabs(a.z * b.y);
    const double y = std::fabs(a.z * b.x) + std::fabs(a.x * b.z);
    const double z = std::fabs(a.x * b.y) + std::fabs(a.y * b.x);
    m_error = {kRelativeError * x, kRelativeError * y, kRelativeError * z};
  }

  const Vec3& Rounded() const { return m_rounded; }
  // The length of the exact normal is not above this.
  double MostLength() const { return std::sqrt(Dot(m_rounded, m_rounded)) + std::sqrt(Dot(m_error, m_error)); }
  // By so many radians, about, rounding may have turned the normal; infinite when nothing is left of it.
  double TurnError() const { return std::sqrt(Dot(m_error, m_error) / Dot(m_rounded, m_rounded)); }

  // Of u over t, times the length of the normal.
  double Height(const double* t, const double* u) const { return Dot(m_rounded, LoadVec3(u) - LoadVec3(t)); }
  // How far rounding may have moved Height.
  double HeightError(const double* t, const double* u) const {
    return m_error.x * std::fabs(u[0] - t[0]) + m_error.y * std::fabs(u[1] - t[1]) + m_error.z * std::fabs(u[2] - t[2]);
  }
  // The same for any two points that are not farther apart.
  double MostHeightError(double distance) const { return std::sqrt(Dot(m_error, m_error)) * distance; }
  int SignOfHeight(const double* t, const double* u) const {
    const double height = Height(t, u);
    const double error = HeightError(t, u);
    if (std::fabs(height) > error) return height > 0.0 ? 1 : -1;
    // No term of the determinant is left.
    if (error == 0.0) return 0;
    return ExactTurn3(m_p, m_q, m_r, m_s, t, u);
  }

 private:
  const double* m_p;
  const double* m_q;
  const double* m_r;
  const double* m_s;
  Vec3 m_rounded;
  Vec3 m_error;
};

// Whether three points lie on one line, without error.
bool AreCollinear3(const double* a, const double* b, const double* c);

}  // namespace nu::engine::hulls

#endif
