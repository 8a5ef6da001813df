#ifndef NU_GEOMETRY_FIT_RESULT_H
#define NU_GEOMETRY_FIT_RESULT_H

// What the fits that do not throw return: success, the iteration limit was reached, any other failure.
enum ENuFitResult { NuFitSuccess = 0, NuFitNoConvergence = 1, NuFitFailure = 2 };

#endif
