#include "nu/curves/ellipse.h"
#include "nu/curves/hyperbola.h"
#include "nu/curves/internal/conic_fit.h"
#include "nu/curves/parabola.h"
#include "nu/geometry/internal/fit_guards.h"

using namespace nu::internal;

// Least-squares conics. A parabola has four parameters, so four distinct points say where it is; that five points are
// asked for all the same is required, as hosts rely on one count for all conics.

namespace {

constexpr ConicFitRule kEllipse{"CNuEllipse", ConicKind::ellipse, 5};
constexpr ConicFitRule kHyperbola{"CNuHyperbola", ConicKind::hyperbola, 5};
constexpr ConicFitRule kParabola{"CNuParabola", ConicKind::parabola, 4};

// Fits, and has the result stored by `store(conic, origin, xAxis, normal)`.
template<class Store>
void FitConic(const ConicFitRule& rule, const CNuPointArray& points, double* form, double* sumSquares, long maxIter,
              Store store) {
  const auto found = FitConic(rule, ViewOf(points), OptionsFor(form, sumSquares, maxIter));
  const FittedConic& conic = found.shape;
  store(conic, ToPoint(conic.origin), ToVector(conic.xAxis), ToVector(conic.normal));
  StoreForm(found, form, sumSquares);
}

}  // namespace

FeatureFit<FittedConic> nu::internal::FitEllipse(PointView points, const FitOptions& options) {
  return FitConic(kEllipse, points, options);
}

FeatureFit<FittedConic> nu::internal::FitHyperbola(PointView points, const FitOptions& options) {
  return FitConic(kHyperbola, points, options);
}

FeatureFit<FittedConic> nu::internal::FitParabola(PointView points, const FitOptions& options) {
  return FitConic(kParabola, points, options);
}

void CNuEllipse::Fit(const CNuPointArray& points, double* form, double* sumSquares, long maxIter) {
  FitConic(kEllipse, points, form, sumSquares, maxIter, [this](const FittedConic& found, const auto&... position) {
    SetPosition(position...);
    m_a = found.a;
    m_b = found.b;
  });
}

NU_DEFINE_FIT_VARIANTS(CNuEllipse, kEllipse.name)

void CNuHyperbola::Fit(const CNuPointArray& points, double* form, double* sumSquares, long maxIter) {
  FitConic(kHyperbola, points, form, sumSquares, maxIter, [this](const FittedConic& found, const auto&... position) {
    SetPosition(position...);
    m_a = found.a;
    m_b = found.b;
  });
}

NU_DEFINE_FIT_VARIANTS(CNuHyperbola, kHyperbola.name)

void CNuParabola::Fit(const CNuPointArray& points, double* form, double* sumSquares, long maxIter) {
  FitConic(kParabola, points, form, sumSquares, maxIter, [this](const FittedConic& found, const auto&... position) {
    SetPosition(position...);
    m_f = found.a;
  });
}

NU_DEFINE_FIT_VARIANTS(CNuParabola, kParabola.name)
