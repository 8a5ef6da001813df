#ifndef NU_LINALG_VECTOR_H
#define NU_LINALG_VECTOR_H

#include "nu/export.h"
#include "nu/foundation/boolean.h"
#include "nu/foundation/object.h"
#include "nu/fwd.h"
#include "nu/geometry/geometry.h"

// A dense real vector of any length; with three components a direction in space. Vectors are row vectors: a matrix M
// acts as v * M. Up to four components are stored inside the object, more in one block; copies are deep.
// Failures are CNuOperationException, unless stated otherwise, and leave the vector as it was. Operators have their
// own name as the text and "CNuVector" as the place. Lack of memory is CNuMemoryException.
class NU_EXPORT CNuVector : public CNuObject {
 public:
  // (0, 0, 0)
  CNuVector() : CNuVector(0.0, 0.0, 0.0) {}
  CNuVector(double x, double y, double z)
      : CNuObject(NuTypeVector), m_data(m_local), m_size(3), m_capacity(kLocal), m_local{x, y, z, 0.0} {}
  // n zeros. Fails with CNuConstructionException ("CNuVector"): cause 1, "size": n < 1.
  explicit CNuVector(int n);
  CNuVector(const CNuVector& other);
  CNuVector(CNuVector&& other) noexcept;
  CNuVector& operator=(const CNuVector& other);
  CNuVector& operator=(CNuVector&& other) noexcept;
  ~CNuVector() override {
    if (m_data != m_local) delete[] m_data;
  }

  // The number of components.
  int GetSize() const { return m_size; }
  // The components in one block; valid until the vector is assigned to or ends.
  double* GetData() { return m_data; }
  const double* GetData() const { return m_data; }

  // Component i. Fails: cause 3, i is out of range, with the valid range.
  double& operator[](int i) {
    CheckIndex(i);
    return m_data[i];
  }
  double operator[](int i) const {
    CheckIndex(i);
    return m_data[i];
  }

  // Sums, products and quotients fail:
  //   5  the sizes differ     10  cross product: not three components
  //   5  vector * matrix: the size is not the number of rows
  //   7  factor: |f| > NuGetLarge(), or NaN     6  divisor: |d| < NuGetZero()
  CNuVector operator+(const CNuVector& b) const;
  CNuVector operator-(const CNuVector& b) const;
  CNuVector operator-() const;
  CNuVector& operator+=(const CNuVector& b);
  CNuVector& operator-=(const CNuVector& b);
  double operator%(const CNuVector& b) const;     // dot product, summed from index 0
  CNuVector operator&(const CNuVector& b) const;  // component by component
  CNuVector operator*(const CNuVector& b) const;  // cross product
  CNuVector operator*(const CNuMatrix& m) const;  // row vector times matrix
  CNuVector operator*(double f) const;
  CNuVector& operator*=(double f);
  CNuVector operator/(double d) const;
  CNuVector& operator/=(double d);

  // Square root of the sum of squares, without scaling.
  double Magnitude() const;
  // The sum of the components, from index 0 on.
  double Sum() const;
  // Extremes, not beyond -NuGetLarge() and NuGetLarge(), from which the search starts.
  double Max() const;
  double Min() const;

  // Whether every |component| < tol.
  ENuBoolean IsZero(double tol) const;
  // Whether every component is above 0; whether none is below 0.
  ENuBoolean IsPositive() const;
  ENuBoolean IsNonNegative() const;
  // Whether the sizes are equal and every difference is below tol.
  ENuBoolean IsEqual(const CNuVector& v, double tol) const;
  // Whether the directions are within `angle`, in radians, of parallel or orthogonal, in either sense. Fails:
  //   5  the sizes differ ("operator*", "operator%")     10  IsParallelTo: not three components ("operator*")
  ENuBoolean IsParallelTo(const CNuVector& v, double angle) const;
  ENuBoolean IsOrthogonalTo(const CNuVector& v, double angle) const;

