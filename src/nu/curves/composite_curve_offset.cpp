#include "nu/curves/composite_curve.h"
#include "nu/foundation/internal/failures.h"

CNuBoundedCurve* CNuCompositeCurve::Offset(double, const CNuVector&, int) {
  nu::internal::FailOperation(45, "calculation", "CNuCompositeCurve::Offset()");
}

CNuBoundedCurve* CNuCompositeCurve::Offset(double) {
  nu::internal::FailOperation(45, "calculation", "CNuCompositeCurve::Offset()");
}
