#include "nu/numerics/integral_2d.h"

#include "nu/engine/quadrature/cubature.h"
#include "nu/numerics/internal/integration_outcome.h"

using namespace nu::internal;

namespace {

constexpr const char* kWhere = "CNuIntegral2D::Calculate()";

}  // namespace

CNuIntegral2D::~CNuIntegral2D() = default;

double CNuIntegral2D::Calculate(double (*f)(double, double), double ax, double bx, double ay, double by, double tol,
                                long maxIter) {
  m_type = NuTypeIntegral2D;
  RequireFunctions(kWhere, f);
  const auto lower = [ay](double) { return ay; };
  const auto upper = [by](double) { return by; };
  return Store(IntegrateArea(f, {ax, bx, lower, upper}, tol, maxIter));
}

double CNuIntegral2D::Calculate(double (*f)(double, double), double ax, double bx, double (*ay)(double),
                                double (*by)(double), double tol, long maxIter) {
  m_type = NuTypeIntegral2D;
  RequireFunctions(kWhere, f, ay, by);
  return Store(IntegrateArea(f, {ax, bx, ay, by}, tol, maxIter));
}

double CNuIntegral2D::Store(const Quadrature& q) {
  RequireConverged(q, kWhere);
  m_value = q.value;
  m_error = q.error;
  return m_value;
}
