#ifndef NU_C_NU_H
#define NU_C_NU_H

/* NOLINTBEGIN(modernize-deprecated-headers,modernize-use-using): C has no others. */
#include <stdint.h>

#include "nu/export.h"

/* The library for C and for every language that calls C: C99, plain structs for what is small, handles for what is
   large. It is a part of the same library as the classes of C++ and gives the same numbers to the last bit.

   Names      Functions are nu_<object>_<verb>, constants NU_<ENUMERATION>_<NAME>. Enumerations are passed as int32_t.
   Status     Functions return 0, which is NU_STATUS_OK, or the reason of a failure. nu_error_get and nu_error_message
              of the same thread say more. A failure leaves what a function returns as it was, but for handles, which
              it sets to null, and for `count`. No exception leaves a function. Each documents the causes of its own;
              NU_STATUS_ARGUMENT and NU_STATUS_MEMORY are always possible.
   Points     `xyz`, `count`, `stride`: x, y and z of point i are xyz[i * stride] and the two behind it. A stride is
              counted in doubles and is at least 3. xyz may be null where count is 0.
   Arrays     An array of the caller that receives results comes with its length, `capacity`, and `count`, which
              receives the number of results. A null array with a capacity of 0 asks for that number alone. An array
              that is too short is left as it is, with NU_STATUS_CAPACITY. `count` may be null.
   Handles    What a function returns as a handle belongs to the caller, who passes it to the function ..._free once.
              Freeing null does nothing. A null handle, or one of another object, is NU_STATUS_ARGUMENT.
   Texts      UTF-8, ended by a zero byte. A text that is returned as a pointer lives as long as the program unless its
              function says otherwise.
   Units      Lengths are in the unit of the coordinates, angles in degrees.
   Threads    All functions may be called on all threads at once, as long as none changes an object that another one
              uses. Tolerances and messages belong to the thread. */

