#ifndef NU_NUMERICS_INTERPOLATION_2D_H
#define NU_NUMERICS_INTERPOLATION_2D_H

#include "nu/export.h"
#include "nu/foundation/double_array.h"
#include "nu/foundation/object.h"
#include "nu/linalg/matrix.h"

// Functions through the values z_ij at the nodes (x_i, y_j) of a rectangular grid, i < m, j < n, both coordinates
// strictly increasing. They give z_ij at the nodes to the last bit. Copies are deep. No memory: CNuMemoryException.
class NU_EXPORT CNuInterpolation2D : public CNuNumericalAnalysis {
 public:
  // z is m x n, one row per x.
  // Fails with CNuOperationException ("matrix and array data checking"), checked in this order:
  //    5  z is not m x n
  //   41  fewer than two x or y, x or y not strictly increasing, a value is not finite, or the range of x or y
  //   overflows
  CNuInterpolation2D(const CNuDoubleArray& x, const CNuDoubleArray& y, const CNuMatrix& z);
  CNuInterpolation2D(const CNuInterpolation2D&) = default;
  CNuInterpolation2D(CNuInterpolation2D&&) noexcept = default;
  CNuInterpolation2D& operator=(CNuInterpolation2D other) noexcept;
  ~CNuInterpolation2D() override;

  // The number of nodes along x and along y.
  int GetSizeX() const { return m_x.GetSize(); }
  int GetSizeY() const { return m_y.GetSize(); }

  // Both fail with CNuOperationException ("data checking"): cause 40, x, which is checked first, or y is outside the
  // grid or NaN, with its range in the two doubles.

  // Linear in x and in y between neighbouring nodes.
  double Bilinear(double x, double y) const;
  // The natural bicubic spline (C. de Boor, Bicubic spline interpolation, J. Math. and Phys. 41, 1962): the tensor
  // product of natural cubic splines, twice continuously differentiable; functions that are linear in x and in y are
  // reproduced.
  double Bicubic(double x, double y) const;

 private:
  CNuDoubleArray m_x;
  CNuDoubleArray m_y;
  CNuMatrix m_z;
  CNuMatrix m_slopesX;   // derivatives of the spline at the nodes, by x,
  CNuMatrix m_slopesY;   // by y,
  CNuMatrix m_slopesXY;  // and by both
};

#endif
