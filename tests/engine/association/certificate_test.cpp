#include "nu/engine/association/certificate.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "nu/association/internal/feature_classes.h"
#include "nu/engine/association/covariance.h"
#include "nu/engine/shapes/incidence.h"
#include "nu/geometry/internal/point_set.h"
#include "support/clouds.h"
#include "support/reference_data.h"

namespace {

using namespace nu::internal;
using namespace nu::test;

constexpr double kLength = 1e-11;  // of features of a size of about 10, up to 30 from the origin

// The feature of the boundaries that a criterion compares: a torus by its circle.
double ValueOf(const CertificateQuestion& q, const Feature& feature) {
  double low = kInf, high = -kInf;
  for (std::size_t i = 0; i < q.points.Size(); ++i) {
    const double d = DeviationOf(feature, LoadVec3(q.points[i]));
    low = std::min(low, d);
    high = std::max(high, d);
  }
  if (feature.kind == FeatureKind::torus) return high + feature.size[1];
  if (q.criterion == ContactCriterion::zone) return std::max(high, -low);
  return q.criterion == ContactCriterion::circumscribed ? high + feature.size[0] : -(low + feature.size[0]);
}

Feature MovedBy(const CertificateQuestion& q, Random& random, double distance) {
  const double extent = [&] {
    double farthest = 0.0;
    for (std::size_t i = 0; i < q.points.Size(); ++i) {
      const Vec3 from = LoadVec3(q.points[i]) - q.feature.frame.origin;
      farthest = std::max(farthest, std::sqrt(Dot(from, from)));
    }
    return farthest;
  }();
  double step[kUnknowns] = {};
  double norm = 0.0;
  for (int k = 0; k < kUnknowns; ++k) {
    if (UnknownsOf(q.feature.kind) >> k & 1U) step[k] = random.Bell();
    norm += step[k] * step[k];
  }
  for (int k = 0; k < kUnknowns; ++k) {
    const bool isAngle = (k >= kTiltX && k <= kTurn) || (k == kSize1 && q.feature.kind == FeatureKind::cone);
    step[k] *= distance / std::sqrt(norm) / (isAngle ? extent : 1.0);
  }
  return Moved(q.feature, step);
}

CertificateQuestion Ask(PointView points, const Feature& feature, ContactCriterion criterion, ContactAccount& account,
                        double length = kLength) {
  account = FindContacts(points, feature, criterion, ~0U, 0.5 * length);
  return {points, feature, criterion, ~0U, account.contact, account.count, length};
}

// Holds; says nothing that a feature of its neighbourhood refutes; does not hold for what is worse.
void ExpectCertified(const CNuPointArray& points, const Feature& found, ContactCriterion criterion, Random& random,
                     bool isGlobal = false) {
  ContactAccount account;
  CertificateQuestion q = Ask(ViewOf(points), CentredOn(ViewOf(points), found), criterion, account);
  const Certificate certificate = CheckCertificate(q);
  ASSERT_EQ(certificate.failed, CertificateCheck::passed) << certificate.balance << " " << certificate.offBoundary;
  EXPECT_LE(certificate.gap, 1e-13);
  EXPECT_EQ(certificate.isGlobal, isGlobal);
  EXPECT_GT(certificate.radius, 1e-6);
  const double value = ValueOf(q, q.feature);
  for (int k = 0; k < 40; ++k) {
    const double distance = std::min(certificate.radius, 1.0) * std::pow(0.1, k % 4);
    EXPECT_GE(ValueOf(q, MovedBy(q, random, distance)), value - certificate.gap - 1e-13);
  }
  for (int k = 0; k < 5; ++k) {
    const Feature moved = MovedBy(q, random, 10.0 * kLength);
    CertificateQuestion stored = q;
    stored.feature = moved;
    EXPECT_NE(CheckCertificate(stored).failed, CertificateCheck::passed);
    // With contacts of its own the moved feature holds only if it is as good.
    if (ValueOf(q, moved) <= value + kLength) continue;
    const CertificateQuestion own = Ask(q.points, moved, criterion, account);
    EXPECT_NE(CheckCertificate(own).failed, CertificateCheck::passed);
  }
}

TEST(Certificate, HoldsForTheOptimumAlone) {
  constexpr auto kZone = ContactCriterion::zone;
  constexpr auto kOuter = ContactCriterion::circumscribed;
  constexpr auto kInner = ContactCriterion::inscribed;
  for (std::uint64_t seed = 1; seed <= 4; ++seed) {
    Random random(seed);
    const Motion motion = RandomMotion(random, 20.0);
    const int n = seed == 1 ? 600 : 40;
    double zone;
    const auto certify = [&](const char* what, const auto& fitted, const CNuPointArray& points,
                             ContactCriterion criterion, bool isGlobal = false) {
      SCOPED_TRACE(what + std::to_string(seed));
      ExpectCertified(points, FeatureOf(fitted), criterion, random, isGlobal);
    };
    CNuPointArray points = motion(LineCloud(random, n, 20.0, 0.05));
    CNuLine line;
    line.FitMinZone(points, &zone, 0.0, 1000), certify("line", line, points, kZone);
    points = motion(PlaneCloud(random, n, 20.0, 12.0, 0.01));
    CNuPlane plane;
    plane.FitMinZone(points, &zone, 0.0), certify("plane", plane, points, kZone, true);
    points = motion(CircleCloud(random, n, 10.0, 360.0, 0.05));
    CNuCircle circle(1.0);
    circle.FitMinZone(points, &zone, 1e-9, 1000), certify("circle", circle, points, kZone);
    circle.FitMin(points, 1e-9), certify("circle around", circle, points, kOuter, true);
    circle.FitMax(points, 1e-9), certify("circle within", circle, points, kInner);
    points = motion(SphereCloud(random, n, 10.0, 180.0, 0.05));
    CNuSphSurf sphere(1.0);
    sphere.FitMinZone(points, &zone, 0.0, 1000), certify("sphere", sphere, points, kZone);
    sphere.FitMin(points, 0.0), certify("sphere around", sphere, points, kOuter, true);
    sphere.FitMax(points, 0.0), certify("sphere within", sphere, points, kInner);
    points = motion(CylinderCloud(random, n, 10.0, 12.0, 360.0, 0.05));
    CNuCylSurf cylinder(1.0);
    cylinder.FitMinZone(points, &zone, 0.0, 1000), certify("cylinder", cylinder, points, kZone);
    cylinder.FitMin(points, 0.0, 1000), certify("cylinder around", cylinder, points, kOuter);
    cylinder.FitMax(points, 0.0, 1000), certify("cylinder within", cylinder, points, kInner);
    points = motion(ConeCloud(random, n, 20.0, 8.0, 10.0, 360.0, 0.05));
    CNuConSurf cone(1.0);
    cone.FitMinZone(points, &zone, 0.0, 1000), certify("cone", cone, points, kZone);
    points = motion(TorusCloud(random, n, 10.0, 1.0, 300.0, 360.0, 0.05));
    CNuTorSurf torus(2.0, 1.0);
    torus.FitMin(points, 0.0, 1000), certify("torus", torus, points, kOuter);
  }
}

// How far points of a circle may be off its plane; other features take it for points without a shape.
template<class Class>
constexpr double kPlanar = std::is_same_v<Class, CNuCircle> ? 1e-6 : 0.0;

template<class Class>
Feature FitBy(const CNuPointArray& points, const std::string& criterion) {
  double zone;
  Class feature = AnyOf<Class>();
  if constexpr (std::is_same_v<Class, CNuPlane>) {
    feature.FitMinZone(points, &zone, 0.0);
  } else if constexpr (requires { feature.FitMax(points, 0.0); }) {
    if (criterion == "minimum-circumscribed") feature.FitMin(points, kPlanar<Class>);
    if (criterion == "maximum-inscribed") feature.FitMax(points, kPlanar<Class>);
  } else if constexpr (std::is_same_v<Class, CNuTorSurf>) {
    feature.FitMin(points, 0.0, 1000);
  } else if constexpr (requires { feature.FitMax(points, 0.0, 1L); }) {
    if (criterion == "minimum-circumscribed") feature.FitMin(points, 0.0, 1000);
    if (criterion == "maximum-inscribed") feature.FitMax(points, 0.0, 1000);
  }
  if constexpr (requires { feature.FitMinZone(points, &zone, 0.0, 1L); })
    if (criterion == "minimum-zone") feature.FitMinZone(points, &zone, kPlanar<Class>, 1000);
  return FeatureOf(feature);
}

TEST(Certificate, HoldsForEveryReferenceSet) {
  int checked = 0;
  for (const char* prefix : {"mz-", "mc-", "mi-", "hard-m", "lit-m"}) {
    for (const auto& file : ReferenceFiles(prefix)) {
      const Json set = ReadReference(file);
      // Where the library has a feature by convention: a sphere about points in one plane, or on one line.
      const std::string name = set["name"].Text();
      if (name == "mz-sphere-06" || name == "mc-sphere-06") continue;
      CNuPointArray points(1);
      double size = 0.0;
      for (std::size_t i = 0; i < set["points"].Size(); ++i) {
        const std::vector<double> p = set["points"][i].Numbers();
        points.Add({p[0], p[1], p[2]});
        size = std::max({size, std::fabs(p[0]), std::fabs(p[1]), std::fabs(p[2])});
      }
      const std::string kind = set["feature"].Text(), criterion = set["criterion"].Text();
      const auto fit = kind == "plane"      ? FitBy<CNuPlane>
                       : kind == "circle"   ? FitBy<CNuCircle>
                       : kind == "sphere"   ? FitBy<CNuSphSurf>
                       : kind == "cylinder" ? FitBy<CNuCylSurf>
                       : kind == "cone"     ? FitBy<CNuConSurf>
                       : kind == "torus"    ? FitBy<CNuTorSurf>
                                            : FitBy<CNuLine>;
      const ContactCriterion by = criterion == "minimum-zone"            ? ContactCriterion::zone
                                  : criterion == "minimum-circumscribed" ? ContactCriterion::circumscribed
                                                                         : ContactCriterion::inscribed;
      // The parameters are rounded where they are stored; the apex of a cone may be far away. So are the points of a
      // part far from the origin, where some come near the boundary that do not hold the feature.
      for (const double far : {0.0, 4e3 * set["size"].Number(), 5e4 * set["size"].Number()}) {
        SCOPED_TRACE(name + " at " + std::to_string(far));
        for (int i = 0; i < points.GetSize(); ++i) points[i].Translate(far, far, far);
        const Feature stored = fit(points, criterion);
        const Vec3 from = stored.frame.origin - Vec3{far, far, far};
        const double length = 16.0 * kEps * (size + far + stored.size[0] + Norm(from));
        ContactAccount account;
        const CertificateQuestion q = Ask(ViewOf(points), CentredOn(ViewOf(points), stored), by, account, length);
        const Certificate found = CheckCertificate(q);
        EXPECT_EQ(found.failed, CertificateCheck::passed) << found.offBoundary << " of " << q.length;
        ++checked;
      }
    }
  }
  EXPECT_GT(checked, 175);
}

// The corners of a square about the origin and a circle of the radius.
struct Square {
  explicit Square(double radius) {
    feature.size[0] = radius;
    question = {ViewOf(points), feature, ContactCriterion::circumscribed, ~0U, contacts, 4, 1e-12};
  }
  CertificateCheck Failed() {
    question.feature = feature;
    question.points = ViewOf(points);
    result = CheckCertificate(question);
    return result.failed;
  }
  CNuPointArray points = PointsOf({{3.0, 4.0}, {-4.0, 3.0}, {-3.0, -4.0}, {4.0, -3.0}});
  Feature feature{FeatureKind::circle, AxisFrame::Along({}, {0.0, 0.0, 1.0}), {5.0, 0.0}};
  ContactPoint contacts[4] = {{0, 1.0, 0.25}, {1, 1.0, 0.25}, {2, 1.0, 0.25}, {3, 1.0, 0.25}};
  CertificateQuestion question;
  Certificate result;
};

TEST(Certificate, NamesTheCheckThatFails) {
  const auto failedAfter = [](auto change) {
    Square square(5.0);
    change(square);
    return square.Failed();
  };
  EXPECT_EQ(failedAfter([](Square&) {}), CertificateCheck::passed);
  EXPECT_EQ(failedAfter([](Square& s) { s.feature.size[0] = 5.0 - 1e-11; }), CertificateCheck::boundary);
  EXPECT_EQ(failedAfter([](Square& s) { s.feature.size[0] = 5.0 + 1e-11; }), CertificateCheck::contacts);
  EXPECT_EQ(failedAfter([](Square& s) { s.contacts[0].multiplier = -0.25; }), CertificateCheck::multipliers);
  EXPECT_EQ(failedAfter([](Square& s) { s.contacts[0].multiplier = 0.5; }), CertificateCheck::multipliers);
  EXPECT_EQ(failedAfter([](Square& s) { s.contacts[0].multiplier = kNaN; }), CertificateCheck::multipliers);
  EXPECT_EQ(failedAfter([](Square& s) { s.question.count = 0; }), CertificateCheck::multipliers);
  EXPECT_EQ(failedAfter([](Square& s) { s.question.count = 1, s.contacts[0].multiplier = 1.0; }),
            CertificateCheck::balance);
  EXPECT_EQ(failedAfter([](Square& s) { s.points[2].x() = kNaN; }), CertificateCheck::finite);
  EXPECT_EQ(failedAfter([](Square& s) { s.feature.frame.z.x = kInf; }), CertificateCheck::finite);
  EXPECT_EQ(failedAfter([](Square& s) { s.feature.kind = FeatureKind::plane; }), CertificateCheck::finite);
  // Two opposite points balance; a circle between them grows when it leaves the line through them. All four hold it,
  // though two of them have no multiplier.
  const auto heldByTwo = [](Square& s) {
    s.question.criterion = ContactCriterion::inscribed;
    for (int k = 0; k < 4; ++k) s.contacts[k].multiplier = k % 2 == 0 ? 0.5 : 0.0;
  };
  EXPECT_EQ(failedAfter(heldByTwo), CertificateCheck::passed);
  // A point inside that has no multiplier claims nothing.
  EXPECT_EQ(failedAfter([&](Square& s) {
              heldByTwo(s), s.question.criterion = ContactCriterion::circumscribed, s.points[1] *= 0.5;
            }),
            CertificateCheck::passed);
  EXPECT_EQ(failedAfter([&](Square& s) {
              heldByTwo(s), s.points = PointsOf({s.points[0], s.points[2]}), s.question.count = 2,
                            s.contacts[1] = {1, -1.0, 0.5};
            }),
            CertificateCheck::growth);
}

// Of a known direction the smallest cylinder around points is the circle around them as it sees them: no direction is
// compared, and the proof is for all places. Next to it there are smaller ones.
TEST(Certificate, LeavesFixedUnknowns) {
  Random random(11);
  const CNuPointArray points = BoxCloud(random, 50, 10.0, 8.0, 6.0);
  CNuPointArray seen(50);
  for (int i = 0; i < 50; ++i) seen.Add({points[i].x(), points[i].y()});
  CNuCircle circle(1.0);
  circle.FitMin(seen, 1e-9);
  Feature cylinder = FeatureOf(circle);
  cylinder.kind = FeatureKind::cylinder;
  constexpr UnknownMask kShifts = 1U << kShiftX | 1U << kShiftY;
  const ContactAccount account =
      FindContacts(ViewOf(points), cylinder, ContactCriterion::circumscribed, kShifts, 0.5 * kLength);
  CertificateQuestion q{ViewOf(points), cylinder, ContactCriterion::circumscribed, kShifts, account.contact,
                        account.count,  kLength};
  EXPECT_TRUE(CheckCertificate(q).isGlobal);
  q.free = ~0U;
  EXPECT_NE(CheckCertificate(q).failed, CertificateCheck::passed);
}

}  // namespace
