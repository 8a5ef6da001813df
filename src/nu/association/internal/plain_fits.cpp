#include "nu/association/internal/plain_fits.h"

#include "nu/association/internal/feature_access.h"

namespace nu::internal {

namespace {

template<class Shape, class Class>
PlainOutcome Stored(const FeatureFit<Shape>& found, Class* feature) {
  FeatureAccess::Put(found.shape, feature);
  return {found.form, found.deviations};
}

PlainOutcome Stored(const FeatureFit<Cone3>& found, CNuConSurf* cone) {
  PlainOutcome outcome = Stored<Cone3, CNuConSurf>(found, cone);
  outcome.bothNappes = found.shape.bothNappes;
  return outcome;
}

}  // namespace

PlainOutcome FitPlainly(PointView points, ENuCriterion criterion, const FitOptions& options, CNuLine* line) {
  if (criterion == NuMinimumZone) return Stored<Line3>(FitMinZoneLine(points, options), line);
  return Stored(FitLine(points, options), line);
}

PlainOutcome FitPlainly(PointView points, ENuCriterion criterion, const FitOptions& options, CNuPlane* plane) {
  return Stored(criterion == NuMinimumZone ? FitMinZonePlane(points, options) : FitPlane(points, options), plane);
}

PlainOutcome FitPlainly(PointView points, ENuCriterion criterion, const FitOptions& options, CNuCircle* circle) {
  if (criterion == NuMinimumZone) {
    const CircleZone zone = FitMinZoneCircle(points, options);
    PlainOutcome outcome = Stored<PlacedCircle>(zone, circle);
    outcome.isInSpace = zone.isInSpace;
    return outcome;
  }
  if (criterion == NuMinimumCircumscribed) return Stored(FitMinCircle(points, options), circle);
  if (criterion == NuMaximumInscribed) return Stored(FitMaxCircle(points, options), circle);
  return Stored(FitCircle(points, options), circle);
}

PlainOutcome FitPlainly(PointView points, ENuCriterion, const FitOptions& options, CNuEllipse* ellipse) {
  return Stored(FitEllipse(points, options), ellipse);
}

PlainOutcome FitPlainly(PointView points, ENuCriterion, const FitOptions& options, CNuHyperbola* hyperbola) {
  return Stored(FitHyperbola(points, options), hyperbola);
}

PlainOutcome FitPlainly(PointView points, ENuCriterion, const FitOptions& options, CNuParabola* parabola) {
  return Stored(FitParabola(points, options), parabola);
}

PlainOutcome FitPlainly(PointView points, ENuCriterion criterion, const FitOptions& options, CNuSphSurf* sphere) {
  if (criterion == NuMinimumZone) return Stored(FitMinZoneSphere(points, options), sphere);
  if (criterion == NuMinimumCircumscribed) return Stored(FitMinSphere(points, options), sphere);
  if (criterion == NuMaximumInscribed) return Stored(FitMaxSphere(points, options), sphere);
  return Stored(FitSphere(points, options), sphere);
}

PlainOutcome FitPlainly(PointView points, ENuCriterion criterion, const FitOptions& options, CNuCylSurf* cylinder) {
  if (criterion == NuMinimumZone) return Stored(FitMinZoneCylinder(points, options), cylinder);
  if (criterion == NuMinimumCircumscribed) return Stored(FitMinCylinder(points, options), cylinder);
  if (criterion == NuMaximumInscribed) return Stored(FitMaxCylinder(points, options), cylinder);
  return Stored(FitCylinder(points, options), cylinder);
}

PlainOutcome FitPlainly(PointView points, ENuCriterion criterion, const FitOptions& options, CNuConSurf* cone) {
  return Stored(criterion == NuMinimumZone ? FitMinZoneCone(points, options) : FitCone(points, options), cone);
}

PlainOutcome FitPlainly(PointView points, ENuCriterion, const FitOptions& options, CNuTorSurf* torus) {
  PlainOutcome outcome = Stored(FitMinTorus(points, options), torus);
  outcome.form = 2.0 * torus->GetMinorRadius();
  return outcome;
}

}  // namespace nu::internal
