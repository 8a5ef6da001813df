#include "plan/characteristic_kinds.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "text.h"

namespace {

// One number of a feature that its fit gives: the radius of a cylinder, the semi-angle of a cone.
struct Number {
  const char* feature;
  const char* word;
  CharacteristicKind kind;
};

constexpr Number kNumbers[] = {
    {"circle", "diameter", CharacteristicKind::kDiameter},
    {"circle", "radius", CharacteristicKind::kRadius},
    {"sphere", "diameter", CharacteristicKind::kDiameter},
    {"sphere", "radius", CharacteristicKind::kRadius},
    {"cylinder", "diameter", CharacteristicKind::kDiameter},
    {"cylinder", "radius", CharacteristicKind::kRadius},
    {"cone", "semi-angle", CharacteristicKind::kParameter},
    {"torus", "major radius", CharacteristicKind::kParameter},
    {"torus", "minor radius", CharacteristicKind::kParameter},
    {"ellipse", "semi-axis a", CharacteristicKind::kParameter},
    {"ellipse", "semi-axis b", CharacteristicKind::kParameter},
    {"hyperbola", "semi-axis a", CharacteristicKind::kParameter},
    {"hyperbola", "semi-axis b", CharacteristicKind::kParameter},
    {"parabola", "focal length", CharacteristicKind::kParameter},
};

using Kind = CharacteristicKind;

const std::array<KindRules, 14>& Relations() {
  static const std::array<KindRules, 14> kRelations = {{
      {Kind::kCoordinate, "x", Reference::kFrame, "datum", false, false, 0},
      {Kind::kCoordinate, "y", Reference::kFrame, "datum", false, false, 1},
      {Kind::kCoordinate, "z", Reference::kFrame, "datum", false, false, 2},
      {Kind::kDistance, "distance", Reference::kFeature, "to", false, false},
      {Kind::kAngle, "angle", Reference::kFeature, "to", false, true},
      {Kind::kParallelism, "parallelism", Reference::kFeature, "datum", true, false},
      {Kind::kPerpendicularity, "perpendicularity", Reference::kFeature, "datum", true, false},
      {Kind::kAngularity, "angularity", Reference::kFeature, "datum", true, false},
      {Kind::kCoaxiality, "coaxiality", Reference::kFeature, "datum", true, false},
      {Kind::kConcentricity, "concentricity", Reference::kFeature, "datum", true, false},
      {Kind::kSymmetry, "symmetry", Reference::kFeature, "datum", true, false},
      {Kind::kCircularRunout, "circular runout", Reference::kFeature, "datum", true, false},
      {Kind::kTotalRunout, "total runout", Reference::kFeature, "datum", true, false},
      {Kind::kPosition, "position", Reference::kFrame, "datum", true, false},
  }};
  return kRelations;
}

// Whether the kind is about directions: of the feature, and of what it refers to.
bool IsOfDirections(Kind kind) {
  return kind == Kind::kAngle || kind == Kind::kParallelism || kind == Kind::kPerpendicularity ||
         kind == Kind::kAngularity;
}

bool Fits(Kind kind, const FeaturePlan& feature) {
  const FeatureShape shape = ShapeOf(feature);
  const std::string& type = feature.method.terms.feature;
  if (IsOfDirections(kind)) return shape != FeatureShape::kPoint;
  if (kind == Kind::kCoaxiality) return shape == FeatureShape::kAxis;
  // A section of a surface that was not measured as such is not known from scattered points.
  if (kind == Kind::kCircularRunout) return type == "circle";
  if (kind == Kind::kTotalRunout) return type == "cylinder" || type == "plane";
  return kind != Kind::kConcentricity || shape == FeatureShape::kPoint;
}

// "semi-angle", "Semi angle" and "semi_angle" are one word.
std::string Plain(const std::string& word) {
  std::string plain;
  for (const char c : Lower(word)) {
    if (c != ' ' && c != '-' && c != '_') plain += c;
  }
  return plain;
}

std::string KindsOf(const FeaturePlan& feature) {
  std::string kinds = feature.method.terms.form;
  for (const Number& number : kNumbers) {
    if (feature.method.terms.feature == number.feature) kinds += std::string(", ") + number.word;
  }
  for (const KindRules& rules : Relations()) {
    if (Fits(rules.kind, feature)) kinds += ", " + rules.word;
  }
  return kinds;
}

}  // namespace

FeatureShape ShapeOf(const FeaturePlan& feature) {
  const std::string& type = feature.method.terms.feature;
  if (type == "plane") return FeatureShape::kPlane;
  return type == "line" || type == "cylinder" || type == "cone" ? FeatureShape::kAxis : FeatureShape::kPoint;
}

KindRules FindKind(const std::string& word, const FeaturePlan& feature) {
  const std::string wanted = Plain(word);
  const Terms& terms = feature.method.terms;
  if (wanted == "form" || wanted == Plain(terms.form)) {
    return {Kind::kForm, terms.form, Reference::kNone, "", true, false, 0};
  }
  for (const Number& number : kNumbers) {
    if (terms.feature != number.feature || Plain(number.word) != wanted) continue;
    return {number.kind, number.word, Reference::kNone, "", false, wanted == "semiangle", 0};
  }
  const auto& relations = Relations();
  const auto* found = std::find_if(relations.begin(), relations.end(),
                                   [&](const KindRules& rules) { return Plain(rules.word) == wanted; });
  if (found != relations.end() && Fits(found->kind, feature)) return *found;
  throw InputError("the " + terms.feature + " '" + Printable(feature.name) + "' has no '" + Printable(word) +
                   "'; expected one of " + KindsOf(feature));
}

std::string ProblemOf(CharacteristicKind kind, const FeaturePlan& feature, const FeaturePlan& datum) {
  const FeatureShape shape = ShapeOf(datum);
  const std::string found = "'" + Printable(datum.name) + "' is a " + datum.method.terms.feature;
  if (feature.name == datum.name) return "the feature is its own datum";
  const bool needsAxis = kind == Kind::kCoaxiality || kind == Kind::kCircularRunout || kind == Kind::kTotalRunout;
  if (needsAxis && shape != FeatureShape::kAxis) return "expected a line, cylinder or cone; " + found;
  if (kind == Kind::kSymmetry && shape != FeatureShape::kPlane) return "expected a plane; " + found;
  if (IsOfDirections(kind) && shape == FeatureShape::kPoint)
    return "expected a plane, line, cylinder or cone; " + found;
  if (kind == Kind::kConcentricity && shape == FeatureShape::kPlane) return "a plane has no centre; " + found;
  return "";
}
