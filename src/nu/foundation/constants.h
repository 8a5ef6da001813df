#ifndef NU_FOUNDATION_CONSTANTS_H
#define NU_FOUNDATION_CONSTANTS_H

#include "nu/export.h"

// Each is the double nearest to the number it names; all are initialised before any code runs.
NU_EXPORT extern const double Nu_PI;
NU_EXPORT extern const double Nu_2PI;
NU_EXPORT extern const double Nu_E;
NU_EXPORT extern const double Nu_SQRT2;

// The version of the library that is loaded, which may be newer than the headers a host was compiled with.
NU_EXPORT extern const unsigned int NuMajorVersionLabel;
NU_EXPORT extern const unsigned int NuMinorVersionLabel;
NU_EXPORT extern const unsigned int NuBuildVersionLabel;

#endif
