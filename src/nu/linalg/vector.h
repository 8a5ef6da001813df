#ifndef NU_LINALG_VECTOR_H
#define NU_LINALG_VECTOR_H

#include "nu/export.h"
#include "nu/foundation/boolean.h"
#include "nu/foundation/object.h"
#include "nu/fwd.h"
#include "nu/geometry/geometry.h"

// A dense real vector of any length; with three components a direction in space. Vectors are row vectors: a matrix M
// acts as v * M. Up to four components live inside the object, more in one block of their own; copies are deep. A
// failed operation leaves the vector as it was; no memory: CNuMemoryException.
class NU_EXPORT CNuVector : public CNuObject {
 public:
  // (0, 0, 0)
  CNuVector() : CNuVector(0.0, 0.0, 0.0) {}
  CNuVector(double x, double y, double z)
      : CNuObject(NuTypeVector), m_data(m_local), m_size(3), m_capacity(kLocal), m_local{x, y, z, 0.0} {}
  // n zeros. n < 1: CNuConstructionException cause 1, "size".
  explicit CNuVector(int n);
  CNuVector(const CNuVector& other);
  CNuVector(CNuVector&& other) noexcept;
  CNuVector& operator=(const CNuVector& other);
  CNuVector& operator=(CNuVector&& other) noexcept;
  ~CNuVector() override {
    if (m_data != m_local) delete[] m_data;
  }

  int GetSize() const { return m_size; }
  double* GetData() { return m_data; }
  const double* GetData() const { return m_data; }

  // Component i. Out of range: cause 3 with the valid range.
  double& operator[](int i) {
    CheckIndex(i);
    return m_data[i];
  }
  double operator[](int i) const {
    CheckIndex(i);
    return m_data[i];
  }

  // Sizes differ: cause 5, named by the operator.
  CNuVector operator+(const CNuVector& b) const;
  CNuVector operator-(const CNuVector& b) const;
  CNuVector operator-() const;
  CNuVector& operator+=(const CNuVector& b);
  CNuVector& operator-=(const CNuVector& b);
  // Dot product, summed from index 0.
  double operator%(const CNuVector& b) const;
  // Component by component.
  CNuVector operator&(const CNuVector& b) const;
  // Cross product. Sizes differ: cause 5; not three components: cause 10.
  CNuVector operator*(const CNuVector& b) const;
  // Row vector times matrix. The size is not the row count: cause 5.
  CNuVector operator*(const CNuMatrix& m) const;
  // |f| > NuGetLarge() or NaN: cause 7.
  CNuVector operator*(double f) const;
  CNuVector& operator*=(double f);
  // |d| < NuGetZero(): cause 6.
  CNuVector operator/(double d) const;
  CNuVector& operator/=(double d);

  // Square root of the sum of squares, without scaling.
  double Magnitude() const;
  double Sum() const;
  // Extremes, not beyond -NuGetLarge() and NuGetLarge(), from which the search starts.
  double Max() const;
  double Min() const;

  // Every |component| < tol.
  ENuBoolean IsZero(double tol) const;
  ENuBoolean IsPositive() const;
  ENuBoolean IsNonNegative() const;
  // Sizes equal and every difference below tol.
  ENuBoolean IsEqual(const CNuVector& v, double tol) const;
  // Directions within `angle`, in radians, of parallel or orthogonal, either way. Sizes differ: cause 5; not three
  // components, for parallel only: cause 10; both named by the product.
  ENuBoolean IsParallelTo(const CNuVector& v, double angle) const;
  ENuBoolean IsOrthogonalTo(const CNuVector& v, double angle) const;

  // The angle between two directions in degrees, in [0, 180]. Not three components: cause 10; zero within NuGetZero():
  // cause 9.
  double AngleWith(const CNuVector& v) const;
  // The angle in degrees, in [0, 360), that turns this direction about the axis onto v, right-handed. The two must make
  // the same angle with the axis within NuGetDegreeTol(), else cause 14; directions along the axis, either way, give 0.
  // Failures of the angle with the axis as above.
  double AngleWith(const CNuVector& v, const CNuVector& axis) const;

  // Components i to j, both included. Out of range: cause 3; i > j: cause 15.
  CNuVector SubVector(int i, int j) const;
  // The point of three components, or of four homogeneous ones. Other sizes: cause 11.
  CNuPoint To3DPoint() const;
  operator CNuComplexVector() const;

  // Divides by the magnitude, at any size, when that is above NuGetZero(); a zero vector stays as it is.
  void Normalise();
  // Three components to four, the last 1, and back, divided by the last (by 1 when it is below NuGetZero()). Other
  // sizes: cause 11.
  void Homogeneous();
  void NonHomogeneous();

  // Ascending and stable, as NuSort: in place; as the permutation that sorts, which replaces *index.
  void Sort();
  void Sort(CNuIntArray* index) const;

  // The canonical form of an axis direction: components below tol become 0; when `orient` is not 0, the component of
  // largest magnitude (the first of equals) is made positive.
  void SymmetricAxis(double tol, int orient);

  // Normalises this vector and completes it: x is orthogonal to it and to the coordinate axis of its smallest
  // component, y = this * x. OrthonormalY accepts two components as well: (-v, u, 0) for (u, v). Wrong size: cause 10;
  // zero within NuGetZero(): cause 9.
  void OrthonormalX(CNuVector* x);
  void OrthonormalY(CNuVector* y);
  void OrthonormalXY(CNuVector* x, CNuVector* y);

  // Turns the direction by `angle` degrees about a coordinate axis or a direction, right-handed; a centre has no
  // meaning for a direction. A zero vector and an angle below NuGetZero() change nothing, and an angle within 6e-7
  // degrees of a multiple of 90 counts as that multiple. An axis that has not three components: cause 10; a zero axis:
  // cause 9.
  void Rotate(double angle, CNuGeometry::EAxisType axis);
  void Rotate(double angle, const CNuVector& axis);
  void Rotate(double angle, CNuGeometry::EAxisType axis, const CNuPoint& centre);
  void Rotate(double angle, const CNuVector& axis, const CNuPoint& centre);

  // A direction does not change when it is moved; these exist for code that moves features of any kind.
  void Translate(double dx, double dy, double dz) const;
  void Translate(const CNuPoint& p) const;

  // The vector's file: the tag "Vector" with its zero byte, the size as int, the components as doubles, all
  // little-endian. Writing: true on success; cause 48 when the file cannot be written, cause 47 when it cannot be
  // opened. Reading: false for anything that is not such a file; only a file with a sound head replaces the vector.
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

NU_EXPORT CNuVector operator*(double f, const CNuVector& v);

#endif
