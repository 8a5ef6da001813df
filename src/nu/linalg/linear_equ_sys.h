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

// The system A x = b for a real matrix A: solved exactly, by least squares, or by least squares with x >= 0. It keeps
// the factors of A, so that further right-hand sides cost little. Failures are CNuOperationException.
//
// Least squares uses orthogonal factors of A, never A^T A. Rows stream through the reduction once, in constant memory;
// the data kept for further right-hand sides is about as large as A itself. Singular values that are not above
// NuGetTol() times the largest times the larger dimension count as zero, and the solution is the shortest of those that
// fit best.
class NU_EXPORT CNuLinearEquSys : public CNuAlgebra {
 public:
  // method 0: exact solution of square systems; any other value: least squares for any shape.
  explicit CNuLinearEquSys(int method);
  CNuLinearEquSys(const CNuLinearEquSys&) = default;
  CNuLinearEquSys& operator=(const CNuLinearEquSys&) = default;
  ~CNuLinearEquSys() override;

  // Factors A and solves. The result of an earlier solve is discarded, even when this one fails. Fails:
  //   17  "solving a set of equations": the sizes of A and b differ
  //   45  "solving an exact set of equations": A is not square     45  least squares after SetLeastDistance
  //   46  "CNuMatrix::SVD()", "calculation": least squares, and an element of A is not finite
  // No solution exists, without a failure, where A is singular as for CNuMatrix::Inverse (exact), after SetEquality,
  // SetInequality and SetSingularSolvable (least squares), and where A or b is not finite or the exchanges do not end
  // (non-negative). The exact method reads NuGetTol() and NuGetZero().
  virtual void Solve(const CNuMatrix& a, const CNuVector& b);
  // Solves for another right-hand side, to the bits that Solve would give. Fails, the solution unchanged:
  //   17  "solving a set of equations": b has another size, or the last solve failed or was non-negative
  virtual void SetRightHandSide(const CNuVector& b);

  // Whether the last solve found a solution.
  ENuBoolean SolutionExists();
  // (0, 0, 0) when no solution exists.
  CNuVector GetSolution() const;

  // Least squares with x >= 0 (C. L. Lawson, R. J. Hanson, Solving Least Squares Problems, 1974, chapter 23): unknowns
  // enter while the product of the residual with their column is above NuGetLengthTol(). At most 10 exchanges per
  // unknown.
  virtual void SetNonnegative();
  // The exact method substitutes even when A is singular, with vanishing pivots replaced by small ones.
  virtual void SetSingularSolvable();
  // Not supported; the request is remembered, and least squares then gives no solution. Fail always:
  //   45  "solving a set of equations with equality/inequality constraints"
  virtual void SetEquality(const CNuMatrix& a, const CNuVector& b);
  virtual void SetInequality(const CNuMatrix& a, const CNuVector& b);
  // Not supported; the request is remembered. Fail always: cause 45, "least distance programming".
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
