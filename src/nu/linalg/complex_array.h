#ifndef NU_LINALG_COMPLEX_ARRAY_H
#define NU_LINALG_COMPLEX_ARRAY_H

#include "nu/export.h"
#include "nu/fwd.h"
#include "nu/linalg/complex.h"
#include "nu/linalg/complex_polar.h"

namespace nu::internal {
template<class T>
struct ArrayFields;
}  // namespace nu::internal

// A growable array of complex numbers.
class NU_EXPORT CNuComplexArray {
 public:
  // Construction, capacity, elements and failures are those of CNuIntArray.
  explicit CNuComplexArray(int capacity);
  explicit CNuComplexArray(int capacity, int expandSize);
  CNuComplexArray(const CNuComplexArray& other);
  CNuComplexArray(CNuComplexArray&& other) noexcept;
  CNuComplexArray& operator=(const CNuComplexArray& other);
  CNuComplexArray& operator=(CNuComplexArray&& other) noexcept;
  ~CNuComplexArray();

  // The number of elements in use, the number there is room for, and by how many Add enlarges a full capacity.
  int GetSize() const { return m_size; }
  int GetCapacity() const { return m_capacity; }
  int GetExpandSize() const { return m_expandSize; }
  // The elements in one block, of which the first GetSize() are in use; valid until the array grows, shrinks or ends.
  const CNuComplex* GetData() const { return m_data; }
  CNuComplex* GetData() { return m_data; }

  // As for CNuIntArray: the first two enlarge the capacity, the last sets by how much Add does. Fail: cause 14.
  void SetCapacity(int capacity);
  void SetSize(int capacity);
  void SetExpandSize(int expandSize);

  // Element i. Fails: cause 8, the array is empty; cause 3, i is out of range, with the valid range.
  CNuComplex operator[](int i) const {
    if (i < 0 || i >= m_size) FailIndex(i);
    return m_data[i];
  }
  CNuComplex& operator[](int i) {
    if (i < 0 || i >= m_size) FailIndex(i);
    return m_data[i];
  }
  // The first and the last element. Fail: cause 8, the array is empty.
  CNuComplex First() const;
  CNuComplex Last() const;

  // Adds an element at the end. Fails: cause 14, more elements than an int can count.
  void Add(const CNuComplex& value);
  // Adds all elements of the other array at the end. Fails: cause 18, the array itself; cause 14, too many.
  void Append(const CNuComplexArray& other);
  // Removes element i; those behind it move up. Fails: cause 8, the array is empty; cause 3, out of range.
  void Remove(int i);
  // Keeps the first `size` elements and exactly their room. Fails: cause 14, size is negative or above the present one.
  void Truncate(int size);
  // Shrinks the capacity to the size.
  void FreeExtra();
  // Size 0; the capacity is kept.
  void Clear() { m_size = 0; }

  // The elements i to j, both included. Fails: cause 8, the array is empty; cause 15, i > j; cause 3, out of range.
  CNuComplexArray SubArray(int i, int j) const;

 private:
  nu::internal::ArrayFields<CNuComplex> Fields();
  [[noreturn]] void FailIndex(int i) const;

  CNuComplex* m_data = nullptr;
  int m_size = 0;
  int m_capacity = 0;
  int m_expandSize = 0;
  int m_reserved = 0;  // elements allocated, which may be ahead of the capacity while the array grows
};

// A growable array of complex numbers in polar form.
class NU_EXPORT CNuComplexPolarArray {
 public:
  // Construction, capacity, elements and failures are those of CNuIntArray.
  explicit CNuComplexPolarArray(int capacity);
  explicit CNuComplexPolarArray(int capacity, int expandSize);
  CNuComplexPolarArray(const CNuComplexPolarArray& other);
  CNuComplexPolarArray(CNuComplexPolarArray&& other) noexcept;
  CNuComplexPolarArray& operator=(const CNuComplexPolarArray& other);
  CNuComplexPolarArray& operator=(CNuComplexPolarArray&& other) noexcept;
  ~CNuComplexPolarArray();

  // The number of elements in use, the number there is room for, and by how many Add enlarges a full capacity.
  int GetSize() const { return m_size; }
  int GetCapacity() const { return m_capacity; }
  int GetExpandSize() const { return m_expandSize; }
  // The elements in one block, of which the first GetSize() are in use; valid until the array grows, shrinks or ends.
  const CNuComplexPolar* GetData() const { return m_data; }
  CNuComplexPolar* GetData() { return m_data; }

  // As for CNuIntArray: the first two enlarge the capacity, the last sets by how much Add does. Fail: cause 14.
  void SetCapacity(int capacity);
  void SetSize(int capacity);
  void SetExpandSize(int expandSize);

  // Element i. Fails: cause 8, the array is empty; cause 3, i is out of range, with the valid range.
  CNuComplexPolar operator[](int i) const {
    if (i < 0 || i >= m_size) FailIndex(i);
    return m_data[i];
  }
  CNuComplexPolar& operator[](int i) {
    if (i < 0 || i >= m_size) FailIndex(i);
    return m_data[i];
  }
  // The first and the last element. Fail: cause 8, the array is empty.
  CNuComplexPolar First() const;
  CNuComplexPolar Last() const;

  // Adds an element at the end. Fails: cause 14, more elements than an int can count.
  void Add(const CNuComplexPolar& value);
  // Adds all elements of the other array at the end. Fails: cause 18, the array itself; cause 14, too many.
  void Append(const CNuComplexPolarArray& other);
  // Removes element i; those behind it move up. Fails: cause 8, the array is empty; cause 3, out of range.
  void Remove(int i);
  // Keeps the first `size` elements and exactly their room. Fails: cause 14, size is negative or above the present one.
  void Truncate(int size);
  // Shrinks the capacity to the size.
  void FreeExtra();
  // Size 0; the capacity is kept.
  void Clear() { m_size = 0; }

  // The elements i to j, both included. Fails: cause 8, the array is empty; cause 15, i > j; cause 3, out of range.
  CNuComplexPolarArray SubArray(int i, int j) const;

 private:
  nu::internal::ArrayFields<CNuComplexPolar> Fields();
  [[noreturn]] void FailIndex(int i) const;

  CNuComplexPolar* m_data = nullptr;
  int m_size = 0;
  int m_capacity = 0;
  int m_expandSize = 0;
  int m_reserved = 0;  // elements allocated, which may be ahead of the capacity while the array grows
};

#endif
