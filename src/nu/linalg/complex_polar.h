#ifndef NU_LINALG_COMPLEX_POLAR_H
#define NU_LINALG_COMPLEX_POLAR_H

#include "nu/export.h"
#include "nu/foundation/object.h"
#include "nu/fwd.h"

// A complex number in polar form: a strictly positive modulus and an argument in radians, which is not reduced to any
// range. Zero has no polar form.
class NU_EXPORT CNuComplexPolar : public CNuAlgebra {
 public:
  // Modulus 1 and argument 0: the number 1.
  CNuComplexPolar() : CNuComplexPolar(1.0, 0.0) {}
  // Fails with CNuConstructionException ("CNuComplexPolar"), as all results that underflow do:
  //   5  "modulus": not above 0, or NaN
  CNuComplexPolar(double modulus, double argument);
  CNuComplexPolar(const CNuComplexPolar&) = default;
  CNuComplexPolar& operator=(const CNuComplexPolar&) = default;
  ~CNuComplexPolar() override = default;

  // The modulus and the argument, which is in radians.
  double Modulus() const { return m_modulus; }
  double Argument() const { return m_argument; }
  void GetData(double* modulus, double* argument) const;

  // The real and the imaginary part of the same number.
  CNuComplex ToCartesianForm() const;

  // Fail with CNuOperationException, named by the operator:
  //   7  product: a modulus above NuGetLarge()     6  quotient: the divisor's modulus is below NuGetZero()
  CNuComplexPolar operator*(const CNuComplexPolar& c) const;
  CNuComplexPolar operator/(const CNuComplexPolar& c) const;

  // modulus^n and n times the argument. Fails with CNuOperationException ("calculation"):
  //   7  the modulus is above NuGetLarge()     2  n < 1
  CNuComplexPolar Power(int n) const;
  // The n roots of modulus^(1/n) at (argument + 2 k pi)/n, k = 0 .. n-1. For a modulus that is not above NuGetZero()
  // the only root is zero, so the constructor fails. Lack of memory is CNuMemoryException. Fails with
  // CNuOperationException ("calculation"):
  //   2  n < 1
  CNuComplexPolarArray Roots(int n) const;

 private:
  double m_modulus;
  double m_argument;
};

#endif
