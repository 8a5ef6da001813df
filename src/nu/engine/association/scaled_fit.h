#ifndef NU_ENGINE_ASSOCIATION_SCALED_FIT_H
#define NU_ENGINE_ASSOCIATION_SCALED_FIT_H

#include "nu/engine/association/constrained_fit.h"
#include "nu/engine/points/point_blocks.h"

// What the methods of constrained fits share. Everything is in the unit of the blocks, from their origin.
namespace nu::engine::association {

// The unknowns that may move the feature, in units that make them lengths: an angle is multiplied by the distance of
// the farthest point.
struct FreeUnknowns {
  Unknown at[kUnknowns] = {};
  int count = 0;
  double unit[kUnknowns] = {};  // of each of them

  FreeUnknowns(FeatureKind kind, UnknownMask free, double extent);

  Feature Moved(const Feature& feature, const double* step) const;
};

struct ScaledFit {
  const FitProblem& problem;
  PointBlocks& points;
  double extent = 0.0;    // the distance of the farthest point from the origin of the feature
  double rounding = 0.0;  // the error of a deviation
  double tolerance = 0.0;
  StepMonitor monitor = {};  // in the caller's unit; that of the problem is in the unit of the blocks

  UnknownMask Free(const Feature& feature) const { return UnknownsOf(feature.kind) & ~problem.fixed; }
  double Sign() const { return problem.side == PointSide::negative ? -1.0 : 1.0; }
};

// Of 32 parts of a feature the one that a point belongs to: octants around the axis, quarters along it.
inline constexpr int kFeatureParts = 32;
int PartOf(const Feature& feature, double extent, const Vec3& point);

// The block as seen from the origin of the feature.
void CentreOn(const Feature& feature, const PointBlock& block, PointBlock& centred);

// In the order of the points.
void DeviationsOf(const Feature& feature, const PointBlock& block, double* deviation, double& smallest,
                  double& largest);

FittedFeature FitLeastSquares(const ScaledFit& fit, const Feature& start);
FittedFeature FitMinimax(const ScaledFit& fit, const Feature& start);

}  // namespace nu::engine::association

#endif
