#ifndef NU_FOUNDATION_INTERNAL_NEW_OBJECTS_H
#define NU_FOUNDATION_INTERNAL_NEW_OBJECTS_H

#include <memory>
#include <vector>

#include "nu/foundation/object.h"
#include "nu/foundation/object_array.h"

namespace nu::internal {

// Results on their way into an array of the caller, who owns them from there on.
using NewObjects = std::vector<std::unique_ptr<CNuObject>>;

// Replaces the contents of the array, which may be null, and returns how many objects it received or would have. When
// there is no room for them the array stays as it was.
inline int HandOver(NewObjects objects, CNuObjArray* result) {
  const int count = static_cast<int>(objects.size());
  if (result == nullptr) return count;
  if (result->GetCapacity() < count) result->SetCapacity(count);
  result->Clear();
  for (auto& object : objects) result->Add(object.release());
  return count;
}

}  // namespace nu::internal

#endif
