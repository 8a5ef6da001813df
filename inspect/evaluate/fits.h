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

// By which criterion, and how hard to look for a better optimum anywhere than the one that was found.
struct FitTask {
  ENuCriterion criterion;
  long boxes = 0;  // that the search may divide space into, at most; 0 for no search
};

// A feature with all that the report of its association tells. They pass the exceptions of the library on.
Inspection FitLine(const std::vector<Vec3>& points, const FitTask& task);
Inspection FitPlane(const std::vector<Vec3>& points, const FitTask& task);
Inspection FitCircle(const std::vector<Vec3>& points, const FitTask& task);
Inspection FitEllipse(const std::vector<Vec3>& points, const FitTask& task);
Inspection FitHyperbola(const std::vector<Vec3>& points, const FitTask& task);
Inspection FitParabola(const std::vector<Vec3>& points, const FitTask& task);
Inspection FitSphere(const std::vector<Vec3>& points, const FitTask& task);
Inspection FitCylinder(const std::vector<Vec3>& points, const FitTask& task);
Inspection FitCone(const std::vector<Vec3>& points, const FitTask& task);
Inspection FitTorus(const std::vector<Vec3>& points, const FitTask& task);

#endif
