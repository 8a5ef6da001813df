#ifndef NU_GEOMETRY_INTERNAL_FEATURE_FIT_H
#define NU_GEOMETRY_INTERNAL_FEATURE_FIT_H

#include "nu/engine/base/step_monitor.h"
#include "nu/engine/points/form_statistics.h"
#include "nu/foundation/internal/outputs.h"

// What goes into a fit and what comes out of it, on plain numbers. The members of the classes are thin around such
// fits, which read points of any stride where they lie and fail with CNuBestfitException as the classes promise: the
// same causes, names and sizes in the same order.
namespace nu::internal {

struct FitOptions {
  long maxIter = 1;              // fits without steps do not read it
  double tol = 0.0;              // length tolerance of a minimax fit; least squares read NuGetLengthTol()
  bool wantsDeviations = false;  // of least squares
};

// In the frame and the unit of the points.
template<class Shape>
struct FeatureFit {
  Shape shape;
  double form = 0.0;           // of a minimum zone its width; of least squares 0 unless deviations are wanted
  Deviations deviations = {};  // of least squares, when they are wanted
};

template<class Shape>
void StoreForm(const FeatureFit<Shape>& found, double* form, double* sumSquares) {
  Output(form, found.form);
  Output(sumSquares, found.deviations.sumSquares);
}

}  // namespace nu::internal

#endif
