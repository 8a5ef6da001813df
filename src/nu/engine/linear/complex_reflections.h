#ifndef NU_ENGINE_LINEAR_COMPLEX_REFLECTIONS_H
#define NU_ENGINE_LINEAR_COMPLEX_REFLECTIONS_H

#include "nu/engine/linear/complex_rows.h"

namespace nu::engine::linear {

// Complex reflections H = I - tau v v^H with real tau, Hermitian and unitary, the first component of v being 1, and the
// reductions made of them. Blocks come in the working size of householder.h; row k of `v` takes the vector of
// reflection k, zero before its first component, and tau[k] its factor, 0 for the identity.

// A = Q R with Q the product of the reflections: R, upper trapezoidal, replaces a. v has min(rows, columns) rows of
// a.rows components; work: one padded complex row of a.columns.
void ReduceToTriangle(const ComplexRows& a, const ComplexRows& v, double* tau, double* work);

// A = Q H Q^H: H, zero below the first subdiagonal, replaces the square a. v has as many rows and columns; of them
// n - 2 are used, component k + 1 being the first of reflection k. work: 5 padded complex rows.
void ReduceToComplexHessenberg(const ComplexRows& a, const ComplexRows& v, double* tau, double* work);

// qT = (H_0 H_1 ... H_{count-1})^T, without conjugation: its rows are the columns of the product. The first component
// of reflection k is k + offset.
void FormTransposedUnitary(const ComplexRows& v, const double* tau, int count, int offset, const ComplexRows& qT);

// Turns the rows of R and the columns of Q (the rows of qT, unless null) so that the diagonal of R is real and not
// negative.
void MakeDiagonalPositive(const ComplexRows& r, const ComplexRows* qT);

}  // namespace nu::engine::linear

#endif
