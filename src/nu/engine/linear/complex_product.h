#ifndef NU_ENGINE_LINEAR_COMPLEX_PRODUCT_H
#define NU_ENGINE_LINEAR_COMPLEX_PRODUCT_H

#include "nu/engine/linear/complex_rows.h"

namespace nu::engine::linear {

// Computes c = a b; c overlaps neither factor. Every element is summed in increasing inner index.
void MultiplyComplex(const ComplexRows& a, const ComplexRows& b, const ComplexRows& c);

}  // namespace nu::engine::linear

#endif
