#ifndef NU_INSPECT_BATCH_H
#define NU_INSPECT_BATCH_H

#include <functional>
#include <string>
#include <vector>

#include "evaluate/part.h"

// Why features of a part failed, each reason once: a file that cannot be read fails many.
std::vector<std::string> FeatureFailures(const PartResult& part);

// Evaluates every part, by at most that many threads, 0 being one for each core; the results stand in the order of the
// parts and are the same with any number of threads. Features are left out of them. `done` hears from any thread, one
// at a time, how many parts are done.
std::vector<PartResult> EvaluateParts(const PartPlan& plan, const std::vector<PartFiles>& parts,
                                      const std::function<void(std::size_t)>& done, unsigned threads = 0);

#endif
