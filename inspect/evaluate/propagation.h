#ifndef NU_INSPECT_PROPAGATION_H
#define NU_INSPECT_PROPAGATION_H

#include <functional>
#include <optional>

#include "evaluate/geometry.h"

// A feature with what is known about its parameters; null: none of it.
struct UncertainFeature {
  const FeatureGeometry* geometry;
  const Uncertainty* uncertainty;
};

// A value that follows from one feature, or from two.
using Relation = std::function<double(const FeatureGeometry& feature, const FeatureGeometry* other)>;

// The standard uncertainty of the value by the law of propagation (JCGM 100:2008, 5.2.2): sqrt(sum c_i c_j cov_ij) over
// the shifts, tilts and turns of each feature in its own frame, c_i being the derivatives of the value. The features
// are independent: they have no points in common. `other.geometry` is null for a value of one feature. Nothing where an
// uncertainty is missing or infinite.
std::optional<double> PropagatedUncertainty(const UncertainFeature& feature, const UncertainFeature& other,
                                            const Relation& value);

#endif
