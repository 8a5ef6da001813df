#include "nu/engine/association/global_bound.h"

#include <cmath>

#include "nu/engine/association/axis_bound.h"
#include "nu/engine/association/cell_search.h"
#include "nu/engine/association/direct_bound.h"
#include "nu/engine/association/wedge_bound.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/minimax/cone_minimax.h"
#include "nu/engine/minimax/cylinder_minimax.h"
#include "nu/engine/minimax/slab3.h"
#include "nu/engine/minimax/spherical_shell.h"
#include "nu/engine/minimax/tube_distance.h"
#include "nu/engine/points/mean.h"

namespace nu::engine::association {
namespace {

// Of a local search from a place where a box says that there is a better feature; what creeps on may be found again.
constexpr long kMostSteps = 120;

// Axes, centres and circles farther away or larger, in units of the reach of the points, count with the bound for the
// nearest of them.
constexpr double kNearest = 1.25;
constexpr double kFarthestAxis = 0x1p16;  // from there a distance is right to some 1e-11 of the reach
constexpr double kFarthestCircle = 16.0;
constexpr double kFarthestDoubleCone = 16.0;

// A wedge that leaves so much more, in units of the reach, is far enough from being a zone.
constexpr double kWedge = 1.0;

// Where rounding might decide whether a gap is closed, a part of it is aimed at.
constexpr double kSearchedGap = 0.5;

// This part of the boxes for a circle may serve for the line that large ones tend to.
constexpr long kPartForLine = 4;

// Nothing is known but that no criterion is negative.
GlobalBound Unproven(const Feature& known) {
  GlobalBound result;
  result.feature = known;
  result.best = kInfinity;
  return result;
}

Vec3 InFrame(const AxisFrame& frame, const Vec3& v) {
  return {Dot(v, frame.x), Dot(v, frame.y), Dot(v, frame.z)};
}
Vec3 FromFrame(const AxisFrame& frame, const Vec3& v) {
  return v.x * frame.x + v.y * frame.y + v.z * frame.z;
}

// The points in the unit of their blocks, in a frame along the axis of the feature known, from the middle of their
// extents along it.
class ScaledProblem {
 public:
  ScaledProblem(const PointView& points, const Vec3& origin)
      : m_view(points), m_blocks(points, origin), m_mean(MeanOf(points) - origin) {
    m_blocks.Keep();
  }

  bool Place(const Feature& known) {
    if (!m_blocks.FitScale() || !IsFinite(known.frame.origin)) return false;
    m_frame = FrameOf(known);
    double low[3], high[3];
    std::fill_n(low, 3, kInfinity);
    std::fill_n(high, 3, -kInfinity);
    m_blocks.ForEachPoint([&](const Vec3& point) {
      const Vec3 p = m_frame.Local(point);
      const double along[] = {p.x, p.y, p.z};
      for (int k = 0; k < 3; ++k) low[k] = std::min(low[k], along[k]), high[k] = std::max(high[k], along[k]);
    });
    m_frame.origin = FromFrame(m_frame, {0.5 * (low[0] + high[0]), 0.5 * (low[1] + high[1]), 0.5 * (low[2] + high[2])});
    m_reach = 0.5 * Norm({high[0] - low[0], high[1] - low[1], high[2] - low[2]});
    return true;
  }

  PointBlocks& Blocks() { return m_blocks; }
  const AxisFrame& Frame() const { return m_frame; }
  const Vec3& Mean() const { return m_mean; }
  double Scale() const { return m_blocks.Scale(); }
  // Of the points from the middle, in the unit of the blocks.
  double Reach() const { return m_reach; }
  double SlabWidth() const { return Scale() * NarrowestSlab(m_view, m_blocks.Origin()).width; }

  Feature ToWorking(const Feature& feature) const {
    Feature f = Scaled(feature, Scale());
    f.frame = {m_frame.Local(f.frame.origin), InFrame(m_frame, f.frame.x), InFrame(m_frame, f.frame.y),
               InFrame(m_frame, f.frame.z)};
    return f;
  }
  Feature FromWorking(Feature f) const {
    f.frame = {m_frame.origin + FromFrame(m_frame, f.frame.origin), FromFrame(m_frame, f.frame.x),
               FromFrame(m_frame, f.frame.y), FromFrame(m_frame, f.frame.z)};
    return Scaled(f, 1.0 / Scale());
  }

 private:
  // The unknowns of a sector of a circle depend least on each other where x is towards its middle.
  AxisFrame FrameOf(const Feature& known) const {
    const Vec3 out = Rejection(m_mean - known.frame.origin, known.frame.z);
    const bool isCircle = known.kind == FeatureKind::circleInSpace || known.kind == FeatureKind::torus;
    if (!isCircle || !(Norm(out) > 0.0)) return {{}, known.frame.x, known.frame.y, known.frame.z};
    return AxisFrame::Along({}, known.frame.z, Unit(out));
  }

