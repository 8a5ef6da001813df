#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"
#include "support/object_distance.h"

namespace {

using namespace nu::test;

using Surface = std::variant<CNuCylSurf, CNuConSurf, CNuSphSurf>;
using Objects = std::vector<std::unique_ptr<CNuObject>>;

template<class T>
const T& As(const std::unique_ptr<CNuObject>& object) {
  return static_cast<const T&>(*object);
}

// The array held something before.
Objects Common(const Surface& a, const Surface& b) {
  CNuPoint old;
  CNuObjArray found(1);
  found.Add(&old);
  const auto meet = [&](const auto& first, const auto& second) { return first.IntersectWith(second, &found); };
  const int count = std::visit(meet, a, b);
  EXPECT_EQ(found.GetSize(), count);
  Objects objects;
  for (int i = 0; i < count; ++i) objects.emplace_back(found[i]);
  return objects;
}

double Size(const CNuPoint& p) {
  return p.To3DVector().Magnitude();
}

// Above 0 outside.
double Offset(const CNuPoint& p, const Surface& surface) {
  if (const auto* sphere = std::get_if<CNuSphSurf>(&surface)) {
    return p.DistanceTo(sphere->GetCentre()) - sphere->GetRadius();
  }
  if (const auto* cylinder = std::get_if<CNuCylSurf>(&surface)) {
    return p.DistanceTo(cylinder->GetAxis()) - cylinder->GetRadius();
  }
  const auto& cone = std::get<CNuConSurf>(surface);
  const double a = cone.GetSemiAngle() * kDegree;
  const double z = (p - cone.GetApex()).To3DVector() % cone.GetAxisDirection();
  return p.DistanceTo(cone.GetAxis()) * std::cos(a) - std::fabs(z) * std::sin(a);
}

double Off(const CNuPoint& p, const Surface& surface) {
  return std::fabs(Offset(p, surface));
}

double DistanceTo(const Objects& objects, const CNuPoint& p) {
  double least = kInf;
  for (const auto& object : objects) least = std::min(least, DistanceToObject(*object, p));
  return least;
}

// The points in which some lines of the first surface meet the second.
CNuPointArray SomeCommonPoints(const Surface& a, const Surface& b, int lines) {
  CNuPointArray points(1);
  if (std::holds_alternative<CNuSphSurf>(a)) return points;
  const auto* cylinder = std::get_if<CNuCylSurf>(&a);
  const auto* cone = std::get_if<CNuConSurf>(&a);
  const CNuLine axis = cylinder ? cylinder->GetAxis() : cone->GetAxis();
  CNuVector z = axis.GetDirection(), x, y;
  z.OrthonormalXY(&x, &y);
  for (int i = 0; i < lines; ++i) {
    const double u = (i + 0.37) * (360.0 * kDegree / lines);
    const CNuVector e = x * std::cos(u) + y * std::sin(u);
    const double tilt = cone ? cone->GetSemiAngle() * kDegree : 0.0;
    const CNuLine line = cone ? CNuLine(axis.GetPoint(), e * std::sin(tilt) + z * std::cos(tilt))
                              : CNuLine(Along(axis.GetPoint(), e * cylinder->GetRadius()), z);
    CNuPoint p[2];
    const int count = std::visit([&](const auto& surface) { return line.IntersectWith(surface, &p[0], &p[1]); }, b);
    for (int k = 0; k < count; ++k) points.Add(p[k]);
  }
  return points;
}

// The points in which the cross-section of a cylinder or cone at the height z of its axis meets the other surface, by
// samples that are dense next to another point.
CNuPointArray CommonPointsAcross(const Surface& a, const Surface& b, double z, const CNuPoint& next) {
  const auto* cylinder = std::get_if<CNuCylSurf>(&a);
  const auto* cone = std::get_if<CNuConSurf>(&a);
  const CNuLine axis = cylinder ? cylinder->GetAxis() : cone->GetAxis();
  const double radius = cylinder ? cylinder->GetRadius() : std::fabs(z) * std::tan(cone->GetSemiAngle() * kDegree);
  CNuVector d = axis.GetDirection(), x, y;
  d.OrthonormalXY(&x, &y);
  const auto at = [&](double u) {
    return Along(Along(axis.GetPoint(), d * z), (x * std::cos(u) + y * std::sin(u)) * radius);
  };
  const CNuVector way = (next - axis.GetPoint()).To3DVector();
  const double side = cone && (way % d) * z < 0.0 ? -1.0 : 1.0;
  const double dense = std::atan2(side * (way % y), side * (way % x));
  constexpr int kSteps = 200;
  const auto sample = [&](int i) { return dense + std::copysign(Nu_PI * std::pow(std::fabs(i) / kSteps, 6.0), i); };
  CNuPointArray points(1);
  for (int i = -kSteps; i < kSteps; ++i) {
    double left = sample(i), right = sample(i + 1);
    const bool isOut = Offset(at(left), b) > 0.0;
    if (isOut == (Offset(at(right), b) > 0.0)) continue;
    for (int k = 0; k < 60; ++k) {
      const double middle = 0.5 * (left + right);
      ((Offset(at(middle), b) > 0.0) == isOut ? left : right) = middle;
    }
    points.Add(at(left));
  }
  return points;
}

// A branch that goes to infinity is cut there: none comes back on the other side.
void ExpectNoLeaps(const Objects& found, double size) {
  for (const auto& object : found) {
    if (object->GetType() != CNuObject::NuTypePCurve) continue;
    const CNuPointArray points = As<CNuPCurve>(object).ToPointArray(401);
    for (int i = 1; i < 401; ++i) {
      const CNuVector before = points[i - 1].To3DVector(), after = points[i].To3DVector();
      ASSERT_TRUE(std::min(before.Magnitude(), after.Magnitude()) < 20.0 * size || before % after > 0.0) << i;
    }
    ASSERT_EQ(points[0].DistanceTo(points[400]) <= 1e-14 * size, As<CNuPCurve>(object).IsClosed() == NuTrue);
  }
}

void ExpectCommon(const Objects& found, const Surface& a, const Surface& b, double size, double tol) {
  for (const auto& object : found) {
    const CNuPointArray points = PointsOfObject(*object, 5.0);
    for (int i = 0; i < points.GetSize(); ++i) {
      ASSERT_LE(std::max(Off(points[i], a), Off(points[i], b)), tol * std::max(size, Size(points[i])));
    }
  }
  for (const bool swapped : {false, true}) {
    const CNuPointArray points = swapped ? SomeCommonPoints(b, a, 8) : SomeCommonPoints(a, b, 8);
    for (int i = 0; i < points.GetSize(); ++i) {
      if (Size(points[i]) > 50.0 * size) continue;
      ASSERT_LE(DistanceTo(found, points[i]), 1e3 * tol * std::max(size, Size(points[i])));
    }
  }
}

// With an axis in any direction, or within `spread` of the z axis.
Surface RandomSurface(Random& random, int kind, double size, double spread = 10.0) {
  const CNuPoint p = RandomPoint(random, size);
  const CNuVector d = CNuVector(0, 0, 1) + RandomMotion(random, 0.0).Direction({1, 0, 0}).To3DVector() * spread;
  const double share = random.Uniform(0.1, 2.0);
  if (kind == 0) return CNuCylSurf(size * share, p, d);
  if (kind == 1) return CNuConSurf(44.0 * share, p, d);
  return CNuSphSurf(size * share, p);
}

TEST(QuadricIntersections, OfRandomPairsAreOnBothAndNoneIsMissed) {
  Random random(701);
  int closed = 0, open = 0;
  for (int run = 0; run < 600; ++run) {
    const double size = std::pow(10.0, random.Below(9) - 4);
    const int first = run % 2;
    const double spread = run % 7 == 0 ? 1e-5 : 10.0;
    const Surface a = RandomSurface(random, first, size, spread);
    const Surface b = RandomSurface(random, run % 3, size, spread);
    const Objects found = Common(a, b);
    ExpectCommon(found, a, b, size, 1e-13);
    if (spread > 1.0) ExpectNoLeaps(found, size);
    if (HasFatalFailure()) FAIL() << "run " << run;
    ASSERT_EQ(Common(b, a).size(), found.size()) << run;
    for (const auto& object : found) {
      ASSERT_EQ(object->GetType(), CNuObject::NuTypePCurve);
      ++(As<CNuPCurve>(object).IsClosed() ? closed : open);
    }
  }
  EXPECT_GT(closed, 500);
  EXPECT_GT(open, 150);
}

CNuCylSurf Cylinder(double radius, const CNuPoint& p, const CNuVector& d) {
  return CNuCylSurf(radius, p, d);
}

CNuConSurf Cone(double semiAngle, const CNuPoint& p, const CNuVector& d) {
  return CNuConSurf(semiAngle, p, d);
}

// (sin, 0, cos), in degrees.
CNuVector Tilted(double angle) {
  return {std::sin(angle * kDegree), 0.0, std::cos(angle * kDegree)};
}

CNuPoint TiltedPoint(double angle, double distance) {
  return Along(CNuPoint(), Tilted(angle) * distance);
}

struct Position {
  const char* name;
  Surface a;
  Surface b;
  const char*
      expected;  // the kinds that are found, in alphabetical order; closed curves as in "8": with a double point
};

std::string KindsOf(const Objects& found) {
  std::vector<std::string> kinds;
  for (const auto& object : found) {
    const auto type = object->GetType();
    std::string kind = type == CNuObject::NuTypePoint       ? "point"
                       : type == CNuObject::NuTypeLine      ? "line"
                       : type == CNuObject::NuTypeCircle    ? "circle"
                       : type == CNuObject::NuTypeEllipse   ? "ellipse"
                       : type == CNuObject::NuTypeHyperbola ? "hyperbola"
                       : type == CNuObject::NuTypeParabola  ? "parabola"
                                                            : "open";
    if (type == CNuObject::NuTypePCurve && As<CNuPCurve>(object).IsClosed()) {
      double lower = 0.0, upper = 0.0;
      As<CNuPCurve>(object).GetRange().GetBounds(&lower, &upper);
      kind = upper - lower > 7.0 ? "8" : "closed";
    }
    kinds.push_back(kind);
  }
  std::sort(kinds.begin(), kinds.end());
  std::string all;
  for (const std::string& kind : kinds) all += (all.empty() ? "" : " ") + kind;
  return all;
}

std::vector<Position> SpecialPositions() {
  const CNuVector x(1, 0, 0), y(0, 1, 0), z(0, 0, 1);
  const CNuCylSurf pin(1.0);
  const CNuConSurf tip(30.0);
  const double s30 = 0.5, t30 = std::tan(30 * kDegree), c30 = std::cos(30 * kDegree);
  const CNuVector onTip = Tilted(30.0), acrossTip(c30, 0.0, -s30);
  const CNuPoint onTip2 = TiltedPoint(30.0, 2.0);
  const double c20 = std::cos(20 * kDegree), s20 = std::sin(20 * kDegree);
  std::vector<Position> all = {
      {"parallel, crossing", pin, Cylinder(1, {1, 0, 0}, z), "line line"},
      {"parallel, touching", pin, Cylinder(1, {2, 0, 3}, z * -1.0), "line"},
      {"parallel, touching inside", pin, Cylinder(2, {1, 0, 0}, z), "line"},
      {"parallel, apart", pin, Cylinder(1, {3, 0, 0}, z), ""},
      {"equal cylinders", pin, Cylinder(1, {0, 0, 5}, z), ""},
      {"equal radii, axes meet", pin, Cylinder(1, {0, 0, 0}, x), "ellipse ellipse"},
      {"equal radii, axes meet aslant", pin, Cylinder(1, {0, 0, 2}, Tilted(40)), "ellipse ellipse"},
      {"equal radii, axes pass", pin, Cylinder(1, {0, 0.5, 0}, x), "closed"},
      {"bore through a pin", pin, Cylinder(2, {0, 0.3, 1}, Tilted(70)), "closed closed"},
      {"cylinders touch", pin, Cylinder(2, {0, 3, 1}, Tilted(70)), "point"},
      {"cylinders touch inside", pin, Cylinder(2, {0, 1, 1}, Tilted(70)), "8"},
      {"sphere on the axis", pin, CNuSphSurf(2, {0, 0, 3}), "circle circle"},
      {"sphere in the bore, touching", pin, CNuSphSurf(1, {0, 0, 3}), "circle"},
      {"sphere in the bore", pin, CNuSphSurf(0.5, {0, 0, 3}), ""},
      {"Viviani", pin, CNuSphSurf(2, {1, 0, 0}), "8"},
      {"sphere touches the cylinder", pin, CNuSphSurf(2, {3, 0, 0}), "point"},
      {"sphere touches inside the cylinder", pin, CNuSphSurf(0.5, {0.5, 0, 0}), "point"},
      {"sphere apart", pin, CNuSphSurf(1, {3, 0, 0}), ""},
      {"coaxial cone", pin, Cone(30, {0, 0, 1}, z * -1.0), "circle circle"},
      {"parallel cone", pin, Cone(30, {0.3, 0, 1}, z), "closed closed"},
      {"apex on the axis", pin, Cone(30, {0, 0, 1}, Tilted(45)), "closed closed"},
      {"apex on, axis across", pin, Cone(30, {1, 0, 0}, x), "closed point"},
      {"apex on, axis along the surface", pin, Cone(30, {1, 0, 0}, y), "closed"},
      {"apex on, axis parallel", pin, Cone(30, {1, 0, 0}, z), "closed"},
      {"apex on, a generator touches", pin, Cone(30, {1, 0, 0}, {s30, c30, 0}), "closed"},
      {"common generator", pin, Cone(30, {1, 0, 0}, {0, s30, c30}), "line open"},
      {"common generator, aslant", pin, Cone(30, {1, 0, 0}, {s30 * 0.6, s30 * 0.8, c30}), "line open"},
      {"parallel generators, cut", pin, Cone(30, {0.5, 0.5, 0}, Tilted(30)), "open open"},
      {"parallel generators, cut once", pin, Cone(30, {0.2, 1, 0}, {0, s30, c30}), "open"},
      {"cylinder touches the cone", Cylinder(1, {5, 5 * t30 + 1 / c30, 0}, z), Cone(30, {0, 0, 0}, x), "point"},
      {"cylinder touches inside", Cylinder(1, {5, 5 * t30 - 1 / c30, 0}, z), Cone(30, {0, 0, 0}, x), "8"},
      {"sphere on the cone's axis", tip, CNuSphSurf(3, {0, 0, 1}), "circle circle"},
      {"sphere in the cone, touching", tip, CNuSphSurf(0.5, {0, 0, 1}), "circle"},
      {"sphere in the cone", tip, CNuSphSurf(0.4, {0, 0, 1}), ""},
      {"sphere around the apex", tip, CNuSphSurf(1, {0, 0, 0}), "circle circle"},
      {"sphere through the apex", tip, CNuSphSurf(1, {0, 0, 1}), "circle point"},
      {"sphere through the apex, aside", tip, CNuSphSurf(1, TiltedPoint(40, 1)), "closed point"},
      {"sphere through the apex, beside", tip, CNuSphSurf(1, TiltedPoint(80, 1)), "closed"},
      {"sphere touches the cone", tip, CNuSphSurf(2 * s20, TiltedPoint(50, 2)), "point"},
      {"sphere touches inside the cone", tip, CNuSphSurf(2 * std::sin(10 * kDegree), TiltedPoint(20, 2)), "point"},
      {"sphere touches around the cone", tip, CNuSphSurf(2 * std::sin(50 * kDegree), TiltedPoint(20, 2)), "8"},
      {"coaxial, same angle", tip, Cone(30, {0, 0, 2}, z * -1.0), "circle"},
      {"coaxial, other angle", tip, Cone(50, {0, 0, 2}, z), "circle circle"},
      {"coaxial, common apex", tip, Cone(50, {0, 0, 0}, z), "point"},
      {"equal cones", tip, Cone(30, {0, 0, 0}, z * -1.0), ""},
      {"common apex, crossing", tip, Cone(20, {0, 0, 0}, Tilted(40)), "line line"},
      {"common apex, touching", tip, Cone(20, {0, 0, 0}, Tilted(50)), "line"},
      {"common apex, touching inside", tip, Cone(20, {0, 0, 0}, Tilted(-170)), "line"},
      {"common apex only", tip, Cone(20, {0, 0, 0}, Tilted(70)), "point"},
      {"common apex, flat", CNuConSurf(50), Cone(60, {0, 0, 0}, Tilted(80)), "line line line line"},
      {"common apex, flat, touching", CNuConSurf(50), Cone(60, {0, 0, 0}, Tilted(70)), "line line line"},
      {"same angle, side by side", tip, Cone(30, {1, 0, 0}, z), "hyperbola"},
      {"same angle, one in the other", tip, Cone(30, {0.3, 0, 2}, z), "ellipse"},
      {"same angle, along a generator", tip, Cone(30, onTip2, z), "line"},
      {"common generator of cones", tip, Cone(20, onTip2, onTip * c20 + y * s20), "line open"},
      {"touching along a generator", tip, Cone(20, onTip2, onTip * c20 + acrossTip * s20), "ellipse line"},
      {"apex on the cone", tip, Cone(20, onTip2, y), "closed"},
      {"apex on the cone, axis across", tip, Cone(20, onTip2, acrossTip), "closed point"},
      {"cones touch", tip,
       Cone(25, Along(onTip2, y * -2.0), y * std::cos(25 * kDegree) + acrossTip * std::sin(25 * kDegree)), "point"},
      {"cones touch inside", tip,
       Cone(25, Along(onTip2, y * -2.0), y * std::cos(25 * kDegree) - acrossTip * std::sin(25 * kDegree)), "8"},
  };
  for (const double angle : {10.0, 50.0, 90.0}) {
    all.push_back(
        {"cylinder and cone around a sphere", pin, Cone(30, TiltedPoint(angle, 2), Tilted(angle)), "ellipse ellipse"});
  }
  all.push_back({"the same, touching along a line", pin, Cone(30, TiltedPoint(30, 2), Tilted(30)), "ellipse line"});
  const std::pair<double, const char*> around[] = {
      {20, "ellipse hyperbola"}, {60, "ellipse ellipse"}, {10, "ellipse parabola"}, {50, "ellipse line"}};
  for (const auto& [angle, expected] : around) {
    all.push_back({"cones around a sphere", Cone(30, {0, 0, -2}, z),
                   Cone(20, TiltedPoint(angle, 1 / s20), Tilted(angle)), expected});
  }
  return all;
}

Surface Moved(const Motion& motion, const Surface& surface) {
  if (const auto* sphere = std::get_if<CNuSphSurf>(&surface)) {
    return CNuSphSurf(sphere->GetRadius(), motion(sphere->GetCentre()));
  }
  CNuPoint p;
  CNuVector d;
  double value = 0.0;
  if (const auto* cylinder = std::get_if<CNuCylSurf>(&surface)) {
    cylinder->GetData(&value, &p, &d);
    return CNuCylSurf(value, motion(p), motion.Direction({d[0], d[1], d[2]}).To3DVector());
  }
  std::get<CNuConSurf>(surface).GetData(&value, &p, &d);
  return CNuConSurf(value, motion(p), motion.Direction({d[0], d[1], d[2]}).To3DVector());
}

// At home, and anywhere within 1e4.
TEST(QuadricIntersections, InSpecialPositions) {
  Random random(702);
  for (const Position& position : SpecialPositions()) {
    for (int run = 0; run < 20; ++run) {
      const double offset = run == 0 ? 0.0 : 1e4;
      const Motion motion = RandomMotion(random, offset);
      const Surface a = run == 0 ? position.a : Moved(motion, position.a);
      const Surface b = run == 0 ? position.b : Moved(motion, position.b);
      const Objects found = Common(a, b);
      ASSERT_EQ(KindsOf(found), position.expected) << position.name << ", run " << run;
      ASSERT_EQ(KindsOf(Common(b, a)), position.expected) << position.name << " swapped, run " << run;
      ExpectCommon(found, a, b, 3.0 + offset, run == 0 ? 1e-12 : 1e-14);
      if (HasFatalFailure()) FAIL() << position.name << ", run " << run;
    }
  }
}

// A contact that is loosened or pressed in by more than the tolerance is one no more: no loop is lost, none invented.
TEST(QuadricIntersections, NextToContacts) {
  const CNuVector x(1, 0, 0), y(0, 1, 0), z(0, 0, 1);
  const double s30 = 0.5, c30 = std::cos(30 * kDegree), t30 = s30 / c30;
  const CNuPoint onTip = TiltedPoint(30.0, 2.0);
  const CNuVector across(c30, 0.0, -s30), farAcross(-c30, 0.0, -s30), aside(0.0, c30, -s30);
  const CNuVector inner = y * std::cos(25 * kDegree) - across * std::sin(25 * kDegree);
  const CNuVector outer = y * std::cos(25 * kDegree) + across * std::sin(25 * kDegree);
  const CNuPoint beside = Along(onTip, y * -2.0);
  const double round = 2 * std::sin(50 * kDegree);
  struct Contact {
    Surface a, b;
    CNuVector way;  // that b is shifted
    const char *before, *at, *beyond;
  };
  const Contact contacts[] = {
      {CNuCylSurf(1), Cylinder(2, {0, 3, 1}, Tilted(70)), y, "closed", "point", ""},
      {CNuCylSurf(1), Cylinder(2, {0, 1, 1}, Tilted(70)), y, "closed closed", "8", "closed"},
      {CNuCylSurf(1), CNuSphSurf(2, {3, 0, 0}), x, "closed", "point", ""},
      {CNuCylSurf(1), CNuSphSurf(2, {1, 0, 0}), x, "closed closed", "8", "closed"},
      {CNuCylSurf(1), CNuSphSurf(0.5, {0.5, 0, 0}), x, "", "point", "closed"},
      {CNuConSurf(30), Cylinder(1, {0, 5 * t30 + 1 / c30, 5}, x), aside, "closed", "point", ""},
      {CNuConSurf(30), Cylinder(1, {0, 5 * t30 - 1 / c30, 5}, x), aside, "closed closed", "8", "closed"},
      {CNuConSurf(30), CNuSphSurf(2 * std::sin(20 * kDegree), TiltedPoint(50, 2)), across, "closed", "point", ""},
      {CNuConSurf(30), CNuSphSurf(round, TiltedPoint(20, 2)), farAcross, "closed", "8", "closed closed"},
      {CNuConSurf(30), Cone(25, beside, outer), across, "closed", "point", ""},
      {CNuConSurf(30), Cone(25, beside, inner), across, "closed closed", "8", "closed"}};
  Random random(703);
  for (const Contact& contact : contacts) {
    for (const double depth : {-1e-3, -1e-6, -1e-9, -1e-11, -1e-13, 0.0, 1e-13, 1e-11, 1e-9, 1e-6, 1e-3}) {
      const Motion there{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}},
                         {depth * contact.way[0], depth * contact.way[1], depth * contact.way[2]}};
      const Motion motion = RandomMotion(random, 1.0);
      const Surface a = Moved(motion, contact.a);
      const Surface b = Moved(motion, Moved(there, contact.b));
      const Objects found = Common(a, b);
      const char* expected = std::fabs(depth) < 1e-12 ? contact.at : (depth < 0.0 ? contact.before : contact.beyond);
      ASSERT_EQ(KindsOf(found), expected) << &contact - contacts << " " << depth;
      ExpectCommon(found, a, b, 3.0, 1e-12);
      if (HasFatalFailure()) FAIL() << &contact - contacts << " " << depth;
    }
  }
}

