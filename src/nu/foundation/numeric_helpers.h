#ifndef NU_FOUNDATION_NUMERIC_HELPERS_H
#define NU_FOUNDATION_NUMERIC_HELPERS_H

#include "nu/export.h"
#include "nu/foundation/boolean.h"

// Whether na = nb >= 0, neither array is null and every |a[i] - b[i]| < tol. A NaN is unequal.
NU_EXPORT ENuBoolean NuIsEqual(int na, int nb, const double* a, const double* b, double tol);

// sqrt(a^2 + b^2) and sqrt(a^2 + b^2 + c^2) without overflow; 0 when the largest magnitude is below NuGetZero().
NU_EXPORT double NuPythag(double a, double b);
NU_EXPORT double NuPythag(double a, double b, double c);

// Stable ascending sorts of a[0..n-1] in n log n: in place; as the permutation that sorts a, which is unchanged; in
// place with b permuted alike. A NaN compares with nothing, so values never pass it. n < 2 changes nothing, but the
// permutation of one element is written. Never throws.
NU_EXPORT void NuSort(int n, double* a);
NU_EXPORT void NuSort(int n, const double* a, int* index);
NU_EXPORT void NuSort(int n, double* a, double* b);

// The angle in degrees reduced to [0, 360), by the exact remainder. Non-finite arguments give NaN. Reads NuGetZero().
NU_EXPORT double NuAngleIn360Degree(double deg);

// The angle in radians reduced to [0, Nu_2PI), by the exact remainder modulo the double Nu_2PI. That constant
// is 2.4e-16 less than a full turn, which shows after many turns. Non-finite arguments give NaN. Reads NuGetZero().
NU_EXPORT double NuAngleIn2Pi(double rad);

// The angle in radians, in [0, Nu_2PI), whose cosine and sine are proportional to c and s. Both zero give 1.5 Nu_PI, a
// NaN gives NaN. Reads NuGetZero().
NU_EXPORT double NuArcCosSin(double c, double s);

// Cosine and sine of an angle in radians. If one is exactly 1 or -1, the other is exactly 0; values closer than
// NuGetTol() become equal. Reads NuGetZero() and NuGetTol().
NU_EXPORT void NuCosSin(double angle, double* c, double* s);

// Whether each of three side lengths is shorter than the sum of the others by more than tol. False for a NaN.
NU_EXPORT ENuBoolean NuIsTriangle(double a, double b, double c, double tol);

namespace nu {

// Inverse hyperbolic cosine. It has a namespace of its own because the C library owns ::acosh.
// Fails with CNuOperationException ("acosh", "calculation"): cause 1, x < 1 or NaN.
NU_EXPORT double acosh(double x);

}  // namespace nu

#endif