#ifdef __cplusplus
extern "C" {
#endif

/* Grows with every addition to this header. What is there does not change within a major version of the library. */
#define NU_C_VERSION 2

typedef int32_t nu_status;

enum {
  NU_STATUS_OK = 0,
  NU_STATUS_ARGUMENT = 1,     /* a null pointer, a wrong handle, a negative count, a number that names nothing */
  NU_STATUS_CAPACITY = 2,     /* an array that is too short */
  NU_STATUS_CONSTRUCTION = 3, /* CNuConstructionException: the numbers make no such feature */
  NU_STATUS_OPERATION = 4,    /* CNuOperationException */
  NU_STATUS_FIT = 5,          /* CNuBestfitException: the points have no such feature */
  NU_STATUS_MEMORY = 6,       /* lack of memory */
  NU_STATUS_UNEXPECTED = 7    /* anything else, such as an exception of a monitor */
};

/* What nu_error_get tells. */
typedef struct nu_error {
  nu_status status;
  int32_t cause;                 /* of nu/foundation/causes.h, a number within the class that the status names; or 0 */
  int32_t lower, upper;          /* the range of an index; lower also the least number of points */
  double real_lower, real_upper; /* the range of a real argument */
} nu_error;

enum {
  NU_TOLERANCE_RELATIVE = 0,        /* NuGetTol */
  NU_TOLERANCE_LARGE = 1,           /* NuGetLarge */
  NU_TOLERANCE_ZERO = 2,            /* NuGetZero */
  NU_TOLERANCE_SQUARE_ROOT = 3,     /* NuGetSqrtTol */
  NU_TOLERANCE_LENGTH = 4,          /* NuGetLengthTol */
  NU_TOLERANCE_MIN_EDGE_LENGTH = 5, /* NuGetMinEdgeLength */
  NU_TOLERANCE_DEGREE = 6,          /* NuGetDegreeTol */
  NU_TOLERANCE_RADIAN = 7,          /* NuGetRadianTol */
  NU_TOLERANCE_MIN_ANGLE = 8        /* NuGetMinAngle */
};

/* The numbers of a feature, by its kind:

     kind                point           direction   x_axis              size[0]          size[1]
     NU_KIND_POINT       the point
     NU_KIND_LINE        on the line     of the line
     NU_KIND_PLANE       on the plane    normal
     NU_KIND_CIRCLE      centre          normal      any across          radius
     NU_KIND_ELLIPSE     centre          normal      of semi-axis a      semi-axis a      semi-axis b, b <= a
     NU_KIND_HYPERBOLA   centre          normal      to a vertex         semi-axis a      semi-axis b
     NU_KIND_PARABOLA    vertex          normal      where it opens      focal length
     NU_KIND_SPHERE      centre                                          radius
     NU_KIND_CYLINDER    on the axis     axis        any across          radius
     NU_KIND_CONE        apex            axis        any across          semi-angle
     NU_KIND_TORUS       centre          axis        any across          major radius     minor radius

   What is not named is 0. The values of the kinds are the type codes of the classes. */
enum {
  NU_KIND_POINT = 17,
  NU_KIND_LINE = 20,
  NU_KIND_PLANE = 21,
  NU_KIND_CIRCLE = 22,
  NU_KIND_ELLIPSE = 23,
  NU_KIND_HYPERBOLA = 24,
  NU_KIND_PARABOLA = 25,
  NU_KIND_CURVE = 28, /* in which two quadrics meet: an element of an intersection, and no feature of its own */
  NU_KIND_SEGMENT = 29,
  NU_KIND_ARC = 30,
  NU_KIND_CYLINDER = 33,
  NU_KIND_CONE = 34,
  NU_KIND_SPHERE = 35,
  NU_KIND_TORUS = 36
};

/* Set all of it to zero, then the numbers of the kind. With is_unit 0 the direction and the x axis have any length, as
   in the constructors of C++; an x axis of zero is chosen. Functions return features with is_unit 1: their directions
   are unit vectors and are taken as they are, bit for bit. Where they are not unit vectors to rounding, 1 counts as 0.
   A feature without its size is another one: with the kind NU_KIND_LINE a cylinder is its axis, and with NU_KIND_PLANE
   a circle is its plane. */
typedef struct nu_feature {
  int32_t kind;
  int32_t is_unit;
  double point[3];
  double direction[3];
  double x_axis[3];
  double size[2];
} nu_feature;

/* Where a point lies. */
enum { NU_SIDE_LEFT = 0, NU_SIDE_OUTSIDE = 0, NU_SIDE_RIGHT = 1, NU_SIDE_INSIDE = 1, NU_SIDE_ON = 2 };

enum {
  NU_CRITERION_LEAST_SQUARES = 0,
  NU_CRITERION_MINIMUM_ZONE = 1,
  NU_CRITERION_MINIMUM_CIRCUMSCRIBED = 2,
  NU_CRITERION_MAXIMUM_INSCRIBED = 3
};

/* Side of the feature on which the points may lie. */
enum { NU_MATERIAL_EITHER_SIDE = 0, NU_MATERIAL_OUTSIDE = 1, NU_MATERIAL_INSIDE = 2 };

/* How a fit ended. */
enum { NU_END_CONVERGED = 0, NU_END_LIMIT_REACHED = 1, NU_END_CANCELLED = 2, NU_END_NO_OPTIMUM = 3 };

/* What a report holds: any sum of these. */
enum {
  NU_DETAIL_NONE = 0,
  NU_DETAIL_FORM = 1,
  NU_DETAIL_DEVIATIONS = 3,
  NU_DETAIL_UNCERTAINTY = 4,
  NU_DETAIL_CONTACTS = 8,
  NU_DETAIL_EXPLANATION = 16,
  NU_DETAIL_ALL = 31
};

/* Parameters of a feature that can be fixed, with the numbers that each has. */
enum {
  NU_PARAMETER_RADIUS = 0,       /* 1; of a torus the minor one */
  NU_PARAMETER_MAJOR_RADIUS = 1, /* 1 */
  NU_PARAMETER_SEMI_ANGLE = 2,   /* 1, degrees */
  NU_PARAMETER_DIRECTION = 3,    /* 3 */
  NU_PARAMETER_POINT = 4         /* 3 */
};

/* NU_DETAIL_FORM: P, V, T = P + V and Q of ISO 12180 and its relatives, all lengths. */
typedef struct nu_form {
  double form;   /* T; of a minimum zone its width, of a line in space the diameter of the cylinder of the points */
  double peak;   /* P, the largest deviation */
  double valley; /* V, minus the smallest deviation */
  double rms;    /* Q, the root of the mean of the squared deviations */
  double sum_squares; /* of the deviations, times the weights */
} nu_form;

/* What was fitted, and how it ended. */
typedef struct nu_summary {
  int32_t kind;      /* NU_KIND_..., 0 of no fit */
  int32_t criterion; /* NU_CRITERION_... */
  int32_t details;   /* that were asked for, a sum of NU_DETAIL_... */
  int32_t points;    /* their number */
  int32_t end;       /* NU_END_... */
  int32_t cause;     /* of nu/foundation/causes.h, of an end that is not NU_END_CONVERGED; else 0 */
  int64_t steps;     /* of the iteration; 0 of a feature that is computed directly */
  double last_step;  /* its length */
} nu_summary;

/* NU_DETAIL_CONTACTS: a point that holds a feature of the criteria but least squares. */
typedef struct nu_contact {
  int32_t point;     /* its index */
  int32_t side;      /* 1 on the outer boundary, -1 on the inner one */
  double multiplier; /* not negative; their sum is 1 */
} nu_contact;

/* NU_DETAIL_UNCERTAINTY: a parameter of a least-squares fit, a change of the feature in the frame of the report. */
typedef struct nu_parameter {
  const char* name; /* "shift x" for example */
  int32_t is_angle; /* 1: in degrees */
  int32_t reserved;
  double standard_uncertainty; /* infinite where the points do not determine the parameter */
} nu_parameter;

/* NU_DETAIL_UNCERTAINTY of all parameters together. */
typedef struct nu_uncertainty {
  int32_t parameters;         /* their number */
  int32_t degrees_of_freedom; /* the points less the parameters; of a line in space a point counts twice */
  double standard_deviation;  /* of a point of weight 1; infinite without a degree of freedom */
  double condition;           /* the largest by the smallest singular value of the derivatives */
} nu_uncertainty;

/* Of a fit that converged, with NU_DETAIL_EXPLANATION. */
typedef struct nu_weakness {
  const char* parameter; /* the one that the points determine least */
  double uncertainty;    /* of it, per unit of the uncertainty of a point */
  double coverage;       /* degrees */
  int32_t has_probe;     /* 1: one more point there would help most */
  int32_t reserved;
  double probe[3];
} nu_weakness;

/* What is known of all features of the kind. */
typedef struct nu_bound {
  int32_t is_global; /* 1: no feature of the kind is better */
  int32_t has_bound; /* 1: of nu_association_prove, with the two numbers below; else they are 0 */
  double bound;      /* no feature has a smaller zone or radius, a length */
  double gap;        /* from there to that of the feature */
} nu_bound;

/* How a value of a fit spreads over samples of its points. */
typedef struct nu_spread {
  const char* name;          /* of the parameter, "radius" or "form" */
  double mean;               /* a length, or degrees where the parameter is an angle */
  double standard_deviation; /* in the same unit, as are the next two */
  double low, high;          /* hold 95 % of the samples */
} nu_spread;

/* What the check of a certificate found, as CNuCertificateVerdict. */
typedef struct nu_verdict {
  int32_t failed_check;  /* 0: the certificate holds; else ENuCertificateCheck, the first check that failed */
  int32_t is_global;     /* 1: the gap holds for all features of the kind, and the radius is infinite */
  double gap;            /* no feature within the radius is better by more */
  double radius;         /* of the neighbourhood, in lengths: angles count times the extent of the points */
  double value;          /* the radius of the feature, or half of its zone */
  double excess;         /* by which the farthest point is outside; 0 of a zone */
  double contact_error;  /* by which the worst contact is inside */
  double multiplier_sum; /* should be 1 */
  double balance;        /* the length of the weighted sum of the gradients, 0 for exact multipliers */
  double growth;         /* of the value, per length, in the directions that the contacts resist, at least */
  double curvature;      /* of the value, per length, in the other directions, at least; 0 without such */
} nu_verdict;

/* What a part of a cloud, or several that were joined, tell of the feature at which they were reduced. All 0 of no
   points. */
typedef struct nu_part_sums {
  int64_t points;
  double sum_squares; /* of the deviations, times the weights */
  double rms;         /* the root of the mean of the squared deviations; this and what follows do not count weights */
  double largest, smallest;
} nu_part_sums;

/* A piece of a composite curve. */
typedef struct nu_segment {
  int32_t kind;  /* NU_KIND_SEGMENT or NU_KIND_ARC */
  int32_t sense; /* of an arc: 1 counter-clockwise about the normal */
  double start[3];
  double end[3];
  double centre[3]; /* this and what follows: of an arc, else 0 */
  double normal[3];
  double radius;
  double sweep; /* degrees */
} nu_segment;

/* A complex number, in memory as double complex of C99 and std::complex<double>. */
typedef struct nu_complex {
  double re, im; /* real and imaginary part */
} nu_complex;

typedef struct nu_association nu_association;   /* points, and how they are to be fitted */
typedef struct nu_report nu_report;             /* of a fit */
typedef struct nu_part nu_part;                 /* a part of a cloud, reduced at a feature */
typedef struct nu_candidates nu_candidates;     /* points that may hold a minimax feature of a cloud in parts */
typedef struct nu_intersection nu_intersection; /* of two features */
typedef struct nu_curve nu_curve;               /* a composite curve: line segments and circular arcs */

/* Called once per step with its number from 1 on, the value that is minimised and the length of the step, NaN where
   they are not known yet. Returns 1 to go on and 0 to cancel the fit. */
typedef int32_t (*nu_monitor)(void* context, int64_t step, double objective, double step_length);

/* -- Version and failures -- */

/* nu_version_get: the version of the library that is loaded, which may be newer than this header.

   Returned:  major, minor, build   each may be null */
NU_EXPORT nu_status nu_version_get(int32_t* major, int32_t* minor, int32_t* build);

/* nu_version_text: the same as a text, "3.0.0". */
NU_EXPORT const char* nu_version_text(void);

/* nu_error_get: the last failure of this thread.

   Returned:  error   all 0 before the first failure
   Notes:     A call that succeeds leaves it alone. */
NU_EXPORT nu_status nu_error_get(nu_error* error);

/* nu_error_message: the last failure of this thread in words.

   Notes:     For example "CNuCylSurf: too few points: at least 5 are needed". Empty before the first failure.
              The text is the thread's and changes with its next failure. */
NU_EXPORT const char* nu_error_message(void);

/* -- Tolerances of the thread -- */

/* nu_tolerance_get, nu_tolerance_set: one of the nine tolerances of this thread.

   Given:     tolerance   NU_TOLERANCE_...
              value       any double, taken as it is
   Notes:     nu/foundation/tolerances.h has their meanings and defaults. */
NU_EXPORT nu_status nu_tolerance_get(int32_t tolerance, double* value);
NU_EXPORT nu_status nu_tolerance_set(int32_t tolerance, double value);

/* -- Features and relations -- */

/* nu_feature_fit: fits a feature to points without options.

   Given:     xyz, count, stride   the points
              criterion            NU_CRITERION_...
              feature              its kind; the rest does not count
   Returned:  feature              the fitted one
              form                 may be null
   Status:    NU_STATUS_FIT        the points have no such feature; the cause of the fit of the class
              NU_STATUS_OPERATION  45 the kind has no such criterion; 46 failures of the calculation
   Notes:     The feature is that of the member Fit, FitMinZone, FitMin or FitMax of its class, with the length
              tolerance of the thread and up to 1000 steps. nu_association_fit has options and a report. */
NU_EXPORT nu_status nu_feature_fit(const double* xyz, int32_t count, int32_t stride, int32_t criterion,
                                   nu_feature* feature, nu_form* form);

/* nu_feature_normalise: checks a feature, makes its directions unit vectors and chooses those that are any.

   Given and returned:  feature
   Status:    NU_STATUS_CONSTRUCTION   the causes of the constructor of the class */
NU_EXPORT nu_status nu_feature_normalise(nu_feature* feature);

/* nu_feature_translate: moves a feature by a vector.

   Given:     by        3 numbers
   Given and returned:  feature */
NU_EXPORT nu_status nu_feature_translate(nu_feature* feature, const double* by);

/* nu_feature_rotate: rotates a feature, right-handed.

   Given:     degrees
              axis      3 numbers, of any length but 0
              centre    3 numbers, a point of the axis; null for the origin
   Given and returned:  feature
   Status:    NU_STATUS_OPERATION   9 the axis is zero */
NU_EXPORT nu_status nu_feature_rotate(nu_feature* feature, double degrees, const double* axis, const double* centre);

/* nu_feature_distance: the least distance of two features, 0 where they meet.

   Given:     first, second   a point and any feature but a torus; a line and a line, plane, circle, sphere, cylinder or
                              cone; two planes; in either order
   Returned:  distance        not negative; NaN or infinite for what is not finite
   Status:    NU_STATUS_OPERATION   45 any other two kinds
   Notes:     The oddities of the operations of the classes hold: a line parallel to the axis of a cylinder has a
              positive distance inside as well. */
NU_EXPORT nu_status nu_feature_distance(const nu_feature* first, const nu_feature* second, double* distance);

/* nu_feature_angle: the angle in degrees, in [0, 180], between lines, normals of planes, or one of each.

   Given:     first, second   lines and planes
   Status:    NU_STATUS_OPERATION   45 any other kind
   Notes:     A line in a plane makes 90 degrees with its normal. The axis of a cylinder is it with the kind
              NU_KIND_LINE. */
NU_EXPORT nu_status nu_feature_angle(const nu_feature* first, const nu_feature* second, double* degrees);

/* nu_feature_is_parallel: whether lines and planes are parallel.

   Given:     first, second   lines and planes
              tol             degrees
   Returned:  is_parallel     0 or 1
   Status:    NU_STATUS_OPERATION   45 any other kind */
NU_EXPORT nu_status nu_feature_is_parallel(const nu_feature* first, const nu_feature* second, double tol,
                                           int32_t* is_parallel);

/* nu_feature_project: the point of a feature that is closest to a point.

   Given:     point      3 numbers
              feature    a line, plane, sphere, cylinder or cone
   Returned:  closest    3 numbers; may be the array of the point
   Status:    NU_STATUS_OPERATION   45 any other kind; 9 no point is closest, as to the centre of a sphere */
NU_EXPORT nu_status nu_feature_project(const double* point, const nu_feature* feature, double* closest);

/* nu_feature_side: on which side of a feature a point lies.

   Given:     point      3 numbers
              feature    a line, seen from the tip of the z axis; a circle or conic; a plane, sphere, cylinder or cone
              tol        what is closer than this is on the feature
   Returned:  side       NU_SIDE_...
   Status:    NU_STATUS_OPERATION   45 any other kind, or what is not finite */
NU_EXPORT nu_status nu_feature_side(const double* point, const nu_feature* feature, double tol, int32_t* side);

/* nu_feature_middle: what lies half-way between two features.

   Given:     first, second   in either order
              kind            of the result, one of
                                NU_KIND_POINT   of a point and a point, line or plane
                                NU_KIND_LINE    of a line and a point, line or plane
                                NU_KIND_PLANE   of a point and a point or line, of two lines, or of a plane and a point,
                                                line or plane
   Returned:  middle          may be one of the given features
   Status:    NU_STATUS_OPERATION   45 any other kinds, or what is not finite; 19, 21, 22, 23, 24 where there is none
   Notes:     The sense is that of MidPoint, MidLine or MidPlane of the class of the first feature, or of the second
              where the first has none. */
NU_EXPORT nu_status nu_feature_middle(const nu_feature* first, const nu_feature* second, int32_t kind,
                                      nu_feature* middle);

/* nu_feature_closest: the points of a line that are closest to another feature.

   Given:     line       of the kind NU_KIND_LINE
              feature    a line, circle, sphere, cylinder or cone
   Returned:  xyz        6 numbers: of the `count` points, in the order of the line; the others are unchanged
              count      0, 1 or 2
   Status:    NU_STATUS_OPERATION   45 any other kind, or what is not finite */
NU_EXPORT nu_status nu_feature_closest(const nu_feature* line, const nu_feature* feature, double* xyz, int32_t* count);

/* nu_feature_intersect: what two features have in common, as features.

   Given:     first, second     see nu_intersection_create
   Returned:  found, capacity   points, lines, circles and conics; of any other curve its kind NU_KIND_CURVE alone
              count
   Status:    as nu_intersection_create; NU_STATUS_CAPACITY */
NU_EXPORT nu_status nu_feature_intersect(const nu_feature* first, const nu_feature* second, nu_feature* found,
                                         int32_t capacity, int32_t* count);

/* -- Intersections -- */

/* nu_intersection_create: what two features have in common.

   Given:     first, second   in either order: a line and a line, plane, circle, conic, sphere, cylinder or cone; a
                              plane and a plane, circle, conic, sphere, cylinder or cone; two circles; two of spheres,
                              cylinders and cones
   Returned:  intersection    a handle
   Status:    NU_STATUS_OPERATION   45 any other two kinds, or what is not finite; 46 rounding decides
   Notes:     Order and sense are those of IntersectWith of the class of the first feature, or of the second where the
              first has none. Parallel features have nothing in common, even when one lies in the other. */
NU_EXPORT nu_status nu_intersection_create(const nu_feature* first, const nu_feature* second,
                                           nu_intersection** intersection);
NU_EXPORT void nu_intersection_free(nu_intersection* intersection);

/* nu_intersection_count: the number of its elements. */
NU_EXPORT nu_status nu_intersection_count(const nu_intersection* intersection, int32_t* count);

/* nu_intersection_get: element i as a feature.

   Returned:  feature   for a curve in which quadrics meet the kind NU_KIND_CURVE and zeros
   Status:    NU_STATUS_OPERATION   3 i is out of range */
NU_EXPORT nu_status nu_intersection_get(const nu_intersection* intersection, int32_t i, nu_feature* feature);

/* nu_intersection_range: the parameters of element i, a curve of the kind NU_KIND_CURVE.

   Returned:  lower, upper   each may be null
              is_closed      0 or 1; may be null
   Status:    NU_STATUS_OPERATION   3 i is out of range; 45 the element is of another kind */
NU_EXPORT nu_status nu_intersection_range(const nu_intersection* intersection, int32_t i, double* lower, double* upper,
                                          int32_t* is_closed);

/* nu_intersection_sample: n points of element i, a curve of the kind NU_KIND_CURVE, in equal steps of its parameter.

   Given:     n         from 2 to 10,000,000; the last point of a closed curve is the first again
   Returned:  xyz       3 n numbers
   Status:    NU_STATUS_OPERATION   3 i is out of range; 45 the element is of another kind; 12 n */
NU_EXPORT nu_status nu_intersection_sample(const nu_intersection* intersection, int32_t i, int32_t n, double* xyz);

/* nu_intersection_closest: the point of element i, a curve of the kind NU_KIND_CURVE, that is closest to a point.

   Given:     point      3 numbers
   Returned:  closest    3 numbers; may be null
              parameter  of it; may be null
   Status:    NU_STATUS_OPERATION   3 i is out of range; 45 the element is of another kind */
NU_EXPORT nu_status nu_intersection_closest(const nu_intersection* intersection, int32_t i, const double* point,
                                            double* closest, double* parameter);

/* -- Associations: fits with options -- */

/* nu_association_create: points to be fitted.

   Given:     xyz, count, stride   borrowed: they must stay where and as they are until the association is freed, or
                                   until points are added or removed, which takes a copy
   Returned:  association          a handle
   Notes:     Hosts that move their arrays about create an association of no points and add them: that copies. */
NU_EXPORT nu_status nu_association_create(const double* xyz, int32_t count, int32_t stride,
                                          nu_association** association);
NU_EXPORT void nu_association_free(nu_association* association);

/* nu_association_count: the number of points. */
NU_EXPORT nu_status nu_association_count(const nu_association* association, int32_t* count);

/* nu_association_add: more points, which are copied, behind the present ones.

   Status:    NU_STATUS_OPERATION   14 more points than an int32_t can count */
NU_EXPORT nu_status nu_association_add(nu_association* association, const double* xyz, int32_t count, int32_t stride);

/* nu_association_remove: fewer points.

   Given:     indices, count   of the points to remove
   Status:    NU_STATUS_OPERATION   3 an index is out of range */
NU_EXPORT nu_status nu_association_remove(nu_association* association, const int32_t* indices, int32_t count);

/* nu_association_merge: adds the points of another association with their weights, and nothing else.

   Given:     other   unchanged; may be the same association */
NU_EXPORT nu_status nu_association_merge(nu_association* association, const nu_association* other);

/* nu_association_set_weights: of the squared deviation of each point.

   Given:     weights, count   one per point, not negative; null and 0: 1 each
   Status:    NU_STATUS_OPERATION   5 their number is not that of the points; 1 one is negative or not finite, or none
                                    is positive */
NU_EXPORT nu_status nu_association_set_weights(nu_association* association, const double* weights, int32_t count);

/* nu_association_fix: gives a parameter a value that it keeps. nu_association_release: lets it be fitted again.

   Given:     parameter   NU_PARAMETER_...
              value       1 or 3 numbers
   Status:    NU_STATUS_OPERATION   1 a value that the parameter cannot have; 9 a direction that is zero */
NU_EXPORT nu_status nu_association_fix(nu_association* association, int32_t parameter, const double* value);
NU_EXPORT nu_status nu_association_release(nu_association* association, int32_t parameter);

/* nu_association_set_side: all points on one side of the feature; least squares and minimum zones.

   Given:     side   NU_MATERIAL_... */
NU_EXPORT nu_status nu_association_set_side(nu_association* association, int32_t side);

/* nu_association_set_start: where the iteration begins, which then leads to the optimum next to it.

   Given:     start   a feature of the kind that will be fitted; null: the fit finds its own */
NU_EXPORT nu_status nu_association_set_start(nu_association* association, const nu_feature* start);

/* nu_association_set_max_steps: the limit on the steps, at least 1; 1000 unless set. */
NU_EXPORT nu_status nu_association_set_max_steps(nu_association* association, int32_t steps);

/* nu_association_set_tolerance: the length tolerance of the fits, not negative.

   Notes:     Unless it is set, that of the thread that fits. */
NU_EXPORT nu_status nu_association_set_tolerance(nu_association* association, double tolerance);

/* nu_association_set_monitor: what is called at every step, on the thread that fits.

   Given:     monitor   null watches nothing
              context   passed to it
   Notes:     An exception that it throws ends the fit with NU_STATUS_UNEXPECTED. */
NU_EXPORT nu_status nu_association_set_monitor(nu_association* association, nu_monitor monitor, void* context);

/* nu_association_set_details: what reports hold.

   Given:     details   a sum of NU_DETAIL_...; NU_DETAIL_FORM unless set */
NU_EXPORT nu_status nu_association_set_details(nu_association* association, int32_t details);

/* nu_association_fit: fits a feature.

   Given:     criterion   NU_CRITERION_...
              feature     its kind; the rest does not count
   Returned:  feature     the fitted one, where the fit converged
              report      a handle; null where it is not wanted
   Status:    NU_STATUS_OPERATION   45 an option or criterion that the kind does not have; 5 the number of weights
   Notes:     A fit that does not converge is no failure of this function where a report is wanted: nu_report_get says
              how it ended, and nu_report_require returns the failure. Without a report it is NU_STATUS_FIT or
              NU_STATUS_OPERATION here. Without options the feature is that of nu_feature_fit. */
NU_EXPORT nu_status nu_association_fit(const nu_association* association, int32_t criterion, nu_feature* feature,
                                       nu_report** report);

/* nu_association_refit: the same from the feature as given, in a few steps where it is near to the optimum.

   Given:     feature     all of it: the result for the points before some were added or removed */
NU_EXPORT nu_status nu_association_refit(const nu_association* association, int32_t criterion, nu_feature* feature,
                                         nu_report** report);

/* nu_association_prove: fits, and looks for a better feature anywhere.

   Given:     budget      boxes of the branch and bound, at least 1; a million takes some seconds
   Status:    as nu_association_fit; NU_STATUS_OPERATION 1 the budget, 45 a criterion or option without this proof
   Notes:     nu_report_bound has the result. Minimum zones, and circumscribed circles, spheres and cylinders, without
              fixed parameters, sides and starts. */
NU_EXPORT nu_status nu_association_prove(const nu_association* association, int32_t criterion, int32_t budget,
                                         nu_feature* feature, nu_report** report);

/* nu_association_sensitivity: by how much the zone or the radius changes without each contact of a report; of least
   squares with a side of material, the sum of squares.

   Given:     report     with NU_DETAIL_CONTACTS
   Returned:  values     one per contact, in the order of nu_report_contacts; NaN where none is found without it
   Status:    NU_STATUS_OPERATION   49, 45, 5 the report is not one of such a fit; NU_STATUS_CAPACITY */
NU_EXPORT nu_status nu_association_sensitivity(const nu_association* association, const nu_report* report,
                                               double* values, int32_t capacity, int32_t* count);

/* nu_association_sample: how the fit of a report spreads when the points are moved at random (JCGM 101:2008).

   Given:     report     with a detail
              sigma      the standard deviation of each coordinate
              samples    from 2 to 10,000,000
              seed       the same one gives the same bits on every machine
   Returned:  values     of the free parameters, and last of the radius or the form
              count
              made       of the samples, those that had a fit; may be null
   Status:    NU_STATUS_OPERATION   49, 5 the report is not of these points; 1 sigma or samples; NU_STATUS_CAPACITY
   Notes:     There are 9 values at most. */
NU_EXPORT nu_status nu_association_sample(const nu_association* association, const nu_report* report, double sigma,
                                          int32_t samples, uint32_t seed, nu_spread* values, int32_t capacity,
                                          int32_t* count, int32_t* made);

/* -- Parts: fits of clouds that lie on several threads or machines -- */

/* Each part is reduced at one feature, the reductions are joined, the feature takes a step, and all is repeated until
   the length of the step vanishes: some five rounds. nu/association/association_part.h describes it. */

/* nu_part_create: reduces the points of an association with its weights and its fixed parameters.

   Given:     association   null: a part of no points, to join others to
              feature       where it is reduced; this and the next must be the same numbers for all parts
              middle        3 numbers, some point among those of all parts
   Returned:  part          a handle
   Status:    NU_STATUS_OPERATION   45 no such feature, a fixed parameter it does not have, or a side of material */
NU_EXPORT nu_status nu_part_create(const nu_association* association, const nu_feature* feature, const double* middle,
                                   nu_part** part);
NU_EXPORT void nu_part_free(nu_part* part);

/* nu_part_join: adds another part, which stays as it is.

   Status:    NU_STATUS_OPERATION   41 it was reduced at another feature */
NU_EXPORT nu_status nu_part_join(nu_part* part, const nu_part* other);

/* nu_part_get: the sums of all points that were joined. */
NU_EXPORT nu_status nu_part_get(const nu_part* part, nu_part_sums* sums);

/* nu_part_step: the feature after the least-squares step.

   Given:     feature   a valid one of its kind
   Returned:  feature
              length    of the step, in which angles count times the distance of the farthest point
   Status:    NU_STATUS_OPERATION      45 no points, or a feature of another kind; 46 the points do not determine it
              NU_STATUS_CONSTRUCTION   the step leads to no feature, as to one of a negative radius */
NU_EXPORT nu_status nu_part_step(const nu_part* part, nu_feature* feature, double* length);

/* nu_part_write: the part as bytes, which are the same on every machine; none of no points.
   nu_part_read: the part of the bytes.

   Returned:  bytes, count   some kilobytes
              part           a handle
   Status:    NU_STATUS_CAPACITY; NU_STATUS_OPERATION 41 damaged bytes, or those of something else */
NU_EXPORT nu_status nu_part_write(const nu_part* part, uint8_t* bytes, int32_t capacity, int32_t* count);
NU_EXPORT nu_status nu_part_read(const uint8_t* bytes, int32_t count, nu_part** part);

/* nu_candidates_create: of no points. nu_candidates_add: the points of a joined part that may hold the feature.

   Returned:  candidates   a handle */
NU_EXPORT nu_status nu_candidates_create(nu_candidates** candidates);
NU_EXPORT void nu_candidates_free(nu_candidates* candidates);
NU_EXPORT nu_status nu_candidates_add(nu_candidates* candidates, const nu_part* joined);

/* nu_candidates_fit: the minimum-zone, circumscribed or inscribed feature of the candidates next to a feature.

   Given:     criterion   NU_CRITERION_..., but not least squares
              feature     all of it
   Returned:  feature
              value       half of the zone, or the radius
   Status:    NU_STATUS_OPERATION   45 a criterion or feature without such a fit; 46 no optimum was found */
NU_EXPORT nu_status nu_candidates_fit(const nu_candidates* candidates, int32_t criterion, nu_feature* feature,
                                      double* value);

/* -- Reports -- */

/* A report does not change, and outlives the association and the points. What it does not hold is NU_STATUS_OPERATION
   with the cause 49, not asked for or no fit that converged, or 45, nothing that this kind or criterion has. */
NU_EXPORT void nu_report_free(nu_report* report);

/* nu_report_get: what was fitted, and how it ended. */
NU_EXPORT nu_status nu_report_get(const nu_report* report, nu_summary* summary);

/* nu_report_require: the failure of the fit as a status; NU_STATUS_OK where it converged. */
NU_EXPORT nu_status nu_report_require(const nu_report* report);

/* nu_report_form: NU_DETAIL_FORM. */
NU_EXPORT nu_status nu_report_form(const nu_report* report, nu_form* form);

/* nu_report_deviations: NU_DETAIL_DEVIATIONS, one per point, positive outside.

   Returned:  values, count
              highest, lowest   the indices of the extremes, of equal ones the first; each may be null */
NU_EXPORT nu_status nu_report_deviations(const nu_report* report, double* values, int32_t capacity, int32_t* count,
                                         int32_t* highest, int32_t* lowest);

/* nu_report_contacts: NU_DETAIL_CONTACTS, the points that hold the feature, those with a multiplier first. */
NU_EXPORT nu_status nu_report_contacts(const nu_report* report, nu_contact* contacts, int32_t capacity, int32_t* count);

/* nu_report_uncertainty: NU_DETAIL_UNCERTAINTY of least squares. */
NU_EXPORT nu_status nu_report_uncertainty(const nu_report* report, nu_uncertainty* uncertainty);

/* nu_report_parameter: parameter i of the fit.

   Status:    NU_STATUS_OPERATION   3 i is out of range */
NU_EXPORT nu_status nu_report_parameter(const nu_report* report, int32_t i, nu_parameter* parameter);

/* nu_report_frame: the frame in which the parameters are changes of the feature.

   Returned:  origin, x, y, z   3 numbers each; each may be null */
NU_EXPORT nu_status nu_report_frame(const nu_report* report, double* origin, double* x, double* y, double* z);

/* nu_report_covariance: of the parameters, row by row: the square of their number. */
NU_EXPORT nu_status nu_report_covariance(const nu_report* report, double* values, int32_t capacity, int32_t* count);

/* nu_report_axis_uncertainty: of the axis, in the direction across it that is the most uncertain.
   nu_report_surface_uncertainty: of the feature next to a place, along its normal.

   Given:     height   above the origin of the frame
              place    3 numbers
   Returned:  uncertainty   a standard uncertainty, in lengths */
NU_EXPORT nu_status nu_report_axis_uncertainty(const nu_report* report, double height, double* uncertainty);
NU_EXPORT nu_status nu_report_surface_uncertainty(const nu_report* report, const double* place, double* uncertainty);

/* nu_report_bound: whether the feature is proven to be the best of all of its kind. */
NU_EXPORT nu_status nu_report_bound(const nu_report* report, nu_bound* bound);

/* nu_report_weakness: what the points determine least, and where to probe. */
NU_EXPORT nu_status nu_report_weakness(const nu_report* report, nu_weakness* weakness);

/* nu_report_explain: why the feature is as uncertain as it is, or why there is none, in a sentence.

   Returned:  text     the array of the caller
              count    the bytes of the text with its zero */
NU_EXPORT nu_status nu_report_explain(const nu_report* report, char* text, int32_t capacity, int32_t* count);

/* nu_report_check: checks the certificate of the report from the points and the feature alone.

   Given:     xyz, count, stride, feature, length
   Returned:  verdict
   Notes:     As nu_certificate_check, with what was fixed in the fit. */
NU_EXPORT nu_status nu_report_check(const nu_report* report, const double* xyz, int32_t count, int32_t stride,
                                    const nu_feature* feature, double length, nu_verdict* verdict);

/* nu_certificate_check: whether no feature nearby is better, from stored contacts; with nothing fixed.

   Given:     criterion                      but least squares
              contacts, contact_count        as of nu_report_contacts
              xyz, count, stride, feature
              length                         above 0: some roundings of the largest coordinate, by which points may be
                                             outside, contacts off the boundary and features better
   Returned:  verdict
   Status:    NU_STATUS_OPERATION   1 length; 3 the index of a contact; 45 no such feature or criterion */
NU_EXPORT nu_status nu_certificate_check(int32_t criterion, const nu_contact* contacts, int32_t contact_count,
                                         const double* xyz, int32_t count, int32_t stride, const nu_feature* feature,
                                         double length, nu_verdict* verdict);

/* -- Roots of polynomials -- */

/* nu_polynomial_roots: the roots of c[0] + c[1] x + ..., each as often as its multiplicity.

   Given:     c, count        real coefficients, at least one
   Returned:  real_roots      ascending
              complex_roots   by ascending real part, conjugates together
   Status:    NU_STATUS_OPERATION   46 a coefficient is not finite; NU_STATUS_CAPACITY: count - 1 is enough for each */
NU_EXPORT nu_status nu_polynomial_roots(const double* c, int32_t count, double* real_roots, int32_t real_capacity,
                                        int32_t* real_count, nu_complex* complex_roots, int32_t complex_capacity,
                                        int32_t* complex_count);

/* nu_polynomial_complex_roots: the same of complex coefficients. Real roots are those with an imaginary part of 0. */
NU_EXPORT nu_status nu_polynomial_complex_roots(const nu_complex* c, int32_t count, nu_complex* roots, int32_t capacity,
                                                int32_t* root_count);

/* -- Composite curves -- */

/* nu_curve_create: a curve without segments. */
NU_EXPORT nu_status nu_curve_create(nu_curve** curve);
NU_EXPORT void nu_curve_free(nu_curve* curve);

/* nu_curve_read, nu_curve_write: the file of a composite curve, as CNuCompositeCurve describes it.

   Given:     file_name   UTF-8, on Windows too
   Status:    NU_STATUS_OPERATION   47 the file cannot be opened, or is not such a file, which leaves the curve as it
                                    was; 48 it cannot be written; 8 an empty curve is to be written */
NU_EXPORT nu_status nu_curve_read(nu_curve* curve, const char* file_name);
NU_EXPORT nu_status nu_curve_write(const nu_curve* curve, const char* file_name);

/* nu_curve_add_segment, nu_curve_add_arc: one more piece behind the last one.

   Given:     start, end    3 numbers each
              centre        of the arc
              sense         1 counter-clockwise about the normal of the arc, which has a positive z component
   Status:    NU_STATUS_CONSTRUCTION   10 the ends coincide; 12 the points make no arc */
NU_EXPORT nu_status nu_curve_add_segment(nu_curve* curve, const double* start, const double* end);
NU_EXPORT nu_status nu_curve_add_arc(nu_curve* curve, const double* centre, const double* start, const double* end,
                                     int32_t sense);

/* nu_curve_count: the number of pieces. nu_curve_get: piece i.

   Status:    NU_STATUS_OPERATION   3 i is out of range */
NU_EXPORT nu_status nu_curve_count(const nu_curve* curve, int32_t* count);
NU_EXPORT nu_status nu_curve_get(const nu_curve* curve, int32_t i, nu_segment* segment);

/* nu_curve_length: of all pieces; 0 of no piece. */
NU_EXPORT nu_status nu_curve_length(const nu_curve* curve, double* length);

/* nu_curve_distance: of a point from the curve.

   Given:     point   3 numbers
   Status:    NU_STATUS_OPERATION   8 the curve is empty */
NU_EXPORT nu_status nu_curve_distance(const nu_curve* curve, const double* point, double* distance);

/* nu_curve_offset: all curves at a distance from a plane curve, each with a handle of its own.

   Given:     distance   positive to the right of the curve, seen from the tip of the normal
              normal     3 numbers: of the plane of the curve
              is_round   0 sharp corners, 1 round ones
   Returned:  loops      handles, of which each is to be freed
              count
   Status:    NU_STATUS_OPERATION   the causes of CNuCompositeCurve::OffsetAll; NU_STATUS_CAPACITY */
NU_EXPORT nu_status nu_curve_offset(const nu_curve* curve, double distance, const double* normal, int32_t is_round,
                                    nu_curve** loops, int32_t capacity, int32_t* count);

/* nu_curve_polyline: the corners of a polyline within a tolerance of the curve.

   Given:     tol       above 0
   Returned:  xyz       3 numbers per corner; capacity and count are numbers of corners
   Status:    NU_STATUS_OPERATION   8 the curve is empty; 12 tol; NU_STATUS_CAPACITY */
NU_EXPORT nu_status nu_curve_polyline(const nu_curve* curve, double tol, double* xyz, int32_t capacity, int32_t* count);

#ifdef __cplusplus
}
#endif
/* NOLINTEND(modernize-deprecated-headers,modernize-use-using) */

#endif
