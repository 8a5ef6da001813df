#include "nu/association/internal/any_feature.h"

namespace nu::internal {
namespace {

template<class Class>
bool Read(const CNuGeometry& geometry, std::optional<AnyFeature>& any) {
  const Class* found = dynamic_cast<const Class*>(&geometry);
  if (found != nullptr) any = AnyFeature{FeatureOf(*found), kRules<Class>};
  return found != nullptr;
}

template<class Class>
bool Write(const Feature& feature, CNuGeometry* geometry) {
  Class* found = dynamic_cast<Class*>(geometry);
  if (found == nullptr || FeatureOf(*found).kind != feature.kind) return false;
  Store(feature, found);
  return true;
}

template<class... Classes>
struct FeatureClasses {
  static std::optional<AnyFeature> Read(const CNuGeometry& geometry) {
    std::optional<AnyFeature> any;
    static_cast<void>((internal::Read<Classes>(geometry, any) || ...));
    return any;
  }
  static bool Write(const Feature& feature, CNuGeometry* geometry) {
    return (internal::Write<Classes>(feature, geometry) || ...);
  }
};

using All = FeatureClasses<CNuLine, CNuPlane, CNuCircle, CNuEllipse, CNuHyperbola, CNuParabola, CNuSphSurf, CNuCylSurf,
                           CNuConSurf, CNuTorSurf>;

}  // namespace

std::optional<AnyFeature> FeatureOfAny(const CNuGeometry& geometry) {
  return All::Read(geometry);
}

bool StoreAny(const Feature& feature, CNuGeometry* geometry) {
  return All::Write(feature, geometry);
}

}  // namespace nu::internal
