// What do the minimax cylinders cost? The peer is an anchor, what GSL has for functions with kinks: the downhill
// simplex, from the principal axis.

#include "axis_simplex.h"
#include "inputs.h"
#include "nu/surfaces/cylinder.h"
#include "question.h"

namespace {

using bench::Cloud;
using bench::Numbers;
using bench::Question;

constexpr double kTol = 1e-9;
constexpr long kSteps = 1000;
// The simplex ends within some tenths of a micrometre, relative to lengths of some millimetres.
constexpr double kTolerance = 1e-3;

const auto kPoints = [](const Cloud& cloud) { return bench::ToPoints(cloud); };
const auto kCloud = [](const Cloud& cloud) { return cloud; };
const auto kOne = [](double x) { return Numbers{x}; };

double Zone(const CNuPointArray& points) {
  double zone;
  CNuCylSurf(1.0).FitMinZone(points, &zone, kTol, kSteps);
  return zone;
}

double Circumscribed(const CNuPointArray& points) {
  CNuCylSurf cylinder(1.0);
  cylinder.FitMin(points, kTol, kSteps);
  return cylinder.GetRadius();
}

double Inscribed(const CNuPointArray& points) {
  CNuCylSurf cylinder(1.0);
  cylinder.FitMax(points, kTol, kSteps);
  return cylinder.GetRadius();
}

void Ask(const std::string& name, double (*fit)(const CNuPointArray&), double (*peer)(const Cloud&)) {
  constexpr int simplexLimit = 10000;
  Question<Cloud> question(name, kTolerance, bench::Shaft);
  question.Ask("nu", kPoints, fit, kOne);
  if (peer != nullptr) question.Ask("gsl_simplex", kCloud, peer, kOne, simplexLimit);
  question.Over({100, 1000, 10000, 100000, 1000000});
}

#ifdef NU_BENCH_GSL
double SimplexZone(const Cloud& points) {
  return bench::SimplexOverAxes(points, [](double low, double high) { return high - low; });
}
double SimplexCircumscribed(const Cloud& points) {
  return bench::SimplexOverAxes(points, [](double, double high) { return high; });
}
double SimplexInscribed(const Cloud& points) {
  return -bench::SimplexOverAxes(points, [](double low, double) { return -low; });
}
#else
constexpr double (*SimplexZone)(const Cloud&) = nullptr;
constexpr double (*SimplexCircumscribed)(const Cloud&) = nullptr;
constexpr double (*SimplexInscribed)(const Cloud&) = nullptr;
#endif

const bool kAsked = [] {
  Ask("minzone_cylinder", Zone, SimplexZone);
  Ask("fitmin_cylinder", Circumscribed, SimplexCircumscribed);
  Ask("fitmax_cylinder", Inscribed, SimplexInscribed);
  return true;
}();

}  // namespace
