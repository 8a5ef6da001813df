#include "evaluate/methods.h"

#include <nu/nu.h>

#include <set>
#include <utility>

#include "evaluate/fit_tools.h"
#include "evaluate/roundness_filter.h"
#include "input/progress.h"
#include "text.h"

namespace {

// Tables and pictures rely on it.
void RequireFinite(const Inspection& inspection) {
  bool finite = std::isfinite(inspection.form) && std::isfinite(inspection.sumSquares);
  for (const Vec3& p : inspection.local) finite = finite && std::isfinite(Dot(p, p));
  for (const double deviation : inspection.deviations) finite = finite && std::isfinite(deviation);
  if (!finite) throw FitFailure("the result is not finite: the points do not determine the feature");
}

struct Criterion {
  const char* option;
  const char* name;
  const char* letter;
  const char* words;  // other names in use, in small letters between blanks
};

constexpr std::size_t kNumberCriteria = 4;
// In the order of ENuCriterion.
constexpr Criterion kCriteria[kNumberCriteria] = {
    {"ls", "least squares", "G", " leastsquares gauss lsq lsc lss lsci lscy lsli lspl "},
    {"mz", "minimum zone", "C", " minimumzone chebyshev minimax mzc mzs mzci mzcy mzli mzpl "},
    {"mc", "minimum circumscribed", "N", " minimumcircumscribed mcc mcs mcci mccy "},
    {"mi", "maximum inscribed", "X", " maximuminscribed mic mis mici micy "}};

struct Feature {
  const char* name;
  const char* form;
  const char* symbol;
  const char* standard;
  const char* references[kNumberCriteria];  // the criteria in the standard
  unsigned criteria;                        // that it has, a bit each
  decltype(Method::fit) fit;
  decltype(Method::draw) draw;
};

constexpr unsigned kLs = 1;
constexpr unsigned kMz = 2;
constexpr unsigned kMcMi = 12;

constexpr Feature kFeatures[] = {
    {"line", "straightness", "STR", "ISO 12780-1", {"LSLI", "MZLI"}, kLs | kMz, FitLine, DrawStraightness},
    {"plane", "flatness", "FLT", "ISO 12781-1", {"LSPL", "MZPL"}, kLs | kMz, FitPlane, DrawFlatness},
    {"circle",
     "roundness",
     "RON",
     "ISO 12181-1",
     {"LSCI", "MZCI", "MCCI", "MICI"},
     kLs | kMz | kMcMi,
     FitCircle,
     DrawRoundness},
    {"sphere", "sphericity", "", "", {}, kLs | kMz | kMcMi, FitSphere, DrawSphericity},
    {"cylinder",
     "cylindricity",
     "CYL",
     "ISO 12180-1",
     {"LSCY", "MZCY", "MCCY", "MICY"},
     kLs | kMz | kMcMi,
     FitCylinder,
     DrawUnrolled},
    {"cone", "cone form", "", "", {}, kLs | kMz, FitCone, DrawUnrolled},
    {"torus", "torus form", "", "", {}, kLs | kMz, FitTorus, DrawUnrolled},
    {"ellipse", "ellipse form", "", "", {}, kLs, FitEllipse, DrawConic},
    {"hyperbola", "hyperbola form", "", "", {}, kLs, FitHyperbola, DrawConic},
    {"parabola", "parabola form", "", "", {}, kLs, FitParabola, DrawConic},
};

bool Has(const Feature& feature, std::size_t criterion) {
  return (feature.criteria >> criterion & 1U) != 0;
}

const Feature& FindFeature(const std::string& name) {
  const auto* found = std::find_if(std::begin(kFeatures), std::end(kFeatures),
                                   [&](const Feature& feature) { return Lower(name) == feature.name; });
  if (found == std::end(kFeatures)) throw InputError("unknown feature '" + Printable(name) + "'; " + AvailableFits());
  return *found;
}

// By its option, its letter or another name: "mz", "C", "Minimum Zone", "MZCI".
std::size_t FindCriterion(const std::string& name) {
  std::string word;
  for (const char c : Lower(name)) {
    if (c != ' ' && c != '-' && c != '_') word += c;
  }
  for (std::size_t i = 0; i < kNumberCriteria; ++i) {
    const bool meant = std::string_view(kCriteria[i].words).find(" " + word + " ") != std::string_view::npos;
    if (word == kCriteria[i].option || word == Lower(kCriteria[i].letter) || meant) return i;
  }
  throw InputError("unknown criterion '" + Printable(name) + "'; expected ls, mz, mc, mi or all");
}

Method MethodOf(const Feature& feature, std::size_t by) {
  const Criterion& criterion = kCriteria[by];
  if (!Has(feature, by)) {
    throw InputError("the " + std::string(feature.name) + " by " + criterion.name + " is not available; " +
                     AvailableFits());
  }
  const char* reference = feature.references[by];
  Terms terms{feature.name, criterion.name, criterion.letter, feature.form, feature.symbol, ""};
  if (reference != nullptr) terms.reference = std::string(reference) + " (" + feature.standard + ")";
  return {terms, criterion.option, static_cast<ENuCriterion>(by), feature.fit, feature.draw};
}

}  // namespace

