// Parts and samples of a curve in which quadrics meet. Between two samples it is no longer than kBulge times their
// distance, as its stretches turn little; so it stays on its side of a border to which both are farther than that.

#include "nu/engine/shapes/quadric_intersection_curve.h"

namespace nu::engine::shapes {

namespace {

constexpr double kBulge = 1.25;

double DistanceToChord(Vec3 p, Vec3 from, Vec3 to) {
  const Vec3 chord = to - from;
  const double square = Dot(chord, chord);
  const double share = square > 0.0 ? std::clamp(Dot(p - from, chord) / square, 0.0, 1.0) : 0.0;
  return Norm(p - from - share * chord);
}

class ChordSampler {
 public:
  ChordSampler(const QuadricIntersectionCurve& curve, double tol, std::size_t most)
      : m_curve(curve), m_tol(tol), m_most(most) {}

  // False when there are too many.
  bool Add(double from, double to) {
    if (m_samples.empty()) m_samples.push_back(from);
    return Split(from, m_curve.At(from), to, m_curve.At(to), kHalvings);
  }
  std::vector<double> Take() { return std::move(m_samples); }

 private:
  static constexpr int kHalvings = 40;

  bool Split(double from, Vec3 first, double to, Vec3 last, int halvings) {
    const double middle = 0.5 * (from + to);
    const Vec3 between = m_curve.At(middle);
    double farthest = DistanceToChord(between, first, last);
    for (const double share : {0.0625, 0.25, 0.75, 0.9375}) {
      farthest = std::fmax(farthest, DistanceToChord(m_curve.At(from + share * (to - from)), first, last));
    }
    const double size = std::fmax(LargestComponent(first), LargestComponent(last));
    if (halvings == 0 || !(kBulge * farthest > CoincidenceTol(m_tol, size))) {
      m_samples.push_back(to);
      return m_samples.size() <= m_most;
    }
    return Split(from, first, middle, between, halvings - 1) && Split(middle, between, to, last, halvings - 1);
  }

  const QuadricIntersectionCurve& m_curve;
  double m_tol;
  std::size_t m_most;
  std::vector<double> m_samples;
};

class BorderFinder {
 public:
  BorderFinder(const QuadricIntersectionCurve& curve, const std::vector<HalfSpace>& spaces)
      : m_curve(curve), m_spaces(spaces) {}

  // How far outside, negative inside; a NaN counts as outside.
  double Excess(Vec3 p) const {
    double most = -HUGE_VAL;
    for (const HalfSpace& space : m_spaces) {
      const double excess = Dot(space.normal, p) - space.height;
      if (!(excess <= most)) most = excess;
    }
    return most;
  }

  void Add(double from, double to) { Split(SampleAt(from), SampleAt(to), kHalvings); }
  const std::vector<double>& Crossings() const { return m_crossings; }

 private:
  struct Sample {
    double v = 0.0;
    Vec3 point;
    double excess = 0.0;

    bool IsInside() const { return excess <= 0.0; }
  };
  static constexpr int kHalvings = 40;
  static constexpr int kMostSamples = 100000;  // a curve that runs along a border

  Sample SampleAt(double v) {
    ++m_count;
    const Vec3 point = m_curve.At(v);
    return {v, point, Excess(point)};
  }

  void Split(const Sample& from, const Sample& to, int halvings) {
    const bool crosses = from.IsInside() != to.IsInside();
    if (!crosses && std::fabs(from.excess) + std::fabs(to.excess) >= kBulge * Norm(to.point - from.point)) return;
    if (halvings == 0 || m_count > kMostSamples) {
      if (crosses) m_crossings.push_back(Bisect(from, to));
      return;
    }
    const Sample middle = SampleAt(0.5 * (from.v + to.v));
    Split(from, middle, halvings - 1);
    Split(middle, to, halvings - 1);
  }

  double Bisect(const Sample& from, const Sample& to) const {
    constexpr int kSteps = 60;
    const double inside = from.IsInside() ? from.v : to.v;
    const double outside = from.IsInside() ? to.v : from.v;
    return LastInside(inside, outside, kSteps, [&](double v) { return Excess(m_curve.At(v)) <= 0.0; });
  }

  const QuadricIntersectionCurve& m_curve;
  const std::vector<HalfSpace>& m_spaces;
  int m_count = 0;
  std::vector<double> m_crossings;
};

}  // namespace

std::vector<double> QuadricIntersectionCurve::NodesWithin() const {
  std::vector<double> all{path.lower};
  for (const QuadricNode& node : nodes) {
    if (node.v > path.lower && node.v < path.upper) all.push_back(node.v);
  }
  all.push_back(path.upper);
  return all;
}

QuadricIntersectionCurve QuadricIntersectionCurve::Part(double from, double to) const {
  QuadricIntersectionCurve part{pair, path, {}};
  const double period = path.upper - path.lower;
  const double first = path.closed ? std::floor((from - path.lower) / period) : 0.0;
  const int turns = path.closed ? 2 : 1;
  for (int i = 0; i < turns; ++i) {
    for (std::size_t k = 0; k < nodes.size(); ++k) {
      if (k + 1 == nodes.size() && i + 1 < turns) break;
      part.nodes.push_back(nodes[k]);
      part.nodes.back().v += (first + i) * period;
    }
  }
  std::vector<QuadricNode>& kept = part.nodes;
  while (kept.size() > 2 && kept[kept.size() - 2].v >= to) kept.pop_back();
  std::size_t before = 0;
  while (before + 2 < kept.size() && kept[before + 1].v <= from) ++before;
  kept.erase(kept.begin(), kept.begin() + static_cast<std::ptrdiff_t>(before));
  part.path.lower = from;
  part.path.upper = to;
  part.path.closed = false;
  return part;
}

std::vector<double> QuadricIntersectionCurve::SamplesWithin(double tol, std::size_t most) const {
  ChordSampler sampler(*this, tol, most);
  const std::vector<double> ends = NodesWithin();
  for (std::size_t i = 1; i < ends.size(); ++i) {
    if (!sampler.Add(ends[i - 1], ends[i])) return {};
  }
  return sampler.Take();
}

std::vector<QuadricRange> QuadricIntersectionCurve::Inside(const std::vector<HalfSpace>& spaces) const {
  BorderFinder finder(*this, spaces);
  const std::vector<double> ends = NodesWithin();
  for (std::size_t i = 1; i < ends.size(); ++i) finder.Add(ends[i - 1], ends[i]);
  std::vector<double> borders = finder.Crossings();
  const bool beginsInside = finder.Excess(At(path.lower)) <= 0.0;
  if (path.closed && beginsInside && !borders.empty()) {
    std::rotate(borders.begin(), borders.begin() + 1, borders.end());
    borders.back() += path.upper - path.lower;
  } else if (beginsInside) {
    borders.insert(borders.begin(), path.lower);
  }
  if (borders.size() % 2 != 0) borders.push_back(path.upper);
  std::vector<QuadricRange> ranges;
  for (std::size_t i = 0; i < borders.size(); i += 2) {
    if (borders[i] < borders[i + 1]) ranges.push_back({borders[i], borders[i + 1]});
  }
  return ranges;
}

}  // namespace nu::engine::shapes
