#ifndef NU_INSPECT_FIT_TOOLS_H
#define NU_INSPECT_FIT_TOOLS_H

#include <chrono>
#include <type_traits>

#include "evaluate/fits.h"
#include "input/progress.h"

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

// Checks the feature by its contacts.
Certificate CertificateOf(const CNuAssociationReport& report, const std::vector<Vec3>& points,
                          const CNuGeometry& feature);

// An association of the points with the details that inspections show. The points are borrowed.
CNuAssociation AssociationOf(const std::vector<Vec3>& points);

// Whether the library can look for a better optimum of this kind anywhere.
template<typename Feature>
bool CanBeProven(ENuCriterion criterion) {
  constexpr bool isRound =
      std::is_same_v<Feature, CNuCircle> || std::is_same_v<Feature, CNuSphSurf> || std::is_same_v<Feature, CNuCylSurf>;
  return criterion == NuMinimumZone || (isRound && criterion == NuMinimumCircumscribed);
}

// Shows how far a search for a better optimum is.
class SearchProgress {
 public:
  explicit SearchProgress(long boxes) : m_progress("proof"), m_boxes(static_cast<double>(boxes)) {}
  void Watch(CNuAssociation* association) { association->SetMonitor(Show, this); }

 private:
  static ENuBoolean Show(void* context, long step, double objective, double stepLength);

  Progress m_progress;
  double m_boxes;
};

template<typename Feature>
CNuAssociationReport FitOrProve(const CNuAssociation& association, const FitTask& task, Feature* feature) {
  if constexpr (requires { association.ProveGlobally(task.criterion, feature, task.boxes); }) {
    if (task.boxes > 0 && CanBeProven<Feature>(task.criterion)) {
      SearchProgress progress(task.boxes);
      CNuAssociation watched(association);
      progress.Watch(&watched);
      return watched.ProveGlobally(task.criterion, feature, task.boxes);
    }
  }
  return association.Fit(task.criterion, feature);
}

// Fits the feature, takes the time, and lets describe(feature, &inspection) name its parameters and place its frame.
// Throws FitFailure with the explanation of the report.
template<typename Feature, typename Describe>
Inspection Associate(const std::vector<Vec3>& points, const FitTask& task, Feature feature, const Describe& describe) {
  const CNuAssociation association = AssociationOf(points);
  Inspection result;
  const auto start = std::chrono::steady_clock::now();
  const CNuAssociationReport report = FitOrProve(association, task, &feature);
  result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  if (report.HasConverged() == NuFalse) throw FitFailure(report.Explain());
  describe(feature, &result);
  TakeReport(report, points, &result);
  if (task.criterion != NuLeastSquares) result.certificate = CertificateOf(report, points, feature);
  if (task.boxes > 0 && CanBeProven<Feature>(task.criterion)) {
    result.globalBound = GlobalBound{report.GetBound(), report.GetGap()};
  }
  return result;
}

// The radius and diameter of a round feature and, of a minimum zone, those of its two boundaries.
void AddRadii(ENuCriterion criterion, Inspection* result);

// The thinnest tube around the points is the minimum zone of a circle in space: deviations from that circle become
// those from the tube.
void MeasureFromTube(double radius, Inspection* result);

#endif
