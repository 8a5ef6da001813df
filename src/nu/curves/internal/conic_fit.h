#ifndef NU_CURVES_INTERNAL_CONIC_FIT_H
#define NU_CURVES_INTERNAL_CONIC_FIT_H

#include "nu/engine/points/point_view.h"
#include "nu/engine/shapes/conic_equation.h"
#include "nu/geometry/internal/feature_fit.h"

// The least-squares fit of a conic in the least-squares plane of the points.
namespace nu::internal {

// Which conic is fitted, as the checks of the points need it.
struct ConicFitRule {
  const char* name;  // of the class
  ConicKind kind;
  int leastDistinct;
};

// The lengths a and b are those of ConicShape.
struct FittedConic {
  double a = 0.0;
  double b = 0.0;
  Vec3 origin;
  Vec3 xAxis;
  Vec3 normal;
};

// The fits of CNuEllipse, CNuHyperbola and CNuParabola.
FeatureFit<FittedConic> FitConic(const ConicFitRule& rule, PointView points, const FitOptions& options);

FeatureFit<FittedConic> FitEllipse(PointView points, const FitOptions& options);
FeatureFit<FittedConic> FitHyperbola(PointView points, const FitOptions& options);
FeatureFit<FittedConic> FitParabola(PointView points, const FitOptions& options);

}  // namespace nu::internal

#endif
