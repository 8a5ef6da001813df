// Follows g(u, w) = 0 in the (u, w) plane, by steps that are proven. On a box around a point of the curve, l wide in
// the angle of the step and m in the other one, the first derivatives of g are within bounds that Taylor's formula
// gives, with the second derivatives at the point and bounds of the third ones on the box. If the derivative across the
// step keeps its sign there, and the slope of the curve times l is at most m, then the curve runs through the box from
// end to end, and nothing else of it is inside: no strand is missed, taken for another one, or left. A step is halved
// until that holds, and the next one is tried twice as long.
//
// Steps go around (in u) or along the generators (in w), wherever g varies more with the other angle. So a stretch
// along a generator that both surfaces nearly share is as good as any other, however narrow it is in u. Next to
// u = t = 0, where that happens, numbers are as dense as the steps are short; u is kept within half a turn of 0.
//
// A double point is left to the cubic that has the tangents of the curve on both sides; both strands through it are
// followed.

#include "nu/engine/shapes/quadric_trace.h"

#include <cfloat>

#include "nu/engine/base/elementary.h"
#include "nu/engine/shapes/quadric_double_points.h"
#include "nu/engine/shapes/quadric_equation.h"
#include "nu/engine/shapes/vec2.h"
#include "nu/foundation/constants.h"

namespace nu::engine::shapes {

namespace {

using Chart = QuadricNode::Chart;
using Factors = QuadricEquation::Factors;

double LevelOf(const QuadricSpot& spot) {
  return spot.s / spot.c;
}

// Of the two angles w of one t, the nearer one to another; g of a single sheet changes its sign between them.
void AlignWith(const QuadricSpot& from, QuadricSpot& to) {
  if (to.s * from.s + to.c * from.c < 0.0) to.s = -to.s, to.c = -to.c;
}

// The turn from one direction to another, as lines, in (-pi/2, pi/2].
double TurnBetween(const QuadricSpot& from, const QuadricSpot& to) {
  const double sine = to.s * from.c - to.c * from.s;
  const double cosine = to.c * from.c + to.s * from.s;
  return Atan2(cosine < 0.0 ? -sine : sine, std::fabs(cosine));
}

// From a double point to a place, in both angles.
Vec2 OffsetFrom(const QuadricPlace& node, double u, double t) {
  return {std::remainder(u - node.u, Nu_2PI), (t - node.t) / Hypot(1.0, node.t)};
}
double DistanceFrom(const QuadricPlace& node, double u, double t) {
  const auto [x, y] = OffsetFrom(node, u, t);
  return Hypot(x, y);
}

// One step of the curve, proven.
struct Step {
  Chart chart = Chart::kAround;
  double sign = 1.0;    // of the derivative of g by w
  double length = 0.0;  // signed
  double width = 0.0;   // the other angle stays so close
  bool toInfinity = false;
  QuadricSpot from;
  QuadricSpot to;
};

class Tracer {
 public:
  // No step is shorter than `shortest`.
  Tracer(const QuadricPair& pair, const QuadricTask& task, const std::vector<QuadricPlace>& nodes, double shortest)
      : m_pair(pair),
        m_path(task.path),
        m_equation(m_pair, m_path),
        m_bendBounds(m_equation.BendBounds()),
        m_twistBounds(m_equation.TwistBounds()),
        m_nodes(nodes),
        m_asymptotes(task.asymptotes),
        m_reach(task.reach),
        m_shortest(shortest) {
    for (const QuadricSeed& seed : task.seeds) {
      QuadricSpot spot;
      if (m_equation.CrossingAt(seed.u, seed.sign, spot)) m_seeds.push_back({spot, false});
    }
    for (const QuadricPlace& node : nodes) AddSeedsAround(node);
  }

  bool Trace() {
    for (Seed& seed : m_seeds) {
      if (seed.isDone || NodeNextTo(seed.spot)) continue;
      seed.isDone = true;
      if (!TraceFrom(seed.spot)) return false;
    }
    return true;
  }

  std::vector<QuadricIntersectionCurve> Take() { return std::move(m_curves); }
  // Where no step was found.
  QuadricPlace End() const {
    const QuadricSpot& at = m_steps.empty() ? m_from : m_steps.back().to;
    return {at.u, LevelOf(at)};
  }

 private:
  struct Seed {
    QuadricSpot spot;
    bool isDone = false;
  };

