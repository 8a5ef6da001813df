#include "nu/curves/cosine_curve.h"

#include "nu/curves/internal/sinusoid_fit.h"
#include "nu/foundation/constants.h"
#include "nu/foundation/internal/outputs.h"
#include "nu/geometry/internal/fit_guards.h"

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuCosineCurve";

}  // namespace

CNuCosineCurve::CNuCosineCurve(double a, double b, double c, double d)
    : CNuTrigonometry(NuTypeCosineCurve), m_a(a), m_b(b), m_c(c), m_d(d) {
  RequireSinusoid(a, b, kName);
}

CNuCosineCurve::~CNuCosineCurve() = default;

void CNuCosineCurve::GetData(double* a, double* b, double* c, double* d) const {
  Output(a, m_a);
  Output(b, m_b);
  Output(c, m_c);
  Output(d, m_d);
}

double CNuCosineCurve::ValueAt(double x) const {
  return m_a * CosineAt(m_b, x, m_c) + m_d;
}

double CNuCosineCurve::DerivativeAt(double x) const {
  return -m_a * m_b * SineAt(m_b, x, m_c);
}

double CNuCosineCurve::Period() const {
  return Nu_2PI / m_b;
}

void CNuCosineCurve::Fit(const CNuPointArray& points, long maxIter) {
  Fit(points, nullptr, nullptr, maxIter);
}

void CNuCosineCurve::Fit(const CNuPointArray& points, double* formError, double* sumSquares, long maxIter) {
  RequireIterations(maxIter, kName);
  TranslateForeign(kName, [&] {
    const FittedSinusoid found = FitSinusoid(points, kName, formError != nullptr || sumSquares != nullptr, maxIter);
    m_a = found.a;
    m_b = found.b;
    m_c = PhaseOf(found.cosine, -found.sine);
    m_d = found.d;
    StoreForm(found.deviations, formError, sumSquares);
  });
}

ENuFitResult CNuCosineCurve::FitEx(const CNuPointArray& points, long maxIter) {
  return FitEx(points, nullptr, nullptr, maxIter);
}

ENuFitResult CNuCosineCurve::FitEx(const CNuPointArray& points, double* formError, double* sumSquares, long maxIter) {
  RequireIterations(maxIter, kName);
  return ResultOf([&] { Fit(points, formError, sumSquares, maxIter); });
}
