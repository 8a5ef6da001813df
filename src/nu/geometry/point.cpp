#include "nu/geometry/point.h"

#include <cmath>
#include <cstring>
#include <fstream>
#include <utility>

#include "nu/foundation/internal/failures.h"
#include "nu/geometry/internal/conversions.h"
#include "nu/geometry/nonlinear_geometry.h"
#include "nu/linalg/matrix.h"

using namespace nu::internal;

namespace {

constexpr char kRecordTag = 'p';

template<class Axis>
CNuPoint Turned(const CNuPoint& p, double angle, const Axis& axis) {
  CNuVector v = p;
  v.Rotate(angle, axis);
  return ToPoint(Components(v));
}

// Without a turn the way to the centre and back would round the coordinates.
template<class Axis>
CNuPoint TurnedAbout(const CNuPoint& p, double angle, const Axis& axis, const CNuPoint& centre) {
  if (std::fabs(angle) < NuGetZero()) return p;
  return Turned(p - centre, angle, axis) + centre;
}

}  // namespace

CNuVector CNuPoint::To3DVector() const {
  return CNuVector(m_xyz[0], m_xyz[1], m_xyz[2]);
}

CNuPoint::operator CNuVector() const {
  return To3DVector();
}

CNuVector CNuPoint::To4DVector() const {
  CNuVector v = To3DVector();
  v.Homogeneous();
  return v;
}

void CNuPoint::Swap(CNuPoint& a, CNuPoint& b) {
  std::swap(a.m_xyz, b.m_xyz);
}

// Hosts rely on where each of the four limits lies, so they are not made alike.

CNuPoint CNuPoint::operator*(double s) const {
  if (!(std::fabs(s) < NuGetLarge())) FailOperation(NuOperationLargeFactor, "operator*", "CNuPoint");
  return CNuPoint(m_xyz[0] * s, m_xyz[1] * s, m_xyz[2] * s);
}

CNuPoint CNuPoint::operator/(double s) const {
  if (std::fabs(s) < NuGetZero()) FailOperation(NuOperationZeroDivisor, "operator/", "CNuPoint");
  return CNuPoint(m_xyz[0] / s, m_xyz[1] / s, m_xyz[2] / s);
}

CNuPoint& CNuPoint::operator*=(double s) {
  if (std::fabs(s) > NuGetLarge()) FailOperation(NuOperationLargeFactor, "operator*=", "CNuPoint");
  for (double& coordinate : m_xyz) coordinate *= s;
  return *this;
}

CNuPoint& CNuPoint::operator/=(double s) {
  if (!(std::fabs(s) > NuGetZero())) FailOperation(NuOperationZeroDivisor, "operator/=", "CNuPoint");
  for (double& coordinate : m_xyz) coordinate /= s;
  return *this;
}

void CNuPoint::Rotate(double angle, CNuGeometry::EAxisType axis) {
  *this = Turned(*this, angle, axis);
}

void CNuPoint::Rotate(double angle, const CNuVector& axis) {
  *this = Turned(*this, angle, axis);
}

void CNuPoint::Rotate(double angle, CNuGeometry::EAxisType axis, const CNuPoint& centre) {
  *this = TurnedAbout(*this, angle, axis, centre);
}

void CNuPoint::Rotate(double angle, const CNuVector& axis, const CNuPoint& centre) {
  *this = TurnedAbout(*this, angle, axis, centre);
}

void CNuPoint::MoveTo(const CNuPoint& origin, const CNuVector& xaxis, const CNuVector& zaxis) {
  if (xaxis.GetSize() != 3 || zaxis.GetSize() != 3)
    FailOperation(NuOperationNotThreeComponents, "calculation", "CNuPoint::MoveTo()");
  const Vec3 v = Components(*this - origin);
  const Vec3 x = Unit(Components(xaxis));
  const Vec3 z = Unit(Components(zaxis));
  *this = CNuPoint(Dot(v, x), Dot(v, Cross(z, x)), Dot(v, z));
}

void CNuPoint::MoveTo(const CNuNonLinearGeometry& g) {
  const CNuMatrix rotation = g.GetRotation();
  const double* const* axis = rotation.GetData();
  const Vec3 v = Components(*this) - Components(g.GetTranslation());
  *this = CNuPoint(Dot(v, LoadVec3(axis[0])), Dot(v, LoadVec3(axis[1])), Dot(v, LoadVec3(axis[2])));
}

bool CNuPoint::BinaryDump(std::ofstream& out) const {
  char record[1 + sizeof m_xyz];
  record[0] = kRecordTag;
  std::memcpy(record + 1, m_xyz, sizeof m_xyz);
  out.write(record, sizeof record);
  return true;
}

bool CNuPoint::BinaryRead(std::ifstream& in) {
  char tag = 0;
  in.read(&tag, 1);
  if (tag != kRecordTag) return false;
  for (double& coordinate : m_xyz) {
    char bytes[sizeof coordinate];
    if (in.read(bytes, sizeof bytes)) std::memcpy(&coordinate, bytes, sizeof bytes);
  }
  return true;
}
