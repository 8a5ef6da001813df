#ifndef NU_FOUNDATION_TOLERANCES_H
#define NU_FOUNDATION_TOLERANCES_H

#include "nu/export.h"

// The nine numerical tolerances of the library. Each thread has its own values and starts with the defaults; setting
// one affects neither another thread nor another tolerance. Setters take any double as it is: a tolerance of 0, a
// negative, infinite or NaN one may spoil a result but never hangs an operation. Nothing here throws.

// Relative precision of double arithmetic, about twice the machine epsilon: pivots, convergence, snapping. 4.45e-16.
NU_EXPORT double NuGetTol();
NU_EXPORT void NuSetTol(double value);

// Numbers above it are too large: scalar factors are refused, searches for extremes start from it. 1e300.
NU_EXPORT double NuGetLarge();
NU_EXPORT void NuSetLarge(double value);

// Magnitudes below it count as zero: divisors, norms, rotation axes. 1e-300.
NU_EXPORT double NuGetZero();
NU_EXPORT void NuSetZero(double value);

// Square root of the machine precision, for iterative equation solvers. 1.5e-8.
NU_EXPORT double NuGetSqrtTol();
NU_EXPORT void NuSetSqrtTol(double value);

// Lengths and coordinates closer than this are equal, in the caller's length unit. 1e-12.
NU_EXPORT double NuGetLengthTol();
NU_EXPORT void NuSetLengthTol(double value);

// Shortest edge that a polyline or an offset curve keeps, in the caller's length unit. 1e-9.
NU_EXPORT double NuGetMinEdgeLength();
NU_EXPORT void NuSetMinEdgeLength(double value);

// Directions closer than this are parallel, in degrees: one millionth of a second of arc. All features read it.
// 2.777777777778e-10.
NU_EXPORT double NuGetDegreeTol();
NU_EXPORT void NuSetDegreeTol(double value);

// A separate value in radians: how far the angle between the x axis of a conic and its normal may differ from a right
// angle. 4.848136811094e-12.
NU_EXPORT double NuGetRadianTol();
NU_EXPORT void NuSetRadianTol(double value);

// Smallest angle in degrees, one ten-thousandth of a second of arc. Kept for hosts; no operation of the library reads
// it. 2.777777777778e-8.
NU_EXPORT double NuGetMinAngle();
NU_EXPORT void NuSetMinAngle(double value);

#endif
