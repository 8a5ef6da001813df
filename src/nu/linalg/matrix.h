#ifndef NU_LINALG_MATRIX_H
#define NU_LINALG_MATRIX_H

#include "nu/export.h"
#include "nu/foundation/boolean.h"
#include "nu/foundation/object.h"
#include "nu/fwd.h"

// Outcome of the eigen operations and of Inverse: 0 before, 1 computed, 2 computed, and the matrix has complex
// eigenvalues, of which only the real parts fit the result.
enum ENuStatus { NuStatusNone = 0, NuStatusComputed = 1, NuStatusComplex = 2 };

// A dense real matrix of at least one row and column. Elements are addressed by row pointers, data[row][column], which
// the host may use and even exchange; they point into one block, inside the object up to 4 x 4. Copies are deep.
// Failures are CNuOperationException, unless stated otherwise, and leave the operands as they were, but for the
// decompositions in place. Operators have their own name as the text and "CNuMatrix" as the place. Lack of memory is
// CNuMemoryException.
class NU_EXPORT CNuMatrix : public CNuAlgebra {
 public:
  // 4 x 4 zeros
  CNuMatrix();
  // rows x columns zeros. Fails with CNuConstructionException ("CNuMatrix"):
  //   1  "number of rows/columns": one is below 1
  explicit CNuMatrix(int rows, int columns);
  CNuMatrix(const CNuMatrix& other);
  CNuMatrix(CNuMatrix&& other) noexcept;
  CNuMatrix& operator=(const CNuMatrix& other);
  CNuMatrix& operator=(CNuMatrix&& other) noexcept;
  ~CNuMatrix() override { Release(); }

  // The number of rows and of columns.
  int GetRowSize() const { return m_rows; }
  int GetColumnSize() const { return m_columns; }
  // The rows: element (i, j) is GetData()[i][j]. The elements stand in one block, row after row.
  double** GetData() { return m_data; }
  const double* const* GetData() const { return m_data; }

  // Element (i, j). Fails ("operation"): cause 3, i or j is out of range, with the valid range.
  double& Element(int i, int j) {
    CheckRowColumnIndex(i, j);
    return m_data[i][j];
  }
  double Element(int i, int j) const {
    CheckRowColumnIndex(i, j);
    return m_data[i][j];
  }
  double GetElement(int i, int j) const { return Element(i, j); }
  void SetElement(int i, int j, double value) { Element(i, j) = value; }

  // One row or column. Fail ("operation"):
  //   3  the index is out of range, with the valid range     5  the vector has another size
  CNuVector GetRowVector(int i) const;
  CNuVector GetColumnVector(int j) const;
  void SetRowVector(int i, const CNuVector& v);
  void SetColumnVector(int j, const CNuVector& v);

  // Rows r1 to r2 and columns c1 to c2, all included. Fail ("operation"):
  //   15  r1 > r2 or c1 > c2     3  an index is out of range, with the valid range     5  m has another shape
  CNuMatrix SubMatrix(int r1, int r2, int c1, int c2) const;
  void SetSubMatrix(int r1, int r2, int c1, int c2, const CNuMatrix& m);

  // n x n. n < 1 fails as the constructor does.
  static CNuMatrix Identity(int n);
  // The square matrix with the components of v on its diagonal and zeros elsewhere.
  static CNuMatrix DiagonalMatrix(const CNuVector& v);
  // The columns x rows matrix with the elements (j, i).
  CNuMatrix Transpose() const;
  // A^T A, columns x columns, and A A^T, rows x rows; both exactly symmetric.
  CNuMatrix PreMultiplyTranspose() const;
  CNuMatrix PostMultiplyTranspose() const;
  // Sum of the diagonal. Fails ("calculation"): cause 16, not square.
  double Trace() const;
  // The same elements with zero imaginary parts.
  operator CNuComplexMatrix() const;

  // Every element of a product is summed from index 0 on. Sums, products and quotients fail:
  //   5  the shapes do not match     7  factor: |f| > NuGetLarge()     6  divisor: |d| < NuGetZero()
  CNuMatrix operator+(const CNuMatrix& b) const;
  CNuMatrix operator-(const CNuMatrix& b) const;
  CNuMatrix& operator+=(const CNuMatrix& b);
  CNuMatrix& operator-=(const CNuMatrix& b);
  CNuMatrix operator-() const;
  CNuMatrix operator*(const CNuMatrix& b) const;
  CNuVector operator*(const CNuVector& v) const;
  CNuMatrix operator*(double f) const;
  CNuMatrix& operator*=(double f);
  CNuMatrix operator/(double d) const;
  CNuMatrix& operator/=(double d);

  // Whether every |element|, or difference of elements, is below tol. A matrix that is not square is neither symmetric
  // nor orthogonal.
  ENuBoolean IsZero(double tol) const;
  ENuBoolean IsEqual(const CNuMatrix& b, double tol) const;
  ENuBoolean IsSymmetric(double tol) const;
  ENuBoolean IsOrthogonal(double tol) const;

