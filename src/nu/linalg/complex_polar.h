#ifndef NU_LINALG_COMPLEX_POLAR_H
#define NU_LINALG_COMPLEX_POLAR_H

#include "nu/export.h"
#include "nu/foundation/object.h"
#include "nu/fwd.h"

// A complex number in polar form: a strictly positive modulus and an argument in radians, which is not reduced to any
// range. Zero has no polar form.
class NU_EXPORT CNuComplexPolar : public CNuAlgebra {
 public:
  CNuComplexPolar() : CNuComplexPolar(1.0, 0.0) {}
  // A modulus that is not above 0, or NaN: CNuConstructionException cause 5, "modulus".
  CNuComplexPolar(double modulus, double argument);
  CNuComplexPolar(const CNuComplexPolar&) = default;
  CNuComplexPolar& operator=(const CNuComplexPolar&) = default;
  ~CNuComplexPolar() override = default;

  double Modulus() const { return m_modulus; }
  double Argument() const { return m_argument; }
  void GetData(double* modulus, double* argument) const;

  CNuComplex ToCartesianForm() const;

  // Either modulus above NuGetLarge(): cause 7. A product that underflows has no polar form: CNuConstructionException
  // cause 5.
  CNuComplexPolar operator*(const CNuComplexPolar& c) const;
  // The divisor's modulus below NuGetZero(): cause 6. Underflow as above.
  CNuComplexPolar operator/(const CNuComplexPolar& c) const;

  // modulus^n and n times the argument. Modulus above NuGetLarge(): cause 7; n < 1: cause 2; both "calculation".
  // Underflow as above.
  CNuComplexPolar Power(int n) const;
  // The n roots of modulus^(1/n) at (argument + 2 k pi)/n, k = 0 .. n-1. n < 1: cause 2, "calculation"; a modulus that
  // is not above NuGetZero() and so has no root but zero, which has no polar form: the constructor's failure, cause 5.
  // No memory for n of them: CNuMemoryException.
  CNuComplexPolarArray Roots(int n) const;

 private:
  double m_modulus;
  double m_argument;
};

#endif
