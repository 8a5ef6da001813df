#ifndef NU_FOUNDATION_INTERNAL_ARRAY_RULES_H
#define NU_FOUNDATION_INTERNAL_ARRAY_RULES_H

#include <algorithm>
#include <climits>
#include <memory>
#include <type_traits>
#include <utility>

#include "nu/engine/base/large_pages.h"
#include "nu/foundation/exceptions.h"
#include "nu/foundation/internal/failures.h"

// The rules of the growable arrays, once for all element types. The array classes keep their members and texts; every
// operation that allocates does so before it changes anything, so a failure leaves the array as it was.
namespace nu::internal {

inline constexpr int kDefaultExpandSize = 10;

// The texts of the failures of one array class.
struct ArrayTexts {
  const char* className;
  const char* constructor;
  const char* copy;
  const char* setSize;
  const char* setExpandSize;
  const char* truncate;
  const char* append;
  const char* remove;
  const char* subArray;
  const char* first;
  const char* last;
};

#define NU_ARRAY_TEXTS(name)                                                                                     \
  ::nu::internal::ArrayTexts {                                                                                   \
    name, name "()", name "::Copy()", name "::SetSize()", name "::SetExpandSize()", name "::Truncate(int Size)", \
        name "::Append()", name "::Remove()", name "::SubArray(i, j)", name "::First()", name "::Last()"         \
  }

// The members of an array. `reserved` counts the elements that are really there: Add prepares room beyond the capacity
// that it reports, so that appending one by one stays linear whatever the expand size is.
template<class T>
struct ArrayFields {
  T*& data;
  int& size;
  int& capacity;
  int& expandSize;
  int& reserved;
};

template<class T>
T* AllocateElements(int count) {
  T* data = engine::base::LargePageAllocator<T>().allocate(static_cast<std::size_t>(count));
  std::uninitialized_value_construct_n(data, count);
  return data;
}

template<class T>
void ReleaseElements(T* data, int count) {
  if (data == nullptr) return;
  if constexpr (std::is_class_v<T>) {
    for (int i = 0; i < count; ++i) data[i].T::~T();
  }
  std::allocator<T>().deallocate(data, static_cast<std::size_t>(count));
}

template<class T>
T* AllocateElements(int count, const char* where) {
  return WithMemory(where, [&] { return AllocateElements<T>(count); });
}

template<class T>
struct ArrayRules {
  using Fields = ArrayFields<T>;

  static void Construct(Fields a, int capacity, int expandSize, const ArrayTexts& texts) {
    if (capacity < 0) throw CNuConstructionException(NuConstructionNegativeSize, texts.className, "size", 0, 0);
    if (expandSize < 1)
      throw CNuConstructionException(NuConstructionExpandSize, texts.className, "nArrayExpandSize", 0, 0);
    a.data = capacity == 0 ? nullptr : AllocateElements<T>(capacity, texts.constructor);
    a.size = 0;
    a.capacity = a.reserved = capacity;
    a.expandSize = expandSize;
  }

  static void Destroy(Fields a) { ReleaseElements(a.data, a.reserved); }

  static void Take(Fields a, Fields other) {
    a.data = std::exchange(other.data, nullptr);
    a.size = std::exchange(other.size, 0);
    a.capacity = std::exchange(other.capacity, 0);
    a.reserved = std::exchange(other.reserved, 0);
    a.expandSize = other.expandSize;
  }

  // A buffer of the target that has room for the source's capacity is kept; a source without storage leaves the target
  // its own.
  static void Copy(Fields a, const T* data, int size, int capacity, int expandSize, const ArrayTexts& texts) {
    if (data != nullptr && a.capacity < capacity) {
      T* fresh = AllocateElements<T>(capacity, texts.copy);
      ReleaseElements(a.data, a.reserved);
      a.data = fresh;
      a.capacity = a.reserved = capacity;
    }
    if (data != nullptr) std::copy_n(data, size, a.data);
    a.size = data == nullptr ? 0 : size;
    a.expandSize = expandSize < 1 ? kDefaultExpandSize : expandSize;
  }