  // P A = L U by elimination with partial pivoting, in place: L below the diagonal with its unit diagonal implied, U on
  // and above. Row i of P A is row index[i] of A; *d is the sign of the permutation, *status 0, or 1 when the matrix is
  // singular. Rows whose sizes differ by more than 1024 compete for the pivot by their share of their own largest
  // element. Singular: a row without an element of NuGetZero(), or a pivot not above n * NuGetTol() times the largest
  // element of its column (both measured in such shares), or not a number. A singular matrix is left with its factors,
  // each vanished pivot replaced by a small value. Fails ("calculation"): cause 16, not square, or singular.
  void LUD(CNuIntArray* index, int* d, int* status);
  // The same as three matrices with P * A = L * U.
  void LUD2(CNuMatrix* L, CNuMatrix* U, CNuMatrix* P) const;

  // A = U diag(w) V^T after Golub and Reinsch: U, of the shape of A, replaces this matrix; w takes as many values as
  // there are columns, all >= 0, in no order; v is square and orthogonal. Values below NuGetTol() * largest value *
  // larger dimension are exactly 0. With fewer rows than columns the missing rows count as zeros. A coupling is
  // negligible when it changes the norm by less than NuGetZero() times the norm, or not at all. Fails ("calculation"),
  // the matrix possibly overwritten in part:
  //   46  no convergence within 124 sweeps per value, or an element is not finite
  void SVD(CNuVector* w, CNuMatrix* v);

  // By LU decomposition, without intermediate overflow or underflow; exactly 0 only when a pivot is, NaN when an
  // element is not finite. Fails ("calculation"): cause 16, not square.
  double Determinant() const;
  // By LU decomposition; *status is 0 before and 1 after. Beyond LUD, a matrix is singular when changes of its elements
  // by n * NuGetTol() of themselves can make it so, by an estimate in O(n^2) that a weak pivot starts; the scales of
  // rows and columns do not matter. Fails ("calculation"): cause 16, not square, or singular.
  CNuMatrix Inverse(ENuStatus* status);

  // Eigenvalues and eigenvectors, the latter as columns of unit length in the order of the values.
  // Symmetric within NuGetTol(), or within n * NuGetTol() times the largest element of the two rows where that is more
  // (for elements below 1 / n: of the matrix): ascending values and orthonormal vectors of the symmetric part, by
  // Householder reduction and implicit QL. Else by balancing, reduction to Hessenberg form and double-shift QR: values
  // in ascending order of their real parts. A complex pair a +- ib gives the value a twice and, in its two columns, the
  // real part x and the imaginary part y of the vector of a + ib, of unit length together: A x = a x - b y,
  // A y = a y + b x; *status is then 2. Fails ("calculation"):
  //   16  not square     46  30 iterations in succession without progress, or an element is not finite
  void EigenValuesVectors(ENuStatus* status, CNuVector* values, CNuMatrix* vectors) const;
  // The same one by one. Each operation keeps the last matrix, NuGetTol() and result of the process, whatever the
  // thread, and returns that result when the tolerance is the same and every element differs by less than NuGetTol()^2
  // and NuGetTol() times the largest element.
  CNuVector EigenValues(ENuStatus* status);
  CNuMatrix EigenVectors(ENuStatus* status);

  // The matrix's file: the tag "Matrix" with its zero byte, rows and columns as int, the elements row by row as
  // doubles, all little-endian. Writing returns true. Reading returns false for anything that is not such a file, or
  // for lack of memory; only a complete file replaces the matrix. A pipe can be read. The memory used stays below five
  // times the bytes that are in the file. Writing fails:
  //   48  the file cannot be written     47  the file cannot be opened
  bool BinaryDump(const char* fileName) const;
  bool BinaryRead(const char* fileName);

 private:
  static constexpr int kLocalRows = 4;
  static constexpr int kLocalElements = 16;

  // Elements that the caller sets next.
  struct Unset {};
  CNuMatrix(int rows, int columns, Unset);

  void Init(int rows, int columns);
  void Copy(const CNuMatrix& other);
  void Allocate(int rows, int columns, const char* where);
  void Release() noexcept;
  void Take(CNuMatrix& other) noexcept;
  void CopyElements(const CNuMatrix& other);
  void CheckRowColumnIndex(const int& i, const int& j) const {
    if (i < 0 || i >= m_rows || j < 0 || j >= m_columns) FailIndex(i);
  }
  [[noreturn]] void FailIndex(int i) const;

  int m_rows = 0;
  int m_columns = 0;
  double** m_data = nullptr;
  void* m_block = nullptr;  // row pointers, then elements; null when both live inside the object
  double* m_localRows[kLocalRows];
  double m_localElements[kLocalElements];
};

// f M, with the failures of M f.
NU_EXPORT CNuMatrix operator*(double f, const CNuMatrix& m);

#endif
