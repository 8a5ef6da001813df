#include "nu/linalg/vector.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <utility>

#include "nu/engine/base/elementary.h"
#include "nu/engine/base/sort.h"
#include "nu/foundation/constants.h"
#include "nu/foundation/int_array.h"
#include "nu/foundation/internal/failures.h"
#include "nu/foundation/internal/outputs.h"
#include "nu/foundation/numeric_helpers.h"
#include "nu/geometry/point.h"
#include "nu/linalg/matrix.h"

using namespace nu::internal;

namespace {

double* AllocateComponents(int n, const char* where) {
  return WithMemory(where, [&] { return new double[static_cast<std::size_t>(n)]; });
}

void RequireSameSize(const CNuVector& a, const CNuVector& b, const char* what) {
  if (a.GetSize() != b.GetSize()) FailOperation(NuOperationSizeMismatch, what, "CNuVector");
}

// A direction brought to the order of magnitude of 1 by a power of two, which changes no bit of its angles but keeps
// their products away from overflow and underflow.
CNuVector Scaled(CNuVector v) {
  double* c = v.GetData();
  const double largest = std::max({std::fabs(c[0]), std::fabs(c[1]), std::fabs(c[2])});
  if (!std::isfinite(largest) || largest == 0.0) return v;
  const int exponent = std::ilogb(largest);
  for (int i = 0; i < 3; ++i) c[i] = std::ldexp(c[i], -exponent);
  return v;
}

// A direction whose sine with an axis is no more than this lies along it: what is left beside the axis is the rounding
// of its components.
constexpr double kAlongAxis = 4.0 * DBL_EPSILON;

// Between these magnitudes the squares of components neither overflow nor vanish.
constexpr double kSmallestSafe = 0x1p-500;
constexpr double kLargestSafe = 0x1p500;

CNuVector Normalised(CNuVector v) {
  v.Normalise();
  return v;
}

}  // namespace

CNuVector::CNuVector(int n) : CNuObject(NuTypeVector), m_data(m_local) {
  if (n < 1) throw CNuConstructionException(NuConstructionSize, "CNuVector", "size", 0, 0);
  Init(n);
}

CNuVector::CNuVector(const CNuVector& other) : CNuObject(NuTypeVector), m_data(m_local), m_size(0), m_capacity(kLocal) {
  Copy(other);
}

CNuVector::CNuVector(CNuVector&& other) noexcept
    : CNuObject(NuTypeVector), m_data(m_local), m_size(0), m_capacity(kLocal) {
  Take(other);
}

CNuVector& CNuVector::operator=(const CNuVector& other) {
  if (this != &other) Copy(other);
  return *this;
}

CNuVector& CNuVector::operator=(CNuVector&& other) noexcept {
  if (this != &other) Take(other);
  return *this;
}

void CNuVector::Init(int n) {
  m_capacity = kLocal;
  if (n > kLocal) {
    m_data = AllocateComponents(n, "CNuVector::Init()");
    m_capacity = n;
  }
  m_size = n;
  std::fill_n(m_data, n, 0.0);
}

// Storage of the same size is used again; another size gets storage of its own, allocated before anything changes.
void CNuVector::Copy(const CNuVector& other) {
  if (other.m_size > kLocal && other.m_size != m_size) {
    double* fresh = AllocateComponents(other.m_size, "CNuVector::Copy()");
    if (m_data != m_local) delete[] m_data;
    m_data = fresh;
    m_capacity = other.m_size;
  } else if (other.m_size <= kLocal && m_data != m_local) {
    delete[] m_data;
    m_data = m_local;
    m_capacity = kLocal;
  }
  m_size = other.m_size;
  std::copy_n(other.m_data, m_size, m_data);
}

// Leaves a source with a block of its own without components.
void CNuVector::Take(CNuVector& other) noexcept {
  if (m_data != m_local) delete[] m_data;
  m_size = other.m_size;
  m_capacity = other.m_capacity;
  if (other.m_data == other.m_local) {
    m_data = m_local;
    std::copy_n(other.m_local, kLocal, m_local);
    return;
  }
  m_data = other.m_data;
  other.m_data = other.m_local;
  other.m_size = 0;
  other.m_capacity = kLocal;
}

void CNuVector::FailIndex() const {
  FailOperation(NuOperationIndex, "element operator[]", "CNuVector", 0, m_size - 1);
}

