#include "nu/numerics/integral.h"

#include "nu/engine/quadrature/cubature.h"
#include "nu/numerics/internal/integration_outcome.h"

namespace {

constexpr const char* kWhere = "CNuIntegral::Calculate()";

}  // namespace

CNuIntegral::~CNuIntegral() = default;

double CNuIntegral::Calculate(double (*f)(double), double a, double b, double tol, long maxIter) {
  m_type = NuTypeIntegral;
  nu::internal::RequireFunctions(kWhere, f);
  const nu::internal::Quadrature q = nu::internal::IntegrateLine(f, a, b, tol, maxIter);
  RequireConverged(q, kWhere);
  m_value = q.value;
  m_error = q.error;
  return m_value;
}
