#include "evaluate/relations.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <utility>

#include "evaluate/fits.h"
#include "text.h"

namespace {

constexpr double kDegree = std::numbers::pi / 180;

// In degrees, between lines: 0 to 90. By sine and cosine, so that small angles keep their digits.
double AngleBetween(const Vec3& a, const Vec3& b) {
  return std::atan2(Length(Cross(a, b)), std::fabs(Dot(a, b))) / kDegree;
}

double DistanceFromAxis(const Vec3& point, const FeatureGeometry& axis) {
  return Length(Across(Minus(point, axis.place), axis.direction));
}

// Between the axes as endless lines.
double ShortestDistance(const FeatureGeometry& a, const FeatureGeometry& b) {
  return std::fabs(Dot(Minus(a.place, b.place), Unit(Cross(a.direction, b.direction))));
}

// What the zone must hold.
std::vector<Vec3> ExtentOf(const FeatureGeometry& feature) {
  const bool isSurface = feature.type == "cylinder" || feature.type == "cone";
  if (isSurface) return {feature.ends[0], feature.ends[1]};
  return *feature.points;
}

std::string ExtentText(const FeatureGeometry& feature) {
  return feature.type == "cylinder" || feature.type == "cone" ? "the axis as far as measured" : "all points";
}

Measured ZoneAcross(const FeatureGeometry& feature, const FeatureGeometry& datum) {
  return {WidthAlong(ExtentOf(feature), datum.direction),
          "width between two planes " +
              std::string(datum.shape == FeatureShape::kPlane ? "parallel to the datum plane"
                                                              : "perpendicular to the datum axis") +
              " that hold " + ExtentText(feature)};
}

Measured ZoneAround(const FeatureGeometry& feature, const FeatureGeometry& datum) {
  const std::string with =
      datum.shape == FeatureShape::kPlane ? "perpendicular to the datum plane" : "parallel to the datum axis";
  if (feature.shape == FeatureShape::kPlane) {
    return {WidthAround(*feature.points, datum.direction),
            "width between the closest two planes " + with + " that hold all points"};
  }
  return {DiameterAround(ExtentOf(feature), datum.direction),
          "diameter of the smallest cylinder " + with + " that holds " + ExtentText(feature)};
}

Measured TwiceLargest(const std::vector<Vec3>& points, const FeatureGeometry& axis, const std::string& evaluation) {
  double largest = 0;
  for (const Vec3& point : points) largest = std::max(largest, DistanceFromAxis(point, axis));
  return {2 * largest, evaluation};
}

// The smallest value of a function that falls and then rises between two arguments, by golden sections.
template<typename Function>
double SmallestOf(const Function& function, double low, double high, int steps) {
  const double ratio = 1 / std::numbers::phi;
  double a = high - ratio * (high - low);
  double b = low + ratio * (high - low);
  double atA = function(a);
  double atB = function(b);
  for (int i = 0; i < steps; ++i) {
    if (atA < atB) {
      high = std::exchange(b, a);
      atB = atA;
      a = high - ratio * (high - low);
      atA = function(a);
    } else {
      low = std::exchange(a, b);
      atA = atB;
      b = low + ratio * (high - low);
      atB = function(b);
    }
  }
  return std::min(atA, atB);
}

std::string Quoted(const std::string& text) {
  return "'" + Printable(text) + "'";
}

// Throws FitFailure where the value needs what the datums leave free: the origin along any of the axes, the turn.
void RequireFixed(const DatumFrameResult* frame, const std::array<bool, 3>& axes, bool turn) {
  if (frame == nullptr) return;
  constexpr const char* kNames[] = {"x", "y", "z"};
  const std::string subject = "the datum frame " + Quoted(frame->name) + " (" + Printable(frame->datums) + ") leaves ";
  for (std::size_t i = 0; i < 3; ++i) {
    if (axes[i] && frame->originIsFree[i]) throw FitFailure(subject + "the origin along " + kNames[i] + " free");
  }
  if (turn && frame->turnIsFree) throw FitFailure(subject + "the turn about z free");
}

Vec3 InFrame(const Vec3& point, const DatumFrameResult* frame) {
  return frame == nullptr ? point : frame->frame.ToLocal(point);
}

std::string WhereText(const DatumFrameResult* frame) {
  return frame == nullptr ? "in the coordinates of the file" : "in the datum frame " + frame->datums;
}

std::string PlaceText(const FeatureGeometry& feature) {
  if (feature.shape == FeatureShape::kAxis) return "middle of the axis as far as measured";
  return feature.shape == FeatureShape::kPlane ? "mean of the points, on the plane" : "centre";
}

// Of a plane: between two planes about the exact one.
Measured PositionOfPlane(const FeatureGeometry& feature, const DatumFrameResult* frame,
                         const CharacteristicPlan& plan) {
  const Vec3& n = plan.direction;
  RequireFixed(frame, {n[0] != 0, n[1] != 0, n[2] != 0}, n[0] != 0 || n[1] != 0);
  double largest = 0;
  for (const Vec3& point : *feature.points) {
    const Vec3 local = InFrame(point, frame);
    largest = std::max(largest, std::fabs(Dot(Minus(local, {plan.at[0], plan.at[1], plan.at[2]}), n)));
  }
  return {2 * largest, "twice the largest distance of a point from the exact plane, " + WhereText(frame)};
}

Measured PositionOfAxis(const FeatureGeometry& feature, const DatumFrameResult* frame, const CharacteristicPlan& plan) {
  const Vec3& d = plan.direction;
  const bool tilted = d[0] != 0 || d[1] != 0;
  RequireFixed(frame, {true, true, tilted}, tilted || plan.at[0] != 0 || plan.at[1] != 0);
  const Vec3 exact{plan.at[0], plan.at[1], plan.at.size() > 2 ? plan.at[2] : 0};
  double largest = 0;
  for (const Vec3& point : ExtentOf(feature)) {
    largest = std::max(largest, Length(Across(Minus(InFrame(point, frame), exact), d)));
  }
  return {2 * largest,
          "diameter of the cylinder about the exact axis that holds " + ExtentText(feature) + ", " + WhereText(frame)};
}

Measured PositionOfPoint(const FeatureGeometry& feature, const DatumFrameResult* frame,
                         const CharacteristicPlan& plan) {
  const bool isSpherical = plan.at.size() > 2;
  RequireFixed(frame, {true, true, isSpherical}, plan.at[0] != 0 || plan.at[1] != 0);
  const Vec3 local = InFrame(feature.place, frame);
  Vec3 off{local[0] - plan.at[0], local[1] - plan.at[1], isSpherical ? local[2] - plan.at[2] : 0};
  return {2 * Length(off),
          std::string("diameter of the ") +
              (isSpherical ? "sphere about the exact point" : "cylinder along z about the exact point") +
              " that holds the centre, " + WhereText(frame)};
}

}  // namespace

