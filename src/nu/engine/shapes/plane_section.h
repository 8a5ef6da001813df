#ifndef NU_ENGINE_SHAPES_PLANE_SECTION_H
#define NU_ENGINE_SHAPES_PLANE_SECTION_H

#include "nu/engine/shapes/double_cone.h"

namespace nu::engine::shapes {

// What a plane has in common with a cylinder or a cone. The frame is that of the curve, right-handed with the normal of
// the plane: its x axis is the axis of the surface as it appears in the plane or, for a parabola, the way it opens.
struct PlaneSection {
  enum Kind { kNothing, kPoint, kLine, kTwoLines, kCircle, kEllipse, kHyperbola, kParabola };

  Kind kind = kNothing;
  Vec3 origin;       // the point; a point of the line or lines; the centre or vertex
  Vec3 x;            // of a conic, and the direction of a single line
  double a = 0.0;    // the radius, the semi-axis along x or the focal length
  double b = 0.0;    // the other semi-axis
  Line3 lines[2]{};  // in the order of plane normal x axis
};

// A plane that is parallel to the axis within `sineTol` cuts a cylinder in lines, one where it touches within
// `lengthTol` or the rounding of the coordinates. A plane closer to the apex of a cone than that goes through it, and
// one parallel to a generator within `sineTol` makes a parabola, or touches along that generator. A plane across
// the axis within `sineTol` makes a circle, and so does an ellipse with semi-axes that are equal to the rounding of
// the coordinates. A conic too large for a double is nothing.
PlaneSection Cut(const Plane3& plane, const Line3& axis, double radius, double lengthTol, double sineTol);
PlaneSection Cut(const Plane3& plane, const DoubleCone& cone, double lengthTol, double sineTol);

}  // namespace nu::engine::shapes

#endif
