#ifndef NU_ASSOCIATION_INTERNAL_PLAIN_FITS_H
#define NU_ASSOCIATION_INTERNAL_PLAIN_FITS_H

#include "nu/association/internal/feature_classes.h"
#include "nu/association/internal/report_details.h"
#include "nu/geometry/internal/fit_guards.h"
#include "nu/geometry/point_array.h"

// The fits of the classes by one name. Nothing here adds to them, so that an association without options gives their
// results to the last bit.
namespace nu::internal {

template<class Class>
PlainForm LeastSquaresOf(const CNuPointArray& points, long maxIter, bool wantsForm, Class* feature) {
  double form = 0.0;
  double sumSquares = 0.0;
  double* const t = wantsForm ? &form : nullptr;
  double* const sum = wantsForm ? &sumSquares : nullptr;
  if constexpr (requires { feature->Fit(points, t, sum, maxIter); })
    feature->Fit(points, t, sum, maxIter);
  else
    feature->Fit(points, t, sum);
  return {form, sumSquares};
}

template<class Class>
PlainForm MinimumZoneOf(const CNuPointArray& points, double tol, long maxIter, Class* feature) {
  double width = 0.0;
  if constexpr (requires { feature->FitMinZone(points, &width, tol, maxIter); })
    feature->FitMinZone(points, &width, tol, maxIter);
  else
    feature->FitMinZone(points, &width, tol);
  return {width, std::nullopt};
}

inline PlainForm MinimumZoneOf(const CNuPointArray& points, double tol, long maxIter, CNuTorSurf* torus) {
  torus->FitMin(points, tol, maxIter);
  return {2.0 * torus->GetMinorRadius(), std::nullopt};
}

template<class Class>
void CircumscribedOf(const CNuPointArray& points, double tol, long maxIter, Class* feature) {
  if constexpr (requires { feature->FitMin(points, tol, maxIter); })
    feature->FitMin(points, tol, maxIter);
  else
    feature->FitMin(points, tol);
}

template<class Class>
void InscribedOf(const CNuPointArray& points, double tol, long maxIter, Class* feature) {
  if constexpr (requires { feature->FitMax(points, tol, maxIter); })
    feature->FitMax(points, tol, maxIter);
  else
    feature->FitMax(points, tol);
}

// The criterion is one that the class has, and not the least squares of a torus.
template<class Class>
PlainForm FitPlainly(const CNuPointArray& points, ENuCriterion criterion, double tol, long maxIter, bool wantsForm,
                     Class* feature) {
  const LengthToleranceScope scope(tol);
  if constexpr (!std::is_same_v<Class, CNuTorSurf>) {
    if (criterion == NuLeastSquares) return LeastSquaresOf(points, maxIter, wantsForm, feature);
  }
  if constexpr ((kRules<Class>.criteria & Has(NuMinimumZone)) != 0) {
    if (criterion == NuMinimumZone) return MinimumZoneOf(points, tol, maxIter, feature);
  }
  if constexpr ((kRules<Class>.criteria & Has(NuMaximumInscribed)) != 0) {
    if (criterion == NuMinimumCircumscribed) CircumscribedOf(points, tol, maxIter, feature);
    if (criterion == NuMaximumInscribed) InscribedOf(points, tol, maxIter, feature);
  }
  return {};
}

}  // namespace nu::internal

#endif
