#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "support/clouds.h"
#include "support/failures.h"
#include "support/fitted.h"

namespace {

using namespace nu::test;

const CNuPoint kOrigin;

TEST(Conics, ConstructorsCheckInOrder) {
  const CNuVector x(1, 0, 0), z(0, 0, 1), flat(2), null(0, 0, 0), skew(1, 0, 1e-3), endless(0, 0, kInf);
  for (const double bad : {0.0, -1.0, kNaN}) {
    EXPECT_EQ(FailureOf([=] { CNuEllipse(bad, 1); }), "construction 5 semi-axis|CNuEllipse [0,0]");
    EXPECT_EQ(FailureOf([=] { CNuEllipse(1, bad, kOrigin, flat); }), "construction 5 semi-axis|CNuEllipse [0,0]");
    EXPECT_EQ(FailureOf([=] { CNuHyperbola(1, bad, kOrigin); }), "construction 5 semi-axis|CNuHyperbola [0,0]");
    EXPECT_EQ(FailureOf([=] { CNuParabola(bad, kOrigin, flat); }), "construction 5 focal-length|CNuParabola [0,0]");
  }
  EXPECT_EQ(FailureOf([] { CNuEllipse(1, std::nextafter(1, 2)); }), "construction 7 semi-axis|CNuEllipse [0,0]");
  EXPECT_EQ(FailureOf([] { CNuEllipse(1, 1), CNuHyperbola(1, 2); }), "nothing");
  const auto causes = [](const CNuVector& xAxis, const CNuVector& normal) {
    std::string all;
    const auto add = [&](const std::string& failure) { all += failure.substr(13, 2); };
    add(FailureOf([&] { CNuEllipse(2, 1, kOrigin, xAxis, normal); }));
    add(FailureOf([&] { CNuHyperbola(2, 1, kOrigin, xAxis, normal); }));
    add(FailureOf([&] { CNuParabola(2, kOrigin, xAxis, normal); }));
    return all;
  };
  EXPECT_EQ(causes(flat, null), "4 4 4 ");
  EXPECT_EQ(causes(x, flat), "4 4 4 ");
  EXPECT_EQ(causes(null, skew), "3 3 3 ");
  EXPECT_EQ(causes(x, endless), "3 3 3 ");
  EXPECT_EQ(causes(x, skew), "8 8 8 ");
  EXPECT_EQ(FailureOf([&] { CNuParabola(2, kOrigin, null); }), "construction 3 |CNuParabola [0,0]");
}

TEST(Conics, FrameIsNormalisedAndMoves) {
  const CNuVector x(0, 3, 0), normal(0, 0, -2);
  CNuEllipse ellipse(5, 3, CNuPoint(1, 2, 3), x, normal);
  CNuHyperbola hyperbola(5, 7, CNuPoint(1, 2, 3), x, normal);
  CNuParabola parabola(5, CNuPoint(1, 2, 3), x, normal);
  for (CNuCurve* curve :
       {static_cast<CNuCurve*>(&ellipse), static_cast<CNuCurve*>(&hyperbola), static_cast<CNuCurve*>(&parabola)}) {
    curve->Rotate(90, CNuGeometry::Z_AXIS);
  }
  double a = 0, b = 0;
  CNuPoint origin;
  CNuVector xAxis, zAxis;
  const auto moved = [&] {
    return origin.IsEqual(CNuPoint(-2, 1, 3), 1e-14) && xAxis.IsEqual(CNuVector(-1, 0, 0), 1e-15) &&
           zAxis.IsEqual(CNuVector(0, 0, -1), 1e-15);
  };
  ellipse.GetData(&a, &b, &origin, &xAxis, &zAxis);
  EXPECT_TRUE(a == 5 && b == 3 && moved() && ellipse.GetType() == 23);
  hyperbola.GetData(&a, &b, &origin, &xAxis, &zAxis);
  EXPECT_TRUE(a == 5 && b == 7 && moved() && CNuHyperbola(hyperbola).GetType() == 24);
  parabola.GetData(&a, &origin, &xAxis, &zAxis);
  EXPECT_TRUE(a == 5 && moved() && parabola.GetType() == 25);
  EXPECT_TRUE(parabola.GetPlane().GetNormal().IsEqual(zAxis, 1e-15) && parabola.GetVertex().z() == 3);
  EXPECT_FALSE(CNuEllipse(2, 1).IsPositionSet());
  EXPECT_NEAR(CNuEllipse(2, 1, kOrigin, CNuVector(1, 1, 1)).GetXaxis() % CNuVector(1, 1, 1), 0.0, 1e-15);
}

// The three conics with a in 1 and the other length given, in a frame of their own; f = a for the parabola.
struct Conic {
  int kind;  // 0 ellipse, 1 hyperbola, 2 parabola
  double b;