CNuVector CNuVector::operator+(const CNuVector& b) const {
  RequireSameSize(*this, b, "operator+");
  CNuVector result(*this);
  for (int i = 0; i < m_size; ++i) result.m_data[i] += b.m_data[i];
  return result;
}

CNuVector CNuVector::operator-(const CNuVector& b) const {
  RequireSameSize(*this, b, "operator-");
  CNuVector result(*this);
  for (int i = 0; i < m_size; ++i) result.m_data[i] -= b.m_data[i];
  return result;
}

CNuVector CNuVector::operator-() const {
  CNuVector result(*this);
  for (int i = 0; i < m_size; ++i) result.m_data[i] = -m_data[i];
  return result;
}

CNuVector& CNuVector::operator+=(const CNuVector& b) {
  RequireSameSize(*this, b, "operator+=");
  for (int i = 0; i < m_size; ++i) m_data[i] += b.m_data[i];
  return *this;
}

CNuVector& CNuVector::operator-=(const CNuVector& b) {
  RequireSameSize(*this, b, "operator-=");
  for (int i = 0; i < m_size; ++i) m_data[i] -= b.m_data[i];
  return *this;
}

double CNuVector::operator%(const CNuVector& b) const {
  RequireSameSize(*this, b, "operator%");
  double sum = 0.0;
  for (int i = 0; i < m_size; ++i) sum += m_data[i] * b.m_data[i];
  return sum;
}

CNuVector CNuVector::operator&(const CNuVector& b) const {
  RequireSameSize(*this, b, "operator&");
  CNuVector result(*this);
  for (int i = 0; i < m_size; ++i) result.m_data[i] *= b.m_data[i];
  return result;
}

CNuVector CNuVector::operator*(const CNuVector& b) const {
  RequireSameSize(*this, b, "operator*");
  if (m_size != 3) FailOperation(NuOperationNotThreeComponents, "operator*", "CNuVector");
  const double* p = m_data;
  const double* q = b.m_data;
  return CNuVector(p[1] * q[2] - p[2] * q[1], p[2] * q[0] - p[0] * q[2], p[0] * q[1] - p[1] * q[0]);
}

CNuVector CNuVector::operator*(const CNuMatrix& m) const {
  if (m_size != m.GetRowSize()) FailOperation(NuOperationSizeMismatch, "operator*", "CNuVector");
  CNuVector result(m.GetColumnSize());
  const double* const* rows = m.GetData();
  for (int i = 0; i < m_size; ++i) {
    for (int j = 0; j < result.m_size; ++j) result.m_data[j] += m_data[i] * rows[i][j];
  }
  return result;
}

CNuVector CNuVector::operator*(double f) const {
  RequireNumericFactor(f, "operator*", "CNuVector");
  CNuVector result(*this);
  for (int i = 0; i < m_size; ++i) result.m_data[i] *= f;
  return result;
}

CNuVector& CNuVector::operator*=(double f) {
  RequireNumericFactor(f, "operator*=", "CNuVector");
  for (int i = 0; i < m_size; ++i) m_data[i] *= f;
  return *this;
}

CNuVector operator*(double f, const CNuVector& v) {
  return v * f;
}

CNuVector CNuVector::operator/(double d) const {
  RequireDivisor(d, "operator/", "CNuVector");
  CNuVector result(*this);
  for (int i = 0; i < m_size; ++i) result.m_data[i] /= d;
  return result;
}

CNuVector& CNuVector::operator/=(double d) {
  RequireDivisor(d, "operator/=", "CNuVector");
  for (int i = 0; i < m_size; ++i) m_data[i] /= d;
  return *this;
}

double CNuVector::Magnitude() const {
  double sum = 0.0;
  for (int i = 0; i < m_size; ++i) sum += m_data[i] * m_data[i];
  return std::sqrt(sum);
}

double CNuVector::Sum() const {
  double sum = 0.0;
  for (int i = 0; i < m_size; ++i) sum += m_data[i];
  return sum;
}

double CNuVector::Max() const {
  double max = -NuGetLarge();
  for (int i = 0; i < m_size; ++i) {
    if (m_data[i] > max || std::isnan(m_data[i])) max = m_data[i];
  }
  return max;
}

double CNuVector::Min() const {
  double min = NuGetLarge();
  for (int i = 0; i < m_size; ++i) {
    if (m_data[i] < min || std::isnan(m_data[i])) min = m_data[i];
  }
  return min;
}

ENuBoolean CNuVector::IsZero(double tol) const {
  return std::all_of(m_data, m_data + m_size, [tol](double value) { return std::fabs(value) < tol; }) ? NuTrue
                                                                                                      : NuFalse;
}

