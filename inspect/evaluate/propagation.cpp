#include "evaluate/propagation.h"

#include <cmath>
#include <numbers>
#include <vector>

namespace {

constexpr double kDegree = std::numbers::pi / 180;

// The feature after a change of one of its parameters: a shift along an axis of its frame, in length, or a turn of the
// frame about its origin, in degrees. Sizes move neither its place nor its direction.
FeatureGeometry Changed(const FeatureGeometry& feature, const Uncertainty& uncertainty, const std::string& name,
                        double change) {
  const Frame& frame = uncertainty.frame;
  FeatureGeometry changed = feature;
  const auto shift = [&](const Vec3& axis) { changed.place = Plus(feature.place, Times(change, axis)); };
  const auto turn = [&](const Vec3& about) {
    const Vec3 rotation = Times(change * kDegree, about);
    changed.place = Plus(feature.place, Cross(rotation, Minus(feature.place, frame.origin)));
    changed.direction = Unit(Plus(feature.direction, Cross(rotation, feature.direction)));
  };
  if (name == "shift x") shift(frame.x);
  if (name == "shift y") shift(frame.y);
  if (name == "shift z") shift(frame.z);
  if (name == "tilt x") turn(frame.y);  // z moves towards x
  if (name == "tilt y") turn(Times(-1, frame.x));
  if (name == "turn") turn(frame.z);
  return changed;
}

// The part of the variance that one feature brings, by central differences over a part of its standard uncertainties: a
// distance or an angle is not smooth where it is zero, and is rarely that close to it.
template<typename Value>
std::optional<double> VarianceOf(const UncertainFeature& feature, const Value& value) {
  if (feature.uncertainty == nullptr) return std::nullopt;
  const Uncertainty& uncertainty = *feature.uncertainty;
  std::vector<double> derivatives;
  for (const Uncertainty::Change& change : uncertainty.changes) {
    constexpr double kPart = 1e-3;
    const double step = kPart * change.standard;
    if (!std::isfinite(step)) return std::nullopt;
    const auto at = [&](double by) { return value(Changed(*feature.geometry, uncertainty, change.name, by)); };
    derivatives.push_back(step > 0 ? (at(step) - at(-step)) / (2 * step) : 0);
  }
  double variance = 0;
  for (std::size_t i = 0; i < derivatives.size(); ++i) {
    for (std::size_t j = 0; j < derivatives.size(); ++j) {
      variance += derivatives[i] * derivatives[j] * uncertainty.covariance[i][j];
    }
  }
  return variance;
}

}  // namespace

std::optional<double> PropagatedUncertainty(const UncertainFeature& feature, const UncertainFeature& other,
                                            const Relation& value) {
  std::optional<double> variance =
      VarianceOf(feature, [&](const FeatureGeometry& changed) { return value(changed, other.geometry); });
  if (variance && other.geometry != nullptr) {
    const std::optional<double> more =
        VarianceOf(other, [&](const FeatureGeometry& changed) { return value(*feature.geometry, &changed); });
    variance = more ? std::optional(*variance + *more) : std::nullopt;
  }
  if (!variance || !(*variance >= 0) || !std::isfinite(*variance)) return std::nullopt;
  return std::sqrt(*variance);
}
