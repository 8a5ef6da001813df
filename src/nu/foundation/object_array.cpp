#include "nu/foundation/object_array.h"

#include "nu/foundation/internal/array_definitions.h"

using namespace nu::internal;

namespace {

constexpr ArrayTexts kTexts = NU_ARRAY_TEXTS("CNuObjArray");

}  // namespace

NU_DEFINE_ARRAY(CNuObjArray, CNuObject*, CNuObject*, kTexts)

void CNuObjArray::Clear() {
  m_size = 0;
}
