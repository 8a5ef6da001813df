#ifndef NU_LINALG_LINEAR_EQU_SYS_H
#define NU_LINALG_LINEAR_EQU_SYS_H

#include <memory>

#include "nu/export.h"
#include "nu/foundation/boolean.h"
#include "nu/foundation/object.h"
#include "nu/fwd.h"
#include "nu/linalg/vector.h"

namespace nu::internal {
class EquationFactors;
}

// The system A x = b for a real matrix A: solved exactly, in the sense of least squares, or so with unknowns that are
// not negative. It keeps the factors of A, so that further right-hand sides cost little.
//
// Least squares goes by orthogonal factors of A, never by A^T A. Rows stream through the reduction once, in constant
// memory; what is kept for further right-hand sides is about as large as A itself. Singular values that are not above
// NuGetTol() times the largest times the larger dimension count as zero, and the solution is the shortest of those that
// fit best.
class NU_EXPORT CNuLinearEquSys : public CNuAlgebra {
 public:
  // method 0: exact solution of square systems; any other: least squares for any shape.
  explicit CNuLinearEquSys(int method);
  CNuLinearEquSys(const CNuLinearEquSys&) = default;
  CNuLinearEquSys& operator=(const CNuLinearEquSys&) = default;
  ~CNuLinearEquSys() override;

  // Factors A and solves; whatever an earlier solve left is gone, also when this one fails. Sizes of A and b differ:
  // cause 17, "solving a set of equations".
  // Exact: A not square: cause 45, "solving an exact set of equations"; A singular, as for
  // CNuMatrix::Inverse: no exception, and no solution exists. Reads NuGetTol() and NuGetZero().
  // Least squares: singular values that cannot be found, as for elements that are not finite: cause 46, "calculation",
  // "CNuMatrix::SVD()". With non-negative unknowns (see SetNonnegative) no solution exists when the exchanges do not
  // come to an end or A or b is not finite. After SetEquality, SetInequality and SetSingularSolvable least squares
  // gives no solution; after SetLeastDistance it throws as that does.
  virtual void Solve(const CNuMatrix& a, const CNuVector& b);
  // Solves for another right-hand side, to the bits that Solve would give. No factors kept, which is so after a failed
  // solve and with non-negative unknowns, or another size: cause 17, "solving a set of equations"; the solution stays.
  virtual void SetRightHandSide(const CNuVector& b);

  ENuBoolean SolutionExists();
  // (0, 0, 0) when no solution exists.
  CNuVector GetSolution() const;

  // Least squares with x >= 0 (C. L. Lawson, R. J. Hanson, Solving Least Squares Problems, 1974, chapter 23): unknowns
  // enter while the residual's product with their column is above NuGetLengthTol(). At most 10 exchanges per unknown.
  virtual void SetNonnegative();
  // The exact method substitutes even when A is singular, with vanishing pivots replaced by small ones.
  virtual void SetSingularSolvable();
  // Constraints are refused, cause 45, "solving a set of equations with equality/inequality constraints"; the request
  // is remembered all the same, and least squares then gives no solution.
  virtual void SetEquality(const CNuMatrix& a, const CNuVector& b);
  virtual void SetInequality(const CNuMatrix& a, const CNuVector& b);
  // Least distance programming is refused, cause 45, "least distance programming"; the request is remembered.
  virtual void SetLeastDistance();
  virtual void Solve();

 private:
  void SolveExact(const CNuMatrix& a, const CNuVector& b);
  void SolveLeastSquares(const CNuMatrix& a, const CNuVector& b);
  void SolveNonnegative(const CNuMatrix& a, const CNuVector& b);

  int m_method;
  int m_mode = 0;
  ENuBoolean m_solved = NuFalse;
  CNuVector m_solution;
  std::shared_ptr<const nu::internal::EquationFactors>
      m_factors;  // never change once made, so copies of the system share them
};

#endif
