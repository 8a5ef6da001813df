// Cylinders against cylinders, cones and spheres. On the generator (r cos u, r sin u, z) of an upright cylinder a
// quadric p Q p^T = 0 is
//   Q33 z^2 + 2 (r Q13 cos u + r Q23 sin u + Q34) z + (r^2 (Q11 cos^2 u + 2 Q12 cos u sin u + Q22 sin^2 u)
//   + 2 r (Q14 cos u + Q24 sin u) + Q44) = 0,
// and its discriminant is of degree two in cos u and sin u.

#include "nu/foundation/constants.h"
#include "nu/foundation/tolerances.h"
#include "nu/geometry/internal/feature_data.h"
#include "nu/numerics/triag.h"
#include "nu/surfaces/cone.h"
#include "nu/surfaces/cylinder.h"
#include "nu/surfaces/internal/quadric_intersection.h"
#include "nu/surfaces/sphere.h"

using namespace nu::internal;

namespace {

using Kernel = int (CNuCylSurf::*)(const CNuMatrix&, CNuTriagPolynomial*, CNuInterval*) const;

Vec3 NearestOfAxis(const RoundQuadric& surface, Vec3 p) {
  return surface.point + Dot(p - surface.point, surface.axis) * surface.axis;
}

// Where h = 0: the plane through the apex across that of the axes crosses the cylinder, or touches it.
std::vector<double> RootsOfSlope(const CNuTriagPolynomial& h, double radius, double tol) {
  if (h.GetDegree() < 1) return {};
  const CNuTriag wave(h.Cos(1), h.Sin(1), h.Cos(0));
  const double beyond = std::fabs(std::fabs(h.Cos(0)) / wave.Amplitude() - 1.0);
  if (!(beyond * radius <= tol)) return RootsOf(h);
  const double u = h.Cos(0) > 0.0 ? wave.Phase() + Nu_PI : wave.Phase();
  return {u < Nu_2PI ? u : u - Nu_2PI};
}

// On the generators of the cylinder; with those parallel to one of a cone, nothing is quadratic.
void IntersectOnCylinder(const QuadricStage& stage, bool isParallelToOther, Kernel kernel,
                         QuadricIntersection& intersection) {
  CNuTriagPolynomial curve[3];
  CNuInterval ranges[kMostRanges];
  const CNuCylSurf upright(std::max(stage.pair.base.radius, DBL_MIN));
  const int count = (upright.*kernel)(stage.Quadric(), curve, ranges);
  const auto branches =
      isParallelToOther ? BranchesThroughInfinity(stage.pair, RootsOfSlope(curve[1], upright.GetRadius(), stage.tol),
                                                  stage.tol, stage.reach)
                        : BranchesOf(stage.pair, LowerEnds(ranges, count), {}, stage.tol, stage.reach);
  intersection.AddBranches(branches, stage.frame, stage.unit);
}

// Each point that the cross-sections have in common is one of a line. Axes that are parallel within the tolerance only
// leave both sections in one plane.
void IntersectParallel(const RoundQuadric& first, const RoundQuadric& second, QuadricIntersection& intersection) {
  const Vec3 across = Rejection(NearestOfAxis(second, first.point) - first.point, first.axis);
  const Circle3 own{first.point, first.axis, first.radius};
  const Circle3 other{first.point + across, first.axis, second.radius};
  const Points2 common = Intersect(own, other, intersection.Tol());
  for (int i = 0; i < common.count; ++i) intersection.AddLine(common.at[i], first.axis);
}

// A sphere around a point of the axis.
void IntersectCoaxialSphere(const RoundQuadric& cylinder, const RoundQuadric& sphere,
                            QuadricIntersection& intersection) {
  const double r = cylinder.radius;
  const Vec3 centre = NearestOfAxis(cylinder, sphere.point);
  if (std::fabs(sphere.radius - r) <= intersection.Tol()) return intersection.AddCircle(centre, cylinder.axis, r);
  if (!(sphere.radius > r)) return;
  const double height = std::sqrt(sphere.radius - r) * std::sqrt(sphere.radius + r);
  for (const double side : {-1.0, 1.0})
    intersection.AddCircle(centre + side * height * cylinder.axis, cylinder.axis, r);
}

void IntersectCoaxialCone(const RoundQuadric& cylinder, const RoundQuadric& cone, QuadricIntersection& intersection) {
  const Vec3 apex = NearestOfAxis(cylinder, cone.point);
  const double height = cylinder.radius * (cone.cosine / cone.sine);
  for (const double side : {-1.0, 1.0}) {
    intersection.AddCircle(apex + side * height * cylinder.axis, cylinder.axis, cylinder.radius);
  }
}

// On the smaller one, from where its axis is next to the other one. Axes that are nearly parallel come closest where no
// part is, which is uncertain, too: no farther from their points than the place is known by.
QuadricStage StageFor(const RoundQuadric& first, const RoundQuadric& second, const QuadricIntersection& intersection) {
  constexpr double kFarthest = 100.0;  // times the larger radius
  const RoundQuadric& base = first.radius > second.radius ? second : first;
  const RoundQuadric& other = first.radius > second.radius ? first : second;
  const Approach approach = ClosestApproach(AxisOf(base), AxisOf(other), 0.0);
  const bool isNear = std::fabs(approach.alongFirst) <= kFarthest * other.radius;
  return QuadricStage(base, other, AxisOf(base).At(isNear ? approach.alongFirst : 0.0), intersection);
}

}  // namespace