// All around the circle along which they would touch, strands are closer than the root of a rounding.
TEST(QuadricIntersections, OfSpheresThatNearlyTouchConesAllAround) {
  Random random(709);
  for (int run = 0; run < 100; ++run) {
    const auto tiny = [&] { return random.Uniform(-1.0, 1.0) * std::pow(10.0, random.Uniform(-11.0, -3.0)); };
    const double angle = random.Uniform(10.0, 70.0), radius = 2 * std::sin(angle * kDegree) * (1.0 + tiny());
    const double x = tiny(), y = tiny();
    const Motion motion = RandomMotion(random, 1.0);
    const Surface a = Moved(motion, CNuConSurf(angle));
    const Surface b = Moved(motion, CNuSphSurf(radius, {x, y, 2.0 + tiny()}));
    ExpectCommon(Common(a, b), a, b, 3.0, 1e-13);
    if (HasFatalFailure()) FAIL() << run;
  }
}

// Apexes some tolerances apart do not tell the direction of a generator; neither surface is the first. The axes are in
// any direction, parallel with equal angles, or such that the cones share a generator along which the apex moves.
TEST(QuadricIntersections, OfConesWithCloseApexes) {
  Random random(706);
  for (int run = 0; run < 900; ++run) {
    const double tol = run % 2 ? 1e-3 : 1e-12;
    NuSetLengthTol(tol);
    const CNuPoint apex = RandomPoint(random, 5.0);
    const auto direction = [&] { return RandomMotion(random, 0.0).Direction({1, 0, 0}).To3DVector(); };
    const double angle = random.Uniform(5.0, 85.0), other = random.Uniform(5.0, 85.0),
                 share = random.Uniform(0.02, 3.0);
    const CNuVector axis = direction(), way = direction();
    CNuConSurf a(angle, apex, axis), b(other, Along(apex, way * (tol * std::pow(10.0, share))), direction());
    if (run % 3 == 1) b = CNuConSurf(angle, b.GetApex(), axis);
    if (run % 3 == 2) {
      const auto leaning = [&](double lean) {
        CNuVector x, y;
        CNuVector(way).OrthonormalXY(&x, &y);
        const double turn = random.Uniform(0.0, 6.0);
        return way * std::cos(lean * kDegree) + (x * std::cos(turn) + y * std::sin(turn)) * std::sin(lean * kDegree);
      };
      a = CNuConSurf(angle, apex, leaning(angle));
      b = CNuConSurf(other, b.GetApex(), leaning(other));
    }
    const Objects found = Common(a, b), swapped = Common(b, a);
    ASSERT_EQ(KindsOf(found), KindsOf(swapped)) << run;
    ASSERT_TRUE(run % 3 < 2 || KindsOf(found).find("line") != std::string::npos) << run;
    for (std::size_t i = 0; i < found.size(); ++i) {
      CNuPointArray on(0);
      if (found[i]->GetType() == CNuObject::NuTypePCurve) on = As<CNuPCurve>(found[i]).ToPointArray(301);
      if (found[i]->GetType() == CNuObject::NuTypeLine) {
        for (const double t : {-10.0, 10.0})
          on.Add(Along(As<CNuLine>(found[i]).GetPoint(), As<CNuLine>(found[i]).GetDirection() * t));
      }
      for (int k = 0; k < on.GetSize(); ++k) {
        if (on[k].DistanceTo(apex) > 20.0) continue;
        ASSERT_LE(std::max(Off(on[k], a), Off(on[k], b)), 4.0 * tol + 1e-13) << run;
      }
    }
  }
  NuSetLengthTol(1e-12);
}

