// Fits of spheres, cylinders, cones and tori.

#include <numbers>

#include "evaluate/fit_tools.h"

namespace {

constexpr double kRadian = std::numbers::pi / 180;

void DescribeSphere(const std::vector<Vec3>& points, const CNuSphSurf& sphere, Inspection* result) {
  result->parameters = {Point("centre", sphere.GetCentre()), Length("radius", sphere.GetRadius()),
                        Length("diameter", 2 * sphere.GetRadius())};
  result->frame.origin = ToVec3(sphere.GetCentre());
  const double radius = sphere.GetRadius();
  AddDeviations(
      points, [radius](const Vec3& p) { return NuPythag(p[0], p[1], p[2]) - radius; }, result);
}

void DescribeCylinder(const std::vector<Vec3>& points, const CNuCylSurf& cylinder, Inspection* result) {
  const CNuLine axis = cylinder.GetAxis();
  result->parameters = {Point("axis point", axis.GetPoint()), Direction("axis", axis.GetDirection()),
                        Length("radius", cylinder.GetRadius()), Length("diameter", 2 * cylinder.GetRadius())};
  result->frame = FrameAlong(axis.GetPoint(), axis.GetDirection());
  const double radius = cylinder.GetRadius();
  AddDeviations(
      points, [radius](const Vec3& p) { return NuPythag(p[0], p[1]) - radius; }, result);
}

void DescribeCone(const std::vector<Vec3>& points, const CNuConSurf& cone, Inspection* result) {
  result->parameters = {Point("apex", cone.GetApex()),
                        Direction("axis", cone.GetAxisDirection()),
                        {"semi-angle", Parameter::Kind::kAngle, {cone.GetSemiAngle()}}};
  result->frame = FrameAlong(cone.GetApex(), cone.GetAxisDirection());
  const double s = std::sin(cone.GetSemiAngle() * kRadian);
  const double c = std::cos(cone.GetSemiAngle() * kRadian);
  AddDeviations(
      points, [s, c](const Vec3& p) { return NuPythag(p[0], p[1]) * c - p[2] * s; }, result);
}

void DescribeTorus(const std::vector<Vec3>& points, const CNuTorSurf& torus, Inspection* result) {
  double major = 0;
  double minor = 0;
  CNuPoint centre;
  CNuVector axis;
  torus.GetData(&major, &minor, &centre, &axis);
  result->parameters = {Point("centre", centre), Direction("axis", axis), Length("major radius", major),
                        Length("minor radius", minor)};
  result->frame = FrameAlong(centre, axis);
  result->tubeCircle = major;
  AddDeviations(
      points, [major, minor](const Vec3& p) { return NuPythag(NuPythag(p[0], p[1]) - major, p[2]) - minor; }, result);
}

}  // namespace

Inspection LeastSquaresSphere(const std::vector<Vec3>& points) {
  return FitAndDescribe(
      points, CNuSphSurf(1.0),
      [](const CNuPointArray& array, CNuSphSurf* sphere, Inspection* result) {
        sphere->Fit(array, &result->form, &result->sumSquares, kMaxIterations);
      },
      DescribeSphere);
}

Inspection MinimumZoneSphere(const std::vector<Vec3>& points) {
  const double tol = SameLength(points);
  return FitAndDescribe(
      points, CNuSphSurf(1.0),
      [tol](const CNuPointArray& array, CNuSphSurf* sphere, Inspection* result) {
        CNuSphSurf inner(1.0);
        CNuSphSurf outer(1.0);
        sphere->FitMinZone(array, &result->form, &inner, &outer, tol, kMaxIterations);
        result->parameters = {Length("inner radius", inner.GetRadius()), Length("outer radius", outer.GetRadius())};
      },
      DescribeSphere);
}

Inspection CircumscribedSphere(const std::vector<Vec3>& points) {
  const double tol = SameLength(points);
  return FitAndDescribe(
      points, CNuSphSurf(1.0),
      [tol](const CNuPointArray& array, CNuSphSurf* sphere, Inspection*) { sphere->FitMin(array, tol); },
      DescribeSphere);
}

Inspection InscribedSphere(const std::vector<Vec3>& points) {
  const double tol = SameLength(points);
  return FitAndDescribe(
      points, CNuSphSurf(1.0),
      [tol](const CNuPointArray& array, CNuSphSurf* sphere, Inspection*) { sphere->FitMax(array, tol); },
      DescribeSphere);
}

Inspection LeastSquaresCylinder(const std::vector<Vec3>& points) {
  return FitAndDescribe(
      points, CNuCylSurf(1.0),
      [](const CNuPointArray& array, CNuCylSurf* cylinder, Inspection* result) {
        cylinder->Fit(array, &result->form, &result->sumSquares, kMaxIterations);
      },
      DescribeCylinder);
}

Inspection MinimumZoneCylinder(const std::vector<Vec3>& points) {
  const double tol = SameLength(points);
  return FitAndDescribe(
      points, CNuCylSurf(1.0),
      [tol](const CNuPointArray& array, CNuCylSurf* cylinder, Inspection* result) {
        CNuCylSurf inner(1.0);
        CNuCylSurf outer(1.0);
        cylinder->FitMinZone(array, &result->form, &inner, &outer, tol, kMaxIterations);
        result->parameters = {Length("inner radius", inner.GetRadius()), Length("outer radius", outer.GetRadius())};
      },
      DescribeCylinder);
}

Inspection CircumscribedCylinder(const std::vector<Vec3>& points) {
  const double tol = SameLength(points);
  return FitAndDescribe(
      points, CNuCylSurf(1.0),
      [tol](const CNuPointArray& array, CNuCylSurf* cylinder, Inspection*) {
        cylinder->FitMin(array, tol, kMaxIterations);
      },
      DescribeCylinder);
}

Inspection InscribedCylinder(const std::vector<Vec3>& points) {
  const double tol = SameLength(points);
  return FitAndDescribe(
      points, CNuCylSurf(1.0),
      [tol](const CNuPointArray& array, CNuCylSurf* cylinder, Inspection*) {
        cylinder->FitMax(array, tol, kMaxIterations);
      },
      DescribeCylinder);
}

Inspection LeastSquaresCone(const std::vector<Vec3>& points) {
  return FitAndDescribe(
      points, CNuConSurf(45.0),
      [](const CNuPointArray& array, CNuConSurf* cone, Inspection* result) {
        cone->Fit(array, &result->form, &result->sumSquares, kMaxIterations);
      },
      DescribeCone);
}

Inspection MinimumZoneCone(const std::vector<Vec3>& points) {
  const double tol = SameLength(points);
  return FitAndDescribe(
      points, CNuConSurf(45.0),
      [tol](const CNuPointArray& array, CNuConSurf* cone, Inspection* result) {
        CNuConSurf inner(45.0);
        CNuConSurf outer(45.0);
        cone->FitMinZone(array, &result->form, &inner, &outer, tol, kMaxIterations);
        result->parameters = {Point("inner apex", inner.GetApex()), Point("outer apex", outer.GetApex())};
      },
      DescribeCone);
}

Inspection CircumscribedTorus(const std::vector<Vec3>& points) {
  const double tol = SameLength(points);
  return FitAndDescribe(
      points, CNuTorSurf(2.0, 1.0),
      [tol](const CNuPointArray& array, CNuTorSurf* torus, Inspection*) { torus->FitMin(array, tol, kMaxIterations); },
      DescribeTorus);
}
