#ifndef NU_INSPECT_COMPARE_H
#define NU_INSPECT_COMPARE_H

#include "run.h"

// One feature of one file by all of its criteria, beside each other in a table and in a picture. Returns the gravest of
// what happened; throws InputError.
ExitCode RunCompare(const Options& options);

#endif
