#include "evaluate/datum_frame.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "evaluate/fit_tools.h"
#include "text.h"

namespace {

// Two directions count as parallel up to 45 degrees and as perpendicular beyond.
constexpr double kNearlyParallel = std::numbers::sqrt2 / 2;

std::string Quoted(const std::string& text) {
  return "'" + Printable(text) + "'";
}

class FrameBuilder {
 public:
  FrameBuilder(const DatumFramePlan& frame, const PartPlan& plan, const std::vector<const FeatureGeometry*>& features)
      : m_plan(plan), m_framePlan(frame), m_features(features) {}

  DatumFrameResult Build() {
    m_result.name = m_framePlan.name;
    m_result.turnIsFree = true;
    for (const std::size_t index : m_framePlan.datums) Take(index);
    if (!m_hasZ) throw FitFailure("the datum frame " + Quoted(m_framePlan.name) + " has no direction; add a datum");
    if (!m_problem.empty()) throw FitFailure(m_problem);
    if (m_result.turnIsFree) SetX(AxisAcross(m_result.frame.z, 0));
    return m_result;
  }

 private:
  void Take(std::size_t index) {
    const std::string& name = m_plan.features[index].name;
    if (m_features[index] == nullptr) throw FitFailure("the datum " + Quoted(name) + " failed");
    m_result.datums += (m_result.datums.empty() ? "" : " | ") + name;
    m_index = index;
    m_changed = false;
    const FeatureGeometry& datum = *m_features[index];
    if (datum.shape == FeatureShape::kPlane) TakePlane(datum);
    if (datum.shape == FeatureShape::kAxis) TakeAxis(datum);
    if (datum.shape == FeatureShape::kPoint) TakePoint(datum);
    if (!m_changed) {
      throw FitFailure("the datum " + Quoted(name) + " fixes nothing that the datums before it leave free");
    }
  }

  void TakePlane(const FeatureGeometry& plane) {
    if (!m_hasZ) {
      SetZ(plane.direction, plane.place);
      return FixOrigin(2, plane.place);
    }
    const Vec3& z = m_result.frame.z;
    if (std::fabs(Dot(plane.direction, z)) > kNearlyParallel) return FixOrigin(2, PlaceAlong(plane, z));
    if (!m_result.turnIsFree) {
      const std::size_t axis = std::fabs(Dot(plane.direction, m_result.frame.x)) > kNearlyParallel ? 0 : 1;
      if (axis == 1 && m_result.originIsFree[1] && !m_framePlan.zTowards) SettleZ(plane);
      return FixOrigin(axis, PlaceAlong(plane, Axis(axis)));
    }
    const auto [place, normal] = StandingPlane(plane);
    TurnTo(Require(Oriented(normal, place, m_framePlan.xTowards), "x"));
    FixOrigin(0, place);
  }

  void TakeAxis(const FeatureGeometry& axis) {
    if (!m_hasZ) {
      SetZ(axis.direction, axis.place);
      return FixAcross(axis.place);
    }
    const Vec3& z = m_result.frame.z;
    if (std::fabs(Dot(axis.direction, z)) > kNearlyParallel) {
      return FixAcross(axis.type == "cylinder" ? PlaceOfStandingCylinder(axis) : axis.place);
    }
    if (m_result.turnIsFree) {
      TurnTo(Require(Oriented(Unit(Across(axis.direction, z)), axis.place, m_framePlan.xTowards), "x"));
      return FixOrigin(1, axis.place);
    }
    FixOrigin(std::fabs(Dot(axis.direction, m_result.frame.x)) > kNearlyParallel ? 1 : 0, axis.place);
  }

  void TakePoint(const FeatureGeometry& point) {
    if (!m_hasZ && m_hasOrigin) {
      return SetZ(Unit(Minus(point.place, m_result.frame.origin)), point.place);
    }
    if (!m_hasZ) {
      m_result.frame.origin = point.place;
      m_result.originIsFree = {false, false, false};
      m_hasOrigin = m_changed = true;
      return;
    }
    FixAcross(point.place);
    // The centre of a curve lies in its plane, no better than the depth of the scan.
    if (point.type == "sphere" || point.type == "torus") FixOrigin(2, point.place);
  }

  // Along the direction through the place.
  void SetZ(const Vec3& direction, const Vec3& place) {
    const std::optional<Vec3> z = Oriented(direction, place, m_framePlan.zTowards);
    if (!z) m_problem = UnclearSide("z");  // a third plane may settle it
    m_result.frame.z = z.value_or(direction);
    SetX(AxisAcross(m_result.frame.z, 0));
    m_hasZ = m_changed = true;
  }

  void SettleZ(const FeatureGeometry& plane) {
    const std::optional<Vec3> y = Oriented(m_result.frame.y, plane.place, std::nullopt);
    if (!y) return;
    if (Dot(*y, m_result.frame.y) < 0) m_result.frame.z = Times(-1, m_result.frame.z);
    m_result.frame.y = *y;
    m_problem.clear();
  }

  void SetX(const Vec3& x) {
    m_result.frame.x = x;
    m_result.frame.y = Cross(m_result.frame.z, x);
  }

  void TurnTo(const Vec3& x) {
    SetX(x);
    m_result.turnIsFree = false;
    m_changed = true;
  }

  const Vec3& Axis(std::size_t axis) const {
    const Frame& frame = m_result.frame;
    return axis == 0 ? frame.x : axis == 1 ? frame.y : frame.z;
  }

