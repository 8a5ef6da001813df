#ifndef NU_ENGINE_SHAPES_QUADRIC_STAGE_H
#define NU_ENGINE_SHAPES_QUADRIC_STAGE_H

#include "nu/engine/shapes/common_parts.h"

namespace nu::engine::shapes {

// A base on whose generators the other surface is met, in its own upright frame and a unit of the size of both there.
struct QuadricStage {
  QuadricStage(const RoundQuadric& base, const RoundQuadric& other, Vec3 origin, const CommonParts& parts);

  AxisFrame frame;
  double unit = 1.0;
  double tol = 0.0;
  double reach = 0.0;  // of the branches that go to infinity
  QuadricPair pair;
};

// Adds the branches on the generators of the cylinder that is the base; with those parallel to one of a cone, nothing
// is quadratic.
void AddOnCylinder(const QuadricStage& stage, bool isParallelToOther, CommonParts& parts);

// What is known of a cone and the surface it meets: its apex is on that, with one of its generators or without; all its
// generators are parallel to one of that.
struct ConeContact {
  bool atApex = false;
  bool alongGenerator = false;
  bool atInfinity = false;
};
// Adds the branches on the generators of the cone that is the base, but for a common one.
void AddOnCone(const QuadricStage& stage, const ConeContact& contact, CommonParts& parts);

}  // namespace nu::engine::shapes

#endif
