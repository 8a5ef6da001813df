// The generators that touch the other quadric part those that cross it, twice each, from those that miss it. A range of
// crossed ones between two of them gives a curve that goes there on one sheet of crossings and returns on the other;
// all generators crossed give a curve on each sheet. A generator that touches amid crossed ones, within the tolerance,
// carries a double point, where the sheets change over; amid others it carries a point of contact.
//
// A crossing goes to infinity where a = 0, unless it is the one that is -c / 2 h there; the curve is cut there.

#include "nu/surfaces/internal/quadric_branches.h"

#include "nu/foundation/constants.h"
#include "nu/foundation/internal/elementary.h"
#include "nu/surfaces/internal/quadric_trace.h"

namespace nu::internal {

namespace {

using Sheets = QuadricPath::Sheets;

// A generator that touches; `isContact` where it does so at an extremum of its depth, within the tolerance.
struct Touch {
  double u = 0.0;
  bool isContact = false;
};

double Bisect(const QuadricPair& pair, double left, double right) {
  const bool rises = pair.Depth(right) > 0.0;
  constexpr int kSteps = 60;
  for (int step = 0; step < kSteps; ++step) {
    const double middle = 0.5 * (left + right);
    ((pair.Depth(middle) > 0.0) == rises ? right : left) = middle;
  }
  return 0.5 * (left + right);
}

std::vector<Touch> TouchesOf(const QuadricPair& pair, const std::vector<double>& stationary, double tol) {
  std::vector<Touch> touches;
  const std::size_t count = stationary.size();
  for (std::size_t i = 0; i < count; ++i) {
    const double u = stationary[i];
    const double next = i + 1 < count ? stationary[i + 1] : stationary[0] + Nu_2PI;
    const double depth = pair.Depth(u);
    const double nextDepth = pair.Depth(next);
    if (std::fabs(depth) <= tol) {
      touches.push_back({u, true});
    } else if (std::fabs(nextDepth) > tol && (depth > 0.0) != (nextDepth > 0.0)) {
      touches.push_back({Bisect(pair, u, next), false});
    }
  }
  return touches;
}

// Where the branch goes to infinity, in the parameter of the path.
std::vector<double> CutsOf(const QuadricCurve& curve, const std::vector<double>& asymptotes) {
  const QuadricPath& path = curve.path;
  std::vector<double> cuts;
  const auto add = [&](double v) {
    const bool isFinite = path.sheets == Sheets::kBoth && curve.RootAt(v) * curve.pair.h.At(path.AngleAt(v)) > 0.0;
    if (!isFinite && v < path.upper) cuts.push_back(v);
  };
  for (const double asymptote : asymptotes) {
    if (!path.swings) {
      for (double v = asymptote; v < path.upper; v += Nu_2PI) add(v);
      continue;
    }
    const double around = std::remainder(asymptote - path.middle, Nu_2PI);
    if (!(std::fabs(around) <= path.half)) continue;
    const double v = Acos(-around / path.half);
    add(v);
    if (v > 0.0 && v < Nu_PI) add(Nu_2PI - v);
  }
  std::sort(cuts.begin(), cuts.end());
  cuts.erase(std::unique(cuts.begin(), cuts.end()), cuts.end());
  return cuts;
}

double Reach(const QuadricCurve& curve, double v) {
  return Norm(curve.OnPath(v));
}

// The end of the part of a branch that is within the reach, from a point within towards a cut.
double EndTowards(const QuadricCurve& curve, double within, double cut, double reach) {
  constexpr int kHalvings = 50;
  double inside = within;
  double outside = cut;
  for (int k = kHalvings; k > 0; --k) {
    const double v = cut + std::ldexp(within - cut, -k);
    if (Reach(curve, v) <= reach) {
      inside = v;
      break;
    }
    outside = v;
  }
  for (int k = 0; k < kHalvings; ++k) {
    const double v = 0.5 * (inside + outside);
    (Reach(curve, v) <= reach ? inside : outside) = v;
  }
  return inside;
}

// A branch from one cut to the next. A part all of which is farther away than the reach gets one of its own.
void AddOpen(QuadricCurve curve, double left, double right, double leastReach, std::vector<QuadricCurve>& found) {
  constexpr double kOwnReach = 1000.0;
  constexpr int kProbes = 64;
  double nearest = HUGE_VAL;
  double within = 0.5 * (left + right);
  for (int i = 1; i < kProbes; ++i) {
    const double v = left + i * ((right - left) / kProbes);
    const double distance = Reach(curve, v);
    if (!(distance < nearest)) continue;
    nearest = distance;
    within = v;
  }
  const double reach = std::fmax(leastReach, kOwnReach * nearest);
  curve.path.lower = EndTowards(curve, within, left, reach);
  curve.path.upper = EndTowards(curve, within, right, reach);
  curve.path.closed = false;
  if (!(curve.path.lower < curve.path.upper)) return;
  curve.AddNodes();
  found.push_back(curve);
}

void AddBranches(const QuadricCurve& curve, const std::vector<double>& asymptotes, double reach,
                 std::vector<QuadricCurve>& found) {
  const std::vector<double> cuts = CutsOf(curve, asymptotes);
  if (cuts.empty()) {
    found.push_back(curve);
    found.back().AddNodes();
  }
  const double period = curve.path.upper - curve.path.lower;
  for (std::size_t i = 0; i < cuts.size(); ++i) {
    AddOpen(curve, cuts[i], i + 1 < cuts.size() ? cuts[i + 1] : cuts[0] + period, reach, found);
  }
}

class BranchFinder {
 public:
  BranchFinder(const QuadricPair& pair, const std::vector<Touch>& touches, const std::vector<double>& asymptotes,
               double tol, double reach)
      : m_pair(pair), m_touches(touches), m_asymptotes(asymptotes), m_tol(tol), m_reach(reach) {
    const std::size_t count = touches.size();
    for (std::size_t i = 0; i < count; ++i) {
      const double next = i + 1 < count ? touches[i + 1].u : touches[0].u + Nu_2PI;
      m_middles.push_back(0.5 * (touches[i].u + next));
      m_crossesAfter.push_back(pair.Depth(m_middles.back()) > 0.0);
    }
  }

