#include "nu/curves/hyperbola.h"
#include "nu/curves/internal/conic_fit.h"

using namespace nu::internal;

// Least-squares hyperbola in the least-squares plane of the points.

namespace {

constexpr const char* kName = "CNuHyperbola";
constexpr int kLeastPoints = 5;
constexpr int kLeastDistinct = 5;

}  // namespace

void CNuHyperbola::Fit(const CNuPointArray& points, long maxIter) {
  Fit(points, nullptr, nullptr, maxIter);
}

void CNuHyperbola::Fit(const CNuPointArray& points, double* formError, double* sumSquares, long maxIter) {
  RequireIterations(maxIter, kName);
  TranslateForeign(kName, [&] {
    RequireCount(points, kLeastPoints, kName);
    RequireDistinct(points, kLeastDistinct, kName);
    const auto found = FitConic<Hyperbola2>(points, kName, formError != nullptr || sumSquares != nullptr, maxIter);
    SetPosition(ToPoint(found.origin), ToVector(found.xAxis), found.normal);
    m_a = found.curve.a;
    m_b = found.curve.b;
    StoreForm(found.deviations, formError, sumSquares);
  });
}

ENuFitResult CNuHyperbola::FitEx(const CNuPointArray& points, long maxIter) {
  return FitEx(points, nullptr, nullptr, maxIter);
}

ENuFitResult CNuHyperbola::FitEx(const CNuPointArray& points, double* formError, double* sumSquares, long maxIter) {
  RequireIterations(maxIter, kName);
  return ResultOf([&] { Fit(points, formError, sumSquares, maxIter); });
}
