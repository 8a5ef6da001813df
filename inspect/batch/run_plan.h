#ifndef NU_INSPECT_RUN_PLAN_H
#define NU_INSPECT_RUN_PLAN_H

#include "run.h"

// Inspects parts by the plan that options.files begins with: the part of the plan, those of the other files, or those
// that land in the directory options.watch. Returns the gravest of what happened; throws InputError for a plan or
// options that are wrong, before any work.
ExitCode RunPlan(const Options& options);

#endif
