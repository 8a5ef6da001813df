#ifndef NU_C_INTERNAL_FEATURES_H
#define NU_C_INTERNAL_FEATURES_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <variant>
#include <vector>

#include "nu/association/association_report.h"
#include "nu/association/internal/feature_classes.h"
#include "nu/c/internal/calls.h"
#include "nu/foundation/object_array.h"
#include "nu/geometry/point_array.h"

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

using Objects = std::vector<std::unique_ptr<CNuObject>>;

// Takes over the objects of an array, which does not own them; without the memory for that, they are deleted.
Objects Taken(const CNuObjArray& objects);

// Calls visit(feature) with one of the class, to be fitted.
template<class Visit>
void VisitToFit(std::int32_t kind, const Visit& visit) {
  const bool isFitted = FittedClasses::Any([&]<class Class>() {
    if (kRules<Class>.type != kind) return false;
    Class feature = AnyOf<Class>();
    visit(feature);
    return true;
  });
  if (!isFitted) RefuseArgument("no feature of this kind can be fitted");
}

inline nu_form FormOf(const CNuAssociationReport& report) {
  return {report.GetForm(), report.GetPeak(), report.GetValley(), report.GetRootMeanSquare(), report.GetSumSquares()};
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
inline void Write(const CNuPointArray& points, double* to) {
  for (int i = 0; i < points.GetSize(); ++i) Write(points[i], to + 3 * static_cast<std::ptrdiff_t>(i));
}

}  // namespace nu::internal::c

#endif
