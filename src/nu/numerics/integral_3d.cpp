#include "nu/numerics/integral_3d.h"

#include "nu/engine/quadrature/cubature.h"
#include "nu/numerics/internal/integration_outcome.h"

using namespace nu::internal;

namespace {

constexpr const char* kWhere = "CNuIntegral3D::Calculate()";

}  // namespace

CNuIntegral3D::~CNuIntegral3D() = default;

double CNuIntegral3D::Calculate(double (*f)(double, double, double), double ax, double bx, double ay, double by,
                                double az, double bz, double tol, long maxIter) {
  m_type = NuTypeIntegral3D;
  RequireFunctions(kWhere, f);
  const auto lowerY = [ay](double) { return ay; };
  const auto upperY = [by](double) { return by; };
  const auto lowerZ = [az](double, double) { return az; };
  const auto upperZ = [bz](double, double) { return bz; };
  return Store(IntegrateVolume(f, {ax, bx, lowerY, upperY, lowerZ, upperZ}, tol, maxIter));
}

double CNuIntegral3D::Calculate(double (*f)(double, double, double), double ax, double bx, double (*ay)(double),
                                double (*by)(double), double (*az)(double, double), double (*bz)(double, double),
                                double tol, long maxIter) {
  m_type = NuTypeIntegral3D;
  RequireFunctions(kWhere, f, ay, by, az, bz);
  return Store(IntegrateVolume(f, {ax, bx, ay, by, az, bz}, tol, maxIter));
}

double CNuIntegral3D::Store(const Quadrature& q) {
  RequireConverged(q, kWhere);
  m_value = q.value;
  m_error = q.error;
  return m_value;
}