Measured MeasureDistance(const FeatureGeometry& feature, const FeatureGeometry& to) {
  constexpr double kParallel = 5;  // degrees: axes that mean to be parallel are closer
  if (to.shape == FeatureShape::kPlane) {
    return {std::fabs(Dot(Minus(feature.place, to.place), to.direction)),
            "from the plane to the " + PlaceText(feature)};
  }
  if (feature.shape == FeatureShape::kPlane) return MeasureDistance(to, feature);
  if (feature.shape == FeatureShape::kAxis && to.shape == FeatureShape::kPoint) return MeasureDistance(to, feature);
  if (to.shape == FeatureShape::kPoint) return {Length(Minus(feature.place, to.place)), "between the centres"};
  const bool crossed =
      feature.shape == FeatureShape::kAxis && AngleBetween(feature.direction, to.direction) > kParallel;
  if (crossed) return {ShortestDistance(feature, to), "shortest between the axes, that are not parallel"};
  return {DistanceFromAxis(feature.place, to), "from the axis to the " + PlaceText(feature)};
}

Measured MeasureAngle(const FeatureGeometry& feature, const FeatureGeometry& to, bool obtuse) {
  constexpr double kRight = 90;
  constexpr double kStraight = 180;
  const double between = AngleBetween(feature.direction, to.direction);
  const bool mixed = (feature.shape == FeatureShape::kPlane) != (to.shape == FeatureShape::kPlane);
  const double angle = mixed ? kRight - between : between;
  const std::string evaluation = mixed                                   ? "between the axis and the plane"
                                 : feature.shape == FeatureShape::kPlane ? "between the planes"
                                                                         : "between the axes";
  return obtuse ? Measured{kStraight - angle, evaluation + ", the obtuse one"}
                : Measured{angle, evaluation + ", the acute one"};
}

Measured MeasureParallelism(const FeatureGeometry& feature, const FeatureGeometry& datum) {
  return datum.shape == FeatureShape::kPlane ? ZoneAcross(feature, datum) : ZoneAround(feature, datum);
}

Measured MeasurePerpendicularity(const FeatureGeometry& feature, const FeatureGeometry& datum) {
  return datum.shape == FeatureShape::kPlane ? ZoneAround(feature, datum) : ZoneAcross(feature, datum);
}