  // On both strands through a double point, on either side, where g is a quadratic form that vanishes.
  void AddSeedsAround(const QuadricPlace& node) {
    const double length = Hypot(1.0, node.t);
    const QuadricSpot at{node.u, node.t / length, 1.0 / length};
    const QuadricEquation::Jet k = m_equation.At(node.u);
    const double byUU = m_equation.Value(k.bend, at);
    const double byUW = m_equation.Slope(k.slope, at);
    const double byWW = m_equation.Bend(k.value, at);
    const double rest = -(byUW + std::copysign(std::sqrt(byUW * byUW - byUU * byWW), byUW));
    for (const Vec2 tangent : {Vec2{rest, byUU}, Vec2{byWW, rest}}) {
      const double distance = Hypot(tangent.x, length * tangent.y);
      if (!(distance > 0.0)) continue;
      for (const double share : {-2.0 * kNearNode / distance, 2.0 * kNearNode / distance}) {
        AddSeedNextTo(at, share * tangent.x, share * tangent.y);
      }
    }
  }

  void AddSeedNextTo(const QuadricSpot& node, double around, double along) {
    const auto [sine, cosine] = SinCos(along);
    QuadricSpot at{node.u + around, node.s * cosine + node.c * sine, node.c * cosine - node.s * sine};
    const QuadricEquation::Jet k = m_equation.At(at.u);
    const double byU = m_equation.Value(k.slope, at);
    const double byW = m_equation.Slope(k.value, at);
    if (std::fabs(byU) > std::fabs(byW)) {
      at.u = m_equation.AngleAt(at.s, at.c, at.u, at.u - kNearNode, at.u + kNearNode);
    } else if (!m_equation.CrossingAt(at.u, byW, at)) {
      return;
    }
    m_seeds.push_back({at, false});
  }

  enum class Ending { kClosed, kFarOut, kFailed };

  // Around a component until it comes back to where it began. Beyond the reach, where a step is lost in the roundings,
  // it ends; then it is followed from its beginning the other way, too, where it may come around.
  bool TraceFrom(const QuadricSpot& seed) {
    m_steps.clear();
    Ending ending = Follow(seed, 1.0);
    if (ending == Ending::kFarOut) {
      std::vector<Step> forth;
      forth.swap(m_steps);
      ending = Follow(seed, -1.0);
      if (ending == Ending::kFarOut) {
        for (Step& step : m_steps) Reverse(step);
        std::reverse(m_steps.begin(), m_steps.end());
        m_steps.insert(m_steps.end(), forth.begin(), forth.end());
        m_steps.emplace_back().toInfinity = true;
      }
    }
    return ending != Ending::kFailed && Split();
  }

  static void Reverse(Step& step) {
    std::swap(step.from, step.to);
    step.length = -step.length;
    step.width *= 2.0;
  }

  Ending Follow(const QuadricSpot& seed, double side) {
    constexpr std::size_t kMostSteps = 20000;
    m_from = seed;
    m_side = side;
    QuadricSpot at = seed;
    double length = kLongestStep;
    while (m_steps.size() < kMostSteps) {
      Step step;
      if (!FindStepAcross(at, step) && !FindStep(at, 2.0 * length, step)) {
        return std::fabs(LevelOf(at)) >= m_reach ? Ending::kFarOut : Ending::kFailed;
      }
      length = std::fabs(step.length);
      if (step.chart == Chart::kAcross) m_side = -m_side;
      for (Seed& other : m_seeds) other.isDone = other.isDone || Passes(step, other.spot);
      const bool isClosing = !m_steps.empty() && Passes(step, seed);
      if (isClosing) step.to = seed;
      m_steps.push_back(step);
      if (isClosing) return Ending::kClosed;
      at = step.to;
      at.u = AngleNear(at.u, 0.0);
      // What is left of g beside a common line changes its sign over a turn.
      if (m_path.hasCommonLine && at.u != step.to.u) m_side = -m_side;
    }
    return Ending::kFailed;
  }

  // Whether a point of the curve is on a step, its start apart.
  static bool Passes(const Step& step, const QuadricSpot& spot) {
    constexpr double kSlack = 1e-12;  // of u and t, which are known to some roundings
    if (step.chart == Chart::kAcross) return false;
    const bool isAround = step.chart == Chart::kAround;
    const double around = std::remainder(spot.u - step.from.u, Nu_2PI);
    const double along = TurnBetween(step.from, spot);
    const double slackAround = kSlack * std::fabs(spot.u);
    const double slackAlong = kSlack * std::fabs(spot.c);
    const double length = std::fabs(step.length) + (isAround ? slackAround : slackAlong);
    const double width = step.width + (isAround ? slackAlong : slackAround);
    const double onto = std::copysign(1.0, step.length) * (isAround ? around : along);
    return onto > 0.0 && onto <= length && std::fabs(isAround ? along : around) <= width;
  }