// Surfaces that all but share a generator, or are all but parallel along one, meet in curves that follow it between two
// angles which doubles hardly tell apart. No branch ends inside a part of any size, and none of it is missed. Along a
// generator where the surfaces are tangent, the curve is known to the root of a rounding.
TEST(QuadricIntersections, NextToCommonGenerators) {
  Random random(707);
  for (int run = 0; run < 120; ++run) {
    const auto tiny = [&] {
      const double size = std::pow(10.0, random.Uniform(-10.0, -4.0));
      return random.Below(2) ? size : -size;
    };
    CNuVector d = RandomMotion(random, 0.0).Direction({1, 0, 0}).To3DVector(), x, y;
    d.OrthonormalXY(&x, &y);
    const CNuPoint p = RandomPoint(random, 1.0);
    const auto tinyAcross = [&] {
      const double byX = tiny(), byY = tiny();
      return x * byX + y * byY;
    };
    const CNuVector nearly = d + tinyAcross(), aside = tinyAcross();
    const bool isTangent = run / 4 % 2;
    const double touching = (run / 8 % 2 ? Nu_PI : 0.0) + (run / 16 % 2 ? tiny() : 0.0);
    const double turn = isTangent ? touching : random.Uniform(0.5, 2.5), from = random.Uniform(0.0, 6.0);
    const auto across = [&](double f) { return x * std::cos(f) + y * std::sin(f); };
    const auto coneAt = [&](const CNuPoint& apex, const CNuVector& generator, double f) {
      const double angle = random.Uniform(10.0, 70.0);
      return CNuConSurf(angle, apex, generator * std::cos(angle * kDegree) + across(f) * std::sin(angle * kDegree));
    };
    const double r = random.Uniform(0.5, 2.0);
    const CNuCylSurf pin(r, Along(p, across(from) * r), d);
    Surface a = pin, b = coneAt(Along(p, d * random.Uniform(-1.0, 1.0) + aside), nearly, from + turn);
    if (run % 4 == 1) a = coneAt(Along(p, d * random.Uniform(-1.0, 1.0)), d, from);
    if (run % 4 == 2) b = CNuCylSurf(1.0, Along(p, across(from + turn) + aside), nearly);
    if (run % 4 == 3) a = coneAt(p, d, from), b = coneAt(Along(p, aside), x, from);
    const Objects found = Common(a, b);
    for (const auto& object : found) {
      const CNuPointArray points = PointsOfObject(*object, 5.0);
      for (int i = 0; i < points.GetSize(); ++i) {
        ASSERT_LE(std::max(Off(points[i], a), Off(points[i], b)), 1e-13 * std::max(1.0, Size(points[i]))) << run;
      }
    }
    const CNuPoint next = Along(p, d * 0.3);
    for (const bool swapped : {false, true}) {
      for (const double z : {-1.7, -0.6, 0.35, 1.1}) {
        const CNuPointArray points = swapped ? CommonPointsAcross(b, a, z, next) : CommonPointsAcross(a, b, z, next);
        for (int i = 0; i < points.GetSize(); ++i) {
          ASSERT_LE(DistanceTo(found, points[i]), isTangent ? 1e-6 : 1e-11) << run << " " << z;
        }
      }
    }
  }
}

