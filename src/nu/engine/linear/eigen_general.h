#ifndef NU_ENGINE_LINEAR_EIGEN_GENERAL_H
#define NU_ENGINE_LINEAR_EIGEN_GENERAL_H

#include <cstddef>

#include "nu/engine/rooms.h"

namespace nu::engine::linear {

// Eigenvalues real[j] + i imaginary[j] of the n x n row-major block a, by ascending real part, of a complex pair the
// one with the positive imaginary part first. Column j of `vectors` (leading dimension ldv) belongs to value j and has
// unit length; for a complex pair the two columns hold the real and the imaginary part of the vector of its first
// value, of unit length together. False when 30 iterations in succession bring no value nearer or an element is not
// finite.
//
// Balancing (Parlett and Reinsch, Numerische Mathematik 13 (1969) 293), Householder reduction to Hessenberg form, which
// unlike elimination cannot grow, and the QR iteration with double shifts (Francis; Martin, Peters and Wilkinson, 14
// (1970) 219) to the real Schur form, on which each vector is one back substitution.
bool DecomposeGeneral(const double* a, int n, std::ptrdiff_t ld, double* real, double* imaginary, double* vectors,
                      std::ptrdiff_t ldv);

}  // namespace nu::engine::linear

#endif
