#include "nu/geometry/point_array.h"

#include "nu/foundation/double_array.h"
#include "nu/foundation/int_array.h"
#include "nu/foundation/internal/array_definitions.h"

using namespace nu::internal;

namespace {

constexpr ArrayTexts kTexts = NU_ARRAY_TEXTS("CNuPointArray");

template<class Coordinate>
CNuDoubleArray Coordinates(const CNuPointArray& points, Coordinate coordinate) {
  CNuDoubleArray values(points.GetSize());
  for (int i = 0; i < points.GetSize(); ++i) values.Add(coordinate(points.GetData()[i]));
  return values;
}

}  // namespace

NU_DEFINE_ARRAY(CNuPointArray, CNuPoint, const CNuPoint&, kTexts)
NU_DEFINE_ARRAY_PARTS(CNuPointArray, CNuPoint, kTexts)
NU_DEFINE_ARRAY_MASK(CNuPointArray, kTexts)

void CNuPointArray::Clear() {
  m_size = 0;
}

CNuDoubleArray CNuPointArray::GetDataX() const {
  return Coordinates(*this, [](const CNuPoint& p) { return p.x(); });
}

CNuDoubleArray CNuPointArray::GetDataY() const {
  return Coordinates(*this, [](const CNuPoint& p) { return p.y(); });
}

CNuDoubleArray CNuPointArray::GetDataZ() const {
  return Coordinates(*this, [](const CNuPoint& p) { return p.z(); });
}