std::string AvailableFits() {
  std::vector<std::pair<std::string, std::string>> groups;  // criteria, and the features that have these
  for (const Feature& feature : kFeatures) {
    std::string criteria;
    for (std::size_t i = 0; i < kNumberCriteria; ++i) {
      if (Has(feature, i)) criteria += (criteria.empty() ? "" : ", ") + std::string(kCriteria[i].option);
    }
    const auto group = std::find_if(groups.begin(), groups.end(), [&](const auto& g) { return g.first == criteria; });
    if (group == groups.end()) {
      groups.emplace_back(criteria, feature.name);
    } else {
      group->second += std::string(", ") + feature.name;
    }
  }
  std::string text = "available are";
  for (const auto& [criteria, features] : groups)
    text.append(" ").append(features).append(" by ").append(criteria) += ';';
  text.back() = '.';
  return text;
}

std::vector<Method> FindMethods(const std::vector<std::string>& features, const std::vector<std::string>& criteria) {
  std::vector<Method> methods;
  std::set<std::pair<const Feature*, std::size_t>> taken;
  const auto add = [&](const Feature& feature, std::size_t by) {
    if (taken.insert({&feature, by}).second) methods.push_back(MethodOf(feature, by));
  };
  for (const std::string& name : features) {
    const Feature& feature = FindFeature(name);
    for (const std::string& criterion : criteria) {
      if (Lower(criterion) != "all") {
        add(feature, FindCriterion(criterion));
        continue;
      }
      for (std::size_t by = 0; by < kNumberCriteria; ++by) {
        if (Has(feature, by)) add(feature, by);
      }
    }
  }
  return methods;
}

std::string EvaluationText(const Inspection& inspection) {
  const std::string& reference = inspection.terms.reference;
  return inspection.terms.criterion + (reference.empty() ? "" : ", " + reference) + ", " +
         (inspection.filter > 0 ? FilterText(inspection.filter) : "unfiltered");
}

Inspection Inspect(const Method& method, const std::vector<Vec3>& points, const InspectionTask& task) {
  try {
    const Waiting waiting((task.boxes > 0 ? "proving the " : "fitting the ") + method.terms.feature);
    const bool filtered = task.filter > 0;
    Inspection inspection =
        method.fit(filtered ? FilteredRoundness(points, task.filter) : points, {method.criterion, task.boxes});
    RequireFinite(inspection);
    inspection.filter = task.filter;
    // What is left of the deviations depends from point to point: its scatter says nothing about the parameters.
    if (filtered) inspection.uncertainty.reset();
    inspection.terms = method.terms;
    // The standard knows profiles in a plane, not lines in space.
    if (inspection.zoneIsRound) inspection.terms.symbol = inspection.terms.reference = "";
    return inspection;
  } catch (const FitFailure& failure) {
    throw FitFailure("the " + method.terms.feature + " cannot be fitted: " + failure.what());
  } catch (const CNuMemoryException&) {
    throw;
  } catch (const CNuException& failure) {
    throw FitFailure("the " + method.terms.feature + " cannot be fitted: " + NuCauseText(failure));
  }
}
