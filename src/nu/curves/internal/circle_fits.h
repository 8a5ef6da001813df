#ifndef NU_CURVES_INTERNAL_CIRCLE_FITS_H
#define NU_CURVES_INTERNAL_CIRCLE_FITS_H

#include "nu/engine/points/point_view.h"
#include "nu/engine/shapes/incidence.h"
#include "nu/geometry/internal/feature_fit.h"

// The fits of CNuCircle.
namespace nu::internal {

struct PlacedCircle : Circle3 {
  Vec3 xAxis;
};

struct CircleZone : FeatureFit<PlacedCircle> {
  double inner = 0.0;  // the radii of the boundaries
  double outer = 0.0;
  bool isInSpace = false;  // of points in no plane: the thinnest tube around a circle
};

FeatureFit<PlacedCircle> FitCircle(PointView points, const FitOptions& options);
FeatureFit<PlacedCircle> FitMinCircle(PointView points, const FitOptions& options);
FeatureFit<PlacedCircle> FitMaxCircle(PointView points, const FitOptions& options);
CircleZone FitMinZoneCircle(PointView points, const FitOptions& options);

}  // namespace nu::internal

#endif
