#ifndef NU_ASSOCIATION_INTERNAL_SAMPLED_FIT_DATA_H
#define NU_ASSOCIATION_INTERNAL_SAMPLED_FIT_DATA_H

#include "nu/engine/association/feature.h"
#include "nu/foundation/double_array.h"

namespace nu::internal {

struct SampledFitData {
  int samples = 0;
  int values = 0;
  const char* names[kUnknowns + 1] = {};
  CNuDoubleArray means{0};
  CNuDoubleArray deviations{0};
  CNuDoubleArray low{0};
  CNuDoubleArray high{0};
};

}  // namespace nu::internal

#endif
