#include "nu/engine/hulls/orientation2.h"

#include "nu/engine/base/exact_sum.h"

namespace nu::engine::hulls {

DoubleDouble ExactCross2(const double* p, const double* q, const double* r, const double* s) {
  ExactSum<16> sum;
  const double* ends[] = {q, p};
  const double* others[] = {s, r};
  for (int i = 0; i < 2; ++i) {
    for (int j = 0; j < 2; ++j) {
      const double sign = i == j ? 1.0 : -1.0;
      sum.AddProduct(sign * ends[i][0], others[j][1]);
      sum.AddProduct(-sign * ends[i][1], others[j][0]);
    }
  }
  return sum.Value();
}

}  // namespace nu::engine::hulls
