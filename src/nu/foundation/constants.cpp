#include "nu/foundation/constants.h"

constinit const double Nu_PI = 3.14159265358979323846;
constinit const double Nu_2PI = 3.14159265358979323846 + 3.14159265358979323846;
constinit const double Nu_E = 2.71828182845904523536;
constinit const double Nu_SQRT2 = 1.41421356237309504880;

constinit const unsigned int NuMajorVersionLabel = 3;
constinit const unsigned int NuMinorVersionLabel = 0;
constinit const unsigned int NuBuildVersionLabel = 0;
