#ifndef NU_C_INTERNAL_FEATURES_H
#define NU_C_INTERNAL_FEATURES_H

#include <cstdint>
#include <variant>

#include "nu/association/internal/feature_classes.h"
#include "nu/c/internal/calls.h"
#include "nu/geometry/point.h"

// Features of C as objects of their classes, and back. What comes back and goes again keeps its bits.
namespace nu::internal::c {

using AnyClass = std::variant<CNuPoint, CNuLine, CNuPlane, CNuCircle, CNuEllipse, CNuHyperbola, CNuParabola, CNuSphSurf,
                              CNuCylSurf, CNuConSurf, CNuTorSurf>;

// CNuConstructionException for numbers that make no such feature.
AnyClass ClassOf(const nu_feature* feature);

nu_feature ToFeature(const CNuPoint& point);
nu_feature ToFeature(const CNuLine& line);
nu_feature ToFeature(const CNuPlane& plane);
nu_feature ToFeature(const CNuCircle& circle);
nu_feature ToFeature(const CNuEllipse& ellipse);
nu_feature ToFeature(const CNuHyperbola& hyperbola);
nu_feature ToFeature(const CNuParabola& parabola);
nu_feature ToFeature(const CNuSphSurf& sphere);
nu_feature ToFeature(const CNuCylSurf& cylinder);
nu_feature ToFeature(const CNuConSurf& cone);
nu_feature ToFeature(const CNuTorSurf& torus);

// Any object that an intersection may consist of; one of another class has the kind of its type and no numbers.
nu_feature ToFeatureOfAny(const CNuObject& object);

// Calls visit(feature) with one of the class, to be fitted.
template<class Visit>
void VisitToFit(std::int32_t kind, const Visit& visit) {
  const auto to = [&]<class Class>(Class feature) { visit(feature); };
  switch (kind) {
    case NU_KIND_LINE:
      return to(AnyOf<CNuLine>());
    case NU_KIND_PLANE:
      return to(AnyOf<CNuPlane>());
    case NU_KIND_CIRCLE:
      return to(AnyOf<CNuCircle>());
    case NU_KIND_ELLIPSE:
      return to(AnyOf<CNuEllipse>());
    case NU_KIND_HYPERBOLA:
      return to(AnyOf<CNuHyperbola>());
    case NU_KIND_PARABOLA:
      return to(AnyOf<CNuParabola>());
    case NU_KIND_SPHERE:
      return to(AnyOf<CNuSphSurf>());
    case NU_KIND_CYLINDER:
      return to(AnyOf<CNuCylSurf>());
    case NU_KIND_CONE:
      return to(AnyOf<CNuConSurf>());
    case NU_KIND_TORUS:
      return to(AnyOf<CNuTorSurf>());
    default:
      RefuseArgument("no feature of this kind can be fitted");
  }
}

inline CNuPoint PointOf(const double* p, const char* textOfNull) {
  Require(p != nullptr, textOfNull);
  return CNuPoint(p[0], p[1], p[2]);
}
inline CNuVector VectorOf(const double* v, const char* textOfNull) {
  Require(v != nullptr, textOfNull);
  return CNuVector(v[0], v[1], v[2]);
}
inline void Write(const CNuPoint& p, double* to) {
  if (to != nullptr) p.GetData(to, to + 1, to + 2);
}
inline void Write(const CNuVector& v, double* to) {
  for (int i = 0; to != nullptr && i < 3; ++i) to[i] = v[i];
}

}  // namespace nu::internal::c

#endif
