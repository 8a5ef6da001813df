#include "nu/linalg/complex_vector.h"

#include <algorithm>
#include <utility>

#include "nu/foundation/internal/array_rules.h"
#include "nu/linalg/vector.h"

CNuComplexVector::CNuComplexVector(int n) : CNuAlgebra(NuTypeComplexVector) {
  if (n < 1) throw CNuConstructionException(1, "CNuComplexVector", "size", 0, 0);
  Init(n);
}

CNuComplexVector::CNuComplexVector(const CNuVector& re) : CNuComplexVector(re.GetSize()) {
  for (int i = 0; i < m_size; ++i) m_data[i] = {re[i], 0.0};
}

CNuComplexVector::CNuComplexVector(const CNuVector& re, const CNuVector& im) : CNuComplexVector(re.GetSize()) {
  if (im.GetSize() != m_size) nu::internal::FailOperation(5, "operation", "CNuComplexVector");
  for (int i = 0; i < m_size; ++i) m_data[i] = {re[i], im[i]};
}

CNuComplexVector::CNuComplexVector(const CNuComplexVector& other) : CNuAlgebra(NuTypeComplexVector) {
  if (other.m_size == 0) return;
  Init(other.m_size);
  std::copy_n(other.m_data, m_size, m_data);
}

CNuComplexVector::CNuComplexVector(CNuComplexVector&& other) noexcept
    : CNuAlgebra(other), m_data(std::exchange(other.m_data, nullptr)), m_size(std::exchange(other.m_size, 0)) {}

CNuComplexVector& CNuComplexVector::operator=(CNuComplexVector other) noexcept {
  std::swap(m_data, other.m_data);
  std::swap(m_size, other.m_size);
  return *this;
}

CNuComplexVector::~CNuComplexVector() {
  nu::internal::ReleaseElements(m_data, m_size);
}

void CNuComplexVector::Init(int n) {
  m_data = nu::internal::AllocateElements<CNuComplex>(n, "CNuComplexVector::Init()");
  m_size = n;
}

void CNuComplexVector::CheckIndex(int i) const {
  nu::internal::RequireIndex(i, m_size, "element operator[]", "CNuComplexVector");
}

CNuComplex& CNuComplexVector::operator[](int i) {
  CheckIndex(i);
  return m_data[i];
}

CNuComplex CNuComplexVector::operator[](int i) const {
  CheckIndex(i);
  return m_data[i];
}

CNuVector::operator CNuComplexVector() const {
  return CNuComplexVector(*this);
}
