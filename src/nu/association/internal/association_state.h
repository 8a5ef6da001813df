#ifndef NU_ASSOCIATION_INTERNAL_ASSOCIATION_STATE_H
#define NU_ASSOCIATION_INTERNAL_ASSOCIATION_STATE_H

#include <optional>
#include <vector>

#include "nu/association/association.h"
#include "nu/engine/association/feature.h"
#include "nu/engine/points/point_view.h"
#include "nu/foundation/internal/failures.h"
#include "nu/foundation/object.h"

namespace nu::internal {

// The parameters that can be fixed, as bits.
enum FixedParameter : unsigned {
  kFixedRadius = 1,
  kFixedMajorRadius = 2,
  kFixedSemiAngle = 4,
  kFixedDirection = 8,
  kFixedPoint = 16,
};

struct FixedParameters {
  std::optional<double> radius;
  std::optional<double> majorRadius;
  std::optional<double> semiAngle;  // radians
  std::optional<Vec3> direction;    // unit length
  std::optional<Vec3> point;

  unsigned Mask() const {
    return (radius ? kFixedRadius : 0U) | (majorRadius ? kFixedMajorRadius : 0U) | (semiAngle ? kFixedSemiAngle : 0U) |
           (direction ? kFixedDirection : 0U) | (point ? kFixedPoint : 0U);
  }
};

struct StartFeature {
  CNuObject::ENuObjectType type = CNuObject::NuTypeNone;
  Feature feature;
};

struct AssociationOptions {
  std::vector<double> weights;  // empty: 1 each
  FixedParameters fixed;
  ENuMaterialSide side = NuEitherSide;
  std::optional<StartFeature> start;
  long maxSteps = 1000;
  std::optional<double> tol;
  NuStepMonitor monitor = nullptr;
  void* context = nullptr;
  int details = NuDetailForm;
};

// Null: 1 each.
inline const double* WeightsOf(const AssociationOptions& options) {
  return options.weights.empty() ? nullptr : options.weights.data();
}

// The points lie where the caller has them until some are added or removed, which takes a copy.
struct AssociationState {
  PointView points;
  std::vector<double> own;  // x, y, z of each
  AssociationOptions options;

  explicit AssociationState(PointView borrowed) : points(borrowed) {}
  AssociationState(const AssociationState& other) : points(other.points), own(other.own), options(other.options) {
    if (!own.empty()) points = OwnPoints();
  }
  AssociationState& operator=(const AssociationState&) = delete;

  PointView OwnPoints() const { return {own.data(), 3 * sizeof(double), own.size() / 3}; }
};

// CNuOperationException cause 1, as the constructor of a block promises.
inline PointView BlockView(const double* xyz, int count, std::ptrdiff_t stride, const char* where) {
  if (count < 0 || (xyz == nullptr && count > 0) || stride < 3) FailOperation(NuOperationDomain, "association", where);
  return {xyz, static_cast<std::size_t>(stride) * sizeof(double), static_cast<std::size_t>(count)};
}

}  // namespace nu::internal

#endif
