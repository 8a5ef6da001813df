/* Prints a fixed set of results of the interface for C, each as a hash of all of its bits. results.cpp prints the same
   of the classes, and the callers from other languages the same of this interface: all must print the same lines. */

#include <stdio.h>
#include <string.h>

#include "lines.h"
#include "nu/c/nu.h"

enum { kMost = 64 };

static void AddFeature(const nu_feature* f) {
  AddInt(f->kind);
  AddAll(f->point, 3);
  AddAll(f->direction, 3);
  AddAll(f->size, 2);
}

static int32_t Cause(void) {
  nu_error error;
  nu_error_get(&error);
  return error.cause;
}

/* Everything that a report holds. */
static void AddReport(const nu_report* report) {
  double values[kMost];
  nu_contact contacts[kMost];
  nu_form form;
  nu_uncertainty uncertainty;
  nu_bound bound;
  nu_summary summary;
  char text[512];
  int32_t i, count = 0;
  if (nu_report_form(report, &form) == 0) AddAll(&form.form, 5);
  if (nu_report_deviations(report, values, kMost, &count, NULL, NULL) == 0) AddAll(values, count);
  if (nu_report_contacts(report, contacts, kMost, &count) == 0)
    for (i = 0; i < count; ++i) {
      AddInt(contacts[i].point);
      AddInt(contacts[i].side);
      Add(contacts[i].multiplier);
    }
  if (nu_report_uncertainty(report, &uncertainty) == 0) {
    Add(uncertainty.standard_deviation);
    Add(uncertainty.condition);
  }
  if (nu_report_covariance(report, values, kMost, &count) == 0) AddAll(values, count);
  if (nu_report_explain(report, text, sizeof text, NULL) == 0) AddText(text);
  nu_report_bound(report, &bound);
  AddInt(bound.is_global);
  Add(bound.gap);
  nu_report_get(report, &summary);
  AddInt(summary.steps);
  Add(summary.last_step);
  Line("  ended", summary.end, summary.cause, summary.kind);
}

/* Fits what is to be fitted, prints it and frees it. */
static void Fit(nu_association* association, int criterion, nu_feature* feature) {
  nu_report* report = NULL;
  const nu_status status = nu_association_fit(association, criterion, feature, &report);
  AddFeature(feature);
  Line("fit", feature->kind, criterion, status == 0 ? 0 : Cause());
  if (report != NULL) AddReport(report);
  nu_report_free(report);
}

static int32_t CountSteps(void* context, int64_t step, double objective, double step_length) {
  *(int64_t*)context = step;
  return objective == objective && step_length > 1e300 ? 0 : 1;
}

static const int32_t kKinds[] = {NU_KIND_LINE,     NU_KIND_PLANE,    NU_KIND_CIRCLE, NU_KIND_ELLIPSE, NU_KIND_HYPERBOLA,
                                 NU_KIND_PARABOLA, NU_KIND_CYLINDER, NU_KIND_CONE,   NU_KIND_SPHERE,  NU_KIND_TORUS};
enum { kKindCount = 10 };

static void AllFits(nu_feature* fitted) {
  int k, criterion;
  double xyz[kStride * kPoints];
  for (k = 0; k < kKindCount; ++k) {
    MakeCloud(kKinds[k], xyz);
    for (criterion = 3; criterion >= 0; --criterion) {
      nu_association* association = NULL;
      nu_feature feature = {0};
      feature.kind = kKinds[k];
      nu_association_create(xyz, kPoints, kStride, &association);
      nu_association_set_details(association, NU_DETAIL_ALL);
      Fit(association, criterion, &feature);
      nu_association_free(association);
      fitted[k] = feature;
    }
  }
}

