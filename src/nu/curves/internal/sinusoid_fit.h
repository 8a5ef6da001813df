#ifndef NU_CURVES_INTERNAL_SINUSOID_FIT_H
#define NU_CURVES_INTERNAL_SINUSOID_FIT_H

#include "nu/engine/points/form_statistics.h"
#include "nu/foundation/internal/outputs.h"
#include "nu/fwd.h"
#include "nu/geometry/internal/fit_guards.h"

// What the sine and the cosine curve share. `name` is the class.
namespace nu::internal {

// The sine and the cosine of b x + c, with b x formed without rounding.
double SineAt(double b, double x, double c);
double CosineAt(double b, double x, double c);

// a and b are above 0 and finite.
void RequireSinusoid(double a, double b, const char* name);

struct FittedSinusoid {
  double a;
  double b;
  double sine;  // of the sine and of the cosine of b x, but for a factor
  double cosine;
  double d;
  Deviations deviations;
};

// CNuBestfitException as the classes say.
FittedSinusoid FitSinusoid(const CNuPointArray& points, const char* name, bool wantsDeviations, long maxIter);

// Checks, fits, has the result stored by `store(found)`, and puts out the form.
template<class Store>
void FitSinusoid(const CNuPointArray& points, const char* name, double* form, double* sumSquares, long maxIter,
                 Store store) {
  RequireIterations(maxIter, name);
  TranslateForeign(name, [&] {
    const FittedSinusoid found = FitSinusoid(points, name, form != nullptr || sumSquares != nullptr, maxIter);
    store(found);
    Output(form, found.deviations.largest - found.deviations.smallest);
    Output(sumSquares, found.deviations.sumSquares);
  });
}

// The angle of (cosine, sine) in [0, 2 pi).
double PhaseOf(double cosine, double sine);

}  // namespace nu::internal

#endif