  // Size, capacity and expand size end as after a copy, so the storage of a target with more room is not exchanged.
  static void Move(Fields a, Fields other, const ArrayTexts& texts) {
    if (other.data == nullptr || a.capacity > other.capacity) {
      Copy(a, other.data, other.size, other.capacity, other.expandSize, texts);
    } else {
      Destroy(a);
      Take(a, other);
    }
  }

  // Only ever enlarges: a capacity that is not above the present one is refused.
  static void SetCapacity(Fields a, int capacity, const ArrayTexts& texts) {
    if (capacity < 0 || capacity <= a.capacity) FailOperation(NuOperationArgument, "SetSize operation", texts.setSize);
    if (capacity > a.reserved) Reallocate(a, capacity, texts.setSize);
    a.capacity = capacity;
  }

  static void SetExpandSize(Fields a, int expandSize, const ArrayTexts& texts) {
    if (expandSize < 1) FailOperation(NuOperationArgument, "SetExpandSize operation", texts.setExpandSize);
    a.expandSize = expandSize;
  }

  // The value comes as a copy: it may be an element of the array that is about to move.
  static void Grow(Fields a, const ArrayTexts& texts) {
    if (a.expandSize > INT_MAX - a.size) FailOperation(NuOperationArgument, "SetSize operation", texts.setSize);
    const int capacity = a.size + a.expandSize;
    if (capacity > a.reserved) {
      const int ample = a.size < INT_MAX / 2 ? a.size + a.size / 2 : capacity;
      Reallocate(a, std::max(capacity, ample), texts.setSize);
    }
    a.capacity = capacity;
  }

  static void Append(Fields a, const T* data, int size, bool itself, const ArrayTexts& texts) {
    if (itself) FailOperation(NuOperationAppend, "Append operation", texts.append);
    if (size > INT_MAX - a.size) FailOperation(NuOperationArgument, "SetSize operation", texts.setSize);
    if (a.size + size > a.capacity) SetCapacity(a, a.size + size, texts);
    std::copy_n(data, size, a.data + a.size);
    a.size += size;
  }

  static void RequireElement(int i, int size, const char* what, const char* where) {
    if (size == 0) FailOperation(NuOperationEmpty, what, where);
    RequireIndex(i, size, what, where);
  }

  static void Remove(Fields a, int i, const ArrayTexts& texts) {
    RequireElement(i, a.size, "Remove operation", texts.remove);
    std::copy(a.data + i + 1, a.data + a.size, a.data + i);
    --a.size;
  }

  static void Truncate(Fields a, int size, const ArrayTexts& texts) {
    if (size < 0 || size > a.size)
      FailOperation(NuOperationArgument, "Truncate operation", texts.truncate, 0, a.size - 1);
    ShrinkTo(a, size, texts.truncate);
  }

  static void FreeExtra(Fields a, const ArrayTexts& texts) { ShrinkTo(a, a.size, texts.setSize); }

  // The checks of SubArray(i, j): the range first, then the order of the two.
  static void RequireRange(int i, int j, int size, const ArrayTexts& texts) {
    if (size == 0) FailOperation(NuOperationEmpty, "SubArray operation", texts.subArray);
    if (i < 0 || j >= size) FailOperation(NuOperationIndex, "SubArray operation", texts.subArray, 0, size - 1);
    if (i > j) FailOperation(NuOperationRange, "SubArray operation", texts.subArray);
  }

 private:
  static void Reallocate(Fields a, int count, const char* where) {
    T* fresh = count == 0 ? nullptr : AllocateElements<T>(count, where);
    std::copy_n(a.data, std::min(a.size, count), fresh);
    ReleaseElements(a.data, a.reserved);
    a.data = fresh;
    a.reserved = count;
  }

  static void ShrinkTo(Fields a, int size, const char* where) {
    if (size != a.reserved) Reallocate(a, size, where);
    a.size = a.capacity = size;
  }
};

}  // namespace nu::internal

#endif