/* A cylinder with every option, in points that the association owns. */
static void Options(const nu_feature* cylinder) {
  double xyz[kStride * kPoints], weights[kPoints], values[kMost];
  const double radius = 5.0, direction[3] = {2.0, -1.0, 2.0};
  const int32_t removed[] = {3, 5};
  nu_association* association = NULL;
  nu_feature feature = *cylinder;
  nu_report* report = NULL;
  nu_spread spread[9];
  nu_verdict verdict;
  int64_t steps = 0;
  int32_t i, count = 0;
  MakeCloud(NU_KIND_CYLINDER, xyz);
  for (i = 0; i < kPoints; ++i) weights[i] = 1.0 + i % 3;
  nu_association_create(NULL, 0, 3, &association);
  nu_association_add(association, xyz, kPoints, kStride);
  nu_association_set_weights(association, weights, kPoints);
  nu_association_set_monitor(association, CountSteps, &steps);
  nu_association_set_max_steps(association, 200);
  nu_association_set_tolerance(association, 1e-11);
  nu_association_fix(association, NU_PARAMETER_RADIUS, &radius);
  nu_association_fix(association, NU_PARAMETER_DIRECTION, direction);
  Fit(association, NU_CRITERION_LEAST_SQUARES, &feature);
  AddInt(steps);
  nu_association_release(association, NU_PARAMETER_RADIUS);
  nu_association_release(association, NU_PARAMETER_DIRECTION);
  nu_association_set_weights(association, NULL, 0);
  nu_association_set_side(association, NU_MATERIAL_OUTSIDE);
  nu_association_set_start(association, cylinder);
  Fit(association, NU_CRITERION_MINIMUM_ZONE, &feature);
  nu_association_set_side(association, NU_MATERIAL_EITHER_SIDE);
  nu_association_set_start(association, NULL);
  nu_association_remove(association, removed, 2);
  nu_association_set_details(association, NU_DETAIL_CONTACTS);
  nu_association_refit(association, NU_CRITERION_MINIMUM_ZONE, &feature, &report);
  AddFeature(&feature);
  nu_association_sensitivity(association, report, values, kMost, &count);
  AddAll(values, count);
  for (i = 3; i < kPoints - 2; ++i)
    memcpy(xyz + kStride * i, xyz + kStride * (i < 4 ? i + 1 : i + 2), 3 * sizeof(double));
  nu_report_check(report, xyz, kPoints - 2, kStride, &feature, 1e-9, &verdict);
  AddAll(&verdict.gap, 9);
  Line("refit", (int)nu_association_count(association, &i), i, verdict.failed_check);
  nu_association_sample(association, report, 1e-4, 5, 7, spread, 9, &count, &i);
  for (i = 0; i < count; ++i) {
    AddText(spread[i].name);
    AddAll(&spread[i].mean, 4);
  }
  nu_report_free(report);
  feature.kind = NU_KIND_PLANE;
  nu_association_prove(association, NU_CRITERION_MINIMUM_ZONE, 1000, &feature, &report);
  AddFeature(&feature);
  Line("proof", count, 0, 0);
  AddReport(report);
  nu_report_free(report);
  nu_association_free(association);
}

/* Two parts of weighted points of a known radius, of which one comes as bytes, and the zone of their candidates. */
static void Parts(const nu_feature* cylinder) {
  enum { kRounds = 6, kBytes = 16384 };
  static uint8_t bytes[kBytes];
  double xyz[kStride * kPoints], weights[kPoints], length = 0.0, value = 0.0;
  const double middle[] = {100.0, -50.0, 20.0}, radius = 5.0;
  nu_feature feature = *cylinder;
  nu_candidates* candidates = NULL;
  nu_part_sums sums = {0};
  int32_t i, k, status, round, count = 0;
  MakeCloud(NU_KIND_CYLINDER, xyz);
  for (i = 0; i < kPoints; ++i) weights[i] = 1.0 + i % 3;
  nu_candidates_create(&candidates);
  for (round = 0; round < kRounds; ++round) {
    nu_part* all = NULL;
    nu_part_create(NULL, NULL, NULL, &all);
    for (k = 0; k < 2; ++k) {
      nu_association* half = NULL;
      nu_part *part = NULL, *read = NULL;
      nu_association_create(xyz + k * kStride * (kPoints / 2), kPoints / 2, kStride, &half);
      nu_association_set_weights(half, weights + k * (kPoints / 2), kPoints / 2);
      nu_association_fix(half, NU_PARAMETER_RADIUS, &radius);
      nu_part_create(half, &feature, middle, &part);
      nu_part_write(part, bytes, kBytes, &count);
      nu_part_read(bytes, count, &read);
      nu_part_join(all, k == 0 ? part : read);
      nu_part_free(read);
      nu_part_free(part);
      nu_association_free(half);
    }
    nu_part_get(all, &sums);
    Add(sums.sum_squares);
    AddAll(&sums.rms, 3);
    nu_candidates_add(candidates, all);
    nu_part_step(all, &feature, &length);
    Add(length);
    AddFeature(&feature);
    nu_part_free(all);
  }
  status = nu_candidates_fit(candidates, NU_CRITERION_MINIMUM_ZONE, &feature, &value);
  Add(value);
  AddFeature(&feature);
  Line("parts", (int)sums.points, count, status);
  nu_candidates_free(candidates);
}

