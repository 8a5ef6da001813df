// What the interface for C answers to misuse and to a lack of memory. Its results are compared by results.c.

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "nu/c/nu.h"
#include "nu/nu.h"
#include "support/failing_new.h"

namespace {

using namespace nu::test;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Around the z axis, with errors.
std::vector<double> Shaft() {
  std::vector<double> xyz;
  for (int i = 0; i < 24; ++i) {
    const double t = (i % 8 - 3.5) / 2.0;
    const double r = 5.0 + 0.001 * ((7 * i) % 5);
    xyz.insert(xyz.end(), {r * (1.0 - t * t) / (1.0 + t * t), 2.0 * r * t / (1.0 + t * t), 1.0 * (i / 8)});
  }
  return xyz;
}

nu_feature Kind(int kind) {
  nu_feature feature{};
  feature.kind = kind;
  return feature;
}

bool AreSame(const nu_feature& a, const nu_feature& b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

nu_error LastError() {
  nu_error error{};
  nu_error_get(&error);
  return error;
}

struct Handles {
  std::vector<double> xyz = Shaft();
  nu_association* association = nullptr;
  nu_report* report = nullptr;
  nu_curve* curve = nullptr;
  nu_feature cylinder = Kind(NU_KIND_CYLINDER);

  explicit Handles(int criterion = NU_CRITERION_MINIMUM_ZONE) {
    nu_association_create(xyz.data(), 24, 3, &association);
    nu_association_set_details(association, NU_DETAIL_ALL);
    nu_association_fit(association, criterion, &cylinder, &report);
    nu_curve_create(&curve);
  }
  ~Handles() {
    nu_association_free(association);
    nu_report_free(report);
    nu_curve_free(curve);
  }
};

TEST(C, WrongHandlesAndNullPointersAreArguments) {
  Handles good;
  double d[3] = {};  // a point, or a number
  int32_t n = 0;
  nu_feature f = good.cylinder;
  // Null, and a handle of another object.
  for (void* bad : {static_cast<void*>(nullptr), static_cast<void*>(good.curve)}) {
    auto* a = static_cast<nu_association*>(bad);
    auto* r = static_cast<nu_report*>(bad);
    auto* i = static_cast<nu_intersection*>(bad);
    auto* c = static_cast<nu_curve*>(bad == nullptr ? nullptr : static_cast<void*>(good.report));
    const nu_status statuses[] = {nu_association_count(a, &n),
                                  nu_association_add(a, d, 0, 3),
                                  nu_association_remove(a, &n, 0),
                                  nu_association_merge(a, good.association),
                                  nu_association_merge(good.association, a),
                                  nu_association_set_weights(a, d, 1),
                                  nu_association_fix(a, 0, d),
                                  nu_association_release(a, 0),
                                  nu_association_set_side(a, 0),
                                  nu_association_set_start(a, &f),
                                  nu_association_set_max_steps(a, 1),
                                  nu_association_set_tolerance(a, 0.0),
                                  nu_association_set_monitor(a, nullptr, nullptr),
                                  nu_association_set_details(a, 0),
                                  nu_association_fit(a, 0, &f, nullptr),
                                  nu_association_refit(a, 0, &f, nullptr),
                                  nu_association_prove(a, 1, 9, &f, nullptr),
                                  nu_association_sensitivity(a, good.report, d, 1, &n),
                                  nu_association_sensitivity(good.association, r, d, 1, &n),
                                  nu_association_sample(a, r, 0.0, 2, 1, nullptr, 0, &n, &n),
                                  nu_part_join(static_cast<nu_part*>(bad), nullptr),
                                  nu_part_get(static_cast<nu_part*>(bad), nullptr),
                                  nu_part_step(static_cast<nu_part*>(bad), &f, d),
                                  nu_part_write(static_cast<nu_part*>(bad), nullptr, 0, &n),
                                  nu_candidates_add(static_cast<nu_candidates*>(bad), nullptr),
                                  nu_candidates_fit(static_cast<nu_candidates*>(bad), 1, &f, d),
                                  nu_report_get(r, nullptr),
                                  nu_report_require(r),
                                  nu_report_form(r, nullptr),
                                  nu_report_deviations(r, d, 1, &n, &n, &n),
                                  nu_report_contacts(r, nullptr, 0, &n),
                                  nu_report_uncertainty(r, nullptr),
                                  nu_report_parameter(r, 0, nullptr),
                                  nu_report_frame(r, d, d, d, d),
                                  nu_report_covariance(r, d, 1, &n),
                                  nu_report_axis_uncertainty(r, 0.0, d),
                                  nu_report_surface_uncertainty(r, d, d),
                                  nu_report_bound(r, nullptr),
                                  nu_report_weakness(r, nullptr),
                                  nu_report_explain(r, nullptr, 0, &n),
                                  nu_report_check(r, d, 0, 3, &f, 1.0, nullptr),
                                  nu_intersection_count(i, &n),
                                  nu_intersection_get(i, 0, &f),
                                  nu_intersection_range(i, 0, d, d, &n),
                                  nu_intersection_sample(i, 0, 2, d),
                                  nu_intersection_closest(i, 0, d, d, d),
                                  nu_curve_read(c, "x"),
                                  nu_curve_write(c, "x"),
                                  nu_curve_add_segment(c, d, d),
                                  nu_curve_add_arc(c, d, d, d, 1),
                                  nu_curve_count(c, &n),
                                  nu_curve_get(c, 0, nullptr),
                                  nu_curve_length(c, d),
                                  nu_curve_distance(c, d, d),
                                  nu_curve_offset(c, 1.0, d, 0, nullptr, 0, &n),
                                  nu_curve_polyline(c, 0.1, d, 1, &n)};
    int k = 0;
    for (const nu_status status : statuses) EXPECT_EQ(status, NU_STATUS_ARGUMENT) << k++;
  }
  const nu_status nulls[] = {nu_error_get(nullptr),
                             nu_tolerance_get(0, nullptr),
                             nu_tolerance_get(9, d),
                             nu_tolerance_set(-1, 0.0),
                             nu_feature_fit(good.xyz.data(), 24, 3, 0, nullptr, nullptr),
                             nu_feature_normalise(nullptr),
                             nu_feature_translate(&f, nullptr),
                             nu_feature_rotate(&f, 1.0, nullptr, nullptr),
                             nu_feature_distance(nullptr, &f, d),
                             nu_feature_distance(&f, &f, nullptr),
                             nu_feature_angle(&f, nullptr, d),
                             nu_feature_is_parallel(&f, &f, 0.0, nullptr),
                             nu_feature_project(nullptr, &f, d),
                             nu_feature_side(d, &f, 0.0, nullptr),
                             nu_feature_middle(&f, &f, 17, nullptr),
                             nu_feature_closest(&f, &f, nullptr, &n),
                             nu_feature_closest(&f, &f, d, &n),
                             nu_feature_intersect(&f, &f, nullptr, 1, &n),
                             nu_feature_intersect(&f, &f, &f, -1, &n),
                             nu_intersection_create(&f, &f, nullptr),
                             nu_association_create(d, 0, 3, nullptr),
                             nu_association_fit(good.association, 0, nullptr, nullptr),
                             nu_association_fix(good.association, 0, nullptr),
                             nu_association_fix(good.association, 9, d),
                             nu_association_release(good.association, -1),
                             nu_association_remove(good.association, nullptr, 1),
                             nu_association_set_weights(good.association, d, -1),
                             nu_report_get(good.report, nullptr),
                             nu_report_parameter(good.report, 0, nullptr),
                             nu_certificate_check(1, nullptr, 1, d, 0, 3, &f, 1.0, nullptr),
                             nu_part_create(good.association, &f, nullptr, nullptr),
                             nu_part_create(good.association, nullptr, d, nullptr),
                             nu_part_read(nullptr, 0, nullptr),
                             nu_candidates_create(nullptr),
                             nu_curve_create(nullptr),
                             nu_polynomial_roots(nullptr, 1, d, 1, &n, nullptr, 0, &n),
                             nu_polynomial_roots(d, 0, d, 1, &n, nullptr, 0, &n),
                             nu_polynomial_complex_roots(nullptr, 1, nullptr, 0, &n),
                             nu_curve_read(good.curve, nullptr),
                             nu_curve_write(good.curve, nullptr),
                             nu_curve_add_segment(good.curve, d, nullptr),
                             nu_curve_length(good.curve, nullptr)};
  int k = 0;
  for (const nu_status status : nulls) EXPECT_EQ(status, NU_STATUS_ARGUMENT) << k++;
  EXPECT_STREQ(nu_error_message(), "length is null");
  nu_association_free(reinterpret_cast<nu_association*>(good.curve));
  EXPECT_EQ(nu_curve_count(good.curve, &n), NU_STATUS_OK) << "freed as something else";
}

TEST(C, BlocksOfPointsAreChecked) {
  const std::vector<double> xyz = Shaft();
  const nu_feature before = Kind(NU_KIND_CYLINDER);
  nu_feature f = before;
  for (const auto& [count, stride] : std::vector<std::pair<int, int>>{
           {-1, 3}, {INT_MIN, 3}, {24, 2}, {24, 0}, {24, -3}, {24, INT_MIN}, {INT_MAX, INT_MAX}}) {
    EXPECT_EQ(nu_feature_fit(xyz.data(), count, stride, 0, &f, nullptr), NU_STATUS_ARGUMENT) << count << ' ' << stride;
    nu_association* a = reinterpret_cast<nu_association*>(&f);
    EXPECT_EQ(nu_association_create(xyz.data(), count, stride, &a), NU_STATUS_ARGUMENT);
    EXPECT_EQ(a, nullptr);
  }
  EXPECT_EQ(nu_feature_fit(nullptr, 1, 3, 0, &f, nullptr), NU_STATUS_ARGUMENT);
  EXPECT_EQ(nu_feature_fit(nullptr, 0, 3, 0, &f, nullptr), NU_STATUS_FIT);
  EXPECT_EQ(LastError().cause, NuBestfitTooFewPoints);
  EXPECT_EQ(LastError().lower, 5);
  EXPECT_STREQ(nu_error_message(), "CNuCylSurf: too few points: at least 5 are needed");
  std::vector<double> bad = xyz;
  bad[4] = kNaN;
  EXPECT_EQ(nu_feature_fit(bad.data(), 24, 3, 0, &f, nullptr), NU_STATUS_FIT);
  EXPECT_EQ(LastError().cause, NuBestfitNumericalFailure);
  EXPECT_EQ(nu_feature_fit(xyz.data(), 24, 3, 7, &f, nullptr), NU_STATUS_OPERATION);
  EXPECT_EQ(LastError().cause, NuOperationUnsupported);
  EXPECT_TRUE(AreSame(f, before));
  for (const int kind : {0, -1, int{NU_KIND_POINT}, int{NU_KIND_CURVE}}) {
    f = Kind(kind);
    EXPECT_EQ(nu_feature_fit(xyz.data(), 24, 3, 0, &f, nullptr), NU_STATUS_ARGUMENT);
  }
}

TEST(C, ArraysThatAreTooShortStayAsTheyAre) {
  const Handles h;
  int32_t count = 0;
  ASSERT_EQ(nu_report_deviations(h.report, nullptr, 0, &count, nullptr, nullptr), NU_STATUS_OK);
  EXPECT_EQ(count, 24);
  std::vector<double> values(24, -7.0);
  count = 0;
  EXPECT_EQ(nu_report_deviations(h.report, values.data(), 23, &count, nullptr, nullptr), NU_STATUS_CAPACITY);
  EXPECT_EQ(count, 24);
  EXPECT_EQ(values, std::vector<double>(24, -7.0));
  const double c[] = {2.0, -3.0, 1.0};
  EXPECT_EQ(nu_polynomial_roots(c, 3, values.data(), 1, &count, nullptr, 0, nullptr), NU_STATUS_CAPACITY);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(values[0], -7.0);
  char text[4] = "abc";
  EXPECT_EQ(nu_report_explain(h.report, text, 4, &count), NU_STATUS_CAPACITY);
  EXPECT_STREQ(text, "abc");
  std::string sentence(static_cast<std::size_t>(count), '#');
  EXPECT_EQ(nu_report_explain(h.report, sentence.data(), count, nullptr), NU_STATUS_OK);
  EXPECT_EQ(std::strlen(sentence.c_str()) + 1, static_cast<std::size_t>(count));
}

// Numbers of any length are normalised as the constructors do; those of the library stay as they are, a radius of 0 of
// a circumscribed circle, too.
TEST(C, FeaturesKeepTheirBits) {
  nu_feature f = Kind(NU_KIND_CYLINDER);
  f.direction[0] = 3.0, f.direction[1] = 4.0, f.direction[2] = 5.0;
  f.size[0] = -1.0;
  const nu_feature before = f;
  EXPECT_EQ(nu_feature_normalise(&f), NU_STATUS_CONSTRUCTION);
  EXPECT_EQ(LastError().cause, NuConstructionLength);
  EXPECT_TRUE(AreSame(f, before));
  f.size[0] = 2.0;
  f.is_unit = 1;  // it is not
  ASSERT_EQ(nu_feature_normalise(&f), NU_STATUS_OK);
  const CNuCylSurf made(2.0, CNuPoint(), CNuVector(3.0, 4.0, 5.0));
  for (int k = 0; k < 3; ++k) EXPECT_EQ(f.direction[k], made.GetAxisDirection()[k]);
  EXPECT_EQ(f.is_unit, 1);
  nu_feature again = f;
  ASSERT_EQ(nu_feature_normalise(&again), NU_STATUS_OK);
  EXPECT_TRUE(AreSame(f, again));

  const double twice[] = {1.0, 2.0, 3.0, 1.0, 2.0, 3.0};
  f = Kind(NU_KIND_CIRCLE);
  ASSERT_EQ(nu_feature_fit(twice, 2, 3, NU_CRITERION_MINIMUM_CIRCUMSCRIBED, &f, nullptr), NU_STATUS_OK);
  EXPECT_EQ(f.size[0], 0.0);
  again = f;
  EXPECT_EQ(nu_feature_normalise(&again), NU_STATUS_OK);
  EXPECT_TRUE(AreSame(f, again));
  f.size[0] = kNaN;
  EXPECT_EQ(nu_feature_normalise(&f), NU_STATUS_CONSTRUCTION);
}

TEST(C, RelationsThatDoNotExistFail) {
  const nu_feature point = Kind(NU_KIND_POINT);
  nu_feature torus = Kind(NU_KIND_TORUS);
  torus.direction[2] = 1.0, torus.size[0] = 3.0, torus.size[1] = 1.0;
  double d = 5.0;
  nu_feature f{};
  nu_intersection* i = nullptr;
  for (const nu_status status :
       {nu_feature_distance(&point, &torus, &d), nu_feature_angle(&point, &point, &d),
        nu_feature_project(point.point, &torus, f.point), nu_feature_middle(&torus, &torus, NU_KIND_PLANE, &f),
        nu_feature_middle(&point, &point, NU_KIND_TORUS, &f), nu_intersection_create(&torus, &point, &i)}) {
    EXPECT_EQ(status, NU_STATUS_OPERATION);
    EXPECT_EQ(LastError().cause, NuOperationUnsupported);
  }
  EXPECT_EQ(d, 5.0);
  EXPECT_EQ(i, nullptr);
}

TEST(C, RelationsHoldInEitherOrder) {
  std::vector<nu_feature> features;
  for (const int kind : {NU_KIND_POINT, NU_KIND_LINE, NU_KIND_PLANE, NU_KIND_CIRCLE, NU_KIND_SPHERE, NU_KIND_CYLINDER,
                         NU_KIND_CONE, NU_KIND_TORUS}) {
    nu_feature f = Kind(kind);
    f.point[0] = 0.3 * kind, f.point[1] = -7.0;
    f.direction[0] = 0.01 * kind, f.direction[2] = 1.0;
    f.size[0] = 2.0, f.size[1] = 1.0;
    ASSERT_EQ(nu_feature_normalise(&f), NU_STATUS_OK);
    features.push_back(f);
  }
  const auto expectSame = [](nu_status one, nu_status other, const auto& a, const auto& b) {
    EXPECT_EQ(one, other);
    if (one == NU_STATUS_OK) {
      EXPECT_NEAR(a, b, 1e-12);
    }
  };
  int answers = 0;
  for (const nu_feature& a : features) {
    for (const nu_feature& b : features) {
      double ab = 0.0, ba = 0.0;
      const nu_status status = nu_feature_distance(&a, &b, &ab);
      expectSame(status, nu_feature_distance(&b, &a, &ba), ab, ba);
      expectSame(nu_feature_angle(&a, &b, &ab), nu_feature_angle(&b, &a, &ba), ab, ba);
      int32_t isOne = 0, isOther = 0;
      expectSame(nu_feature_is_parallel(&a, &b, 1.0, &isOne), nu_feature_is_parallel(&b, &a, 1.0, &isOther), isOne,
                 isOther);
      answers += status == NU_STATUS_OK ? 1 : 0;
      for (const int kind : {NU_KIND_POINT, NU_KIND_LINE, NU_KIND_PLANE}) {
        nu_feature middle{}, other{};
        const nu_status found = nu_feature_middle(&a, &b, kind, &middle);
        expectSame(found, nu_feature_middle(&b, &a, kind, &other), 0.0, 0.0);
        if (found != NU_STATUS_OK || kind != NU_KIND_POINT) continue;
        expectSame(nu_feature_distance(&middle, &a, &ab), nu_feature_distance(&middle, &b, &ba), ab, ba);
      }
    }
  }
  EXPECT_EQ(answers, 25);  // as the header counts them
}

// A fixed parameter is what the fit has, and a released one is found again.
TEST(C, ParametersAreFixedAndReleased) {
  Handles h(NU_CRITERION_LEAST_SQUARES);
  const double radius = 4.5, tilted[] = {0.6, 0.0, 0.8}, place[] = {0.125, 0.0, 0.0};
  const auto fit = [&] {
    nu_feature found = Kind(NU_KIND_CYLINDER);
    EXPECT_EQ(nu_association_fit(h.association, NU_CRITERION_LEAST_SQUARES, &found, nullptr), NU_STATUS_OK);
    return found;
  };
  ASSERT_EQ(nu_association_fix(h.association, NU_PARAMETER_RADIUS, &radius), NU_STATUS_OK);
  EXPECT_EQ(fit().size[0], radius);
  EXPECT_EQ(nu_association_release(h.association, NU_PARAMETER_RADIUS), NU_STATUS_OK);
  ASSERT_EQ(nu_association_fix(h.association, NU_PARAMETER_DIRECTION, tilted), NU_STATUS_OK);
  for (int k = 0; k < 3; ++k) EXPECT_NEAR(fit().direction[k], tilted[k], 1e-15);
  EXPECT_EQ(nu_association_release(h.association, NU_PARAMETER_DIRECTION), NU_STATUS_OK);
  ASSERT_EQ(nu_association_fix(h.association, NU_PARAMETER_POINT, place), NU_STATUS_OK);
  nu_feature axis = fit(), point = Kind(NU_KIND_POINT);
  axis.kind = NU_KIND_LINE;
  point.point[0] = place[0];
  double away = 1.0;
  EXPECT_EQ(nu_feature_distance(&point, &axis, &away), NU_STATUS_OK);
  EXPECT_LT(away, 1e-15);
  EXPECT_EQ(nu_association_release(h.association, NU_PARAMETER_POINT), NU_STATUS_OK);
  for (const int parameter : {NU_PARAMETER_MAJOR_RADIUS, NU_PARAMETER_SEMI_ANGLE}) {
    ASSERT_EQ(nu_association_fix(h.association, parameter, &radius), NU_STATUS_OK);
    EXPECT_EQ(nu_association_release(h.association, parameter), NU_STATUS_OK);
  }
  EXPECT_TRUE(AreSame(fit(), h.cylinder));
}

// What results.c leaves out.
TEST(C, TheRestIsThatOfTheClasses) {
  Handles h(NU_CRITERION_LEAST_SQUARES);
  CNuAssociation fits(h.xyz.data(), 24);
  fits.SetDetails(NuDetailAll);
  CNuCylSurf cylinder(1.0);
  const CNuAssociationReport report = fits.Fit(NuLeastSquares, &cylinder);
  double d = 0.0, origin[3], z[3], place[3] = {5.0, 0.0, 1.0};
  nu_parameter parameter{};
  ASSERT_EQ(nu_report_parameter(h.report, 3, &parameter), NU_STATUS_OK);
  EXPECT_STREQ(parameter.name, report.GetParameterName(3));
  EXPECT_EQ(parameter.standard_uncertainty, report.GetStandardUncertainty(3));
  EXPECT_EQ(parameter.is_angle, report.IsParameterAngle(3));
  EXPECT_EQ(nu_report_parameter(h.report, 99, &parameter), NU_STATUS_OPERATION);
  EXPECT_EQ(LastError().upper, report.GetNumberParameters() - 1);
  CNuPoint o;
  CNuVector x, y, axis;
  report.GetParameterFrame(&o, &x, &y, &axis);
  EXPECT_EQ(nu_report_frame(h.report, origin, nullptr, nullptr, z), NU_STATUS_OK);
  EXPECT_EQ(origin[2], o.z());
  EXPECT_EQ(z[2], axis[2]);
  EXPECT_EQ(nu_report_axis_uncertainty(h.report, 2.0, &d), NU_STATUS_OK);
  EXPECT_EQ(d, report.GetAxisUncertainty(2.0));
  EXPECT_EQ(nu_report_surface_uncertainty(h.report, place, &d), NU_STATUS_OK);
  EXPECT_EQ(d, report.GetSurfaceUncertainty(CNuPoint(5.0, 0.0, 1.0)));
  nu_weakness weakness{};
  ASSERT_EQ(nu_report_weakness(h.report, &weakness), NU_STATUS_OK);
  EXPECT_STREQ(weakness.parameter, report.GetWeakestParameter());
  EXPECT_EQ(weakness.coverage, report.GetCoverage());
  EXPECT_EQ(weakness.has_probe, report.GetProbingPlace(&o));
  EXPECT_EQ(weakness.probe[0], o.x());

  const Handles zone;
  nu_contact contacts[16];
  nu_verdict whole{}, again{};
  int32_t count = 0;
  ASSERT_EQ(nu_report_contacts(zone.report, contacts, 16, &count), NU_STATUS_OK);
  ASSERT_EQ(nu_report_check(zone.report, h.xyz.data(), 24, 3, &zone.cylinder, 1e-13, &whole), NU_STATUS_OK);
  EXPECT_EQ(nu_certificate_check(1, contacts, count, h.xyz.data(), 24, 3, &zone.cylinder, 1e-13, &again), NU_STATUS_OK);
  EXPECT_EQ(whole.failed_check, 0);
  EXPECT_EQ(std::memcmp(&whole, &again, sizeof whole), 0);

  nu_feature axisLine = h.cylinder;
  axisLine.kind = NU_KIND_LINE;
  nu_feature across = Kind(NU_KIND_LINE);
  across.direction[0] = 1.0, across.point[1] = 9.0;
  double xyz[6] = {};
  EXPECT_EQ(nu_feature_closest(&across, &axisLine, xyz, &count), NU_STATUS_OK);
  ASSERT_EQ(CNuLine(CNuPoint(0.0, 9.0, 0.0), CNuVector(1.0, 0.0, 0.0)).ClosestPointsTo(cylinder.GetAxis(), &o), count);
  EXPECT_EQ(xyz[0], o.x());
  EXPECT_EQ(nu_feature_is_parallel(&across, &axisLine, 1.0, &count), NU_STATUS_OK);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(nu_association_merge(h.association, zone.association), NU_STATUS_OK);
  EXPECT_EQ(nu_association_count(h.association, &count), NU_STATUS_OK);
  EXPECT_EQ(count, 48);
  EXPECT_EQ(nu_curve_write(h.curve, "empty"), NU_STATUS_OPERATION);
  EXPECT_EQ(LastError().cause, NuOperationEmpty);
  EXPECT_EQ(nu_curve_read(h.curve, "there/is/none"), NU_STATUS_OPERATION);
  EXPECT_EQ(LastError().cause, NuOperationFileOpen);
}

int32_t Cancel(void*, int64_t, double, double) {
  return 0;
}
int32_t Throw(void*, int64_t, double, double) {
  throw 1;
}

TEST(C, MonitorsCancelAndMayThrow) {
  Handles h;
  const nu_feature before = h.cylinder;
  nu_summary summary{};
  nu_report* report = nullptr;
  nu_association_set_monitor(h.association, Cancel, nullptr);
  ASSERT_EQ(nu_association_fit(h.association, 1, &h.cylinder, &report), NU_STATUS_OK);
  EXPECT_EQ(nu_report_get(report, &summary), NU_STATUS_OK);
  EXPECT_EQ(summary.end, NU_END_CANCELLED);
  EXPECT_EQ(nu_report_require(report), NU_STATUS_OPERATION);
  nu_report_free(report);
  EXPECT_EQ(nu_association_fit(h.association, 1, &h.cylinder, nullptr), NU_STATUS_OPERATION);
  nu_association_set_monitor(h.association, Throw, nullptr);
  EXPECT_EQ(nu_association_fit(h.association, 1, &h.cylinder, &report), NU_STATUS_UNEXPECTED);
  EXPECT_EQ(report, nullptr);
  EXPECT_TRUE(AreSame(h.cylinder, before));
}

TEST(C, MessagesBelongToTheirThread) {
  EXPECT_EQ(nu_tolerance_set(99, 0.0), NU_STATUS_ARGUMENT);
  std::thread([] {
    EXPECT_STREQ(nu_error_message(), "");
    EXPECT_EQ(LastError().status, NU_STATUS_OK);
    EXPECT_EQ(nu_feature_normalise(nullptr), NU_STATUS_ARGUMENT);
    EXPECT_STREQ(nu_error_message(), "the feature is null");
  }).join();
  EXPECT_STREQ(nu_error_message(), "there is no such tolerance");
}

// Every allocation fails once; the call says so, leaks nothing and leaves what it returns as it was.
TEST(C, LackOfMemoryIsAStatus) {
  const Handles h;
  const nu_feature sphere = [] {
    nu_feature f = Kind(NU_KIND_SPHERE);
    f.point[0] = 4.0, f.size[0] = 3.0;
    return f;
  }();
  const double start[] = {0.0, 0.0, 0.0}, end[] = {4.0, 0.0, 0.0}, up[] = {0.0, 0.0, 1.0};
  const double c[] = {-1.0, 0.5, 3.0, 0.0, -2.0, 7.0, 1.0, 2.0, 9.0, 1.0, 4.0};
  const std::vector<double> weights(24, 2.0);
  nu_feature f{};
  double values[64];
  int32_t count = 0;
  const std::function<nu_status()> calls[] = {
      [&] {
        f = Kind(NU_KIND_CYLINDER);
        return nu_feature_fit(h.xyz.data(), 24, 3, NU_CRITERION_MINIMUM_ZONE, &f, nullptr);
      },
      [&] {
        nu_association* a = nullptr;
        nu_report* r = nullptr;
        f = Kind(NU_KIND_CYLINDER);
        nu_status status = nu_association_create(nullptr, 0, 3, &a);
        if (status == 0) status = nu_association_add(a, h.xyz.data(), 24, 3);
        if (status == 0) status = nu_association_set_weights(a, weights.data(), 24);
        if (status == 0) status = nu_association_set_details(a, NU_DETAIL_ALL);
        if (status == 0) status = nu_association_fit(a, NU_CRITERION_LEAST_SQUARES, &f, &r);
        if (status == 0) status = nu_report_covariance(r, values, 64, &count);
        nu_report_free(r);
        nu_association_free(a);
        return status;
      },
      [&] {
        nu_intersection* i = nullptr;
        nu_status status = nu_intersection_create(&h.cylinder, &sphere, &i);
        if (status == 0) status = nu_intersection_sample(i, 0, 5, values);
        nu_intersection_free(i);
        return status;
      },
      [&] {
        nu_curve *curve = nullptr, *loops[2] = {};
        nu_status status = nu_curve_create(&curve);
        if (status == 0) status = nu_curve_add_segment(curve, start, end);
        if (status == 0) status = nu_curve_offset(curve, 1.0, up, 1, loops, 2, &count);
        for (nu_curve* loop : loops) nu_curve_free(loop);
        nu_curve_free(curve);
        return status;
      },
      [&] { return nu_polynomial_roots(c, 11, values, 10, &count, nullptr, 0, nullptr); }};
  for (const auto& call : calls) {
    const auto which = &call - calls;
    for (long k = 0;; ++k) {
      ASSERT_LT(k, 2000) << which;
      const long before = LiveAllocations();
      FailAllocation(k);
      const nu_status status = call();
      const bool failed = AllocationHasFailed();
      FailAllocation(-1);
      EXPECT_EQ(LiveAllocations(), before) << which;
      if (!failed) {
        EXPECT_EQ(status, NU_STATUS_OK) << which;
        break;
      }
      const bool isFit = status == NU_STATUS_FIT && LastError().cause == NuBestfitNumericalFailure;
      EXPECT_TRUE(status == NU_STATUS_MEMORY || isFit) << which << ": " << nu_error_message();
    }
  }
}

}  // namespace
