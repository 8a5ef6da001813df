#ifndef NU_SURFACES_INTERNAL_QUADRIC_INTERSECTION_H
#define NU_SURFACES_INTERNAL_QUADRIC_INTERSECTION_H

#include <cfloat>

#include "nu/engine/shapes/axis_frame.h"
#include "nu/engine/shapes/quadric_branches.h"
#include "nu/foundation/internal/new_objects.h"
#include "nu/foundation/interval.h"
#include "nu/foundation/tolerances.h"
#include "nu/linalg/matrix.h"
#include "nu/numerics/triag_polynomial.h"

// What the intersections of cylinders, cones and spheres share. Only their sources include this.
namespace nu::internal {

RoundQuadric RoundDataOf(const CNuCylSurf& cylinder);
RoundQuadric RoundDataOf(const CNuConSurf& cone);
RoundQuadric RoundDataOf(const CNuSphSurf& sphere);

// An order of the surfaces of one kind, by their size, place and axis.
bool Precedes(const RoundQuadric& first, const RoundQuadric& second);

// Two surfaces in a unit of length of about their largest coordinate or radius, a power of two, and what they have in
// common in the caller's unit. Surfaces that are not finite: CNuOperationException cause 45. What is added must be on
// both surfaces, by the tolerance they touch by: else CNuOperationException cause 46, "calculation", at the operation
// that `where` names.
class QuadricIntersection {
 public:
  QuadricIntersection(const RoundQuadric& first, const RoundQuadric& second, const char* where);

  const RoundQuadric& First() const { return m_first; }
  const RoundQuadric& Second() const { return m_second; }
  // How close surfaces that touch come.
  double Tol() const { return m_tol; }
  // The size of a part whose coordinates are known to the length tolerance.
  double LargestPart() const { return NuGetLengthTol() / DBL_EPSILON / m_unit; }

  void AddPoint(Vec3 p);
  // On both at the point and far from it on either side, where an uncertain direction shows.
  void AddLine(Vec3 point, Vec3 direction);
  void AddCircle(Vec3 centre, Vec3 normal, double radius);
  // The conics in which planes cut the surface, one of the two; false, and nothing added, unless they are on both.
  template<class Surface>
  bool AddSections(const Surface& surface, const std::vector<Plane3>& planes);
  // The same for cylinders and cones around a common sphere, which meet in two planes; false for others.
  template<class Surface>
  bool AddAroundCommonSphere(const Surface& surface);
  // Curves and points in a frame of their own, in the given unit. Nothing: CNuOperationException cause 46 as above.
  void AddBranches(const std::optional<QuadricBranches>& branches, const AxisFrame& frame, double unit);

  int HandOverTo(CNuObjArray* result) { return HandOver(std::move(m_found), result); }

 private:
  bool IsOnBoth(Vec3 p, double distance = 0.0) const;
  bool IsOnBoth(const CNuObject& object) const;
  void Require(bool isOnBoth) const;
  CNuPoint World(Vec3 p) const;

  double m_unit = 1.0;
  RoundQuadric m_first;
  RoundQuadric m_second;
  double m_tol = 0.0;
  const char* m_where;
  NewObjects m_found;
};

// A base on whose generators the other surface is met, in its own upright frame and a unit of the size of both there.
struct QuadricStage {
  QuadricStage(const RoundQuadric& base, const RoundQuadric& other, Vec3 origin,
               const QuadricIntersection& intersection);

  // The other surface's matrix.
  CNuMatrix Quadric() const;

  AxisFrame frame;
  double unit = 1.0;
  double tol = 0.0;
  double reach = 0.0;  // of the branches that go to infinity
  QuadricPair pair;
};

inline Line3 AxisOf(const RoundQuadric& surface) {
  return {surface.point, surface.axis};
}

// For the quadratic curve[0] t^2 + 2 curve[1] t + curve[2] of a kernel: the ranges of u, one turn in all, at whose ends
// the discriminant is stationary, and their number; none where it is constant.
inline constexpr int kMostRanges = 4;
int MonotoneRanges(const CNuTriagPolynomial* curve, CNuInterval* ranges);
// All roots, each once.
std::vector<double> RootsOf(const CNuTriagPolynomial& p);
// The angles of generators that are parallel to one of the quadric, up to four: first those where p changes its sign,
// then those where it only touches 0.
void FindAsymptotes(const CNuTriagPolynomial& p, double* asymptotes, int* simple, int* twofold);
// The lower ends of ranges.
std::vector<double> LowerEnds(const CNuInterval* ranges, int count);

// What is known of a cone and the surface it meets: its apex is on that, with one of its generators or without; all its
// generators are parallel to one of that.
struct ConeContact {
  bool atApex = false;
  bool alongGenerator = false;
  bool atInfinity = false;
};
using ConeKernel = int (CNuConSurf::*)(const CNuMatrix&, CNuTriagPolynomial*, CNuInterval*, double*, int*, int*,
                                       int*) const;
// Adds the branches on the generators of the cone that is the base, but for a common one.
void IntersectOnCone(const QuadricStage& stage, const ConeContact& contact, ConeKernel kernel,
                     QuadricIntersection& intersection);

// The undirected angle between two unit directions, in degrees.
double AngleBetween(Vec3 a, Vec3 b);
// Within NuGetDegreeTol(), or some roundings.
bool AreSameAngles(double a, double b);

}  // namespace nu::internal

#endif
