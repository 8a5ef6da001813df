#include "nu/numerics/integral.h"

#include "nu/engine/quadrature/cubature.h"
#include "nu/numerics/internal/integration_outcome.h"

using namespace nu::internal;

namespace {

constexpr const char* kWhere = "CNuIntegral::Calculate()";

}  // namespace

CNuIntegral::~CNuIntegral() = default;

double CNuIntegral::Calculate(double (*f)(double), double a, double b, double tol, long maxIter) {
  m_type = NuTypeIntegral;
  RequireFunctions(kWhere, f);
  const Quadrature q = IntegrateLine(f, a, b, tol, maxIter);
  RequireConverged(q, kWhere);
  m_value = q.value;
  m_error = q.error;
  return m_value;
}
