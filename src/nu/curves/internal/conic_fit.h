#ifndef NU_CURVES_INTERNAL_CONIC_FIT_H
#define NU_CURVES_INTERNAL_CONIC_FIT_H

#include "nu/engine/points/form_statistics.h"
#include "nu/engine/shapes/conics.h"
#include "nu/geometry/geometry.h"
#include "nu/geometry/internal/fit_guards.h"

// The fit of a conic from checked points to its place in space. `name` is the class of the conic.
namespace nu::internal {

template<class Curve>
struct FittedConic {
  Curve curve;
  Vec3 origin;
  Vec3 xAxis;
  CNuVector normal;
  Deviations deviations;
};

inline void RequireDistinct(const CNuPointArray& points, int least, const char* name) {
  if (CNuGeometry::NumberDistinctPoints(points, least, NuGetLengthTol()) == 0) {
    FailFit(kDegeneratePoints, name, least);
  }
}

template<class Curve>
FittedConic<Curve> FitConic(const CNuPointArray& points, const char* name, bool wantsDeviations, long maxIter);

}  // namespace nu::internal

#endif
