#include "nu/association/association.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "nu/association/association_part.h"
#include "nu/association/certificate.h"
#include "support/failures.h"
#include "support/fitted.h"

// An association against the plain fits, and what its report says of them.
namespace {

using namespace nu::test;

TEST(Criteria, HaveTheLettersOfTheStandard) {
  const char* const letters[] = {"G", "C", "N", "X", ""};
  for (int i = 0; i < 5; ++i) EXPECT_STREQ(NuCriterionLetter(static_cast<ENuCriterion>(i)), letters[i]);
  EXPECT_STREQ(NuCriterionName(NuMaximumInscribed), "maximum inscribed");
}

CNuAssociationReport AssociateTorus(CNuAssociation& association, double tol, long limit, Fitted& f) {
  association.SetTolerance(tol);
  association.SetMaxSteps(limit);
  CNuTorSurf torus = Start<CNuTorSurf>();
  const CNuAssociationReport report = association.Fit(NuLeastSquares, &torus);
  f = {};
  Read(torus, f);
  return report;
}

// All that an association has.
const std::vector<AnyFit>& AssociatedFits() {
  static const std::vector<AnyFit> fits = [] {
    std::vector<AnyFit> all{kTorusFit};
    all[0].associate = AssociateTorus;
    Read(Start<CNuTorSurf>(), all[0].start);
    for (const AnyFit& fit : kAllFits)
      if (fit.associate != nullptr) all.push_back(fit);
    return all;
  }();
  return fits;
}

// x, y, z of each point, every `stride` numbers.
std::vector<double> BlockOf(const CNuPointArray& points, int stride) {
  std::vector<double> block(static_cast<std::size_t>(stride) * points.GetSize(), kNaN);
  for (int i = 0; i < points.GetSize(); ++i) {
    const double xyz[] = {points[i].x(), points[i].y(), points[i].z()};
    for (int k = 0; k < 3; ++k) block[i * stride + k] = xyz[k];
  }
  return block;
}

// To the bit, from an array and from a block, whatever the report holds.
TEST(Association, WithoutOptionsIsThePlainFit) {
  Random random(41);
  for (const AnyFit& fit : AssociatedFits()) {
    for (const int n : {30, 300}) {
      SCOPED_TRACE(fit.Name());
      const CNuPointArray points = RandomMotion(random, 50.0)(fit.points(random, n));
      const Fitted plain = FitOf(fit, points, NuGetLengthTol());
      const std::vector<double> block = BlockOf(points, 5);
      CNuAssociation associations[] = {CNuAssociation(points), CNuAssociation(block.data(), n, 5)};
      for (CNuAssociation& association : associations) {
        for (const int details : {NuDetailNone, NuDetailForm, NuDetailAll}) {
          association.SetDetails(details);
          Fitted found;
          const CNuAssociationReport report = fit.associate(association, NuGetLengthTol(), 1000, found);
          EXPECT_EQ(report.GetEnd(), NuConverged);
          EXPECT_EQ(report.GetCause(), 0);
          EXPECT_TRUE(static_cast<const Shape&>(plain) == found);
          if (details == NuDetailNone) continue;
          if (plain.form >= 0.0) {
            EXPECT_EQ(report.GetForm(), plain.form);
          }
          if (plain.sumsq >= 0.0) {
            EXPECT_EQ(report.GetSumSquares(), plain.sumsq);
          }
        }
      }
    }
  }
}

// T, P, V and Q are those of the deviations, which lie on the promised side of every feature.
TEST(Association, FormIsThatOfTheDeviations) {
  Random random(42);
  constexpr int n = 200;
  // The sense in which a conic is found depends on the points.
  std::vector<AnyFit> fits = AssociatedFits();
  for (const char* conic : {"CNuEllipse", "CNuHyperbola", "CNuParabola"}) fits.insert(fits.end(), 6, TheFit(conic));
  for (const AnyFit& fit : fits) {
    SCOPED_TRACE(fit.Name());
    const CNuPointArray points = RandomMotion(random, 50.0)(fit.points(random, n));
    CNuAssociation association(points);
    association.SetDetails(NuDetailDeviations);
    Fitted found;
    const CNuAssociationReport report = fit.associate(association, NuGetLengthTol(), 1000, found);
    const CNuDoubleArray& d = report.GetDeviations();
    ASSERT_EQ(d.GetSize(), n);
    double squares = 0.0;
    for (int i = 0; i < n; ++i) squares += d[i] * d[i];
    const double rounding = 1e-13 * 50.0;
    association.SetDetails(NuDetailForm);
    const CNuAssociationReport brief = fit.associate(association, NuGetLengthTol(), 1000, found);
    EXPECT_NEAR(brief.GetPeak(), report.GetPeak(), rounding);
    EXPECT_NEAR(brief.GetValley(), report.GetValley(), rounding);
    EXPECT_NEAR(brief.GetRootMeanSquare(), report.GetRootMeanSquare(), rounding);
    EXPECT_EQ(d[report.GetHighestPoint()], d.Max());
    EXPECT_EQ(d[report.GetLowestPoint()], d.Min());
    EXPECT_NEAR(report.GetPeak(), std::max(0.0, d.Max()), rounding);
    EXPECT_NEAR(report.GetRootMeanSquare(), std::sqrt(squares / n), rounding);
    EXPECT_NEAR(report.GetSumSquares(), squares, n * 0.1 * rounding);
    const bool isDistance = fit.Is("CNuTorSurf", kCircumscribed) || std::string(fit.className) == "CNuLine";
    EXPECT_NEAR(report.GetForm(), isDistance ? 2.0 * report.GetPeak() : report.GetPeak() + report.GetValley(),
                rounding);
    if (fit.criterion == kZone && !isDistance) {
      EXPECT_NEAR(report.GetPeak(), report.GetValley(), rounding);
    }
    if (fit.criterion == kCircumscribed && !isDistance) {
      EXPECT_LE(report.GetPeak(), rounding);
    }
    if (fit.criterion == kInscribed) {
      EXPECT_LE(report.GetValley(), rounding);
    }
  }
}

// Points that a feature hardly fits, or only as what it degenerates to.
std::vector<CNuPointArray> OddSets(Random& random) {
  const auto lattice = [](int a, int b, int c) {
    CNuPointArray points(a * b * c);
    for (int i = 0; i < a * b * c; ++i) points.Add({1.0 * (i % a), 2.0 * (i / a % b), 1.0 * (i / (a * b))});
    return points;
  };
  const auto printed = [](CNuPointArray points, double unit) {
    for (int i = 0; i < points.GetSize(); ++i)
      for (double* x : {&points[i].x(), &points[i].y(), &points[i].z()}) *x = unit * std::round(*x / unit);
    return points;
  };
  const CNuPointArray cube = lattice(3, 2, 2), disc = CylinderCloud(random, 60, 1.0, 0.3, 360.0, 0.3);
  CNuPointArray tip = ConeCloud(random, 60, 40.0, 0.3, 0.5, 360.0, 0.02), nappes = tip;
  for (int i = 0; i < 20; ++i) nappes[i] = -nappes[i];
  return {cube,
          lattice(5, 4, 3),
          lattice(2, 2, 6),
          lattice(5, 4, 1),
          lattice(6, 2, 1),
          disc,
          BoxCloud(random, 30, 1.0, 0.8, 0.6),
          BoxCloud(random, 200, 1.0, 0.3, 0.01),
          tip,
          nappes,
          printed(CylinderCloud(random, 80, 1.0, 2.0, 360.0, 0.0), 1e-9),
          printed(CylinderCloud(random, 80, 1.0, 2.0, 90.0, 0.0), 1e-6),
          PlaneCloud(random, 60, 1.0, 0.5, 1e-10),
          LineCloud(random, 60, 1.0, 1e-9)};
}

// What of a feature can be fixed, at the values that it has.
void Fix(const AnyFit& fit, const Fitted& f, unsigned which, CNuAssociation* association) {
  const std::string name = fit.className;
  const bool isTorus = name == "CNuTorSurf";
  const bool isRound = name == "CNuCircle" || name == "CNuSphSurf" || name == "CNuCylSurf";
  const bool isConic = name == "CNuEllipse" || name == "CNuHyperbola" || name == "CNuParabola";
  if (which == 0 && name != "CNuSphSurf") association->FixDirection(isConic ? f.normal : f.axis);
  if (which == 1) association->FixPoint(f.place);
  if (which == 2 && isRound) association->FixRadius(f.radius);
  if (which == 2 && isTorus) association->FixMajorRadius(f.radius);
  if (which == 2 && name == "CNuConSurf") association->FixSemiAngle(f.angle);
}

// Whatever the points are like, the form is that of the feature as its class keeps it, up to the rounding errors of its
// numbers; and these do not hide how it bends.
TEST(Association, FormIsThatOfTheStoredFeature) {
  Random random(54);
  int converged = 0;
  const auto expectStored = [&](const AnyFit& fit, CNuAssociation& association, const CNuPointArray& points) {
    Fitted found;
    const CNuAssociationReport report = fit.associate(association, 1e-12, 1000, found);
    if (report.HasConverged() == NuFalse) return found;
    ++converged;
    const double far = found.place.DistanceTo(points[0]) + std::fabs(found.radius);
    EXPECT_LT(far, 0x1p30);
    const CNuDoubleArray& d = report.GetDeviations();
    // The zone of points on both nappes of a cone is the range of their deviations.
    const bool isCone = std::string(fit.className) == "CNuConSurf";
    const bool isDistance = d.Min() >= 0.0 && fit.criterion != kInscribed && !isCone;
    EXPECT_NEAR(report.GetForm(), isDistance ? 2.0 * d.Max() : d.Max() - d.Min(), 32.0 * kEps * (far + 10.0));
    return found;
  };
  for (const CNuPointArray& points : OddSets(random)) {
    for (const bool isMoved : {false, true}) {
      const CNuPointArray moved = isMoved ? RandomMotion(random, 1.0)(points) : points;
      for (const AnyFit& fit : AssociatedFits()) {
        SCOPED_TRACE(::testing::Message() << fit.Name() << ", " << points.GetSize() << " points, " << isMoved);
        CNuAssociation association(moved);
        association.SetDetails(NuDetailDeviations);
        const Fitted free = expectStored(fit, association, moved);
        // Far from where it is free a cone opens towards an apex beyond all numbers.
        if (std::string(fit.className) != "CNuConSurf") continue;
        for (const double angle : {1e-9, 1e-5, 30.0}) {
          CNuAssociation held(moved);
          held.SetDetails(NuDetailDeviations);
          held.FixSemiAngle(angle);
          expectStored(fit, held, moved);
        }
        for (const unsigned which : {0u, 1u}) {
          CNuAssociation held(moved);
          held.SetDetails(NuDetailDeviations);
          Fix(fit, free, which, &held);
          expectStored(fit, held, moved);
        }
      }
    }
  }
  EXPECT_GT(converged, 300);
}

constexpr double kTol = 1e-12;

// How far the shapes are apart: lengths by their unit, directions as they are.
double Difference(const Shape& a, const Shape& b, double unit) {
  double most = 0.0;
  for (std::size_t k = 0; k < a.Lengths().size(); ++k)
    most = std::max(most, std::fabs(a.Lengths()[k] - b.Lengths()[k]) / unit);
  for (std::size_t k = 0; k < a.Ratios().size(); ++k) most = std::max(most, std::fabs(a.Ratios()[k] - b.Ratios()[k]));
  return most;
}

// Per unit of the uncertainty of a point, at places on the feature: that does not depend on the frame.
void ExpectSameUncertainty(const CNuAssociationReport& a, const CNuAssociationReport& b, const CNuPointArray& places) {
  ASSERT_EQ(a.GetNumberParameters(), b.GetNumberParameters());
  for (int i = 0; i < places.GetSize(); i += 7) {
    const double perUnit = a.GetSurfaceUncertainty(places[i]) / a.GetStandardDeviation();
    EXPECT_NEAR(b.GetSurfaceUncertainty(places[i]) / b.GetStandardDeviation() / perUnit, 1.0, 1e-6);
  }
}

// With a side of material, too: what counts nothing may lie on the other side.
TEST(Association, WeightsAreRepeatedPoints) {
  Random random(43);
  for (const AnyFit& fit : AssociatedFits()) {
    if (fit.criterion != kLeastSquares) continue;
    SCOPED_TRACE(fit.Name());
    const CNuPointArray points = fit.points(random, 40);
    CNuPointArray repeated(100);
    CNuDoubleArray weights(40);
    for (int i = 0; i < 40; ++i) {
      weights.Add(i % 4);
      for (int k = 0; k < i % 4; ++k) repeated.Add(points[i]);
    }
    CNuAssociation weighted(points), plain(repeated);
    weighted.SetWeights(weights);
    weighted.SetDetails(NuDetailForm | NuDetailUncertainty);
    plain.SetDetails(NuDetailForm | NuDetailUncertainty);
    for (const ENuMaterialSide side : {NuEitherSide, NuOutside, NuInside}) {
      if (side != NuEitherSide && std::string(fit.className) == "CNuLine") continue;
      weighted.RestrictToMaterialSide(side);
      plain.RestrictToMaterialSide(side);
      Fitted a, b;
      const CNuAssociationReport report = fit.associate(weighted, kTol, 1000, a);
      const CNuAssociationReport other = fit.associate(plain, kTol, 1000, b);
      ASSERT_EQ(report.GetEnd(), NuConverged);
      // The last step of a sphere, of a squared length below NuGetTol(), is not applied. With a side the point of a
      // plane or an axis may be another one of the same feature.
      if (side == NuEitherSide) {
        EXPECT_LE(Difference(a, b, 1.0), std::sqrt(NuGetTol()));
        ExpectSameUncertainty(report, other, points);
      }
      for (const auto size : {&Shape::radius, &Shape::minor, &Shape::angle}) EXPECT_NEAR(a.*size, b.*size, 1e-8);
      EXPECT_NEAR(report.GetSumSquares(), other.GetSumSquares(), 1e-12);
    }
  }
}

// A parameter that is fixed at the optimum leaves the optimum where it is; fixed elsewhere it costs.
TEST(Association, FixedParametersStay) {
  Random random(44);
  for (const AnyFit& fit : AssociatedFits()) {
    const CNuPointArray points = RandomMotion(random, 20.0)(fit.points(random, 60));
    CNuAssociation free(points);
    Fitted optimum;
    const CNuAssociationReport best = fit.associate(free, kTol, 1000, optimum);
    for (const unsigned which : {0u, 1u, 2u}) {
      SCOPED_TRACE(fit.Name() + " " + std::to_string(which));
      CNuAssociation association(points);
      Fix(fit, optimum, which, &association);
      Fitted found;
      const CNuAssociationReport report = fit.associate(association, kTol, 1000, found);
      EXPECT_EQ(report.GetEnd(), NuConverged);
      if (report.GetEnd() != NuConverged) continue;
      EXPECT_NEAR(found.radius, optimum.radius, 1e-6);
      EXPECT_NEAR(found.minor, optimum.minor, 1e-6);
      if (fit.criterion == kLeastSquares) {
        EXPECT_NEAR(report.GetSumSquares(), best.GetSumSquares(), 1e-9);
      }
      if (fit.criterion == kZone) {
        EXPECT_NEAR(report.GetForm(), best.GetForm(), 1e-9);
      }
    }
  }
}

// A rigid motion of the points and of what is fixed carries the result along.
TEST(Association, FixedParametersMoveWithThePoints) {
  Random random(52);
  for (const AnyFit& fit : AssociatedFits()) {
    const CNuPointArray points = fit.points(random, 60);
    CNuAssociation free(points);
    Fitted other;
    fit.associate(free, kTol, 1000, other);
    other.place = other.place + CNuPoint(0.002, -0.001, 0.0);
    other.radius *= 1.001;
    other.angle *= 1.001;
    const Motion motion = RandomMotion(random, 20.0);
    Fitted moved = other;
    moved.place = motion(other.place);
    const CNuPoint axis = motion.Direction({other.axis[0], other.axis[1], other.axis[2]});
    const CNuPoint normal = motion.Direction({other.normal[0], other.normal[1], other.normal[2]});
    moved.axis = CNuVector(axis.x(), axis.y(), axis.z());
    moved.normal = CNuVector(normal.x(), normal.y(), normal.z());
    for (const unsigned which : {0u, 1u, 2u}) {
      SCOPED_TRACE(fit.Name() + " " + std::to_string(which));
      const CNuPointArray turned = motion(points);
      CNuAssociation here(points), there(turned);
      Fix(fit, other, which, &here);
      Fix(fit, moved, which, &there);
      Fitted a, b;
      const CNuAssociationReport first = fit.associate(here, kTol, 1000, a);
      const CNuAssociationReport second = fit.associate(there, kTol, 1000, b);
      ASSERT_EQ(first.GetEnd(), NuConverged);
      ASSERT_EQ(second.GetEnd(), NuConverged);
      EXPECT_NEAR(first.GetForm(), second.GetForm(), 1e-9);
      EXPECT_NEAR(first.GetSumSquares(), second.GetSumSquares(), 1e-9);
      EXPECT_NEAR(a.radius, b.radius, 1e-7);
    }
  }
}

// From the feature of half of the points: the same optimum, with all its sizes.
template<class F>
void ExpectSameFromNearby(Random& random, ENuCriterion criterion) {
  const CNuPointArray points = RandomMotion(random, 20.0)(TypicalPoints<F>(random, 60));
  CNuPointArray half(30);
  for (int i = 0; i < 60; i += 2) half.Add(points[i]);
  F nearby = Start<F>(), optimum = Start<F>(), found = Start<F>();
  CNuAssociation(half).Fit(criterion, &nearby).Require();
  CNuAssociation association(points);
  const CNuAssociationReport best = association.Fit(criterion, &optimum);
  association.StartFrom(nearby);
  const CNuAssociationReport report = association.Fit(criterion, &found);
  ASSERT_EQ(report.GetEnd(), NuConverged);
  EXPECT_NEAR(report.GetForm(), best.GetForm(), 1e-8);
  Shape a, b;
  Read(optimum, a);
  Read(found, b);
  EXPECT_NEAR(a.radius, b.radius, 1e-6);
  EXPECT_NEAR(a.minor, b.minor, 1e-6);
  EXPECT_NEAR(a.angle, b.angle, 1e-6);
}

TEST(Association, StartsNearby) {
  Random random(51);
  for (const ENuCriterion criterion : {NuLeastSquares, NuMinimumZone}) {
    SCOPED_TRACE(criterion);
    ExpectSameFromNearby<CNuPlane>(random, criterion);
    ExpectSameFromNearby<CNuCircle>(random, criterion);
    ExpectSameFromNearby<CNuSphSurf>(random, criterion);
    ExpectSameFromNearby<CNuCylSurf>(random, criterion);
    ExpectSameFromNearby<CNuConSurf>(random, criterion);
    ExpectSameFromNearby<CNuTorSurf>(random, criterion);
  }
}

// Without each contact the same as when the point is removed.
void ExpectSensitivities(const AnyFit& fit, const CNuAssociation& association, const CNuAssociationReport& report) {
  const CNuDoubleArray change = association.Sensitivity(report);
  ASSERT_EQ(change.GetSize(), report.GetNumberContacts());
  for (int k = 0; k < change.GetSize(); ++k) {
    CNuAssociation without = association;
    CNuIntArray removed(1);
    removed.Add(report.GetContactPoints()[k]);
    without.Remove(removed);
    Fitted found;
    const CNuAssociationReport less = fit.associate(without, kTol, 1000, found);
    if (less.GetEnd() != NuConverged) continue;
    const bool isSquares = report.GetCriterion() == NuLeastSquares;
    const double value = isSquares ? less.GetSumSquares() - report.GetSumSquares() : less.GetForm() - report.GetForm();
    EXPECT_LE(change[k], 1e-12);
    EXPECT_GE(change[k], value - 1e-11) << k;  // the optimum next to this one
  }
}

// Parameters spread as the report says when points move by so little that the contacts stay: of least squares all of
// them, else the weakest.
void ExpectSpread(const CNuAssociation& association, const CNuAssociationReport& report, bool hasCovariance,
                  int samples, double tol) {
  constexpr double kSigma = 1e-8;
  const CNuSampledFit sampled = association.MonteCarlo(report, kSigma, samples, 5);
  ASSERT_TRUE(std::isfinite(report.GetWeakestUncertainty())) << report.Explain();
  bool isNamed = false;
  for (int k = 0; k + 1 < sampled.GetNumberValues(); ++k) {
    const double spread = sampled.GetStandardDeviations()[k] / kSigma;
    if (hasCovariance) {
      EXPECT_NEAR(spread * report.GetStandardDeviation() / report.GetStandardUncertainty(k), 1.0, tol) << k;
    }
    if (std::string(sampled.GetName(k)) != report.GetWeakestParameter()) continue;
    isNamed = true;
    EXPECT_NEAR(spread / report.GetWeakestUncertainty(), 1.0, tol) << report.Explain();
  }
  EXPECT_TRUE(isNamed);
}

// Scattered points have several optima: where the one next to the optimum of all points vanishes with a contact,
// another one is found.
TEST(Association, SensitivitiesFindAnotherOptimum) {
  Random random(55);
  for (int set = 0; set < 60; ++set) {
    const CNuPointArray points = CylinderCloud(random, 15 + set % 10, 5.0, 9.0, 360.0, 0.5);
    CNuAssociation association(points);
    association.SetDetails(NuDetailContacts);
    association.RestrictToMaterialSide(NuInside);
    CNuCylSurf cylinder(1.0);
    const CNuAssociationReport report = association.Fit(NuLeastSquares, &cylinder);
    if (report.GetEnd() != NuConverged) continue;
    const CNuDoubleArray change = association.Sensitivity(report);
    for (int k = 0; k < change.GetSize(); ++k) EXPECT_LE(change[k], 1e-9) << set;
  }
}

TEST(Association, MaterialStaysOnItsSide) {
  Random random(45);
  for (const AnyFit& fit : AssociatedFits()) {
    const bool hasSide = fit.criterion == kLeastSquares || fit.criterion == kZone;
    if (!hasSide) continue;
    const bool isLine = std::string(fit.className) == "CNuLine";
    const CNuPointArray points = isLine ? CircleCloud(random, 60, 50.0, 20.0, 0.01) : fit.points(random, 60);
    for (const ENuMaterialSide side : {NuOutside, NuInside}) {
      SCOPED_TRACE(fit.Name() + " " + std::to_string(side));
      CNuAssociation association(points);
      association.SetDetails(NuDetailAll);
      association.RestrictToMaterialSide(side);
      Fitted found;
      const CNuAssociationReport report = fit.associate(association, kTol, 1000, found);
      EXPECT_EQ(report.GetEnd(), NuConverged);
      if (report.GetEnd() != NuConverged) continue;
      const double beyond = side == NuOutside ? report.GetValley() : report.GetPeak();
      EXPECT_LE(beyond, 1e-12);
      EXPECT_NEAR(side == NuOutside ? report.GetDeviations().Min() : report.GetDeviations().Max(), 0.0, 1e-12);
      EXPECT_NEAR(report.GetMultipliers().Sum(), 1.0, 1e-12);
      for (int k = 0; k < report.GetNumberContacts(); ++k) {
        const double off = std::fabs(report.GetDeviations()[report.GetContactPoints()[k]]);
        const bool isOuter = (report.GetContactSides()[k] > 0) == (side == NuOutside);
        EXPECT_NEAR(off, isOuter ? report.GetForm() : 0.0, 1e-12);
      }
      ExpectSensitivities(fit, association, report);
      ExpectSpread(association, report, false, 60, 0.45);  // five of its standard deviations
      EXPECT_EQ(FailureOf([&] { report.GetCovariance(); }).substr(0, 12), "operation 45");
    }
  }
}

TEST(Association, RefusesWhatItCannotDo) {
  Random random(46);
  const CNuPointArray points = TypicalPoints<CNuCylSurf>(random, 30);
  CNuAssociation a(points);
  const auto expect = [&](const char* failure, const std::function<void()>& call) {
    EXPECT_EQ(FailureOf(call), failure);
  };
  CNuDoubleArray three(3), weights(30);
  for (int i = 0; i < 30; ++i) weights.Add(0.0);
  expect("operation 5 association|SetWeights [0,0]", [&] { a.SetWeights(three); });
  expect("operation 1 association|SetWeights [0,0]", [&] { a.SetWeights(weights); });
  weights[7] = -1.0;
  expect("operation 1 association|SetWeights [0,0]", [&] { a.SetWeights(weights); });
  for (const double bad : {0.0, -1.0, kNaN, kInf}) {
    expect("operation 1 association|FixRadius [0,0]", [&] { a.FixRadius(bad); });
    expect("operation 1 association|FixSemiAngle [0,0]", [&] { a.FixSemiAngle(bad); });
  }
  expect("operation 9 association|FixDirection [0,0]", [&] { a.FixDirection(CNuVector(0.0, 0.0, 0.0)); });
  expect("operation 10 association|FixDirection [0,0]", [&] { a.FixDirection(CNuVector(2)); });
  expect("operation 1 association|SetMaxSteps [0,0]", [&] { a.SetMaxSteps(0); });
  expect("operation 1 association|SetTolerance [0,0]", [&] { a.SetTolerance(kNaN); });
  expect("operation 1 association|SetDetails [0,0]", [&] { a.SetDetails(NuDetailAll + 1); });
  expect("operation 1 association|CNuAssociation [0,0]", [] { CNuAssociation(nullptr, 1); });
  CNuIntArray beyond(1);
  beyond.Add(30);
  expect("operation 3 association|Remove [0,29]", [&] { a.Remove(beyond); });
  expect("operation 41 association|Remove [0,0]", [&] { a.Remove(PointsOf({{1e9, 0.0}})); });

  CNuPlane plane;
  CNuCylSurf cylinder(1.0);
  CNuConSurf cone(45.0);
  a.FixRadius(5.0);
  expect("operation 45 association|CNuPlane [0,0]", [&] { a.Fit(NuLeastSquares, &plane); });
  expect("operation 45 association|ProveGlobally [0,0]", [&] { a.ProveGlobally(NuMinimumZone, &cylinder, 1); });
  a.ReleaseRadius();
  expect("operation 45 association|CNuConSurf [0,0]", [&] { a.Fit(NuMinimumCircumscribed, &cone); });
  weights[7] = 1.0;
  a.SetWeights(weights);
  expect("operation 45 association|CNuCylSurf [0,0]", [&] { a.Fit(NuMinimumZone, &cylinder); });
  a.ReleaseWeights();
  a.StartFrom(plane);
  expect("operation 45 association|CNuCylSurf [0,0]", [&] { a.Fit(NuMinimumZone, &cylinder); });
  a.ReleaseStart();
  const CNuAssociationReport report = a.Fit(NuMinimumZone, &cylinder);
  expect("operation 49 report|GetDeviations [0,0]", [&] { report.GetDeviations(); });
  expect("operation 49 report|GetGap [0,0]", [&] { report.GetGap(); });
  expect("operation 49 report|CNuAssociationReport::Require [0,0]", [] { CNuAssociationReport().Require(); });
  EXPECT_EQ(a.Fit(NuMinimumZone, static_cast<CNuCylSurf*>(nullptr)).GetForm(), report.GetForm());
}

// The monitor sees every step, may cancel, and may throw; the feature stays as it was.
TEST(Association, MonitorsWatchAndCancel) {
  Random random(47);
  struct Watch {
    long most = 1000, seen = 0;
    bool throws = false;
  };
  const NuStepMonitor monitor = [](void* context, long step, double, double) {
    Watch& watch = *static_cast<Watch*>(context);
    EXPECT_EQ(step, ++watch.seen);
    if (watch.throws) throw 7;
    return watch.seen < watch.most ? NuTrue : NuFalse;
  };
  for (const AnyFit& fit : AssociatedFits()) {
    SCOPED_TRACE(fit.Name());
    const CNuPointArray points = fit.points(random, 40);
    CNuAssociation association(points);
    Watch watch;
    association.SetMonitor(monitor, &watch);
    Fitted found;
    const CNuAssociationReport report = fit.associate(association, kTol, 1000, found);
    EXPECT_EQ(report.GetEnd(), NuConverged);
    EXPECT_EQ(report.GetSteps(), watch.seen);
    EXPECT_GE(watch.seen, 1);
    watch = {1};
    EXPECT_EQ(fit.associate(association, kTol, 1000, found).GetEnd(), NuCancelled);
    EXPECT_TRUE(static_cast<const Shape&>(found) == fit.start);
    watch = {1000, 0, true};
    EXPECT_THROW(fit.associate(association, kTol, 1000, found), int);
  }
}

// From the feature of one part, parts lead to the optimum of the whole.
template<class F>
void ExpectParts(const CNuPointArray (&parts)[2], ENuCriterion criterion, F feature,
                 const CNuAssociationReport& whole) {
  const auto joined = [&] {
    CNuAssociationPart all;
    for (const CNuPointArray& points : parts) all.Join(CNuAssociationPart(points, feature, parts[0][0]));
    return all;
  };
  CNuAssociationPart all = joined();
  if (criterion == NuLeastSquares) {
    for (int round = 0; round < 20 && all.Step(&feature) > 1e-11; ++round) all = joined();
    EXPECT_NEAR(joined().GetRootMeanSquare(), whole.GetRootMeanSquare(), 1e-10);
    return;
  }
  CNuAssociationCandidates candidates;
  for (int round = 0; round < 20; ++round, all = joined()) {
    candidates.Add(all);
    candidates.Fit(criterion, &feature);
  }
  Shape shape;
  Read(feature, shape);
  double form = all.GetLargestDeviation() - all.GetSmallestDeviation();
  if (std::is_same_v<F, CNuLine>) form = 2.0 * all.GetLargestDeviation();
  if (std::is_same_v<F, CNuTorSurf>) form = 2.0 * shape.minor;
  EXPECT_NEAR(form, whole.GetForm(), 1e-8);
}

// Points that come and go, and parts that are joined, lead to the fit of all points that are there.
template<class F>
void ExpectStreams(Random& random, ENuCriterion criterion) {
  const CNuPointArray points = RandomMotion(random, 20.0)(Shuffled(random, TypicalPoints<F>(random, 90)));
  const CNuPointArray first = points.SubArray(0, 39), second = points.SubArray(40, 89);
  F feature = Start<F>(), whole = Start<F>(), rest = Start<F>();
  CNuAssociation association(first), other(second), all(association);
  association.Fit(criterion, &feature).Require();
  all.Merge(other);
  EXPECT_EQ(all.GetNumberPoints(), 90);
  const auto expect = [](const CNuAssociationReport& warm, const CNuAssociationReport& cold) {
    warm.Require(), cold.Require();
    EXPECT_NEAR(warm.GetForm(), cold.GetForm(), 1e-7);  // of first order in what the tolerance leaves
    EXPECT_NEAR(warm.GetRootMeanSquare(), cold.GetRootMeanSquare(), 1e-9);
  };
  const CNuAssociationReport cold = CNuAssociation(points).Fit(criterion, &whole);
  ExpectParts({first, second}, criterion, feature, cold);
  expect(all.Refit(criterion, &feature), cold);
  association.Add(second);
  association.Remove(first);
  expect(association.Refit(criterion, &feature), other.Fit(criterion, &rest));
}

TEST(Association, StreamsAreTheFitOfAllPoints) {
  Random random(48);
  for (const ENuCriterion criterion : {NuLeastSquares, NuMinimumZone, NuMinimumCircumscribed, NuMaximumInscribed}) {
    SCOPED_TRACE(NuCriterionName(criterion));
    ExpectStreams<CNuCircle>(random, criterion);
    ExpectStreams<CNuSphSurf>(random, criterion);
    ExpectStreams<CNuCylSurf>(random, criterion);
    if (criterion > NuMinimumZone) continue;
    ExpectStreams<CNuLine>(random, criterion);
    ExpectStreams<CNuPlane>(random, criterion);
    ExpectStreams<CNuConSurf>(random, criterion);
    ExpectStreams<CNuTorSurf>(random, criterion);
    if (criterion > NuLeastSquares) continue;
    ExpectStreams<CNuEllipse>(random, criterion);
    ExpectStreams<CNuHyperbola>(random, criterion);
    ExpectStreams<CNuParabola>(random, criterion);
  }
}

// Points without weights count once; and a point that is left out takes its own weight with it.
TEST(Association, WeightsGoAlongWithTheirPoints) {
  Random random(54);
  const CNuPointArray points = TypicalPoints<CNuCircle>(random, 30);
  const CNuPointArray firstPoints = points.SubArray(0, 9), lastPoints = points.SubArray(10, 29);
  for (const int weighted : {1, 2, 3}) {  // the first points, the last ones, or all
    CNuDoubleArray weights(30);
    for (int i = 0; i < 30; ++i) weights.Add((weighted & (i < 10 ? 1 : 2)) != 0 ? random.Uniform(0.5, 2.0) : 1.0);
    CNuAssociation all(points), first(firstPoints), last(lastPoints);
    all.SetWeights(weights);
    if ((weighted & 1) != 0) first.SetWeights(weights.SubArray(0, 9));
    if ((weighted & 2) != 0) last.SetWeights(weights.SubArray(10, 29));
    first.Merge(last);
    for (CNuAssociation* one : {&all, &first}) {
      one->SetDetails(NuDetailForm | NuDetailContacts);
      one->RestrictToMaterialSide(NuInside);
    }
    CNuCircle circle(1.0), merged(1.0);
    const CNuAssociationReport whole = all.Fit(NuLeastSquares, &circle);
    EXPECT_NEAR(first.Fit(NuLeastSquares, &merged).GetSumSquares(), whole.GetSumSquares(), 1e-12);
    EXPECT_LE(merged.GetCentre().DistanceTo(circle.GetCentre()), 1e-9);
    const CNuDoubleArray change = all.Sensitivity(whole);
    ASSERT_GT(change.GetSize(), 1);
    for (int k = 0; k < change.GetSize(); ++k) {
      CNuAssociation without(first);
      CNuIntArray one(1);
      one.Add(whole.GetContactPoints()[k]);
      without.Remove(one);
      CNuCircle left(1.0);
      EXPECT_NEAR(without.Fit(NuLeastSquares, &left).GetSumSquares() - whole.GetSumSquares(), change[k], 1e-10);
    }
  }
}

// With time that grows with the square of the number this test would not end.
TEST(Association, StreamsManyPoints) {
  constexpr int kPortion = 100, kPortions = 2000;
  double xyz[3 * kPortion];
  for (int i = 0; i < 3 * kPortion; ++i) xyz[i] = i;
  CNuAssociation association(xyz, kPortion);
  for (int k = 1; k < kPortions; ++k) association.Add(xyz, kPortion);
  CNuIntArray first(1);
  first.Add(0);
  association.Remove(first);
  EXPECT_EQ(association.GetNumberPoints(), kPortion * kPortions - 1);
  CNuAssociation& same = association;
  association.Merge(same);
  EXPECT_EQ(association.GetNumberPoints(), 2 * kPortion * kPortions - 2);
}

// A full circle: var(r) = sigma^2 / n, and a Monte Carlo agrees.
TEST(Association, UncertaintyIsThatOfSamples) {
  constexpr int n = 100;
  CNuPointArray points(n);
  for (int i = 0; i < n; ++i) {
    const double t = 3.6 * i * kDegree, r = 5.0 + (i % 2 == 0 ? 0.01 : -0.01);
    points.Add({r * std::cos(t), r * std::sin(t)});
  }
  CNuAssociation association(points);
  association.SetDetails(NuDetailAll);
  CNuCircle circle(1.0);
  const CNuAssociationReport report = association.Fit(NuLeastSquares, &circle);
  const double sigma = report.GetStandardDeviation();
  EXPECT_NEAR(sigma, 0.01 * std::sqrt(n / (n - 3.0)), 1e-12);
  ASSERT_EQ(report.GetNumberParameters(), 3);
  EXPECT_STREQ(report.GetParameterName(2), "radius");
  EXPECT_NEAR(report.GetStandardUncertainty(2), sigma / std::sqrt(n), 1e-9);
  EXPECT_NEAR(report.GetCovariance().Element(0, 0), 2.0 * sigma * sigma / n, 1e-9);
  EXPECT_NEAR(report.GetCoverage(), 356.4, 0.6) << report.Explain();
  const CNuSampledFit samples = association.MonteCarlo(report, sigma, 2000, 7);
  EXPECT_EQ(samples.GetNumberSamples(), 2000);
  EXPECT_STREQ(samples.GetName(2), "radius");
  for (int k = 0; k < 3; ++k)
    EXPECT_NEAR(samples.GetStandardDeviations()[k] / report.GetStandardUncertainty(k), 1.0, 0.06);
}

// K. Pearson, On lines and planes of closest fit to systems of points in space, Philosophical Magazine 2 (1901), his
// first example; the ellipse of W. Gander, G. H. Golub, R. Strebel, BIT 34 (1994), section 5.
TEST(Association, AgreesWithPublishedExamples) {
  CNuLine line;
  const CNuPointArray pearson = PointsOf({{0.0, 5.9},
                                          {0.9, 5.4},
                                          {1.8, 4.4},
                                          {2.6, 4.6},
                                          {3.3, 3.5},
                                          {4.4, 3.7},
                                          {5.2, 2.8},
                                          {6.1, 2.8},
                                          {6.5, 2.4},
                                          {7.4, 1.5}});
  CNuAssociation(pearson).Fit(NuLeastSquares, &line).Require();
  const CNuVector along = line.GetDirection();
  const double slope = along[1] / along[0];
  EXPECT_NEAR(slope, -0.54556, 5e-6);
  EXPECT_NEAR(line.GetPoint().y() - slope * line.GetPoint().x(), 5.7840, 5e-4);

  CNuEllipse ellipse(2.0, 1.0);
  const CNuPointArray gander = PointsOf({{1, 7}, {2, 6}, {5, 8}, {7, 7}, {9, 5}, {3, 7}, {6, 2}, {8, 4}});
  const CNuAssociationReport report = CNuAssociation(gander).Fit(NuLeastSquares, &ellipse);
  report.Require();
  EXPECT_NEAR(ellipse.GetSemiAxisA(), 6.5187, 5e-5);
  EXPECT_NEAR(ellipse.GetSemiAxisB(), 3.0319, 5e-5);
  EXPECT_NEAR(ellipse.GetCentre().x(), 2.6996, 5e-5);
  EXPECT_NEAR(ellipse.GetCentre().y(), 3.8160, 5e-5);
  EXPECT_NEAR(std::sqrt(report.GetSumSquares()), 1.1719, 5e-5);
}

// Contacts balance, their certificate holds, and the bound of a proof is at the optimum.
TEST(Association, MinimaxFitsAccountForThemselves) {
  Random random(49);
  const CNuPointArray points = TypicalPoints<CNuSphSurf>(random, 40);
  CNuAssociation association(points);
  association.SetDetails(NuDetailAll);
  CNuSphSurf sphere(1.0);
  const CNuAssociationReport report = association.ProveGlobally(NuMinimumZone, &sphere, 200000);
  report.Require();
  EXPECT_NEAR(report.GetMultipliers().Sum(), 1.0, 1e-12);
  EXPECT_GE(report.GetNumberContacts(), 5);
  EXPECT_EQ(report.GetCertificate().Check(points, sphere, 1e-13).Holds(), NuTrue);
  EXPECT_EQ(report.IsGlobal(), NuTrue);
  EXPECT_LE(report.GetGap(), 1e-7);
  const CNuDoubleArray change = association.Sensitivity(report);
  for (int k = 0; k < change.GetSize(); ++k) EXPECT_LE(change[k], 1e-12);
  EXPECT_GT(std::string(report.Explain()).size(), 20u);
}

// The narrowest strip proves a line in its plane, wherever that lies.
TEST(Association, LinesInAPlaneAreProven) {
  Random random(50);
  for (const double thickness : {1e-3, 1.0, 15.0}) {
    CNuPointArray points = TypicalPoints<CNuLine>(random, 40);
    for (int i = 0; i < points.GetSize(); ++i) {
      points[i] = CNuPoint(points[i].x(), points[i].y() + thickness * random.Bell(), 0.0);
    }
    points = RandomMotion(random, 10.0)(points);
    CNuLine fitted(CNuPoint(), CNuVector(1.0, 0.0, 0.0)), proven = fitted;
    CNuAssociation association(points);
    association.SetDetails(NuDetailAll);
    const double zone = association.Fit(NuMinimumZone, &fitted).GetForm();
    const CNuAssociationReport report = association.ProveGlobally(NuMinimumZone, &proven, 1000);
    report.Require();
    EXPECT_EQ(report.IsGlobal(), NuTrue);
    EXPECT_NEAR(report.GetForm(), zone, 1e-12);
    EXPECT_NEAR(report.GetBound(), zone, 1e-12);
  }
}

// Points that move by little leave the contacts as they are: what the explanation derives from these is what samples
// show, and sizes that are the value go along with the multipliers.
TEST(Association, ParametersSpreadAsThoseOfSamples) {
  Random random(53);
  for (const AnyFit& fit : AssociatedFits()) {
    SCOPED_TRACE(fit.Name());
    const CNuPointArray points = RandomMotion(random, 20.0)(fit.points(random, 40));
    CNuAssociation association(points);
    association.SetDetails(NuDetailAll);
    Fitted found;
    const CNuAssociationReport report = fit.associate(association, kTol, 1000, found);
    report.Require();
    ExpectSpread(association, report, fit.criterion == kLeastSquares, 300, 0.2);
  }
}

// A monitor sees the search go on after the steps of the fit, with a gap that never grows, and may end it: then the
// feature stays, and the bound is that so far. What a monitor throws passes through.
TEST(Association, ProofsAreWatched) {
  struct Watch {
    long fitSteps = 0;
    long most = 1000000;
    bool throws = false;
    long seen = 0;
    long boxes = 0;
    double bound = 0.0;
    double gap = 0.0;
  };
  const NuStepMonitor monitor = [](void* context, long step, double objective, double gap) {
    Watch& watch = *static_cast<Watch*>(context);
    if (++watch.seen <= watch.fitSteps) return NuTrue;
    EXPECT_GT(step, watch.boxes);
    EXPECT_GE(objective - gap, watch.bound);
    watch.boxes = step;
    watch.bound = objective - gap;
    watch.gap = gap;
    if (watch.throws) throw 7;
    return watch.seen < watch.most ? NuTrue : NuFalse;
  };
  Random random(51);
  const CNuPointArray points = BoxCloud(random, 40, 3.0, 2.0, 1.0);
  constexpr long budget = 10000;
  const auto radius = [](const auto& feature) {
    if constexpr (requires { feature.GetRadius(); })
      return feature.GetRadius();
    else
      return feature.GetMinorRadius();
  };
  const auto expectWatched = [&](ENuCriterion criterion, auto feature) {
    const auto start = feature;
    CNuAssociation association(points);
    association.SetDetails(NuDetailAll);
    Watch watch;
    watch.fitSteps = association.Fit(criterion, &feature).GetSteps();
    const Watch fresh = watch;
    association.SetMonitor(monitor, &watch);
    EXPECT_EQ(association.ProveGlobally(criterion, &feature, budget).GetEnd(), NuConverged);
    EXPECT_GT(watch.seen, watch.fitSteps);
    EXPECT_LE(watch.boxes, budget);
    watch = fresh;
    watch.most = watch.fitSteps + 1;
    feature = start;
    const CNuAssociationReport report = association.ProveGlobally(criterion, &feature, budget);
    EXPECT_EQ(report.GetEnd(), NuCancelled);
    EXPECT_EQ(radius(feature), radius(start));
    EXPECT_EQ(report.IsGlobal(), NuFalse);
    EXPECT_EQ(report.GetBound(), watch.bound);
    EXPECT_EQ(report.GetGap(), watch.gap);
    EXPECT_NE(std::string(report.Explain()).find("cancelled"), std::string::npos);
    watch = fresh;
    watch.throws = true;
    EXPECT_THROW(association.ProveGlobally(criterion, &feature, budget), int);
  };
  expectWatched(NuMinimumZone, CNuSphSurf(1.0));
  expectWatched(NuMinimumZone, CNuCylSurf(1.0));
  expectWatched(NuMinimumZone, CNuTorSurf(2.0, 1.0));
}

CNuPointArray NappesCloud(Random& random, int n) {
  CNuPointArray points(n);
  for (int i = 0; i < n; ++i) {
    const double angle = 0.7 * i, z = random.Uniform(0.5, 1.0) * (i % 2 ? 1.0 : -1.0);
    const double r = 0.5 * std::fabs(z) + 1e-3 * random.Bell();
    points.Add({r * std::cos(angle), r * std::sin(angle), z});
  }
  return points;
}

// From a cone nearby, with points on both nappes, to the optimum of all; and what is fixed at its optimum leaves it.
TEST(Association, StartsAndRefitsOnBothNappes) {
  Random random(56);
  const CNuPointArray points = RandomMotion(random, 20.0)(NappesCloud(random, 80));
  const CNuPointArray some = points.SubArray(0, 49), rest = points.SubArray(50, 79);
  for (const ENuCriterion criterion : {NuLeastSquares, NuMinimumZone}) {
    SCOPED_TRACE(NuCriterionName(criterion));
    CNuConSurf nearby(30.0), optimum(30.0), refitted(30.0), held(30.0);
    CNuAssociation association(some), whole(points), angle(points);
    association.Fit(criterion, &nearby).Require();
    const CNuAssociationReport best = whole.Fit(criterion, &optimum);
    refitted = nearby;
    association.Add(rest);
    EXPECT_NEAR(association.Refit(criterion, &refitted).GetForm(), best.GetForm(), 1e-9);
    association.StartFrom(nearby);
    const CNuAssociationReport report = association.Fit(criterion, &nearby);
    angle.FixSemiAngle(optimum.GetSemiAngle());
    const CNuAssociationReport same = angle.Fit(criterion, &held);
    for (const CNuAssociationReport* other : {&report, &same}) {
      ASSERT_EQ(other->GetEnd(), NuConverged);
      EXPECT_NEAR(other->GetForm(), best.GetForm(), 1e-9);
      EXPECT_NEAR(other->GetRootMeanSquare(), best.GetRootMeanSquare(), criterion == NuLeastSquares ? 1e-9 : 1e-5);
    }
    for (const CNuConSurf* cone : {&refitted, &nearby, &held}) {
      EXPECT_NEAR(cone->GetSemiAngle(), optimum.GetSemiAngle(), 1e-6);
      EXPECT_LE(cone->GetApex().DistanceTo(optimum.GetApex()), 1e-7);
    }
  }
}

// Points on both nappes of a cone: the report says how little is known after a few boxes.
TEST(Association, GapsOfNappesAreHonest) {
  Random random(52);
  const CNuPointArray points = NappesCloud(random, 60);
  for (const int details : {int{NuDetailNone}, int{NuDetailDeviations}}) {
    CNuAssociation association(points);
    association.SetDetails(details);
    CNuConSurf cone(30.0);
    double zone = 0.0;
    const CNuAssociationReport report = association.ProveGlobally(NuMinimumZone, &cone, 1000);
    report.Require();
    CNuConSurf(30.0).FitMinZone(points, &zone, NuGetLengthTol(), 1000);
    EXPECT_EQ(report.IsGlobal(), NuFalse);
    EXPECT_GE(report.GetBound(), 0.0);
    EXPECT_NEAR(report.GetBound() + report.GetGap(), zone, 1e-12);
  }
}

// Every cause of every fit that has it: the sentence names what is wrong, and the remedy is one for it.
TEST(Association, FailuresSayWhatHelps) {
  enum Trouble { kNone, kSide, kRadius, kSteps };
  Random random(50);
  std::map<std::string, int> heard;
  const auto expect = [&](const AnyFit& fit, const CNuPointArray& points, double tol, Trouble trouble,
                          std::initializer_list<const char*> says) {
    CNuAssociation association(points);
    association.SetDetails(NuDetailExplanation);
    if (trouble == kSide) association.RestrictToMaterialSide(NuOutside);
    if (trouble == kRadius) association.FixRadius(1e-3);
    Fitted found;
    const CNuAssociationReport report = fit.associate(association, tol, trouble == kSteps ? 1 : 1000, found);
    if (report.HasConverged() == NuTrue) return;
    EXPECT_TRUE(static_cast<const Shape&>(found) == fit.start);
    const std::string text = report.Explain();
    const auto isSaid = [&](const char* words) { return text.find(words) != std::string::npos; };
    EXPECT_TRUE(std::any_of(says.begin(), says.end(), isSaid)) << report.GetCause() << ": " << text;
    for (const char* words : says) heard[words] += isSaid(words) ? 1 : 0;
  };
  const char* const place = "All 20 points are at one place";
  const char* const straight = "of one line of the length";
  const char* const flat = "farther off their plane";
  const char* const tolerance = "lower the tolerance";
  const CNuPointArray one = PointsOf({{1.0, 2.0}}), line = RandomMotion(random, 9.0)(LineCloud(random, 20, 5.0, 0.0)),
                      plane = RandomMotion(random, 9.0)(PlaneCloud(random, 30, 5.0, 3.0, 0.0));
  CNuPointArray same(20);
  for (int i = 0; i < 20; ++i) same.Add(one[0]);
  for (const AnyFit& fit : AssociatedFits()) {
    SCOPED_TRACE(fit.Name());
    const bool isLine = std::string(fit.className) == "CNuLine",
               isSurface = std::string(fit.className).find("Surf") != std::string::npos;
    const CNuPointArray points = fit.points(random, 40);
    CNuPointArray bad = points;
    bad[7].y() = kNaN;
    expect(fit, CNuPointArray(0), 1e-9, kNone, {"There are 0 points, and the feature needs"});
    expect(fit, one, 1e-9, kNone, {"There is 1 point, and the feature needs"});
    expect(fit, bad, 1e-9, kNone, {"Point 7 has a coordinate that is not finite"});
    expect(fit, same, 1e-9, kNone, {place});
    expect(fit, points, 1e3, kNone, {tolerance});
    expect(fit, points, kTol, kSteps, {"The limit of 1 steps was reached: raise it"});
    if (!isLine) expect(fit, line, 1e-9, kNone, {straight});
    if (isSurface) expect(fit, plane, 1e-9, kNone, {flat, straight});
  }
  const CNuPointArray thick = BoxCloud(random, 30, 5.0, 4.0, 3.0), cap = SphereCloud(random, 40, 5.0, 20.0, 0.01);
  for (const Criterion by : {kCircumscribed, kInscribed})
    expect(TheFit("CNuCircle", by), thick, 1e-9, kNone, {"above the tolerance of 1e-09 for one plane"});
  expect(TheFit("CNuSphSurf", kInscribed), cap, 1e-9, kNone, {"measure all around it"});
  expect(TheFit("CNuSphSurf", kInscribed), cap, 1e-9, kRadius, {"release a parameter that contradicts the points"});
  expect(TheFit("CNuHyperbola"), CircleCloud(random, 30, 5.0, 360.0, 0.0), 1e-9, kNone, {"measure where it curves"});
  const CNuPointArray nearlyFlat = PlaneCloud(random, 30, 5.0, 3.0, 1e-6);
  for (const char* surface : {"CNuSphSurf", "CNuCylSurf"})
    expect(TheFit(surface), nearlyFlat, 1e-9, kSide, {"has all of them on one side"});
  for (const char* words : {place, straight, flat, tolerance, "measure all around it", "measure where it curves",
                            "above the tolerance of 1e-09 for one plane", "The limit of 1 steps was reached: raise it",
                            "Point 7 has a coordinate that is not finite", "has all of them on one side",
                            "release a parameter that contradicts the points"})
    EXPECT_GE(heard[words], 1) << words;
}

}  // namespace