  // u is known to the rounding of a full turn, t to its own: far out, steps around lose places and those along the
  // generators are taken, unless they get nowhere.
  bool FindStep(const QuadricSpot& at, double longest, Step& step) const {
    constexpr double kLoss = 32.0;
    constexpr double kLeastGrowth = 0.05;
    const QuadricEquation::Jet k = m_equation.At(at.u);
    const double byU = std::fabs(m_equation.Value(k.slope, at));
    const double byW = std::fabs(m_equation.Slope(k.value, at));
    const double scale = std::fabs(at.c);
    const bool isFlat = byW >= byU;
    if (scale * m_reach <= 1.0 && !TellsStrandsApart(isFlat ? byW : byU, isFlat, k, at)) return false;
    if (isFlat && kLoss * scale * byW < byU && scale * m_reach > 1.0) {
      if (FindStepIn(Chart::kAlong, k, at, longest, step) && std::fabs(step.length) >= kLeastGrowth * scale)
        return true;
    }
    const Chart first = isFlat ? Chart::kAround : Chart::kAlong;
    const Chart second = isFlat ? Chart::kAlong : Chart::kAround;
    return FindStepIn(first, k, at, longest, step) || FindStepIn(second, k, at, longest, step);
  }

  // Whether g between this strand and a next one, up to half the square of its slope over its bend, is above rounding.
  bool TellsStrandsApart(double slope, bool isAlongW, const QuadricEquation::Jet& k, const QuadricSpot& at) const {
    constexpr double kRoundings = 64.0;
    const double rounding =
        kRoundings * DBL_EPSILON * m_equation.Value(k.size, {at.u, std::fabs(at.s), std::fabs(at.c)});
    const double bend = isAlongW ? m_equation.BendBound(k.value) : ValueNear(m_bendBounds, at, 0.0);
    return slope * slope > 2.0 * bend * rounding;
  }

  bool FindStepIn(Chart chart, const QuadricEquation::Jet& k, const QuadricSpot& at, double longest, Step& step) const {
    const double byU = m_equation.Value(k.slope, at);
    const double byW = m_equation.Slope(k.value, at);
    const bool isFarOut = std::fabs(at.c) * m_reach <= 1.0;
    const double shortest = m_shortest * (chart == Chart::kAlong || isFarOut ? std::fabs(at.c) : 1.0);
    step.chart = chart;
    step.sign = byW;
    step.from = at;
    // The curve is followed in the direction (dg/dw, -dg/du), or against it behind a double point.
    const double side = m_side * (chart == Chart::kAround ? byW : -byU) < 0.0 ? -1.0 : 1.0;
    for (double length = std::fmin(longest, kLongestStep); length > shortest; length *= 0.5) {
      step.width = WidthOf(k, at, chart, length);
      step.length = side * length;
      if (step.width >= 0.0 && GoTo(step)) return true;
    }
    return false;
  }

  const QuadricPlace* NodeNextTo(const QuadricSpot& at) const {
    const auto isNear = [&](const QuadricPlace& node) { return DistanceFrom(node, at.u, LevelOf(at)) < kNearNode; };
    const auto found = std::find_if(m_nodes.begin(), m_nodes.end(), isNear);
    return found == m_nodes.end() ? nullptr : &*found;
  }

  // Straight on through a double point that is next to the place, where the last step has come close to it: from there
  // to opposite it.
  bool FindStepAcross(const QuadricSpot& at, Step& step) const {
    const QuadricPlace* node = NodeNextTo(at);
    if (!node || m_steps.empty() || NodeNextTo(m_steps.back().from) == node) return false;
    const auto [x, y] = OffsetFrom(*node, at.u, LevelOf(at));
    const QuadricEquation::Jet k = m_equation.At(at.u);
    const double byU = m_equation.Value(k.slope, at);
    const double byW = m_equation.Slope(k.value, at);
    const double opposite = 2.0 * node->t - LevelOf(at);
    const double length = Hypot(1.0, opposite);
    step = {Chart::kAcross, 1.0, Hypot(x, y), 0.0, false, at, {at.u - 2.0 * x, opposite / length, 1.0 / length}};
    if (std::fabs(at.c * byW) >= std::fabs(byU)) {
      if (!m_equation.CrossingAt(step.to.u, -byW, step.to)) return false;
    } else {
      step.to.u =
          m_equation.AngleAt(step.to.s, step.to.c, step.to.u, step.to.u - 0.5 * kNearNode, step.to.u + 0.5 * kNearNode);
    }
    AlignWith(at, step.to);
    const double missed = (LevelOf(step.to) - opposite) / Hypot(1.0, node->t);
    return Hypot(missed, step.to.u - (at.u - 2.0 * x)) < 0.5 * kNearNode;
  }

