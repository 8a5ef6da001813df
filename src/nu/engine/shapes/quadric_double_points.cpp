#include "nu/engine/shapes/quadric_double_points.h"

#include "nu/engine/base/elementary.h"

namespace nu::engine::shapes {

namespace {

// The equation f(u, t) = a t^2 + 2 b t + c of all crossings, or of a single sheet, 2 b t + c.
struct PlaneEquation {
  PlaneEquation(const QuadricPair& pair, const QuadricPath& path) : waves{pair.a, pair.h, pair.c} {
    if (path.sheets == QuadricPath::Sheets::kBoth) return;
    const bool throughApex = path.sheets == QuadricPath::Sheets::kThroughApex;
    waves[0] = {};
    waves[1] = throughApex ? 0.5 * pair.a : pair.h;
    waves[2] = throughApex ? 2.0 * pair.h : pair.c;
  }
  static double Of(const Wave2* waves, QuadricPlace at) {
    return (waves[0].At(at.u) * at.t + 2.0 * waves[1].At(at.u)) * at.t + waves[2].At(at.u);
  }

  Wave2 waves[3];
};

}  // namespace

// Newton's method for a place where f is stationary in u and t.
std::optional<QuadricPlace> DoublePointNextTo(const QuadricTask& task, QuadricPlace place) {
  constexpr int kSteps = 10;
  constexpr double kNear = 0.01;
  constexpr double kShares = 4.0;  // of both surfaces, as they move
  if (task.path.hasCommonLine) return std::nullopt;
  const PlaneEquation f(task.pair, task.path);
  const Wave2* w = f.waves;
  const Wave2 slopes[] = {w[0].Derivative(), w[1].Derivative(), w[2].Derivative()};
  const Wave2 bends[] = {slopes[0].Derivative(), slopes[1].Derivative(), slopes[2].Derivative()};
  QuadricPlace at = place;
  double determinant = 0.0;
  for (int step = 0; step < kSteps; ++step) {
    const double a = w[0].At(at.u);
    const double byT = a * at.t + w[1].At(at.u);
    const double byU = 0.5 * PlaneEquation::Of(slopes, at);
    const double mixed = slopes[0].At(at.u) * at.t + slopes[1].At(at.u);
    const double byUU = 0.5 * PlaneEquation::Of(bends, at);
    determinant = mixed * mixed - a * byUU;
    at.u -= (mixed * byT - a * byU) / determinant;
    at.t -= (mixed * byU - byUU * byT) / determinant;
  }
  const double size = Hypot(1.0, place.t);
  if (!(determinant > 0.0) || !(Hypot(at.u - place.u, (at.t - place.t) / size) <= kNear)) return std::nullopt;
  const Vec3 p = task.pair.On(at.u, at.t);
  const double distance = std::fabs(task.pair.other.OffsetOf(p).distance);
  if (!(distance <= kShares * CoincidenceTol(task.tol, LargestComponent(p)))) return std::nullopt;
  return at;
}

QuadricPair TouchingAt(const std::vector<QuadricPlace>& nodes, const QuadricTask& task) {
  QuadricPair pair = task.pair;
  if (nodes.empty()) return pair;
  const PlaneEquation f(task.pair, task.path);
  double sum = 0.0;
  for (const QuadricPlace& node : nodes) sum += PlaneEquation::Of(f.waves, node);
  const double shift = sum / static_cast<double>(nodes.size());
  if (task.path.sheets == QuadricPath::Sheets::kThroughApex) {
    pair.h.value -= 0.5 * shift;
  } else {
    pair.c.value -= shift;
  }
  return pair;
}

}  // namespace nu::engine::shapes
