#include "nu/association/internal/explanation.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>

#include "nu/association/internal/parameters.h"
#include "nu/association/internal/report_details.h"
#include "nu/engine/association/contact_sensitivity.h"
#include "nu/engine/association/explain.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/points/extents.h"

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
  return Sentence("The points extend over %.3g by %.3g by %.3g in the unit of their coordinates: ", extent.x, extent.y,
                  extent.z);
}

// A ratio of lengths has no unit.
std::string UncertaintyText(const ReportedExplanation& explanation, bool isAngle, int contacts) {
  const std::string held = contacts > 0 ? Sentence(", held by %d contacts,", contacts) : "";
  const char* point = contacts > 0 ? "contact" : "point";
  if (!std::isfinite(explanation.uncertainty))
    return Sentence("nothing determines the parameter \"%s\"%s.", explanation.parameter,
                    contacts > 0 ? " to first order" : "");
  if (!isAngle)
    return Sentence("the parameter \"%s\"%s is %.3g times as uncertain as a %s.", explanation.parameter, held.c_str(),
                    explanation.uncertainty, point);
  return Sentence("the parameter \"%s\"%s is uncertain by %.3g degrees per unit of length of uncertainty of a %s.",
                  explanation.parameter, held.c_str(), explanation.uncertainty, point);
}

std::string ProbeText(const ReportedExplanation& explanation) {
  const Vec3& p = explanation.probe;
  if (!explanation.hasProbe) return "";
  return Sentence(" One more point helps most near (%.6g, %.6g, %.6g).", p.x, p.y, p.z);
}

// What failed, and on what.
struct Failure {
  const AssociationState& state;
  const ReportData& data;
  int cause;
  int needed;  // points
  double tol;
  PointsSummary points;

  Failure(const AssociationState& s, const ReportData& d, int c, int n, double t)
      : state(s), data(d), cause(c), needed(n), tol(t), points(SummaryOf(s.points, t)) {}

  // What rounding errors of the coordinates make of a length of 0.
  double Rounding() const {
    const Box box = ExtentsOf(state.points).box;
    double largest = 0.0;
    for (const double* corner : {box.low, box.high})
      for (int k = 0; k < 3; ++k) largest = std::max(largest, std::fabs(corner[k]));
    return 64.0 * kEpsilon * largest;
  }
  bool IsSurface() const {
    return data.type == CNuObject::NuTypeSphSurf || data.type == CNuObject::NuTypeCylSurf ||
           data.type == CNuObject::NuTypeConSurf || data.type == CNuObject::NuTypeTorSurf;
  }
};

// For a cause that depends on the tolerance.
std::string OrLowerTolerance(double extent, int cause, const Failure& failure) {
  if (failure.cause != cause || !(extent > failure.Rounding())) return "";
  return Sentence(", or lower the tolerance of %.3g", failure.tol);
}

std::string LineText(const Failure& failure) {
  const PointsSummary& points = failure.points;
  return Sentence("All points are within %.3g of one line of the length %.3g, in the unit of the coordinates: ",
                  points.fromLine, points.length) +
         "measure beside it" + OrLowerTolerance(points.fromLine, NuBestfitCollinearPoints, failure) + ".";
}

std::string PlaneText(const Failure& failure) {
  const PointsSummary& points = failure.points;
  return Sentence("The points extend over %.3g by %.3g, and by %.3g off their plane, in the unit of the coordinates: ",
                  points.length, points.width, points.thickness) +
         "measure farther off their plane" + OrLowerTolerance(points.thickness, NuBestfitCoplanarPoints, failure) + ".";
}

// Of points that are too few or too alike for the feature, whatever its fit ran into; empty for others.
std::string DegenerateText(const Failure& failure) {
  const PointsSummary& points = failure.points;
  const int count = static_cast<int>(points.count);
  if (failure.cause == NuBestfitTooFewPoints)
    return Sentence("There %s %d point%s, and the feature needs %d: measure more.", count == 1 ? "is" : "are", count,
                    count == 1 ? "" : "s", failure.needed);
  if (!points.finite)
    return Sentence("Point %d has a coordinate that is not finite: remove it.", static_cast<int>(points.nonFinite));
  const double rounding = failure.Rounding();
  if (!(points.length > rounding)) return Sentence("All %d points are at one place: measure at other places.", count);
  if (failure.cause == NuBestfitTooFewDistinct) {
    const int distinct = static_cast<int>(points.distinct);
    return Sentence(
        "Within the tolerance of %.3g, in the unit of the coordinates, the %d points are at %d place%s: measure at "
        "other places, or lower the tolerance.",
        failure.tol, count, distinct, distinct == 1 ? "" : "s");
  }
  if (failure.data.type != CNuObject::NuTypeLine && !(points.fromLine > rounding)) return LineText(failure);
  if (failure.IsSurface() && !(points.thickness > rounding)) return PlaneText(failure);
  return "";
}

