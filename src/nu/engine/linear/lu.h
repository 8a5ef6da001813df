#ifndef NU_ENGINE_LINEAR_LU_H
#define NU_ENGINE_LINEAR_LU_H

#include <cstddef>

#include "nu/engine/rooms.h"

namespace nu::engine::linear {

struct LuResult {
  bool singular = false;  // a row or a pivot vanishes
  int parity = 1;         // +1 or -1: sign of the permutation
  int weakest = -1;       // the smallest pivot beside its column, where that makes the rank uncertain, else -1
};

// Factors the n x n row-major block a (leading dimension ld) in place: P A = L U, L below the diagonal with its unit
// diagonal implied, U on and above; row i of P A is row rows[i] of A.
//
// Partial pivoting. Rows of very different size are compared by their share of their own largest element, so that the
// unit in which an equation is written does not choose its pivot. A row vanishes when no element reaches `zero`; a
// pivot vanishes when, measured in its row, it does not exceed n * `tolerance` times the largest element of its column.
// A vanishing pivot is replaced by a value of that size: the factors of a singular matrix stay usable for substitution.
// Any input ends: a NaN pivot counts as vanishing.
LuResult FactorLu(double* a, int n, std::ptrdiff_t ld, int* rows, double tolerance, double zero);

// Computes x = A^-1 b from the factors of FactorLu; x and b are distinct arrays of n elements.
void SolveLu(const double* lu, int n, std::ptrdiff_t ld, const int* rows, const double* b, double* x);

// Replaces the n x count row-major block x (leading dimension ldx), which holds P B, by A^-1 B.
void SolveLuPermuted(const double* lu, int n, std::ptrdiff_t ld, double* x, int count, std::ptrdiff_t ldx);

// Returns the determinant, parity * product of the diagonal of U. The exponent is accumulated apart, so that it
// overflows or vanishes only if the result itself does.
double LuDeterminant(const double* lu, int n, std::ptrdiff_t ld, int parity);

}  // namespace nu::engine::linear

#endif