ENuBoolean CNuVector::IsPositive() const {
  return std::all_of(m_data, m_data + m_size, [](double value) { return value > 0.0; }) ? NuTrue : NuFalse;
}

ENuBoolean CNuVector::IsNonNegative() const {
  return std::all_of(m_data, m_data + m_size, [](double value) { return value >= 0.0; }) ? NuTrue : NuFalse;
}

ENuBoolean CNuVector::IsEqual(const CNuVector& v, double tol) const {
  return NuIsEqual(m_size, v.m_size, m_data, v.m_data, tol);
}

ENuBoolean CNuVector::IsParallelTo(const CNuVector& v, double angle) const {
  const CNuVector cross = Normalised(*this) * Normalised(v);
  return cross.Magnitude() < nu::internal::Sin(angle) ? NuTrue : NuFalse;
}

ENuBoolean CNuVector::IsOrthogonalTo(const CNuVector& v, double angle) const {
  const double dot = Normalised(*this) % Normalised(v);
  return std::fabs(dot) < nu::internal::Cos(Nu_PI / 2.0 - angle) ? NuTrue : NuFalse;
}

void CNuVector::RequireDirection(const char* what, const char* where) const {
  if (m_size != 3) FailOperation(NuOperationNotThreeComponents, what, where);
  if (IsZero(NuGetZero())) FailOperation(NuOperationZeroVector, what, where);
}

double CNuVector::AngleWith(const CNuVector& v) const {
  constexpr const char* where = "CNuVector::AngleWith()";
  if (m_size != 3 || v.m_size != 3) FailOperation(NuOperationNotThreeComponents, "calculation", where);
  RequireDirection("calculation", where);
  v.RequireDirection("calculation", where);
  const CNuVector a = Scaled(*this);
  const CNuVector b = Scaled(v);
  const double product = a.Magnitude() * b.Magnitude();
  const double c = (a % b) / product;
  const double s = (a * b).Magnitude() / product;
  return NuArcCosSin(c, s) / Nu_PI * 180.0;
}

double CNuVector::AngleWith(const CNuVector& v, const CNuVector& axis) const {
  const double angle1 = AngleWith(axis);
  const double angle2 = v.AngleWith(axis);
  if (std::fabs(angle1 - angle2) >= NuGetDegreeTol())
    FailOperation(NuOperationArgument, "calculation", "CNuVector::AngleWith()");
  const double zero = NuGetZero();
  if (std::fabs(angle1) < zero) return 0.0;
  const CNuVector unitAxis = Normalised(axis);
  CNuVector p = Normalised(*this);
  CNuVector q = Normalised(v);
  if (p.IsEqual(q, zero)) return 0.0;
  // The parts beside the axis, both a quarter turn further about it.
  p = unitAxis * p;
  q = unitAxis * q;
  // Along the axis, against it as well, nothing is left to turn.
  const auto isAlong = [zero](const CNuVector& part) { return part.IsZero(zero) || part.Magnitude() <= kAlongAxis; };
  if (isAlong(p) || isAlong(q)) return 0.0;
  const double angle = p.AngleWith(q);
  if (!((p * q) % unitAxis < 0.0)) return angle;
  // A tiny angle short of a full turn rounds to the full turn, which is no angle of the range.
  const double turned = 360.0 - angle;
  return turned < 360.0 ? turned : 0.0;
}

CNuVector CNuVector::SubVector(int i, int j) const {
  constexpr const char* where = "CNuVector::SubVector(i, j)";
  if (i < 0 || j >= m_size) FailOperation(NuOperationIndex, "operation", where, 0, m_size - 1);
  if (i > j) FailOperation(NuOperationRange, "operation", where);
  CNuVector result(j - i + 1);
  std::copy(m_data + i, m_data + j + 1, result.m_data);
  return result;
}

CNuPoint CNuVector::To3DPoint() const {
  CNuVector v(*this);
  v.NonHomogeneous();
  return CNuPoint(v.m_data[0], v.m_data[1], v.m_data[2]);
}

