#ifndef NU_NUMERICS_TRIAG_EQU_H
#define NU_NUMERICS_TRIAG_EQU_H

#include "nu/export.h"
#include "nu/foundation/double_array.h"
#include "nu/foundation/object.h"
#include "nu/fwd.h"

// The equation f(u) = 0 of a trigonometric polynomial f, solved for all its real roots in [0, 2 pi), in radians.
//
// No root is missed and none invented: bounds of the derivatives prove for every part of the circle how many there are,
// to the accuracy that the coefficients have. These are taken to be right to 16 roundings, so an extremum with |f| of
// at most 16 eps times the sum of the magnitudes sqrt(a_k^2 + b_k^2) touches zero. It is a double root at the place of
// the extremum, stored twice with the same value; roots of higher multiplicity likewise. An extremum beyond that gives
// two roots or none. Simple roots are as near as the rounding of the coefficients and of the angle lets them be.
//
// The size of f does not matter; harmonics that are negligible beside the others do not disturb. Degree 1 is solved in
// closed form, and so is f when all its harmonics are multiples of one. The time grows as the square of the degree. A
// constant has no roots, not even the constant 0.
class NU_EXPORT CNuTriagEqu : public CNuTrigonometry {
 public:
  // No roots.
  CNuTriagEqu();
  CNuTriagEqu(const CNuTriagEqu& other);
  CNuTriagEqu(CNuTriagEqu&& other) noexcept;
  CNuTriagEqu& operator=(const CNuTriagEqu& other);
  CNuTriagEqu& operator=(CNuTriagEqu&& other) noexcept;
  ~CNuTriagEqu() override;

  // Replaces the roots.
  // Fails with CNuOperationException ("calculation"), the roots unchanged: cause 46, a coefficient is not finite. No
  // memory: CNuMemoryException, the roots unchanged.
  void Solve(const CNuTriagPolynomial& p);
  void Solve(const CNuTriag& t);

  // The number of roots in [0, 2 pi), each as often as its multiplicity.
  int GetNumberRoots() const { return m_roots.GetSize(); }
  // Ascending, each as often as its multiplicity.
  CNuDoubleArray GetRoots() const { return m_roots; }
  // Neighbours not farther apart than tol, in radians, count as one root, at the mean of all that are so linked; the
  // first and the last are neighbours across 0. With tol = 0 only multiple roots are merged. Ascending in [0, 2 pi).
  CNuDoubleArray GetDistinctRoots(double tol) const;

 private:
  void Store(const double* cosines, const double* sines, int degree);

  CNuDoubleArray m_roots;
};

#endif
