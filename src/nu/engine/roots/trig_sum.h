#ifndef NU_ENGINE_ROOTS_TRIG_SUM_H
#define NU_ENGINE_ROOTS_TRIG_SUM_H

#include "nu/engine/rooms.h"

namespace nu::engine::roots {

// The sum of a[k] cos ku + b[k] sin ku for k = 0..n, u in radians, and its derivative. b[0] is not read. k u is formed
// without rounding, so that the cosines and sines have only the rounding of Cos and Sin, whatever k and u are, and the
// sum is compensated (T. Ogita, S. M. Rump, S. Oishi, SIAM J. Sci. Comput. 26, 2005). The error is below eps times the
// sum of |a[k]| + |b[k]|, for the derivative below 2 eps times the sum of k(|a[k]| + |b[k]|). A u that is not finite,
// or overflows times n, gives NaN.
double TrigValue(const double* a, const double* b, int n, double u);
double TrigDerivative(const double* a, const double* b, int n, double u);

// Adds the product of the sums of a[j] cos ju + b[j] sin ju, j = 0..n, and c[k] cos ku + d[k] sin ku, k = 0..m, to the
// n + m + 1 coefficients of another one, whose sines[0] becomes 0. b[0] and d[0] are not read.
void AddTrigProduct(const double* a, const double* b, int n, const double* c, const double* d, int m, double* cosines,
                    double* sines);

}  // namespace nu::engine::roots

#endif
