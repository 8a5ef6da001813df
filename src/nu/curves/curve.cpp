#include "nu/curves/curve.h"

#include "nu/engine/least_squares/algebraic_conic.h"
#include "nu/foundation/internal/failures.h"
#include "nu/foundation/internal/outputs.h"
#include "nu/geometry/internal/fit_guards.h"
#include "nu/linalg/vector.h"

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuCurve";
constexpr int kLeastPoints = 5;

}  // namespace

void CNuCurve::FitQuadratic(const CNuPointArray& xy, CNuVector* six) {
  RequireCount(ViewOf(xy), kLeastPoints, kName);
  RequireFinite(ViewOf(xy), kName);
  const Box box = ExtentsOf(ViewOf(xy)).box;
  if (!(box.high[2] - box.low[2] <= NuGetLengthTol()))
    FailOperation(NuOperationUnsupported, "3D calculation", "CNuCurve::FitQuadratic()");
  TranslateForeign(kName, [&] {
    RequireDistinct(ViewOf(xy), kLeastPoints, NuGetLengthTol(), kName);
    const Quadratic2 g = FittedQuadratic(ViewOf(xy));
    CNuVector found(6);
    const double coefficients[] = {g.a, g.b, g.c, g.d, g.e, g.f};
    for (int i = 0; i < 6; ++i) {
      if (!std::isfinite(coefficients[i])) FailFit(kNumericalFailure, kName);
      found[i] = coefficients[i];
    }
    Output(six, found);
  });
}

int CNuCurve::ClassifyQuadratic(const CNuVector& six, double tol) {
  constexpr const char* kWhere = "CNuCurve::ClassifyQuadratic()";
  if (six.GetSize() != 6) FailOperation(NuOperationSizeMismatch, "data checking", kWhere);
  switch (KindOf({six[0], six[1], six[2], six[3], six[4], six[5]}, tol)) {
    case QuadraticKind::ellipse:
      return 1;
    case QuadraticKind::hyperbola:
      return 2;
    case QuadraticKind::parabola:
      return 3;
    case QuadraticKind::lines:
      return 4;
    case QuadraticKind::none:
      break;
  }
  FailOperation(NuOperationFailed, "classification", kWhere);
}
