#ifndef NU_LINALG_COMPLEX_VECTOR_H
#define NU_LINALG_COMPLEX_VECTOR_H

#include "nu/export.h"
#include "nu/foundation/object.h"
#include "nu/fwd.h"
#include "nu/linalg/complex.h"

// A dense complex vector of at least one component. Copies are deep. No memory: CNuMemoryException.
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

  // Component i. Out of range: cause 3 with the valid range.
  CNuComplex& operator[](int i);
  CNuComplex operator[](int i) const;

 private:
  void Init(int n);
  void CheckIndex(int i) const;

  CNuComplex* m_data = nullptr;
  int m_size = 0;
};

#endif
