#ifndef NU_FOUNDATION_INT_ARRAY_H
#define NU_FOUNDATION_INT_ARRAY_H

#include "nu/export.h"
#include "nu/foundation/boolean.h"
#include "nu/fwd.h"

namespace nu::internal {
template<class T>
struct ArrayFields;
}  // namespace nu::internal

// A growable array of int: index lists, permutations, masks.
//
// What all growable arrays share. An array has room for GetCapacity() elements, of which the first GetSize() are in
// use; Add enlarges a full capacity by GetExpandSize(). Room for numbers and pointers is zero-filled. A failure leaves
// the array as it was. Lack of memory is CNuMemoryException. Construction fails with CNuConstructionException (the
// class), checked in this order:
//   2  "size": capacity < 0     15  "nArrayExpandSize": expandSize < 1
// All else fails with CNuOperationException:
//   8  operator[], First, Last, Remove, SubArray(i, j): the array is empty
//   3  operator[], Remove: i is out of range     3  SubArray(i, j): i < 0 or j is beyond the end; with the valid range
//   15  SubArray(i, j): i > j     5  SubArray(mask): the mask has another size     18  Append: the array itself
//   14  SetCapacity, SetSize: capacity is not above the present one     14  SetExpandSize: expandSize < 1
//   14  Truncate: size < 0, or above the present one     14  Add, Append: more elements than an int can count
class NU_EXPORT CNuIntArray {
 public:
  // Room for `capacity` elements, none in use.
  explicit CNuIntArray(int capacity);
  explicit CNuIntArray(int capacity, int expandSize);
  CNuIntArray(const CNuIntArray& other);
  CNuIntArray(CNuIntArray&& other) noexcept;
  CNuIntArray& operator=(const CNuIntArray& other);
  CNuIntArray& operator=(CNuIntArray&& other) noexcept;
  ~CNuIntArray();

  // The number of elements in use, the number there is room for, and by how many Add enlarges a full capacity.
  int GetSize() const { return m_size; }
  int GetCapacity() const { return m_capacity; }
  int GetExpandSize() const { return m_expandSize; }
  // The elements in one block, of which the first GetSize() are in use; valid until the array grows, shrinks or ends.
  const int* GetData() const { return m_data; }
  int* GetData() { return m_data; }

  // Both enlarge the capacity and leave the size.
  void SetCapacity(int capacity);
  void SetSize(int capacity);
  // The number of elements by which Add enlarges a full capacity.
  void SetExpandSize(int expandSize);

  // Element i. Fails: cause 8, the array is empty; cause 3, i is out of range, with the valid range.
  int operator[](int i) const {
    if (i < 0 || i >= m_size) FailIndex(i);
    return m_data[i];
  }
  int& operator[](int i) {
    if (i < 0 || i >= m_size) FailIndex(i);
    return m_data[i];
  }
  // The first and the last element. Fail: cause 8, the array is empty.
  int First() const;
  int Last() const;

  // Adds an element at the end. Fails: cause 14, more elements than an int can count.
  void Add(int value);
  // Adds all elements of the other array at the end. Fails: cause 18, the array itself; cause 14, too many.
  void Append(const CNuIntArray& other);
  // Removes element i; those behind it move up. Fails: cause 8, the array is empty; cause 3, out of range.
  void Remove(int i);
  // Keeps the first `size` elements and exactly their room.
  void Truncate(int size);
  // Shrinks the capacity to the size.
  void FreeExtra();
  // Size 0; the capacity is kept.
  void Clear();

  // The elements i to j, both included.
  CNuIntArray SubArray(int i, int j) const;

  // Index of the first element equal to the value, -1 when there is none.
  int Find(int value) const;
  // Whether the sizes and all elements are equal.
  ENuBoolean IsEqual(const CNuIntArray& other) const;
  // The sum in index order, modulo 2^32; 0 for an empty array.
  int Sum() const;

  // Sorts ascending and stably in n log n: in place, or as the permutation that sorts, which replaces *index.
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