  // The equation, its gradient over two, and the radius of curvature at (x, y) on the curve.
  double Value(double x, double y) const {
    return kind == 2 ? y * y - 4 * x : x * x + (kind == 0 ? 1 : -1) * y * y / (b * b) - 1;
  }
  CNuPoint Gradient(double x, double y) const {
    return kind == 2 ? CNuPoint(-2, y) : CNuPoint(x, (kind == 0 ? 1 : -1) * y / (b * b));
  }
  // A parameter from about -3 to 3.
  CNuPoint At(double t) const {
    return kind == 0   ? CNuPoint(std::cos(t), b * std::sin(t))
           : kind == 1 ? CNuPoint(std::cosh(t), b * std::sinh(t))
                       : CNuPoint(t * t, 2 * t);
  }
  double DistanceFrom(const CNuPoint& p) const {
    if (kind == 0) return CNuEllipse(1, b).DistanceTo(p);
    return kind == 1 ? CNuHyperbola(1, b).DistanceTo(p) : CNuParabola(1).DistanceTo(p);
  }
  int SideOf(const CNuPoint& p, double tol) const {
    if (kind == 0) return p.CurveSide(CNuEllipse(1, b), tol);
    return kind == 1 ? p.CurveSide(CNuHyperbola(1, b), tol) : p.CurveSide(CNuParabola(1), tol);
  }
};

std::vector<Conic> Conics() {
  std::vector<Conic> shapes{{2, 0}};
  for (const double b : {1.0, 1 - 1e-9, 0.5, 0.02, 1e-6}) shapes.push_back({0, b});
  for (const double b : {1e-3, 0.5, 1.0, 30.0}) shapes.push_back({1, b});
  return shapes;
}

// Points at a known distance along the normal, on either side as far as the centre of curvature: the foot is known.
TEST(Conics, DistancesAlongTheNormalAreExact) {
  Random random(61);
  for (const Conic& shape : Conics()) {
    for (int k = 0; k < 3000; ++k) {
      const double t = k % 5 == 0 ? 0.0 : k % 5 == 1 ? std::pow(10.0, random.Uniform(-12, 0)) : random.Uniform(-3, 3);
      const CNuPoint foot = shape.At(t);
      CNuPoint n = shape.Gradient(foot.x(), foot.y());
      const double slope = std::hypot(n.x(), n.y());
      n = CNuPoint(n.x() / slope, n.y() / slope);
      // Inside an ellipse or a branch nothing is closer up to the smallest radius of curvature.
      const double least = shape.kind == 2 ? 2.0 : shape.b * shape.b;
      const double reach = k % 2 == 0 ? least : std::min(least, std::pow(10.0, random.Uniform(-9, 0)));
      const double inward = shape.kind == 1 ? 1.0 : -1.0;
      const double outward = shape.kind == 1 ? std::min(1e-3, least) : std::pow(10.0, random.Uniform(-9, 4));
      for (const double d : {inward * reach, -inward * outward}) {
        const CNuPoint p(foot.x() + d * n.x(), foot.y() + d * n.y());
        const double size = std::fabs(d) + std::hypot(foot.x(), foot.y()) + 1.0;
        ASSERT_NEAR(shape.DistanceFrom(p), std::fabs(d), 4 * kEps * size)
            << shape.kind << " b " << shape.b << " t " << t << " d " << d;
        if (std::fabs(d) < 16 * kEps * size) continue;
        const bool inside = (d > 0) == (shape.kind == 1);
        ASSERT_EQ(shape.SideOf(p, 8 * kEps * size), inside ? CNuGeometry::SIDE_INSIDE : CNuGeometry::SIDE_OUTSIDE)
            << shape.kind << " b " << shape.b << " t " << t << " d " << d;
        EXPECT_EQ(shape.SideOf(p, 1.01 * std::fabs(d) + 8 * kEps * size), CNuGeometry::SIDE_ON);
      }
    }
  }
}

// Anywhere, with the axes and the evolute: no point of the curve is closer than the distance, and one is as close.
TEST(Conics, NoPointOfTheCurveIsCloser) {
  Random random(62);
  for (const Conic& shape : Conics()) {
    for (int k = 0; k < 60; ++k) {
      const double x = k % 4 == 0 ? 0.0 : random.Uniform(-3, 3);
      const double y = k % 3 == 0 ? 0.0 : random.Uniform(-2, 2) * (k % 2 == 0 ? 1.0 : shape.b);
      const CNuPoint p(x, y);
      const double d = shape.DistanceFrom(p);
      double closest = kInf;
      for (int i = 0; i <= 3000; ++i) {
        const double t = -3.2 + 6.4 * i / 3000;
        const CNuPoint q = shape.At(t);
        closest = std::min({closest, p.DistanceTo(q), shape.kind == 1 ? p.DistanceTo(CNuPoint(-q.x(), q.y())) : 1e9});
      }
      EXPECT_LE(d, closest + 4 * kEps) << shape.kind << " b " << shape.b << " at " << x << " " << y;
      EXPECT_GE(d, closest - 5e-3 * (1 + shape.b)) << shape.kind << " b " << shape.b << " at " << x << " " << y;
    }
  }
}

TEST(Conics, DistancesInSpaceAndAtTheLimits) {
  const CNuVector x(0, 1, 0), normal(1, 0, 0);
  const CNuEllipse ellipse(5, 3, CNuPoint(1000, 0, 0), x, normal);
  EXPECT_EQ(ellipse.DistanceTo(CNuPoint(1004, 0, 0)), 5.0);
  EXPECT_EQ(ellipse.DistanceTo(CNuPoint(1000, 8, 0)), 3.0);
  EXPECT_EQ(ellipse.DistanceTo(CNuPoint(1004, 8, 0)), 5.0);
  EXPECT_EQ(CNuPoint(1000 + 1e-13, 8, 0).CurveSide(ellipse, 1e-3), CNuGeometry::SIDE_OUTSIDE);
  EXPECT_EQ(FailureOf([] { CNuPoint().CurveSide(CNuPlane(), 1.0); }),
            "operation 45 calculation|CNuPoint::CurveSide() [0,0]");
  // Whatever the numbers, an answer comes.
  for (const double large : {1e-310, 1e-160, 1e160, 1e308, kInf, kNaN}) {
    for (const double b : {1e-300, 1.0, 1e300}) {
      for (const CNuPoint& p : {CNuPoint(large, 0), CNuPoint(0, large), CNuPoint(large, -large), CNuPoint(1, 1)}) {
        CNuEllipse(std::fmax(b, 1.0), std::fmin(b, 1.0)).DistanceTo(p);
        CNuHyperbola(1, b).DistanceTo(p);
        CNuParabola(b).DistanceTo(p);
      }
    }
  }
}

class WiderTol {
 public:
  explicit WiderTol(double tol) { NuSetLengthTol(tol); }
  ~WiderTol() { NuSetLengthTol(1e-12); }
};

// Lines through two points of the curve find these; turned about a third axis they find the one on the axis.
TEST(Conics, LinesAndPlanesThroughKnownPointsFindThem) {
  Random random(63);
  for (const Conic& shape : Conics()) {
    if (shape.b < 1e-3) continue;
    for (int k = 0; k < 300; ++k) {
      const Motion motion = RandomMotion(random, k % 2 == 0 ? 1.0 : 1e4);
      const WiderTol rounded(k % 2 == 0 ? 1e-12 : 1e-8);  // a host's, whose coordinates are rounded
      const auto axis = [&](double x, double y, double z) { return motion.Direction({x, y, z}).To3DVector(); };
      const CNuPoint centre = motion(kOrigin);
      const CNuEllipse ellipse(1, shape.kind == 0 ? shape.b : 1, centre, axis(1, 0, 0), axis(0, 0, 1));
      const CNuHyperbola hyperbola(1, shape.kind == 1 ? shape.b : 1, centre, axis(1, 0, 0), axis(0, 0, 1));
      const CNuParabola parabola(1, centre, axis(1, 0, 0), axis(0, 0, 1));
      const auto common = [&](const auto& other, CNuPoint* p, CNuPoint* q) {
        if (shape.kind == 0) return ellipse.IntersectWith(other, p, q);
        return shape.kind == 1 ? hyperbola.IntersectWith(other, p, q) : parabola.IntersectWith(other, p, q);
      };
      const double t = random.Uniform(-1.5, 1.4), u = random.Uniform(t + 0.05, 1.5);
      CNuPoint first = shape.At(t), second = shape.At(u), p, q;
      if (shape.kind == 1 && k % 3 == 0) second.x() *= -1;
      const double apart = first.DistanceTo(second);
      const CNuPoint here = motion(first), there = motion(second);
      const double tol = 256 * kEps * (k % 2 == 0 ? 4.0 : 1e4) / std::min(1.0, apart * apart) *
                         std::max(1.0, shape.b * shape.b) / std::min(1.0, shape.b);
      ASSERT_EQ(common(CNuLine(here, there), &p, &q), 2) << shape.kind << " b " << shape.b << " " << t << " " << u;
      EXPECT_LE(p.DistanceTo(here) + q.DistanceTo(there), tol) << shape.kind << " b " << shape.b;
      // A plane through both that leans: in the order of normal x plane normal.
      const CNuVector along = (there - here).To3DVector(), lean = axis(0, 0, 1) * along + axis(0, 0, 0.3);
      ASSERT_EQ(common(CNuPlane(here, along * lean * along), &p, &q), 2);
      EXPECT_GT((axis(0, 0, 1) * (along * lean * along)) % (q - p).To3DVector(), 0.0);
      EXPECT_LE(std::min(p.DistanceTo(here), q.DistanceTo(here)) + std::min(p.DistanceTo(there), q.DistanceTo(there)),
                16 * tol);
      // Across the plane there is one; past it none.
      ASSERT_EQ(common(CNuLine(here, axis(0.3, 0.1, 1)), &p, &q), 1);
      EXPECT_LE(p.DistanceTo(here), tol);
      const CNuPoint beside = here + (along * 0.25).To3DPoint();
      EXPECT_EQ(common(CNuLine(beside, axis(0, 0, 1)), &p, &q), 0);
      EXPECT_EQ(common(CNuPlane(beside, axis(0, 0, 1)), &p, &q), 0);
    }
  }
}

TEST(Conics, TangentsAsymptotesAndAxesHaveTheirCounts) {
  const double off = 1e-9;
  const double s = std::sqrt(0.5);
  const auto line = [](double x, double y, double dx, double dy) { return CNuLine({x, y}, CNuVector(dx, dy, 0)); };
  const CNuEllipse ellipse(5, 3);
  const CNuHyperbola hyperbola(5, 5);
  const CNuParabola parabola(2);
  CNuPoint p, q;
  const struct {
    CNuLine line;
    int ofEllipse, ofHyperbola, ofParabola;
  } rows[] = {{line(5, 0, 0, 1), 1, 1, 2},       {line(-5, 0, 0, 1), 1, 1, 0},      {line(5 + off, 0, 0, 1), 0, 2, 2},
              {line(5 - off, 0, 0, 1), 2, 0, 2}, {line(0, 3, 1, 0), 1, 2, 1},       {line(0, 0, 0, 1), 2, 0, 1},
              {line(-off, 0, 0, 1), 2, 0, 0},    {line(0, 0, 1, 1), 2, 0, 2},       {line(0, 1, 1, 1), 2, 1, 2},
              {line(0, 2, -s, -s), 2, 1, 1},     {line(0, 2 + off, 1, 1), 2, 1, 0}, {line(0, 1, 1, 1 + 1e-6), 2, 2, 2},
              {line(0, 1, 1, 0), 2, 2, 1}};
  int k = 0;
  for (const auto& row : rows) {
    EXPECT_EQ(row.line.IntersectWith(ellipse, &p, &q), row.ofEllipse) << k;
    EXPECT_EQ(row.line.IntersectWith(hyperbola, &p, &q), row.ofHyperbola) << k;
    EXPECT_EQ(row.line.IntersectWith(parabola, &p, &q), row.ofParabola) << k++;
  }
  EXPECT_TRUE(line(0, 1, -1, 0).IntersectWith(parabola, &p, &q) == 1 && p.IsEqual(CNuPoint(0.125, 1), 1e-15));
  EXPECT_TRUE(line(0, 1, -1, 0).IntersectWith(hyperbola, &p, &q) == 2 && p.x() > q.x());
}

TEST(Conics, SamplesLieOnTheCurveFromEndToEnd) {
  const CNuVector x(0, 1, 0), normal(1, 0, 0);
  const CNuPoint origin(10, 20, 30);
  const CNuEllipse ellipse(5, 3, origin, x, normal);
  const CNuHyperbola hyperbola(5, 3, origin, x, normal);
  const CNuParabola parabola(2, origin, x, normal);
  const CNuPointArray round = ellipse.ToPointArray(9);
  ASSERT_EQ(round.GetSize(), 9);
  EXPECT_TRUE(round[0].IsEqual(CNuPoint(10, 25, 30), 1e-300) && round[2].IsEqual(CNuPoint(10, 20, 33), 1e-14));
  EXPECT_EQ(round[8].DistanceTo(round[0]), 0.0);
  EXPECT_TRUE(ellipse.ToPolyline(2).GetSize() == 2 && ellipse.ToPolyline(100).IsClosed(1e-300));
  for (const int part : {0, 1}) {
    const double sign = part == 0 ? 1.0 : -1.0;
    const CNuPolyline branch = hyperbola.ToPolyline(7, -1.5, 2.5, part);
    const CNuPointArray side = parabola.ToPointArray(7, -3, 6, part);
    for (int i = 0; i < 7; ++i) {
      EXPECT_LE(hyperbola.DistanceTo(branch[i]), 1e-13);
      EXPECT_LE(parabola.DistanceTo(side[i]), 1e-13);
    }
    EXPECT_LE(branch[6].DistanceTo(CNuPoint(10, 20 + sign * 5 * std::cosh(2.5), 30 + 3 * std::sinh(2.5))), 1e-13);
    EXPECT_LE(branch[0].DistanceTo(CNuPoint(10, 20 + sign * 5 * std::cosh(1.5), 30 - 3 * std::sinh(1.5))), 1e-13);
    EXPECT_LE(side[6].DistanceTo(CNuPoint(10, 26, 30 + sign * 2 * std::sqrt(12.0))), 1e-14);
    EXPECT_EQ(side[0].DistanceTo(origin), 0.0) << "the part of the range that exists";
  }
  const struct {
    int n;
    double t0, t1;
    int part, ofHyperbola, ofParabola;
  } rows[] = {{1, 0, 1, 0, 12, 12},     {2, kNaN, 1, 0, 14, 14}, {2, 0, kInf, 0, 14, 14}, {2, 1, 1, 0, 15, 15},
              {2, 2, 1, 5, 15, 15},     {2, 0, 1, 2, 14, 14},    {2, -2, -1, 0, 0, 14},   {3, -4, 0, 1, 0, 14},
              {3, -800, 800, 0, 14, 0}, {2, 800, 900, 0, 14, 0}, {0, kNaN, 1, 7, 12, 12}};
  const auto expected = [](int cause, const char* name) {
    if (cause == 0) return std::string("nothing");
    return "operation " + std::to_string(cause) + " conversion|" + name + "::ToPolyline/PointArray() [0,0]";
  };
  for (const auto& row : rows) {
    EXPECT_EQ(FailureOf([&] { hyperbola.ToPolyline(row.n, row.t0, row.t1, row.part); }),
              expected(row.ofHyperbola, "CNuHyperbola"));
    EXPECT_EQ(FailureOf([&] { parabola.ToPolyline(row.n, row.t0, row.t1, row.part); }),
              expected(row.ofParabola, "CNuParabola"));
  }
  EXPECT_EQ(FailureOf([&] { ellipse.ToPolyline(1); }), expected(12, "CNuEllipse"));
}

const char* const kClasses[] = {"CNuEllipse", "CNuHyperbola", "CNuParabola"};

Fitted FitOf(int kind, const CNuPointArray& points, long limit = 200) {
  return FitOf(TheFit(kClasses[kind]), points, 0.0, limit);
}

double SumFor(int kind, const Shape& s, const CNuPointArray& points) {
  double sum = 0;
  const CNuEllipse ellipse(kind == 0 ? std::max(s.radius, s.minor) : 2, kind == 0 ? std::min(s.radius, s.minor) : 1,
                           s.place, s.axis, s.normal);
  const CNuHyperbola hyperbola(s.radius, kind == 1 ? s.minor : 1, s.place, s.axis, s.normal);
  const CNuParabola parabola(s.radius, s.place, s.axis, s.normal);
  for (int i = 0; i < points.GetSize(); ++i) {
    const double d = kind == 0   ? ellipse.DistanceTo(points[i])
                     : kind == 1 ? hyperbola.DistanceTo(points[i])
                                 : parabola.DistanceTo(points[i]);
    sum += d * d;
  }
  return sum;
}

struct Part {
  int kind;
  double b;
  double from, to;
  double noise;  // the most with which the part still says what it is
  bool bothBranches = false;
};

const Part kParts[] = {{0, 0.7, 0, 6.28, 1e-2},     {0, 0.7, 0.3, 3.44, 1e-2},    {0, 0.7, 0.6, 1.12, 1e-4},
                       {0, 0.7, -0.26, 0.26, 1e-4}, {0, 1 - 1e-6, 0, 6.28, 1e-2}, {0, 1, 0, 3, 1e-2},
                       {0, 0.02, 0, 6.28, 1e-3},    {0, 0.02, 0, 3.14, 1e-3},     {1, 1, -1.5, 1.5, 1e-2, true},
                       {1, 0.3, -1, 1.5, 1e-3},     {1, 3, -0.8, 1, 1e-3},        {1, 0.5, 0.2, 2, 1e-4, true},
                       {2, 0, -1, 1.5, 1e-2},       {2, 0, -0.2, 0.3, 1e-4},      {2, 0, 2, 4, 1e-3},
                       {2, 0, 8, 12, 1e-4},         {2, 0, 20, 24, 1e-4}};

CNuPointArray PointsOn(Random& random, const Part& part, int n, double noise) {
  const Conic shape{part.kind, part.b};
  CNuPointArray points(n);
  for (int i = 0; i < n; ++i) {
    CNuPoint p = shape.At(random.Uniform(part.from, part.to));
    const CNuPoint g = shape.Gradient(p.x(), p.y());
    const double e = noise * random.Bell() / std::hypot(g.x(), g.y());
    if (part.bothBranches && i % 3 == 0) p = CNuPoint(-p.x(), p.y());
    points.Add(p + CNuPoint(e * g.x() * (part.bothBranches && i % 3 == 0 ? -1 : 1), e * g.y()));
  }
  return points;
}

// No small change of a parameter lowers the sum.
void ExpectLeast(Random& random, int kind, const Fitted& best, const CNuPointArray& points, double slack) {
  // Their plane is theirs to rounding only.
  const double sum = SumFor(kind, best, points);
  EXPECT_NEAR(sum, best.sumsq, slack);
  for (int trial = 0; trial < 40; ++trial) {
    const double h = std::pow(10.0, random.Uniform(-7, -3));
    const auto change = [&] { return h * random.Uniform(-1, 1); };
    Fitted other = best;
    const CNuVector y = best.normal * best.axis;
    other.place += (best.axis * change() + y * change()).To3DPoint();
    const double turn = change();
    other.axis = (best.axis + y * turn) / std::hypot(1.0, turn);
    other.radius *= 1 + change();
    other.minor *= 1 + change();
    if (kind == 0 && other.minor > other.radius) continue;
    EXPECT_GE(SumFor(kind, other, points), sum - slack) << h;
  }
}

// In any place, 1e4 away as well, the fit ends at the least sum. Without noise it finds the conic.
TEST(ConicFits, NoSmallChangeLowersTheSum) {
  Random random(64);
  for (const Part& part : kParts) {
    for (const double noise : {0.0, 1e-3 * part.noise, part.noise}) {
      for (int k = 0; k < 8; ++k) {
        SCOPED_TRACE(std::to_string(&part - kParts) + " noise " + std::to_string(noise) + " k " + std::to_string(k));
        const double far = k % 2 == 0 ? 1.0 : 1e4;
        const Motion motion = RandomMotion(random, far);
        const CNuPointArray points = motion(PointsOn(random, part, 30 + 40 * (k % 3), noise));
        Fitted best;
        ASSERT_EQ(FailureOf([&] { best = FitOf(part.kind, points); }), "nothing");
        const double rounding = 64 * kEps * far * (part.kind == 2 ? part.to * part.to : 1);
        const double n = points.GetSize(), slack = 2 * rounding * std::sqrt(n * best.sumsq) + n * rounding * rounding;
        EXPECT_LE(best.sumsq, 3 * n * noise * noise + n * rounding * rounding);
        EXPECT_LE(best.form, 12.1 * noise + rounding);
        ExpectLeast(random, part.kind, best, points, slack);
      }
    }
  }
}

// Short arcs whose noise is up to a third of their height: twenty steps lead to the least sum, which is not above that
// for the true conic. There is none where parabolas are better than that one: ellipses or hyperbolas then approach
// them.
TEST(ConicFits, NoisyArcsEndInTheLeastSumOrHaveNone) {
  const Part parts[] = {{1, 1, -0.5, 0.5, 1e-3},     {1, 1, -0.5, 0.5, 1e-2},    {1, 0.5, 0.5, 1.2, 1e-3},
                        {0, 0.7, -0.26, 0.26, 1e-3}, {0, 0.7, 0.79, 1.31, 1e-2}, {0, 0.7, 0, 1.57, 1e-2},
                        {0, 0.02, 0, 6.28, 1e-2},    {2, 0, -0.5, 0.5, 1e-2},    {2, 0, 20, 24, 1e-2},
                        {2, 0, -0.5, 0.5, 0.3}};
  const char* const names[] = {"CNuEllipse", "CNuHyperbola", "CNuParabola"};
  Random random(69);
  int found = 0, none = 0;
  for (const Part& part : parts) {
    for (int k = 0; k < 12; ++k) {
      SCOPED_TRACE(std::to_string(&part - parts) + " k " + std::to_string(k));
      const CNuPointArray points = PointsOn(random, part, 60, part.noise);
      const CNuVector x(1, 0, 0), z(0, 0, 1);
      const double ofTruth = SumFor(part.kind, {kOrigin, x, z, 1, part.b}, points);
      Fitted best;
      const std::string failure = FailureOf([&] { best = FitOf(part.kind, points, 21); });
      if (failure == "nothing") {
        ++found;
        Fitted same;
        CNuAssociation association(points);
        EXPECT_LE(TheFit(names[part.kind]).associate(association, 1e-9, 1000, same).GetSteps(), 20);
        EXPECT_LE(best.sumsq, ofTruth);
        ExpectLeast(random, part.kind, best, points, 1e-11 * best.sumsq);
      } else {
        ++none;
        EXPECT_EQ(failure.substr(0, 11), "bestfit 11 ");
        EXPECT_NE(part.kind, 2);
        EXPECT_LE(FitOf(2, points).sumsq, ofTruth);
      }
    }
  }
  EXPECT_TRUE(found > 5 * 12 && none > 12) << found << " " << none;
}

// What is no curve at all is left by progress, not by the limit.
TEST(ConicFits, PointsWithoutACurveEndByThemselves) {
  Random random(70);
  for (const int cloud : {0, 1, 2, 3}) {
    CNuPointArray points(3000);
    for (int i = 0; i < 3000; ++i) {
      const double u = random.Uniform(-1, 1), v = random.Uniform(-1, 1);
      if (cloud == 0) points.Add(CNuPoint(u, v));
      if (cloud == 1) points.Add(CNuPoint(i % 50, i / 50));
      if (cloud == 2) points.Add(CNuPoint(random.Bell(), random.Bell()));
      if (cloud == 3) points.Add(CNuPoint(i % 2 + 0.01 * u, 0.01 * v));
    }
    for (const int kind : {0, 1, 2}) {
      const std::string failure = FailureOf([&] { FitOf(kind, points, 1'000'000); });
      EXPECT_EQ(failure.find("bestfit 12"), std::string::npos) << cloud << " " << kind;
    }
  }
  // Feet of many points jump from one side of the ellipse to the other, which no derivative of a deviation tells.
  CNuPointArray sphere(100'000);
  for (int i = 0; i < 100'000; ++i) {
    const double z = 1 - (2 * i + 1) / 1e5, r = std::sqrt(1 - z * z);
    sphere.Add(CNuPoint(r * std::cos(2.39996322972865332 * i), r * std::sin(2.39996322972865332 * i), z));
  }
  EXPECT_EQ(FailureOf([&] { FitOf(0, sphere, 21); }), "nothing");
}

// The order, a motion and a power of two as the unit carry over.
TEST(ConicFits, OrderMotionAndScaleCarryOver) {
  Random random(68);
  NuSetTol(1e-40);  // to the last digit; otherwise the last step depends on the unit
  for (const Part& part : kParts) {
    SCOPED_TRACE(&part - kParts);
    const CNuPointArray points = PointsOn(random, part, 60, part.noise);
    const Fitted f = FitOf(part.kind, points);
    CNuPointArray scaled(points);
    for (int i = 0; i < scaled.GetSize(); ++i) scaled[i] *= 0x1p20;
    const Fitted g = FitOf(part.kind, scaled);
    EXPECT_EQ(g.Numbers(0x1p20), f.Numbers(1.0));
    const Motion motion = RandomMotion(random, 10);
    const Fitted moved = FitOf(part.kind, Shuffled(random, motion(points)));
    // A flat sum of squares leaves the parameters uncertain by the root of its rounding.
    const double rounding = 640 * kEps * (part.kind == 2 ? part.to * part.to : 1);
    const double slack = 2 * rounding * std::sqrt(60 * f.sumsq) + 60 * rounding * rounding;
    EXPECT_NEAR(moved.sumsq, f.sumsq, slack);
    EXPECT_NEAR(SumFor(part.kind, moved, motion(points)), f.sumsq, slack);
    EXPECT_NEAR(moved.form, f.form, 1e-5 * f.form);
  }
  NuSetTol(4.45e-16);
}

// More points than a sample, sizes at the ends of the range of doubles.
TEST(ConicFits, ManyPointsAndExtremeSizes) {
  Random random(66);
  for (const Part& part : {kParts[1], kParts[8], kParts[12]}) {
    const CNuPointArray many = PointsOn(random, part, 40000, part.noise);
    const Fitted f = FitOf(part.kind, many);
    EXPECT_LE(f.place.DistanceTo(kOrigin), 0.1 * part.noise);
    EXPECT_NEAR(f.radius, 1.0, 0.1 * part.noise);
    EXPECT_NEAR(f.sumsq, SumFor(part.kind, f, many), 1e-12 * f.sumsq);
    const CNuPointArray few = PointsOn(random, part, 40, part.noise);
    const Fitted unit = FitOf(part.kind, few);
    NuSetLengthTol(1e-300);
    for (const double size : {0x1p-100, 0x1p-30, 0x1p30, 0x1p100}) {
      CNuPointArray scaled(few);
      for (int i = 0; i < scaled.GetSize(); ++i) scaled[i] *= size;
      Fitted at;
      ASSERT_EQ(FailureOf([&] { at = FitOf(part.kind, scaled); }), "nothing") << size;
      EXPECT_NEAR(at.radius / size, unit.radius, 1e-9) << size;
    }
    NuSetLengthTol(1e-12);
  }
}

struct Root : CNuCurve {
  using CNuCurve::ClassifyQuadratic;
  using CNuCurve::FitQuadratic;
};

std::string KindOf(double a, double b, double c, double d, double e, double f, double tol = 1e-10) {
  const double numbers[] = {a, b, c, d, e, f};
  CNuVector six(6);
  for (int i = 0; i < 6; ++i) six[i] = numbers[i];
  int kind = 0;
  const std::string failure = FailureOf([&] { kind = Root::ClassifyQuadratic(six, tol); });
  return kind > 0 ? std::to_string(kind) : failure;
}

TEST(QuadraticCurves, KindsAreToldWhateverTheUnit) {
  const std::string none = "operation 46 classification|CNuCurve::ClassifyQuadratic() [0,0]";
  const struct {
    double six[6];
    std::string kind;
  } rows[] = {{{1, 0, 1, 0, 0, -1}, "1"},    {{-2, 1, -2, 3, 4, 5}, "1"},  {{1, 0, 1e-6, 0, 0, -1}, "1"},
              {{1, 0, -1, 0, 0, -1}, "2"},   {{0, 1, 0, 0, 0, -1}, "2"},   {{1, 5, 1, 7, 8, 0}, "2"},
              {{0, 0, 1, -4, 0, 0}, "3"},    {{1, 2, 1, 1, -1, 5}, "3"},   {{1, 0, 1e-13, 0, 1, 0}, "3"},
              {{1, 0, -1, 0, 0, 0}, "4"},    {{1, -3, 2, -2, 3, 1}, "4"},  {{1, 0, 0, 0, 0, -1}, "4"},
              {{1, 0, 0, 2, 1e-12, 1}, "4"}, {{0, 0, 0, 1, 2, 3}, "4"},    {{1, 2, 1, 2, 2, 1}, "4"},
              {{1, 0, 1, 0, 0, 0}, none},    {{1, 0, 1, 0, 0, 1}, none},   {{1, 0, 1, -2, -4, 5}, none},
              {{1, 0, 0, 0, 0, 1}, none},    {{0, 0, 0, 0, 0, 1}, none},   {{0, 0, 0, 0, 0, 0}, none},
              {{1, 0, kNaN, 0, 0, 1}, none}, {{kInf, 0, 1, 0, 0, 1}, none}};
  for (const auto& row : rows) {
    const double* g = row.six;
    for (const double unit : {1.0, 1e-9, 1e9}) {
      for (const double f : {1.0, -3e8, 1e-100}) {
        const double u = f * unit, uu = u * unit;
        EXPECT_EQ(KindOf(f * g[0], f * g[1], f * g[2], u * g[3], u * g[4], uu * g[5]), row.kind)
            << &row - rows << " in the unit " << unit << " times " << f;
      }
    }
  }
  EXPECT_EQ(FailureOf([] { Root::ClassifyQuadratic(CNuVector(5), 1); }),
            "operation 5 data checking|CNuCurve::ClassifyQuadratic() [0,0]");
}

// In any place the fit of exact points finds the equation they satisfy; noise leaves no better one.
TEST(QuadraticCurves, FitsVanishOnTheirPointsAndAreLeast) {
  Random random(67);
  for (int k = 0; k < 400; ++k) {
    const int kind = k % 4 + 1;
    const double turn = random.Uniform(0, 6.3), far = k % 8 < 4 ? 1.0 : 1e3, noise = k % 3 == 0 ? 1e-3 : 0.0;
    const double x0 = k % 5 == 0 ? 0 : far * random.Uniform(-1, 1), y0 = k % 5 == 0 ? 0 : far * random.Uniform(-1, 1);
    CNuPointArray points(60);
    for (int i = 0; i < 60; ++i) {
      const double t = i < 30 ? random.Uniform(-1.5, 1.5) : points[i - 30].z(), sign = i % 2 == 0 ? 1 : -1;
      CNuPoint p = kind == 4 ? CNuPoint(t, sign * 0.7 * t) : Conic{kind - 1, 0.6}.At(t);
      if (kind == 2) p.x() *= sign;
      points.Add(CNuPoint(p.x() * std::cos(turn) - p.y() * std::sin(turn) + x0 + noise * random.Bell(),
                          p.x() * std::sin(turn) + p.y() * std::cos(turn) + y0, t));
    }
    for (int i = 0; i < 60; ++i) points[i].z() = 8.0;
    CNuVector six(1);
    ASSERT_EQ(FailureOf([&] { Root::FitQuadratic(points, &six); }), "nothing");
    ASSERT_EQ(six.GetSize(), 6);
    const auto sumFor = [&](const CNuVector& g) {
      double sum = 0;
      for (int i = 0; i < points.GetSize(); ++i) {
        const double x = points[i].x(), y = points[i].y();
        const double value = g[0] * x * x + g[1] * x * y + g[2] * y * y + g[3] * x + g[4] * y + g[5];
        sum += value * value / (g[0] * g[0] + 0.5 * g[1] * g[1] + g[2] * g[2]);
      }
      return sum;
    };
    const double rounding = 60 * std::pow(64 * kEps * (3 + far) * (3 + far), 2), sum = sumFor(six);
    EXPECT_NEAR(six[0] * six[0] + 0.5 * six[1] * six[1] + six[2] * six[2], 1.0, 8 * kEps);
    if (noise == 0.0) {
      EXPECT_LE(sum, rounding) << k;
      EXPECT_EQ(Root::ClassifyQuadratic(six, 1e-7), kind) << k;
    }
    for (int trial = 0; trial < 20; ++trial) {
      CNuVector other(six);
      for (int i = 0; i < 6; ++i) other[i] += 1e-4 * random.Uniform(-1, 1);
      EXPECT_GE(sumFor(other), sum - rounding - 2 * std::sqrt(sum * rounding)) << k;
    }
  }
}

TEST(QuadraticCurves, WhatIsNotPlanarOrTooLittleFails) {
  CNuPointArray points(9);
  CNuVector six(2);
  const auto failure = [&] { return FailureOf([&] { Root::FitQuadratic(points, &six); }); };
  for (int i = 0; i < 4; ++i) points.Add({1.0 * i, 1.0 * i * i});
  EXPECT_EQ(failure(), "bestfit 1 |CNuCurve [5,0]");
  points.Add(points[0]);
  EXPECT_EQ(failure(), "bestfit 2 |CNuCurve [5,0]");
  points.Add({5, 5, 1e-9});
  EXPECT_EQ(failure(), "operation 45 3D calculation|CNuCurve::FitQuadratic() [0,0]");
  points[5] = CNuPoint(5, kNaN, 0);
  EXPECT_EQ(failure(), "bestfit 11 |CNuCurve [0,0]");
  EXPECT_EQ(six.GetSize(), 2);
  points[5] = CNuPoint(5, 25, 0);
  EXPECT_EQ(failure(), "nothing");
  EXPECT_EQ(Root::ClassifyQuadratic(six, 1e-9), 3);
}

}  // namespace
