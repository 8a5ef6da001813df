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
  // Room for `capacity` elements, none in use. A negative capacity: CNuConstructionException cause 2, "size"; an expand
  // size below 1: cause 15, "nArrayExpandSize"; no memory: CNuMemoryException, as from every copy and growth.
  explicit CNuComplexArray(int capacity);
  explicit CNuComplexArray(int capacity, int expandSize);
  CNuComplexArray(const CNuComplexArray& other);
  CNuComplexArray(CNuComplexArray&& other) noexcept;
  CNuComplexArray& operator=(const CNuComplexArray& other);
  CNuComplexArray& operator=(CNuComplexArray&& other) noexcept;
  ~CNuComplexArray();

  int GetSize() const { return m_size; }
  int GetCapacity() const { return m_capacity; }
  int GetExpandSize() const { return m_expandSize; }
  const CNuComplex* GetData() const { return m_data; }
  CNuComplex* GetData() { return m_data; }

  // Both enlarge the capacity and leave the size. A capacity that is not above the present one: cause 14.
  void SetCapacity(int capacity);
  void SetSize(int capacity);
  // How much Add adds to a full capacity. Below 1: cause 14.
  void SetExpandSize(int expandSize);

  // Elements by index. Out of range: cause 3 with the valid range; empty: cause 8.
  CNuComplex operator[](int i) const {
    if (i < 0 || i >= m_size) FailIndex(i);
    return m_data[i];
  }
  CNuComplex& operator[](int i) {
    if (i < 0 || i >= m_size) FailIndex(i);
    return m_data[i];
  }
  CNuComplex First() const;
  CNuComplex Last() const;

  void Add(const CNuComplex& value);
  // Appends all elements of another array; of itself: cause 18.
  void Append(const CNuComplexArray& other);
  // Removes the element at index i. Out of range: cause 3 with the valid range; empty: cause 8.
  void Remove(int i);
  // Keeps the first `size` elements and exactly their room. Outside 0 to the size: cause 14.
  void Truncate(int size);
  // Shrinks the capacity to the size.
  void FreeExtra();
  // Size 0; the room is kept.
  void Clear() { m_size = 0; }

  // The elements i to j, both included. Out of range: cause 3 with the valid range; i > j: cause 15.
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
  // Room for `capacity` elements, none in use. A negative capacity: CNuConstructionException cause 2, "size"; an expand
  // size below 1: cause 15, "nArrayExpandSize"; no memory: CNuMemoryException, as from every copy and growth.
  explicit CNuComplexPolarArray(int capacity);
  explicit CNuComplexPolarArray(int capacity, int expandSize);
  CNuComplexPolarArray(const CNuComplexPolarArray& other);
  CNuComplexPolarArray(CNuComplexPolarArray&& other) noexcept;
  CNuComplexPolarArray& operator=(const CNuComplexPolarArray& other);
  CNuComplexPolarArray& operator=(CNuComplexPolarArray&& other) noexcept;
  ~CNuComplexPolarArray();

  int GetSize() const { return m_size; }
  int GetCapacity() const { return m_capacity; }
  int GetExpandSize() const { return m_expandSize; }
  const CNuComplexPolar* GetData() const { return m_data; }
  CNuComplexPolar* GetData() { return m_data; }

  // Both enlarge the capacity and leave the size. A capacity that is not above the present one: cause 14.
  void SetCapacity(int capacity);
  void SetSize(int capacity);
  // How much Add adds to a full capacity. Below 1: cause 14.
  void SetExpandSize(int expandSize);

  // Elements by index. Out of range: cause 3 with the valid range; empty: cause 8.
  CNuComplexPolar operator[](int i) const {
    if (i < 0 || i >= m_size) FailIndex(i);
    return m_data[i];
  }
  CNuComplexPolar& operator[](int i) {
    if (i < 0 || i >= m_size) FailIndex(i);
    return m_data[i];
  }
  CNuComplexPolar First() const;
  CNuComplexPolar Last() const;

  void Add(const CNuComplexPolar& value);
  // Appends all elements of another array; of itself: cause 18.
  void Append(const CNuComplexPolarArray& other);
  // Removes the element at index i. Out of range: cause 3 with the valid range; empty: cause 8.
  void Remove(int i);
  // Keeps the first `size` elements and exactly their room. Outside 0 to the size: cause 14.
  void Truncate(int size);
  // Shrinks the capacity to the size.
  void FreeExtra();
  // Size 0; the room is kept.
  void Clear() { m_size = 0; }

  // The elements i to j, both included. Out of range: cause 3 with the valid range; i > j: cause 15.
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