void CNuVector::Normalise() {
  double magnitude = Magnitude();
  if (std::isnan(magnitude)) return;
  bool isZero = !(magnitude > NuGetZero());
  if (!(magnitude > kSmallestSafe && magnitude < kLargestSafe)) {
    double largest = 0.0;
    for (int i = 0; i < m_size; ++i) largest = std::max(largest, std::fabs(m_data[i]));
    if (largest > std::max(NuGetZero(), 0.0) && std::isfinite(largest)) {
      const int exponent = std::ilogb(largest);
      for (int i = 0; i < m_size; ++i) m_data[i] = std::ldexp(m_data[i], -exponent);
      magnitude = Magnitude();
      isZero = false;
    }
  }
  if (isZero) return;
  for (int i = 0; i < m_size; ++i) m_data[i] /= magnitude;
}

void CNuVector::Homogeneous() {
  if (m_size != 3 && m_size != 4) FailOperation(NuOperationHomogeneous, "calculation", "CNuVector::Homogeneous()");
  if (m_size == 4) return;
  m_data[3] = 1.0;  // three components always lie in the room for four
  m_size = 4;
}

void CNuVector::NonHomogeneous() {
  if (m_size != 3 && m_size != 4) FailOperation(NuOperationHomogeneous, "calculation", "CNuVector::NonHomogeneous()");
  if (m_size == 3) return;
  // A point at infinity is taken as it stands.
  const double w = std::fabs(m_data[3]) < NuGetZero() ? 1.0 : m_data[3];
  for (int i = 0; i < 3; ++i) m_data[i] /= w;
  m_size = 3;
}

void CNuVector::Sort() {
  nu::internal::Sort(m_size, m_data);
}

void CNuVector::Sort(CNuIntArray* index) const {
  if (index == nullptr) return;
  CNuIntArray order(m_size);
  for (int i = 0; i < m_size; ++i) order.Add(i);
  SortIndex(m_size, m_data, order.GetData());
  index->Truncate(0);  // the assignment would keep larger room
  *index = std::move(order);
}

void CNuVector::SymmetricAxis(double tol, int orient) {
  int largest = 0;
  double magnitude = NuGetZero();
  for (int i = 0; i < m_size; ++i) {
    const double c = std::fabs(m_data[i]);
    if (c < tol) {
      m_data[i] = 0.0;
    } else if (c > magnitude) {
      magnitude = c;
      largest = i;
    }
  }
  if (orient == 0 || m_size == 0 || !(m_data[largest] < 0.0)) return;
  for (int i = 0; i < m_size; ++i) m_data[i] = -m_data[i];
}

void CNuVector::OrthonormalX(CNuVector* x) {
  RequireDirection("calculation", "CNuVector::OrthonormalX()");
  int smallest = std::fabs(m_data[0]) >= std::fabs(m_data[1]) ? 1 : 0;
  if (std::fabs(m_data[smallest]) >= std::fabs(m_data[2])) smallest = 2;
  CNuVector axis;
  axis.m_data[smallest] = 1.0;
  Normalise();
  Output(x, Normalised(*this * axis));
}

void CNuVector::OrthonormalY(CNuVector* y) {
  if (m_size == 2) {
    Normalise();
    Output(y, Normalised(CNuVector(-m_data[1], m_data[0], 0.0)));
    return;
  }
  if (m_size != 3) FailOperation(NuOperationNotThreeComponents, "calculation", "CNuVector::OrthonormalY()");
  CNuVector x;
  OrthonormalX(&x);
  Output(y, *this * x);
}

void CNuVector::OrthonormalXY(CNuVector* x, CNuVector* y) {
  CNuVector first;
  OrthonormalX(&first);
  const CNuVector second = *this * first;
  Output(x, first);
  Output(y, second);
}

void CNuVector::Turn(const CNuMatrix& rotation) {
  *this = *this * rotation;
}

void CNuVector::Rotate(double angle, CNuGeometry::EAxisType axis) {
  if (IsZero(NuGetZero()) || std::fabs(angle) < NuGetZero()) return;
  Turn(CNuGeometry::RotationMatrix(angle, axis));
}

void CNuVector::Rotate(double angle, const CNuVector& axis) {
  if (IsZero(NuGetZero()) || std::fabs(angle) < NuGetZero()) return;
  axis.RequireDirection("rotation", "CNuVector");
  Turn(CNuGeometry::RotationMatrix(angle, axis));
}

void CNuVector::Rotate(double angle, CNuGeometry::EAxisType axis, const CNuPoint&) {
  Rotate(angle, axis);
}

void CNuVector::Rotate(double angle, const CNuVector& axis, const CNuPoint&) {
  Rotate(angle, axis);
}

void CNuVector::Translate(double, double, double) const {}

void CNuVector::Translate(const CNuPoint&) const {}
