#ifndef NU_GEOMETRY_INTERNAL_LINE_FITS_H
#define NU_GEOMETRY_INTERNAL_LINE_FITS_H

#include "nu/engine/points/point_view.h"
#include "nu/engine/shapes/incidence.h"
#include "nu/geometry/internal/feature_fit.h"

// The fits of CNuLine.
namespace nu::internal {

struct LineZone : FeatureFit<Line3> {
  Vec3 side;  // unit length, from the middle line to the first boundary; zero for points on one line
};

FeatureFit<Line3> FitLine(PointView points, const FitOptions& options);
LineZone FitMinZoneLine(PointView points, const FitOptions& options);

}  // namespace nu::internal

#endif
