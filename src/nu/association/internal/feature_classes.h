#ifndef NU_ASSOCIATION_INTERNAL_FEATURE_CLASSES_H
#define NU_ASSOCIATION_INTERNAL_FEATURE_CLASSES_H

#include <type_traits>

#include "nu/association/criteria.h"
#include "nu/association/internal/association_state.h"
#include "nu/curves/circle.h"
#include "nu/curves/ellipse.h"
#include "nu/curves/hyperbola.h"
#include "nu/curves/parabola.h"
#include "nu/geometry/line.h"
#include "nu/geometry/plane.h"
#include "nu/surfaces/cone.h"
#include "nu/surfaces/cylinder.h"
#include "nu/surfaces/sphere.h"
#include "nu/surfaces/torus.h"

// The classes of the features as the engine knows them, and what an association can ask of each.
namespace nu::internal {

// None of what is no criterion.
constexpr unsigned Has(ENuCriterion criterion) {
  return criterion >= NuLeastSquares && criterion <= NuMaximumInscribed ? 1U << criterion : 0U;
}
inline constexpr unsigned kLeastSquaresOnly = Has(NuLeastSquares);
inline constexpr unsigned kWithZone = kLeastSquaresOnly | Has(NuMinimumZone);
inline constexpr unsigned kAllCriteria = kWithZone | Has(NuMinimumCircumscribed) | Has(NuMaximumInscribed);

struct FeatureRules {
  const char* name;
  CNuObject::ENuObjectType type;
  unsigned criteria;
  unsigned fixable;  // of FixedParameter
};

template<class Class>
inline constexpr FeatureRules kRules{};
inline constexpr unsigned kPlaced = kFixedDirection | kFixedPoint;
template<>
inline constexpr FeatureRules kRules<CNuLine>{"CNuLine", CNuObject::NuTypeLine, kWithZone, kPlaced};
template<>
inline constexpr FeatureRules kRules<CNuPlane>{"CNuPlane", CNuObject::NuTypePlane, kWithZone, kPlaced};
template<>
inline constexpr FeatureRules kRules<CNuCircle>{"CNuCircle", CNuObject::NuTypeCircle, kAllCriteria,
                                                kPlaced | kFixedRadius};
template<>
inline constexpr FeatureRules kRules<CNuEllipse>{"CNuEllipse", CNuObject::NuTypeEllipse, kLeastSquaresOnly, kPlaced};
template<>
inline constexpr FeatureRules kRules<CNuHyperbola>{"CNuHyperbola", CNuObject::NuTypeHyperbola, kLeastSquaresOnly,
                                                   kPlaced};
template<>
inline constexpr FeatureRules kRules<CNuParabola>{"CNuParabola", CNuObject::NuTypeParabola, kLeastSquaresOnly, kPlaced};
template<>
inline constexpr FeatureRules kRules<CNuSphSurf>{"CNuSphSurf", CNuObject::NuTypeSphSurf, kAllCriteria,
                                                 kFixedPoint | kFixedRadius};
template<>
inline constexpr FeatureRules kRules<CNuCylSurf>{"CNuCylSurf", CNuObject::NuTypeCylSurf, kAllCriteria,
                                                 kPlaced | kFixedRadius};
template<>
inline constexpr FeatureRules kRules<CNuConSurf>{"CNuConSurf", CNuObject::NuTypeConSurf, kWithZone,
                                                 kPlaced | kFixedSemiAngle};
template<>
inline constexpr FeatureRules kRules<CNuTorSurf>{"CNuTorSurf", CNuObject::NuTypeTorSurf, kWithZone,
                                                 kPlaced | kFixedRadius | kFixedMajorRadius};

template<class... Classes>
struct ClassList {
  // Whether find.operator()<Class>() is true of a class; the first one ends the search.
  template<class Find>
  static bool Any(const Find& find) {
    return (find.template operator()<Classes>() || ...);
  }
};
using FittedClasses = ClassList<CNuLine, CNuPlane, CNuCircle, CNuEllipse, CNuHyperbola, CNuParabola, CNuSphSurf,
                                CNuCylSurf, CNuConSurf, CNuTorSurf>;

// One of the class, to be fitted: some have no default.
template<class Class>
Class AnyOf() {
  if constexpr (std::is_default_constructible_v<Class>)
    return Class();
  else if constexpr (std::is_constructible_v<Class, double>)
    return Class(1.0);
  else
    return Class(2.0, 1.0);
}

// In the frame of the points; angles in radians. A line is one in space, a circle one in its plane, a torus a surface.
Feature FeatureOf(const CNuLine& line);
Feature FeatureOf(const CNuPlane& plane);
Feature FeatureOf(const CNuCircle& circle);
Feature FeatureOf(const CNuEllipse& ellipse);
Feature FeatureOf(const CNuHyperbola& hyperbola);
Feature FeatureOf(const CNuParabola& parabola);
Feature FeatureOf(const CNuSphSurf& sphere);
Feature FeatureOf(const CNuCylSurf& cylinder);
Feature FeatureOf(const CNuConSurf& cone);
Feature FeatureOf(const CNuTorSurf& torus);

// The way back, with the position that the class's own fits give; the sense of the direction is kept. They fail with
// CNuConstructionException where the class has no such feature, as one of a negative radius.
void Store(const Feature& feature, CNuLine* line);
void Store(const Feature& feature, CNuPlane* plane);
void Store(const Feature& feature, CNuCircle* circle);
void Store(const Feature& feature, CNuEllipse* ellipse);
void Store(const Feature& feature, CNuHyperbola* hyperbola);
void Store(const Feature& feature, CNuParabola* parabola);
void Store(const Feature& feature, CNuSphSurf* sphere);
void Store(const Feature& feature, CNuCylSurf* cylinder);
void Store(const Feature& feature, CNuConSurf* cone);
void Store(const Feature& feature, CNuTorSurf* torus);

}  // namespace nu::internal

#endif