  // The angle between two directions in degrees, in [0, 180]. About an axis: the angle in degrees, in [0, 360), of the
  // right-handed rotation about it that carries this direction to v; directions along the axis, in either sense, give
  // 0. Fails ("calculation"):
  //   10  a vector has not three components     9  a vector is zero within NuGetZero()
  //   14  the angles of the two with the axis differ by NuGetDegreeTol() or more
  double AngleWith(const CNuVector& v) const;
  double AngleWith(const CNuVector& v, const CNuVector& axis) const;

  // Components i to j, both included. Fails ("operation"):
  //   15  i > j     3  i or j is out of range, with the valid range
  CNuVector SubVector(int i, int j) const;
  // The point of three components, or of four homogeneous ones. Fails as NonHomogeneous.
  CNuPoint To3DPoint() const;
  // The same components with zero imaginary parts.
  operator CNuComplexVector() const;

  // Divides by the magnitude, at any size, if that is above NuGetZero(); a zero vector is unchanged.
  void Normalise();
  // Three components to four, the last 1, and back, divided by the last (by 1 if it is below NuGetZero()). Fail
  // ("calculation"):
  //   11  neither three nor four components
  void Homogeneous();
  void NonHomogeneous();

  // Sorts ascending and stably as NuSort: in place, or as the permutation that sorts, which replaces *index.
  void Sort();
  void Sort(CNuIntArray* index) const;

  // The canonical form of an axis direction: components below tol become 0. If `orient` is not 0, the component of
  // largest magnitude (the first of equals) is made positive.
  void SymmetricAxis(double tol, int orient);

  // Normalises this vector and completes it: x is orthogonal to it and to the coordinate axis of its smallest
  // component, y = this * x. OrthonormalY accepts two components as well: (-v, u, 0) for (u, v), also for a zero
  // vector. Fail
  // ("calculation"):
  //   10  not three components     9  zero within NuGetZero()
  void OrthonormalX(CNuVector* x);
  void OrthonormalY(CNuVector* y);
  void OrthonormalXY(CNuVector* x, CNuVector* y);

  // Rotates the direction by `angle` degrees about a coordinate axis or a direction, right-handed; a centre has no
  // meaning for a direction. A zero vector and an angle below NuGetZero() change nothing, and an angle within 6e-7
  // degrees of a multiple of 90 counts as that multiple. Fail:
  //   10  "rotation": axis has not three components     9  "rotation": axis is zero
  //   5  "operator*": this vector has not three components
  void Rotate(double angle, CNuGeometry::EAxisType axis);
  void Rotate(double angle, const CNuVector& axis);
  void Rotate(double angle, CNuGeometry::EAxisType axis, const CNuPoint& centre);
  void Rotate(double angle, const CNuVector& axis, const CNuPoint& centre);

  // A direction does not change when it is moved; these exist for code that moves features of any kind.
  void Translate(double dx, double dy, double dz) const;
  void Translate(const CNuPoint& p) const;

  // The vector's file: the tag "Vector" with its zero byte, the size as int, the components as doubles, all
  // little-endian. Writing returns true. Reading returns false for anything that is not such a file; only a file with a
  // sound head replaces the vector. Writing fails:
  //   48  the file cannot be written     47  the file cannot be opened
  bool BinaryDump(const char* fileName) const;
  bool BinaryRead(const char* fileName);

 private:
  static constexpr int kLocal = 4;

  void Init(int n);
  void Copy(const CNuVector& other);
  void Take(CNuVector& other) noexcept;
  void CheckIndex(const int& i) const {
    if (i < 0 || i >= m_size) FailIndex();
  }
  [[noreturn]] void FailIndex() const;
  void RequireDirection(const char* what, const char* where) const;
  void Turn(const CNuMatrix& rotation);

  double* m_data;
  int m_size;
  int m_capacity;
  double m_local[kLocal];
};

// f v, with the failures of v f.
NU_EXPORT CNuVector operator*(double f, const CNuVector& v);

#endif