// Nothing hangs or crashes; what cannot be told is refused under the name of the operation.
TEST(QuadricIntersections, OfAnyNumbersEnd) {
  const std::string refused = "operation 46 calculation|CNuCylSurf::IntersectWith(CNuSphSurf) [0,0]";
  CNuObjArray found(1);
  CNuPoint old;
  found.Add(&old);
  EXPECT_EQ(FailureOf([&] { CNuCylSurf(1e-200).IntersectWith(CNuSphSurf(1e200), &found); }), refused);
  EXPECT_EQ(found[0], &old) << "a failure leaves the array alone";
  for (const double bad : {kNaN, kInf, -kInf}) {
    EXPECT_EQ(FailureOf([&] { Common(CNuCylSurf(1.0), CNuSphSurf(1.0, CNuPoint(bad, 0, 0))); }),
              "operation 45 calculation|CNuCylSurf::IntersectWith(CNuSphSurf) [0,0]");
    EXPECT_EQ(FailureOf([&] {
                Common(Cone(30, {0, bad, 0}, {0, 0, 1}), CNuCylSurf(1.0));
              }),
              "operation 45 calculation|CNuCylSurf::IntersectWith(CNuConSurf) [0,0]");
  }
  for (const double unit : {1e-300, 1e-100, 1e100, 1e300}) {
    const bool vanishes = unit < 1e-12;  // beside the tolerance
    EXPECT_EQ(KindsOf(Common(CNuCylSurf(unit), CNuSphSurf(2.0 * unit, {unit, 0, 0}))), vanishes ? "circle" : "8");
    EXPECT_EQ(KindsOf(Common(CNuConSurf(30), Cone(20, {unit, 0, 0}, {1, 0, 0}))), vanishes ? "point" : "closed closed");
  }
  EXPECT_EQ(KindsOf(Common(CNuCylSurf(1.0), Cylinder(1, {1, 0, 5}, {1e-12, 1e-12, 1}))), "line line")
      << "parallel within the tolerance of directions";
}

