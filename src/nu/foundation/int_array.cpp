#include "nu/foundation/int_array.h"

#include <numeric>

#include "nu/foundation/internal/array_definitions.h"

using namespace nu::internal;

namespace {

// This class words some of its failures in its own way.
constexpr ArrayTexts kTexts = [] {
  ArrayTexts texts = NU_ARRAY_TEXTS("CNuIntArray");
  texts.setSize = "CNuIntArray::SetSize(int NewSize)";
  texts.setExpandSize = "CNuIntArray::SetExpandSize(int NewXSize)";
  return texts;
}();

}  // namespace

NU_DEFINE_ARRAY(CNuIntArray, int, int, kTexts)
NU_DEFINE_ARRAY_PARTS(CNuIntArray, int, kTexts)

void CNuIntArray::Clear() {
  std::fill_n(m_data, m_capacity, 0);
  m_size = 0;
}

int CNuIntArray::Find(int value) const {
  const int* found = std::find(m_data, m_data + m_size, value);
  return found == m_data + m_size ? -1 : static_cast<int>(found - m_data);
}

ENuBoolean CNuIntArray::IsEqual(const CNuIntArray& other) const {
  return std::equal(m_data, m_data + m_size, other.m_data, other.m_data + other.m_size) ? NuTrue : NuFalse;
}

int CNuIntArray::Sum() const {
  // NOLINTNEXTLINE(bugprone-fold-init-type): unsigned arithmetic wraps where int would overflow.
  return static_cast<int>(std::accumulate(m_data, m_data + m_size, 0u));
}

void CNuIntArray::Sort() {
  std::sort(m_data, m_data + m_size);
}

// Positions with equal values are told apart by their order, which makes the plain sort a stable one.
void CNuIntArray::Sort(CNuIntArray* index) const {
  if (index == nullptr) return;
  CNuIntArray order(m_size);
  for (int i = 0; i < m_size; ++i) order.Add(i);
  const int* values = m_data;
  std::sort(order.m_data, order.m_data + m_size,
            [values](int i, int j) { return values[i] != values[j] ? values[i] < values[j] : i < j; });
  index->Truncate(0);  // the assignment would keep larger room
  *index = std::move(order);
}
