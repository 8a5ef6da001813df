#ifndef NU_FOUNDATION_DOUBLE_ARRAY_H
#define NU_FOUNDATION_DOUBLE_ARRAY_H

#include "nu/export.h"
#include "nu/foundation/boolean.h"
#include "nu/fwd.h"

namespace nu::internal {
template<class T>
struct ArrayFields;
}  // namespace nu::internal

// A growable array of double: abscissae, ordinates, roots.
class NU_EXPORT CNuDoubleArray {
 public:
  // Construction, capacity, elements and failures are those of CNuIntArray.
  explicit CNuDoubleArray(int capacity);
  explicit CNuDoubleArray(int capacity, int expandSize);
  CNuDoubleArray(const CNuDoubleArray& other);
  CNuDoubleArray(CNuDoubleArray&& other) noexcept;
  CNuDoubleArray& operator=(const CNuDoubleArray& other);
  CNuDoubleArray& operator=(CNuDoubleArray&& other) noexcept;
  ~CNuDoubleArray();

  int GetSize() const { return m_size; }
  int GetCapacity() const { return m_capacity; }
  int GetExpandSize() const { return m_expandSize; }
  const double* GetData() const { return m_data; }
  double* GetData() { return m_data; }

  void SetCapacity(int capacity);
  void SetSize(int capacity);
  void SetExpandSize(int expandSize);

  double operator[](int i) const {
    if (i < 0 || i >= m_size) FailIndex(i);
    return m_data[i];
  }
  double& operator[](int i) {
    if (i < 0 || i >= m_size) FailIndex(i);
    return m_data[i];
  }
  double First() const;
  double Last() const;

  void Add(double value);
  void Append(const CNuDoubleArray& other);
  void Remove(int i);
  void Truncate(int size);
  void FreeExtra();
  void Clear();

  CNuDoubleArray SubArray(int i, int j) const;
  // The elements whose entry in the mask is not 0, in order, in an array whose capacity is the sum of the mask.
  CNuDoubleArray SubArray(const CNuIntArray& mask) const;

  // Index of the first element with |element - value| < tol, -1 when there is none.
  int Find(double value, double tol) const;
  // Whether the sizes are equal and every |a[i] - b[i]| < tol.
  ENuBoolean IsEqual(const CNuDoubleArray& other, double tol) const;
  // Extremes, not beyond -NuGetLarge() and NuGetLarge(), from which the search starts; NaN if an element is. Fail, as
  // IsMonotonicIncreasing and IsStrictlyIncreasing do: cause 8, the array is empty.
  double Max() const;
  double Min() const;
  // The sum in index order; 0 when empty.
  double Sum() const;
  // Whether a[i - 1] <= a[i], or <, for all i, without tolerance.
  ENuBoolean IsMonotonicIncreasing() const;
  ENuBoolean IsStrictlyIncreasing() const;

  // Sorts ascending and stably in n log n, as NuSort: in place, or as the permutation that sorts, which replaces
  // *index.
  void Sort();
  void Sort(CNuIntArray* index) const;

  // A vector of the same components. Fails with CNuConstructionException ("CNuVector"): cause 1, "size": empty.
  CNuVector ToVector() const;

 private:
  nu::internal::ArrayFields<double> Fields();
  [[noreturn]] void FailIndex(int i) const;

  double* m_data = nullptr;
  int m_size = 0;
  int m_capacity = 0;
  int m_expandSize = 0;
  int m_reserved = 0;  // elements allocated, which may be ahead of the capacity while the array grows
};

#endif
