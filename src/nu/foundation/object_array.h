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

  int GetSize() const { return m_size; }
  int GetCapacity() const { return m_capacity; }
  int GetExpandSize() const { return m_expandSize; }
  CNuObject* const* GetData() const { return m_data; }
  CNuObject** GetData() { return m_data; }

  void SetCapacity(int capacity);
  void SetSize(int capacity);
  void SetExpandSize(int expandSize);

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
  void Append(const CNuObjArray& other);
  void Truncate(int size);
  void FreeExtra();
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
