#ifndef NU_TESTS_SUPPORT_POINT_SET_OPERATIONS_H
#define NU_TESTS_SUPPORT_POINT_SET_OPERATIONS_H

#include <functional>
#include <string>
#include <vector>

#include "nu/nu.h"
#include "support/adversaries.h"

// What is done with points without a fit, by name: for laws of work and memory.
namespace nu::test {

struct PointSetOperation {
  std::string name;
  std::function<void(const CNuPointArray&)> run;
};

inline CNuPointArray Flat(CNuPointArray points) {
  for (int i = 0; i < points.GetSize(); ++i) points[i].z() = 0.0;
  return points;
}

// Strokes there and back, across the axes; a tenth as many as the points.
inline CNuPolyline Hatching(int n) {
  return CNuPolyline(Made(n / 10, [=](int i) {
    const double along = (i + 1) / 2 % 2 == 0 ? 1.0 : -1.0, across = 20.0 * (i / 2) / n;
    return CNuPoint(along - across, along + 2.0 * across, 0.0);
  }));
}

// To and fro along a line.
inline CNuPointArray Strip(CNuPointArray points) {
  for (int i = 0; i < points.GetSize(); ++i) {
    points[i].y() *= 1e-6;
    points[i].z() *= 1e-6;
  }
  return points;
}

inline std::vector<PointSetOperation> PointSetOperations() {
  std::vector<PointSetOperation> all;
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

}  // namespace nu::test

#endif
