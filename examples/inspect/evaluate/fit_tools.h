#ifndef NU_INSPECT_FIT_TOOLS_H
#define NU_INSPECT_FIT_TOOLS_H

#include <chrono>

#include "evaluate/fits.h"

// What the fits of all features share.

inline Vec3 ToVec3(const CNuPoint& point) {
  return {point.x(), point.y(), point.z()};
}
inline Vec3 ToVec3(const CNuVector& vector) {
  return {vector[0], vector[1], vector[2]};
}

inline Parameter Point(const std::string& name, const CNuPoint& point) {
  return {name, Parameter::Kind::kPoint, {point.x(), point.y(), point.z()}};
}
inline Parameter Direction(const std::string& name, const CNuVector& direction) {
  return {name, Parameter::Kind::kDirection, {direction[0], direction[1], direction[2]}};
}
inline Parameter Length(const std::string& name, double length) {
  return {name, Parameter::Kind::kLength, {length}};
}

// A unit vector across z, along the global axis `preferred` as far as z permits.
Vec3 AxisAcross(const Vec3& z, std::size_t preferred);

Frame FrameAlong(const CNuPoint& origin, const CNuVector& direction);

// Puts what the report tells into the inspection, whose frame and parameters are known.
void TakeReport(const CNuAssociationReport& report, const std::vector<Vec3>& points, Inspection* result);

// An association of the points with the details that inspections show. The points are borrowed.
CNuAssociation AssociationOf(const std::vector<Vec3>& points);

// Fits the feature, takes the time, and lets describe(feature, &inspection) name its parameters and place its frame.
// Throws what the report of a failure throws.
template<typename Feature, typename Describe>
Inspection Associate(const std::vector<Vec3>& points, ENuCriterion criterion, Feature feature,
                     const Describe& describe) {
  const CNuAssociation association = AssociationOf(points);
  Inspection result;
  const auto start = std::chrono::steady_clock::now();
  const CNuAssociationReport report = association.Fit(criterion, &feature);
  result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  report.Require();
  describe(feature, &result);
  TakeReport(report, points, &result);
  return result;
}

// The radius and diameter of a round feature and, of a minimum zone, those of its two boundaries.
void AddRadii(ENuCriterion criterion, Inspection* result);

// The thinnest tube around the points is the minimum zone of a circle in space: deviations from that circle become
// those from the tube.
void MeasureFromTube(double radius, Inspection* result);

#endif
