#include "nu/numerics/interpolation.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "nu/engine/quadrature/cubic_hermite.h"
#include "nu/engine/quadrature/lagrange.h"
#include "nu/engine/quadrature/natural_spline.h"
#include "nu/foundation/internal/failures.h"
#include "nu/foundation/internal/outputs.h"
#include "nu/numerics/internal/interpolation_guards.h"

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuInterpolation";
constexpr const char* kInit = "CNuInterpolation::Init()";
// Bounds the work of one value, and its factors: between equidistant points they reach 2 for each point.
constexpr int kMostPolynomialPoints = 512;

const CNuDoubleArray& Checked(const CNuDoubleArray& x, const CNuDoubleArray& y) {
  if (x.GetSize() != y.GetSize()) FailOperation(NuOperationSizeMismatch, kArrayChecking, kName);
  RequireGrid(x, kArrayChecking, kName);
  RequireFinite(y.GetData(), y.GetSize(), kArrayChecking, kName);
  return x;
}

}  // namespace

CNuInterpolation::CNuInterpolation(const CNuDoubleArray& x, const CNuDoubleArray& y)
    : CNuNumericalAnalysis(NuTypeInterpolation), m_x(Checked(x, y)), m_y(y), m_slopes(y) {
  WithMemory(kInit, [&] { NaturalSpline(m_x.GetData(), GetSize()).Derivatives(m_y.GetData(), m_slopes.GetData()); });
}

CNuInterpolation& CNuInterpolation::operator=(CNuInterpolation other) noexcept {
  CNuNumericalAnalysis::operator=(other);
  m_x = std::move(other.m_x);
  m_y = std::move(other.m_y);
  m_slopes = std::move(other.m_slopes);
  return *this;
}

CNuInterpolation::~CNuInterpolation() = default;

void CNuInterpolation::RequireInside(double x, const char* where) const {
  nu::internal::RequireInside(m_x, x, where);
}

double CNuInterpolation::Linear(double x) const {
  RequireInside(x, "CNuInterpolation::Linear()");
  const Place p = Locate(m_x.GetData(), GetSize(), x);
  const double* y = m_y.GetData() + p.i;
  return std::lerp(y[0], y[1], p.t);
}

double CNuInterpolation::Polynomial(double x, double* error) const {
  RequireInside(x, "CNuInterpolation::Polynomial()");
  const Place p = Locate(m_x.GetData(), GetSize(), x);
  const int nearest = p.t < 0.5 ? p.i : p.i + 1;
  PolynomialValue result{m_y.GetData()[nearest], 0.0};
  if (m_x.GetData()[nearest] != x) {
    const int count = std::min(GetSize(), kMostPolynomialPoints);
    const int first = std::clamp(nearest - count / 2, 0, GetSize() - count);
    result = LagrangeValue(m_x.GetData() + first, m_y.GetData() + first, count, x);
  }
  Output(error, result.error);
  return result.value;
}

double CNuInterpolation::Spline(double x) const {
  RequireInside(x, "CNuInterpolation::Spline()");
  const Place p = Locate(m_x.GetData(), GetSize(), x);
  const double* y = m_y.GetData() + p.i;
  const double* k = m_slopes.GetData() + p.i;
  return CubicValue(p, y[0], y[1], k[0], k[1]);
}

double CNuInterpolation::SplineDerivative(double x) const {
  RequireInside(x, "CNuInterpolation::SplineDerivative()");
  const Place p = Locate(m_x.GetData(), GetSize(), x);
  const double* y = m_y.GetData() + p.i;
  const double* k = m_slopes.GetData() + p.i;
  return CubicDerivative(p, y[0], y[1], k[0], k[1]);
}
