// An adapter of the scoreboard: reads "feature criterion count" and the points, and prints the result in the names of
// the data package, 17 digits, or "none".

#include <cstdio>
#include <exception>
#include <iostream>
#include <string>

#include "nu/nu.h"

namespace {

constexpr double kDegree = 3.14159265358979323846 / 180.0;

void Print(const char* name, const CNuPoint& p) {
  std::printf("%s %.17g %.17g %.17g\n", name, p.x(), p.y(), p.z());
}
void Print(const char* name, double value) {
  std::printf("%s %.17g\n", name, value);
}
void Print(const CNuLine& line) {
  Print("point", line.GetPoint());
  Print("direction", line.GetDirection().To3DPoint());
}
void Print(const CNuPlane& plane) {
  Print("point", plane.GetPoint());
  Print("direction", plane.GetNormal().To3DPoint());
}
template<class Round>
void Print(const Round& feature) {
  Print("centre", feature.GetCentre());
  Print("radius", feature.GetRadius());
}
void Print(const CNuCylSurf& cylinder) {
  Print("axis_point", cylinder.GetAxisPoint());
  Print("direction", cylinder.GetAxisDirection().To3DPoint());
  Print("radius", cylinder.GetRadius());
}
void Print(const CNuConSurf& cone) {
  Print("apex", cone.GetApex());
  Print("direction", cone.GetAxisDirection().To3DPoint());
  Print("semi_angle", cone.GetSemiAngle() * kDegree);
}
void Print(const CNuTorSurf& torus) {
  Print("centre", torus.GetCentre());
  Print("direction", torus.GetAxisDirection().To3DPoint());
  Print("major_radius", torus.GetMajorRadius());
  Print("minor_radius", torus.GetMinorRadius());
}

// Criteria as in the file. The radius of a minimum zone is that of its middle, which the package does not ask for.
template<class F>
void Fit(const std::string& criterion, const CNuAssociation& association, F feature) {
  const ENuCriterion by = criterion == "mc"   ? NuMinimumCircumscribed
                          : criterion == "mz" ? NuMinimumZone
                                              : NuLeastSquares;
  const CNuAssociationReport report = association.Fit(by, &feature);
  report.Require();
  Print(feature);
  if (by == NuMinimumZone) Print("zone", report.GetForm());
}

void Fit(const std::string& feature, const std::string& criterion, const CNuAssociation& association) {
  if (feature == "line") return Fit(criterion, association, CNuLine());
  if (feature == "plane") return Fit(criterion, association, CNuPlane());
  if (feature == "circle") return Fit(criterion, association, CNuCircle(1.0));
  if (feature == "sphere") return Fit(criterion, association, CNuSphSurf(1.0));
  if (feature == "cylinder") return Fit(criterion, association, CNuCylSurf(1.0));
  if (feature == "cone") return Fit(criterion, association, CNuConSurf(45.0));
  if (feature == "torus") return Fit(criterion, association, CNuTorSurf(2.0, 1.0));
  std::puts("none");
}

}  // namespace

int main() {
  std::string feature, criterion;
  int count = 0;
  std::cin >> feature >> criterion >> count;
  CNuPointArray points(count);
  for (int i = 0; i < count; ++i) {
    double x = 0.0, y = 0.0, z = 0.0;
    std::cin >> x >> y >> z;
    points.Add({x, y, z});
  }
  try {
    Fit(feature, criterion, CNuAssociation(points));
  } catch (const CNuException&) {
    return 1;
  }
  return 0;
}
