#ifndef NU_ENGINE_SHAPES_COMMON_PARTS_H
#define NU_ENGINE_SHAPES_COMMON_PARTS_H

#include "nu/engine/shapes/quadric_branches.h"
#include "nu/engine/shapes/quadric_intersection.h"

namespace nu::engine::shapes {

// Collects what two surfaces have in common, in a unit of length of about their largest coordinate or radius, a power
// of two. What is added must be on both surfaces, by the tolerance they touch by: else nothing of it can be confirmed.
class CommonParts {
 public:
  CommonParts(const RoundQuadric& first, const RoundQuadric& second, const QuadricTolerances& tolerances);

  const RoundQuadric& First() const { return m_first; }
  const RoundQuadric& Second() const { return m_second; }
  const QuadricTolerances& Tolerances() const { return m_tolerances; }
  // How close surfaces that touch come.
  double Tol() const { return m_tol; }
  // The size of a part whose coordinates are known to the length tolerance.
  double LargestPart() const { return m_tolerances.length / DBL_EPSILON / m_unit; }

  void AddPoint(Vec3 p);
  // On both at the point and far from it on either side, where an uncertain direction shows.
  void AddLine(Vec3 point, Vec3 direction);
  void AddCircle(Vec3 centre, Vec3 normal, double radius);
  // The conics in which planes cut the first surface; false, and nothing added, unless they are on both.
  bool AddSections(const std::vector<Plane3>& planes);
  // The same for cylinders and cones around a common sphere, which meet in two planes; false for others.
  bool AddAroundCommonSphere();
  // Curves and points in a frame of their own, in the given unit. Nothing cannot be confirmed, either.
  void AddBranches(const std::optional<QuadricBranches>& branches, const AxisFrame& frame, double unit);

  // Nothing where a part was not on both surfaces.
  std::optional<std::vector<CommonPart>> Take();

 private:
  bool IsOnBoth(Vec3 p, double distance = 0.0) const;
  void Require(bool isOnBoth) { m_isConfirmed = m_isConfirmed && isOnBoth; }
  Vec3 World(Vec3 p) const { return m_unit * p; }
  // Nothing where lengths overflow or vanish.
  std::optional<PlaneSection> World(PlaneSection section) const;

  double m_unit = 1.0;
  RoundQuadric m_first;
  RoundQuadric m_second;
  QuadricTolerances m_tolerances;
  double m_tol = 0.0;
  bool m_isConfirmed = true;
  std::vector<CommonPart> m_found;
};

// A power of two below a length; its reciprocal is a double, too.
double UnitFor(double length);
RoundQuadric InUnit(RoundQuadric surface, double unit);
inline Line3 AxisOf(const RoundQuadric& surface) {
  return {surface.point, surface.axis};
}

}  // namespace nu::engine::shapes

#endif