  // How far the curve may leave its start in the other angle over a step; negative where nothing is proven.
  double WidthOf(const QuadricEquation::Jet& k, const QuadricSpot& at, Chart chart, double length) const {
    constexpr int kTries = 4;
    const bool isAround = chart == Chart::kAround;
    const double byU = std::fabs(m_equation.Value(k.slope, at));
    const double byW = std::fabs(m_equation.Slope(k.value, at));
    const double main = isAround ? byW : byU;
    const double other = isAround ? byU : byW;
    // With du and dt / t the curve turns as it does in space, which does not matter beyond the reach.
    const double scale = std::fabs(at.c) * m_reach > 1.0 ? std::fabs(at.c) : 1.0;
    const auto isStraight = [&](double change) { return change <= std::fmax(byU, scale * byW); };
    double width = 2.0 * length * other / main;
    for (int i = 0; i < kTries; ++i) {
      const Changes more = isAround ? ChangesWithin(k, at, length, width) : ChangesWithin(k, at, width, length);
      const double moreMain = isAround ? more.byW : more.byU;
      const double moreOther = isAround ? more.byU : more.byW;
      if (!(moreMain <= kMostChange * main) || !isStraight(isAround ? more.byU : scale * more.byW)) return -1.0;
      const double needed = length * (other + moreOther) / (main - moreMain);
      if (needed <= width) return width;
      width = 2.0 * needed;
    }
    return -1.0;
  }

  // No derivatives of g change by more within x of a place in u and y in w: by the second derivatives there, and bounds
  // of the third ones nearby.
  struct Changes {
    double byU = 0.0;
    double byW = 0.0;
  };
  Changes ChangesWithin(const QuadricEquation::Jet& k, const QuadricSpot& at, double x, double y) const {
    const double mixed = std::fabs(m_equation.Slope(k.slope, at));
    const double byUU = std::fabs(m_equation.Value(k.bend, at));
    const double byWW = std::fabs(m_equation.Bend(k.value, at));
    const double byUUU = ValueNear(m_twistBounds, at, y);
    const double byUUW = SlopeNear(m_bendBounds, at, y);
    const double byUUWW = BendSum(m_bendBounds);
    const double byUWW = m_equation.BendBound(k.slope) + x * byUUWW;
    const double bend = m_equation.BendBound(k.value) + x * (m_equation.BendBound(k.slope) + 0.5 * x * byUUWW);
    const double byWWW = m_equation.Frequency() * bend;
    return {x * byUU + y * mixed + 0.5 * (x * x * byUUU + y * (2.0 * x * byUUW + y * byUWW)),
            x * mixed + y * byWW + 0.5 * (x * x * byUUW + y * (2.0 * x * byUWW + y * byWWW))};
  }

  // No values and derivatives by w are larger, of a g with factors that are no larger, so close to a place in w.
  double ValueNear(const Factors& k, const QuadricSpot& at, double y) const {
    const double s = std::fmin(1.0, std::fabs(at.s) + y);
    const double c = std::fmin(1.0, std::fabs(at.c) + y);
    return m_equation.Value(k, {at.u, s, c});
  }
  double SlopeNear(const Factors& k, const QuadricSpot& at, double y) const {
    const double s = std::fmin(1.0, std::fabs(at.s) + y);
    const double c = std::fmin(1.0, std::fabs(at.c) + y);
    return m_equation.IsQuadratic() ? 2.0 * ((k.a + k.c) * s * c + k.h) : k.a * c + k.c * s;
  }
  double BendSum(const Factors& k) const {
    return m_equation.IsQuadratic() ? 2.0 * (k.a + k.c + 2.0 * k.h) : k.a + k.c;
  }

