#include "nu/association/internal/explanation.h"

#include <cmath>
#include <cstdarg>
#include <cstdio>

#include "nu/association/internal/parameters.h"
#include "nu/engine/association/explain.h"
#include "nu/foundation/cause_text.h"

namespace nu::internal {
namespace {

// As printf has it; numbers in sentences have three digits.
#if defined(__GNUC__)
__attribute__((format(printf, 1, 2)))
#endif
std::string
Sentence(const char* format, ...) {
  char text[400];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  return text;
}

std::string CoverageText(FeatureKind kind, const Coverage& coverage) {
  if (kind == FeatureKind::sphere) return Sentence("The points cover a cap of %.3g degrees: ", 2.0 * coverage.cap);
  if (coverage.arc > 0.0) return Sentence("The points cover %.3g degrees of arc: ", coverage.arc);
  const Vec3 extent = coverage.high - coverage.low;
  return Sentence("The points extend over %.3g by %.3g by %.3g: ", extent.x, extent.y, extent.z);
}

std::string UncertaintyText(const ReportedExplanation& explanation, bool isAngle) {
  if (!std::isfinite(explanation.uncertainty))
    return Sentence("nothing determines the parameter \"%s\".", explanation.parameter);
  return Sentence("the parameter \"%s\" is uncertain by %.3g%s per unit of the uncertainty of a point.",
                  explanation.parameter, explanation.uncertainty, isAngle ? " degrees" : "");
}

std::string ProbeText(const ReportedExplanation& explanation) {
  const Vec3& p = explanation.probe;
  if (!explanation.hasProbe) return "";
  return Sentence(" One more point helps most near (%.6g, %.6g, %.6g).", p.x, p.y, p.z);
}

std::string Remedy(const AssociationState& state, int cause, int needed, double tol) {
  const PointsSummary points = SummaryOf(state.points, tol);
  const int count = static_cast<int>(points.count);
  if (cause == NuBestfitTooFewPoints)
    return Sentence("There are %d points, and the feature needs %d: measure more.", count, needed);
  if (!points.finite)
    return Sentence("Point %d has a coordinate that is not finite: remove it.", static_cast<int>(points.nonFinite));
  switch (cause) {
    case NuBestfitTooFewDistinct:
      return Sentence(
          "Of %d points only %d are farther apart than %.3g: measure at other places, or lower the tolerance.", count,
          static_cast<int>(points.distinct), tol);
    case NuBestfitCollinearPoints:
    case NuBestfitExchange:
      return Sentence("All points are within %.3g of one line of the length %.3g: measure beside it.", points.fromLine,
                      points.length);
    case NuBestfitCoplanarPoints:
      return Sentence("The points extend over %.3g by %.3g but are only %.3g thick: measure off their plane.",
                      points.length, points.width, points.thickness);
    case NuBestfitNotCoplanar:
      return Sentence(
          "The points are %.3g thick, above the tolerance %.3g of one plane: raise the tolerance, or remove "
          "points off the plane.",
          points.thickness, tol);
    case NuBestfitIterationLimit:
      return Sentence("The limit of %ld steps was reached: raise it, or start from a feature nearer to the points.",
                      state.options.maxSteps);
    default:
      return Sentence(
          "The points extend over %.3g by %.3g by %.3g, an arc of %.3g degrees at most, and do not determine "
          "the feature: measure where it curves, or fix a parameter.",
          points.length, points.width, points.thickness, points.arc);
  }
}

}  // namespace

void ExplainFit(const AssociationState& state, UnknownMask free, ReportData* data) {
  const Feature& feature = data->feature;
  ReportedExplanation& explanation = data->explanation.emplace();
  const Coverage coverage = CoverageOf(state.points, feature);
  explanation.arc = feature.kind == FeatureKind::sphere ? coverage.cap : coverage.arc;
  if (free == 0) {
    explanation.text = "All parameters are fixed.";
    return;
  }
  const Covariance covariance = CovarianceOf(state.points, WeightsOf(state.options), feature, free);
  const Unknown weakest = WeakestDirection(covariance).main;
  explanation.parameter = NameOf(feature.kind, weakest);
  explanation.uncertainty = UncertaintyPerUnit(covariance, UnknownGradient(weakest, UnitOf(feature.kind, weakest)));
  const ProbingPlace probe = BestProbingPlace(feature, covariance, coverage);
  explanation.hasProbe = probe.found;
  explanation.probe = probe.place;
  explanation.text = CoverageText(feature.kind, coverage) +
                     UncertaintyText(explanation, IsAngle(feature.kind, weakest)) + ProbeText(explanation);
}

void ExplainFailure(const AssociationState& state, double tol, ReportData* data) {
  if ((data->details & NuDetailExplanation) == 0) return;
  ReportedExplanation& explanation = data->explanation.emplace();
  if (data->end == NuCancelled) {
    explanation.text = "The monitor cancelled the fit.";
  } else if (const auto* failure = std::get_if<CNuBestfitException>(&data->failure)) {
    explanation.text = Remedy(state, failure->GetCause(), failure->GetSize(), tol);
  } else {
    explanation.text = Remedy(state, NuBestfitNumericalFailure, 0, tol);
  }
}

}  // namespace nu::internal
