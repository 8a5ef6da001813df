#ifndef NU_ENGINE_ASSOCIATION_TORUS_LEAST_SQUARES_H
#define NU_ENGINE_ASSOCIATION_TORUS_LEAST_SQUARES_H

#include "nu/engine/association/constrained_fit.h"

namespace nu::engine::association {

// The torus that makes the weighted sum of the squared distances least, without a start; what the problem fixes is not
// looked at.
FittedFeature LeastSquaresTorus(const FitProblem& problem);

}  // namespace nu::engine::association

#endif