std::string NoOptimumText(const Failure& failure) {
  const AssociationOptions& options = failure.state.options;
  if (options.side != NuEitherSide)
    return "No such feature next to the points has all of them on one side: give it a start, release its fixed "
           "parameters, or measure more of it.";
  if (options.fixed.Mask() != 0 || options.start)
    return "No feature with the fixed parameters is an optimum next to the start: release a parameter that "
           "contradicts the points, or start from a feature nearer to them.";
  if (failure.data.criterion == NuMaximumInscribed)
    return "The points leave a way out for the largest feature without a point inside: measure all around it.";
  const PointsSummary& points = failure.points;
  return Sentence(
      "The points extend over %.3g by %.3g by %.3g in the unit of the coordinates, an arc of %.3g degrees at most, "
      "and do not determine the feature: measure where it curves, or fix a parameter.",
      points.length, points.width, points.thickness, points.arc);
}

std::string Remedy(const Failure& failure) {
  std::string text = DegenerateText(failure);
  if (!text.empty()) return text;
  switch (failure.cause) {
    case NuBestfitCollinearPoints:
      return LineText(failure);
    case NuBestfitExchange:
      return Sentence(
          "The points are within %.3g of a line of the length %.3g, in the unit of the coordinates, and a ring around "
          "them grows narrower as its centre moves away: measure a longer arc.",
          failure.points.fromLine, failure.points.length);
    case NuBestfitCoplanarPoints:
      return PlaneText(failure);
    case NuBestfitNotCoplanar:
      return Sentence(
          "The points are %.3g thick, above the tolerance of %.3g for one plane, in the unit of the coordinates: raise "
          "the tolerance, or remove points off the plane.",
          failure.points.thickness, failure.tol);
    case NuBestfitIterationLimit:
      return Sentence("The limit of %ld steps was reached: raise it, or start from a feature nearer to the points.",
                      failure.state.options.maxSteps);
    default:
      return NoOptimumText(failure);
  }
}

// Least squares depend on all points; a zone, a circumscribed or an inscribed feature on its contacts alone; least
// squares on one side of the material on both.
Covariance UncertaintyOf(const AssociationState& state, UnknownMask free, const ReportData& data, int* contacts) {
  const double* weights = WeightsOf(state.options);
  const bool isSquares = data.criterion == NuLeastSquares;
  if (isSquares && state.options.side == NuEitherSide) return CovarianceOf(state.points, weights, data.feature, free);
  const ContactAccount account = ContactsOf(state, free, data);
  *contacts = account.holding;
  if (isSquares) return SensitivityOfSquares(state.points, weights, data.feature, account, free);
  return SensitivityToContacts(state.points, data.feature, ContactCriterionOf(data.criterion, state.options.side),
                               account, free);
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
  explanation.text = CoverageText(feature.kind, coverage);
  int contacts = 0;
  const Covariance covariance = UncertaintyOf(state, free, *data, &contacts);
  if (!covariance.finite) {
    explanation.parameter = "";
    explanation.uncertainty = kQuietNaN;
    explanation.text += "its contacts do not balance, so they do not tell how uncertain it is.";
    return;
  }
  const Unknown weakest = WeakestDirection(covariance).main;
  explanation.parameter = NameOf(feature.kind, weakest);
  explanation.uncertainty = UncertaintyPerUnit(covariance, UnknownGradient(weakest, UnitOf(feature.kind, weakest)));
  const ProbingPlace probe = BestProbingPlace(feature, covariance, coverage);
  explanation.hasProbe = probe.found;
  explanation.probe = probe.place;
  explanation.text += UncertaintyText(explanation, IsAngle(feature.kind, weakest), contacts) + ProbeText(explanation);
}

void ExplainFailure(const AssociationState& state, double tol, ReportData* data) {
  if ((data->details & NuDetailExplanation) == 0) return;
  ReportedExplanation& explanation = data->explanation.emplace();
  if (data->end == NuCancelled) {
    explanation.text = "The monitor cancelled the fit.";
  } else if (const auto* failure = std::get_if<CNuBestfitException>(&data->failure)) {
    explanation.text = Remedy({state, *data, static_cast<int>(failure->GetCause()), failure->GetSize(), tol});
  } else {
    explanation.text = Remedy({state, *data, NuBestfitNumericalFailure, 0, tol});
  }
}

}  // namespace nu::internal
