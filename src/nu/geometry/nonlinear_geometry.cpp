#include "nu/geometry/nonlinear_geometry.h"

#include <cmath>

#include "nu/foundation/internal/failures.h"
#include "nu/linalg/matrix.h"

using namespace nu::internal;

namespace {

bool IsNoTurn(double angle) {
  return std::fabs(angle) < NuGetZero();
}

void RequireRotationAxis(const CNuVector& axis) {
  if (axis.GetSize() != 3) FailOperation(NuOperationNotThreeComponents, "rotation", "CNuNonLinearGeometry");
  if (axis.IsZero(NuGetZero())) FailOperation(NuOperationZeroVector, "rotation", "CNuNonLinearGeometry");
}

// The 4 x 4 matrix that takes the row (q, 1) to (q * R + T, 1).
CNuMatrix Homogeneous(const CNuMatrix& rotation, const CNuVector& translation) {
  CNuMatrix m = CNuMatrix::Identity(4);
  m.SetSubMatrix(0, 2, 0, 2, rotation);
  for (int j = 0; j < 3; ++j) m.SetElement(3, j, translation[j]);
  return m;
}

}  // namespace

CNuNonLinearGeometry& CNuNonLinearGeometry::operator=(const CNuNonLinearGeometry& other) {
  CNuGeometry::operator=(other);
  m_position = other.m_position;
  PositionChanged();
  return *this;
}

void CNuNonLinearGeometry::Translate(const CNuPoint& p) {
  const Frame frame = GetFrame();
  SetPosition(p, frame.xaxis, frame.zaxis);
}

void CNuNonLinearGeometry::Translate(double dx, double dy, double dz) {
  const Frame frame = GetFrame();
  SetPosition(frame.origin + CNuPoint(dx, dy, dz), frame.xaxis, frame.zaxis);
}

void CNuNonLinearGeometry::Rotate(double angle, const CNuVector& axis, const CNuPoint& centre) {
  RequireRotationAxis(axis);
  if (!IsNoTurn(angle)) Turn(RotationMatrix(angle, axis), centre);
}

void CNuNonLinearGeometry::Rotate(double angle, CNuGeometry::EAxisType axis, const CNuPoint& centre) {
  if (!IsNoTurn(angle)) Turn(RotationMatrix(angle, axis), centre);
}

void CNuNonLinearGeometry::Rotate(double angle, const CNuVector& axis) {
  RequireRotationAxis(axis);
  if (!IsNoTurn(angle)) Turn(RotationMatrix(angle, axis), CNuPoint());
}

void CNuNonLinearGeometry::Rotate(double angle, CNuGeometry::EAxisType axis) {
  if (!IsNoTurn(angle)) Turn(RotationMatrix(angle, axis), CNuPoint());
}

ENuBoolean CNuNonLinearGeometry::IsPositionSet() const {
  return m_position ? NuTrue : NuFalse;
}

void CNuNonLinearGeometry::CopyPosition(const CNuNonLinearGeometry& g) {
  if (!g.m_position || this == &g) return;
  m_position = g.m_position;
  PositionChanged();
}

CNuMatrix CNuNonLinearGeometry::GetRotation() const {
  const Frame frame = GetFrame();
  CNuMatrix m(3, 3);
  m.SetRowVector(0, frame.xaxis);
  m.SetRowVector(1, frame.zaxis * frame.xaxis);
  m.SetRowVector(2, frame.zaxis);
  return m;
}

CNuVector CNuNonLinearGeometry::GetTranslation() const {
  return GetFrame().origin;
}

CNuMatrix CNuNonLinearGeometry::GetTransformation() const {
  return Homogeneous(GetRotation(), GetTranslation());
}

CNuMatrix CNuNonLinearGeometry::GetInverseRotation() const {
  return GetRotation().Transpose();
}

CNuVector CNuNonLinearGeometry::GetInverseTranslation() const {
  return -GetTranslation();
}

CNuMatrix CNuNonLinearGeometry::GetInverseTransformation() const {
  const CNuMatrix inverse = GetInverseRotation();
  return Homogeneous(inverse, GetInverseTranslation() * inverse);
}

void CNuNonLinearGeometry::SetPosition(const CNuPoint& origin, const CNuVector& xaxis, const CNuVector& zaxis) {
  CNuCartesianCoord position;
  position.SetData(origin, xaxis, zaxis);
  m_position = position;
  PositionChanged();
}

void CNuNonLinearGeometry::GetPosition(CNuPoint* origin, CNuVector* xaxis, CNuVector* zaxis) const {
  const CNuCartesianCoord identity;
  (m_position ? *m_position : identity).GetData(origin, xaxis, zaxis);
}

CNuNonLinearGeometry::Frame CNuNonLinearGeometry::GetFrame() const {
  Frame frame;
  GetPosition(&frame.origin, &frame.xaxis, &frame.zaxis);
  return frame;
}

void CNuNonLinearGeometry::Turn(const CNuMatrix& rotation, const CNuPoint& centre) {
  const Frame frame = GetFrame();
  const CNuVector arm = frame.origin - centre;
  // An origin at the centre stays there exactly, whatever the rounding of centre and matrix.
  const CNuPoint origin = arm.IsZero(NuGetZero()) ? frame.origin : (arm * rotation).To3DPoint() + centre;
  SetPosition(origin, frame.xaxis * rotation, frame.zaxis * rotation);
}