  // The end of a proven step; false for one that comes too far out or in at once, or is lost in the roundings.
  bool GoTo(Step& step) const {
    const QuadricSpot& from = step.from;
    if (step.chart == Chart::kAround) {
      if (from.u + step.length == from.u || !m_equation.CrossingAt(from.u + step.length, step.sign, step.to))
        return false;
    } else {
      const auto [sine, cosine] = SinCos(step.length);
      step.to = {from.u, from.s * cosine + from.c * sine, from.c * cosine - from.s * sine};
      if (step.to.s == from.s && step.to.c == from.c) return false;
      step.to.u = m_equation.AngleAt(step.to.s, step.to.c, from.u, from.u - step.width, from.u + step.width);
    }
    AlignWith(from, step.to);
    step.toInfinity = IsThroughInfinity(step);
    const double before = std::fabs(LevelOf(from));
    const double after = std::fabs(LevelOf(step.to));
    if (step.toInfinity || std::fmin(before, after) >= m_reach) return std::fmin(before, after) >= m_reach;
    const double nearer = std::fmax(1.0, std::fmin(before, after));
    return std::fmax(before, after) <= kMostGrowth * nearer;
  }

  // Whether the curve passes cos w = 0, or comes so close to it that this is rounding.
  bool IsThroughInfinity(const Step& step) const {
    constexpr double kVanishing = DBL_EPSILON;
    constexpr int kSteps = 40;
    if (step.from.c * step.to.c <= 0.0 || PassesAsymptote(step)) return true;
    if (step.chart == Chart::kAlong || std::fmax(std::fabs(step.from.c), std::fabs(step.to.c)) * m_reach > 1.0)
      return false;
    double left = 0.0;
    double right = step.length;
    const auto at = [&](double x) {
      QuadricSpot spot;
      if (!m_equation.CrossingAt(step.from.u + x, step.sign, spot)) return 0.0;
      const double c = spot.s * step.from.s + spot.c * step.from.c < 0.0 ? -spot.c : spot.c;
      return step.from.c < 0.0 ? -c : c;
    };
    for (int i = 0; i < kSteps; ++i) {
      const double first = left + (right - left) / 3.0;
      const double second = right - (right - left) / 3.0;
      if (at(first) < at(second)) {
        right = second;
      } else {
        left = first;
      }
    }
    return at(0.5 * (left + right)) <= kVanishing;
  }

  // Far out, a crossing that goes to infinity there, if only to rounding.
  bool PassesAsymptote(const Step& step) const {
    if (std::fmin(std::fabs(LevelOf(step.from)), std::fabs(LevelOf(step.to))) < m_reach) return false;
    const double end = AngleNear(step.to.u, step.from.u);
    const double middle = 0.5 * (step.from.u + end);
    const double half = 0.5 * std::fabs(end - step.from.u);
    return std::any_of(m_asymptotes.begin(), m_asymptotes.end(),
                       [&](double u) { return std::fabs(std::remainder(u - middle, Nu_2PI)) <= half; });
  }

  // The component between its passages through infinity.
  bool Split() {
    const std::size_t count = m_steps.size();
    std::size_t gap = 0;
    while (gap < count && !m_steps[gap].toInfinity) ++gap;
    if (gap == count) {
      AddCurve(0, count, true);
      return true;
    }
    for (std::size_t first = gap + 1; first <= gap + count;) {
      std::size_t last = first;
      while (!m_steps[last % count].toInfinity) ++last;
      if (last > first) AddCurve(first, last, false);
      first = last + 1;
    }
    return true;
  }

  void AddCurve(std::size_t first, std::size_t last, bool isClosed) {
    QuadricIntersectionCurve curve{m_pair, m_path, {}};
    curve.path.closed = isClosed;
    double v = 0.0;
    for (std::size_t i = first; i < last; ++i) {
      const Step& step = m_steps[i % m_steps.size()];
      const double t = LevelOf(step.from);
      curve.nodes.push_back({v, step.from.u, t, step.chart, step.sign, step.width, {}});
      v += Hypot(AngleNear(step.to.u, step.from.u) - step.from.u, Asinh(LevelOf(step.to)) - Asinh(t));
    }
    const Step& end = m_steps[(last - 1) % m_steps.size()];
    curve.nodes.push_back({v, end.to.u, LevelOf(end.to), Chart::kAround, 1.0, 0.0, {}});
    curve.path.lower = 0.0;
    curve.path.upper = v;
    if (isClosed) ScaleToTurns(curve);
    if (!isClosed) CutAtReach(curve);
    if (!(curve.path.lower < curve.path.upper)) return;
    curve.MeasureNodes();
    m_curves.push_back(std::move(curve));
  }

