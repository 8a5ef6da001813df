#ifndef NU_ASSOCIATION_INTERNAL_FEATURE_ACCESS_H
#define NU_ASSOCIATION_INTERNAL_FEATURE_ACCESS_H

#include <type_traits>

#include "nu/association/internal/feature_classes.h"
#include "nu/curves/internal/circle_fits.h"
#include "nu/curves/internal/conic_fit.h"
#include "nu/geometry/internal/conversions.h"
#include "nu/geometry/internal/line_fits.h"
#include "nu/geometry/internal/plane_fits.h"
#include "nu/surfaces/internal/surface_fits.h"

namespace nu::internal {

// Constructors would normalise the directions once more.
struct FeatureAccess {
  static void Put(const Line3& found, CNuLine* line) {
    line->m_point = ToPoint(found.point);
    line->m_direction = ToVector(found.direction);
  }
  static void Put(const Plane3& found, CNuPlane* plane) {
    plane->m_point = ToPoint(found.point);
    plane->m_normal = ToVector(found.normal);
  }
  static void Put(const PlacedCircle& found, CNuCircle* circle) {
    circle->Place(found.radius, ToPoint(found.centre), ToVector(found.xAxis), ToVector(found.normal));
  }
  template<class Conic>
  static void Put(const FittedConic& found, Conic* conic) {
    conic->SetPosition(ToPoint(found.origin), ToVector(found.xAxis), ToVector(found.normal));
    if constexpr (std::is_same_v<Conic, CNuParabola>) {
      conic->m_f = found.a;
    } else {
      conic->m_a = found.a;
      conic->m_b = found.b;
    }
  }
  static void Put(const Sphere3& found, CNuSphSurf* sphere) { sphere->Place(found.radius, ToPoint(found.centre)); }
  static void Put(const Cylinder3& found, CNuCylSurf* cylinder) {
    cylinder->Place(found.radius, ToPoint(found.axis.point), ToVector(found.axis.direction));
  }
  static void Put(const Cone3& found, CNuConSurf* cone) {
    cone->Place(DegreesOf(found), ToPoint(StoredApex(found)), ToVector(found.axis.direction));
  }
  static void Put(const Torus3& found, CNuTorSurf* torus) {
    torus->Place(found.majorRadius, found.minorRadius, ToPoint(found.centre), ToVector(found.axis));
  }

  // Any feature but a line or plane by its numbers, unchecked: a zone or a circumscribed feature may have a radius of
  // 0.
  template<class Placed>
  static void PutFrame(const CNuPoint& origin, const CNuVector& xAxis, const CNuVector& zAxis, Placed* feature) {
    feature->SetPosition(origin, xAxis, zAxis);
  }
  template<class Placed>
  static void GetFrame(const Placed& feature, CNuPoint* origin, CNuVector* xAxis, CNuVector* zAxis) {
    feature.GetPosition(origin, xAxis, zAxis);
  }
  template<class Placed>
  static void PutSizes(double first, double second, Placed* feature) {
    if constexpr (std::is_same_v<Placed, CNuParabola>) {
      feature->m_f = first;
    } else if constexpr (std::is_same_v<Placed, CNuEllipse> || std::is_same_v<Placed, CNuHyperbola>) {
      feature->m_a = first;
      feature->m_b = second;
    } else if constexpr (std::is_same_v<Placed, CNuConSurf>) {
      feature->m_semiAngle = first;
    } else if constexpr (std::is_same_v<Placed, CNuTorSurf>) {
      feature->m_majorRadius = first;
      feature->m_minorRadius = second;
    } else {
      feature->m_radius = first;
    }
  }
};

}  // namespace nu::internal

#endif
