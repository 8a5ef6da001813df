#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "support/clouds.h"
#include "support/failures.h"
#include "support/fitted.h"
#include "support/minimax_laws.h"

// The same part in about metres, millimetres and micrometres, with every tolerance converted, has the same fits, by
// every criterion. The factors are powers of two, which round nothing, so the results agree to the last bit.
namespace {

using namespace nu::test;

// All digits: NuGetTol() bounds squared lengths, but components of directions as well.
struct Tolerances {
  explicit Tolerances(double length) { NuSetTol(0.0), NuSetLengthTol(length); }
  ~Tolerances() { NuSetTol(m_tol), NuSetLengthTol(m_lengthTol); }

  double m_tol = NuGetTol();
  double m_lengthTol = NuGetLengthTol();
};

// What a fit ended with, lengths in millimetres, whatever the unit.
struct Outcome {
  std::string failure;
  std::vector<double> values;
};

template<class Feature>
void Append(const Feature& feature, double unit, std::vector<double>& values) {
  Fitted f;
  Read(feature, f);
  for (const double length : {f.place.x(), f.place.y(), f.place.z(), f.radius}) values.push_back(length / unit);
  for (int i = 0; i < f.axis.GetSize(); ++i) values.push_back(f.axis[i]);
  values.push_back(f.angle);
}
void Append(const CNuTorSurf& torus, double unit, std::vector<double>& values) {
  CNuPoint centre;
  double major, minor;
  CNuVector axis;
  torus.GetData(&major, &minor, &centre, &axis);
  for (const double length : {major, minor, centre.x(), centre.y(), centre.z()}) values.push_back(length / unit);
}

struct Fit {
  const char* name;
  std::function<void(const CNuPointArray&, double tol, double unit, std::vector<double>&)> run;
};

constexpr long kLimit = 1000;

template<class Feature>
Feature Any() {
  if constexpr (std::is_same_v<Feature, CNuTorSurf>)
    return CNuTorSurf(2.0, 1.0);
  else if constexpr (std::is_default_constructible_v<Feature>)
    return Feature();
  else
    return Feature(1.0);
}

// `call` gets the feature, the points, the tolerance and where the form goes.
template<class Feature, class Call>
Fit FitBy(const char* name, Call call) {
  return {name, [call](const CNuPointArray& points, double tol, double unit, std::vector<double>& values) {
            Feature feature = Any<Feature>();
            double form = 0.0;
            call(feature, points, tol, &form);
            Append(feature, unit, values);
            values.push_back(form / unit);
          }};
}

template<class Feature>
Fit LeastSquares(const char* name) {
  return FitBy<Feature>(name, [](Feature& f, const CNuPointArray& points, double, double* form) {
    double sumsq;
    if constexpr (std::is_default_constructible_v<Feature>)
      f.Fit(points, form, &sumsq);
    else
      f.Fit(points, form, &sumsq, kLimit);
  });
}

template<class Feature>
Fit Zone(const char* name) {
  return FitBy<Feature>(name, [](Feature& f, const CNuPointArray& points, double tol, double* form) {
    if constexpr (std::is_same_v<Feature, CNuPlane>)
      f.FitMinZone(points, form, tol);
    else
      f.FitMinZone(points, form, tol, kLimit);
  });
}

const Fit kFits[] = {
    LeastSquares<CNuLine>("line"),
    LeastSquares<CNuPlane>("plane"),
    LeastSquares<CNuCircle>("circle"),
    LeastSquares<CNuSphSurf>("sphere"),
    LeastSquares<CNuCylSurf>("cylinder"),
    LeastSquares<CNuConSurf>("cone"),
    Zone<CNuLine>("line's zone"),
    Zone<CNuPlane>("plane's zone"),
    Zone<CNuCircle>("circle's zone"),
    Zone<CNuSphSurf>("sphere's zone"),
    Zone<CNuCylSurf>("cylinder's zone"),
    Zone<CNuConSurf>("cone's zone"),
    FitBy<CNuCircle>("circumscribed circle", [](auto& f, const auto& p, double tol, double*) { f.FitMin(p, tol); }),
    FitBy<CNuCircle>("inscribed circle", [](auto& f, const auto& p, double tol, double*) { f.FitMax(p, tol); }),
    FitBy<CNuSphSurf>("circumscribed sphere", [](auto& f, const auto& p, double tol, double*) { f.FitMin(p, tol); }),
    FitBy<CNuSphSurf>("inscribed sphere", [](auto& f, const auto& p, double tol, double*) { f.FitMax(p, tol); }),
    FitBy<CNuCylSurf>("circumscribed cylinder",
                      [](auto& f, const auto& p, double tol, double*) { f.FitMin(p, tol, kLimit); }),
    FitBy<CNuCylSurf>("inscribed cylinder",
                      [](auto& f, const auto& p, double tol, double*) { f.FitMax(p, tol, kLimit); }),
    FitBy<CNuTorSurf>("torus", [](auto& f, const auto& p, double tol, double*) { f.FitMin(p, tol, kLimit); }),
};

Outcome OutcomeOf(const Fit& fit, const CNuPointArray& points, double tol, double unit) {
  const Tolerances scope(tol * unit);
  Outcome found;
  const CNuPointArray scaled = Scaled(points, unit);
  found.failure = FailureOf([&] { fit.run(scaled, tol * unit, unit, found.values); });
  return found;
}

struct Part {
  const char* name;
  CNuPointArray points;
};

// Millimetres. Form errors of 10 um; the last ones are nearly degenerate, by 0.5 um and by 2 um.
std::vector<Part> Parts() {
  Random random(81);
  constexpr double kNoise = 2e-3;
  std::vector<Part> parts{{"bore", CircleCloud(random, 180, 5.0, 360.0, kNoise)},
                          {"ring off its plane", CircleCloud(random, 60, 5.0, 360.0, kNoise, kNoise)},
                          {"edge", LineCloud(random, 90, 20.0, kNoise)},
                          {"face", PlaneCloud(random, 90, 20.0, 8.0, kNoise)},
                          {"ball", SphereCloud(random, 90, 5.0, 120.0, kNoise)},
                          {"pin", CylinderCloud(random, 90, 5.0, 10.0, 360.0, kNoise)},
                          {"cone", ConeCloud(random, 90, 25.0, 5.0, 8.0, 360.0, kNoise)}};
  for (const double off : {0.5e-3, 2e-3}) {
    parts.push_back({"three next to a line", PointsOf({{0, 0, 0}, {5, 2.0 * off, 0}, {10, 0, 0}})});
    parts.push_back({"line", LineCloud(random, 50, 20.0, off / 3.0)});
    parts.push_back({"plane", PlaneCloud(random, 50, 20.0, 8.0, off / 3.0)});
    parts.push_back({"shell", SphereCloud(random, 50, 5.0, 120.0, off / 3.0)});
  }
  return parts;
}

// A circle through three points that are less than the tolerance off a line would have a radius of 1e7 times that.
TEST(UnitLaws, ToleranceIsALength) {
  const CNuPointArray near = PointsOf({{0, 0, 0}, {5, 1e-10, 0}, {10, 0, 0}});
  CNuCircle circle(1.0);
  circle.FitMin(near, 1e-9);
  EXPECT_EQ(circle.GetRadius(), 5.0);
  EXPECT_EQ(FailureOf([&] { circle.FitMax(near, 1e-9); }), "bestfit 3 |CNuCircle [3,0]");
  double form = 0.0;
  for (const double unit : {1e-3, 1.0, 1e3}) {
    Random random(82);
    const CNuPointArray bore = Scaled(CircleCloud(random, 720, 5.0, 360.0, 2e-3), unit);
    ASSERT_EQ(circle.FitMinZoneEx(bore, &form, 1e-3 * unit, kLimit), NuFitSuccess);
    EXPECT_NEAR(form, 1.1e-2 * unit, 2e-3 * unit);
    ASSERT_EQ(circle.FitMinEx(bore, 1e-3 * unit), NuFitSuccess);
    EXPECT_NEAR(DistancesFrom(circle.GetCentre(), bore).farthest, circle.GetRadius(), 1e-14 * unit);
    CNuLine line;
    ASSERT_EQ(line.FitMinZoneEx(Scaled(LineCloud(random, 200, 20.0, 2e-3), unit), &form, 1e-3 * unit, kLimit),
              NuFitSuccess);
    EXPECT_NEAR(form, 1.1e-2 * unit, 2e-3 * unit);
  }
}

TEST(UnitLaws, TheUnitOfLengthChangesNoFit) {
  for (const Part& part : Parts()) {
    for (const Fit& fit : kFits) {
      for (const double tol : {0.0, 1e-3}) {
        const Outcome inMillimetres = OutcomeOf(fit, part.points, tol, 1.0);
        for (const double unit : {0x1p-10, 0x1p10}) {
          SCOPED_TRACE(std::string(fit.name) + " of " + part.name + ", unit " + std::to_string(unit) + ", tolerance " +
                       std::to_string(tol));
          const Outcome other = OutcomeOf(fit, part.points, tol, unit);
          EXPECT_EQ(other.failure, inMillimetres.failure);
          EXPECT_EQ(other.values, inMillimetres.values);
        }
      }
    }
  }
}

}  // namespace
