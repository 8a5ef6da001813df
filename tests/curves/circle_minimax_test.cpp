#include <gtest/gtest.h>

#include <cmath>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"
#include "support/minimax_laws.h"

namespace {

using namespace nu::test;

// The centre equidistant from three points in z = 0; not finite when they are on one line.
CNuPoint EquidistantFrom(const CNuPoint& o, const CNuPoint& p, const CNuPoint& q) {
  const double ax = p.x() - o.x(), ay = p.y() - o.y(), bx = q.x() - o.x(), by = q.y() - o.y();
  const double twice = 2.0 * (ax * by - ay * bx), aa = ax * ax + ay * ay, bb = bx * bx + by * by;
  return {o.x() + (by * aa - ay * bb) / twice, o.y() + (ax * bb - bx * aa) / twice, 0.0};
}

// Up to 12 points in z = 0: scattered, on a lattice, on a circle, on a line but for one, and with copies among them.
CNuPointArray SmallSet(Random& random, int kind) {
  const int n = 3 + random.Below(10);
  CNuPointArray points(n);
  for (int i = 0; i < n; ++i) {
    const double t = random.Uniform(0.0, 360.0) * kDegree;
    const double x = random.Uniform(-1.0, 1.0);
    switch (kind % 5) {
      case 0:
        points.Add({x, random.Uniform(-1.0, 1.0)});
        break;
      case 1:
        points.Add({1.0 * random.Below(4), 1.0 * random.Below(4)});
        break;
      case 2:
        points.Add({3.0 * std::cos(t), 3.0 * std::sin(t)});
        break;
      case 3:
        points.Add({x, i == n / 2 ? random.Uniform(0.1, 1.0) : 0.0});
        break;
      default:
        points.Add(i > 2 && random.Below(2) == 0 ? points[random.Below(i)] : CNuPoint(x, std::sin(t)));
        break;
    }
  }
  return points;
}

TEST(CircumscribedCircle, AgreesWithAllSupportSets) {
  Random random(501);
  for (int run = 0; run < 3000; ++run) {
    const CNuPointArray points = SmallSet(random, run);
    double best = kInf;
    const auto judge = [&](const CNuPoint& centre) {
      const double reach = DistancesFrom(centre, points).farthest;
      if (reach < best) best = reach;
    };
    for (int i = 0; i < points.GetSize(); ++i) {
      for (int j = 0; j < i; ++j) {
        judge(points[i].MidPoint(points[j]));
        for (int k = 0; k < j; ++k) judge(EquidistantFrom(points[i], points[j], points[k]));
      }
    }
    CNuCircle circle(7.0);
    circle.FitMin(points, 1e-12);
    ASSERT_NEAR(circle.GetRadius(), best, 1e-14 * best) << run;
    ASSERT_NEAR(DistancesFrom(circle.GetCentre(), points).farthest, circle.GetRadius(), 4e-15) << run;
  }
}

// One point, coincident points and points on one line have a circle, too.
TEST(CircumscribedCircle, OfPointsWithoutAPlane) {
  CNuCircle circle(7.0);
  for (const int copies : {1, 2, 5}) {
    CNuPointArray points(copies);
    for (int i = 0; i < copies; ++i) points.Add({1, 2, 3});
    circle.FitMin(points, 1e-9);
    EXPECT_EQ(circle.GetRadius(), 0.0);
    EXPECT_EQ(circle.GetCentre().DistanceTo(CNuPoint(1, 2, 3)), 0.0);
  }
  circle.FitMin(PointsOf({{1, 1, 0}, {3, 3, 2}, {0, 0, -1}, {2, 2, 1}}), 1e-9);
  EXPECT_NEAR(circle.GetRadius(), 0.5 * std::sqrt(27.0), 1e-15);
  EXPECT_NEAR(circle.GetCentre().DistanceTo(CNuPoint(1.5, 1.5, 0.5)), 0.0, 1e-15);
  EXPECT_NEAR(circle.GetNormal() % CNuVector(1, 1, 1), 0.0, 1e-15);
  EXPECT_NEAR(circle.GetXaxis() % circle.GetNormal(), 0.0, 1e-15);
  circle.FitMin(PointsOf({{0, 0}, {4, 2}}), 1e-9);
  EXPECT_EQ(circle.GetNormal().IsEqual(CNuVector(0, 0, 1), 1e-15), NuTrue) << "stays in the plane of its points";
}

// Sizes whose squares overflow or vanish, many blocks of points, an order that makes the circle grow all the way.
TEST(CircumscribedCircle, OfAnySizeAndOrder) {
  for (const double size : {1e-200, 1e-3, 1e5, 1e200}) {
    CNuPointArray points(5000);
    for (int i = 0; i < 5000; ++i) {
      const double r = size * (i + 1) / 5000;
      points.Add({r * std::cos(0.01 * i), r * std::sin(0.01 * i), 0.0});
    }
    CNuCircle circle(1.0);
    circle.FitMin(points, 0.0);
    EXPECT_NEAR(circle.GetRadius() / size, 0.977, 0.02);
    EXPECT_NEAR(DistancesFrom(circle.GetCentre(), points).farthest / circle.GetRadius(), 1.0, 1e-15);
  }
}

// The largest empty circle among the circles through three points and, centred on the hull, through two.
double LargestEmptyRadius(const CNuPointArray& points) {
  CNuIntArray hull(0);
  points.ConvexHull(&hull);
  const int corners = hull.GetSize();
  double best = 0.0;
  const auto judge = [&](const CNuPoint& centre) {
    for (int k = 0; k < corners; ++k) {
      const CNuPoint& a = points[hull[k]];
      const CNuPoint& b = points[hull[(k + 1) % corners]];
      const double side = (b.x() - a.x()) * (centre.y() - a.y()) - (b.y() - a.y()) * (centre.x() - a.x());
      if (!(side >= -1e-13 * a.DistanceTo(b))) return;
    }
    best = std::max(best, DistancesFrom(centre, points).nearest);
  };
  for (int i = 0; i < points.GetSize(); ++i) {
    for (int j = 0; j < i; ++j) {
      for (int k = 0; k < j; ++k) judge(EquidistantFrom(points[i], points[j], points[k]));
      const CNuPoint middle = points[i].MidPoint(points[j]);
      const double nx = points[i].y() - points[j].y(), ny = points[j].x() - points[i].x();
      for (int k = 0; k < corners; ++k) {
        const CNuPoint& a = points[hull[k]];
        const double dx = points[hull[(k + 1) % corners]].x() - a.x(), dy = points[hull[(k + 1) % corners]].y() - a.y();
        const double t = ((a.x() - middle.x()) * dy - (a.y() - middle.y()) * dx) / (nx * dy - ny * dx);
        judge({middle.x() + t * nx, middle.y() + t * ny});
      }
    }
  }
  return best;
}

TEST(InscribedCircle, AgreesWithAllSupportSets) {
  Random random(502);
  for (int run = 0; run < 2000; ++run) {
    const CNuPointArray points = SmallSet(random, run);
    CNuCircle circle(7.0);
    if (circle.FitMaxEx(points, 1e-12) != NuFitSuccess) continue;  // on one line
    const double best = LargestEmptyRadius(points);
    ASSERT_NEAR(circle.GetRadius(), best, 1e-12 * best) << run;
    ASSERT_NEAR(DistancesFrom(circle.GetCentre(), points).nearest, circle.GetRadius(), 1e-14 * best) << run;
  }
}

// Twice the points have the same circle, though of many points only few are solved: a rough ring, an arc, an oval with
// all points on its hull, two clusters, a square with sides of equal distance, a filled disc, a slender ellipse, a star
// that nearly touches the circle along stretches, a wave.
TEST(InscribedCircle, OfManyPointsIsThatOfTheFewThatMatter) {
  Random random(504);
  for (int kind = 0; kind < 9; ++kind) {
    const int n = 20000;
    CNuPointArray points(2 * n);
    for (int i = 0; i < n; ++i) {
      const double t = random.Uniform(0.0, kind == 1 ? 250.0 : 360.0) * kDegree, u = random.Uniform(-1.0, 1.0);
      const double r = kind < 2 ? 18.0 + 0.05 * u : kind == 5 ? 5.0 * std::sqrt(std::fabs(u)) : 5.0;
      CNuPoint p(r * std::cos(t) + 3.0, (kind == 2 ? 0.6 : 1.0) * r * std::sin(t));
      if (kind == 3) p = CNuPoint(p.x() * u + (i % 2) * 40.0, p.y());
      if (kind == 6) p = CNuPoint(10.0 * std::cos(t), 0.1 * std::sin(t) + 1e-3 * u);
      if (kind == 7) {
        const double wide = 10.0 + 4.0 * std::cos(5.0 * t);
        p = CNuPoint(wide * std::cos(t), wide * std::sin(t));
      }
      if (kind == 8) p = CNuPoint(3.0 * t, std::sin(3.0 * t));
      if (kind == 4) p = i % 2 == 0 ? CNuPoint(u, i % 4 - 1.0) : CNuPoint(i % 4 - 2.0, u);
      points.Add(p);
    }
    CNuCircle all(1.0), few(1.0);
    all.FitMax(points, 1e-9);
    for (int i = 0; i < n; ++i) points.Add(points[i]);
    few.FitMax(points, 1e-9);
    EXPECT_NEAR(few.GetRadius(), all.GetRadius(), 1e-14 * 18.0) << kind;
    EXPECT_NEAR(DistancesFrom(few.GetCentre(), points).nearest, few.GetRadius(), 1e-14 * 18.0) << kind;
  }
}

// A lattice of equal holes: the same one is taken whatever the order of the points, at any size.
TEST(InscribedCircle, DoesNotDependOnTheOrderOfThePoints) {
  Random random(503);
  for (const double size : {1.0, 1e-200, 1e200, 1e307}) {
    CNuPointArray points(400);
    for (int i = 0; i < 400; ++i) points.Add({size * (i % 20 / 10.0 - 1.0), size * (i / 20 / 10.0 - 1.0), 0.0});
    CNuCircle first(1.0);
    first.FitMax(points, 0.0);
    EXPECT_NEAR(first.GetRadius() / size, std::sqrt(0.5) / 10.0, 1e-15);
    for (int run = 0; run < 5; ++run) {
      points = Shuffled(random, points);
      CNuCircle circle(1.0);
      circle.FitMax(points, 0.0);
      EXPECT_NEAR(circle.GetCentre().x() / size, first.GetCentre().x() / size, 1e-15);
      EXPECT_NEAR(circle.GetCentre().y() / size, first.GetCentre().y() / size, 1e-15);
    }
  }
}

// No small step, in any of many directions, makes the annulus narrower.
bool IsLocalOptimum(const CNuPoint& centre, const CNuPointArray& points) {
  const double width = DistancesFrom(centre, points).Width();
  for (double angle = 0.5; angle < 360.0; angle += 3.0) {
    const CNuPoint step(1e-6 * std::cos(angle * kDegree), 1e-6 * std::sin(angle * kDegree));
    if (DistancesFrom(centre + step, points).Width() < width - 1e-14) return false;
  }
  return true;
}

// The narrowest locally optimal annulus among those with four contacts, each pair of points and each pair of such pairs
// being tried.
double NarrowestWidth(const CNuPointArray& points) {
  double best = kInf;
  const int n = points.GetSize();
  for (int outer = 0; outer < n * n; ++outer) {
    for (int inner = 0; inner < outer; ++inner) {
      const CNuPoint &p = points[outer / n], &q = points[outer % n], &r = points[inner / n], &s = points[inner % n];
      if (outer / n <= outer % n || inner / n <= inner % n) continue;
      const double ax = q.x() - p.x(), ay = q.y() - p.y(), bx = s.x() - r.x(), by = s.y() - r.y();
      const CNuPoint m = p.MidPoint(q), k = r.MidPoint(s);
      const double t = ((k.x() - m.x()) * bx + (k.y() - m.y()) * by) / (-ay * bx + ax * by);
      const CNuPoint centre(m.x() - t * ay, m.y() + t * ax);
      const double width = DistancesFrom(centre, points).Width();
      if (width < best - 1e-13 && IsLocalOptimum(centre, points)) best = width;
    }
  }
  return best;
}

double StripWidth(const CNuPointArray& points) {
  double width = -1.0;
  CNuLine().FitMinZone(points, &width, 1e-12, 1000);
  return width;
}

constexpr const char* kNoCentre = "bestfit 9 |CNuCircle [0,0]";

TEST(ZoneCircle, AgreesWithAllSupportSets) {
  Random random(504);
  for (int run = 0; run < 250; ++run) {
    const CNuPointArray points = SmallSet(random, run);
    CNuVector normal;
    if (CNuGeometry::AreCollinear(points, &normal, 1e-12) == 1) continue;
    CNuCircle circle(7.0);
    double form = -1.0;
    const double best = NarrowestWidth(points);
    const std::string failure = FailureOf([&] { circle.FitMinZone(points, &form, 1e-12, 1000); });
    if (StripWidth(points) < best - 1e-12) {
      ASSERT_EQ(failure, kNoCentre) << run << " " << best;
      continue;
    }
    ASSERT_EQ(failure, "nothing") << run << " " << best;
    ASSERT_NEAR(form, best, 1e-12) << run;
    ASSERT_NEAR(DistancesFrom(circle.GetCentre(), points).Width(), form, 1e-13) << run;
  }
}

// Corners of rhombi of any size and place. Parallel sides are bisected by parallel lines, which meet only by rounding.
TEST(ZoneCircle, OfRhombiIsAboutTheirMiddle) {
  Random random(508);
  for (int run = 0; run < 2000; ++run) {
    const double a = std::pow(10.0, random.Uniform(-3.0, 6.0)), b = a * random.Uniform(1.01, 1.5);
    const CNuPoint middle(random.Uniform(-1e6, 1e6), random.Uniform(-1e6, 1e6), random.Uniform(-1e6, 1e6));
    const CNuPoint toCorner = run % 2 == 0 ? CNuPoint(a, 0.0) : CNuPoint(0.6 * a, 0.8 * a);
    const CNuPoint toOther(-b / a * toCorner.y(), b / a * toCorner.x());
    CNuCircle circle(7.0);
    double form = -1.0;
    circle.FitMinZone(PointsOf({middle - toCorner, middle + toCorner, middle - toOther, middle + toOther}), &form,
                      1e-12, 1000);
    ASSERT_NEAR(form, b - a, 4.0 * kEps * (1e6 + b)) << run << " " << a << " " << b;
  }
}

// Ellipses 10 : b with b above 10 / 3 have the annulus about their centre. Around longer ones annuli become narrower
// the farther away their centres are: without end where parallel sides of the hull, here with an even number of points,
// hold the strip.
TEST(ZoneCircle, HasNoCentreWhereAStripIsNarrower) {
  for (const double b : {0.1, 1.0, 3.0, 4.0}) {
    for (const int n : {8, 60, 399, 401, 1000, 3000}) {
      CNuPointArray points(n);
      for (int i = 0; i < n; ++i) points.Add({10.0 * std::cos(2.0 * Nu_PI * i / n), b * std::sin(2.0 * Nu_PI * i / n)});
      CNuCircle circle(7.0);
      double form = -1.0;
      const std::string failure = FailureOf([&] { circle.FitMinZone(points, &form, 1e-12, 1000); });
      ASSERT_EQ(failure, b < 4.0 && n % 2 == 0 ? kNoCentre : "nothing") << b << " " << n;
      if (failure != "nothing") continue;
      EXPECT_LE(form, b < 4.0 ? StripWidth(points) : 6.0) << b << " " << n;
      EXPECT_NEAR(DistancesFrom(circle.GetCentre(), points).Width(), form, 1e-12) << b << " " << n;
    }
  }
}

TEST(ZoneCircle, OfPointsOnALineAndItsOwnLimit) {
  CNuCircle circle(7.0), inner(7.0), outer(7.0);
  double form = -1.0;
  circle.FitMinZone(PointsOf({{1, 1}, {5, 4}, {3, 2.5}}), &form, &inner, &outer, 1e-9, 1000);
  EXPECT_TRUE(form == 0.0 && circle.GetRadius() == 2.5 && outer.GetRadius() == inner.GetRadius());
  Random random(505);
  NuSetTol(1e-6);
  EXPECT_EQ(FailureOf([&] { circle.FitMinZone(CircleCloud(random, 5000, 10.0, 360.0, 1e-9), &form, 1e-9, 2); }),
            "bestfit 12 |FindMinimalAnnulus [0,0]");
  NuSetTol(4.45e-16);
}

// A ring that is not flat is held by a torus, whose circle it gets.
TEST(ZoneCircle, IsThatOfTheTorusForPointsInSpace) {
  Random random(507);
  for (int k = 0; k < 50; ++k) {
    const CNuPointArray points =
        RandomMotion(random, 100.0)(CircleCloud(random, 4 + 3 * k, 10.0, random.Uniform(60.0, 360.0), 0.05, 0.05));
    CNuCircle circle(7.0), inner(7.0), outer(7.0);
    double form = -1.0, again = -1.0;
    circle.FitMinZone(points, &form, &inner, &outer, 1e-9, 1000);
    CNuTorSurf torus(2.0, 1.0);
    torus.FitMin(points, 1e-9, 1000);
    EXPECT_EQ(form, 2.0 * torus.GetMinorRadius());
    EXPECT_EQ(circle.GetRadius(), torus.GetMajorRadius());
    EXPECT_EQ(inner.GetRadius(), torus.GetMajorRadius() - torus.GetMinorRadius());
    EXPECT_EQ(outer.GetRadius(), torus.GetMajorRadius() + torus.GetMinorRadius());
    for (const CNuCircle* c : {&circle, &inner, &outer})
      EXPECT_TRUE(c->GetTransformation().IsEqual(torus.GetTransformation(), 1e-300));
    EXPECT_EQ(inner.FitMinZoneEx(points, &again, 1e-9, 1000), NuFitSuccess);
    EXPECT_EQ(again, form);
    // The tolerance tells what is flat.
    EXPECT_EQ(circle.FitMinZoneEx(points, &again, 10.0, 1000), NuFitSuccess);
    EXPECT_LE(again, 1.2 * form);
  }
  // No ring: the tube is thicker than its circle, and the inner circle shrinks to its centre.
  CNuPointArray lattice(64);
  for (int i = 0; i < 64; ++i) lattice.Add({i % 4 + 0.0, 0.9 * (i / 4 % 4), 0.8 * (i / 16)});
  CNuCircle circle(7.0), inner(7.0), outer(7.0);
  double form = -1.0;
  circle.FitMinZone(lattice, &form, &inner, &outer, 1e-9, 1000);
  EXPECT_GT(form, 2.0 * circle.GetRadius());
  EXPECT_EQ(inner.GetRadius(), 0.0);
}

TEST(MinimaxCircles, FollowTheirPoints) {
  ExpectFollowing("CNuCircle", Random(506), 360.0, {360.0, 200.0, 60.0},
                  [](Random& random, int n, double sweep) { return CircleCloud(random, n, 10.0, sweep, 0.02); });
}

}  // namespace