/* What a point has to do with a feature, and where a motion takes the feature. */
static void Place(const nu_feature* feature) {
  const double axis[3] = {1.0, 2.0, 3.0};
  double closest[3] = {0.0, 0.0, 0.0}, distance = 0.0;
  nu_feature point = {0}, moved = *feature;
  int32_t side = 0;
  point.kind = NU_KIND_POINT;
  point.point[0] = 95.0;
  point.point[1] = -47.0;
  point.point[2] = 22.0;
  nu_feature_distance(&point, feature, &distance);
  Add(distance);
  nu_feature_project(point.point, feature, closest);
  AddAll(closest, 3);
  nu_feature_side(point.point, feature, 1e-9, &side);
  nu_feature_rotate(&moved, 30.0, axis, point.point);
  nu_feature_translate(&moved, axis);
  AddFeature(&moved);
  Line("place", feature->kind, side, 0);
}

static void Pair(const nu_feature* first, const nu_feature* second) {
  double distance = 0.0, degrees = 0.0, xyz[15];
  nu_intersection* intersection = NULL;
  int32_t i, count = 0;
  nu_feature_distance(first, second, &distance);
  nu_feature_angle(first, second, &degrees);
  Add(distance);
  Add(degrees);
  nu_intersection_create(first, second, &intersection);
  nu_intersection_count(intersection, &count);
  for (i = 0; i < count; ++i) {
    nu_feature element;
    nu_intersection_get(intersection, i, &element);
    AddFeature(&element);
    if (nu_intersection_sample(intersection, i, 5, xyz) == 0) AddAll(xyz, 15);
  }
  nu_intersection_free(intersection);
  Line("pair", first->kind, second->kind, count);
}

/* Indices of the kinds. Half of the pairs are in the order in which the classes have no operation of their own. */
static const int kPairs[][2] = {{0, 1}, {2, 0}, {0, 3}, {4, 0}, {0, 5}, {6, 0}, {0, 7}, {8, 0}, {1, 2}, {1, 3},
                                {4, 1}, {1, 5}, {6, 1}, {1, 7}, {8, 1}, {6, 7}, {8, 6}, {7, 8}, {6, 9}};

static void Relations(const nu_feature* fitted) {
  const double axis[3] = {1.0, 0.0, 0.0};
  nu_feature moved, middle = {0};
  int32_t i;
  for (i = 0; i < kKindCount; ++i) Place(&fitted[i]);
  for (i = 0; i < (int32_t)(sizeof kPairs / sizeof *kPairs); ++i) Pair(&fitted[kPairs[i][0]], &fitted[kPairs[i][1]]);
  for (i = 0; i < kKindCount; ++i) {
    moved = fitted[i];
    nu_feature_rotate(&moved, 40.0, axis, moved.point);
    Pair(&fitted[i], &moved);
    nu_feature_middle(&fitted[i], &moved, NU_KIND_PLANE, &middle);
  }
  AddFeature(&middle);
  nu_feature_middle(&fitted[1], &fitted[0], NU_KIND_LINE, &middle);
  AddFeature(&middle);
  Line("middle", middle.kind, 0, 0);
}