  void FixOrigin(std::size_t axis, const Vec3& place) {
    if (!m_result.originIsFree[axis]) return;
    Vec3& origin = m_result.frame.origin;
    origin = Plus(origin, Times(Dot(Minus(place, origin), Axis(axis)), Axis(axis)));
    m_result.originIsFree[axis] = false;
    m_changed = true;
  }

  // The origin in x and y; where that is known, the direction towards the place.
  void FixAcross(const Vec3& place) {
    constexpr double kSamePlace = 1e-9;  // of the distance of the origin from zero: no direction is left
    const Vec3 across = Across(Minus(place, m_result.frame.origin), m_result.frame.z);
    const bool known = !m_result.originIsFree[0] && !m_result.originIsFree[1];
    if (known && m_result.turnIsFree && Length(across) > kSamePlace * Length(m_result.frame.origin)) {
      return TurnTo(Unit(across));
    }
    FixOrigin(0, place);
    FixOrigin(1, place);
  }

  // A place on the plane, fitted with that normal: at the mean of its points, or in the middle between the outermost.
  static Vec3 PlaceAlong(const FeatureGeometry& plane, const Vec3& normal) {
    if (plane.criterion == NuLeastSquares) return plane.place;
    double low = 0;
    double high = 0;
    for (const Vec3& point : *plane.points) {
      const double height = Dot(Minus(point, plane.points->front()), normal);
      low = std::min(low, height);
      high = std::max(high, height);
    }
    return Plus(plane.points->front(), Times((low + high) / 2, normal));
  }

  // From the plane of SeenAlong() back into space.
  Vec3 InSpace(const FeatureGeometry& feature, const CNuPoint& planar) const {
    return Plus(feature.points->front(),
                Plus(Times(planar.x(), m_result.frame.x), Times(planar.y(), m_result.frame.y)));
  }

  std::pair<Vec3, Vec3> StandingPlane(const FeatureGeometry& plane) const {
    CNuLine line;
    const std::vector<Vec3> planar = SeenAlong(*plane.points, m_result.frame.z, m_result.frame.x);
    const CNuAssociationReport report = AssociationOf(planar).Fit(plane.criterion, &line);
    if (report.HasConverged() == NuFalse) throw FitFailure(report.Explain());
    const Vec3 along = ToVec3(line.GetDirection());
    return {InSpace(plane, line.GetPoint()),
            Unit(Plus(Times(-along[1], m_result.frame.x), Times(along[0], m_result.frame.y)))};
  }

  Vec3 PlaceOfStandingCylinder(const FeatureGeometry& cylinder) const {
    CNuCircle circle(1.0);
    const std::vector<Vec3> planar = SeenAlong(*cylinder.points, m_result.frame.z, m_result.frame.x);
    const CNuAssociationReport report = AssociationOf(planar).Fit(cylinder.criterion, &circle);
    if (report.HasConverged() == NuFalse) throw FitFailure(report.Explain());
    return InSpace(cylinder, circle.GetCentre());
  }

  // The direction or its opposite: towards the feature that the plan names, else to the side on which the other
  // features lie in the mean; nothing where that is not clear.
  std::optional<Vec3> Oriented(const Vec3& direction, const Vec3& place,
                               const std::optional<std::size_t>& towards) const {
    constexpr double kClear = 0.05;  // of the largest distance to that side; less may change from part to part
    double sum = 0;
    double largest = 0;
    double count = 0;
    for (std::size_t i = 0; i < m_features.size(); ++i) {
      if (m_features[i] == nullptr || i == m_index || (towards && *towards != i)) continue;
      const double height = Dot(Minus(m_features[i]->place, place), direction);
      sum += height;
      largest = std::max(largest, std::fabs(height));
      ++count;
    }
    if (count == 0 && towards) return std::nullopt;
    if (count > 0 && !(std::fabs(sum / count) > kClear * largest)) return std::nullopt;
    const double sign = count > 0 ? sum : direction[LargestOf(direction)];
    return Times(sign < 0 ? -1 : 1, direction);
  }

  std::string UnclearSide(const std::string& axis) const {
    return "the datum frame " + Quoted(m_framePlan.name) + " does not say on which side of " +
           Quoted(m_plan.features[m_index].name) + " " + axis + " is positive; give " + axis +
           "_towards = a feature that lies there";
  }

  Vec3 Require(const std::optional<Vec3>& direction, const std::string& axis) const {
    if (!direction) throw FitFailure(UnclearSide(axis));
    return *direction;
  }

  static std::size_t LargestOf(const Vec3& v) {
    const auto smaller = [](double a, double b) { return std::fabs(a) < std::fabs(b); };
    return static_cast<std::size_t>(std::max_element(v.begin(), v.end(), smaller) - v.begin());
  }

  const PartPlan& m_plan;
  const DatumFramePlan& m_framePlan;
  const std::vector<const FeatureGeometry*>& m_features;
  DatumFrameResult m_result;
  std::size_t m_index = 0;  // of the datum that is taken
  std::string m_problem;    // of z, until a later datum settles it
  bool m_hasZ = false;
  bool m_hasOrigin = false;
  bool m_changed = false;
};

}  // namespace

DatumFrameResult BuildDatumFrame(const DatumFramePlan& frame, const PartPlan& plan,
                                 const std::vector<const FeatureGeometry*>& features) {
  return FrameBuilder(frame, plan, features).Build();
}
