#ifndef NU_FOUNDATION_INT_ARRAY_H
#define NU_FOUNDATION_INT_ARRAY_H

#include "nu/export.h"
#include "nu/foundation/boolean.h"
#include "nu/fwd.h"

namespace nu::internal {
template<class T>
struct ArrayFields;
}  // namespace nu::internal

// A growable array of int: index lists, permutations, masks. New room is zero-filled.
class NU_EXPORT CNuIntArray {
 public:
  // Room for `capacity` elements, none in use. A negative capacity: CNuConstructionException cause 2, "size"; an expand
  // size below 1: cause 15, "nArrayExpandSize"; no memory: CNuMemoryException, as from every copy and growth.
  explicit CNuIntArray(int capacity);
  explicit CNuIntArray(int capacity, int expandSize);
  CNuIntArray(const CNuIntArray& other);
  CNuIntArray(CNuIntArray&& other) noexcept;
  CNuIntArray& operator=(const CNuIntArray& other);
  CNuIntArray& operator=(CNuIntArray&& other) noexcept;
  ~CNuIntArray();

  int GetSize() const { return m_size; }
  int GetCapacity() const { return m_capacity; }
  int GetExpandSize() const { return m_expandSize; }
  const int* GetData() const { return m_data; }
  int* GetData() { return m_data; }

  // Both enlarge the capacity and leave the size. A capacity that is not above the present one: cause 14.
  void SetCapacity(int capacity);
  void SetSize(int capacity);
  // How much Add adds to a full capacity. Below 1: cause 14.
  void SetExpandSize(int expandSize);

  // Elements by index. Out of range: cause 3 with the valid range; empty: cause 8.
  int operator[](int i) const {
    if (i < 0 || i >= m_size) FailIndex(i);
    return m_data[i];
  }
  int& operator[](int i) {
    if (i < 0 || i >= m_size) FailIndex(i);
    return m_data[i];
  }
  int First() const;
  int Last() const;

  void Add(int value);
  // Appends all elements of another array; of itself: cause 18.
  void Append(const CNuIntArray& other);
  // Removes the element at index i. Out of range: cause 3 with the valid range; empty: cause 8.
  void Remove(int i);
  // Keeps the first `size` elements and exactly their room. Outside 0 to the size: cause 14.
  void Truncate(int size);
  // Shrinks the capacity to the size.
  void FreeExtra();
  // Size 0; the room is kept.
  void Clear();

  // The elements i to j, both included. Out of range: cause 3 with the valid range; i > j: cause 15.
  CNuIntArray SubArray(int i, int j) const;

  // Index of the first element equal to the value, -1 when there is none.
  int Find(int value) const;
  ENuBoolean IsEqual(const CNuIntArray& other) const;
  // The sum in index order, modulo 2^32; 0 when empty.
  int Sum() const;

  // Ascending, stable, n log n: in place; as the permutation that sorts this array, which replaces *index.
  void Sort();
  void Sort(CNuIntArray* index) const;

 private:
  nu::internal::ArrayFields<int> Fields();
  [[noreturn]] void FailIndex(int i) const;

  int* m_data = nullptr;
  int m_size = 0;
  int m_capacity = 0;
  int m_expandSize = 0;
  int m_reserved = 0;  // elements allocated, which may be ahead of the capacity while the array grows
};

#endif
