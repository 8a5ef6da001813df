#include "nu/linalg/complex_polar.h"

#include "nu/engine/base/elementary.h"
#include "nu/foundation/constants.h"
#include "nu/foundation/internal/failures.h"
#include "nu/foundation/internal/outputs.h"
#include "nu/linalg/complex.h"
#include "nu/linalg/complex_array.h"

using namespace nu::internal;

CNuComplexPolar::CNuComplexPolar(double modulus, double argument)
    : CNuAlgebra(NuTypeComplexPolar), m_modulus(modulus), m_argument(argument) {
  if (!(modulus > 0.0)) throw CNuConstructionException(NuConstructionLength, "CNuComplexPolar", "modulus", 0, 0);
}

void CNuComplexPolar::GetData(double* modulus, double* argument) const {
  Output(modulus, m_modulus);
  Output(argument, m_argument);
}

CNuComplex CNuComplexPolar::ToCartesianForm() const {
  const auto [sine, cosine] = SinCos(m_argument);
  return {m_modulus * cosine, m_modulus * sine};
}

CNuComplexPolar CNuComplexPolar::operator*(const CNuComplexPolar& c) const {
  RequireNumericFactor(m_modulus, "operator*", "CNuComplexPolar");
  RequireNumericFactor(c.m_modulus, "operator*", "CNuComplexPolar");
  return {m_modulus * c.m_modulus, m_argument + c.m_argument};
}

CNuComplexPolar CNuComplexPolar::operator/(const CNuComplexPolar& c) const {
  RequireDivisor(c.m_modulus, "operator/", "CNuComplexPolar");
  return {m_modulus / c.m_modulus, m_argument - c.m_argument};
}

CNuComplexPolar CNuComplexPolar::Power(int n) const {
  RequireNumericFactor(m_modulus, "calculation", "CNuComplexPolar::Power()");
  if (n < 1) FailOperation(NuOperationRoot, "calculation", "CNuComplexPolar::Power()");
  return {Pow(m_modulus, n), n * m_argument};
}

CNuComplexPolarArray CNuComplexPolar::Roots(int n) const {
  if (n < 1) FailOperation(NuOperationRoot, "calculation", "CNuComplexPolar::Roots()");
  // The only root would be zero, and it is the polar constructor that says so.
  const double modulus = m_modulus > NuGetZero() ? Pow(m_modulus, 1.0 / n) : 0.0;
  CNuComplexPolarArray roots(n);
  for (int k = 0; k < n; ++k) roots.Add({modulus, (2.0 * k * Nu_PI + m_argument) / n});
  return roots;
}
