#include "nu/association/internal/parameters.h"

namespace nu::internal {
namespace {

const char* SizeName(FeatureKind kind, bool isFirst) {
  switch (kind) {
    case FeatureKind::ellipse:
    case FeatureKind::hyperbola:
      return isFirst ? "semi-axis a" : "semi-axis b";
    case FeatureKind::parabola:
      return "focal length";
    case FeatureKind::cone:
      return isFirst ? "radius" : "semi-angle";
    case FeatureKind::torus:
      return isFirst ? "major radius" : "minor radius";
    default:
      return "radius";
  }
}

}  // namespace

const char* NameOf(FeatureKind kind, Unknown unknown) {
  constexpr const char* kNames[] = {"shift x", "shift y", "shift z", "tilt x", "tilt y", "turn"};
  return unknown < kSize0 ? kNames[unknown] : SizeName(kind, unknown == kSize0);
}

}  // namespace nu::internal
