#ifndef NU_GEOMETRY_POINT_ARRAY_H
#define NU_GEOMETRY_POINT_ARRAY_H

#include "nu/export.h"
#include "nu/foundation/boolean.h"
#include "nu/fwd.h"
#include "nu/geometry/point.h"

namespace nu::internal {
template<class T>
struct ArrayFields;
}  // namespace nu::internal

// A growable array of points: measured data, and the operations on a set of points. Those that rewrite the points keep
// their order. All failures but those of construction are CNuOperationException and leave the array as it was.
class NU_EXPORT CNuPointArray {
 public:
  // Construction, capacity, elements and failures are those of CNuIntArray.
  explicit CNuPointArray(int capacity);
  explicit CNuPointArray(int capacity, int expandSize);
  CNuPointArray(const CNuPointArray& other);
  CNuPointArray(CNuPointArray&& other) noexcept;
  CNuPointArray& operator=(const CNuPointArray& other);
  CNuPointArray& operator=(CNuPointArray&& other) noexcept;
  ~CNuPointArray();

  // The number of elements in use, the number there is room for, and by how many Add enlarges a full capacity.
  int GetSize() const { return m_size; }
  int GetCapacity() const { return m_capacity; }
  int GetExpandSize() const { return m_expandSize; }
  // The elements in one block, of which the first GetSize() are in use; valid until the array grows, shrinks or ends.
  const CNuPoint* GetData() const { return m_data; }
  CNuPoint* GetData() { return m_data; }

  // As for CNuIntArray: the first two enlarge the capacity, the last sets by how much Add does. Fail: cause 14.
  void SetCapacity(int capacity);
  void SetSize(int capacity);
  void SetExpandSize(int expandSize);

  // Element i. Fails: cause 8, the array is empty; cause 3, i is out of range, with the valid range.
  CNuPoint operator[](int i) const {
    if (i < 0 || i >= m_size) FailIndex(i);
    return m_data[i];
  }
  CNuPoint& operator[](int i) {
    if (i < 0 || i >= m_size) FailIndex(i);
    return m_data[i];
  }
  // The first and the last element. Fail: cause 8, the array is empty.
  CNuPoint First() const;
  CNuPoint Last() const;

  // Adds an element at the end. Fails: cause 14, more elements than an int can count.
  void Add(const CNuPoint& value);
  // Adds all elements of the other array at the end. Fails: cause 18, the array itself; cause 14, too many.
  void Append(const CNuPointArray& other);
  // Removes element i; those behind it move up. Fails: cause 8, the array is empty; cause 3, out of range.
  void Remove(int i);
  // Keeps the first `size` elements and exactly their room. Fails: cause 14, size is negative or above the present one.
  void Truncate(int size);
  // Shrinks the capacity to the size.
  void FreeExtra();
  // Size 0; the capacity is kept.
  void Clear();

  // The elements i to j, both included. Fails: cause 8, the array is empty; cause 15, i > j; cause 3, out of range.
  CNuPointArray SubArray(int i, int j) const;
  // The points whose entry in the mask is not 0, in order, in an array whose capacity is the sum of the mask.
  CNuPointArray SubArray(const CNuIntArray& mask) const;

  // The coordinates of all points, in order.
  CNuDoubleArray GetDataX() const;
  CNuDoubleArray GetDataY() const;
  CNuDoubleArray GetDataZ() const;

  // The arithmetic mean, accurate to about the rounding of its coordinates, whatever their number and distance from the
  // origin. Fails, as MoveTo, IsNoncollinear, IsNoncoplanar, Is2D, MaxEdge and MinEdge do: cause 8, the array is empty.
  CNuPoint MeanPoint() const;

  // Every point p becomes p - origin, or its coordinates in a frame. A frame without an x axis takes the in-plane axes
  // of CNuVector::OrthonormalXY and expects a unit z axis; otherwise both axes are normalised and y = z * x. Fails:
  //   10  an axis has not three components     9  zaxis is zero, in a frame without an x axis
  void MoveTo(const CNuPoint& origin);
  void MoveTo(const CNuVector& zaxis);
  void MoveTo(const CNuPoint& origin, const CNuVector& zaxis);
  void MoveTo(const CNuPoint& origin, const CNuVector& xaxis, const CNuVector& zaxis);

  // Whether three (four) points do not lie on a line (in a plane); *idx, written only then, receives their indices. The
  // first is 0, the second the first point that differs from it by `tol` or more in a coordinate; no other second point
  // is tried. With the unit direction d between them, a component of d * (p - p0) reaches `tol` for the third: the
  // first such point for a line, the last for a plane. The fourth is the last one more than `tol` off their plane.
  ENuBoolean IsNoncollinear(CNuIntArray* idx, double tol) const;
  ENuBoolean IsNoncoplanar(CNuIntArray* idx, double tol) const;
  // Whether all points have exactly the same z; for a lone point, whether its z is 0.
  ENuBoolean Is2D() const;
  // Whether some point is CNuPoint::IsEqual to p: each coordinate differs by strictly less than tol.
  ENuBoolean IsIn(const CNuPoint& p, double tol) const;
  // Whether both arrays have the same size and every point of each is in the other, however often. About linear in the
  // size.
  ENuBoolean IsEqual(const CNuPointArray& other, double tol) const;

  // The largest and the smallest CNuPoint::DistanceTo between two points and their indices *m < *n; of equal distances
  // the pair with the least m, then the least n. One point: 0, with m = n = 0. Distances that are NaN are ignored; when
  // none is left, or for MinEdge none below NuGetLarge(), the results are -0.1 and NuGetLarge(), with m = n = 0. About
  // n log n or better. Reads NuGetZero() as DistanceTo does.
  double MaxEdge(int* m, int* n) const;
  double MinEdge(int* m, int* n) const;
  // The least and the greatest coordinates, and the sphere about that box: its centre and half its diagonal, not the
  // smallest sphere about the points. All 0 for an empty array.
  void BoundingBox(CNuPoint* min, CNuPoint* max) const;
  void BoundingSphere(double* radius, CNuPoint* centre) const;
  // The indices of the corners of the convex hull of points that share one z, counter-clockwise seen from +z, by their
  // angle about the mean of the corners from the x direction on; fewer than three corners come from the least x on.
  // Exact: points on the line between two others are not corners, and of coincident points the first one counts. Points
  // with a non-finite x or y are ignored; an empty array has no corners. n log n, linear where few points are near the
  // hull. The corners are chosen as by W. F. Eddy, ACM Algorithm 523 (1977). Fails ("calculation of 3D convex hull"):
  //   45  the points do not share one z
  void ConvexHull(CNuIntArray* hull) const;

  // Keep, in order, the points that are not equal, as by IsIn, to any point kept before them, or to the last one.
  // RemoveDuplicate is about linear in the size.
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
