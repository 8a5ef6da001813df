#ifndef NU_GEOMETRY_INTERNAL_FIT_GUARDS_H
#define NU_GEOMETRY_INTERNAL_FIT_GUARDS_H

#include "nu/engine/points/extents.h"
#include "nu/engine/points/form_statistics.h"
#include "nu/engine/points/point_blocks.h"
#include "nu/foundation/exceptions.h"
#include "nu/foundation/internal/outputs.h"
#include "nu/foundation/tolerances.h"
#include "nu/geometry/fit_result.h"
#include "nu/geometry/internal/conversions.h"
#include "nu/geometry/internal/point_set.h"

// What the fits of all features share: their checks, the translation of foreign exceptions, and the variants that do
// not throw. `name` is the class of the feature.
namespace nu::internal {

// The causes by short names.
enum FitCause {
  kTooFewPoints = NuBestfitTooFewPoints,
  kDegeneratePoints = NuBestfitTooFewDistinct,
  kCollinearPoints = NuBestfitCollinearPoints,
  kCoplanarPoints = NuBestfitCoplanarPoints,
  kPointsNotInPlane = NuBestfitNotCoplanar,
  kNoVariation = NuBestfitNoVariation,
  kExchangeFailed = NuBestfitExchange,
  kNumericalFailure = NuBestfitNumericalFailure,
  kIterationLimit = NuBestfitIterationLimit,
  kBadIterationLimit = NuBestfitInvalidLimit,
};

[[noreturn]] inline void FailFit(FitCause cause, const char* name, int count = 0) {
  throw CNuBestfitException(cause, name, count);
}

inline void RequireIterations(long limit, const char* name) {
  if (limit < 1) FailFit(kBadIterationLimit, name);
}

inline void RequireCount(const CNuPointArray& points, int least, const char* name) {
  if (points.GetSize() < least) FailFit(kTooFewPoints, name, least);
}

// Of at least one point.
inline void RequireFinite(const CNuPointArray& points, const char* name) {
  if (!ExtentsOf(ViewOf(points)).isFinite) FailFit(kNumericalFailure, name);
}

// Runs a fit; whatever it throws but a fit's own failure becomes cause 11.
template<class Fit>
void TranslateForeign(const char* name, Fit fit) {
  try {
    fit();
  } catch (const CNuBestfitException&) {
    throw;
  } catch (...) {
    FailFit(kNumericalFailure, name);
  }
}

// Runs a fit and turns its failure into a result.
template<class Fit>
ENuFitResult ResultOf(Fit fit) {
  try {
    fit();
    return NuFitSuccess;
  } catch (const CNuBestfitException& failure) {
    return failure.GetCause() == kIterationLimit ? NuFitNoConvergence : NuFitFailure;
  } catch (...) {
    return NuFitFailure;
  }
}

// The length tolerance of the calling thread, set to another value for as long as this lives.
class LengthToleranceScope {
 public:
  explicit LengthToleranceScope(double tol) : m_saved(NuGetLengthTol()) { NuSetLengthTol(tol); }
  ~LengthToleranceScope() { NuSetLengthTol(m_saved); }
  LengthToleranceScope(const LengthToleranceScope&) = delete;
  LengthToleranceScope& operator=(const LengthToleranceScope&) = delete;

 private:
  double m_saved;
};

// The variant that does not throw, for a fit with an iteration limit and a tolerance, which is the length tolerance
// while the fit runs. Only a limit that is not positive throws, before anything else is done.
template<class Fit>
ENuFitResult ResultWithin(double tol, long limit, const char* name, Fit fit) {
  RequireIterations(limit, name);
  const LengthToleranceScope scope(tol);
  return ResultOf(fit);
}

inline void StoreForm(const Deviations& deviations, double* form, double* sumSquares) {
  Output(form, deviations.largest - deviations.smallest);
  Output(sumSquares, deviations.sumSquares);
}

// The middle one of at least one point: the origin of the blocks. In a scan it lies nearer to the mean than the ends
// do; being a point of the set it keeps exact differences exact.
inline Vec3 MiddleOf(const CNuPointArray& points) {
  return Components(points.GetData()[points.GetSize() / 2]);
}

inline PointBlocks BlocksOf(const CNuPointArray& points) {
  return {ViewOf(points), points.GetSize() > 0 ? MiddleOf(points) : Vec3{}};
}

}  // namespace nu::internal

#endif
