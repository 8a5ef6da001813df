#ifndef NU_ENGINE_ASSOCIATION_COVARIANCE_H
#define NU_ENGINE_ASSOCIATION_COVARIANCE_H

#include <cstddef>

#include "nu/engine/association/feature.h"
#include "nu/engine/points/point_view.h"

// How uncertain the unknowns of a least-squares fit are, and every length or angle that follows from them.
namespace nu::engine::association {

// The same feature with the origin of its frame beside the mean of the points, where that leaves the feature as it is:
// along a line, a cylinder or a cone, within a plane. There shifts and tilts are least correlated.
Feature CentredOn(PointView points, const Feature& feature);

// With J the derivatives of the residuals, each row times the root of the weight of its point, J D = Q R and
// R = U S V^T, the covariance of the unknowns is sigma^2 D V S^-2 V^T D. J^T J is never formed (A. Björck, Numerical
// Methods for Least Squares Problems, 1996, section 2.8). The diagonal D makes lengths of all unknowns: angles count by
// how far they move what lies at `extent` from the origin of the frame.
struct Covariance {
  int unknowns = 0;  // the free ones, in the order of Unknown
  Unknown unknown[kUnknowns] = {};
  double scale[kUnknowns] = {};              // D
  double factor[kUnknowns][kUnknowns] = {};  // R, upper triangle
  double singular[kUnknowns] = {};           // S, descending; what is rounding is 0
  double axis[kUnknowns][kUnknowns] = {};    // axis[k] is column k of V
  int undetermined = 0;                      // how many of S are 0: nothing holds the feature in these directions
  double condition = 1.0;                    // largest by smallest of S; infinite when a direction is undetermined
  double extent = 0.0;                       // largest distance of a point from the origin of the frame
  std::size_t residuals = 0;                 // of points whose weight is not 0
  std::ptrdiff_t degreesOfFreedom = 0;       // residuals less free unknowns
  double sumSquares = 0.0;                   // of the deviations, weighted
  // The standard deviation of a residual of weight 1; infinite without a degree of freedom.
  double sigma = 0.0;
  bool finite = true;  // false: a coordinate, a weight or the feature was not finite, and nothing else has a meaning
};

// At the optimum of the free unknowns. Weights, one per point and not negative, may be null: all 1. In constant memory.
// Throws std::bad_alloc.
Covariance CovarianceOf(PointView points, const double* weights, const Feature& feature, UnknownMask free);

// The derivatives of a scalar by the unknowns.
struct Gradient {
  double by[kUnknowns] = {};
};

// The standard uncertainty of a scalar per unit of the standard deviation of a point: for a standard deviation that is
// known from elsewhere. Infinite where the scalar depends on an undetermined direction. NaN when not finite.
double UncertaintyPerUnit(const Covariance& covariance, const Gradient& gradient);

// Times sigma. A scalar that no free unknown changes has the uncertainty 0.
double StandardUncertainty(const Covariance& covariance, const Gradient& gradient);

// The covariances of the free unknowns for this standard deviation of a point, matrix[i][j] of unknown[i] and
// unknown[j]. Variances of what is not determined are infinite, covariances with it are infinite or NaN.
void FillCovariance(const Covariance& covariance, double sigma, double (&matrix)[kUnknowns][kUnknowns]);

// Scalars in the frame of the feature; heights along z and positions count from its origin.
Gradient UnknownGradient(Unknown unknown, double factor = 1.0);               // size[0]: factor 2 gives the diameter
Gradient AxisPointGradient(double height, double towardsX, double towardsY);  // of a point of the axis, across it
// How far the feature moves, against the deviation, at a place on it or beside it (in the coordinates of the points):
// a plane at a lateral position, a line in a plane, any surface. At a contact it is what the deviation loses.
Gradient SurfaceGradient(const Feature& feature, const Vec3& place);

// The unknowns that move one feature to another of its kind nearby, exact to first order.
void FindChange(const Feature& from, const Feature& to, double (&change)[kUnknowns]);

}  // namespace nu::engine::association

#endif
