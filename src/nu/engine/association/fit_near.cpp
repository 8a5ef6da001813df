#include <algorithm>
#include <vector>

#include "nu/engine/association/constrained_fit.h"
#include "nu/engine/association/covariance.h"
#include "nu/engine/association/torus_least_squares.h"
#include "nu/engine/base/elementary.h"
#include "nu/engine/minimax/annulus2.h"
#include "nu/engine/minimax/empty_circle2.h"
#include "nu/engine/points/mean.h"
#include "nu/engine/points/point_sample.h"
#include "nu/engine/points/principal_direction.h"
#include "nu/foundation/constants.h"

namespace nu::engine::association {
namespace {

constexpr long kAnnulusLimit = 1000;

// With all points on one side, starts stand apart along the two directions in which the points determine the feature
// least, by these parts of their spread; but not farther than this part of their extent.
constexpr double kSpreads[][2] = {{1.0, 0.0},  {-1.0, 0.0},  {3.0, 0.0},  {-3.0, 0.0}, {0.0, 1.0},
                                  {0.0, -1.0}, {0.0, 3.0},   {0.0, -3.0}, {1.0, 1.0},  {1.0, -1.0},
                                  {-1.0, 1.0}, {-1.0, -1.0}, {10.0, 0.0}, {-10.0, 0.0}};
constexpr double kFarthest = 0.25;
// Less of a spread than this part of the extent leaves no room for another optimum.
constexpr double kSpreadOut = 0x1p-8;
// Points thicker than this part of their extent have more than one side to which a line or a plane can be put.
constexpr double kThick = 0.05;
constexpr int kTurnedStarts = 12;

// A centre nearer to the mean of the points than this part of their distance has them all around.
constexpr double kAllAround = 0.1;

class Candidates {
 public:
  Candidates(const FitProblem& problem, const Feature& start)
      : m_problem(problem), m_start(start), m_mean(MeanOf(problem.points)) {}

  // The start is the first.
  const std::vector<Feature>& Find() {
    m_found.push_back(m_start);
    if (m_start.kind == FeatureKind::torus && m_problem.criterion == FitCriterion::leastSquares) AddFreeTorus();
    if (m_problem.side != PointSide::either) AddApart();
    const bool moves = !(m_problem.fixed & kShiftsAcross) && IsRound(m_start.kind);
    if (!moves) return m_found;
    if (Contains(m_problem.fixed, kSize0)) {
      AddSidesOfSurface();
      AddSidesOfPatch();
      return m_found;
    }
    const bool isFlat = m_start.kind == FeatureKind::circle ||
                        (m_start.kind == FeatureKind::cylinder && (m_problem.fixed & kTilts) == kTilts);
    const bool isGlobal = m_problem.criterion == FitCriterion::inscribed ||
                          (m_problem.criterion == FitCriterion::zone && m_problem.side == PointSide::either);
    if (isFlat && isGlobal) AddSeenAlong();
    return m_found;
  }

 private:
  // The same surface near the points, with its centre on the other side, or at the radius from it.
  void AddSidesOfSurface() {
    const AxisFrame& f = m_start.frame;
    Vec3 toMean = m_mean - f.origin;
    if (m_start.kind != FeatureKind::sphere) toMean = Rejection(toMean, f.z);
    double sum = 0.0;
    for (std::size_t i = 0; i < m_problem.points.Size(); ++i)
      sum += DeviationOf(m_start, LoadVec3(m_problem.points[i])) + m_start.size[0];
    const double distance = sum / static_cast<double>(m_problem.points.Size());
    const double length = std::sqrt(Dot(toMean, toMean));
    if (!(length > kAllAround * distance)) return;
    const Vec3 outwards = (1.0 / length) * toMean;
    AddWithCentre(f.origin + (distance - m_start.size[0]) * outwards);
    AddWithCentre(f.origin + (distance + m_start.size[0]) * outwards);
  }

  // On both sides of the plane of the points; the axis of a cylinder that is free to tilt in four directions.
  void AddSidesOfPatch() {
    PointBlocks points(m_problem.points, m_mean);
    const PrincipalDirection flat = FindPrincipalDirection(points, Extent::smallest);
    const PrincipalDirection longest = FindPrincipalDirection(points, Extent::largest);
    if (!flat.finite || !longest.finite) return;
    const bool turns = m_start.kind == FeatureKind::cylinder && !(m_problem.fixed & kTilts);
    Vec3 normal = flat.direction;
    if (!turns && m_start.kind != FeatureKind::sphere) normal = Cross(m_start.frame.z, longest.direction);
    const double length = std::sqrt(Dot(normal, normal));
    if (!(length > 0.0)) return;
    for (const double side : {1.0, -1.0}) {
      const Vec3 centre = m_mean + (side * m_start.size[0] / length) * normal;
      AddWithCentre(centre);
      if (!turns || m_found.empty()) continue;
      const AxisFrame patch = AxisFrame::Along(centre, (1.0 / length) * normal, longest.direction);
      for (const Vec3& axis : {patch.x, patch.y, Unit(patch.x + patch.y), Unit(patch.x - patch.y)}) {
        m_found.back().frame = AxisFrame::Along(centre, axis);
        m_found.push_back(m_found.back());
      }
      m_found.pop_back();
    }
  }

