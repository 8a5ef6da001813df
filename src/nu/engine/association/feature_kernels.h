#ifndef NU_ENGINE_ASSOCIATION_FEATURE_KERNELS_H
#define NU_ENGINE_ASSOCIATION_FEATURE_KERNELS_H

#include <cstddef>

#include "nu/engine/association/feature.h"
#include "nu/engine/points/point_blocks.h"

// Deviations and derivatives of whole blocks of points, eight lanes at a time: those of feature.h but for rounding. The
// blocks are relative to the origin of the feature's frame and not scaled.
namespace nu::engine::association {

// In the order of the points. `to` has room for kBlockPoints.
void FindDeviations(const PointBlock& block, const Feature& feature, double* to, double& smallest, double& largest);

// Two where the deviation is a distance that cannot be negative: it has no derivative at 0, but the components that it
// is the length of have one.
inline constexpr int kMostResiduals = 2;
int ResidualsPerPoint(FeatureKind kind);

// The residuals of a point in the frame of the feature, whose squares add up to that of the deviation, and their
// derivatives by all unknowns; returns their number.
int ResidualsOf(const Feature& feature, const Vec3& point, double (&residual)[kMostResiduals],
                double (&row)[kMostResiduals][kUnknowns]);

// One residual of the points from `begin` to `end` and its derivatives by the unknowns whose column is not null, of
// those that move the feature, from the top of each on and up to the next multiple of kLanes.
void FindRows(const PointBlock& block, std::size_t begin, std::size_t end, const Feature& feature, int which,
              double* const (&column)[kUnknowns], double* residual);

}  // namespace nu::engine::association

#endif
