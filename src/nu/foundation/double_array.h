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

  // The number of elements in use, the number there is room for, and by how many Add enlarges a full capacity.
  int GetSize() const { return m_size; }
  int GetCapacity() const { return m_capacity; }
  int GetExpandSize() const { return m_expandSize; }
  // The elements in one block, of which the first GetSize() are in use; valid until the array grows, shrinks or ends.
  const double* GetData() const { return m_data; }
  double* GetData() { return m_data; }

  // As for CNuIntArray: the first two enlarge the capacity, the last sets by how much Add does. Fail: cause 14.
  void SetCapacity(int capacity);
  void SetSize(int capacity);
  void SetExpandSize(int expandSize);

  // Element i. Fails: cause 8, the array is empty; cause 3, i is out of range, with the valid range.
  double operator[](int i) const {
    if (i < 0 || i >= m_size) FailIndex(i);
    return m_data[i];
  }
  double& operator[](int i) {
    if (i < 0 || i >= m_size) FailIndex(i);
    return m_data[i];
  }
  // The first and the last element. Fail: cause 8, the array is empty.
  double First() const;
  double Last() const;

  // Adds an element at the end. Fails: cause 14, more elements than an int can count.
  void Add(double value);
  // Adds all elements of the other array at the end. Fails: cause 18, the array itself; cause 14, too many.
  void Append(const CNuDoubleArray& other);
  // Removes element i; those behind it move up. Fails: cause 8, the array is empty; cause 3, out of range.
  void Remove(int i);
  // Keeps the first `size` elements and exactly their room. Fails: cause 14, size is negative or above the present one.
  void Truncate(int size);
  // Shrinks the capacity to the size.
  void FreeExtra();
  // Size 0; the capacity is kept.
  void Clear();

  // The elements i to j, both included. Fails: cause 8, the array is empty; cause 15, i > j; cause 3, out of range.
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
