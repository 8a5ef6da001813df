#include "nu/geometry/point_array.h"

#include "nu/foundation/double_array.h"
#include "nu/foundation/int_array.h"
#include "nu/foundation/internal/array_definitions.h"

using namespace nu::internal;

namespace {

constexpr ArrayTexts kTexts = NU_ARRAY_TEXTS("CNuPointArray");

}  // namespace

NU_DEFINE_ARRAY(CNuPointArray, CNuPoint, const CNuPoint&, kTexts)
NU_DEFINE_ARRAY_REMOVE(CNuPointArray, CNuPoint, kTexts)
NU_DEFINE_ARRAY_SUB_ARRAY(CNuPointArray, CNuPoint, kTexts)
NU_DEFINE_ARRAY_MASK(CNuPointArray, kTexts)

void CNuPointArray::Clear() {
  m_size = 0;
}

CNuDoubleArray CNuPointArray::GetDataX() const {
  CNuDoubleArray values(m_size);
  for (int i = 0; i < m_size; ++i) values.Add(m_data[i].x());
  return values;
}

CNuDoubleArray CNuPointArray::GetDataY() const {
  CNuDoubleArray values(m_size);
  for (int i = 0; i < m_size; ++i) values.Add(m_data[i].y());
  return values;
}

CNuDoubleArray CNuPointArray::GetDataZ() const {
  CNuDoubleArray values(m_size);
  for (int i = 0; i < m_size; ++i) values.Add(m_data[i].z());
  return values;
}
