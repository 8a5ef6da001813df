#include "nu/curves/sine_curve.h"

#include "nu/curves/internal/sinusoid_fit.h"
#include "nu/foundation/constants.h"
#include "nu/foundation/internal/outputs.h"
#include "nu/geometry/internal/fit_guards.h"

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuSineCurve";

}  // namespace

CNuSineCurve::CNuSineCurve(double a, double b, double c, double d)
    : CNuTrigonometry(NuTypeSineCurve), m_a(a), m_b(b), m_c(c), m_d(d) {
  RequireSinusoid(a, b, kName);
}

CNuSineCurve::~CNuSineCurve() = default;

void CNuSineCurve::GetData(double* a, double* b, double* c, double* d) const {
  Output(a, m_a);
  Output(b, m_b);
  Output(c, m_c);
  Output(d, m_d);
}

double CNuSineCurve::ValueAt(double x) const {
  return m_a * SineAt(m_b, x, m_c) + m_d;
}

double CNuSineCurve::DerivativeAt(double x) const {
  return m_a * m_b * CosineAt(m_b, x, m_c);
}

double CNuSineCurve::Period() const {
  return Nu_2PI / m_b;
}

void CNuSineCurve::Fit(const CNuPointArray& points, long maxIter) {
  Fit(points, nullptr, nullptr, maxIter);
}

void CNuSineCurve::Fit(const CNuPointArray& points, double* formError, double* sumSquares, long maxIter) {
  RequireIterations(maxIter, kName);
  TranslateForeign(kName, [&] {
    const FittedSinusoid found = FitSinusoid(points, kName, formError != nullptr || sumSquares != nullptr, maxIter);
    m_a = found.a;
    m_b = found.b;
    m_c = PhaseOf(found.sine, found.cosine);
    m_d = found.d;
    StoreForm(found.deviations, formError, sumSquares);
  });
}

ENuFitResult CNuSineCurve::FitEx(const CNuPointArray& points, long maxIter) {
  return FitEx(points, nullptr, nullptr, maxIter);
}

ENuFitResult CNuSineCurve::FitEx(const CNuPointArray& points, double* formError, double* sumSquares, long maxIter) {
  RequireIterations(maxIter, kName);
  return ResultOf([&] { Fit(points, formError, sumSquares, maxIter); });
}