  void AddSeenAlong() {
    const AxisFrame& f = m_start.frame;
    PointBlocks points(m_problem.points, m_mean);
    if (!points.FitScale()) return;
    const Vec3 axes[2] = {f.x, f.y};
    if (m_problem.criterion == FitCriterion::inscribed) {
      const EmptyCircle circle = LargestEmptyCircle(points, axes);
      if (circle.found) AddWithCentre(points.InCallersFrame(circle.centre.x * f.x + circle.centre.y * f.y));
    } else {
      const Vec3 guess = points.Scale() * (f.origin - m_mean);
      const Annulus ring = NarrowestAnnulus(points, axes, {Dot(guess, f.x), Dot(guess, f.y)}, kAnnulusLimit);
      if (ring.end == AnnulusEnd::found)
        AddWithCentre(points.InCallersFrame(ring.centre.x * f.x + ring.centre.y * f.y));
    }
  }

  void AddApart() {
    const Covariance weak = CovarianceOf(m_problem.points, m_problem.weights, m_start, ~m_problem.fixed);
    if (!weak.finite || weak.unknowns == 0 || weak.residuals == 0) return;
    const double spread = std::sqrt(weak.sumSquares / static_cast<double>(weak.residuals));
    const bool isStraight = m_start.kind == FeatureKind::lineInPlane || m_start.kind == FeatureKind::plane;
    if (isStraight) return AddTurned(spread, weak.extent);
    const double most = kFarthest * weak.extent;
    for (const double(&parts)[2] : kSpreads) {
      double step[kUnknowns] = {};
      double farthest = 0.0;
      for (int k = 0; k < 2 && k < weak.unknowns; ++k) {
        const int at = weak.unknowns - 1 - k;
        const double length = weak.singular[at] > 0.0 ? parts[k] * spread / weak.singular[at] : parts[k] * most;
        const double move = std::clamp(length, -most, most);
        farthest = std::max(farthest, std::fabs(move));
        for (int j = 0; j < weak.unknowns; ++j) step[weak.unknown[j]] += move * weak.axis[at][j] * weak.scale[j];
      }
      if (farthest > kSpreadOut * weak.extent) m_found.push_back(Moved(m_start, step));
    }
  }

  // To the same side, over half of a turn; of a plane, about axes in it all around.
  void AddTurned(double spread, double extent) {
    const bool isLine = m_start.kind == FeatureKind::lineInPlane;
    if (!(spread > kThick * extent) || (m_problem.fixed & (isLine ? Bits({kTurn}) : kTilts)) != 0) return;
    for (int k = 0; k < kTurnedStarts; ++k) {
      const double part = (k + 0.5) / kTurnedStarts;
      double step[kUnknowns] = {};
      if (isLine) {
        step[kTurn] = Nu_PI * (part - 0.5);
      } else {
        // The slope 1 halves the hemisphere of normals.
        const SineCosine about = SinCos(2.0 * Nu_PI * part);
        step[kTiltX] = about.cosine;
        step[kTiltY] = about.sine;
      }
      m_found.push_back(Moved(m_start, step));
    }
  }

  void AddWithCentre(const Vec3& centre) {
    Feature feature = m_start;
    feature.frame.origin = centre;
    if (IsFinite(centre)) m_found.push_back(feature);
  }

  // A torus has many optima, and only the search without a start sees all around.
  void AddFreeTorus() {
    FitProblem unwatched = m_problem;
    unwatched.monitor = {};
    const FittedFeature free = LeastSquaresTorus(unwatched);
    if (free.end == FitEnd::converged) m_found.push_back(HeldAs(m_start, m_problem.fixed, free.feature));
  }

  const FitProblem& m_problem;
  const Feature& m_start;
  Vec3 m_mean;
  std::vector<Feature> m_found;
};

bool IsBetter(const FittedFeature& a, const FittedFeature& b, FitCriterion criterion) {
  if (a.end != FitEnd::converged) return false;
  if (b.end != FitEnd::converged) return true;
  return criterion == FitCriterion::inscribed ? a.objective > b.objective : a.objective < b.objective;
}

FittedFeature BestOf(const FitProblem& problem, const std::vector<Feature>& starts) {
  FittedFeature best;
  bool isFirst = true;
  for (const Feature& start : starts) {
    const FittedFeature found = FitFrom(problem, start);
    if (found.end == FitEnd::cancelled) return found;
    if (isFirst || IsBetter(found, best, problem.criterion)) best = found;
    isFirst = false;
  }
  return best;
}

}  // namespace

// Of many points a sample decides which start is the best.
FittedFeature FitNear(const FitProblem& problem, const Feature& start) {
  if (problem.points.Size() == 0) return FitFrom(problem, start);
  const bool isFree = !(problem.fixed & UnknownsOf(start.kind)) && problem.side == PointSide::either;
  if (start.kind == FeatureKind::torus && problem.criterion == FitCriterion::leastSquares && isFree) {
    const FittedFeature near = FitFrom(problem, start);
    const FittedFeature found = LeastSquaresTorus(problem);
    const bool isRing = near.feature.size[0] > near.feature.size[1];
    const bool isNear = near.end == FitEnd::cancelled || (isRing && IsBetter(near, found, problem.criterion));
    return isNear ? near : found;
  }
  const std::vector<Feature> starts = Candidates(problem, start).Find();
  if (starts.size() == 1) return FitFrom(problem, start);
  if (problem.points.Size() <= PointSample::kMostPoints) return BestOf(problem, starts);
  const PointSample sample(problem.points);
  FitProblem few = problem;
  few.points = sample.View();
  few.weights = nullptr;
  const FittedFeature best = BestOf(few, starts);
  if (best.end == FitEnd::cancelled) return best;
  return BestOf(
      problem, best.end == FitEnd::converged ? std::vector<Feature>{best.feature, start} : std::vector<Feature>{start});
}

}  // namespace nu::engine::association
