// Intersections of cylinders, cones and spheres as objects of the interface.

#include "nu/curves/pcurve.h"
#include "nu/engine/shapes/generator_quadratic.h"
#include "nu/engine/shapes/quadric_intersection.h"
#include "nu/foundation/interval.h"
#include "nu/geometry/internal/feature_data.h"
#include "nu/geometry/internal/section_objects.h"
#include "nu/geometry/internal/surface_data.h"
#include "nu/linalg/matrix.h"
#include "nu/numerics/triag_polynomial.h"

using namespace nu::internal;

namespace {

RoundQuadric RoundDataOf(const CNuCylSurf& cylinder) {
  const Cylinder3 data = nu::internal::DataOf(cylinder);
  return {RoundQuadric::Kind::kCylinder, data.axis.point, data.axis.direction, data.radius};
}

RoundQuadric RoundDataOf(const CNuConSurf& cone) {
  const DoubleCone data = nu::internal::DataOf(cone);
  return {RoundQuadric::Kind::kCone, data.apex, data.axis, 0.0, data.sine, data.cosine, cone.GetSemiAngle()};
}

RoundQuadric RoundDataOf(const CNuSphSurf& sphere) {
  return {RoundQuadric::Kind::kSphere, Components(sphere.GetCentre()), {}, sphere.GetRadius()};
}

// Appends what a part is in the interface.
struct ObjectMaker {
  void operator()(Vec3 p) { objects.push_back(std::make_unique<CNuPoint>(ToPoint(p))); }
  void operator()(const Line3& line) {
    objects.push_back(std::make_unique<CNuLine>(ToPoint(line.point), ToVector(line.direction)));
  }
  void operator()(const Circle3& circle) {
    objects.push_back(std::make_unique<CNuCircle>(circle.radius, ToPoint(circle.centre), ToVector(circle.normal)));
  }
  void operator()(const SectionInPlane& part) {
    for (auto& object : ObjectsOf(part.section, part.normal, where)) objects.push_back(std::move(object));
  }
  void operator()(const CurveInFrame& part) {
    objects.push_back(std::unique_ptr<CNuObject>(NewPCurve(part.curve, part.frame, part.unit)));
  }

  const char* where;
  NewObjects objects;
};

// CNuOperationException at the operation that `where` names: cause 45, surfaces that are not finite; cause 46, nothing
// that can be confirmed.
template<class First, class Second>
int Common(const First& first, const Second& second, CNuObjArray* result, const char* where) {
  RequireFinite(where, nu::internal::DataOf(first), nu::internal::DataOf(second));
  const QuadricTolerances tolerances{NuGetLengthTol(), NuGetDegreeTol(), ParallelTol(), NuGetZero(), NuGetTol()};
  NewObjects common = WithMemory(where, [&] {
    const auto parts = Intersect(RoundDataOf(first), RoundDataOf(second), tolerances);
    if (!parts) FailOperation(NuOperationFailed, "calculation", where);
    ObjectMaker maker{where, {}};
    for (const CommonPart& part : *parts) std::visit(maker, part);
    return std::move(maker.objects);
  });
  return HandOver(std::move(common), result);
}

QuadricMatrix ToQuadric(const CNuMatrix& matrix) {
  QuadricMatrix quadric;
  for (int i = 0; i < 4; ++i) {
    for (int k = 0; k < 4; ++k) quadric.at[i][k] = matrix.Element(i, k);
  }
  return quadric;
}

CNuTriagPolynomial ToTriagPolynomial(const TrigPolynomial& p) {
  CNuTriagPolynomial polynomial(p.degree);
  for (int k = 0; k <= p.degree; ++k) {
    polynomial.Cos(k) = p.cosines[k];
    polynomial.Sin(k) = p.sines[k];
  }
  return polynomial;
}

// The three factors, and the ranges between the angles at which the discriminant is stationary; returns their number.
int Output(const GeneratorQuadratic& quadratic, CNuTriagPolynomial* curve, CNuInterval* ranges) {
  if (!quadratic.IsFinite()) FailOperation(NuOperationFailed, "calculation", "CNuTriagEqu::Solve()");
  curve[0] = ToTriagPolynomial(quadratic.square);
  curve[1] = ToTriagPolynomial(quadratic.linear);
  curve[2] = ToTriagPolynomial(quadratic.constant);
  const std::vector<double> ends = quadratic.StationaryAngles(NuGetZero(), NuGetTol());
  for (std::size_t i = 0; i < ends.size(); ++i) {
    ranges[i] = CNuInterval(ends[i], i + 1 < ends.size() ? ends[i + 1] : ends[0] + Nu_2PI, 0, 0);
  }
  return static_cast<int>(ends.size());
}

}  // namespace

int CNuCylSurf::Intersect(const CNuMatrix& quadric, CNuTriagPolynomial* curve, CNuInterval* range) const {
  return ::Output(GeneratorQuadratic::OnCylinder(ToQuadric(quadric), m_radius), curve, range);
}

int CNuConSurf::Intersect(const CNuMatrix& quadric, CNuTriagPolynomial* curve, CNuInterval* range, double* asymptotes,
                          int* simple, int* twofold, int* apexSide) const {
  const DoubleCone cone = nu::internal::DataOf(*this);
  const auto quadratic = GeneratorQuadratic::OnCone(ToQuadric(quadric), cone.sine, cone.cosine);
  const int count = ::Output(quadratic, curve, range);
  const Asymptotes found = Asymptotes::Of(quadratic.square);
  std::copy(found.angles.begin(), found.angles.end(), asymptotes);
  *simple = static_cast<int>(found.simple);
  *twofold = static_cast<int>(found.angles.size() - found.simple);
  const double atApex = quadric.Element(3, 3);
  *apexSide = atApex > 0.0 ? 1 : (atApex < 0.0 ? -1 : 0);
  return count;
}

int CNuCylSurf::IntersectWith(const CNuCylSurf& other, CNuObjArray* result) const {
  return Common(*this, other, result, "CNuCylSurf::IntersectWith(CNuCylSurf)");
}

int CNuCylSurf::IntersectWith(const CNuSphSurf& sphere, CNuObjArray* result) const {
  return Common(*this, sphere, result, "CNuCylSurf::IntersectWith(CNuSphSurf)");
}

int CNuCylSurf::IntersectWith(const CNuConSurf& other, CNuObjArray* result) const {
  return Common(*this, other, result, "CNuCylSurf::IntersectWith(CNuConSurf)");
}

int CNuConSurf::IntersectWith(const CNuConSurf& other, CNuObjArray* result) const {
  return Common(*this, other, result, "CNuConSurf::IntersectWith(CNuConSurf)");
}

int CNuConSurf::IntersectWith(const CNuSphSurf& sphere, CNuObjArray* result) const {
  return Common(*this, sphere, result, "CNuConSurf::IntersectWith(CNuSphSurf)");
}

// Each pair of kinds is named after one of them.
int CNuConSurf::IntersectWith(const CNuCylSurf& cylinder, CNuObjArray* result) const {
  return cylinder.IntersectWith(*this, result);
}

int CNuSphSurf::IntersectWith(const CNuCylSurf& cylinder, CNuObjArray* result) const {
  return cylinder.IntersectWith(*this, result);
}

int CNuSphSurf::IntersectWith(const CNuConSurf& cone, CNuObjArray* result) const {
  return cone.IntersectWith(*this, result);
}
