#ifndef NU_ENGINE_ASSOCIATION_TORUS_LEAST_SQUARES_H
#define NU_ENGINE_ASSOCIATION_TORUS_LEAST_SQUARES_H

#include "nu/engine/association/constrained_fit.h"

namespace nu::engine::association {

// The torus that makes the weighted sum of the squared distances least. Needs no start; the problem is one of least
// squares, and what it fixes must be given in `start`, whose other values are not used when nothing is fixed.
FittedFeature LeastSquaresTorus(const FitProblem& problem, const Feature& start = {});

}  // namespace nu::engine::association

#endif