Measured MeasureCoaxiality(const FeatureGeometry& feature, const FeatureGeometry& datum) {
  return TwiceLargest(ExtentOf(feature), datum,
                      "diameter of the cylinder about the datum axis that holds " + ExtentText(feature));
}

Measured MeasureConcentricity(const FeatureGeometry& feature, const FeatureGeometry& datum) {
  if (datum.type == "sphere") {
    return {2 * Length(Minus(feature.place, datum.place)), "twice the distance of the centres"};
  }
  const bool isAxis = datum.shape == FeatureShape::kAxis;
  return TwiceLargest({feature.place}, datum,
                      isAxis ? "twice the distance of the centre from the datum axis"
                             : "twice the distance of the centres, seen along the normal of the datum");
}

Measured MeasureAngularity(const FeatureGeometry& feature, const FeatureGeometry& datum, double exactAngle) {
  constexpr double kWindow = 10 * kDegree;  // to either side of the fitted feature: real features are closer
  constexpr int kSteps = 60;                // of golden sections: the window shrinks below the rounding of angles
  const bool mixed = (feature.shape == FeatureShape::kPlane) != (datum.shape == FeatureShape::kPlane);
  // Between the directions; a plane at an angle to an axis has its normal at the complement.
  const double angle = (mixed ? 90 - exactAngle : exactAngle) * kDegree;
  const Vec3& z = datum.direction;
  const Vec3 across = Across(feature.direction, z);
  if (!(Length(across) > 0)) throw FitFailure("the feature has no direction across the datum");
  const Vec3 x = Unit(across);
  const Vec3 y = Cross(z, x);
  const double side = Dot(feature.direction, z) < 0 ? -1 : 1;
  const std::vector<Vec3> extent = ExtentOf(feature);
  const auto width = [&](double turn) {
    const Vec3 level = Plus(Times(std::cos(turn), x), Times(std::sin(turn), y));
    const Vec3 direction = Plus(Times(side * std::cos(angle), z), Times(std::sin(angle), level));
    return feature.shape == FeatureShape::kPlane ? WidthAlong(extent, direction) : DiameterAround(extent, direction);
  };
  const bool isPlane = feature.shape == FeatureShape::kPlane;
  const std::string zone = isPlane ? "width between two planes" : "diameter of a cylinder";
  const std::string to = datum.shape == FeatureShape::kPlane ? "plane" : "axis";
  return {SmallestOf(width, -kWindow, kWindow, kSteps),
          zone + " at " + General(exactAngle, 6) + "\u00B0 to the datum " + to +
              (isPlane ? " that hold " : " that holds ") + ExtentText(feature)};
}

Measured MeasureSymmetry(const FeatureGeometry& feature, const FeatureGeometry& datum) {
  const bool isPoint = feature.shape == FeatureShape::kPoint;
  double largest = 0;
  for (const Vec3& point : isPoint ? std::vector<Vec3>{feature.place} : ExtentOf(feature)) {
    largest = std::max(largest, std::fabs(Dot(Minus(point, datum.place), datum.direction)));
  }
  return {2 * largest, "width between two planes about the datum plane that hold " +
                           (isPoint ? std::string("the centre") : ExtentText(feature))};
}

Measured MeasureRunout(const FeatureGeometry& feature, const FeatureGeometry& datum) {
  if (feature.shape == FeatureShape::kPlane) {
    return {WidthAlong(*feature.points, datum.direction),
            "between the lowest and the highest point along the datum axis"};
  }
  double low = std::numeric_limits<double>::infinity();
  double high = 0;
  for (const Vec3& point : *feature.points) {
    const double distance = DistanceFromAxis(point, datum);
    low = std::min(low, distance);
    high = std::max(high, distance);
  }
  return {high - low, "between the smallest and the largest distance of a point from the datum axis"};
}

Measured MeasureCoordinate(const FeatureGeometry& feature, const DatumFrameResult* frame, std::size_t axis) {
  RequireFixed(frame, {axis == 0, axis == 1, axis == 2}, axis < 2);
  return {InFrame(feature.place, frame)[axis], PlaceText(feature) + ", " + WhereText(frame)};
}

Measured MeasurePosition(const FeatureGeometry& feature, const DatumFrameResult* frame,
                         const CharacteristicPlan& plan) {
  if (feature.shape == FeatureShape::kPlane) return PositionOfPlane(feature, frame, plan);
  return feature.shape == FeatureShape::kAxis ? PositionOfAxis(feature, frame, plan)
                                              : PositionOfPoint(feature, frame, plan);
}
