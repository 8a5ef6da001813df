#ifndef NU_INSPECT_GEOMETRY_H
#define NU_INSPECT_GEOMETRY_H

#include <array>
#include <vector>

#include "evaluate/inspection.h"
#include "plan/characteristic_kinds.h"

inline Vec3 Plus(const Vec3& a, const Vec3& b) {
  return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}
inline Vec3 Times(double factor, const Vec3& a) {
  return {factor * a[0], factor * a[1], factor * a[2]};
}
inline double Length(const Vec3& a) {
  return std::sqrt(Dot(a, a));
}
// The part of `a` across the unit vector `direction`.
inline Vec3 Across(const Vec3& a, const Vec3& direction) {
  return Minus(a, Times(Dot(a, direction), direction));
}

// What a fitted feature is to the relations: its place, its direction and how far it was measured. The points are
// borrowed.
struct FeatureGeometry {
  FeatureShape shape = FeatureShape::kPoint;
  Vec3 place{};                // centre; middle of the axis as far as it was measured; mean of the points, on the plane
  Vec3 direction{};            // of the axis; normal of a plane, of a circle and of a conic
  std::array<Vec3, 2> ends{};  // of the axis as far as it was measured
  const std::vector<Vec3>* points = nullptr;
  ENuCriterion criterion = NuLeastSquares;
  std::string type;  // "plane"
};

FeatureGeometry GeometryOf(const FeaturePlan& plan, const std::vector<Vec3>& points, const Inspection& inspection);

// The widths of zones of a given direction. The points are `points`, the direction is a unit vector.

// Between two planes across the direction.
double WidthAlong(const std::vector<Vec3>& points, const Vec3& direction);

// Between two planes that hold the direction, turned about it so that they are closest. Throws FitFailure.
double WidthAround(const std::vector<Vec3>& points, const Vec3& direction);

// The diameter of the smallest cylinder along the direction. Throws FitFailure.
double DiameterAround(const std::vector<Vec3>& points, const Vec3& direction);

// The points seen along the direction: in the plane z = 0 with the axes `x` and y.
std::vector<Vec3> SeenAlong(const std::vector<Vec3>& points, const Vec3& direction, const Vec3& x);

#endif
