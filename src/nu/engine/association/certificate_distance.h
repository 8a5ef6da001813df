#ifndef NU_ENGINE_ASSOCIATION_CERTIFICATE_DISTANCE_H
#define NU_ENGINE_ASSOCIATION_CERTIFICATE_DISTANCE_H

#include "nu/engine/association/certificate_arithmetic.h"
#include "nu/engine/base/elementary.h"
#include "nu/engine/shapes/wide_vec3.h"

// What certificates understand by the distance of a point from a feature, once for all kinds of numbers.
namespace nu::engine::association {

// Three coordinates of a kind of number.
template<class T>
struct Triple {
  T x, y, z;
};
template<class T>
Triple<T> operator-(const Triple<T>& a, const Triple<T>& b) {
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}
template<class T>
T DotOf(const Triple<T>& a, const Triple<T>& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}
template<class T>
Triple<T> CrossOf(const Triple<T>& a, const Triple<T>& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
template<class T>
T NormOf(const Triple<T>& a) {
  return Root(DotOf(a, a));
}

// The feature with its frame made orthonormal, and lengths times a power of two that brings the points to a size of
// about 1.
class CertifiedFeature {
 public:
  CertifiedFeature(const Feature& feature, double unit) : m_kind(feature.kind), m_nappes(feature.bothNappes) {
    m_unit = unit;
    m_origin = feature.frame.origin;
    m_z = Unit(Wide(feature.frame.z));
    m_y = Unit(Cross(m_z, Wide(feature.frame.x)));
    m_x = Cross(m_y, m_z);
    m_size[0] = {unit * feature.size[0]};
    if (m_kind != FeatureKind::cone) {
      m_size[1] = {unit * feature.size[1]};
      return;
    }
    const SineCosine angle = SinCos(feature.size[1]);
    const DoubleDouble norm = SquareRoot(TwoProduct(angle.sine, angle.sine) + TwoProduct(angle.cosine, angle.cosine));
    m_sine = DoubleDouble{angle.sine} / norm;
    m_cosine = DoubleDouble{angle.cosine} / norm;
  }

  DoubleDouble Size(int k) const { return m_size[k]; }

  WideVec3 Local(const double* point) const {
    const double origin[] = {m_origin.x, m_origin.y, m_origin.z};
    WideVec3 q = WideDifference(point, origin);
    for (DoubleDouble* c : {&q.x, &q.y, &q.z}) *c = {m_unit * c->high, m_unit * c->low};
    return {Dot(q, m_x), Dot(q, m_y), Dot(q, m_z)};
  }

  // The distance of the local point from the plane, the axis, the centre or the circle, when the feature is moved by
  // the unknowns u; from a cone and from a line in a plane the deviation. An angle t is the slope t: z becomes the
  // direction of z + tiltX x + tiltY y, and the meridian of a cone turns by the angle whose tangent is t.
  template<class T>
  T Distance(const WideVec3& local, const T* u) const {
    const auto constant = [&u](DoubleDouble a) { return Constant(a, u[0]); };
    const T one = constant({1.0});
    const Triple<T> place{constant(local.x), constant(local.y), constant(local.z)};
    const Triple<T> q = place - Triple<T>{u[kShiftX], u[kShiftY], u[kShiftZ]};
    if (m_kind == FeatureKind::sphere) return NormOf(q);
    if (m_kind == FeatureKind::circle) return Root(q.x * q.x + q.y * q.y);
    if (m_kind == FeatureKind::lineInPlane) return (q.y - u[kTurn] * q.x) * Reciprocal(Root(one + u[kTurn] * u[kTurn]));

    const Triple<T> axis{u[kTiltX], u[kTiltY], one};
    const T perLength = Reciprocal(NormOf(axis));
    if (m_kind == FeatureKind::plane) return DotOf(q, axis) * perLength;
    const T fromAxis = NormOf(CrossOf(q, axis)) * perLength;
    if (m_kind == FeatureKind::line || m_kind == FeatureKind::cylinder) return fromAxis;

    const T height = DotOf(q, axis) * perLength;
    const T radius = constant(m_size[0]) + u[kSize0];
    if (m_kind != FeatureKind::cone) {
      const T fromCircle = fromAxis - radius;
      return Root(fromCircle * fromCircle + height * height);
    }
    const T perSlope = Reciprocal(Root(one + u[kSize1] * u[kSize1]));
    const T cosine = (constant(m_cosine) - constant(m_sine) * u[kSize1]) * perSlope;
    const T sine = (constant(m_sine) + constant(m_cosine) * u[kSize1]) * perSlope;
    const T fromApex = height * sine + radius * cosine;
    return fromAxis * cosine - (m_nappes ? SignOf(fromApex) * fromApex : fromApex);
  }

  bool HasRadius() const { return IsRound(m_kind); }

 private:
  FeatureKind m_kind;
  bool m_nappes;
  double m_unit;
  Vec3 m_origin;
  WideVec3 m_x, m_y, m_z;
  DoubleDouble m_size[2];
  DoubleDouble m_sine, m_cosine;
};

}  // namespace nu::engine::association

#endif
