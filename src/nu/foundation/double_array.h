#ifndef NU_FOUNDATION_DOUBLE_ARRAY_H
#define NU_FOUNDATION_DOUBLE_ARRAY_H

#include "nu/export.h"
#include "nu/foundation/boolean.h"
#include "nu/fwd.h"

namespace nu::internal {
template<class T>
struct ArrayFields;
}  // namespace nu::internal

// A growable array of double: abscissae, ordinates, roots. New room is zero-filled.
class NU_EXPORT CNuDoubleArray {
 public:
  // Room for `capacity` elements, none in use. A negative capacity: CNuConstructionException cause 2, "size"; an expand
  // size below 1: cause 15, "nArrayExpandSize"; no memory: CNuMemoryException, as from every copy and growth.
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

  // Both enlarge the capacity and leave the size. A capacity that is not above the present one: cause 14.
  void SetCapacity(int capacity);
  void SetSize(int capacity);
  // How much Add adds to a full capacity. Below 1: cause 14.
  void SetExpandSize(int expandSize);

  // Elements by index. Out of range: cause 3 with the valid range; empty: cause 8.
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
  // Appends all elements of another array; of itself: cause 18.
  void Append(const CNuDoubleArray& other);
  // Removes the element at index i. Out of range: cause 3 with the valid range; empty: cause 8.
  void Remove(int i);
  // Keeps the first `size` elements and exactly their room. Outside 0 to the size: cause 14.
  void Truncate(int size);
  // Shrinks the capacity to the size.
  void FreeExtra();
  // Size 0; the room is kept.
  void Clear();

  // The elements i to j, both included. Out of range: cause 3 with the valid range; i > j: cause 15.
  CNuDoubleArray SubArray(int i, int j) const;
  // The elements whose entry in the mask of the same size is not 0, in order, in an array whose capacity is the sum of
  // the mask. Sizes differ: cause 5.
  CNuDoubleArray SubArray(const CNuIntArray& mask) const;

  // Index of the first element with |element - value| < tol, -1 when there is none.
  int Find(double value, double tol) const;
  // Sizes equal and every |a[i] - b[i]| < tol.
  ENuBoolean IsEqual(const CNuDoubleArray& other, double tol) const;
  // Extremes, not beyond -NuGetLarge() and NuGetLarge(), from which the search starts; NaN where an element is. Empty:
  // cause 8.
  double Max() const;
  double Min() const;
  // The sum in index order; 0 when empty.
  double Sum() const;
  // a[i - 1] <= a[i], or <, for all i, without tolerance. Empty: cause 8.
  ENuBoolean IsMonotonicIncreasing() const;
  ENuBoolean IsStrictlyIncreasing() const;

  // Ascending, stable, n log n, as NuSort: in place; as the permutation that sorts this array, which replaces *index.
  void Sort();
  void Sort(CNuIntArray* index) const;

  // A vector of the same components. Empty: CNuConstructionException cause 1, "CNuVector", "size".
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
