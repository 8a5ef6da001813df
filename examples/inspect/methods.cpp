#include "methods.h"

#include <nu/nu.h>

#include "fit_tools.h"
#include "text.h"

namespace {

std::string Explain(const CNuBestfitException& failure) {
  switch (failure.GetCause()) {
    case NuBestfitTooFewPoints:
      return "too few points: at least " + std::to_string(failure.GetSize()) + " are needed";
    case NuBestfitTooFewDistinct:
      return "the points coincide or have no dominant direction";
    case NuBestfitCollinearPoints:
      return "the points lie on one line";
    case NuBestfitCoplanarPoints:
      return "the points lie in one plane";
    case NuBestfitNotCoplanar:
      return "the points do not lie in one plane";
    case NuBestfitNoVariation:
      return "the points do not vary as the feature needs";
    case NuBestfitExchange:
      return "the search for the zone failed";
    case NuBestfitNumericalFailure:
      return "a numerical step failed: the points do not determine the feature";
    case NuBestfitIterationLimit:
      return "no convergence within " + std::to_string(kMaxIterations) + " iterations";
    default:
      return "the fit failed with cause " + std::to_string(failure.GetCause());
  }
}

// Tables and pictures rely on it.
void RequireFinite(const Inspection& inspection) {
  bool finite = std::isfinite(inspection.form) && std::isfinite(inspection.sumSquares);
  for (const Vec3& p : inspection.local) finite = finite && std::isfinite(Dot(p, p));
  for (const double deviation : inspection.deviations) finite = finite && std::isfinite(deviation);
  if (!finite) throw FitFailure("the result is not finite: the points do not determine the feature");
}

// What a criterion holds fast: the points that touch the outer side of the zone, its inner side, both or none.
enum class Touching { kNone, kBoth, kOuter, kInner };

// The points whose deviation is extreme. Two of them are equal but for the rounding of the coordinates, of which the
// fit and the deviations here each have a share.
void AddContacts(Touching touching, double size, Inspection* result) {
  constexpr double kRounding = 1e-12;
  const double tol = kRounding * size;
  const double largest = result->deviations[result->IndexOfMax()];
  const double smallest = result->deviations[result->IndexOfMin()];
  const bool outer = touching == Touching::kBoth || touching == Touching::kOuter;
  const bool inner = !result->zoneIsRound && (touching == Touching::kBoth || touching == Touching::kInner);
  for (std::size_t i = 0; i < result->deviations.size(); ++i) {
    const double deviation = result->deviations[i];
    if ((outer && deviation >= largest - tol) || (inner && deviation <= smallest + tol)) result->contacts.push_back(i);
  }
}

// Circumscribed and inscribed features have no form of their own: it is that of the deviations from them.
void AddStatistics(Inspection* result) {
  result->sumSquares = 0;
  for (const double deviation : result->deviations) result->sumSquares += deviation * deviation;
  if (result->form == 0) {
    result->form = result->deviations[result->IndexOfMax()] - result->deviations[result->IndexOfMin()];
  }
}

struct Criterion {
  const char* option;
  const char* name;
  Touching touching;
};

constexpr std::size_t kNumberCriteria = 4;
constexpr Criterion kCriteria[kNumberCriteria] = {{"ls", "least squares", Touching::kNone},
                                                  {"mz", "minimum zone", Touching::kBoth},
                                                  {"mc", "minimum circumscribed", Touching::kOuter},
                                                  {"mi", "maximum inscribed", Touching::kInner}};

struct Feature {
  const char* name;
  const char* formName;
  decltype(Method::draw) draw;
  decltype(Method::fit) fits[kNumberCriteria];  // in the order of kCriteria; null: not available
};

constexpr Feature kFeatures[] = {
    {"line", "straightness", DrawStraightness, {LeastSquaresLine, MinimumZoneLine}},
    {"plane", "flatness", DrawFlatness, {LeastSquaresPlane, MinimumZonePlane}},
    {"circle",
     "roundness",
     DrawRoundness,
     {LeastSquaresCircle, MinimumZoneCircle, CircumscribedCircle, InscribedCircle}},
    {"sphere",
     "sphericity",
     DrawSphericity,
     {LeastSquaresSphere, MinimumZoneSphere, CircumscribedSphere, InscribedSphere}},
    {"cylinder",
     "cylindricity",
     DrawUnrolled,
     {LeastSquaresCylinder, MinimumZoneCylinder, CircumscribedCylinder, InscribedCylinder}},
    {"cone", "conicity", DrawUnrolled, {LeastSquaresCone, MinimumZoneCone}},
    {"torus", "toricity", DrawUnrolled, {nullptr, nullptr, CircumscribedTorus}},
    {"ellipse", "form", DrawConic, {LeastSquaresEllipse}},
    {"hyperbola", "form", DrawConic, {LeastSquaresHyperbola}},
    {"parabola", "form", DrawConic, {LeastSquaresParabola}},
};

}  // namespace

std::string AvailableFits() {
  std::string text = "available are";
  for (std::size_t i = 0; i < kNumberCriteria; ++i) {
    std::string features;
    for (const Feature& feature : kFeatures) {
      if (feature.fits[i] != nullptr) features += (features.empty() ? " " : ", ") + std::string(feature.name);
    }
    if (!features.empty()) text += features + " (" + kCriteria[i].option + ", " + kCriteria[i].name + ");";
  }
  text.back() = '.';
  return text;
}

Method FindMethod(const std::string& feature, const std::string& criterion) {
  const auto* entry = std::find_if(std::begin(kFeatures), std::end(kFeatures),
                                   [&feature](const Feature& candidate) { return feature == candidate.name; });
  if (entry == std::end(kFeatures)) {
    throw InputError("unknown feature '" + Printable(feature) + "'; " + AvailableFits());
  }
  const auto* by = std::find_if(std::begin(kCriteria), std::end(kCriteria),
                                [&criterion](const Criterion& candidate) { return criterion == candidate.option; });
  if (by == std::end(kCriteria)) {
    throw InputError("unknown criterion '" + Printable(criterion) + "'; expected ls, mz, mc or mi");
  }
  const auto fit = entry->fits[by - kCriteria];
  if (fit == nullptr) {
    throw InputError("the " + std::string(entry->name) + " by " + by->name + " is not available yet; " +
                     AvailableFits());
  }
  return {entry->name, by->name, entry->formName, fit, entry->draw};
}

Inspection Inspect(const Method& method, const std::vector<Vec3>& points) {
  try {
    Inspection inspection = method.fit(points);
    const auto* by = std::find_if(std::begin(kCriteria), std::end(kCriteria),
                                  [&method](const Criterion& each) { return method.criterion == each.name; });
    if (by->touching != Touching::kNone) {
      AddStatistics(&inspection);
      AddContacts(by->touching, SizeOf(points), &inspection);
    }
    RequireFinite(inspection);
    inspection.feature = method.feature;
    inspection.criterion = method.criterion;
    inspection.formName = method.formName;
    return inspection;
  } catch (const CNuBestfitException& failure) {
    throw FitFailure(std::string("the ") + method.feature + " cannot be fitted: " + Explain(failure));
  } catch (const CNuException& failure) {
    throw FitFailure(std::string("the library reports: ") + failure.m_szWhere + " " + failure.m_szWhat);
  }
}
