#ifndef NU_ENGINE_LINEAR_EIGEN_SYMMETRIC_H
#define NU_ENGINE_LINEAR_EIGEN_SYMMETRIC_H

#include <cstddef>

#include "nu/engine/rooms.h"

namespace nu::engine::linear {

// Eigenvalues in ascending order, equal ones in the order in which they were found, and the orthonormal eigenvectors as
// the columns of `vectors` (n x n, leading dimension ldv) unless that is null. The symmetric part of the row-major
// block a is taken. False when an eigenvalue is not found within 30 iterations or an element is not finite.
//
// Householder reduction to tridiagonal form, then QL with implicit shifts (Martin, Reinsch and Wilkinson, Numerische
// Mathematik 11 (1968) 181; Dubrulle, Martin and Wilkinson, 12 (1968) 377).
bool DecomposeSymmetric(const double* a, int n, std::ptrdiff_t ld, double* values, double* vectors, std::ptrdiff_t ldv);

}  // namespace nu::engine::linear

#endif
