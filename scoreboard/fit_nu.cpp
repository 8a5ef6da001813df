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

template<class F>
F Fitted(const CNuAssociation& association, ENuCriterion criterion, F feature) {
  association.Fit(criterion, &feature).Require();
  return feature;
}

void Fit(const std::string& feature, ENuCriterion criterion, const CNuAssociation& association) {
  if (feature == "line") {
    const CNuLine line = Fitted(association, criterion, CNuLine());
    Print("point", line.GetPoint());
    Print("direction", line.GetDirection().To3DPoint());
  } else if (feature == "plane") {
    const CNuPlane plane = Fitted(association, criterion, CNuPlane());
    Print("point", plane.GetPoint());
    Print("direction", plane.GetNormal().To3DPoint());
  } else if (feature == "circle") {
    const CNuCircle circle = Fitted(association, criterion, CNuCircle(1.0));
    Print("centre", circle.GetCentre());
    Print("radius", circle.GetRadius());
  } else if (feature == "sphere") {
    const CNuSphSurf sphere = Fitted(association, criterion, CNuSphSurf(1.0));
    Print("centre", sphere.GetCentre());
    Print("radius", sphere.GetRadius());
  } else if (feature == "cylinder") {
    const CNuCylSurf cylinder = Fitted(association, criterion, CNuCylSurf(1.0));
    double radius = 0.0;
    CNuPoint point;
    CNuVector direction;
    cylinder.GetData(&radius, &point, &direction);
    Print("axis_point", point);
    Print("direction", direction.To3DPoint());
    Print("radius", radius);
  } else if (feature == "cone") {
    const CNuConSurf cone = Fitted(association, criterion, CNuConSurf(45.0));
    double angle = 0.0;
    CNuPoint apex;
    CNuVector direction;
    cone.GetData(&angle, &apex, &direction);
    Print("apex", apex);
    Print("direction", direction.To3DPoint());
    Print("semi_angle", angle * kDegree);
  } else {
    std::puts("none");
  }
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
    Fit(feature, criterion == "mc" ? NuMinimumCircumscribed : NuLeastSquares, CNuAssociation(points));
  } catch (const CNuException&) {
    std::puts("none");
  }
  return 0;
}
