#ifndef NU_ENGINE_ASSOCIATION_EXPLAIN_H
#define NU_ENGINE_ASSOCIATION_EXPLAIN_H

#include <cstddef>

#include "nu/engine/association/covariance.h"

// Why a result is uncertain or a fit failed, as data from which sentences are made.
namespace nu::engine::association {

// The part of a feature that the points cover, in its frame. Angles in degrees.
struct Coverage {
  Vec3 low, high;         // the least and the greatest coordinates of the points in the frame
  double arc = 0.0;       // around z: the full turn less the widest gap, to 0.5; 0 for kinds that are not round about z
  double arcStart = 0.0;  // where the arc begins, from the frame's x towards y
  double tubeArc = 0.0;   // torus: around the section, in the same way
  double tubeStart = 0.0;  // from the outermost point towards z
  double cap = 0.0;        // sphere: half of the opening of a cap that holds all points, nearly the least
  Vec3 capAxis;            // sphere: its unit direction, in the coordinates of the points
};

Coverage CoverageOf(PointView points, const Feature& feature);

// The direction in the space of the unknowns that the points determine least.
struct WeakDirection {
  double share[kUnknowns] = {};  // a unit vector in lengths: angles times the extent; the largest is positive
  Unknown main = kShiftX;        // where the share is largest
  double uncertainty = 0.0;      // of the move along it, per unit of point uncertainty; infinite: undetermined
  int undetermined = 0;          // directions that the points do not determine at all
};

WeakDirection WeakestDirection(const Covariance& covariance);

// Where one more point helps most against the uncertainty along the weakest direction.
struct ProbingPlace {
  bool found = false;
  Vec3 place;                // on the feature, in the coordinates of the points
  double uncertainty = 0.0;  // along that direction with this point, which has the weight 1; per unit, as before
};

// On the feature within the coverage, and all around where the feature is round. The covariance is that of the feature.
ProbingPlace BestProbingPlace(const Feature& feature, const Covariance& covariance, const Coverage& coverage);

// What the points alone tell, for fits that failed.
struct PointsSummary {
  static constexpr std::size_t kMostDistinct = 9;  // no feature needs more

  std::size_t count = 0;
  bool finite = true;         // false: a point is not, and the rest has no meaning
  std::size_t nonFinite = 0;  // the first such point
  std::size_t distinct = 0;   // counted up to kMostDistinct
  double length = 0.0;        // their extent along the directions in which they extend most, less and least
  double width = 0.0;
  double thickness = 0.0;
  double fromLine = 0.0;  // the largest distance from their least-squares line
  // Read as an arc in their least-squares plane, its angle in degrees from chord and rise; for scattered points an
  // upper bound of what the noise can hide.
  double arc = 0.0;
};

// Points within `coincident` of each other in each coordinate are not distinct.
PointsSummary SummaryOf(PointView points, double coincident);

}  // namespace nu::engine::association

#endif
