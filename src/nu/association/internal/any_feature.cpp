#include "nu/association/internal/any_feature.h"

namespace nu::internal {

std::optional<AnyFeature> FeatureOfAny(const CNuGeometry& geometry) {
  std::optional<AnyFeature> any;
  FittedClasses::Any([&]<class Class>() {
    const auto* found = dynamic_cast<const Class*>(&geometry);
    if (found != nullptr) any = AnyFeature{FeatureOf(*found), kRules<Class>};
    return found != nullptr;
  });
  return any;
}

bool StoreAny(const Feature& feature, CNuGeometry* geometry) {
  return FittedClasses::Any([&]<class Class>() {
    auto* found = dynamic_cast<Class*>(geometry);
    if (found == nullptr || FeatureOf(*found).kind != feature.kind) return false;
    Store(feature, found);
    return true;
  });
}

}  // namespace nu::internal
