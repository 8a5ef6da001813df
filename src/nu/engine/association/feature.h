#ifndef NU_ENGINE_ASSOCIATION_FEATURE_H
#define NU_ENGINE_ASSOCIATION_FEATURE_H

#include <initializer_list>

#include "nu/engine/shapes/axis_frame.h"

// Every feature as a frame and up to two sizes, moved by one set of unknowns, so that what accounts for a fit
// (derivatives, covariance, contacts, bounds, constraints) is written once.
namespace nu::engine::association {

enum class FeatureKind {
  lineInPlane,    // runs along x; deviation: y. Points are in the plane z = 0 of the frame
  line,           // runs along z; deviation: the distance, never negative
  plane,          // z = 0; deviation: z
  circle,         // about the origin in the plane z = 0; deviation: the distance from z minus the radius
  circleInSpace,  // the same circle; deviation: the distance in space, never negative
  ellipse,        // semi-axis size[0] along x, size[1] along y; signed distance in the plane
  hyperbola,      // (x / size[0])^2 - (y / size[1])^2 = 1; signed distance in the plane
  parabola,       // y^2 = 4 size[0] x; signed distance in the plane; of conics it is negative on the side of the foci
  sphere,         // radius size[0]
  cylinder,       // about z, radius size[0]
  cone,           // about z, radius size[0] at z = 0, widens towards +z by the semi-angle size[1] in radians
  torus,          // about z, major radius size[0], minor radius size[1]
};

// Unknowns are changes of a feature in its own frame.
enum Unknown {
  kShiftX,
  kShiftY,
  kShiftZ,  // of the origin, along the axes of the frame
  kTiltX,
  kTiltY,  // z becomes Unit(z + tiltX x + tiltY y); radians to first order
  kTurn,   // about z, radians
  kSize0,
  kSize1,  // added to size[0], size[1]
  kUnknowns,
};

using UnknownMask = unsigned;  // bit k: unknown k

constexpr UnknownMask Bits(std::initializer_list<Unknown> unknowns) {
  UnknownMask mask = 0;
  for (const Unknown k : unknowns) mask |= 1U << k;
  return mask;
}
constexpr bool Contains(UnknownMask mask, int unknown) {
  return (mask >> unknown & 1U) != 0;
}
inline constexpr UnknownMask kShifts = Bits({kShiftX, kShiftY, kShiftZ});
inline constexpr UnknownMask kShiftsAcross = Bits({kShiftX, kShiftY});
inline constexpr UnknownMask kTilts = Bits({kTiltX, kTiltY});

struct Feature {
  FeatureKind kind = FeatureKind::plane;
  AxisFrame frame;
  double size[2] = {};
  // Of a cone: points behind the apex count from the nappe there; otherwise from the one before it, as if it went on.
  bool bothNappes = false;

  bool operator==(const Feature&) const = default;
};

// Whether the deviation of a point is its distance, which is never negative.
constexpr bool IsDistance(FeatureKind kind) {
  return kind == FeatureKind::line || kind == FeatureKind::circleInSpace;
}
// Whether a radius, size[0], is all that the feature has beside its place.
constexpr bool IsRound(FeatureKind kind) {
  return kind == FeatureKind::circle || kind == FeatureKind::sphere || kind == FeatureKind::cylinder;
}

// All lengths times a factor.
Feature Scaled(Feature feature, double factor);

// Those that move the feature, none of them to the same effect as others: three for a plane, five for a cylinder, ...
UnknownMask UnknownsOf(FeatureKind kind);

// The unknown that moves the boundary along its normal everywhere, and so all deviations alike; kUnknowns for features
// without one.
Unknown OffsetOf(FeatureKind kind);
// Those of them that are angles, in radians; the others are lengths.
UnknownMask AnglesOf(FeatureKind kind);
// How much of an unknown moves points at the distance `extent` by about 1.
double PerLength(FeatureKind kind, int unknown, double extent);
// The unknowns of a mask, in their order. Returns their number.
int ListUnknowns(UnknownMask mask, Unknown (&list)[kUnknowns]);

// Shifted, then tilted with the least turn about z, then turned. Axes without a tilt or turn stay as they are, to the
// bit.
Feature Moved(const Feature& feature, const double (&step)[kUnknowns]);

// The deviation of a point.
double DeviationOf(const Feature& feature, const Vec3& point);

// Also its first derivatives by all unknowns, zero for those not in UnknownsOf, at the feature as it is. A point
// without a direction from the feature, on an axis for example, has none: zero.
double DeviationOf(const Feature& feature, const Vec3& point, double (&gradient)[kUnknowns]);

// Adds weight times its second derivatives by the unknowns (symmetric; along the path of Moved).
void AddCurvature(const Feature& feature, const Vec3& point, double weight, double (&sum)[kUnknowns][kUnknowns]);

// Adds weight times the derivatives of half of the squared deviation, which are smooth where those of the deviation are
// not: on a line and on a circle in space. Returns the deviation.
double AddHalfSquare(const Feature& feature, const Vec3& point, double weight, double (&gradient)[kUnknowns],
                     double (&sum)[kUnknowns][kUnknowns]);

}  // namespace nu::engine::association

#endif
