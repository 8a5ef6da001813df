#ifndef NU_LINALG_COMPLEX_VECTOR_H
#define NU_LINALG_COMPLEX_VECTOR_H

#include "nu/export.h"
#include "nu/foundation/boolean.h"
#include "nu/foundation/object.h"
#include "nu/fwd.h"
#include "nu/linalg/complex.h"

// A dense complex vector of at least one component; as a row vector it is multiplied by a matrix on its right. Copies
// are deep. Failures are CNuOperationException, unless stated otherwise, and leave the vector as it was. Operators have
// their own name as the text and "CNuComplexVector" as the place. Lack of memory is CNuMemoryException.
class NU_EXPORT CNuComplexVector : public CNuAlgebra {
 public:
  // n zeros. Fails with CNuConstructionException ("CNuComplexVector"): cause 1, "size": n < 1.
  explicit CNuComplexVector(int n);
  // re, and re + i im. Fails ("operation"): cause 5, the sizes differ.
  explicit CNuComplexVector(const CNuVector& re);
  CNuComplexVector(const CNuVector& re, const CNuVector& im);
  CNuComplexVector(const CNuComplexVector& other);
  CNuComplexVector(CNuComplexVector&& other) noexcept;
  CNuComplexVector& operator=(CNuComplexVector other) noexcept;
  ~CNuComplexVector() override;

  // The number of components.
  int GetSize() const { return m_size; }
  // The components in one block.
  CNuComplex* GetData() { return m_data; }
  const CNuComplex* GetData() const { return m_data; }

  // Component i. Fail: cause 3, i is out of range, with the valid range.
  CNuComplex& operator[](int i);
  CNuComplex operator[](int i) const;

  // Sums, products and quotients fail:
  //   5  the sizes differ; vector * matrix: the size is not the number of rows
  //   7  factor: |f| > NuGetLarge(), or NaN     6  divisor: |d| < NuGetZero()
  CNuComplexVector operator+(const CNuComplexVector& b) const;
  CNuComplexVector operator-(const CNuComplexVector& b) const;
  CNuComplexVector operator-() const;
  CNuComplexVector& operator+=(const CNuComplexVector& b);
  CNuComplexVector& operator-=(const CNuComplexVector& b);
  // The sum of products without conjugation, from index 0. It is not a squared length: (1, i) % (1, i) is 0.
  CNuComplex operator%(const CNuComplexVector& b) const;
  // The scalar product sum conj(this[i]) * v[i], from index 0.
  CNuComplex InnerProduct(const CNuComplexVector& v) const;
  // Row vector times matrix.
  CNuComplexVector operator*(const CNuComplexMatrix& m) const;
  // Multiples: every component by the factor or divisor, with the failures 7 and 6 above.
  CNuComplexVector operator*(double f) const;
  CNuComplexVector operator*(const CNuComplex& f) const;
  CNuComplexVector& operator*=(double f);
  CNuComplexVector& operator*=(const CNuComplex& f);
  CNuComplexVector operator/(double d) const;
  CNuComplexVector operator/(const CNuComplex& d) const;
  CNuComplexVector& operator/=(double d);
  CNuComplexVector& operator/=(const CNuComplex& d);

  // Square root of the sum of |component|^2; it overflows only if it is itself too large.
  double Magnitude() const;
  // Divides by the magnitude, at any size, if that is above NuGetZero(). A zero vector, and one with a component that
  // is not finite, is unchanged.
  void Normalise();
  // The conjugate of every component, and the vectors of the real and of the imaginary parts.
  CNuComplexVector Conjugate() const;
  CNuVector RealPart() const;
  CNuVector ImaginaryPart() const;

  // Whether both parts of every component, or the imaginary parts alone, are below tol in magnitude.
  ENuBoolean IsZero(double tol) const;
  ENuBoolean IsReal(double tol) const;
  // Whether the sizes are equal and both parts of every difference are below tol.
  ENuBoolean IsEqual(const CNuComplexVector& v, double tol) const;

  // Components i to j, both included. Fails ("operation"):
  //   15  i > j     3  i or j is out of range, with the valid range
  CNuComplexVector SubVector(int i, int j) const;

 private:
  void Init(int n);
  void CheckIndex(int i) const;
  int ScaleExponent() const;
  double ScaledMagnitude(int exponent) const;

  CNuComplex* m_data = nullptr;
  int m_size = 0;
};

// f v, with the failures of v f.
NU_EXPORT CNuComplexVector operator*(double f, const CNuComplexVector& v);
NU_EXPORT CNuComplexVector operator*(const CNuComplex& f, const CNuComplexVector& v);

#endif
