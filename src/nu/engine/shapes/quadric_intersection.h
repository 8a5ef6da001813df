#ifndef NU_ENGINE_SHAPES_QUADRIC_INTERSECTION_H
#define NU_ENGINE_SHAPES_QUADRIC_INTERSECTION_H

#include <optional>
#include <variant>
#include <vector>

#include "nu/engine/shapes/axis_frame.h"
#include "nu/engine/shapes/plane_section.h"
#include "nu/engine/shapes/quadric_intersection_curve.h"

namespace nu::engine::shapes {

struct QuadricTolerances {
  // Within the tolerance, or some roundings.
  bool AreSameAngles(double a, double b) const;  // degrees
  bool AreParallel(Vec3 first, Vec3 second) const { return IsParallel(Norm(Cross(first, second)), sine); }

  double length = 0.0;   // of what touches
  double degrees = 0.0;  // of equal angles
  double sine = 0.0;     // of the angle between directions that are parallel
  double zero = 0.0;     // of the coefficients of a discriminant that vanishes
  double share = 0.0;    // of harmonics beside the largest one
};

struct SectionInPlane {
  PlaneSection section;
  Vec3 normal;
};

struct CurveInFrame {
  QuadricIntersectionCurve curve;
  AxisFrame frame;
  double unit = 1.0;
};

// A point, line or circle, the section of a plane, or a branch that is none of them.
using CommonPart = std::variant<Vec3, Line3, Circle3, SectionInPlane, CurveInFrame>;

// What two different surfaces have in common, of which one is a cylinder or cone; both are finite. The result does not
// depend on their order. Nothing where a part is not on both within the tolerances, or where rounding decides about a
// branch.
std::optional<std::vector<CommonPart>> Intersect(const RoundQuadric& first, const RoundQuadric& second,
                                                 const QuadricTolerances& tolerances);

}  // namespace nu::engine::shapes

#endif
