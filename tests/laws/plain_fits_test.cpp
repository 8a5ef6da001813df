#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <vector>

#include "nu/curves/internal/circle_fits.h"
#include "nu/curves/internal/conic_fit.h"
#include "nu/geometry/internal/line_fits.h"
#include "nu/geometry/internal/plane_fits.h"
#include "nu/geometry/internal/point_set.h"
#include "nu/surfaces/internal/surface_fits.h"
#include "support/clouds.h"

// What all fits on plain numbers have in common: points of any stride, and a monitor that watches and cancels.
namespace {

using namespace nu::internal;
using namespace nu::test;

using Numbers = std::vector<double>;

void Append(Numbers& all, double number) {
  all.push_back(number);
}
void Append(Numbers& all, const Vec3& v) {
  all.insert(all.end(), {v.x, v.y, v.z});
}
template<class... Parts>
Numbers NumbersOf(const Parts&... parts) {
  Numbers all;
  (Append(all, parts), ...);
  return all;
}
Numbers Of(const Line3& l) {
  return NumbersOf(l.point, l.direction);
}
Numbers Of(const Plane3& pl) {
  return NumbersOf(pl.point, pl.normal);
}
Numbers Of(const PlacedCircle& c) {
  return NumbersOf(c.centre, c.normal, c.xAxis, c.radius);
}
Numbers Of(const FittedConic& c) {
  return NumbersOf(c.a, c.b, c.origin, c.xAxis, c.normal);
}
Numbers Of(const Sphere3& s) {
  return NumbersOf(s.centre, s.radius);
}
Numbers Of(const Cylinder3& c) {
  return NumbersOf(c.axis.point, c.axis.direction, c.radius);
}
Numbers Of(const Cone3& c) {
  return NumbersOf(c.axis.point, c.axis.direction, c.toApex, c.semiAngle);
}
Numbers Of(const Torus3& t) {
  return NumbersOf(t.centre, t.axis, t.majorRadius, t.minorRadius);
}

struct Outcome {
  Numbers numbers;
  long steps;
  double lastStep;
};

struct PlainFit {
  const char* name;
  CNuPointArray points;
  bool iterates;
  std::function<Outcome(PointView, const FitOptions&)> fit;
};

template<class Fit>
PlainFit Case(const char* name, const CNuPointArray& points, bool iterates, Fit fit) {
  return {name, points, iterates, [fit](PointView view, const FitOptions& options) -> Outcome {
            const auto found = fit(view, options);
            Numbers numbers = Of(found.shape);
            numbers.insert(numbers.end(), {found.form, found.deviations.sumSquares});
            return {numbers, found.steps, found.lastStep};
          }};
}

CNuPointArray Conic(Random& random, const std::function<CNuPoint(double)>& at) {
  CNuPointArray points(60);
  for (int i = 0; i < 60; ++i)
    points.Add(at(i / 59.0 - 0.5) + CNuPoint(0.01 * random.Uniform(-1, 1), 0.01 * random.Uniform(-1, 1)));
  return points;
}

std::vector<PlainFit> AllFits() {
  Random random(20);
  const CNuPointArray line = LineCloud(random, 50, 10.0, 0.1);
  const CNuPointArray plane = PlaneCloud(random, 50, 10.0, 7.0, 0.1);
  CNuPointArray circle = CircleCloud(random, 50, 5.0, 300.0, 0.1);
  for (int i = 0; i < circle.GetSize(); ++i) circle[i].z() = 3.0;
  const CNuPointArray sphere = SphereCloud(random, 60, 5.0, 120.0, 0.1);
  const CNuPointArray cylinder = CylinderCloud(random, 3000, 5.0, 12.0, 360.0, 1.0);
  const CNuPointArray cone = ConeCloud(random, 3000, 20.0, 5.0, 8.0, 360.0, 1.0);
  const CNuPointArray torus = TorusCloud(random, 80, 9.0, 1.0, 360.0, 360.0, 0.1);
  const CNuPointArray ellipse =
      Conic(random, [](double t) { return CNuPoint(5.0 * std::cos(6.0 * t), 3.0 * std::sin(6.0 * t)); });
  const CNuPointArray hyperbola =
      Conic(random, [](double t) { return CNuPoint(2.0 * std::cosh(3.0 * t), 1.5 * std::sinh(3.0 * t)); });
  const CNuPointArray parabola = Conic(random, [](double t) { return CNuPoint(4.0 * t * t, 4.0 * t); });
  return {Case("FitLine", line, false, FitLine),
          Case("FitMinZoneLine", line, true, FitMinZoneLine),
          Case("FitPlane", plane, false, FitPlane),
          Case("FitMinZonePlane", plane, true, FitMinZonePlane),
          Case("FitCircle", circle, true, FitCircle),
          Case("FitMinCircle", circle, false, FitMinCircle),
          Case("FitMaxCircle", circle, false, FitMaxCircle),
          Case("FitMinZoneCircle", circle, true, FitMinZoneCircle),
          Case("FitEllipse", ellipse, true, FitEllipse),
          Case("FitHyperbola", hyperbola, true, FitHyperbola),
          Case("FitParabola", parabola, true, FitParabola),
          Case("FitSphere", sphere, true, [](PointView p, const FitOptions& o) { return FitSphere(p, o); }),
          Case("FitMinSphere", sphere, false, FitMinSphere),
          Case("FitMaxSphere", sphere, true, FitMaxSphere),
          Case("FitMinZoneSphere", sphere, true, FitMinZoneSphere),
          Case("FitCylinder", cylinder, true, [](PointView p, const FitOptions& o) { return FitCylinder(p, o); }),
          Case("FitMinCylinder", cylinder, true, FitMinCylinder),
          Case("FitMaxCylinder", cylinder, true, FitMaxCylinder),
          Case("FitMinZoneCylinder", cylinder, true, FitMinZoneCylinder),
          Case("FitCone", cone, true, [](PointView p, const FitOptions& o) { return FitCone(p, o); }),
          Case("FitMinZoneCone", cone, true, FitMinZoneCone),
          Case("FitMinTorus", torus, true, FitMinTorus)};
}

FitOptions Options(const StepMonitor& monitor = {}) {
  return {.maxIter = 1000, .tol = NuGetLengthTol(), .wantsDeviations = true, .monitor = monitor};
}

TEST(PlainFits, AnyStrideGivesTheSameBits) {
  constexpr std::size_t kStride = 5;
  for (const PlainFit& plain : AllFits()) {
    SCOPED_TRACE(plain.name);
    const PointView array = ViewOf(plain.points);
    std::vector<double> block(kStride * array.Size(), std::numeric_limits<double>::quiet_NaN());
    for (std::size_t i = 0; i < array.Size(); ++i) std::copy_n(array[i], 3, &block[kStride * i]);
    const PointView strided(block.data(), kStride * sizeof(double), array.Size());
    EXPECT_EQ(plain.fit(strided, Options()).numbers, plain.fit(array, Options()).numbers);
  }
}

struct Watch {
  long last;  // the step at which it says stop
  long seen = 0;
  bool inOrder = true;

