#ifndef NU_INSPECT_FITS_H
#define NU_INSPECT_FITS_H

#include <nu/nu.h>

#include <stdexcept>
#include <vector>

#include "evaluate/inspection.h"

// The points do not determine the feature, or the iteration failed; the text says which.
class FitFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A feature with all that the report of its association tells. They pass the exceptions of the library on.
Inspection FitLine(const std::vector<Vec3>& points, ENuCriterion criterion);
Inspection FitPlane(const std::vector<Vec3>& points, ENuCriterion criterion);
Inspection FitCircle(const std::vector<Vec3>& points, ENuCriterion criterion);
Inspection FitEllipse(const std::vector<Vec3>& points, ENuCriterion criterion);
Inspection FitHyperbola(const std::vector<Vec3>& points, ENuCriterion criterion);
Inspection FitParabola(const std::vector<Vec3>& points, ENuCriterion criterion);
Inspection FitSphere(const std::vector<Vec3>& points, ENuCriterion criterion);
Inspection FitCylinder(const std::vector<Vec3>& points, ENuCriterion criterion);
Inspection FitCone(const std::vector<Vec3>& points, ENuCriterion criterion);
Inspection FitTorus(const std::vector<Vec3>& points, ENuCriterion criterion);

#endif