  PointView m_view;
  PointBlocks m_blocks;
  Vec3 m_mean;
  AxisFrame m_frame;
  double m_reach = 0.0;
};

// Local searches, in the callers' unit.
bool RefineSphere(ScaledProblem& scaled, const Feature& start, double, Feature& found) {
  const SphericalShell shell =
      ThinnestShell(scaled.Blocks(), scaled.Mean(), start.frame.origin, start.size[0], kMostSteps);
  found = start;
  found.frame.origin = shell.centre;
  return shell.end == MinimaxEnd::converged;
}

bool RefineCylinder(ScaledProblem& scaled, const Feature& start, double, Feature& found) {
  const Cylinder3 cylinder{{start.frame.origin, start.frame.z}, start.size[0]};
  const CylinderMinimax zone = NarrowestCylinderZone(scaled.Blocks(), scaled.Mean(), cylinder, kMostSteps);
  found = start;
  found.frame = AxisFrame::Along(zone.cylinder.axis.point, zone.cylinder.axis.direction);
  return zone.end == MinimaxEnd::converged;
}

// Of a cone with both nappes the frame is at the apex.
bool RefineCone(ScaledProblem& scaled, const Feature& start, double form, Feature& found) {
  const double toApex = start.bothNappes ? 0.0 : -start.size[0] / Tan(start.size[1]);
  const Cone3 cone{{start.frame.origin, start.frame.z}, toApex, start.size[1], start.bothNappes};
  const ConeZone zone = NarrowestConeZone(scaled.Blocks(), scaled.Mean(), cone, form, kMostSteps);
  const Line3& axis = zone.cone.axis;
  found = start;
  found.frame = AxisFrame::Along(axis.point, axis.direction);
  if (start.bothNappes) found.frame.origin = axis.point + zone.cone.toApex * axis.direction;
  found.size[1] = zone.cone.semiAngle;
  return zone.end == MinimaxEnd::converged && (zone.cone.bothNappes || !start.bothNappes);
}

bool RefineCircle(ScaledProblem& scaled, const Feature& start, double, Feature& found) {
  const double scale = scaled.Scale();
  const Vec3 centre = scale * start.frame.origin;
  const Vec3 out = Unit(Rejection(scale * scaled.Mean() - centre, start.frame.z));
  const double radius = scale * start.size[0];
  const TubeDistance tube{AxisFrame::Along(centre + radius * out, start.frame.z, out), 1.0 / radius, scaled.Reach()};
  Minimax<TubeDistance> minimax(scaled.Blocks(), MinimaxSide::outer, kEpsilon * scaled.Reach(), kMostSteps);
  const MinimaxSolution<TubeDistance> solution = minimax.Solve(tube);
  const TubeDistance& circle = solution.model;
  found = start;
  found.size[0] = circle.Radius() / scale;
  found.frame = circle.frame;
  found.frame.origin = (1.0 / scale) * (circle.frame.origin - circle.Radius() * circle.frame.x);
  return solution.end == MinimaxEnd::converged && circle.IsRound();
}

// What a zone cannot be below if its axis, apex or centre is at a distance D from the middle of points that reach B
// from there. Seen from so far, a circle about the axis differs by D - sqrt(D^2 - B^2) at most from its tangent, within
// the reach; a zone between two parallel surfaces is then inside a slab that is wider by as much.
double Sagitta(double distance, double reach) {
  return reach * reach / (distance + std::sqrt((distance - reach) * (distance + reach)));
}

// The distance from which on the sagitta is smaller; or the farthest one.
double FarDistance(double sagitta, double reach, double farthest) {
  const double distance = 0.5 * (reach * reach / sagitta + sagitta);
  if (!(sagitta > 0.0 && distance < farthest * reach)) return farthest * reach;
  return std::max(distance, kNearest * reach);
}

// In the unit of the search, where zones are halves.
struct SearchEnd {
  Feature feature;
  double size = 0.0;
  double bound = 0.0;
  bool improved = false;
  long boxes = 0;
  bool cancelled = false;
};

GlobalBound Described(const ScaledProblem& scaled, const SearchEnd& end, double gap, double unit) {
  GlobalBound result;
  result.feature = scaled.FromWorking(end.feature);
  result.best = unit / scaled.Scale() * end.size;
  result.bound = unit / scaled.Scale() * end.bound;
  result.improved = end.improved;
  result.proven = end.size - end.bound <= gap;
  result.boxes = end.boxes;
  result.cancelled = end.cancelled;
  return result;
}

// The size of a feature, as a search counts it; not finite where a deviation is not.
template<class Model>
double SizeOf(BoundedPoints& points, const Feature& feature) {
  double x[Model::kPlace];
  const int chart = Model::ChartOf(feature);
  Model::Place(chart, feature, x);
  return points.Span(typename Model::template Deviations<double>(chart, x, points.Reach()), {}).template Size<Model>();
}

template<class Model, class Refine>
SearchEnd Search(ScaledProblem& scaled, const CellProblem& problem, const Feature& start, Refine refine) {
  const auto refined = [&](const Feature& from, double size, Feature& to) {
    Feature found;
    if (!refine(scaled, scaled.FromWorking(from), 2.0 * size / scaled.Scale(), found)) return false;
    to = scaled.ToWorking(found);
    return true;
  };
  CellSearch<Model> search(problem, refined);
  const double size = SizeOf<Model>(problem.points, start);
  search.Run(start);
  return {search.Best(),  search.Size(),       search.Bound(), search.Size() < size - problem.gap,
          search.Boxes(), search.IsCancelled()};
}

template<class Model, class Refine>
GlobalBound BoundZone(ScaledProblem& scaled, const Feature& known, const BoundLimits& limits, Refine refine) {
  if (!scaled.Place(known)) return Unproven(known);
  BoundedPoints points(scaled.Blocks(), scaled.Frame());
  const Feature start = scaled.ToWorking(known);
  const double size = SizeOf<Model>(points, start);
  if (!std::isfinite(size)) return Unproven(known);
  const double gap = 0.5 * limits.gap * points.Reach();
  const double slab = scaled.SlabWidth();
  const double far = FarDistance(slab - 2.0 * (size - kSearchedGap * gap), points.Reach(), kFarthestAxis);
  const double floor = 0.5 * (slab - Sagitta(far, points.Reach()));
  const ProofMonitor monitor(limits.monitor, 2.0 / scaled.Scale());
  const CellProblem problem{points, far, floor, gap, limits.boxes, 0, monitor};
  const SearchEnd end = Search<Model>(scaled, problem, start, refine);
  return Described(scaled, end, gap, 2.0);
}

// What no cone of one nappe has a smaller size than, or the size known.
SearchEnd SearchNappes(const ScaledProblem& scaled, BoundedPoints& points, const Feature& known, double size,
                       const BoundLimits& limits, double gap) {
  const double slab = scaled.SlabWidth();
  const double far = FarDistance(slab - 2.0 * (size - kSearchedGap * gap), points.Reach(), kFarthestAxis);
  const double floor = 0.5 * (slab - Sagitta(far, points.Reach()));
  const auto none = [](const Feature&, double, Feature&) { return false; };
  const ProofMonitor monitor(limits.monitor, 2.0 / scaled.Scale(), 0.0);
  CellSearch<BoundedCone> search({points, far, floor, gap, limits.boxes / 2, 0, monitor}, none);
  search.RunBelow(size);
  const double bound = search.IsCancelled() ? 0.0 : search.Bound();
  return {known, size, bound, false, search.Boxes(), search.IsCancelled()};
}

// With the points on one side of the apex it is a cone of one nappe. Else, seen from an axis far away, it is a wedge.
GlobalBound BoundDoubleCone(ScaledProblem& scaled, const Feature& known, const BoundLimits& limits) {
  if (!scaled.Place(known)) return Unproven(known);
  BoundedPoints points(scaled.Blocks(), scaled.Frame());
  Feature start = scaled.ToWorking(known);
  start.frame.origin = start.frame.origin - (start.size[0] / Tan(start.size[1])) * start.frame.z;
  start.size[0] = 0.0;
  const double size = SizeOf<BoundedDoubleCone>(points, start);
  if (!std::isfinite(size)) return Unproven(known);
  const double gap = 0.5 * limits.gap * points.Reach();
  const SearchEnd nappes = SearchNappes(scaled, points, start, size, limits, gap);
  if (nappes.cancelled) return Described(scaled, nappes, gap, 2.0);

  const double wedge = BoundWedges(points, 2.0 * size + kWedge * points.Reach());
  const double far = FarDistance(wedge - 2.0 * (size - kSearchedGap * gap), points.Reach(), kFarthestDoubleCone);
  const double floor = std::min(nappes.bound, 0.5 * (wedge - Sagitta(far, points.Reach())));
  const ProofMonitor monitor(limits.monitor, 2.0 / scaled.Scale());
  const CellProblem problem{points, far, floor, gap, limits.boxes, nappes.boxes, monitor};
  return Described(scaled, Search<BoundedDoubleCone>(scaled, problem, start, RefineCone), gap, 2.0);
}

// A circle so large that the points see no more of it than an arc: it is nearly straight, and the largest distance from
// it is hardly smaller than that from a line.
GlobalBound BoundCircle(ScaledProblem& scaled, const Feature& known, const BoundLimits& limits, double unit) {
  if (!scaled.Place(known)) return Unproven(known);
  BoundedPoints points(scaled.Blocks(), scaled.Frame());
  const Feature start = scaled.ToWorking(known);
  const double size = SizeOf<BoundedCircle>(points, start);
  if (!std::isfinite(size)) return Unproven(known);
  const double gap = limits.gap * points.Reach();
  const AxisFrame along{scaled.Frame().origin, scaled.Frame().z, scaled.Frame().x, scaled.Frame().y};
  ProofMonitor monitor(limits.monitor, unit / scaled.Scale());
  const auto goesOn = [&](long boxes, double, double) { return monitor.GoesOn(boxes, size, 0.0); };
  const AxisBound line = BoundAxes(scaled.Blocks(), along, points.Reach(), gap, limits.boxes / kPartForLine, goesOn);
  const double reach = points.Reach() + size;
  const double radius = FarDistance(line.bound - (size - kSearchedGap * gap), reach, kFarthestCircle);
  const double floor = line.bound - Sagitta(radius, reach);
  const CellProblem problem{points, radius + reach, floor, gap, limits.boxes, line.boxes, monitor};
  SearchEnd end = Search<BoundedCircle>(scaled, problem, start, RefineCircle);
  end.feature.kind = known.kind;
  return Described(scaled, end, gap, unit);
}

GlobalBound BoundAxis(ScaledProblem& scaled, const Feature& known, const BoundLimits& limits, double unit) {
  if (!scaled.Place(known)) return Unproven(known);
  BoundedPoints points(scaled.Blocks(), scaled.Frame());
  Feature best = scaled.ToWorking(known);
  const double size = SizeOf<BoundedLine>(points, best);
  if (!std::isfinite(size)) return Unproven(known);
  const double gap = limits.gap * points.Reach();
  // Seen from the middle of the points along the axis.
  AxisFrame start = known.frame;
  start.origin = scaled.Scale() * known.frame.origin;
  start.origin = start.origin + Dot(scaled.Frame().origin - start.origin, start.z) * start.z;
  ProofMonitor monitor(limits.monitor, unit / scaled.Scale());
  const auto goesOn = [&](long boxes, double radius, double bound) { return monitor.GoesOn(boxes, radius, bound); };
  const AxisBound found = BoundAxes(scaled.Blocks(), start, points.Reach(), kSearchedGap * gap, limits.boxes, goesOn);
  const bool improved = found.radius < size - gap;
  if (improved) best = scaled.ToWorking(Scaled({known.kind, found.frame, {}}, 1.0 / scaled.Scale()));
  best.size[0] = known.kind == FeatureKind::cylinder ? found.radius : 0.0;
  const double bound = std::min(found.bound, found.radius);
  return Described(scaled, {best, found.radius, bound, improved, found.boxes, monitor.IsCancelled()}, gap, unit);
}

}  // namespace

GlobalBound BoundGlobally(const PointView& points, const Vec3& origin, const Feature& known, BoundedCriterion criterion,
                          const BoundLimits& limits) {
  ScaledProblem scaled(points, origin);
  const bool isZone = criterion == BoundedCriterion::zone;
  switch (known.kind) {
    case FeatureKind::line:
      return isZone ? BoundAxis(scaled, known, limits, 2.0) : Unproven(known);
    case FeatureKind::sphere:
      return isZone ? BoundZone<BoundedSphere>(scaled, known, limits, RefineSphere)
                    : BoundDirectly(points, origin, known, criterion, limits.gap);
    case FeatureKind::cylinder:
      return isZone ? BoundZone<BoundedCylinder>(scaled, known, limits, RefineCylinder)
                    : BoundAxis(scaled, known, limits, 1.0);
    case FeatureKind::cone:
      if (!isZone) return Unproven(known);
      return known.bothNappes ? BoundDoubleCone(scaled, known, limits)
                              : BoundZone<BoundedCone>(scaled, known, limits, RefineCone);
    case FeatureKind::circleInSpace:
      return isZone ? BoundCircle(scaled, known, limits, 2.0) : Unproven(known);
    case FeatureKind::torus:
      return isZone ? Unproven(known) : BoundCircle(scaled, known, limits, 1.0);
    default:
      return BoundDirectly(points, origin, known, criterion, limits.gap);
  }
}

}  // namespace nu::engine::association
