#ifndef NU_INSPECT_PART_H
#define NU_INSPECT_PART_H

#include <functional>
#include <string>

#include "evaluate/part_result.h"

// Which part a plan is applied to.
struct PartFiles {
  std::string name;       // for reports
  std::string points;     // in place of the point file at the head of the plan; empty: that one
  std::string directory;  // that file names of the plan are relative to; empty: the directory of the plan
};

// Reads the points of a part and evaluates the whole plan. What fails is told in the result; only memory that runs out
// throws. `progress`, if there is one, hears after each feature how many are done.
PartResult EvaluatePart(const PartPlan& plan, const PartFiles& files,
                        const std::function<void(std::size_t)>& progress = nullptr);

#endif
