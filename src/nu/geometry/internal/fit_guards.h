#ifndef NU_GEOMETRY_INTERNAL_FIT_GUARDS_H
#define NU_GEOMETRY_INTERNAL_FIT_GUARDS_H

#include "nu/engine/least_squares/gauss_newton.h"
#include "nu/engine/points/coincidence.h"
#include "nu/engine/points/extents.h"
#include "nu/engine/points/point_blocks.h"
#include "nu/engine/shapes/incidence.h"
#include "nu/engine/shapes/least_bend.h"
#include "nu/foundation/exceptions.h"
#include "nu/foundation/internal/failures.h"
#include "nu/foundation/internal/outputs.h"
#include "nu/foundation/tolerances.h"
#include "nu/geometry/fit_result.h"
#include "nu/geometry/internal/conversions.h"
#include "nu/geometry/internal/feature_fit.h"
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

inline void RequireCount(PointView points, int least, const char* name) {
  if (points.Size() < static_cast<std::size_t>(least)) FailFit(kTooFewPoints, name, least);
}

// Of at least one point.
inline void RequireFinite(PointView points, const char* name) {
  if (!ExtentsOf(points).isFinite) FailFit(kNumericalFailure, name);
}

// What an iteration that did not converge ran into. Those that were cancelled get their own failure from Monitored.
inline void RequireConverged(GaussNewtonEnd end, const char* name, const char* nameAtLimit) {
  if (end == GaussNewtonEnd::limitReached) FailFit(kIterationLimit, nameAtLimit);
  if (end == GaussNewtonEnd::unsolvable || end == GaussNewtonEnd::cancelled) FailFit(kNumericalFailure, name);
}

// Of a feature that a fit has found: its radius, or the distance from the points to where its numbers place it. Of what
// is flat to the points these numbers, once they are rounded, give another form than was found.
inline void RequireBend(PointView points, double distance, const char* name) {
  const double least = kLeastBend * std::fabs(distance);
  if (LargestComponent(LoadVec3(points[points.Size() / 2]) - LoadVec3(points[0])) > least) return;
  if (!(ExtentsOf(points).Side() > least)) FailFit(kNumericalFailure, name);
}

// Points that are no `least` distinct ones within `tol`.
inline bool HasFewerDistinct(PointView points, int least, double tol) {
  return !HasDistinct(points, least, tol, NuGetZero());
}

// What is not finite has no distance from each other, and is no lack of distinct points.
inline void RequireDistinct(PointView points, int least, double tol, const char* name) {
  if (!HasFewerDistinct(points, least, tol)) return;
  RequireFinite(points, name);
  FailFit(kDegeneratePoints, name, least);
}

// Runs a fit; whatever it throws but a fit's own failure and lack of memory becomes cause 11.
template<class Fit>
auto TranslateForeign(const char* name, Fit fit) {
  try {
    return WithMemory(name, fit);
  } catch (const CNuBestfitException&) {
    throw;
  } catch (const CNuMemoryException&) {
    throw;
  } catch (...) {
    FailFit(kNumericalFailure, name);
  }
}

// Required: fits of lines, planes and circles word lack of memory like any failure that is not theirs, and hosts that
// catch the fit's exception alone rely on it.
template<class Fit>
auto MemoryAsNumericalFailure(const char* name, const Fit& fit) {
  try {
    return WithMemory(name, fit);
  } catch (const CNuMemoryException&) {
    FailFit(kNumericalFailure, name);
  }
}

// The same for fit(options), under the monitor.
template<class Fit>
auto TranslateForeign(const char* name, const FitOptions& options, Fit fit) {
  return Monitored(options,
                   [&](const FitOptions& watched) { return TranslateForeign(name, [&] { return fit(watched); }); });
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

// The middle one of at least one point: the origin of the blocks. In a scan it lies nearer to the mean than the ends
// do; being a point of the set it keeps exact differences exact.
inline Vec3 MiddleOf(PointView points) {
  return LoadVec3(points[points.Size() / 2]);
}

inline PointBlocks BlocksOf(PointView points) {
  return {points, points.Size() > 0 ? MiddleOf(points) : Vec3{}};
}

// A direction as lines and planes store it: components below NuGetTol() are zero, the largest one is positive.
inline Vec3 CanonicalDirection(Vec3 direction) {
  CNuVector canonical = ToVector(direction);
  canonical.SymmetricAxis(NuGetTol(), 1);
  return Components(canonical);
}

}  // namespace nu::internal

// The definitions of members that are the same for all classes with a fit of the full form. They are macros because
// each class declares and exports them on its own. `name` is the class in the failures.

// The fit without its form, and both as variants that do not throw.
#define NU_DEFINE_FIT_VARIANTS(Class, name)                                                                \
  void Class::Fit(const CNuPointArray& points, long maxIter) {                                             \
    Fit(points, nullptr, nullptr, maxIter);                                                                \
  }                                                                                                        \
  ENuFitResult Class::FitEx(const CNuPointArray& points, long maxIter) {                                   \
    return FitEx(points, nullptr, nullptr, maxIter);                                                       \
  }                                                                                                        \
  ENuFitResult Class::FitEx(const CNuPointArray& points, double* form, double* sumSquares, long maxIter) { \
    nu::internal::RequireIterations(maxIter, name);                                                        \
    return nu::internal::ResultOf([&] { Fit(points, form, sumSquares, maxIter); });                        \
  }

// The variants of the minimum zone that do not throw.
#define NU_DEFINE_ZONE_VARIANTS(Class, name)                                                                          \
  ENuFitResult Class::FitMinZoneEx(const CNuPointArray& points, double* zone, double tol, long maxIter) {             \
    return nu::internal::ResultWithin(tol, maxIter, name, [&] { FitMinZone(points, zone, tol, maxIter); });           \
  }                                                                                                                   \
  ENuFitResult Class::FitMinZoneEx(const CNuPointArray& points, double* zone, Class* inner, Class* outer, double tol, \
                                   long maxIter) {                                                                    \
    return nu::internal::ResultWithin(tol, maxIter, name,                                                             \
                                      [&] { FitMinZone(points, zone, inner, outer, tol, maxIter); });                 \
  }

#endif
