// Linked without the library's own errors of products: here they are wrong.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <string>
#ifdef __SSE2__
#include <pmmintrin.h>
#endif

#include "nu/engine/base/error_free.h"
#include "support/failing_new.h"
#include "support/failures.h"
#include "support/fitted.h"

namespace {

double (*g_error)(double a, double b);
long g_asked = 0;

}  // namespace

namespace nu::engine::base {

#if defined(__x86_64__) && defined(__GNUC__)
extern const bool hasFusedProducts = false;
#endif

double ProductErrorByHalves(double a, double b) {
  ++g_asked;
  return g_error(a, b);
}

}  // namespace nu::engine::base

namespace {

using namespace nu::test;

CNuPointArray Lattice(int n, int layers) {
  CNuPointArray points(n * n * layers);
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) {
      for (int k = 0; k < layers; ++k) points.Add(CNuPoint(0.1 * i, 0.1 * j, 0.1 * k));
    }
  }
  return points;
}

// Flat sets, lattices and points on one circle: most signs need exact arithmetic.
std::map<std::string, CNuPointArray> DegenerateSets() {
  Random random(20);
  std::map<std::string, CNuPointArray> sets;
  for (const int n : {20, 60, 219}) {
    const Motion motion = RandomMotion(random, 100.0);
    sets.emplace("flat " + std::to_string(n), motion(PlaneCloud(random, n, 100.0, 80.0, 0.005)));
    sets.emplace("on a circle " + std::to_string(n), CircleCloud(random, n, 50.0, 360.0, 0.0));
    sets.emplace("on a sphere " + std::to_string(n), motion(SphereCloud(random, n, 50.0, 180.0, 0.0)));
  }
  sets.emplace("square lattice", Lattice(12, 1));
  sets.emplace("cubic lattice", Lattice(6, 6));
  sets.emplace("tiny lattice", Scaled(Lattice(5, 5), 1e-310));
  return sets;
}

double Wrong(double a, double b, double error) {
  static Random random(3);
  return error * random.Uniform(-1.0, 1.0) * a * b;
}

const std::map<std::string, double (*)(double, double)> kErrors = {
    {"none", [](double, double) { return 0.0; }},
    {"random", [](double a, double b) { return Wrong(a, b, kEps); }},
    {"as large as the product", [](double a, double b) { return Wrong(a, b, 1.0); }},
    {"huge", [](double a, double b) { return Wrong(a, b, 1e200); }},
    {"infinite", [](double, double) { return kInf; }},
    {"NaN", [](double, double) { return kNaN; }},
};

// A hang runs into the time limit of the test, growth without bound into that of an allocation.
void ExpectAllToEnd(const std::string& error) {
  const auto expectEnd = [&](const std::string& name, auto run) {
    FailAllocationsAbove(1 << 20);
    const std::string failure = FailureOf(run);
    FailAllocationsAbove(std::numeric_limits<std::size_t>::max());
    const bool hasEnded = failure.rfind("memory", 0) != 0 && failure.rfind("construction", 0) != 0;
    EXPECT_TRUE(hasEnded) << error << ", " << name << ": " << failure;
  };
  for (const auto& [set, points] : DegenerateSets()) {
    for (const AnyFit& fit : kAllFits) {
      if (fit.criterion == kLeastSquares || fit.Is("CNuConSurf", kZone)) continue;
      Fitted f;
      expectEnd(fit.Name() + " of " + set, [&fit = fit, &points = points, &f] { fit.run(points, 1e-9, 200, f); });
      for (const double number : f.Numbers(1.0)) EXPECT_TRUE(std::isfinite(number)) << fit.Name() << " of " << set;
    }
    CNuIntArray hull(1);
    expectEnd("hull of " + set, [&points = points, &hull] { points.ConvexHull(&hull); });
    expectEnd("simplified " + set, [&points = points] { CNuSimplifiedCurve(points, 0.02); });
  }
}

TEST(WrongProducts, EveryFitEndsWithAResultOrAFailure) {
  for (const auto& [name, error] : kErrors) {
    g_error = error;
    nu::internal::ProductError(1.0, 3.0);
    if (g_asked == 0) GTEST_SKIP() << "The processor's product is part of the instruction set that is compiled for";
    ExpectAllToEnd(name);
  }
  EXPECT_GT(g_asked, 10'000);
}

#ifdef __SSE2__
// As a host may have left the processor that does not care for numbers below the normal ones.
TEST(WrongProducts, EveryFitEndsWhereSmallNumbersAreFlushedToZero) {
  g_error = [](double a, double b) { return std::fma(a, b, -(a * b)); };
  const unsigned before = _mm_getcsr();
  _MM_SET_FLUSH_ZERO_MODE(_MM_FLUSH_ZERO_ON);
  _MM_SET_DENORMALS_ZERO_MODE(_MM_DENORMALS_ZERO_ON);
  ExpectAllToEnd("flushed");
  _mm_setcsr(before);
}
#endif

}  // namespace