CNuPCurve OnlyCurve(const Surface& a, const Surface& b) {
  const Objects found = Common(a, b);
  EXPECT_EQ(found.size(), 1);
  return As<CNuPCurve>(found[0]);
}

TEST(PCurves, AreReadMovedAndCopied) {
  CNuPCurve eight = OnlyCurve(CNuCylSurf(1.0), CNuSphSurf(2.0, {1, 0, 0}));
  EXPECT_EQ(eight.GetType(), CNuObject::NuTypePCurve);
  int passes = 0;
  const auto toNode = [&](int i) { return eight.ValueAt(i * Nu_2PI / 2000).DistanceTo(CNuPoint(-1, 0, 0)); };
  for (int i = 0; i < 4000; ++i) {
    passes += toNode(i) < 0.01 && toNode(i) < toNode(i - 1) && toNode(i) <= toNode(i + 1);
  }
  EXPECT_EQ(passes, 2) << "through the double point";
  EXPECT_LT(eight.DistanceTo({-1, 0, 0}), 1e-12);
  EXPECT_LT(eight.ValueAt(1.0 + 4.0 * Nu_2PI).DistanceTo(eight.ValueAt(1.0)), 1e-14) << "around";
  const CNuPCurve open = OnlyCurve(CNuCylSurf(1.0), Cone(30, {0.2, 1, 0}, {0, 0.5, std::cos(30 * kDegree)}));
  double lower = 0.0, upper = 0.0;
  open.GetRange().GetBounds(&lower, &upper);
  EXPECT_TRUE(open.GetRange().IsLeftOpen() && open.GetRange().IsRightOpen() && !open.IsClosed());
  EXPECT_EQ(open.ValueAt(upper + 1.0).DistanceTo(open.ValueAt(upper)), 0.0);
  EXPECT_NEAR(Size(open.ValueAt(upper)), NuGetLengthTol() / DBL_EPSILON, 2.0) << "the largest part";
  EXPECT_TRUE(std::isnan(open.ValueAt(kNaN).x()));
  CNuPCurve moved = eight;
  moved.Rotate(90.0, CNuVector(0, 0, 1));
  moved.Translate(0.0, 0.0, 5.0);
  const CNuPoint p = eight.ValueAt(2.0);
  EXPECT_LT(moved.ValueAt(2.0).DistanceTo({-p.y(), p.x(), p.z() + 5.0}), 1e-14);
  moved = eight;
  EXPECT_EQ(moved.ToPolyline(7).GetPoint(3).DistanceTo(eight.ToPointArray(7)[3]), 0.0);
  const std::string refused = "operation 12 conversion|CNuPCurve::ToPolyline/PointArray() [0,0]";
  EXPECT_EQ(FailureOf([&] { eight.ToPointArray(1); }), refused);
  EXPECT_EQ(FailureOf([&] { eight.ToPolyline(-3); }), refused);
}

