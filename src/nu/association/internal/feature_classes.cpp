#include "nu/association/internal/feature_classes.h"

#include <cmath>

#include "nu/engine/base/elementary.h"
#include "nu/foundation/constants.h"
#include "nu/geometry/internal/conversions.h"

namespace nu::internal {
namespace {

double InRadians(double degrees) {
  return degrees * (Nu_PI / 180.0);
}

// The axes are made right-handed and orthonormal to rounding.
AxisFrame FrameOf(const CNuPoint& origin, const CNuVector& x, const CNuVector& z) {
  return AxisFrame::Along(Components(origin), Components(z), Components(x));
}

AxisFrame FrameOf(const CNuPoint& origin, const CNuVector& z) {
  return AxisFrame::Along(Components(origin), Components(z));
}

template<class Conic>
Feature ConicFeature(FeatureKind kind, const Conic& conic, const CNuPoint& origin, double first, double second) {
  return {kind, FrameOf(origin, conic.GetXaxis(), conic.GetNormal()), {first, second}};
}

}  // namespace

Feature FeatureOf(const CNuLine& line) {
  return {FeatureKind::line, FrameOf(line.GetPoint(), line.GetDirection())};
}

Feature FeatureOf(const CNuPlane& plane) {
  return {FeatureKind::plane, FrameOf(plane.GetPoint(), plane.GetNormal())};
}

Feature FeatureOf(const CNuCircle& circle) {
  const AxisFrame frame = FrameOf(circle.GetCentre(), circle.GetXaxis(), circle.GetNormal());
  return {FeatureKind::circle, frame, {circle.GetRadius()}};
}

Feature FeatureOf(const CNuEllipse& ellipse) {
  return ConicFeature(FeatureKind::ellipse, ellipse, ellipse.GetCentre(), ellipse.GetSemiAxisA(),
                      ellipse.GetSemiAxisB());
}

Feature FeatureOf(const CNuHyperbola& hyperbola) {
  return ConicFeature(FeatureKind::hyperbola, hyperbola, hyperbola.GetCentre(), hyperbola.GetSemiAxisA(),
                      hyperbola.GetSemiAxisB());
}

Feature FeatureOf(const CNuParabola& parabola) {
  return ConicFeature(FeatureKind::parabola, parabola, parabola.GetVertex(), parabola.GetFocalLength(), 0.0);
}

Feature FeatureOf(const CNuSphSurf& sphere) {
  const AxisFrame frame{Components(sphere.GetCentre()), {1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}};
  return {FeatureKind::sphere, frame, {sphere.GetRadius()}};
}

Feature FeatureOf(const CNuCylSurf& cylinder) {
  const AxisFrame frame = FrameOf(cylinder.GetAxisPoint(), cylinder.GetAxisDirection());
  return {FeatureKind::cylinder, frame, {cylinder.GetRadius()}};
}

Feature FeatureOf(const CNuConSurf& cone) {
  const AxisFrame frame = FrameOf(cone.GetApex(), cone.GetAxisDirection());
  return {FeatureKind::cone, frame, {0.0, InRadians(cone.GetSemiAngle())}};
}

Feature FeatureOf(const CNuTorSurf& torus) {
  const AxisFrame frame = FrameOf(torus.GetCentre(), torus.GetAxisDirection());
  return {FeatureKind::torus, frame, {torus.GetMajorRadius(), torus.GetMinorRadius()}};
}

void Store(const Feature& feature, CNuLine* line) {
  const bool inPlane = feature.kind == FeatureKind::lineInPlane;
  *line = CNuLine(ToPoint(feature.frame.origin), ToVector(inPlane ? feature.frame.x : feature.frame.z));
}

void Store(const Feature& feature, CNuPlane* plane) {
  *plane = CNuPlane(ToPoint(feature.frame.origin), ToVector(feature.frame.z));
}

void Store(const Feature& feature, CNuCircle* circle) {
  *circle = CNuCircle(feature.size[0], ToPoint(feature.frame.origin), ToVector(feature.frame.z));
}

// The longer semi-axis is the first one.
void Store(const Feature& feature, CNuEllipse* ellipse) {
  const bool swapped = feature.size[0] < feature.size[1];
  const double a = swapped ? feature.size[1] : feature.size[0];
  const double b = swapped ? feature.size[0] : feature.size[1];
  const Vec3& x = swapped ? feature.frame.y : feature.frame.x;
  *ellipse = CNuEllipse(a, b, ToPoint(feature.frame.origin), ToVector(x), ToVector(feature.frame.z));
}

void Store(const Feature& feature, CNuHyperbola* hyperbola) {
  *hyperbola = CNuHyperbola(feature.size[0], feature.size[1], ToPoint(feature.frame.origin), ToVector(feature.frame.x),
                            ToVector(feature.frame.z));
}

void Store(const Feature& feature, CNuParabola* parabola) {
  *parabola =
      CNuParabola(feature.size[0], ToPoint(feature.frame.origin), ToVector(feature.frame.x), ToVector(feature.frame.z));
}

void Store(const Feature& feature, CNuSphSurf* sphere) {
  *sphere = CNuSphSurf(feature.size[0], ToPoint(feature.frame.origin));
}

void Store(const Feature& feature, CNuCylSurf* cylinder) {
  *cylinder = CNuCylSurf(feature.size[0], ToPoint(feature.frame.origin), ToVector(feature.frame.z));
}

// A cone that narrows along its frame opens against it.
void Store(const Feature& feature, CNuConSurf* cone) {
  const double angle = feature.size[1];
  const Vec3 apex = feature.frame.origin - (feature.size[0] / Tan(angle)) * feature.frame.z;
  const Vec3 axis = angle < 0.0 ? -1.0 * feature.frame.z : feature.frame.z;
  *cone = CNuConSurf(std::fabs(angle) / Nu_PI * 180.0, ToPoint(apex), ToVector(axis));
}

void Store(const Feature& feature, CNuTorSurf* torus) {
  *torus = CNuTorSurf(feature.size[0], feature.size[1], ToPoint(feature.frame.origin), ToVector(feature.frame.z));
}

}  // namespace nu::internal
