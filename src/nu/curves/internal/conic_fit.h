#ifndef NU_CURVES_INTERNAL_CONIC_FIT_H
#define NU_CURVES_INTERNAL_CONIC_FIT_H

#include "nu/engine/points/form_statistics.h"
#include "nu/engine/shapes/conic_equation.h"
#include "nu/fwd.h"
#include "nu/geometry/internal/fit_guards.h"

// The least-squares fit of a conic in the least-squares plane of the points.
namespace nu::internal {

// Which conic is fitted, as the checks of the points need it.
struct ConicFitRule {
  const char* name;  // of the class
  ConicKind kind;
  int leastDistinct;
};

// The lengths a and b are those of ConicShape.
struct FittedConic {
  double a = 0.0;
  double b = 0.0;
  CNuPoint origin;
  CNuVector xAxis;
  CNuVector normal;
  Deviations deviations;
};

// CNuBestfitException as the classes say.
FittedConic FitConic(const ConicFitRule& rule, const CNuPointArray& points, bool wantsDeviations, long maxIter);

// Checks, fits, has the result stored by `store(found)`, and puts out the form.
template<class Store>
void FitConic(const ConicFitRule& rule, const CNuPointArray& points, double* form, double* sumSquares, long maxIter,
              Store store) {
  RequireIterations(maxIter, rule.name);
  TranslateForeign(rule.name, [&] {
    const FittedConic found = FitConic(rule, points, form != nullptr || sumSquares != nullptr, maxIter);
    store(found);
    StoreForm(found.deviations, form, sumSquares);
  });
}

}  // namespace nu::internal

#endif