// What a caller needs of a curve that is millions long, or of any size, within a part.
TEST(PCurves, AreUsedAtPartScale) {
  Random random(708);
  const CNuPoint low(-1.2, -0.9, -1.5), high(0.8, 1.1, 1.3);
  const auto isInside = [&](const CNuPoint& p, double margin) {
    return p.x() > low.x() - margin && p.x() < high.x() + margin && p.y() > low.y() - margin &&
           p.y() < high.y() + margin && p.z() > low.z() - margin && p.z() < high.z() + margin;
  };
  int parts = 0;
  for (int run = 0; run < 40; ++run) {
    const double spread = run % 4 == 0 ? 1e-5 : 10.0;
    const Surface a = RandomSurface(random, run % 2, 1.0, spread);
    for (const auto& object : Common(a, RandomSurface(random, run % 3, 1.0, spread))) {
      const auto& curve = As<CNuPCurve>(object);
      double lower = 0.0, upper = 0.0, u = 0.0;
      curve.GetRange().GetBounds(&lower, &upper);
      const CNuPoint p = curve.ValueAt(random.Uniform(lower, upper));
      const CNuPoint foot = curve.ClosestPoint(p, &u);
      ASSERT_LE(p.DistanceTo(foot), 1e-13 * (1.0 + Size(p))) << run;
      ASSERT_EQ(foot.DistanceTo(curve.ValueAt(u)), 0.0) << run;
      CNuObjArray clipped(1);
      Objects inside;
      for (int i = 0, count = curve.ClipTo(low, high, &clipped); i < count; ++i) inside.emplace_back(clipped[i]);
      parts += static_cast<int>(inside.size());
      for (const auto& part : inside) {
        const CNuPointArray points = As<CNuPCurve>(part).ToPointArray(50);
        for (int i = 0; i < 50; ++i) ASSERT_TRUE(isInside(points[i], 1e-12)) << run;
        const CNuPointArray chords = As<CNuPCurve>(part).ToPointArrayWithin(1e-3);
        for (int i = 0; i < 50; ++i) {
          double least = kInf;
          for (int k = 1; k < chords.GetSize(); ++k) {
            const CNuVector way = (chords[k] - chords[k - 1]).To3DVector();
            const double t = ((points[i] - chords[k - 1]).To3DVector() % way) / (way % way);
            least = std::min(least, points[i].DistanceTo(Along(chords[k - 1], way * std::min(1.0, std::max(0.0, t)))));
          }
          ASSERT_LE(least, 1e-3) << run;
        }
      }
      for (int i = 0; i < 300; ++i) {
        const CNuPoint q = curve.ValueAt(lower + i * ((upper - lower) / 300));
        if (!isInside(q, -1e-9)) continue;
        ASSERT_LE(DistanceTo(inside, q), 1e-13) << run;
      }
      const CNuPCurve part = curve.Part(CNuInterval(upper - 0.5, upper + 0.5, 0, 0));
      EXPECT_LE(part.ValueAt(upper + 0.25).DistanceTo(curve.ValueAt(upper + 0.25)),
                1e-13 * (1.0 + Size(curve.ValueAt(upper + 0.25))))
          << run;
    }
  }
  EXPECT_GT(parts, 20);
  const CNuPCurve eight = OnlyCurve(CNuCylSurf(1.0), CNuSphSurf(2.0, {1, 0, 0}));
  const std::string refused = "operation 12 conversion|CNuPCurve::ToPolyline/PointArray() [0,0]";
  for (const double tol : {0.0, kNaN}) EXPECT_EQ(FailureOf([&] { eight.ToPolylineWithin(tol); }), refused);
  EXPECT_TRUE(std::isnan(eight.ClosestPoint({kNaN, 0, 0}, nullptr).x()));
}

// Never above the distance of a sample, and on the way from the point to the curve, as far as it says.
TEST(PCurves, DistancesAreLeast) {
  Random random(705);
  for (int run = 0; run < 60; ++run) {
    const Surface a = RandomSurface(random, run % 2, 1.0);
    for (const auto& object : Common(a, RandomSurface(random, run % 3, 1.0))) {
      const auto& curve = As<CNuPCurve>(object);
      const CNuPoint p = RandomPoint(random, 3.0);
      const CNuPointArray samples = curve.ToPointArray(2001);
      double least = kInf, step = 0.0;
      for (int i = 0; i < 2001; ++i) {
        const double distance = p.DistanceTo(samples[i]);
        if (distance < least) step = samples[i].DistanceTo(samples[i > 0 ? i - 1 : 1]);
        least = std::min(least, distance);
      }
      ASSERT_LE(curve.DistanceTo(p), least * (1.0 + 1e-14)) << run;
      ASSERT_GE(curve.DistanceTo(p), least - step) << run;
      ASSERT_LE(curve.DistanceTo(samples[700]), 1e-13 * (1.0 + Size(samples[700]))) << run;
    }
  }
}

}  // namespace
