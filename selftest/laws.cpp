#include <cmath>
#include <string_view>

#include "checks.h"
#include "support/fitted.h"
#include "to_rounding.h"

namespace {

using nu::test::AnyFit;
using nu::test::Fitted;

constexpr const char* kCriterionNames[] = {"least-squares", "minimum-circumscribed", "maximum-inscribed",
                                           "minimum-zone"};

std::string FeatureName(const AnyFit& fit) {
  constexpr std::pair<std::string_view, const char*> kNames[] = {
      {"CNuLine", "line"},         {"CNuPlane", "plane"},          {"CNuCircle", "circle"},
      {"CNuSphSurf", "sphere"},    {"CNuCylSurf", "cylinder"},     {"CNuConSurf", "cone"},
      {"CNuTorSurf", "torus"},     {"CNuEllipse", "ellipse"},      {"CNuHyperbola", "hyperbola"},
      {"CNuParabola", "parabola"}, {"CNuSineCurve", "sine curve"}, {"CNuCosineCurve", "cosine curve"}};
  for (const auto& [className, name] : kNames)
    if (className == fit.className) return name;
  return fit.className;
}

bool IsWave(const AnyFit& fit) {
  return std::string_view(fit.className) == "CNuSineCurve" || std::string_view(fit.className) == "CNuCosineCurve";
}

// What motions and the order of the points leave as it is, and a change of size multiplies.
struct Invariant {
  const char* name;
  double length;
};

std::vector<Invariant> InvariantsOf(const AnyFit& fit, const Fitted& f, int count) {
  switch (fit.criterion) {
    case nu::test::kLeastSquares:
      return {{"form", f.form}, {"rms", std::sqrt(f.sumsq / count)}};
    case nu::test::kZone:
      return {{"zone", f.form}};
    case nu::test::kCircumscribed:
    case nu::test::kInscribed:
      break;
  }
  const bool isTorus = std::string_view(fit.className) == "CNuTorSurf";
  return {{isTorus ? "minor radius" : "radius", isTorus ? f.minor : f.radius}};
}

// As many roundings of the largest coordinate as the points of a moved cloud and the result may be off together: those
// of the rotation and the shift, of both results, and the sensitivity of 2 of a zone.
constexpr double kRoundings = 64.0;

double ReachOf(const CNuPointArray& points) {
  double reach = 0.0;
  for (int i = 0; i < points.GetSize(); ++i)
    for (const double c : {points[i].x(), points[i].y(), points[i].z()}) reach = std::max(reach, std::fabs(c));
  return reach;
}

class Laws {
 public:
  Laws(const AnyFit& fit, const Part& part, Section& section)
      : m_fit(fit), m_part(part), m_section(section), m_feature(FeatureName(fit)) {}

  void Check(int count, nu::test::Random& random) const {
    CNuPointArray points = AtPart(m_fit.points(random, count));
    const std::string name = m_feature + " of " + std::to_string(count) + " points";
    const double reach = ReachOf(points);
    const std::vector<Invariant> before = Fit(points);
    const auto expect = [&](const char* law, const CNuPointArray& moved, double factor, double farthest) {
      const std::vector<Invariant> after = Fit(moved);
      for (std::size_t i = 0; i < before.size(); ++i) {
        const double error = std::fabs(after[i].length / factor - before[i].length);
        const double bound = kRoundings * nu::test::kEps * std::max(reach, farthest / factor);
        m_section.Add(m_feature, kCriterionNames[m_fit.criterion], std::string(law) + ": " + before[i].name, name,
                      error * m_part.unit->micrometres, bound * m_part.unit->micrometres);
      }
    };
    expect("order", nu::test::Shuffled(random, points), 1.0, reach);
    constexpr double kInch = 25.4;
    expect("scale", nu::test::Scaled(points, kInch), kInch, kInch * reach);
    if (IsWave(m_fit)) return;  // y = f(x) in its own frame
    const CNuPointArray moved = nu::test::RandomMotion(random, m_part.size)(points);
    expect("motion", moved, 1.0, ReachOf(moved));
  }

 private:
  // Clouds are about 10 long.
  CNuPointArray AtPart(CNuPointArray points) const {
    constexpr double kExtent = 10.0;
    points = nu::test::Scaled(points, m_part.size / kExtent);
    if (IsWave(m_fit)) return points;
    for (int i = 0; i < points.GetSize(); ++i)
      points[i] = points[i] + CNuPoint(m_part.offset, m_part.offset, m_part.offset);
    return points;
  }
  std::vector<Invariant> Fit(const CNuPointArray& points) const {
    return InvariantsOf(m_fit, FitOf(m_fit, points, 0.0), points.GetSize());
  }

  const AnyFit& m_fit;
  const Part& m_part;
  Section& m_section;
  std::string m_feature;
};

}  // namespace

Section CheckLaws(const Part& part, Progress& progress) {
  constexpr int kCounts[] = {40, 400, 4000};
  constexpr int kClouds = 4;
  Section section("Laws",
                  "Every fit follows the points when they are moved, given in another unit or in another order.");
  const ToRounding toRounding;
  nu::test::Random random(20);
  progress.Begin("laws", std::size(nu::test::kAllFits));
  for (const AnyFit& fit : nu::test::kAllFits) {
    for (const int count : kCounts) {
      for (int cloud = 0; cloud < kClouds; ++cloud) {
        try {
          Laws(fit, part, section).Check(count, random);
        } catch (const CNuException& e) {
          section.Check(false, fit.Name() + ": " + e.m_szWhat + " cause " + std::to_string(e.GetCause()));
        }
      }
    }
    progress.Step();
  }
  return section;
}