  static bool Step(void* context, long step, double, double) {
    Watch& watch = *static_cast<Watch*>(context);
    watch.inOrder = watch.inOrder && step == ++watch.seen;
    return step < watch.last;
  }
  StepMonitor Monitor() { return {&Watch::Step, this}; }
};

TEST(PlainFits, MonitorsWatchAndCancel) {
  for (const PlainFit& plain : AllFits()) {
    SCOPED_TRACE(plain.name);
    const PointView points = ViewOf(plain.points);
    const Outcome plainly = plain.fit(points, Options());
    Watch all{std::numeric_limits<long>::max()};
    const Outcome watched = plain.fit(points, Options(all.Monitor()));
    EXPECT_EQ(watched.numbers, plainly.numbers);
    EXPECT_EQ(watched.steps, all.seen);
    EXPECT_EQ(plainly.steps, all.seen);
    EXPECT_TRUE(all.inOrder);
    if (plain.iterates)
      EXPECT_GT(all.seen, 1);
    else
      EXPECT_EQ(all.seen, 1);
    EXPECT_EQ(watched.lastStep, plainly.lastStep);
    for (const long last : {1L, 2L, (all.seen + 1) / 2, all.seen}) {
      if (last > all.seen) continue;
      Watch watch{last};
      EXPECT_THROW(plain.fit(points, Options(watch.Monitor())), FitCancelled);
      EXPECT_EQ(watch.seen, last);
    }
  }
}

}  // namespace
