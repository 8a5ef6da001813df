#include "nu/numerics/triag.h"

#include <cmath>

#include "nu/engine/base/elementary.h"
#include "nu/engine/roots/trig_sum.h"
#include "nu/foundation/constants.h"
#include "nu/foundation/internal/failures.h"
#include "nu/foundation/internal/outputs.h"

using namespace nu::internal;

CNuTriag::CNuTriag(double a, double b, double c) : CNuTrigonometry(NuTypeTriag), m_a(a), m_b(b), m_c(c) {}

CNuTriag::~CNuTriag() = default;

void CNuTriag::GetData(double* a, double* b, double* c) const {
  Output(a, m_a);
  Output(b, m_b);
  Output(c, m_c);
}

double CNuTriag::ValueAt(double u) const {
  const double cosines[] = {m_c, m_a};
  const double sines[] = {0.0, m_b};
  return TrigValue(cosines, sines, 1, u);
}

double CNuTriag::DerivativeAt(double u) const {
  const double cosines[] = {m_c, m_a};
  const double sines[] = {0.0, m_b};
  return TrigDerivative(cosines, sines, 1, u);
}

double CNuTriag::Amplitude() const {
  return Hypot(m_a, m_b);
}

// A tiny negative angle plus a full turn rounds to the full turn, which is no angle of the range. The atan2 of zeros
// would show their signs.
double CNuTriag::Phase() const {
  if (m_a == 0.0 && m_b == 0.0) return 0.0;
  const double angle = Atan2(m_b, m_a);
  const double turned = angle < 0.0 ? angle + Nu_2PI : angle;
  return turned >= Nu_2PI ? 0.0 : turned;
}

ENuBoolean CNuTriag::IsZero(double tol) const {
  return IsEqual(CNuTriag(0.0, 0.0, 0.0), tol);
}

ENuBoolean CNuTriag::IsEqual(const CNuTriag& t, double tol) const {
  const bool equal = std::fabs(m_a - t.m_a) < tol && std::fabs(m_b - t.m_b) < tol && std::fabs(m_c - t.m_c) < tol;
  return equal ? NuTrue : NuFalse;
}

CNuTriag CNuTriag::operator+(const CNuTriag& t) const {
  return {m_a + t.m_a, m_b + t.m_b, m_c + t.m_c};
}

CNuTriag CNuTriag::operator-(const CNuTriag& t) const {
  return {m_a - t.m_a, m_b - t.m_b, m_c - t.m_c};
}

CNuTriag CNuTriag::operator-() const {
  return {-m_a, -m_b, -m_c};
}

CNuTriag& CNuTriag::operator+=(const CNuTriag& t) {
  return *this = *this + t;
}

CNuTriag& CNuTriag::operator-=(const CNuTriag& t) {
  return *this = *this - t;
}

CNuTriag CNuTriag::operator*(double f) const {
  RequireFactor(f, "operator*", "CNuTriag");
  return {m_a * f, m_b * f, m_c * f};
}

CNuTriag CNuTriag::operator/(double d) const {
  RequireDivisor(d, "operator/", "CNuTriag");
  return {m_a / d, m_b / d, m_c / d};
}

CNuTriag& CNuTriag::operator*=(double f) {
  RequireFactor(f, "operator*=", "CNuTriag");
  return *this = *this * f;
}

CNuTriag& CNuTriag::operator/=(double d) {
  RequireDivisor(d, "operator/=", "CNuTriag");
  return *this = *this / d;
}

CNuTriag operator*(double f, const CNuTriag& t) {
  return t * f;
}
