#ifndef NU_FOUNDATION_OBJECT_ARRAY_H
#define NU_FOUNDATION_OBJECT_ARRAY_H

#include "nu/export.h"
#include "nu/foundation/boolean.h"
#include "nu/fwd.h"

namespace nu::internal {
template<class T>
struct ArrayFields;
}  // namespace nu::internal

// A growable array of pointers to objects that its caller owns: nothing here ever deletes a pointed-to object.
class NU_EXPORT CNuObjArray {
 public:
  // Room for `capacity` elements, none in use. A negative capacity: CNuConstructionException cause 2, "size"; an expand
  // size below 1: cause 15, "nArrayExpandSize"; no memory: CNuMemoryException, as from every copy and growth.
  explicit CNuObjArray(int capacity);
  explicit CNuObjArray(int capacity, int expandSize);
  CNuObjArray(const CNuObjArray& other);
  CNuObjArray(CNuObjArray&& other) noexcept;
  CNuObjArray& operator=(const CNuObjArray& other);
  CNuObjArray& operator=(CNuObjArray&& other) noexcept;
  ~CNuObjArray();

  int GetSize() const { return m_size; }
  int GetCapacity() const { return m_capacity; }
  int GetExpandSize() const { return m_expandSize; }
  CNuObject* const* GetData() const { return m_data; }
  CNuObject** GetData() { return m_data; }

  // Both enlarge the capacity and leave the size. A capacity that is not above the present one: cause 14.
  void SetCapacity(int capacity);
  void SetSize(int capacity);
  // How much Add adds to a full capacity. Below 1: cause 14.
  void SetExpandSize(int expandSize);

  // Elements by index. Out of range: cause 3 with the valid range; empty: cause 8.
  CNuObject* operator[](int i) const {
    if (i < 0 || i >= m_size) FailIndex(i);
    return m_data[i];
  }
  CNuObject*& operator[](int i) {
    if (i < 0 || i >= m_size) FailIndex(i);
    return m_data[i];
  }
  CNuObject* First() const;
  CNuObject* Last() const;

  void Add(CNuObject* value);
  // Appends all elements of another array; of itself: cause 18.
  void Append(const CNuObjArray& other);
  // Keeps the first `size` elements and exactly their room. Outside 0 to the size: cause 14.
  void Truncate(int size);
  // Shrinks the capacity to the size.
  void FreeExtra();
  // Size 0; the room is kept.
  void Clear();

 private:
  nu::internal::ArrayFields<CNuObject*> Fields();
  [[noreturn]] void FailIndex(int i) const;

  CNuObject** m_data = nullptr;
  int m_size = 0;
  int m_capacity = 0;
  int m_expandSize = 0;
  int m_reserved = 0;  // elements allocated, which may be ahead of the capacity while the array grows
};

#endif
