#ifndef NU_INSPECT_PLAN_READER_H
#define NU_INSPECT_PLAN_READER_H

#include <string>

#include "plan/part_plan.h"

// Whether a name on the command line means a plan: it ends in .toml.
bool MeansPlan(const std::string& path);

// Reads a plan of TOML 1.0, as docs/inspect.md describes it. Features need not name point files if `partsAreGiven`.
// Throws InputError with the line and the key.
PartPlan ReadPlan(const std::string& path, bool partsAreGiven);

#endif
