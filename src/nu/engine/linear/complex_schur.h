#ifndef NU_ENGINE_LINEAR_COMPLEX_SCHUR_H
#define NU_ENGINE_LINEAR_COMPLEX_SCHUR_H

#include <cstddef>

#include "nu/engine/linear/complex_rows.h"

namespace nu::engine::linear {

// A rotation of two neighbours: x <- c x + s y, y <- c y - conj(s) x.
struct ComplexRotation {
  double c;
  Complex s;
};

// The number of sweeps whose rotations are collected before they are applied to the unitary factor.
constexpr std::size_t kWaitingSweeps = 8;

// The Schur form T = Z^H H Z of a Hessenberg matrix in working size, which T replaces: upper triangular, exact zeros
// below the diagonal. When the form is not wanted only its diagonal is found, and what lies above it has no meaning.
// zT, unless null, is the transposed product of the transformations so far and is turned along. `waiting` has room for
// kWaitingSweeps * n rotations. False when 30 sweeps per value (300 for small matrices) do not do.
//
// The QR iteration with single shifts (Francis, Computer Journal 4 (1961) 265; Wilkinson, The Algebraic Eigenvalue
// Problem, 1965, chapter 8); neglect of couplings after Ahues and Tisseur, LAPACK Working Note 122, 1997.
bool ReduceToSchur(const ComplexRows& h, bool wantsForm, const ComplexRows* zT, ComplexRotation* waiting);

}  // namespace nu::engine::linear

#endif
