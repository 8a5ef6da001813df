#ifndef NU_INSPECT_METHODS_H
#define NU_INSPECT_METHODS_H

#include <string>
#include <vector>

#include "fits.h"
#include "pictures.h"

// One feature by one criterion.
struct Method {
  const char* feature;
  const char* criterion;
  const char* formName;
  Inspection (*fit)(const std::vector<Vec3>& points);
  std::string (*draw)(const Inspection& inspection, const PictureLabels& labels);
};

// The method of that name; throws InputError if there is none, and says what there is.
Method FindMethod(const std::string& feature, const std::string& criterion);

// Throws FitFailure.
Inspection Inspect(const Method& method, const std::vector<Vec3>& points);

// A sentence that lists the features and criteria that can be fitted.
std::string AvailableFits();

#endif
