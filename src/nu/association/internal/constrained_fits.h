#ifndef NU_ASSOCIATION_INTERNAL_CONSTRAINED_FITS_H
#define NU_ASSOCIATION_INTERNAL_CONSTRAINED_FITS_H

#include "nu/association/criteria.h"
#include "nu/association/internal/association_state.h"
#include "nu/engine/association/constrained_fit.h"

namespace nu::internal {

FitCriterion ToEngine(ENuCriterion criterion);

// The unknowns that the fixed parameters take from a feature of this kind.
UnknownMask FixedUnknowns(const FixedParameters& fixed, FeatureKind kind);

// The feature with its fixed parameters at their values, whatever the points are.
Feature AtFixed(Feature feature, const FixedParameters& fixed);

FitProblem ProblemOf(const AssociationState& state, ENuCriterion criterion, FeatureKind kind,
                     const StepMonitor& monitor);

// Where no unconstrained fit starts: a line, plane, circle, sphere or cylinder beside the points; also a torus.
bool HasRoughStart(FeatureKind kind);
Feature RoughStart(FeatureKind kind, const FixedParameters& fixed, PointView points);

// The one of the two senses of its direction that the fits of its class prefer.
Feature WithCanonicalSense(Feature feature);
// A torus: the tube of this radius around a circle in space.
Feature AsTube(Feature circle, double radius);

// The fit with all options from a start, which is moved to the fixed parameters first. What is not fixed may come out
// in the sense that the fits of its class prefer, unless the start was given.
FittedFeature FitConstrained(const AssociationState& state, ENuCriterion criterion, const Feature& start, double tol,
                             const StepMonitor& monitor);

}  // namespace nu::internal

#endif
