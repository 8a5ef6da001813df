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

  int GetSize() const { return m_size; }
  int GetCapacity() const { return m_capacity; }
  int GetExpandSize() const { return m_expandSize; }
  const CNuComplex* GetData() const { return m_data; }
  CNuComplex* GetData() { return m_data; }

  void SetCapacity(int capacity);
  void SetSize(int capacity);
  void SetExpandSize(int expandSize);

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
  void Append(const CNuComplexArray& other);
  void Remove(int i);
  void Truncate(int size);
  void FreeExtra();
  void Clear() { m_size = 0; }

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

  int GetSize() const { return m_size; }
  int GetCapacity() const { return m_capacity; }
  int GetExpandSize() const { return m_expandSize; }
  const CNuComplexPolar* GetData() const { return m_data; }
  CNuComplexPolar* GetData() { return m_data; }

  void SetCapacity(int capacity);
  void SetSize(int capacity);
  void SetExpandSize(int expandSize);

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
  void Append(const CNuComplexPolarArray& other);
  void Remove(int i);
  void Truncate(int size);
  void FreeExtra();
  void Clear() { m_size = 0; }

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
