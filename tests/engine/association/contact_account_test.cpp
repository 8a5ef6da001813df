#include "nu/engine/association/contact_account.h"

#include <gtest/gtest.h>

#include "nu/engine/association/covariance.h"
#include "nu/geometry/internal/point_set.h"
#include "nu/geometry/plane.h"
#include "nu/surfaces/cylinder.h"
#include "nu/surfaces/sphere.h"
#include "support/clouds.h"

namespace {

using namespace nu::internal;
using namespace nu::test;

constexpr UnknownMask kAll = ~0U;

Feature About(FeatureKind kind, const CNuPoint& p, const CNuVector& d, double size) {
  return {kind, AxisFrame::Along({p.x(), p.y(), p.z()}, {d[0], d[1], d[2]}), {size, 0.0}};
}

// At an optimum the multipliers balance the gradients; shuffled and repeated points give the same contacts.
void ExpectHeld(const CNuPointArray& points, const Feature& found, ContactCriterion criterion, const char* what) {
  const Feature feature = CentredOn(ViewOf(points), found);
  const ContactAccount account = FindContacts(ViewOf(points), feature, criterion, kAll);
  EXPECT_LT(account.balance, 1e-13) << what;
  EXPECT_EQ(account.touching, static_cast<std::size_t>(account.count)) << what;
  double sum = 0.0;
  for (int i = 0; i < account.holding; ++i) {
    const ContactPoint& contact = account.contact[i];
    sum += contact.multiplier;
    EXPECT_GT(contact.multiplier, 0.0) << what;
    EXPECT_TRUE(criterion == ContactCriterion::zone ||
                (contact.side > 0.0) == (criterion == ContactCriterion::circumscribed));
  }
  EXPECT_NEAR(sum, 1.0, 4 * kEps) << what;

  Random random(3);
  const int count = points.GetSize();
  CNuPointArray twice = Shuffled(random, points);
  for (int i = 0; i < count; ++i) twice.Add(points[i]);
  const ContactAccount again = FindContacts(ViewOf(twice), feature, criterion, kAll);
  ASSERT_EQ(again.holding, account.holding) << what;
  EXPECT_EQ(again.touching, 2 * account.touching) << what;
  for (int i = 0; i < again.holding; ++i) {
    const ContactPoint& contact = again.contact[i];
    EXPECT_LT(contact.index, static_cast<std::size_t>(count)) << what;
    bool isKnown = false;
    for (int k = 0; k < account.holding; ++k) {
      const ContactPoint& known = account.contact[k];
      isKnown = isKnown || (twice[static_cast<int>(contact.index)].x() == points[static_cast<int>(known.index)].x() &&
                            std::fabs(contact.multiplier - known.multiplier) < 1e-12);
    }
    EXPECT_TRUE(isKnown) << what;
  }
}

TEST(ContactAccount, BalancesEveryMinimaxFeature) {
  for (std::uint64_t seed = 1; seed <= 5; ++seed) {
    Random random(seed);
    const Motion motion = RandomMotion(random, 50.0);
    double zone;
    const CNuPointArray plate = motion(PlaneCloud(random, 60, 10.0, 6.0, 1e-3));
    CNuPlane plane;
    plane.FitMinZone(plate, &zone, 1e-12);
    ExpectHeld(plate, About(FeatureKind::plane, plane.GetPoint(), plane.GetNormal(), 0.0), ContactCriterion::zone,
               "plane");
    const CNuPointArray ball = motion(SphereCloud(random, 60, 5.0, 180.0, 1e-3));
    CNuSphSurf sphere(1.0);
    const auto expect = [&](ContactCriterion criterion) {
      ExpectHeld(ball, About(FeatureKind::sphere, sphere.GetCentre(), CNuVector(0.0, 0.0, 1.0), sphere.GetRadius()),
                 criterion, "sphere");
    };
    sphere.FitMin(ball, 1e-12), expect(ContactCriterion::circumscribed);
    sphere.FitMax(ball, 1e-12), expect(ContactCriterion::inscribed);
    sphere.FitMinZone(ball, &zone, 1e-12, 100), expect(ContactCriterion::zone);
    const CNuPointArray bore = motion(CylinderCloud(random, 60, 5.0, 20.0, 360.0, 1e-3));
    CNuCylSurf cylinder(1.0);
    cylinder.FitMinZone(bore, &zone, 1e-12, 100);
    const Feature held =
        About(FeatureKind::cylinder, cylinder.GetAxisPoint(), cylinder.GetAxisDirection(), cylinder.GetRadius());
    ExpectHeld(bore, held, ContactCriterion::zone, "cylinder");
    // Moved off the optimum by 1e-6, the other contacts no longer touch and the rest does not balance.
    const Feature off = Moved(CentredOn(ViewOf(bore), held), {1e-6, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0});
    EXPECT_GT(FindContacts(ViewOf(bore), off, ContactCriterion::zone, kAll).balance, 0.01);
  }
}

// The corners of a cube touch a sphere all at once, and any two opposite ones hold it. A known centre needs one.
TEST(ContactAccount, ChoosesAmongManyContacts) {
  CNuPointArray cube(80);
  for (int i = 0; i < 80; ++i) cube.Add({i & 1 ? 1.0 : -1.0, i & 2 ? 1.0 : -1.0, i & 4 ? 1.0 : -1.0});
  const Feature sphere = About(FeatureKind::sphere, {0.0, 0.0, 0.0}, CNuVector(0.0, 0.0, 1.0), std::sqrt(3.0));
  const ContactAccount all = FindContacts(ViewOf(cube), sphere, ContactCriterion::circumscribed, kAll);
  EXPECT_EQ(all.touching, 80U);
  EXPECT_EQ(all.count, 8);
  EXPECT_LT(all.balance, 1e-15);
  EXPECT_EQ(all.contact[0].index + all.contact[1].index, 7U);
  const ContactAccount one = FindContacts(ViewOf(cube), sphere, ContactCriterion::circumscribed, 1U << kSize0);
  EXPECT_EQ(one.holding, 1);
  EXPECT_EQ(one.contact[0].multiplier, 1.0);
  cube[3].x() = kNaN;
  EXPECT_FALSE(FindContacts(ViewOf(cube), sphere, ContactCriterion::zone, kAll).finite);
}

}  // namespace
