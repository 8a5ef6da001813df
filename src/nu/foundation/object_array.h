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
  // Construction, capacity, elements and failures are those of CNuIntArray.
  explicit CNuObjArray(int capacity);
  explicit CNuObjArray(int capacity, int expandSize);
  CNuObjArray(const CNuObjArray& other);
  CNuObjArray(CNuObjArray&& other) noexcept;
  CNuObjArray& operator=(const CNuObjArray& other);
  CNuObjArray& operator=(CNuObjArray&& other) noexcept;
  ~CNuObjArray();

  // The number of elements in use, the number there is room for, and by how many Add enlarges a full capacity.
  int GetSize() const { return m_size; }
  int GetCapacity() const { return m_capacity; }
  int GetExpandSize() const { return m_expandSize; }
  // The pointers in one block, of which the first GetSize() are in use; valid until the array grows, shrinks or ends.
  CNuObject* const* GetData() const { return m_data; }
  CNuObject** GetData() { return m_data; }

  // As for CNuIntArray: the first two enlarge the capacity, the last sets by how much Add does. Fail: cause 14.
  void SetCapacity(int capacity);
  void SetSize(int capacity);
  void SetExpandSize(int expandSize);

  // Element i. Fails: cause 8, the array is empty; cause 3, i is out of range, with the valid range.
  CNuObject* operator[](int i) const {
    if (i < 0 || i >= m_size) FailIndex(i);
    return m_data[i];
  }
  CNuObject*& operator[](int i) {
    if (i < 0 || i >= m_size) FailIndex(i);
    return m_data[i];
  }
  // The first and the last element. Fail: cause 8, the array is empty.
  CNuObject* First() const;
  CNuObject* Last() const;

  // Adds an element at the end. Fails: cause 14, more elements than an int can count.
  void Add(CNuObject* value);
  // Adds all elements of the other array at the end. Fails: cause 18, the array itself; cause 14, too many.
  void Append(const CNuObjArray& other);
  // Keeps the first `size` elements and exactly their room. Fails: cause 14, size is negative or above the present one.
  void Truncate(int size);
  // Shrinks the capacity to the size.
  void FreeExtra();
  // Size 0; the capacity is kept.
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
