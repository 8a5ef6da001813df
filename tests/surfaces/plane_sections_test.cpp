#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/object_distance.h"

namespace {

using namespace nu::test;

using Objects = std::vector<std::unique_ptr<CNuObject>>;

template<class T>
const T& As(const CNuObject& object) {
  return static_cast<const T&>(object);
}

// The array held something before; the surface answers as the plane does.
template<class Surface>
Objects SectionOf(const CNuPlane& plane, const Surface& surface) {
  CNuPoint old;
  CNuObjArray found(0), again(1);
  again.Add(&old);
  const int count = plane.IntersectWith(surface, &found);
  EXPECT_EQ(found.GetSize(), count);
  EXPECT_EQ(surface.IntersectWith(plane, &again), count);
  Objects objects;
  for (int i = 0; i < count; ++i) {
    objects.emplace_back(found[i]);
    const std::unique_ptr<CNuObject> other(again[i]);
    EXPECT_EQ(other->GetType(), found[i]->GetType());
  }
  return objects;
}

double Largest(const CNuPoint& p) {
  return std::max({std::fabs(p.x()), std::fabs(p.y()), std::fabs(p.z())});
}

// How far, relative to its extent, the section leaves the plane or the surface, or passes by the points in which the
// plane cuts lines of the surface.
template<class Surface>
double WorstOf(const Objects& section, const CNuPlane& plane, const Surface& surface, double size,
               const std::vector<CNuLine>& generators) {
  constexpr double kSteep = 0.01;
  double worst = 0.0, extent = size;
  for (const auto& object : section) {
    const CNuPointArray points = PointsOfObject(*object, size);
    for (int i = 0; i < points.GetSize(); ++i) extent = std::max(extent, Largest(points[i]));
    for (int i = 0; i < points.GetSize(); ++i)
      worst = std::max({worst, points[i].DistanceTo(plane) / extent, points[i].DistanceTo(surface) / extent});
  }
  for (const CNuLine& generator : generators) {
    CNuPoint p;
    if (std::fabs(generator.GetDirection() % plane.GetNormal()) < kSteep) continue;
    if (plane.IntersectWith(generator, &p) == 0) continue;
    double nearest = kInf;
    for (const auto& object : section) nearest = std::min(nearest, DistanceToObject(*object, p));
    worst = std::max(worst, kSteep * nearest / std::max(extent, Largest(p)));
  }
  return worst;
}

// Parts of any size, somewhere and turned; a fourth of them far away, 1e4 sizes. The host's tolerance fits the size.
// Half of the planes stand any way, the others next to a special angle with the axis, by 1e-14 degrees at least.
TEST(PlaneSections, AreOnBothAndNothingIsMissed) {
  Random random(71);
  int kinds[2][26] = {};
  for (int run = 0; run < 20000; ++run) {
    const double size = std::pow(10.0, random.Below(9) - 3);
    const Motion motion = RandomMotion(random, (random.Below(4) == 0 ? 1e4 : 1.0) * size);
    const auto direction = [&motion](double degrees, double turn) {
      const double s = std::sin(degrees * kDegree);
      return motion.Direction({s * std::cos(turn), s * std::sin(turn), std::cos(degrees * kDegree)}).To3DVector();
    };
    const CNuPoint origin = motion(CNuPoint());
    const double small = std::pow(10.0, random.Uniform(-3.0, 0.0)), usual = random.Uniform(1.0, 89.0);
    const double angles[] = {small, 90.0 - small, usual, usual}, angle = angles[random.Below(4)];
    const CNuConSurf cone(angle, origin, direction(0.0, 0.0));
    const CNuCylSurf cylinder(size * random.Uniform(0.01, 1.0), origin, direction(0.0, 0.0));
    const bool ofCone = run % 2 == 0;
    std::vector<CNuLine> generators;
    for (const double turn : {0.0, 1.6, 3.2, 4.8})
      generators.push_back(
          ofCone ? CNuLine(origin, direction(angle, turn))
                 : CNuLine(Along(origin, direction(90.0, turn), cylinder.GetRadius()), cylinder.GetAxisDirection()));
    const double special[] = {0.0, 90.0, ofCone ? 90.0 - angle : 90.0};
    const double beside = (2 * random.Below(2) - 1) * std::pow(10.0, random.Uniform(-14.0, 1.0));
    const CNuVector normal =
        direction(random.Below(2) == 0 ? random.Uniform(0.0, 180.0) : special[random.Below(3)] + beside, 9.0 * usual);
    const double heights[] = {0.0, size * small * small, size * random.Uniform(-1.0, 1.0), -size * usual / 90.0};
    const CNuPlane plane(Along(origin, normal, heights[random.Below(20) == 0 ? 0 : 1 + random.Below(3)]), normal);
    NuSetLengthTol(1e-12 * size);
    const Objects section = ofCone ? SectionOf(plane, cone) : SectionOf(plane, cylinder);
    ++kinds[ofCone][section.empty() ? 0 : section[0]->GetType()];
    ASSERT_LE(
        ofCone ? WorstOf(section, plane, cone, size, generators) : WorstOf(section, plane, cylinder, size, generators),
        1e-11)
        << run;
  }
  NuSetLengthTol(1e-12);
  EXPECT_EQ(kinds[1][0], 0) << "every plane cuts a cone";
  for (const auto kind :
       {CNuObject::NuTypeNone, CNuObject::NuTypeLine, CNuObject::NuTypeCircle, CNuObject::NuTypeEllipse})
    EXPECT_GT(kinds[0][kind], 200) << kind;
  for (const auto kind : {CNuObject::NuTypePoint, CNuObject::NuTypeLine, CNuObject::NuTypeCircle,
                          CNuObject::NuTypeEllipse, CNuObject::NuTypeHyperbola, CNuObject::NuTypeParabola})
    EXPECT_GT(kinds[1][kind], 100) << kind;
}

// Around a cylinder of radius 5 and a cone of 3 : 4, upright, at home and far away. `off` is well above the tolerance.
TEST(PlaneSections, OfEveryKind) {
  constexpr auto none = CNuObject::NuTypeNone, point = CNuObject::NuTypePoint, line = CNuObject::NuTypeLine,
                 circle = CNuObject::NuTypeCircle, ellipse = CNuObject::NuTypeEllipse,
                 hyperbola = CNuObject::NuTypeHyperbola, parabola = CNuObject::NuTypeParabola;
  const double off = 1e-9;
  struct Row {
    CNuPoint at;
    CNuVector normal;
    CNuObject::ENuObjectType kind;
    int count;
  };
  const auto expect = [](const Row& row, const CNuPoint& origin, const auto& surface) {
    const Objects section = SectionOf(CNuPlane(origin + row.at, row.normal), surface);
    ASSERT_EQ(static_cast<int>(section.size()), row.count) << row.at.x() << " " << row.normal[2];
    for (const auto& object : section) EXPECT_EQ(object->GetType(), row.kind) << row.at.x() << " " << row.normal[2];
  };
  for (const CNuPoint& origin : {CNuPoint(), CNuPoint(1e4, -2e4, 5e3)}) {
    const CNuVector up(0, 0, 1);
    const CNuCylSurf cylinder(5, origin, up);
    for (const Row& row : {Row{{0, 0, 3}, {0, 0, -2}, circle, 1},
                           {{0, 0, 3}, {1e-3, 0, 1}, ellipse, 1},
                           {{9, 0, 3}, {1, 0, 1e-9}, ellipse, 1},
                           {{3, 0, 1}, {1, 0, 0}, line, 2},
                           {{5, 7, 1}, {1, 0, 0}, line, 1},
                           {{5 - off, 7, 1}, {-1, 0, 0}, line, 2},
                           {{5 + off, 7, 1}, {1, 0, 0}, none, 0}})
      expect(row, origin, cylinder);
    const CNuConSurf cone(std::atan(0.75) / kDegree, origin, up);
    for (const Row& row : {Row{{0, 0, 4}, {0, 0, 1}, circle, 1},
                           {{0, 0, -4}, {0.1, 0, 1}, ellipse, 1},
                           {{0, 0, 4}, {0.8, 0, 0.6}, parabola, 1},
                           {{0, 0, 4}, {0.8 + off, 0, 0.6}, hyperbola, 1},
                           {{0, 0, 4}, {0.8 - off, 0, 0.6}, ellipse, 1},
                           {{1, 0, 0}, {1, 0, 0}, hyperbola, 1},
                           {{off, 0, 0}, {1, 0, 0}, hyperbola, 1},
                           {{0, 0, 0}, {1, 0, 0}, line, 2},
                           {{0, 0, 0}, {0.9, 0, 0.6}, line, 2},
                           {{0, 0, 0}, {0.8, 0, 0.6}, line, 1},
                           {{4, 0, -3}, {0.6, 0, 0.8}, point, 1},
                           {{0, 0, off}, {0, 0, 1}, circle, 1},
                           {{0, 0, 0}, {0, 0, 1}, point, 1}})
      expect(row, origin, cone);
  }
}

TEST(PlaneSections, RunAlongTheAxisInTheOrderOfNormalAndAxis) {
  const CNuConSurf cone(45.0);
  const Objects ellipse = SectionOf(CNuPlane(CNuPoint(0, 0, 3), CNuVector(-1, 0, 2)), cone);
  EXPECT_TRUE(As<CNuEllipse>(*ellipse[0]).GetXaxis().IsEqual(CNuVector(2, 0, 1) * std::sqrt(0.2), 1e-15));
  const Objects hyperbola = SectionOf(CNuPlane(CNuPoint(0, 3, 0), CNuVector(0, 1, 0)), cone);
  EXPECT_EQ(As<CNuHyperbola>(*hyperbola[0]).GetXaxis()[2], 1.0) << "branch 0 is on the nappe around the axis";
  EXPECT_EQ(As<CNuHyperbola>(*hyperbola[0]).GetNormal()[1], 1.0);
  const CNuPlane upright(CNuPoint(), CNuVector(1, 0, 0));
  const Objects pairs[] = {SectionOf(upright, cone), SectionOf(upright, CNuCylSurf(2.0))};
  for (const Objects& pair : pairs) {
    for (const int k : {0, 1}) {
      const auto& line = As<CNuLine>(*pair[k]);
      EXPECT_EQ(Along(line.GetPoint(), line.GetDirection(), 1.0).y() < 0.0, k == 1) << "x z = -y";
      EXPECT_GT(line.GetDirection()[2], 0.0);
    }
  }
}

}  // namespace
