#ifndef NU_ENGINE_SHAPES_QUADRIC_BRANCHES_H
#define NU_ENGINE_SHAPES_QUADRIC_BRANCHES_H

#include <optional>
#include <vector>

#include "nu/engine/shapes/quadric_intersection_curve.h"

namespace nu::engine::shapes {

// What two quadrics of a size about 1 have in common.
struct QuadricBranches {
  std::vector<QuadricIntersectionCurve> curves;  // one per connected branch
  std::vector<Vec3> points;                      // where they touch from outside each other
};

// `stationary` are the angles at which the discriminant h^2 - a c is stationary; it has no sign change between
// neighbours but one. `asymptotes` are those with a = 0 (all along: none). A generator that comes within the tolerance
// of touching does touch. None of the functions returns anything where a branch cannot be followed.
std::optional<QuadricBranches> BranchesOf(const QuadricPair& pair, std::vector<double> stationary,
                                          const std::vector<double>& asymptotes, double tol, double reach);
// With the apex of the base on the other quadric.
std::optional<QuadricBranches> BranchesThroughApex(const QuadricPair& pair, const std::vector<double>& asymptotes,
                                                   double tol, double reach);
// The same for a base that has the generator at u = 0, with a = h = 0, in common with the other quadric; the line
// itself is left out.
std::optional<QuadricBranches> BranchesBesideLine(const QuadricPair& pair, const std::vector<double>& asymptotes,
                                                  double tol, double reach);
// With the generators of the base parallel to one of the other quadric, so that a is taken as 0; `asymptotes` are the
// angles with h = 0.
std::optional<QuadricBranches> BranchesThroughInfinity(const QuadricPair& pair, const std::vector<double>& asymptotes,
                                                       double tol, double reach);

}  // namespace nu::engine::shapes

#endif
