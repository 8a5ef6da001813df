#include <algorithm>
#include <cmath>
#include <exception>
#include <map>
#include <type_traits>

#include "checks.h"
#include "reference_sets.h"
#include "support/reference_compare.h"
#include "to_rounding.h"

namespace {

using nu::test::AnyFit;
using nu::test::Fitted;
using nu::test::Json;
using nu::test::Placement;

constexpr LengthUnit kMillimetre{"mm", 1000.0};

struct Set {
  std::string name;
  Json json;

  bool IsRefused() const { return name.rfind("err-", 0) == 0; }
  bool IsWave() const { return json["result"].Has("frequency"); }  // of samples, which have no place
  const std::string& Feature() const { return json["feature"].Text(); }
  const std::string& Criterion() const { return json["criterion"].Text(); }
};

const std::vector<Set>& AllSets() {
  static const std::vector<Set> sets = [] {
    std::vector<Set> read;
    for (std::size_t i = 0; i < kReferenceFileCount; ++i)
      read.push_back({kReferenceFiles[i].name, Json::Parse(kReferenceFiles[i].json)});
    return read;
  }();
  return sets;
}

// Null for sets of no feature: polynomials and linear systems.
const AnyFit* FitFor(const Set& set) {
  static const std::map<std::string, std::string> kClasses = {
      {"line", "CNuLine"},         {"plane", "CNuPlane"},   {"circle", "CNuCircle"},   {"sphere", "CNuSphSurf"},
      {"cylinder", "CNuCylSurf"},  {"cone", "CNuConSurf"},  {"ellipse", "CNuEllipse"}, {"hyperbola", "CNuHyperbola"},
      {"parabola", "CNuParabola"}, {"torus", "CNuTorSurf"}, {"sine", "CNuSineCurve"},  {"cosine", "CNuCosineCurve"}};
  static const std::map<std::string, nu::test::Criterion> kCriteria = {
      {"least-squares", nu::test::kLeastSquares},
      {"minimum-circumscribed", nu::test::kCircumscribed},
      {"maximum-inscribed", nu::test::kInscribed},
      {"minimum-zone", nu::test::kZone}};
  const auto found = kClasses.find(set.Feature());
  return found == kClasses.end() ? nullptr : &nu::test::TheFit(found->second, kCriteria.at(set.Criterion()));
}

// As the statement calls it. Angles are lengths there.
std::string NameOf(std::string what) {
  if (what == "sumsq") return "sum of squares [um2]";
  if (what == "semi_angle_rad") return "semi-angle";
  std::replace(what.begin(), what.end(), '_', ' ');
  return what;
}

// Adds the measures of a fit to a section, as micrometres of a part of this size.
void Score(const Set& set, const AnyFit& fit, const Placement& placement, bool full, double size, double micrometres,
           Section& section) {
  const bool iterates = fit.criterion == nu::test::kLeastSquares;
  const std::string criterion = set.Criterion() + (iterates && full ? ", to rounding" : "");
  const auto add = [&](const nu::test::Measure& m) {
    const bool isSum = std::string("sumsq") == m.what;
    const double scale = m.isAngle ? 0.5 * size * micrometres : isSum ? micrometres * micrometres : micrometres;
    section.Add(set.Feature(), criterion, NameOf(m.what), set.name, m.error * scale, m.bound * scale);
  };
  try {
    const Fitted fitted = FitOfSet(set.json, fit, placement);
    nu::test::Comparison(set.json, placement, full, add).Fit(fitted);
  } catch (const CNuException& e) {
    section.Check(false, set.name + ": " + e.m_szWhat + " cause " + std::to_string(e.GetCause()));
  }
}

void ScoreAtBothTolerances(const Set& set, const AnyFit& fit, const Placement& placement, double size,
                           double micrometres, Section& section) {
  const bool iterates = fit.criterion == nu::test::kLeastSquares;
  Score(set, fit, placement, !iterates, size, micrometres, section);
  if (!iterates) return;
  const ToRounding toRounding;
  Score(set, fit, placement, true, size, micrometres, section);
}

void CheckRefusal(const Set& set, const AnyFit& fit, Section& section) {
  int cause = 0;
  try {
    FitOfSet(set.json, fit);
  } catch (const CNuBestfitException& e) {
    cause = e.GetCause();
  }
  section.Check(cause == static_cast<int>(set.json["result"]["cause"].Number()),
                set.name + ": refused for cause " + std::to_string(cause));
}

// Bound and scale of data/reference: relative to the largest value.
double RelativeBound(const Json& set, const char* what) {
  return 1024.0 * nu::test::kEps * set["sensitivity"][what].Number();
}

void ScoreNumbers(const Set& set, const char* what, const std::vector<double>& found, const std::vector<double>& truth,
                  Section& section) {
  double largest = 0.0, error = 0.0;
  for (std::size_t i = 0; i < truth.size(); ++i) {
    largest = std::max(largest, std::fabs(truth[i]));
    error = std::max(error, std::fabs(found.at(i) - truth[i]));
  }
  section.Add(set.Feature(), set.Criterion(), std::string(what) + " [relative]", set.name, error / largest,
              RelativeBound(set.json, what));
}

void ScorePolynomial(const Set& set, Section& section) {
  CNuDoubleArray x(0), y(0);
  for (std::size_t i = 0; i < set.json["points"].Size(); ++i) {
    x.Add(set.json["points"][i][0].Number());
    y.Add(set.json["points"][i][1].Number());
  }
  const std::vector<double> truth = set.json["result"]["coefficients"].Numbers();
  CNuPolynomial polynomial(static_cast<int>(truth.size()) - 1);
  double sum = 0.0;
  polynomial.Fit(x, y, &sum);
  std::vector<double> found;
  for (int i = 0; i <= polynomial.GetDegree(); ++i) found.push_back(polynomial[i]);
  found.resize(truth.size());
  ScoreNumbers(set, "coefficients", found, truth, section);
}

void ScoreLinearSystem(const Set& set, Section& section) {
  const Json& rows = set.json["matrix"];
  const std::vector<double> truth = set.json["result"]["solution"].Numbers(), right = set.json["rhs"].Numbers();
  CNuMatrix matrix(static_cast<int>(rows.Size()), static_cast<int>(truth.size()));
  CNuVector side(matrix.GetRowSize());
  for (int i = 0; i < side.GetSize(); ++i) {
    side[i] = right[static_cast<std::size_t>(i)];
    for (int j = 0; j < matrix.GetColumnSize(); ++j)
      matrix.Element(i, j) = rows[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)].Number();
  }
  CNuLinearEquSys system(1);  // least squares
  system.Solve(matrix, side);
  const CNuVector solution = system.GetSolution();
  const std::vector<double> found(solution.GetData(), solution.GetData() + solution.GetSize());
  ScoreNumbers(set, "solution", found, truth, section);
}

