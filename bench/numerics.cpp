// What do integrals, splines and intersections of surfaces cost? GSL integrates and interpolates, too.

#include <cmath>
#include <memory>

#include "clouds.h"
#include "nu/foundation/double_array.h"
#include "nu/foundation/object_array.h"
#include "nu/geometry/point.h"
#include "nu/linalg/vector.h"
#include "nu/numerics/integral.h"
#include "nu/numerics/interpolation.h"
#include "nu/surfaces/cone.h"
#include "nu/surfaces/cylinder.h"
#include "nu/surfaces/sphere.h"
#include "question.h"

#ifdef NU_BENCH_GSL
#include <gsl/gsl_integration.h>
#include <gsl/gsl_interp.h>
#include <gsl/gsl_spline.h>
#endif

namespace {

using bench::Numbers;
using bench::Question;

const auto kSame = [](const Numbers& numbers) { return numbers; };

// ---- integrals: the integrand by its number, each to 1e-10

constexpr double kPrecise = 1e-10;
using Integrand = double (*)(double);
constexpr Integrand kIntegrands[] = {
    [](double x) { return std::exp(-x * x); },
    [](double x) { return std::sqrt(std::fabs(x - 0.3)); },
    [](double x) { return 1.0 / std::sqrt(x); },
};

Numbers IntegrateByNu(Integrand f) {
  CNuIntegral integral;
  return {integral.Calculate(f, 0.0, 1.0, kPrecise)};
}

#ifdef NU_BENCH_GSL
Numbers IntegrateByGsl(Integrand f) {
  constexpr std::size_t kMostPanels = 1000;
  const std::unique_ptr<gsl_integration_workspace, decltype(&gsl_integration_workspace_free)> room(
      gsl_integration_workspace_alloc(kMostPanels), gsl_integration_workspace_free);
  gsl_function function{[](double x, void* data) { return (*static_cast<Integrand*>(data))(x); }, &f};
  double value = 0.0, error = 0.0;
  gsl_integration_qags(&function, 0.0, 1.0, kPrecise, 0.0, kMostPanels, room.get(), &value, &error);
  return {value};
}
#endif

// ---- splines: through n points, with the sum of their values at as many places

struct Samples {
  std::vector<double> x, y, at;
};

Samples Draw(int n) {
  bench::Dice dice(161);
  Samples s;
  for (int i = 0; i < n; ++i) {
    s.x.push_back(i + dice.Between(0, 0.5));
    s.y.push_back(dice.Normal(1));
  }
  for (int i = 0; i < n; ++i) s.at.push_back(dice.Between(s.x.front(), s.x.back()));
  return s;
}

CNuDoubleArray ToArray(const std::vector<double>& values) {
  CNuDoubleArray array(static_cast<int>(values.size()));
  for (const double v : values) array.Add(v);
  return array;
}

Numbers InterpolateByNu(const Samples& s) {
  const CNuInterpolation spline(ToArray(s.x), ToArray(s.y));
  double sum = 0.0;
  for (const double x : s.at) sum += spline.Spline(x);
  return {sum};
}

#ifdef NU_BENCH_GSL
Numbers InterpolateByGsl(const Samples& s) {
  const std::unique_ptr<gsl_spline, decltype(&gsl_spline_free)> spline(gsl_spline_alloc(gsl_interp_cspline, s.x.size()),
                                                                       gsl_spline_free);
  gsl_spline_init(spline.get(), s.x.data(), s.y.data(), s.x.size());
  double sum = 0.0;
  for (const double x : s.at) sum += gsl_spline_eval(spline.get(), x, nullptr);
  return {sum};
}
#endif

// ---- intersections

const auto kUnused = [](int n) { return n; };

Numbers Count(int branches) {
  return {static_cast<double>(branches)};
}

Numbers CylinderMeetsCylinder(int) {
  CNuObjArray curves(4);
  const CNuCylSurf across(1.5, CNuPoint(0.3, 0, 0), CNuVector(0, 1, 0.2));
  return Count(across.IntersectWith(CNuCylSurf(2.0, CNuPoint(0, 0, 0), CNuVector(0, 0, 1)), &curves));
}
Numbers ConeMeetsCylinder(int) {
  CNuObjArray curves(4);
  const CNuConSurf cone(30.0, CNuPoint(0, 0.2, -3), CNuVector(0, 0.1, 1));
  return Count(cone.IntersectWith(CNuCylSurf(1.0, CNuPoint(0, 0, 0), CNuVector(1, 0, 0)), &curves));
}
Numbers SphereMeetsCone(int) {
  CNuObjArray curves(4);
  const CNuSphSurf sphere(2.0, CNuPoint(0.4, 0, 0));
  return Count(sphere.IntersectWith(CNuConSurf(40.0, CNuPoint(0, 0, -1), CNuVector(0, 0, 1)), &curves));
}

const bool kAsked = [] {
  const char* const names[] = {"integral_smooth", "integral_kink", "integral_singular"};
  for (int k = 0; k < 3; ++k) {
    Question<int> question(names[k], 1e-8, kUnused);
    const auto prepare = [k](int) { return kIntegrands[k]; };
    question.Ask("nu", prepare, IntegrateByNu, kSame);
#ifdef NU_BENCH_GSL
    question.Ask("gsl_qags", prepare, IntegrateByGsl, kSame);
#endif
    question.Over({1});
  }
  const auto samples = [](const Samples& s) { return s; };
  Question<Samples> splines("spline", 1e-9, Draw);
  splines.Ask("nu", samples, InterpolateByNu, kSame);
#ifdef NU_BENCH_GSL
  splines.Ask("gsl_cspline", samples, InterpolateByGsl, kSame);
#endif
  splines.Over({10, 1000, 100000});
  Question<int>("cylinder_meets_cylinder", 0.0, kUnused).Ask("nu", kUnused, CylinderMeetsCylinder, kSame).Over({1});
  Question<int>("cone_meets_cylinder", 0.0, kUnused).Ask("nu", kUnused, ConeMeetsCylinder, kSame).Over({1});
  Question<int>("sphere_meets_cone", 0.0, kUnused).Ask("nu", kUnused, SphereMeetsCone, kSame).Over({1});
  return true;
}();

}  // namespace
