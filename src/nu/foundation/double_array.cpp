#include "nu/foundation/double_array.h"

#include <algorithm>

#include "nu/engine/base/sort.h"
#include "nu/foundation/int_array.h"
#include "nu/foundation/internal/array_definitions.h"
#include "nu/foundation/numeric_helpers.h"
#include "nu/linalg/vector.h"

using namespace nu::internal;

namespace {

// Hosts tell an empty first or last element by the wording of the int array; this class shares it on purpose.
constexpr ArrayTexts kTexts = [] {
  ArrayTexts texts = NU_ARRAY_TEXTS("CNuDoubleArray");
  texts.first = "CNuIntArray::First()";
  texts.last = "CNuIntArray::Last()";
  return texts;
}();

void RequireNotEmpty(int size, const char* what, const char* where) {
  if (size == 0) FailOperation(NuOperationEmpty, what, where);
}

}  // namespace

NU_DEFINE_ARRAY(CNuDoubleArray, double, double, kTexts)
NU_DEFINE_ARRAY_PARTS(CNuDoubleArray, double, kTexts)
NU_DEFINE_ARRAY_MASK(CNuDoubleArray, kTexts)

void CNuDoubleArray::Clear() {
  std::fill_n(m_data, m_capacity, 0.0);
  m_size = 0;
}

int CNuDoubleArray::Find(double value, double tol) const {
  for (int i = 0; i < m_size; ++i) {
    if (std::fabs(m_data[i] - value) < tol) return i;
  }
  return -1;
}

ENuBoolean CNuDoubleArray::IsEqual(const CNuDoubleArray& other, double tol) const {
  if (m_size != other.m_size) return NuFalse;
  return m_size == 0 ? NuTrue : NuIsEqual(m_size, other.m_size, m_data, other.m_data, tol);
}

double CNuDoubleArray::Max() const {
  RequireNotEmpty(m_size, "Max operation", "CNuDoubleArray::Max()");
  double max = -NuGetLarge();
  for (int i = 0; i < m_size; ++i) {
    if (m_data[i] > max || std::isnan(m_data[i])) max = m_data[i];
  }
  return max;
}

double CNuDoubleArray::Min() const {
  RequireNotEmpty(m_size, "Min operation", "CNuDoubleArray::Min()");
  double min = NuGetLarge();
  for (int i = 0; i < m_size; ++i) {
    if (m_data[i] < min || std::isnan(m_data[i])) min = m_data[i];
  }
  return min;
}

double CNuDoubleArray::Sum() const {
  double sum = 0.0;
  for (int i = 0; i < m_size; ++i) sum += m_data[i];
  return sum;
}

ENuBoolean CNuDoubleArray::IsMonotonicIncreasing() const {
  RequireNotEmpty(m_size, "IsMonotonicIncreasing operation", "CNuDoubleArray::IsMonotonicIncreasing()");
  const auto isNotBelow = [](double a, double b) { return !(a <= b); };
  return std::adjacent_find(m_data, m_data + m_size, isNotBelow) == m_data + m_size ? NuTrue : NuFalse;
}

ENuBoolean CNuDoubleArray::IsStrictlyIncreasing() const {
  RequireNotEmpty(m_size, "IsStrictlyIncreasing operation", "CNuDoubleArray::IsStrictlyIncreasing()");
  const auto isNotBelow = [](double a, double b) { return !(a < b); };
  return std::adjacent_find(m_data, m_data + m_size, isNotBelow) == m_data + m_size ? NuTrue : NuFalse;
}

void CNuDoubleArray::Sort() {
  nu::internal::Sort(m_size, m_data);
}

void CNuDoubleArray::Sort(CNuIntArray* index) const {
  if (index == nullptr) return;
  CNuIntArray order(m_size);
  for (int i = 0; i < m_size; ++i) order.Add(i);
  SortIndex(m_size, m_data, order.GetData());
  index->Truncate(0);  // the assignment would keep larger room
  *index = std::move(order);
}

CNuVector CNuDoubleArray::ToVector() const {
  CNuVector result(m_size);
  std::copy_n(m_data, m_size, result.GetData());
  return result;
}
