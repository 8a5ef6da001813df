#ifndef NU_FOUNDATION_NUMERIC_HELPERS_H
#define NU_FOUNDATION_NUMERIC_HELPERS_H

#include "nu/export.h"
#include "nu/foundation/boolean.h"

// True when na = nb >= 0, neither array is null and every |a[i] - b[i]| < tol; a difference of exactly tol is unequal,
// and so is a NaN.
NU_EXPORT ENuBoolean NuIsEqual(int na, int nb, const double* a, const double* b, double tol);

// sqrt(a^2 + b^2) and sqrt(a^2 + b^2 + c^2) without overflow; 0 when the largest magnitude is below NuGetZero().
NU_EXPORT double NuPythag(double a, double b);
NU_EXPORT double NuPythag(double a, double b, double c);

// Stable ascending sorts of a[0..n-1] in n log n: in place; as the permutation that sorts a, which stays as it is; in
// place with b carried along. A NaN compares with nothing, so values never cross it. n < 2 changes nothing, but the
// permutation of one element is written. Never throws.
NU_EXPORT void NuSort(int n, double* a);
NU_EXPORT void NuSort(int n, const double* a, int* index);
NU_EXPORT void NuSort(int n, double* a, double* b);

// The angle in degrees reduced to [0, 360), by the exact remainder. Non-finite arguments give NaN. Reads NuGetZero().
NU_EXPORT double NuAngleIn360Degree(double deg);

// The angle in radians reduced to [0, Nu_2PI), by the exact remainder beside the double Nu_2PI. That constant
// is 2.4e-16 short of a full turn, which counts after many turns. Non-finite arguments give NaN. Reads NuGetZero().
NU_EXPORT double NuAngleIn2Pi(double rad);

// The angle in radians, in [0, Nu_2PI), whose cosine and sine are proportional to c and s. Both zero give 1.5 Nu_PI, a
// NaN gives NaN.
// Reads NuGetZero().
NU_EXPORT double NuArcCosSin(double c, double s);

// Cosine and sine of an angle in radians. Beside an exact 1 or -1 the other is exactly 0; values closer than NuGetTol()
// become equal. Reads NuGetZero() and NuGetTol().
NU_EXPORT void NuCosSin(double angle, double* c, double* s);

// True when three side lengths form a triangle whose every side is shorter than the other two by more than tol; not of
// NaN.
NU_EXPORT ENuBoolean NuIsTriangle(double a, double b, double c, double tol);

namespace nu {

// Inverse hyperbolic cosine. x < 1 or NaN: CNuOperationException, cause 1. It has a namespace of
// its own because the C library owns ::acosh.
NU_EXPORT double acosh(double x);

}  // namespace nu

#endif
