#ifndef NU_GEOMETRY_INTERNAL_PLANE_FITS_H
#define NU_GEOMETRY_INTERNAL_PLANE_FITS_H

#include "nu/engine/points/point_view.h"
#include "nu/engine/shapes/incidence.h"
#include "nu/geometry/internal/feature_fit.h"

// The fits of CNuPlane. The boundaries of the zone are half its width off its middle plane, along the normal.
namespace nu::internal {

FeatureFit<Plane3> FitPlane(PointView points, const FitOptions& options);
FeatureFit<Plane3> FitMinZonePlane(PointView points, const FitOptions& options);

}  // namespace nu::internal

#endif
