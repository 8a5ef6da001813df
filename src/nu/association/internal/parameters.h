#ifndef NU_ASSOCIATION_INTERNAL_PARAMETERS_H
#define NU_ASSOCIATION_INTERNAL_PARAMETERS_H

#include "nu/engine/association/feature.h"
#include "nu/foundation/constants.h"

// The unknowns of the engine as parameters of the interface: names, and degrees in place of radians.
namespace nu::internal {

inline bool IsAngle(FeatureKind kind, Unknown unknown) {
  return Contains(AnglesOf(kind), unknown);
}

// Of the interface, per unit of the engine.
inline double UnitOf(FeatureKind kind, Unknown unknown) {
  return IsAngle(kind, unknown) ? 180.0 / Nu_PI : 1.0;
}

const char* NameOf(FeatureKind kind, Unknown unknown);

}  // namespace nu::internal

#endif
