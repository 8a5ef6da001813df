#ifndef NU_INSPECT_PLAN_TEMPLATE_H
#define NU_INSPECT_PLAN_TEMPLATE_H

#include <string>

#include "input/point_file.h"

// A commented plan for the points of a file, to be completed by hand: a feature for each group of points that a column
// names, or for all of them, of the type that fits best. `plan` is where the plan will lie: names in it are relative to
// that. Throws InputError.
std::string PlanFor(const std::string& points, const PointFileOptions& reading, const std::string& plan);

#endif
