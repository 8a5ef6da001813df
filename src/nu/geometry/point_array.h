#ifndef NU_GEOMETRY_POINT_ARRAY_H
#define NU_GEOMETRY_POINT_ARRAY_H

#include "nu/export.h"
#include "nu/foundation/boolean.h"
#include "nu/fwd.h"
#include "nu/geometry/point.h"

namespace nu::internal {
template <class T>
struct ArrayFields;
}

// A growable array of points: measured data and everything that is asked of a set of points. Operations that rewrite
// the points keep their order unless they say otherwise.
class NU_EXPORT CNuPointArray {
 public:
  // Room for `capacity` elements, none in use. A negative capacity: CNuConstructionException cause 2, "size"; an expand
  // size below 1: cause 15, "nArrayExpandSize"; no memory: CNuMemoryException, as from every copy and growth.
  explicit CNuPointArray(int capacity);
  CNuPointArray(int capacity, int expandSize);
  CNuPointArray(const CNuPointArray& other);
  CNuPointArray(CNuPointArray&& other) noexcept;
  CNuPointArray& operator=(const CNuPointArray& other);
  CNuPointArray& operator=(CNuPointArray&& other) noexcept;
  ~CNuPointArray();

  int GetSize() const { return m_size; }
  int GetCapacity() const { return m_capacity; }
  int GetExpandSize() const { return m_expandSize; }
  const CNuPoint* GetData() const { return m_data; }
  CNuPoint* GetData() { return m_data; }

  // Both enlarge the capacity and leave the size. A capacity that is not above the present one: cause 14.
  void SetCapacity(int capacity);
  void SetSize(int capacity);
  // How much Add adds to a full capacity. Below 1: cause 14.
  void SetExpandSize(int expandSize);

  // Elements by index. Out of range: cause 3 with the valid range; empty: cause 8.
  CNuPoint operator[](int i) const {
    if (i < 0 || i >= m_size) FailIndex(i);
    return m_data[i];
  }
  CNuPoint& operator[](int i) {
    if (i < 0 || i >= m_size) FailIndex(i);
    return m_data[i];
  }
  CNuPoint First() const;
  CNuPoint Last() const;

  void Add(const CNuPoint& value);
  // Appends all elements of another array; of itself: cause 18.
  void Append(const CNuPointArray& other);
  // Removes the element at index i. Out of range: cause 3 with the valid range; empty: cause 8.
  void Remove(int i);
  // Keeps the first `size` elements and exactly their room. Outside 0 to the size: cause 14.
  void Truncate(int size);
  // Shrinks the capacity to the size.
  void FreeExtra();
  // Size 0; the room is kept.
  void Clear();

  // The elements i to j, both included. Out of range: cause 3 with the valid range; i > j: cause 15.
  CNuPointArray SubArray(int i, int j) const;
  // The points whose entry in the mask of the same size is not 0, in order, in an array whose capacity is the sum of
  // the mask. Sizes differ: cause 5.
  CNuPointArray SubArray(const CNuIntArray& mask) const;

  // The coordinates of all points, in order.
  CNuDoubleArray GetDataX() const;
  CNuDoubleArray GetDataY() const;
  CNuDoubleArray GetDataZ() const;

  CNuPoint MeanPoint() const;

  // Every point p becomes p - origin, or its coordinates in a frame.
  void MoveTo(const CNuPoint& origin);
  void MoveTo(const CNuVector& zaxis);
  void MoveTo(const CNuPoint& origin, const CNuVector& zaxis);
  void MoveTo(const CNuPoint& origin, const CNuVector& xaxis, const CNuVector& zaxis);

  ENuBoolean IsNoncollinear(CNuIntArray* idx, double tol) const;
  ENuBoolean IsNoncoplanar(CNuIntArray* idx, double tol) const;
  ENuBoolean Is2D() const;
  ENuBoolean IsIn(const CNuPoint& p, double tol) const;
  ENuBoolean IsEqual(const CNuPointArray& other, double tol) const;

  double MaxEdge(int* m, int* n) const;
  double MinEdge(int* m, int* n) const;
  void BoundingBox(CNuPoint* min, CNuPoint* max) const;
  void BoundingSphere(double* radius, CNuPoint* centre) const;
  void ConvexHull(CNuIntArray* hull) const;

  void RemoveDuplicate(double tol);
  void RemoveAdjacentDuplicate(double tol);

 private:
  nu::internal::ArrayFields<CNuPoint> Fields();
  [[noreturn]] void FailIndex(int i) const;

  CNuPoint* m_data = nullptr;
  int m_size = 0;
  int m_capacity = 0;
  int m_expandSize = 0;
  int m_reserved = 0;  // elements allocated, which may be ahead of the capacity while the array grows
};

#endif
