#include "nu/curves/cosine_curve.h"
#include "nu/curves/internal/sinusoid_fit.h"
#include "nu/curves/sine_curve.h"
#include "nu/foundation/constants.h"
#include "nu/foundation/internal/outputs.h"

using namespace nu::internal;

// The sine and the cosine curve: one wave, whose phase counts from its rise through the mean or from its crest.

namespace {

constexpr const char* kSine = "CNuSineCurve";
constexpr const char* kCosine = "CNuCosineCurve";

}  // namespace

#define NU_DEFINE_WAVE(Class)                                             \
  Class::~Class() = default;                                              \
  void Class::GetData(double* a, double* b, double* c, double* d) const { \
    Output(a, m_a);                                                       \
    Output(b, m_b);                                                       \
    Output(c, m_c);                                                       \
    Output(d, m_d);                                                       \
  }                                                                       \
  double Class::Period() const {                                          \
    return Nu_2PI / m_b;                                                  \
  }

CNuSineCurve::CNuSineCurve(double a, double b, double c, double d)
    : CNuTrigonometry(NuTypeSineCurve), m_a(a), m_b(b), m_c(c), m_d(d) {
  RequireSinusoid(a, b, kSine);
}

NU_DEFINE_WAVE(CNuSineCurve)

double CNuSineCurve::ValueAt(double x) const {
  return m_a * SineAt(m_b, x, m_c) + m_d;
}

double CNuSineCurve::DerivativeAt(double x) const {
  return m_a * m_b * CosineAt(m_b, x, m_c);
}

void CNuSineCurve::Fit(const CNuPointArray& points, double* form, double* sumSquares, long maxIter) {
  FitSinusoid(points, kSine, form, sumSquares, maxIter, [this](const FittedSinusoid& found) {
    *this = CNuSineCurve(found.a, found.b, PhaseOf(found.sine, found.cosine), found.d);
  });
}

NU_DEFINE_FIT_VARIANTS(CNuSineCurve, kSine)

CNuCosineCurve::CNuCosineCurve(double a, double b, double c, double d)
    : CNuTrigonometry(NuTypeCosineCurve), m_a(a), m_b(b), m_c(c), m_d(d) {
  RequireSinusoid(a, b, kCosine);
}

NU_DEFINE_WAVE(CNuCosineCurve)

double CNuCosineCurve::ValueAt(double x) const {
  return m_a * CosineAt(m_b, x, m_c) + m_d;
}

double CNuCosineCurve::DerivativeAt(double x) const {
  return -m_a * m_b * SineAt(m_b, x, m_c);
}

void CNuCosineCurve::Fit(const CNuPointArray& points, double* form, double* sumSquares, long maxIter) {
  FitSinusoid(points, kCosine, form, sumSquares, maxIter, [this](const FittedSinusoid& found) {
    *this = CNuCosineCurve(found.a, found.b, PhaseOf(found.cosine, -found.sine), found.d);
  });
}

NU_DEFINE_FIT_VARIANTS(CNuCosineCurve, kCosine)
