#ifndef NU_CURVES_INTERNAL_SAMPLING_H
#define NU_CURVES_INTERNAL_SAMPLING_H

#include "nu/foundation/internal/failures.h"

namespace nu::internal {

// The limit is above what any curve needs, and these points take 400 MB: a radius from a damaged file, or a tolerance
// in the wrong unit, would ask for more memory than there is.
inline constexpr int kMostSamples = 10'000'000;

// A curve is sampled at its two ends at least.
inline void RequireSamples(double n, const char* where) {
  if (!(n > 1.0 && n <= kMostSamples)) FailOperation(NuOperationCount, "conversion", where);
}

}  // namespace nu::internal

#endif
