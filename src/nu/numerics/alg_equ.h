#ifndef NU_NUMERICS_ALG_EQU_H
#define NU_NUMERICS_ALG_EQU_H

#include "nu/export.h"
#include "nu/foundation/object.h"
#include "nu/fwd.h"

namespace nu::engine::roots {
struct FoundRoot;
}

// The roots of a polynomial equation, real ones and complex ones apart, each as often as its multiplicity. Every root x
// satisfies the equation to rounding: |p(x)| is at most 64 n 2^-52 times the sum of |c_i| |x|^i, n being the degree.
// Far above degree 1000, where the deflation loses too much, single roots may not, and where the coefficients that are
// not 0 span more than 300 decades, roots may be lost in the range of numbers. Copies are deep. No memory:
// CNuMemoryException, for which the roots stay as they were.
class NU_EXPORT CNuAlgEqu : public CNuAlgebra {
 public:
  // No roots.
  CNuAlgEqu();
  CNuAlgEqu(const CNuAlgEqu& other);
  CNuAlgEqu(CNuAlgEqu&& other) noexcept;
  CNuAlgEqu& operator=(const CNuAlgEqu& other);
  CNuAlgEqu& operator=(CNuAlgEqu&& other) noexcept;
  ~CNuAlgEqu() override;

  // Solves p(x) = 0 and replaces the roots. Leading coefficients that are 0 or below NuGetZero() in magnitude do not
  // count; degree 0 gives no roots; a root beyond the range of numbers is left out.
  // Degrees 2 to 4 in closed form, others by Laguerre's method; then real roots are polished. The complex ones are
  // exact conjugates. A pair whose real part is a root to rounding counts as two real roots: a double root is never
  // lost. So does, where a host sets NuGetTol() above its default, a pair with imaginary parts below it. Reads
  // NuGetTol(), NuGetSqrtTol(), NuGetZero(), NuGetLarge() and NuGetLengthTol(), none of which can keep it from ending.
  // The coefficients count, also where p carries a Chebyshev expression.
  // Fails with CNuOperationException ("calculation"), the roots unchanged: cause 46, a coefficient is not finite.
  void Solve(const CNuPolynomial& p);
  // The same for complex coefficients, of x^i in element i, by Laguerre's method. Hosts rely on an equation of degree
  // 0, or an empty array, leaving the present roots as they are. No polishing.
  void Solve(const CNuComplexArray& coefficients);

  // The number of real roots, and of complex ones, each as often as its multiplicity; of complex pairs both count.
  int GetNumberRealRoots() const { return m_realCount; }
  int GetNumberComplexRoots() const { return m_complexCount; }
  // Ascending.
  CNuDoubleArray GetRealRoots() const;
  // By ascending real part, the root with the positive imaginary part before its conjugate.
  CNuComplexArray GetComplexRoots() const;
  // Each value of the real roots once, ascending. Roots are the same only if they are exactly equal.
  CNuDoubleArray GetDistinctRealRoots() const;

 private:
  static constexpr int kLocal = 8;

  void Store(const nu::engine::roots::FoundRoot* roots, int count);
  void Take(CNuAlgEqu& other) noexcept;
  void Release() noexcept;

  int m_realCount = 0;
  int m_complexCount = 0;
  // The real roots, then real and imaginary part of every complex one; few of them stay in the object.
  double* m_roots;
  double m_local[kLocal];
};

#endif
