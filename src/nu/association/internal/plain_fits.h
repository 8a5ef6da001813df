#ifndef NU_ASSOCIATION_INTERNAL_PLAIN_FITS_H
#define NU_ASSOCIATION_INTERNAL_PLAIN_FITS_H

#include "nu/association/internal/feature_classes.h"
#include "nu/geometry/internal/feature_fit.h"

// The fits of the classes by one name. Nothing here adds to them, so that an association without options gives their
// results to the last bit.
namespace nu::internal {

// What a fit tells beside the feature.
struct PlainOutcome {
  double form = 0.0;        // of least squares when it is wanted, or the width of the zone
  Deviations deviations;    // of least squares when they are wanted
  bool bothNappes = false;  // see Feature
  bool isInSpace = false;   // the minimum zone of a circle is a tube
};

// The criterion is one that the class has, but not the least squares of a torus, whose minimum zone is a circle in
// space. Fail as the fits of the class do.
PlainOutcome FitPlainly(PointView points, ENuCriterion criterion, const FitOptions& options, CNuLine* line);
PlainOutcome FitPlainly(PointView points, ENuCriterion criterion, const FitOptions& options, CNuPlane* plane);
PlainOutcome FitPlainly(PointView points, ENuCriterion criterion, const FitOptions& options, CNuCircle* circle);
PlainOutcome FitPlainly(PointView points, ENuCriterion criterion, const FitOptions& options, CNuEllipse* ellipse);
PlainOutcome FitPlainly(PointView points, ENuCriterion criterion, const FitOptions& options, CNuHyperbola* hyperbola);
PlainOutcome FitPlainly(PointView points, ENuCriterion criterion, const FitOptions& options, CNuParabola* parabola);
PlainOutcome FitPlainly(PointView points, ENuCriterion criterion, const FitOptions& options, CNuSphSurf* sphere);
PlainOutcome FitPlainly(PointView points, ENuCriterion criterion, const FitOptions& options, CNuCylSurf* cylinder);
PlainOutcome FitPlainly(PointView points, ENuCriterion criterion, const FitOptions& options, CNuConSurf* cone);
PlainOutcome FitPlainly(PointView points, ENuCriterion criterion, const FitOptions& options, CNuTorSurf* torus);

}  // namespace nu::internal

#endif
