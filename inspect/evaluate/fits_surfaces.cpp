// Spheres, cylinders, cones and tori.

#include <numbers>

#include "evaluate/fit_tools.h"

namespace {

// The apexes of the two cones that bound the zone.
void AddApexes(double semiAngle, Inspection* result) {
  const double perDeviation = 1 / std::sin(semiAngle * std::numbers::pi / 180);
  const auto add = [&](const char* name, double deviation) {
    Parameter apex{name, Parameter::Kind::kPoint, {}};
    for (std::size_t i = 0; i < 3; ++i) {
      apex.values.push_back(result->frame.origin[i] - deviation * perDeviation * result->frame.z[i]);
    }
    result->parameters.push_back(apex);
  };
  add("inner apex", -result->LargestInwards());
  add("outer apex", result->LargestOutwards());
}

}  // namespace

Inspection FitSphere(const std::vector<Vec3>& points, const FitTask& task) {
  Inspection result = Associate(points, task, CNuSphSurf(1.0), [](const CNuSphSurf& sphere, Inspection* inspection) {
    inspection->parameters = {Point("centre", sphere.GetCentre())};
    inspection->frame.origin = ToVec3(sphere.GetCentre());
    inspection->radius = sphere.GetRadius();
  });
  AddRadii(task.criterion, &result);
  return result;
}

Inspection FitCylinder(const std::vector<Vec3>& points, const FitTask& task) {
  Inspection result = Associate(points, task, CNuCylSurf(1.0), [](const CNuCylSurf& cylinder, Inspection* inspection) {
    const CNuLine axis = cylinder.GetAxis();
    inspection->parameters = {Point("axis point", axis.GetPoint()), Direction("axis", axis.GetDirection())};
    inspection->frame = FrameAlong(axis.GetPoint(), axis.GetDirection());
    inspection->radius = cylinder.GetRadius();
  });
  AddRadii(task.criterion, &result);
  return result;
}

Inspection FitCone(const std::vector<Vec3>& points, const FitTask& task) {
  double semiAngle = 0;
  Inspection result = Associate(points, task, CNuConSurf(45.0), [&](const CNuConSurf& cone, Inspection* inspection) {
    semiAngle = cone.GetSemiAngle();
    inspection->parameters = {Point("apex", cone.GetApex()),
                              Direction("axis", cone.GetAxisDirection()),
                              {"semi-angle", Parameter::Kind::kAngle, {semiAngle}}};
    inspection->frame = FrameAlong(cone.GetApex(), cone.GetAxisDirection());
  });
  if (task.criterion == NuMinimumZone) AddApexes(semiAngle, &result);
  return result;
}

Inspection FitTorus(const std::vector<Vec3>& points, const FitTask& task) {
  double tube = 0;
  Inspection result =
      Associate(points, task, CNuTorSurf(2.0, 1.0), [&tube](const CNuTorSurf& torus, Inspection* inspection) {
        double major = 0;
        CNuPoint centre;
        CNuVector axis;
        torus.GetData(&major, &tube, &centre, &axis);
        inspection->parameters = {Point("centre", centre), Direction("axis", axis), Length("major radius", major),
                                  Length("minor radius", tube)};
        inspection->frame = FrameAlong(centre, axis);
        inspection->tubeCircle = major;
      });
  if (task.criterion == NuMinimumZone) MeasureFromTube(tube, &result);
  return result;
}