static void Roots(void) {
  const double c[] = {-120.0, 274.0, -225.0, 85.0, -15.0, 1.0, 0.25};
  const nu_complex z[] = {{1.0, 2.0}, {-3.0, 0.5}, {0.0, 1.0}, {2.0, 0.0}};
  double real[6];
  nu_complex roots[6];
  int32_t i, count, complex_count;
  nu_polynomial_roots(c, 7, real, 6, &count, roots, 6, &complex_count);
  AddAll(real, count);
  for (i = 0; i < complex_count; ++i) AddAll(&roots[i].re, 2);
  nu_polynomial_complex_roots(z, 4, roots, 6, &i);
  AddAll(&roots[0].re, 2 * i);
  Line("roots", count, complex_count, i);
}

static void Curves(const char* file_name) {
  const double corner[4][3] = {{0.0, 0.0, 1.0}, {8.0, 0.0, 1.0}, {8.0, 4.0, 1.0}, {0.0, 4.0, 1.0}};
  const double centre[3] = {8.0, 2.0, 1.0}, up[3] = {0.0, 0.0, 1.0}, p[3] = {3.0, -2.0, 0.0};
  double length, distance, xyz[3 * kMost];
  nu_curve *curve = NULL, *read = NULL, *loops[4];
  nu_segment segment;
  int32_t i, count, corners;
  nu_curve_create(&curve);
  nu_curve_create(&read);
  nu_curve_add_segment(curve, corner[0], corner[1]);
  nu_curve_add_arc(curve, centre, corner[1], corner[2], 1);
  nu_curve_add_segment(curve, corner[2], corner[3]);
  nu_curve_add_segment(curve, corner[3], corner[0]);
  i = nu_curve_write(curve, file_name);
  count = nu_curve_read(read, file_name);
  Line("file", i, count, 0);
  nu_curve_count(read, &count);
  for (i = 0; i < count; ++i) {
    nu_curve_get(read, i, &segment);
    AddInt(segment.sense);
    AddAll(segment.start, 14);
  }
  nu_curve_length(read, &length);
  nu_curve_distance(read, p, &distance);
  Add(length);
  Add(distance);
  nu_curve_polyline(read, 0.1, xyz, kMost, &corners);
  AddAll(xyz, 3 * corners);
  Line("curve", count, corners, 0);
  nu_curve_offset(read, -0.5, up, 1, loops, 4, &count);
  for (i = 0; i < count; ++i) {
    nu_curve_length(loops[i], &length);
    Add(length);
    nu_curve_free(loops[i]);
  }
  Line("offset", count, 0, 0);
  nu_curve_free(read);
  nu_curve_free(curve);
}

/* Two points for a circle, and another tolerance. */
static void Failures(void) {
  const double xyz[6] = {0.0, 0.0, 0.0, 1.0, 0.0, 0.0};
  nu_feature feature = {0};
  nu_form form = {0};
  double tol = 0.0;
  nu_status status;
  feature.kind = NU_KIND_CIRCLE;
  status = nu_feature_fit(xyz, 2, 3, NU_CRITERION_LEAST_SQUARES, &feature, &form);
  AddText(nu_error_message());
  nu_tolerance_set(NU_TOLERANCE_LENGTH, 1e-7);
  nu_tolerance_get(NU_TOLERANCE_LENGTH, &tol);
  Add(tol);
  nu_tolerance_set(NU_TOLERANCE_LENGTH, 1e-12);
  Line("failure", status, Cause(), 0);
}

int main(int argc, char** argv) {
  nu_feature fitted[kKindCount];
  Line(nu_version_text(), 0, 0, 0);
  AllFits(fitted);
  Options(&fitted[6]);
  Parts(&fitted[6]);
  Relations(fitted);
  Roots();
  Curves(argc > 1 ? argv[1] : "curve-\xc2\xb5\xe2\x82\xac.bin");
  Failures();
  return 0;
}
