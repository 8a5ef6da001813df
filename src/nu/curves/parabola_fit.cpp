#include "nu/curves/internal/conic_fit.h"
#include "nu/curves/parabola.h"

using namespace nu::internal;

// Least-squares parabola in the least-squares plane of the points. It has four parameters, so four distinct points say
// where it is; that five points are asked for all the same is required, as hosts rely on one count for all conics.

namespace {

constexpr const char* kName = "CNuParabola";
constexpr int kLeastPoints = 5;
constexpr int kLeastDistinct = 4;

}  // namespace

void CNuParabola::Fit(const CNuPointArray& points, long maxIter) {
  Fit(points, nullptr, nullptr, maxIter);
}

void CNuParabola::Fit(const CNuPointArray& points, double* formError, double* sumSquares, long maxIter) {
  RequireIterations(maxIter, kName);
  TranslateForeign(kName, [&] {
    RequireCount(points, kLeastPoints, kName);
    RequireDistinct(points, kLeastDistinct, kName);
    const auto found = FitConic<Parabola2>(points, kName, formError != nullptr || sumSquares != nullptr, maxIter);
    SetPosition(ToPoint(found.origin), ToVector(found.xAxis), found.normal);
    m_f = found.curve.f;
    StoreForm(found.deviations, formError, sumSquares);
  });
}

ENuFitResult CNuParabola::FitEx(const CNuPointArray& points, long maxIter) {
  return FitEx(points, nullptr, nullptr, maxIter);
}

ENuFitResult CNuParabola::FitEx(const CNuPointArray& points, double* formError, double* sumSquares, long maxIter) {
  RequireIterations(maxIter, kName);
  return ResultOf([&] { Fit(points, formError, sumSquares, maxIter); });
}
