#ifndef NU_ASSOCIATION_INTERNAL_ANY_FEATURE_H
#define NU_ASSOCIATION_INTERNAL_ANY_FEATURE_H

#include <optional>

#include "nu/association/internal/feature_classes.h"

// Features by their root class.
namespace nu::internal {

struct AnyFeature {
  Feature feature;
  FeatureRules rules;
};

// Nothing for a geometry that is fitted by no association.
std::optional<AnyFeature> FeatureOfAny(const CNuGeometry& geometry);

// Stores a feature of the geometry's own class; false, and no change, for one of another class.
bool StoreAny(const Feature& feature, CNuGeometry* geometry);

}  // namespace nu::internal

#endif