  // One turn, or two for a curve through a double point of its own.
  void ScaleToTurns(QuadricIntersectionCurve& curve) const {
    const bool isTwofold = std::any_of(m_nodes.begin(), m_nodes.end(), [&](const QuadricPlace& node) {
      return std::count_if(curve.nodes.begin(), curve.nodes.end(), [&](const QuadricNode& stretch) {
               return stretch.chart == Chart::kAcross && DistanceFrom(node, stretch.u, stretch.t) < kNearNode;
             }) > 1;
    });
    const double turns = isTwofold ? 2.0 * Nu_2PI : Nu_2PI;
    const double length = curve.path.upper;
    for (QuadricNode& node : curve.nodes) node.v = turns * (node.v / length);
    curve.nodes.back().v = turns;
    curve.path.upper = turns;
  }

  // A branch all of which is farther away gets a reach of its own.
  void CutAtReach(QuadricIntersectionCurve& curve) const {
    double nearest = HUGE_VAL;
    for (const QuadricNode& node : curve.nodes) nearest = std::fmin(nearest, std::fabs(node.t));
    const double reach = nearest < m_reach ? m_reach : kOwnReach * nearest;
    const auto isInside = [reach](const QuadricNode& node) { return std::fabs(node.t) <= reach; };
    std::vector<QuadricNode>& nodes = curve.nodes;
    std::size_t first = 0;
    while (first + 2 < nodes.size() && !isInside(nodes[first + 1])) ++first;
    std::size_t last = nodes.size() - 1;
    while (last > first + 1 && !isInside(nodes[last - 1])) --last;
    nodes = std::vector<QuadricNode>(nodes.begin() + static_cast<std::ptrdiff_t>(first),
                                     nodes.begin() + static_cast<std::ptrdiff_t>(last + 1));
    curve.path.lower = EndAt(curve, reach, nodes[1].v, nodes.front().v);
    curve.path.upper = EndAt(curve, reach, nodes[nodes.size() - 2].v, nodes.back().v);
  }

  static double EndAt(const QuadricIntersectionCurve& curve, double reach, double inside, double outside) {
    constexpr int kHalvings = 50;
    const auto isWithin = [&](double v) { return std::fabs(curve.LevelAt(v)) <= reach; };
    return isWithin(outside) ? outside : LastInside(inside, outside, kHalvings, isWithin);
  }

  static constexpr double kLongestStep = 0.25;
  static constexpr double kMostChange = 0.5;  // of the derivative across a step
  static constexpr double kMostGrowth = 4.0;  // of t over a step beyond 1
  static constexpr double kOwnReach = 1000.0;
  static constexpr double kNearNode = 3e-4;  // over twice that, a cubic has no error left

  const QuadricPair& m_pair;
  const QuadricPath& m_path;
  QuadricEquation m_equation;
  Factors m_bendBounds;
  Factors m_twistBounds;
  const std::vector<QuadricPlace>& m_nodes;
  const std::vector<double>& m_asymptotes;
  double m_reach;
  double m_shortest;
  double m_side = 1.0;
  QuadricSpot m_from;
  std::vector<Seed> m_seeds;
  std::vector<Step> m_steps;
  std::vector<QuadricIntersectionCurve> m_curves;
};

}  // namespace

// A curve that asks for short steps may have a double point there, to the tolerance.
std::optional<std::vector<QuadricIntersectionCurve>> TraceBranches(const QuadricTask& task) {
  constexpr int kTries = 8;
  constexpr double kSuspicious = 1e-7;
  constexpr double kShortest = 0x1p-100;  // next to u = t = 0 numbers are as dense
  std::vector<QuadricPlace> nodes;
  const auto add = [&](QuadricPlace at) {
    const std::optional<QuadricPlace> node = DoublePointNextTo(task, at);
    const bool isNew = node && std::none_of(nodes.begin(), nodes.end(), [&](const QuadricPlace& known) {
                         return DistanceFrom(known, node->u, node->t) < kSuspicious;
                       });
    if (isNew) nodes.push_back(*node);
    return isNew;
  };
  for (const double u : task.contacts) add({u, -task.pair.h.At(u) / task.pair.a.At(u)});
  double shortest = kSuspicious;
  for (int i = 0; i < kTries; ++i) {
    const QuadricPair pair = TouchingAt(nodes, task);
    Tracer tracer(pair, task, nodes, shortest);
    if (tracer.Trace()) return tracer.Take();
    if (shortest == kShortest) break;
    if (!add(tracer.End())) shortest = kShortest;
  }
  return std::nullopt;
}

}  // namespace nu::engine::shapes