// So that the set is as large as the part, and each coordinate of its middle is the offset.
Placement PlacementOf(const Set& set, const Part& part) {
  using nu::test::Wide;
  Placement placement;
  placement.factor = 0.5L * part.size / set.json["size"].Number();
  const Json& points = set.json["points"];
  for (std::size_t k = 0; k < 3; ++k) {
    Wide sum = 0.0L;
    for (std::size_t i = 0; i < points.Size(); ++i) sum += points[i][k].Number();
    placement.shift[k] = part.offset - sum / static_cast<Wide>(points.Size()) * placement.factor;
  }
  return placement;
}

// Whether there was anything to prove: a zone that is hardly above the rounding of the coordinates is as good nearby.
template<class F>
bool Prove(const Set& set, const AnyFit& fit, const Part& part, Section& section) {
  constexpr ENuCriterion kByName[] = {NuLeastSquares, NuMinimumCircumscribed, NuMaximumInscribed, NuMinimumZone};
  const Placement placement = PlacementOf(set, part);
  const CNuPointArray points = PointsOf(set.json, placement);
  CNuAssociation association(points);
  association.SetDetails(NuDetailForm | NuDetailContacts);
  association.SetTolerance(set.json["arguments"]["tol"].Number() * static_cast<double>(placement.factor));
  F feature = nu::test::Start<F>();
  const bool isTorus = std::is_same_v<F, CNuTorSurf>;  // the zone of whose circle is that of the tube
  const CNuAssociationReport report = association.Fit(isTorus ? NuMinimumZone : kByName[fit.criterion], &feature);
  report.Require();
  // As many roundings of the largest coordinate, or of the apex, as the parameters of a feature have, and their
  // products.
  constexpr double kRoundings = 16.0;
  double reach = 0.5 * part.size;
  for (int i = 0; i < points.GetSize(); ++i)
    for (const double c : {points[i].x(), points[i].y(), points[i].z()}) reach = std::max(reach, std::fabs(c));
  nu::test::Shape shape;
  nu::test::Read(feature, shape);
  for (const double l : shape.Lengths()) reach = std::max(reach, std::fabs(l));
  const double length = kRoundings * nu::test::kEps * reach;
  const CNuCertificateVerdict verdict = report.GetCertificate().Check(points, feature, length);
  constexpr double kResolved = 256.0;  // lengths that half of a zone has for a proof in its neighbourhood
  const bool isZone = fit.criterion == nu::test::kZone;
  if (isZone && verdict.Holds() != NuTrue && verdict.GetValue() < kResolved * length) return false;
  section.Check(verdict.Holds() == NuTrue,
                set.name + ": the certificate fails at check " + std::to_string(verdict.GetFailedCheck()));
  if (verdict.Holds())
    section.Add(set.Feature(), set.Criterion(), "gap", set.name, verdict.GetGap() * part.unit->micrometres,
                length * part.unit->micrometres);
  return true;
}

