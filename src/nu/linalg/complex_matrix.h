#ifndef NU_LINALG_COMPLEX_MATRIX_H
#define NU_LINALG_COMPLEX_MATRIX_H

#include "nu/export.h"
#include "nu/foundation/boolean.h"
#include "nu/foundation/object.h"
#include "nu/fwd.h"
#include "nu/linalg/complex.h"

// A dense complex matrix of at least one row and column. Copies are deep. Failures are CNuOperationException, unless
// stated otherwise, and leave operands and outputs as they were. Operators have their own name as the text and
// "CNuComplexMatrix" as the place. Lack of memory is CNuMemoryException.
class NU_EXPORT CNuComplexMatrix : public CNuAlgebra {
 public:
  // rows x columns zeros. Fails with CNuConstructionException ("CNuComplexMatrix"):
  //   1  "number of rows/columns": one is below 1
  explicit CNuComplexMatrix(int rows, int columns);
  // The same elements with zero imaginary parts.
  explicit CNuComplexMatrix(const CNuMatrix& re);
  // re + i im. Fails ("operation"): cause 5, the shapes differ.
  CNuComplexMatrix(const CNuMatrix& re, const CNuMatrix& im);
  CNuComplexMatrix(const CNuComplexMatrix& other);
  CNuComplexMatrix(CNuComplexMatrix&& other) noexcept;
  CNuComplexMatrix& operator=(CNuComplexMatrix other) noexcept;
  ~CNuComplexMatrix() override;

  // The number of rows and of columns.
  int GetRowSize() const { return m_rows; }
  int GetColumnSize() const { return m_columns; }

  // Element (i, j). Fails ("operation"): cause 3, i or j is out of range, with the valid range.
  CNuComplex& Element(int i, int j) { return m_data[IndexOf(i, j)]; }
  CNuComplex Element(int i, int j) const { return m_data[IndexOf(i, j)]; }
  CNuComplex GetElement(int i, int j) const { return Element(i, j); }
  void SetElement(int i, int j, const CNuComplex& value) { Element(i, j) = value; }

  // One row or column. Fail ("operation"):
  //   3  the index is out of range, with the valid range     5  the vector has another size
  CNuComplexVector GetRowVector(int i) const;
  CNuComplexVector GetColumnVector(int j) const;
  void SetRowVector(int i, const CNuComplexVector& v);
  void SetColumnVector(int j, const CNuComplexVector& v);

  // Rows r1 to r2 and columns c1 to c2, all included. The block may be this matrix. Fail ("operation"):
  //   15  r1 > r2 or c1 > c2     3  an index is out of range, with the valid range     5  m has another shape
  CNuComplexMatrix SubMatrix(int r1, int r2, int c1, int c2) const;
  void SetSubMatrix(int r1, int r2, int c1, int c2, const CNuComplexMatrix& m);

  // n x n. n < 1 fails as the constructor does.
  static CNuComplexMatrix Identity(int n);
  // The square matrix with the components of v on its diagonal and zeros elsewhere.
  static CNuComplexMatrix DiagonalMatrix(const CNuComplexVector& v);
  // Sum of the diagonal. Fails ("calculation"): cause 16, not square.
  CNuComplex Trace() const;
  // The transpose, the transpose of the conjugate, and the matrices of the real and of the imaginary parts.
  CNuComplexMatrix Transpose() const;
  CNuComplexMatrix ConjugateTranspose() const;
  CNuMatrix RealPart() const;
  CNuMatrix ImaginaryPart() const;

  // Every element of a product is summed from index 0 on. Sums, products and quotients fail:
  //   5  the shapes do not match     7  factor: |f| > NuGetLarge()     6  divisor: |d| < NuGetZero()
  CNuComplexMatrix operator+(const CNuComplexMatrix& b) const;
  CNuComplexMatrix operator-(const CNuComplexMatrix& b) const;
  CNuComplexMatrix& operator+=(const CNuComplexMatrix& b);
  CNuComplexMatrix& operator-=(const CNuComplexMatrix& b);
  CNuComplexMatrix operator-() const;
  CNuComplexMatrix operator*(const CNuComplexMatrix& b) const;
  CNuComplexVector operator*(const CNuComplexVector& v) const;
  CNuComplexMatrix operator*(double f) const;
  CNuComplexMatrix operator*(const CNuComplex& f) const;
  CNuComplexMatrix& operator*=(double f);
  CNuComplexMatrix& operator*=(const CNuComplex& f);
  CNuComplexMatrix operator/(double d) const;
  CNuComplexMatrix operator/(const CNuComplex& d) const;
  CNuComplexMatrix& operator/=(double d);
  CNuComplexMatrix& operator/=(const CNuComplex& d);

  // Whether both parts of every element, or of every difference, are below tol in magnitude. A matrix that is not
  // square is neither Hermitian (equal to its conjugate transpose) nor unitary (A A^H equal to the identity).
  ENuBoolean IsZero(double tol) const;
  ENuBoolean IsEqual(const CNuComplexMatrix& b, double tol) const;
  ENuBoolean IsHermitian(double tol) const;
  ENuBoolean IsUnitary(double tol) const;

  // The decompositions read no tolerance. The matrix is scaled by a power of two first, so that elements of any size
  // are accepted; a result beyond the range of double, possible for elements near its end, is infinite. A = Q R and its
  // like hold to some roundings of the largest element, and Q is unitary to rounding. Outputs may be this matrix; null
  // outputs are skipped. Fail ("calculation"):
  //   16  not square, but for QR     46  an element is not finite
  //   46  Schur, EigenValues: more than 30 sweeps per eigenvalue (300 in all for small matrices)

  // A = Q R by Householder reflections: Q square and unitary, R of the shape of A, upper trapezoidal with exact zeros
  // below the diagonal, which is real and not negative. With more rows than columns the first columns of Q and the
  // first rows of R are the thin factors.
  void QR(CNuComplexMatrix* q, CNuComplexMatrix* r) const;
  // A = Q H Q^H by Householder reflections, H with exact zeros below the first subdiagonal.
  void Hessenberg(CNuComplexMatrix* q, CNuComplexMatrix* h) const;
  // A = Q T Q^H, T upper triangular with exact zeros below the diagonal, which holds the eigenvalues: Hessenberg form,
  // then the QR iteration with single shifts (J. H. Wilkinson, The Algebraic Eigenvalue Problem, 1965, chapter 8).
  void Schur(CNuComplexMatrix* q, CNuComplexMatrix* t) const;
  // The diagonal of the Schur form in ascending order of the real, then of the imaginary parts.
  CNuComplexVector EigenValues() const;

 private:
  friend class CNuComplexVector;  // its product runs along the rows

  void Init(int rows, int columns);
  void RequireSquare(const char* where) const;
  int IndexOf(int i, int j) const;

  CNuComplex* m_data = nullptr;  // row by row
  int m_rows = 0;
  int m_columns = 0;
};

// f M, with the failures of M f.
NU_EXPORT CNuComplexMatrix operator*(double f, const CNuComplexMatrix& m);
NU_EXPORT CNuComplexMatrix operator*(const CNuComplex& f, const CNuComplexMatrix& m);

#endif
