#include "nu/numerics/interpolation_2d.h"

#include <cmath>
#include <utility>

#include "nu/engine/quadrature/cubic_hermite.h"
#include "nu/engine/quadrature/natural_spline.h"
#include "nu/foundation/internal/failures.h"
#include "nu/numerics/internal/interpolation_guards.h"

// Four families of natural splines give the derivatives at the nodes: of z along x and along y, and of the derivatives
// by x along y. Within a cell the spline is then the bicubic Hermite polynomial: cubic along y on both sides of the
// cell, for the values and for the derivatives by x, and with these cubic along x.

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuInterpolation2D";
constexpr const char* kInit = "CNuInterpolation2D::Init()";
constexpr const char* kChecking = "matrix and array data checking";

const CNuDoubleArray& Checked(const CNuDoubleArray& x, const CNuDoubleArray& y, const CNuMatrix& z) {
  if (z.GetRowSize() != x.GetSize() || z.GetColumnSize() != y.GetSize())
    FailOperation(NuOperationSizeMismatch, kChecking, kName);
  RequireGrid(x, kChecking, kName);
  RequireGrid(y, kChecking, kName);
  for (int i = 0; i < z.GetRowSize(); ++i) RequireFinite(z.GetData()[i], z.GetColumnSize(), kChecking, kName);
  return x;
}

}  // namespace

CNuInterpolation2D::CNuInterpolation2D(const CNuDoubleArray& x, const CNuDoubleArray& y, const CNuMatrix& z)
    : CNuNumericalAnalysis(NuTypeInterpolation2D),
      m_x(Checked(x, y, z)),
      m_y(y),
      m_z(z),
      m_slopesX(z),
      m_slopesY(z),
      m_slopesXY(z) {
  WithMemory(kInit, [&] {
    const NaturalSpline alongX(m_x.GetData(), GetSizeX());
    const NaturalSpline alongY(m_y.GetData(), GetSizeY());
    alongX.Derivatives(m_z.GetData(), m_slopesX.GetData(), GetSizeY());
    for (int i = 0; i < GetSizeX(); ++i) {
      alongY.Derivatives(m_z.GetData()[i], m_slopesY.GetData()[i]);
      alongY.Derivatives(m_slopesX.GetData()[i], m_slopesXY.GetData()[i]);
    }
  });
}

CNuInterpolation2D& CNuInterpolation2D::operator=(CNuInterpolation2D other) noexcept {
  CNuNumericalAnalysis::operator=(other);
  m_x = std::move(other.m_x);
  m_y = std::move(other.m_y);
  m_z = std::move(other.m_z);
  m_slopesX = std::move(other.m_slopesX);
  m_slopesY = std::move(other.m_slopesY);
  m_slopesXY = std::move(other.m_slopesXY);
  return *this;
}

CNuInterpolation2D::~CNuInterpolation2D() = default;

double CNuInterpolation2D::Bilinear(double x, double y) const {
  constexpr const char* kWhere = "CNuInterpolation2D::Bilinear()";
  nu::internal::RequireInside(m_x, x, kWhere);
  nu::internal::RequireInside(m_y, y, kWhere);
  const Place p = Locate(m_x.GetData(), GetSizeX(), x);
  const Place q = Locate(m_y.GetData(), GetSizeY(), y);
  const double* below = m_z.GetData()[p.i] + q.i;
  const double* above = m_z.GetData()[p.i + 1] + q.i;
  return std::lerp(std::lerp(below[0], below[1], q.t), std::lerp(above[0], above[1], q.t), p.t);
}

double CNuInterpolation2D::Bicubic(double x, double y) const {
  constexpr const char* kWhere = "CNuInterpolation2D::Bicubic()";
  nu::internal::RequireInside(m_x, x, kWhere);
  nu::internal::RequireInside(m_y, y, kWhere);
  const Place p = Locate(m_x.GetData(), GetSizeX(), x);
  const Place q = Locate(m_y.GetData(), GetSizeY(), y);
  const auto alongY = [&q](const CNuMatrix& values, const CNuMatrix& slopes, int row) {
    const double* v = values.GetData()[row] + q.i;
    const double* k = slopes.GetData()[row] + q.i;
    return CubicValue(q, v[0], v[1], k[0], k[1]);
  };
  return CubicValue(p, alongY(m_z, m_slopesY, p.i), alongY(m_z, m_slopesY, p.i + 1), alongY(m_slopesX, m_slopesXY, p.i),
                    alongY(m_slopesX, m_slopesXY, p.i + 1));
}
