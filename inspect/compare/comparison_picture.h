#ifndef NU_INSPECT_COMPARISON_PICTURE_H
#define NU_INSPECT_COMPARISON_PICTURE_H

#include <string>
#include <vector>

#include "evaluate/inspection.h"
#include "input/units.h"

// How the deviations from the feature spread by each criterion, all on one scale; of a circle, also the profile with
// the circles in it. The inspections are of the same points, the one by least squares first. Returns an SVG document.
std::string DrawComparison(const std::vector<Inspection>& inspections, const std::string& file, const LengthUnit& unit);

#endif
