#ifndef NU_ENGINE_ASSOCIATION_CONTACT_ACCOUNT_H
#define NU_ENGINE_ASSOCIATION_CONTACT_ACCOUNT_H

#include <cstddef>

#include "nu/engine/association/feature.h"
#include "nu/engine/points/point_view.h"

namespace nu::engine::association {

enum class ContactCriterion {
  zone,           // the least largest deviation, of either sign where the deviation has one
  oneSidedZone,   // the least largest deviation of one sign, with none of the other
  circumscribed,  // circle, sphere, cylinder: the smallest radius with no point outside; torus: the minor one
  inscribed,      // the largest with no point inside
};

struct ContactPoint {
  std::size_t index = 0;
  double side = 1.0;  // 1 on the outer boundary, -1 on the inner one
  double multiplier = 0.0;
};

// The points that hold a minimax feature, from the points and the feature alone: those with an extreme deviation, and
// multipliers, not negative and of sum 1, for which the gradients by the free unknowns, times the sides, balance. At an
// optimum they do (Karush, Kuhn and Tucker). Where points that are extreme within few roundings balance, points farther
// from the boundary get no multiplier.
struct ContactAccount {
  static constexpr int kMostContacts = 32;

  int holding = 0;  // contacts with a multiplier; they come first, at most one more than there are unknowns
  int count = 0;    // with further points that touch the boundary, of identical ones the first; both in their order
  ContactPoint contact[kMostContacts];
  std::size_t touching = 0;  // all points that touch a boundary
  double tolerance = 0.0;    // deviations up to so much within an extreme touch
  // The length of the weighted sum of gradients, in which angles count by what they move at the farthest point: 0 in
  // exact arithmetic. A move of the feature by a small length gains no more than this part of it.
  double balance = 0.0;
  bool finite = true;  // false: a coordinate or the feature was not, and nothing else has a meaning
};

// A tolerance of 0 stands for the rounding of the coordinates and of the feature. The result does not depend on the
// order of the points, but for the indices. Throws std::bad_alloc.
ContactAccount FindContacts(PointView points, const Feature& feature, ContactCriterion criterion, UnknownMask free,
                            double tolerance = 0.0);

// Those that hold a least-squares feature from which no deviation is negative, or with positive = false none is
// positive: their gradients balance that of the sum of squares. The multipliers are scaled to the sum 1. Weights, one
// per point, may be null: all 1.
ContactAccount FindContactsOfSquares(PointView points, const double* weights, const Feature& feature, bool positive,
                                     UnknownMask free);

}  // namespace nu::engine::association

#endif