  // A curve that cannot be traced is described by its path.
  QuadricBranches Find() {
    std::vector<double> doublePoints;
    for (std::size_t i = 0; i < m_touches.size(); ++i) {
      if (!m_touches[i].isContact) continue;
      if (CrossesBefore(i) || m_crossesAfter[i]) {
        doublePoints.push_back(m_touches[i].u);
      } else {
        AddContact(m_touches[i].u);
      }
    }
    if (!Trace(doublePoints)) FollowPaths();
    return m_branches;
  }

 private:
  bool Trace(const std::vector<double>& doublePoints) {
    std::vector<QuadricSeed> seeds;
    const auto add = [&](double u) {
      for (const double sign : {-1.0, 1.0}) seeds.push_back({u, sign});
    };
    for (std::size_t i = 0; i < m_touches.size(); ++i) {
      if (m_crossesAfter[i]) add(m_middles[i]);
    }
    if (m_touches.empty() && m_pair.Depth(0.0) > 0.0) add(0.0);
    auto curves = TraceBranches({m_pair, {}, seeds, doublePoints, m_asymptotes, m_tol, m_reach});
    if (curves) m_branches.curves = std::move(*curves);
    return curves.has_value();
  }

  void FollowPaths() {
    bool swings = false;
    for (std::size_t i = 0; i < m_touches.size(); ++i) {
      if (CrossesBefore(i) || !m_crossesAfter[i]) continue;
      AddSwing(i);
      swings = true;
    }
    const bool isCrossed = m_touches.empty() ? m_pair.Depth(0.0) > 0.0 : m_crossesAfter[0];
    if (!swings && isCrossed) AddTurns();
  }

  bool CrossesBefore(std::size_t i) const { return m_crossesAfter[i > 0 ? i - 1 : m_touches.size() - 1]; }

  void AddContact(double u) { m_branches.points.push_back(m_pair.Middle(u)); }

  static void AddNode(double u, QuadricPath& path) {
    if (path.nodes < 2) path.node[path.nodes++] = u;
  }

