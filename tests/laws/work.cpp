// work N SET OPERATION: one operation on one adversarial set, for work.sh, which counts the instructions of `Measured`.
// Without arguments it lists the names of sets and operations.

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "support/adversaries.h"
#include "support/fitted.h"

using namespace nu::test;

namespace {

struct Operation {
  std::string name;
  std::function<void(const CNuPointArray&)> run;
};

CNuPointArray Flat(CNuPointArray points) {
  for (int i = 0; i < points.GetSize(); ++i) points[i].z() = 0.0;
  return points;
}

// Strokes there and back, across the axes; a tenth as many as the points.
CNuPolyline Hatching(int n) {
  return CNuPolyline(Made(n / 10, [=](int i) {
    const double along = (i + 1) / 2 % 2 == 0 ? 1.0 : -1.0, across = 20.0 * (i / 2) / n;
    return CNuPoint(along - across, along + 2.0 * across, 0.0);
  }));
}

// To and fro along a line.
CNuPointArray Strip(CNuPointArray points) {
  for (int i = 0; i < points.GetSize(); ++i) {
    points[i].y() *= 1e-6;
    points[i].z() *= 1e-6;
  }
  return points;
}

std::vector<Operation> Operations() {
  std::vector<Operation> all;
  for (const AnyFit& fit : kAllFits) {
    all.push_back({fit.Name(), [&fit](const CNuPointArray& points) {
                     Fitted f;
                     fit.run(points, 1e-9, 1000, f);
                   }});
    if (fit.associate == nullptr) continue;
    all.push_back({"association, " + fit.Name(), [&fit](const CNuPointArray& points) {
                     Fitted f;
                     CNuAssociation association(points);
                     association.SetDetails(NuDetailAll);
                     fit.associate(association, 1e-9, 1000, f);
                   }});
  }
  int i = 0, j = 0;
  all.push_back({"MaxEdge", [=](const CNuPointArray& points) mutable { points.MaxEdge(&i, &j); }});
  all.push_back({"MinEdge", [=](const CNuPointArray& points) mutable { points.MinEdge(&i, &j); }});
  all.push_back({"RemoveDuplicate", [](const CNuPointArray& points) { CNuPointArray(points).RemoveDuplicate(1e-9); }});
  all.push_back({"IsEqual", [](const CNuPointArray& points) { points.IsEqual(points, 1e-9); }});
  all.push_back({"BoundingSphere", [](const CNuPointArray& points) {
                   double radius = 0.0;
                   CNuPoint centre;
                   points.BoundingSphere(&radius, &centre);
                 }});
  all.push_back({"IsNoncollinear", [](const CNuPointArray& points) {
                   CNuIntArray corners(0);
                   points.IsNoncollinear(&corners, 1e-9);
                 }});
  all.push_back({"IsNoncoplanar", [](const CNuPointArray& points) {
                   CNuIntArray corners(0);
                   points.IsNoncoplanar(&corners, 1e-9);
                 }});
  all.push_back({"NumberDistinctPoints", [](const CNuPointArray& points) {
                   CNuGeometry::NumberDistinctPoints(points, points.GetSize(), 1e-9);
                 }});
  all.push_back({"AreCoplanar", [](const CNuPointArray& points) { CNuGeometry::AreCoplanar(points, 1e-9); }});
  all.push_back({"ConvexHull", [](const CNuPointArray& points) {
                   CNuIntArray hull(0);
                   Flat(points).ConvexHull(&hull);
                 }});
  all.push_back(
      {"IsSelfIntersecting", [](const CNuPointArray& points) { CNuPolyline(Flat(points)).IsSelfIntersecting(); }});
  all.push_back({"Offset of a hatching", [](const CNuPointArray& points) {
                   const CNuVector z(0.0, 0.0, 1.0);
                   delete Hatching(points.GetSize()).Offset(2.0 / points.GetSize(), z, 1);
                 }});
  all.push_back({"SimplifiedCurve", [](const CNuPointArray& points) { CNuSimplifiedCurve curve(points, 0.01); }});
  all.push_back(
      {"SimplifiedCurve of a strip", [](const CNuPointArray& points) { CNuSimplifiedCurve(Strip(points), 0.01); }});
  return all;
}

}  // namespace

// Collected by name; nothing else is counted.
extern "C" __attribute__((noinline)) void Measured(const Operation& operation, const CNuPointArray& points) {
  try {
    operation.run(points);
  } catch (const CNuException&) {
    // A set need not suit each fit: refusing it is work as well.
  }
}

int main(int argc, char** argv) {
  const std::vector<Operation> operations = Operations();
  const int n = argc > 1 ? std::atoi(argv[1]) : 1;
  for (const auto& [name, points] : Adversaries(n)) {
    for (const Operation& operation : operations) {
      if (argc == 1 || argc == 2) std::printf("%s|%s\n", name, operation.name.c_str());
      if (argc == 2 || (argc == 4 && argv[2] == std::string(name) && argv[3] == operation.name))
        Measured(operation, points);
    }
  }
  return 0;
}
