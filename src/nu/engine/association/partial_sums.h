#ifndef NU_ENGINE_ASSOCIATION_PARTIAL_SUMS_H
#define NU_ENGINE_ASSOCIATION_PARTIAL_SUMS_H

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

#include "nu/engine/association/constrained_fit.h"
#include "nu/engine/association/feature.h"
#include "nu/engine/points/point_view.h"

// A cloud in parts, which may lie on several machines: each is reduced at a common feature to some kilobytes, whatever
// its number of points; the reductions are joined, the feature takes a step, and all is repeated. The mathematics is at
// the top of the source.
namespace nu::engine::association {

// Where the parts are reduced: the same for all of them.
struct PartRequest {
  Feature feature;         // with its origin among the points
  UnknownMask free = ~0U;  // the unknowns that may change
  double extent = 0.0;     // about the farthest point from the origin, in the first round a guess

  bool operator==(const PartRequest&) const = default;
};

// A point and its deviation.
struct PartExtreme {
  Vec3 point;
  double deviation = 0.0;
};

struct PartSums {
  static constexpr int kStrata = 32;  // octants around the axis, quarters along it

  PartRequest request;
  std::size_t points = 0;
  double sumSquares = 0.0;         // of the deviations, weighted
  double unweightedSquares = 0.0;  // the same without the weights
  double extent = 0.0;             // of the farthest point from the origin
  // Least squares: the triangle of the rows of derivatives, with the right-hand side in the last column, and the second
  // derivatives times the deviations, both by all unknowns and weighted. Those that are not free are 0.
  double triangle[kUnknowns + 1][kUnknowns + 1] = {};
  double curvature[kUnknowns][kUnknowns] = {};
  // Minimax: of each stratum the points of the largest and the smallest deviation, where it has a point.
  std::optional<PartExtreme> highest[kStrata];
  std::optional<PartExtreme> lowest[kStrata];
  // Of a cone, where points are behind the apex: the same with these counted from the other nappe.
  std::shared_ptr<const PartSums> bothNappes;
};

// Weights, one per point and not negative, may be null: all 1. In constant memory. Throws std::bad_alloc.
PartSums SumPart(PointView points, const double* weights, const PartRequest& request);

// The sums that count: from both nappes of a cone where that leaves so little of what one nappe leaves as the fit of a
// cone asks for.
const PartSums& Counted(const PartSums& joined);

// Of two parts at the same request. The order of several joins changes roundings, and nothing else.
PartSums Join(const PartSums& first, const PartSums& second);

// The least-squares step of the joined parts; the length of the step counts angles times the extent. Nothing where the
// points do not determine the unknowns, or are not finite.
struct PartStep {
  Feature feature;
  double length = 0.0;
};
std::optional<PartStep> StepOf(const PartSums& sums);

// The points that may hold a minimax feature, so far: the extremes of all rounds.
class PartCandidates {
 public:
  // The candidates and those extremes of the joined parts that are new.
  void Add(const PartSums& sums);
  // That of the parts that were added last.
  const PartRequest& Request() const { return m_request; }
  // The optimum of the candidates next to the feature. It is that of all parts when none of them has an extreme beyond
  // its boundary.
  FittedFeature Fit(FitCriterion criterion, const PartRequest& request) const;

 private:
  PartRequest m_request;
  std::vector<Vec3> m_points;
};

// For the way between machines: a version, the numbers with their least significant byte first, a check sum.
std::vector<unsigned char> BytesOf(const PartSums& sums);
// Nothing for bytes that are no sums, of another version or damaged.
std::optional<PartSums> SumsFrom(const unsigned char* bytes, std::size_t count);

}  // namespace nu::engine::association

#endif