int CNuCylSurf::Intersect(const CNuMatrix& quadric, CNuTriagPolynomial* curve, CNuInterval* range) const {
  const auto q = [&](int i, int j) { return quadric.Element(i, j); };
  const CNuTriagPolynomial x(CNuTriag(m_radius, 0.0, 0.0));
  const CNuTriagPolynomial y(CNuTriag(0.0, m_radius, 0.0));
  const CNuTriagPolynomial one(CNuTriag(0.0, 0.0, 1.0));
  curve[0] = q(2, 2) * one;
  curve[1] = q(0, 2) * x + q(1, 2) * y + q(2, 3) * one;
  curve[2] = q(0, 0) * (x * x) + 2.0 * q(0, 1) * (x * y) + q(1, 1) * (y * y) + 2.0 * q(0, 3) * x + 2.0 * q(1, 3) * y +
             q(3, 3) * one;
  return MonotoneRanges(curve, range);
}

// One order for both, so that the result does not depend on which is asked.
int CNuCylSurf::IntersectWith(const CNuCylSurf& other, CNuObjArray* result) const {
  return Precedes(RoundDataOf(other), RoundDataOf(*this)) ? other.IntersectOrdered(*this, result)
                                                          : IntersectOrdered(other, result);
}

int CNuCylSurf::IntersectOrdered(const CNuCylSurf& other, CNuObjArray* result) const {
  QuadricIntersection intersection(RoundDataOf(*this), RoundDataOf(other), "CNuCylSurf::IntersectWith(CNuCylSurf)");
  const RoundQuadric& first = intersection.First();
  const RoundQuadric& second = intersection.Second();
  if (AreParallel(first.axis, second.axis)) {
    IntersectParallel(first, second, intersection);
  } else if (!intersection.AddAroundCommonSphere(*this)) {
    IntersectOnCylinder(StageFor(first, second, intersection), false, &CNuCylSurf::Intersect, intersection);
  }
  return intersection.HandOverTo(result);
}

int CNuCylSurf::IntersectWith(const CNuSphSurf& sphere, CNuObjArray* result) const {
  QuadricIntersection intersection(RoundDataOf(*this), RoundDataOf(sphere), "CNuCylSurf::IntersectWith(CNuSphSurf)");
  const RoundQuadric& cylinder = intersection.First();
  const RoundQuadric& ball = intersection.Second();
  const Vec3 foot = NearestOfAxis(cylinder, ball.point);
  if (Norm(ball.point - foot) <= intersection.Tol()) {
    IntersectCoaxialSphere(cylinder, ball, intersection);
  } else {
    IntersectOnCylinder(QuadricStage(cylinder, ball, foot, intersection), false, &CNuCylSurf::Intersect, intersection);
  }
  return intersection.HandOverTo(result);
}

int CNuCylSurf::IntersectWith(const CNuConSurf& other, CNuObjArray* result) const {
  QuadricIntersection intersection(RoundDataOf(*this), RoundDataOf(other), "CNuCylSurf::IntersectWith(CNuConSurf)");
  const RoundQuadric& cylinder = intersection.First();
  const RoundQuadric& cone = intersection.Second();
  const Vec3 foot = NearestOfAxis(cylinder, cone.point);
  const double apexDistance = Norm(cone.point - foot);
  const double angle = AngleBetween(cylinder.axis, cone.axis);
  const bool isParallel = AreParallel(cylinder.axis, cone.axis);
  if (isParallel && apexDistance <= intersection.Tol()) {
    IntersectCoaxialCone(cylinder, cone, intersection);
    return intersection.HandOverTo(result);
  }
  if (!isParallel && intersection.AddAroundCommonSphere(*this)) return intersection.HandOverTo(result);
  const bool isParallelToGenerator = AreSameAngles(angle, other.GetSemiAngle());
  const bool isAtApex = std::fabs(apexDistance - cylinder.radius) <= intersection.Tol();
  if (isAtApex && isParallelToGenerator) intersection.AddLine(cone.point, cylinder.axis);
  if (isAtApex) {
    const QuadricStage stage(cone, cylinder, cone.point, intersection);
    IntersectOnCone(stage, {true, isParallelToGenerator}, &CNuConSurf::Intersect, intersection);
  } else {
    const QuadricStage stage(cylinder, cone, foot, intersection);
    IntersectOnCylinder(stage, isParallelToGenerator, &CNuCylSurf::Intersect, intersection);
  }
  return intersection.HandOverTo(result);
}
