#ifndef NU_LINALG_COMPLEX_VECTOR_H
#define NU_LINALG_COMPLEX_VECTOR_H

#include "nu/export.h"
#include "nu/foundation/boolean.h"
#include "nu/foundation/object.h"
#include "nu/fwd.h"
#include "nu/linalg/complex.h"

// A dense complex vector of at least one component; as a row vector it is multiplied by a matrix on its right. Copies
// are deep. A failed operation leaves the vector as it was; no memory: CNuMemoryException.
class NU_EXPORT CNuComplexVector : public CNuAlgebra {
 public:
  // n zeros. n < 1: CNuConstructionException cause 1, "size".
  explicit CNuComplexVector(int n);
  // re, and re + i im. Sizes differ: cause 5, "operation".
  explicit CNuComplexVector(const CNuVector& re);
  CNuComplexVector(const CNuVector& re, const CNuVector& im);
  CNuComplexVector(const CNuComplexVector& other);
  CNuComplexVector(CNuComplexVector&& other) noexcept;
  CNuComplexVector& operator=(CNuComplexVector other) noexcept;
  ~CNuComplexVector() override;

  int GetSize() const { return m_size; }
  CNuComplex* GetData() { return m_data; }
  const CNuComplex* GetData() const { return m_data; }

  // Component i. Out of range: cause 3 with the valid range.
  CNuComplex& operator[](int i);
  CNuComplex operator[](int i) const;

  // Sizes differ: cause 5, named by the operator.
  CNuComplexVector operator+(const CNuComplexVector& b) const;
  CNuComplexVector operator-(const CNuComplexVector& b) const;
  CNuComplexVector operator-() const;
  CNuComplexVector& operator+=(const CNuComplexVector& b);
  CNuComplexVector& operator-=(const CNuComplexVector& b);
  // The sum of products without conjugation, from index 0. It is no length: (1, i) % (1, i) is 0.
  CNuComplex operator%(const CNuComplexVector& b) const;
  // The scalar product sum conj(this[i]) * v[i], from index 0. Sizes differ: cause 5, "operation".
  CNuComplex InnerProduct(const CNuComplexVector& v) const;
  // Row vector times matrix. The size is not the row count: cause 5.
  CNuComplexVector operator*(const CNuComplexMatrix& m) const;
  // A factor whose magnitude is above NuGetLarge(), or NaN: cause 7.
  CNuComplexVector operator*(double f) const;
  CNuComplexVector operator*(const CNuComplex& f) const;
  CNuComplexVector& operator*=(double f);
  CNuComplexVector& operator*=(const CNuComplex& f);
  // A divisor whose magnitude is below NuGetZero(): cause 6.
  CNuComplexVector operator/(double d) const;
  CNuComplexVector operator/(const CNuComplex& d) const;
  CNuComplexVector& operator/=(double d);
  CNuComplexVector& operator/=(const CNuComplex& d);

  // Square root of the sum of |component|^2; it overflows only if it is itself too large.
  double Magnitude() const;
  // Divides by the magnitude, at any size, when that is above NuGetZero(). A zero vector, and one with a component that
  // is not finite, stays as it is.
  void Normalise();
  CNuComplexVector Conjugate() const;
  CNuVector RealPart() const;
  CNuVector ImaginaryPart() const;

  // Both parts of every component below tol in magnitude; the imaginary parts alone.
  ENuBoolean IsZero(double tol) const;
  ENuBoolean IsReal(double tol) const;
  // Sizes equal and both parts of every difference below tol.
  ENuBoolean IsEqual(const CNuComplexVector& v, double tol) const;

  // Components i to j, both included. Out of range: cause 3; i > j: cause 15.
  CNuComplexVector SubVector(int i, int j) const;

 private:
  void Init(int n);
  void CheckIndex(int i) const;
  int ScaleExponent() const;
  double ScaledMagnitude(int exponent) const;

  CNuComplex* m_data = nullptr;
  int m_size = 0;
};

NU_EXPORT CNuComplexVector operator*(double f, const CNuComplexVector& v);
NU_EXPORT CNuComplexVector operator*(const CNuComplex& f, const CNuComplexVector& v);

#endif
