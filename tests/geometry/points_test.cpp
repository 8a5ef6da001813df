#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"
#include "support/scratch_file.h"

namespace {

using namespace nu::test;

const CNuPoint kOrigin;

void ExpectPoint(const CNuPoint& p, const CNuPoint& expected, double tol = 0.0) {
  EXPECT_TRUE(std::fabs(p.x() - expected.x()) <= tol && std::fabs(p.y() - expected.y()) <= tol &&
              std::fabs(p.z() - expected.z()) <= tol)
      << p.x() << " " << p.y() << " " << p.z() << ", not " << expected.x() << " " << expected.y() << " "
      << expected.z();
}

TEST(Point, IsFortyBytesOfValue) {
  static_assert(sizeof(CNuPoint) == 40);
  CNuPoint p(1, 2, 3), q;
  EXPECT_EQ(p.GetType(), 17);
  p.y() = 5;
  CNuPoint::Swap(p, q);
  ExpectPoint(q, CNuPoint(1, 5, 3));
  const CNuVector three = q, four = q.To4DVector();
  EXPECT_TRUE(three.IsEqual(CNuVector(1, 5, 3), 1e-300) && four.GetSize() == 4 && four[1] == 5 && four[3] == 1);
  ExpectPoint((p += q) + -q * 2 - q / 0.5, CNuPoint(-3, -15, -9));
  ExpectPoint(((q -= p) += CNuPoint(2, 4, 8)) *= 0.5, CNuPoint(1, 2, 4));
  // A box test, and a strict one.
  const CNuPoint box(3, 3, -3);
  for (const double tol : {0.0, -1.0, kNaN}) EXPECT_FALSE(box.IsEqual(box, tol) || kOrigin.IsZero(tol));
  EXPECT_TRUE(box.IsZero(3.5) && !box.IsZero(3.0) && box.IsEqual(CNuPoint(3.25, 2.75, -2.75), 0.26));
  for (const CNuPoint& r : {CNuPoint(4, 3, -3), CNuPoint(3, 2, -3), CNuPoint(3, 3, -4), CNuPoint(kNaN, 3, -3)}) {
    EXPECT_FALSE(box.IsEqual(r, 1.0));
  }
}

TEST(Point, TheFourScalarLimitsDiffer) {
  const struct {
    const char *name, *failure;
    std::function<void(CNuPoint&, double)> apply;
    double taken, refused, limit;
    bool takesLimit, takesNaN;
  } cases[] = {
      {"operator*", "operation 7 ", [](CNuPoint& p, double s) { p* s; }, -1e299, -1e301, 1e300, false, false},
      {"operator*=", "operation 7 ", [](CNuPoint& p, double s) { p *= s; }, -1e299, -kInf, 1e300, true, true},
      {"operator/", "operation 6 ", [](CNuPoint& p, double s) { p / s; }, -1e-299, -1e-301, 1e-300, true, true},
      {"operator/=", "operation 6 ", [](CNuPoint& p, double s) { p /= s; }, -1e-299, 0.0, 1e-300, false, false},
  };
  for (const auto& c : cases) {
    const auto takes = [&c](double s) {
      CNuPoint p(1, 2, 3);
      const std::string failure = FailureOf([&] { c.apply(p, s); });
      if (failure == "nothing") return true;
      ExpectPoint(p, CNuPoint(1, 2, 3));
      EXPECT_EQ(failure, std::string(c.failure) + c.name + "|CNuPoint [0,0]");
      return false;
    };
    EXPECT_TRUE(takes(c.taken) && !takes(c.refused)) << c.name;
    EXPECT_TRUE(takes(c.limit) == c.takesLimit && takes(kNaN) == c.takesNaN) << c.name;
  }
}

// The same figure at every size, and at offsets that leave its coordinates exact.
TEST(PointRelations, DistancesDoNotFeelSizeOrOffset) {
  const double figures[][2] = {{1e-280, 0}, {1e-150, 0}, {1, 0}, {1, 134217728.0}, {1, -1e8}, {1e150, 0}, {1e280, 0}};
  for (const auto& [size, offset] : figures) {
    const CNuPoint base(offset, -offset, 2 * offset), p = base + CNuPoint(2, 3, 6) * size;
    const CNuSphSurf sphere(4 * size, base);
    // The smallest figures lie within the length tolerance of the circle's plane and count as in it.
    const double toCircle = size < NuGetLengthTol() ? 3.0 : std::hypot(6, std::sqrt(13.0) - 4);
    const double distances[][2] = {{p.DistanceTo(base), 7.0},
                                   {p.DistanceTo(CNuLine(base, CNuVector(0, 3, 4))), std::sqrt(5.44)},
                                   {p.DistanceTo(CNuPlane(base + CNuPoint(-9, 0, 0) * size, CNuVector(0, -4, 3))), 1.2},
                                   {base.DistanceTo(sphere), 4.0},
                                   {p.DistanceTo(sphere), 3.0},
                                   {p.DistanceTo(CNuCircle(4 * size, base, CNuVector(0, 0, 1))), toCircle}};
    for (const auto& [distance, expected] : distances) {
      EXPECT_NEAR(distance / size, expected, 8 * kEps * expected) << size << " " << offset;
    }
  }
  const CNuPoint foot = CNuPoint(2e280, 3e280, 6e280).ProjectionOn(CNuSphSurf(14e280));
  ExpectPoint(foot / 1e280, CNuPoint(4, 6, 12), 16 * kEps);
  EXPECT_EQ(CNuPoint(1e308, 1e308).DistanceTo(CNuPoint(-1e308, -1e308)), kInf);
}

TEST(PointRelations, ProjectionsAreFeetAndMidElementsLieHalfway) {
  Random random(3);
  const auto any = [&random] { return RandomPoint(random, 9); };
  constexpr double tol = 1e-13;
  for (int i = 0; i < 100; ++i) {
    const CNuPoint p = any(), q = any();
    const CNuLine line(any(), any().To3DVector());
    const CNuPlane plane(any(), any().To3DVector());
    const CNuSphSurf sphere(random.Uniform(0.1, 9), any());
    const CNuPoint onLine = p.ProjectionOn(line), onPlane = p.ProjectionOn(plane), onSphere = p.ProjectionOn(sphere);
    EXPECT_LT(onLine.DistanceTo(line) + onPlane.DistanceTo(plane) + onSphere.DistanceTo(sphere), tol);
    EXPECT_NEAR(p.DistanceTo(onLine), p.DistanceTo(line), tol);
    EXPECT_NEAR(p.DistanceTo(onPlane), p.DistanceTo(plane), tol);
    EXPECT_NEAR(p.DistanceTo(onSphere), p.DistanceTo(sphere), tol);
    ExpectPoint(p.MidPoint(line) * 2 - p, onLine, tol);
    ExpectPoint(p.MidPoint(plane) * 2 - p, onPlane, tol);
    for (const auto& [mid, halfway] : {std::pair(p.MidPlane(q), p.MidPoint(q)), {p.MidPlane(line), p.MidPoint(line)}}) {
      ExpectPoint(p.ProjectionOn(mid), halfway, tol);
      EXPECT_EQ(p.SurfaceSide(mid, tol), CNuGeometry::SIDE_OUTSIDE);
    }
  }
  ExpectPoint(CNuPoint(1, 2, 3).MidPoint(CNuPoint(3, 2, -3)), CNuPoint(2, 2, 0));
  const CNuPoint p(1, 0, 0);
  EXPECT_EQ(FailureOf([&] { p.MidPlane(p); }), "operation 19 calculation|CNuPoint::MidPlane(CNuPoint) [0,0]");
  EXPECT_EQ(FailureOf([&] { p.MidPlane(CNuLine()); }), "operation 21 calculation|CNuPoint::MidPlane(CNuLine) [0,0]");
  EXPECT_EQ(FailureOf([&] { p.ProjectionOn(CNuSphSurf(1, p)); }),
            "operation 9 calculation|CNuPoint::ProjectionOn() [0,0]");
}

// A curve of any type code that only knows its distance to a point.
class OneCurve : public CNuBoundedCurve {
 public:
  explicit OneCurve(int type) : CNuBoundedCurve(static_cast<ENuObjectType>(type)) {}
  CNuPoint GetStartPoint() override { return {}; }
  CNuPoint GetEndPoint() override { return {}; }
  void GetStartData(CNuPoint*, CNuVector*, CNuVector*) const override {}
  void GetEndData(CNuPoint*, CNuVector*, CNuVector*) const override {}
  void BoundingBox(CNuPoint*, CNuPoint*) const override {}
  void BoundingCircle(double*, CNuPoint*) const override {}
  double DistanceTo(const CNuBoundedCurve*, CNuPoint*, CNuPoint*) const override { return 0.0; }
  double DistanceTo(const CNuPoint& p) const override { return p.x() + 0.5; }
  double Length() const override { return 0.0; }
  CNuBoundedCurve* Offset(double, const CNuVector&, int) override { return nullptr; }
  CNuBoundedCurve* Offset(double) override { return nullptr; }
};
class OneSurface : public CNuSurface {
 public:
  explicit OneSurface(int type) : CNuSurface(static_cast<ENuObjectType>(type)) {}
};

TEST(PointRelations, DispatchByTypeAndRefuseWhatIsMissing) {
  const CNuPoint p(2, 0, 0);
  for (const int type : {26, 29, 30, 31}) EXPECT_EQ(p.DistanceTo(OneCurve(type)), 2.5) << type;
  const auto missing = [](const char* name) {
    return std::string("operation 45 calculation|CNuPoint::") + name + "() [0,0]";
  };
  for (const int type : {0, 28, 36}) {
    EXPECT_EQ(FailureOf([&] { p.DistanceTo(OneCurve(type)); }), missing("DistanceTo")) << type;
    EXPECT_EQ(FailureOf([&] { p.CurveSide(OneCurve(type), 0.1); }), missing("CurveSide")) << type;
    EXPECT_EQ(FailureOf([&] { p.DistanceTo(OneSurface(type)); }), missing("DistanceTo")) << type;
    EXPECT_EQ(FailureOf([&] { p.ProjectionOn(OneSurface(type)); }), missing("ProjectionOn")) << type;
    EXPECT_EQ(FailureOf([&] { p.SurfaceSide(OneSurface(type), 0.1); }), missing("SurfaceSide")) << type;
  }
  EXPECT_EQ(FailureOf([&] { p.DistanceTo(CNuEllipse(2, 1)); }), missing("DistanceTo")) << "conics have their own";
  EXPECT_EQ(FailureOf([&] { p.DistanceTo(CNuHyperbola(2, 1)); }), missing("DistanceTo"));
  EXPECT_EQ(FailureOf([&] { p.DistanceTo(CNuParabola(1)); }), missing("DistanceTo"));
}

// A copy of a base class keeps the type code of its source without being one, and so does an object to which another
// class was assigned through a base. None is taken for what its code says.
TEST(PointRelations, RefuseSlices) {
  CNuCompositeCurve chain;
  chain.AddSegment(CNuLineSegment(CNuPoint(), CNuPoint(1, 0, 0)), NuTrue);
  const CNuCircle circle(1);
  const CNuEllipse ellipse(2, 1);
  const CNuHyperbola hyperbola(2, 1);
  const CNuParabola parabola(1);
  const CNuLineSegment segment;
  const CNuCircularArc arc(CNuPoint(), CNuPoint(1, 0, 0), CNuPoint(0, 1, 0), NuTrue);
  const CNuPolyline polyline = circle.ToPolyline(9);
  const CNuPlane plane;
  const CNuSphSurf sphere(1);
  const CNuCylSurf cylinder(1);
  const CNuConSurf cone(30);
  const CNuPoint p(3, 4, 5);
  CNuPolyline posing = polyline;
  CNuPoint q;
  const auto refuses = [](auto call) { return FailureOf(call).substr(0, 13) == "operation 45 "; };
  const std::initializer_list<const CNuCurve*> curves = {&circle,  &ellipse, &hyperbola, &parabola,
                                                         &segment, &arc,     &polyline,  &chain};
  for (const CNuCurve* curve : curves) {
    const CNuCurve slice(*curve);
    EXPECT_EQ(slice.GetType(), curve->GetType());
    EXPECT_TRUE(refuses([&] { p.DistanceTo(slice); })) << slice.GetType();
    EXPECT_TRUE(refuses([&] { p.CurveSide(slice, 0.1); })) << slice.GetType();
    CNuCircle changed(7);
    static_cast<CNuObject&>(changed) = *curve;
    EXPECT_EQ(refuses([&] { p.DistanceTo(changed); }), curve != &circle) << curve->GetType();
    EXPECT_EQ(refuses([&] { p.CurveSide(changed, 0.1); }), curve != &circle) << curve->GetType();
    if (curve == &polyline || curve == &chain) continue;
    static_cast<CNuObject&>(posing) = *curve;
    EXPECT_TRUE(refuses([&] { chain.AddSegment(posing, NuTrue); })) << curve->GetType();
    EXPECT_TRUE(refuses([&] { segment.DistanceTo(&posing, &q, &q); })) << curve->GetType();
  }
  for (const CNuSurface* surface : std::initializer_list<const CNuSurface*>{&sphere, &cylinder, &cone}) {
    const CNuSurface slice(*surface);
    EXPECT_TRUE(refuses([&] { p.DistanceTo(slice); })) << slice.GetType();
    EXPECT_TRUE(refuses([&] { p.ProjectionOn(slice); })) << slice.GetType();
    EXPECT_TRUE(refuses([&] { p.SurfaceSide(slice, 0.1); })) << slice.GetType();
  }
  EXPECT_TRUE(refuses([&] { p.SurfaceSide(CNuGeometry(plane), 0.1); }));
}

TEST(PointRelations, Sides) {
  const CNuCircle circle(5, CNuPoint(10, 0, 0), CNuVector(1, 0, 0));
  const double ofCircle[][5] = {
      // point, distance, side
      {10, 5, 0, 0, 2},         {10, 0, -7, 2, 0},       {10, 0, 0, 5, 1},         {22, 0, 0, 13, 1},
      {14, 0, 8, 5, 0},         {7, 1, 0, 5, 1},         {10 + 5e-13, 3, 4, 0, 2}, {10 + 5e-12, 3, 4, 5e-12, 2},
      {10, 5.125, 0, 0.125, 0}, {10, 4.875, 0, 0.125, 1}};
  for (const auto& [x, y, z, distance, side] : ofCircle) {
    EXPECT_NEAR(CNuPoint(x, y, z).DistanceTo(circle), distance, 2e-15) << x << " " << y;
    EXPECT_EQ(CNuPoint(x, y, z).CurveSide(circle, 0.125), side) << x << " " << y;
  }
  const CNuVector refs[] = {CNuVector(0, 0, 1), CNuVector(0, 0, -1e200), CNuVector(0, 1e-200, 0)};
  const double ofLine[][5] = {// y, z, reference, tolerance, side
                              {1, 0, 0, 0.5, 0},    {-1, 0, 0, 0.5, 1},   {1, 0, 1, 0.5, 1}, {-1, 0, 1, 0.5, 0},
                              {0, 1, 0, 0.5, 0},    {0, -1, 0, 0.5, 0},   {0, 1, 2, 0.5, 1}, {0, -1, 2, 0.5, 0},
                              {0.25, 0, 0, 0.5, 2}, {-0.5, 0, 0, 0.5, 1}, {0, 0, 0, 0, 0},   {-1e-8, 0, 0, 1e-12, 1},
                              {-1e200, 0, 0, 1, 1}, {-1e-200, 0, 0, 0, 1}};
  for (const auto& [y, z, ref, tol, side] : ofLine) {
    EXPECT_EQ(CNuPoint(1e8, y, z).LineSide(CNuLine(), refs[static_cast<int>(ref)], tol), side) << y << " " << z;
  }
  EXPECT_EQ(CNuPoint(0, -2, 0).LineSide(CNuLine(), 0.5), CNuGeometry::SIDE_RIGHT);
  EXPECT_EQ(FailureOf([&] { CNuPoint(0, 1, 0).LineSide(CNuLine(), CNuVector(2), 0.1); }).substr(0, 12), "operation 10");
  EXPECT_EQ(FailureOf([&] { CNuPoint(0, 1, 0).LineSide(CNuLine(), CNuVector(), 0.1); }).substr(0, 12), "operation 9 ");
  const CNuPlane plane(CNuPoint(0, 0, 1), CNuVector(0, 0, -2));
  const CNuSphSurf sphere(2, CNuPoint(0, 0, 1));
  const double ofSurfaces[][3] = {{0, 0, 1},    {2, 1, 1},   {1.25, 2, 1}, {1.5, 1, 1}, {0.5, 0, 1}, {3.25, 1, 2},
                                  {2.75, 1, 2}, {3.5, 1, 0}, {2.5, 1, 1},  {-1, 0, 2},  {-7, 0, 0}};
  for (const auto& [z, ofPlane, ofSphere] : ofSurfaces) {
    EXPECT_EQ(CNuPoint(0, 0, z).SurfaceSide(plane, 0.5), ofPlane) << z;
    EXPECT_EQ(CNuPoint(0, 0, z).SurfaceSide(sphere, 0.5), ofSphere) << z;
  }
}

TEST(Point, Moves) {
  CNuPoint p(4, 5, 6);
  p.Translate(CNuPoint(1, 2, 3));  // places it there, and does not add
  ExpectPoint(p, CNuPoint(1, 2, 3));
  const CNuPoint centre(10, 20, 30);
  p.Rotate(90, CNuGeometry::X_AXIS);
  ExpectPoint(p, CNuPoint(1, -3, 2), 1e-15);
  (p += centre).Rotate(-90, CNuVector(1e200, 0, 0), centre);
  ExpectPoint(p -= centre, CNuPoint(1, 2, 3), 1e-15);
  const CNuPoint tiny(1e-9, 0, 0);
  CNuPoint q = tiny;
  q.Rotate(1e-301, CNuVector(), CNuPoint(1e9, 1, 1));  // no turn: neither rounding nor a look at the axis
  EXPECT_EQ(FailureOf([&] { q.Rotate(5, CNuVector(), centre); }), "operation 9 rotation|CNuVector [0,0]");
  EXPECT_EQ(FailureOf([&] { q.Rotate(5, CNuVector(4)); }), "operation 10 rotation|CNuVector [0,0]");
  ExpectPoint(q, tiny);
  // Skew axes are taken as they are, but for their length.
  p.MoveTo(CNuPoint(0, 1, 1), CNuVector(3e200, 0, 4e200), CNuVector(0, 0, 1e-200));
  ExpectPoint(p, CNuPoint(0.6 + 0.8 * 2, 0.6, 2), 8 * kEps);
  EXPECT_EQ(FailureOf([&] { p.MoveTo(kOrigin, CNuVector(2), CNuVector()); }).substr(0, 12), "operation 10");
}

TEST(Point, RecordsAreTwentyFiveBytes) {
  const std::string file = nu::test::ScratchFile("points_test").string();
  std::ofstream out(file, std::ios::binary);
  EXPECT_TRUE(CNuPoint(1.5, -2, 1e300).BinaryDump(out));
  out << "xp12345678p";
  out.close();
  EXPECT_EQ(std::filesystem::file_size(file), 36u);
  std::ifstream in(file, std::ios::binary);
  CNuPoint p(7, 8, 9);
  EXPECT_TRUE(p.BinaryRead(in));
  ExpectPoint(p, CNuPoint(1.5, -2, 1e300));
  EXPECT_TRUE(!p.BinaryRead(in) && p.x() == 1.5);                   // the tag is consumed, the point is not touched
  EXPECT_TRUE(p.BinaryRead(in) && p.x() != 1.5 && p.z() == 1e300);  // what the file does not hold keeps its value
  in.close();
  std::filesystem::remove(file);
}

}  // namespace