// Their sphere is one about the circle's centre, which no point off the plane holds: it is the circle that is proven.
bool IsAtOneHeight(const Json& set) {
  const Json& points = set["points"];
  for (std::size_t i = 1; i < points.Size(); ++i)
    if (points[i][2].Number() != points[0][2].Number()) return false;
  return true;
}

bool ProveSet(const Set& set, const AnyFit& fit, const Part& part, Section& section) {
  try {
    const std::string& feature = set.Feature();
    if (feature == "line") return Prove<CNuLine>(set, fit, part, section);
    if (feature == "plane") return Prove<CNuPlane>(set, fit, part, section);
    if (feature == "circle" || (feature == "sphere" && IsAtOneHeight(set.json)))
      return Prove<CNuCircle>(set, fit, part, section);
    if (feature == "sphere") return Prove<CNuSphSurf>(set, fit, part, section);
    if (feature == "cylinder") return Prove<CNuCylSurf>(set, fit, part, section);
    if (feature == "torus") return Prove<CNuTorSurf>(set, fit, part, section);
    return Prove<CNuConSurf>(set, fit, part, section);
  } catch (const CNuException& e) {
    section.Check(false, set.name + ": " + e.m_szWhat + " cause " + std::to_string(e.GetCause()));
  }
  return true;
}

}  // namespace

Section CheckReferenceSets(Progress& progress) {
  Section section(
      "Reference sets",
      "Point sets with results from 60-digit arithmetic, where they lie; coordinates count as millimetres.");
  progress.Begin("reference sets", AllSets().size());
  for (const Set& set : AllSets()) {
    const AnyFit* fit = FitFor(set);
    if (fit == nullptr)
      set.Feature() == "polynomial" ? ScorePolynomial(set, section) : ScoreLinearSystem(set, section);
    else if (set.IsRefused())
      CheckRefusal(set, *fit, section);
    else
      ScoreAtBothTolerances(set, *fit, {}, 2.0 * set.json["size"].Number(), kMillimetre.micrometres, section);
    progress.Step();
  }
  section.SortRows();
  return section;
}

Section CheckAtPart(const Part& part, Progress& progress) {
  Section section("Your part", "The reference sets in the size and at the place of your part.");
  progress.Begin("your part", AllSets().size());
  for (const Set& set : AllSets()) {
    const AnyFit* fit = FitFor(set);
    if (fit != nullptr && !set.IsRefused() && !set.IsWave())
      ScoreAtBothTolerances(set, *fit, PlacementOf(set, part), part.size, part.unit->micrometres, section);
    progress.Step();
  }
  section.SortRows();
  return section;
}

Section CheckCertificates(const Part& part, Progress& progress) {
  Section section("Certificates",
                  "Proofs that no feature near the result is better, checked from the points and the feature alone.");
  std::string unresolved;
  progress.Begin("certificates", AllSets().size());
  for (const Set& set : AllSets()) {
    const AnyFit* fit = FitFor(set);
    if (fit != nullptr && fit->criterion != nu::test::kLeastSquares && !set.IsRefused() &&
        !ProveSet(set, *fit, part, section))
      unresolved += " " + set.name;
    progress.Step();
  }
  if (!unresolved.empty())
    section.Remark("Not proven, as coordinates at this place are rounded to more than 1/4096 of half of their zone:" +
                   unresolved + ".");
  section.SortRows();
  return section;
}