  // From the generator that touches, over the crossed ones, to the next one behind which there are none.
  void AddSwing(std::size_t first) {
    QuadricCurve curve{m_pair, {}, {}};
    std::size_t i = first;
    double turns = 0.0;
    const auto step = [&] {
      if (++i < m_touches.size()) return;
      i = 0;
      turns = Nu_2PI;
    };
    for (step(); m_crossesAfter[i] && i != first; step()) AddNode(m_touches[i].u + turns, curve.path);
    const double left = m_touches[first].u;
    const double right = m_touches[i].u + turns;
    curve.path.swings = true;
    curve.path.middle = 0.5 * (left + right);
    curve.path.half = 0.5 * (right - left);
    curve.path.upper = Nu_2PI;
    if (curve.path.half > 0.0) AddBranches(curve, m_asymptotes, m_reach, m_branches.curves);
  }

  // Both sheets, or one curve over both if they change over once.
  void AddTurns() {
    QuadricCurve curve{m_pair, {}, {}};
    for (const Touch& touch : m_touches) AddNode(touch.u, curve.path);
    const bool isOne = curve.path.nodes == 1;
    curve.path.upper = isOne ? 2.0 * Nu_2PI : Nu_2PI;
    AddBranches(curve, m_asymptotes, m_reach, m_branches.curves);
    if (isOne) return;
    curve.path.sign = -1.0;
    AddBranches(curve, m_asymptotes, m_reach, m_branches.curves);
  }

  const QuadricPair& m_pair;
  const std::vector<Touch>& m_touches;
  const std::vector<double>& m_asymptotes;
  double m_tol;
  double m_reach;
  std::vector<double> m_middles;  // behind each touch, before the next one
  std::vector<bool> m_crossesAfter;
  QuadricBranches m_branches;
};

QuadricCurve SingleSheet(const QuadricPair& pair, Sheets sheets) {
  QuadricCurve curve{pair, {}, {}};
  curve.path.sheets = sheets;
  curve.path.upper = Nu_2PI;
  return curve;
}

// One crossing on each generator.
void AddSingleSheet(const QuadricCurve& curve, const std::vector<double>& asymptotes, double tol, double reach,
                    std::vector<QuadricCurve>& found) {
  auto curves = TraceBranches({curve.pair, curve.path, {{0.0, 1.0}}, {}, asymptotes, tol, reach});
  if (!curves) return AddBranches(curve, asymptotes, reach, found);
  found = std::move(*curves);
}

}  // namespace

QuadricBranches BranchesOf(const QuadricPair& pair, const std::vector<double>& stationary,
                           const std::vector<double>& asymptotes, double tol, double reach) {
  return BranchFinder(pair, TouchesOf(pair, stationary, tol), asymptotes, tol, reach).Find();
}

// The curve comes to the apex where h = 0. Where that is nowhere, the apex is a point by itself.
QuadricBranches BranchesThroughApex(const QuadricPair& pair, const std::vector<double>& asymptotes, double tol,
                                    double reach) {
  QuadricBranches branches;
  AddSingleSheet(SingleSheet(pair, Sheets::kThroughApex), asymptotes, tol, reach, branches.curves);
  const double least = std::fabs(pair.h.c0) - Hypot(pair.h.c1, pair.h.s1);
  const double steepest = std::fabs(pair.a.c0) + Hypot(pair.a.c1, pair.a.s1) + Hypot(pair.a.c2, pair.a.s2);
  if (least > tol * steepest) branches.points.push_back(pair.base.point);
  return branches;
}

QuadricBranches BranchesBesideLine(const QuadricPair& pair, const std::vector<double>& asymptotes, double commonLine,
                                   double tol, double reach) {
  QuadricBranches branches;
  QuadricCurve curve = SingleSheet(pair, Sheets::kThroughApex);
  curve.path.hasCommonLine = true;
  curve.path.commonLine = commonLine;
  AddSingleSheet(curve, asymptotes, tol, reach, branches.curves);
  return branches;
}

QuadricBranches BranchesThroughInfinity(const QuadricPair& pair, const std::vector<double>& asymptotes, double tol,
                                        double reach) {
  QuadricBranches branches;
  AddSingleSheet(SingleSheet(pair, Sheets::kThroughInfinity), asymptotes, tol, reach, branches.curves);
  return branches;
}

}  // namespace nu::internal
