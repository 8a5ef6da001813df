#ifndef NU_INSPECT_METHODS_H
#define NU_INSPECT_METHODS_H

#include <string>
#include <vector>

#include "evaluate/fits.h"
#include "picture/pictures.h"

// One feature by one criterion.
struct Method {
  Terms terms;
  const char* option;  // of the criterion: "mz"
  ENuCriterion criterion;
  Inspection (*fit)(const std::vector<Vec3>& points, const FitTask& task);
  std::string (*draw)(const Inspection& inspection, const PictureLabels& labels);
};

// Each of the features by each of the criteria, "all" being those that a feature has; names in any letter case. Throws
// InputError for what there is not, and says what there is.
std::vector<Method> FindMethods(const std::vector<std::string>& features, const std::vector<std::string>& criteria);

// How the points are to be inspected.
struct InspectionTask {
  long boxes = 0;  // as in FitTask
  int filter = 0;  // of circles, as in Inspection
};

// Throws FitFailure.
Inspection Inspect(const Method& method, const std::vector<Vec3>& points, const InspectionTask& task);

// How the feature follows from the points: "minimum zone, MZCI (ISO 12181-1), unfiltered".
std::string EvaluationText(const Inspection& inspection);

// A sentence that lists the features and criteria that can be fitted.
std::string AvailableFits();

#endif
