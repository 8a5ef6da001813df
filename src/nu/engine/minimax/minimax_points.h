#ifndef NU_ENGINE_MINIMAX_MINIMAX_POINTS_H
#define NU_ENGINE_MINIMAX_MINIMAX_POINTS_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <tuple>
#include <utility>
#include <vector>

#include "nu/engine/base/floating_point.h"
#include "nu/engine/minimax/minimax_rows.h"
#include "nu/engine/points/point_blocks.h"

namespace nu::engine::minimax {

enum class MinimaxSide {
  outer,  // the largest deviation
  inner,  // minus the smallest one
  both,   // the largest absolute one
};

// From the least of some values to the largest.
struct ValueRange {
  double smallest = kInfinity;
  double largest = -kInfinity;

  double Middle() const { return 0.5 * (smallest + largest); }
  double Width() const { return largest - smallest; }
  void Include(const ValueRange& part) {
    smallest = std::min(smallest, part.smallest);
    largest = std::max(largest, part.largest);
  }
};

// The range of all points' deviations from a model. visit(block, range) sees those of each block, in `deviation`.
template<class Model, class Visit>
ValueRange VisitDeviations(PointBlocks& points, const Model& model, double* deviation, const Visit& visit) {
  ValueRange all;
  points.ForEach([&](const PointBlock& block) {
    ValueRange part;
    model.Deviations(block, deviation, part.smallest, part.largest);
    visit(block, part);
    all.Include(part);
  });
  return all;
}

// The points of a minimax problem, and the working set of those that are known to matter. For Model see minimax.h.
template<class Model>
class MinimaxPoints {
 public:
  static constexpr int K = Model::kUnknowns;

  MinimaxPoints(PointBlocks& all, MinimaxSide side) : m_all(all), m_side(side) {}
  MinimaxPoints(const MinimaxPoints&) = delete;
  MinimaxPoints& operator=(const MinimaxPoints&) = delete;

  int Size() const { return static_cast<int>(m_set.size); }
  Vec3 Point(int row) const { return m_set.At(static_cast<std::size_t>(row)); }
  double Sign(int row) const { return m_sign[row]; }
  // Of all points' deviations, at the last pass.
  double Range() const { return m_range; }
  // What the last pass has done: how many points have joined, and whether rows have changed places to make room.
  int Added() const { return m_added; }
  bool IsRenumbered() const { return m_renumbered; }

  // The working set gets all of few points, or extreme ones of all strata, none where no deviation is a number; returns
  // the largest deviation.
  double Seed(const Model& model) {
    m_set.size = 0;
    m_near.reset();
    if (m_all.Size() >= kNearFrom) return SeedFromNear(model);
    const double largest = Collect(m_all, model, kInfinity, 0);
    if (m_all.Size() > kFewPoints) {
      const double range = m_all.Size() > kManyPoints ? kSeedRangeOfMany : kSeedRange;
      // Deviations may all be the same.
      Collect(m_all, model, std::nextafter(largest - range * m_range, -kInfinity), kMostSeeds);
      return largest;
    }
    m_all.ForEachPoint([&](const Vec3& p) {
      if (m_side != MinimaxSide::inner) Append(p, 1.0);
      if (m_side != MinimaxSide::outer) Append(p, -1.0);
    });
    FillLanes();
    return largest;
  }

  // One pass. Those points whose deviation is above the threshold join the working set, up to kMostAdded, the worst of
  // each stratum, the worst first. Returns the largest deviation of all points. Of many points those near the
  // boundaries are looked at first; where some of them join, that of the others remains unknown and kInfinity stands
  // for it.
  double Collect(const Model& model, double threshold) {
    if (m_near) {
      Collect(m_near->blocks, model, threshold, kMostAdded);
      if (m_added > 0) return kInfinity;
    }
    return Collect(m_all, model, threshold, kMostAdded);
  }

  void Linearise(const Model& model, MinimaxRows<K>& rows) const {
    rows.size = static_cast<int>(m_set.size);
    model.Gradients(m_set, rows.value, rows.gradient);
    for (int i = 0; i < rows.size; ++i) rows.value[i] *= m_sign[i];
    for (int k = 0; k < K; ++k)
      for (int i = 0; i < rows.size; ++i) rows.gradient[k][i] *= m_sign[i];
  }

 private:
  static constexpr std::size_t kFewPoints = 24;
  static constexpr int kMostSeeds = 32;
  static constexpr int kMostAdded = 16;
  // Seeds are taken from the points whose deviation is in the upper half of the range; of many, which would all have
  // to be sorted into their strata, from the uppermost quarter.
  static constexpr double kSeedRange = 0.5;
  static constexpr std::size_t kManyPoints = 512;
  static constexpr double kSeedRangeOfMany = 0.25;

  // So many points and more are searched near the boundaries first, among about one in kNearShare of them.
  static constexpr std::size_t kNearFrom = std::size_t{1} << 15;
  static constexpr std::size_t kNearShare = 16;

  struct Candidate {
    double value = 0.0;
    double sign = 0.0;
    Vec3 point;
  };

  bool IsOutside(double deviation) const {
    return m_side == MinimaxSide::outer || (m_side == MinimaxSide::both && deviation >= 0.0);
  }

  double Extreme(const ValueRange& range) const {
    if (m_side == MinimaxSide::outer) return range.largest;
    return m_side == MinimaxSide::inner ? -range.smallest : std::max(range.largest, -range.smallest);
  }

  // The same for many points, in two passes: the second one takes those near the boundaries.
  double SeedFromNear(const Model& model) {
    std::vector<double> some;
    const ValueRange all = VisitDeviations(m_all, model, m_deviation, [&](const PointBlock& block, const ValueRange&) {
      for (std::size_t i = 0; i < block.size; i += kNearShare * kNearShare)
        if (std::isfinite(m_deviation[i])) some.push_back(Extreme({m_deviation[i], m_deviation[i]}));
    });
    m_range = all.Width();
    const double value = Extreme(all);
    if (some.size() < kNearShare) return value;  // hardly any deviation is a number
    const auto bound = some.end() - static_cast<std::ptrdiff_t>(some.size() / kNearShare);
    std::nth_element(some.begin(), bound, some.end());
    const double least = *bound;
    std::vector<Vec3> near;
    VisitDeviations(m_all, model, m_deviation, [&](const PointBlock& block, const ValueRange& range) {
      for (std::size_t i = 0; i < block.size && Extreme(range) >= least; ++i)
        if (Extreme({m_deviation[i], m_deviation[i]}) >= least) near.push_back(block.At(i));
    });
    if (near.empty()) return value;
    m_near = std::make_unique<OwnBlocks>(std::move(near));
    const double threshold = std::max(least, value - kSeedRangeOfMany * m_range);
    Collect(m_near->blocks, model, std::nextafter(threshold, -kInfinity), kMostSeeds);
    return value;
  }

  double Collect(PointBlocks& points, const Model& model, double threshold, int most) {
    constexpr int kPlaces = 2 * Model::kStrata;
    Candidate worst[kPlaces];
    for (Candidate& c : worst) c.value = threshold;
    const auto look = [&](const PointBlock& block, const ValueRange& range) {
      if (Extreme(range) > threshold) FindWorst(model, block, threshold, worst);
    };
    const ValueRange all = VisitDeviations(points, model, m_deviation, look);
    if (&points == &m_all) m_range = all.Width();
    Candidate* end = std::remove_if(worst, worst + kPlaces, [](const Candidate& c) { return c.sign == 0.0; });
    std::sort(worst, end, [](const Candidate& a, const Candidate& b) {
      if (a.value != b.value) return a.value > b.value;
      return std::tie(a.point.x, a.point.y, a.point.z) < std::tie(b.point.x, b.point.y, b.point.z);
    });
    m_added = static_cast<int>(std::min<std::ptrdiff_t>(end - worst, most));
    m_renumbered = m_set.size + static_cast<std::size_t>(m_added) > kMostRows;
    if (m_renumbered) KeepLargest(model);
    for (int i = 0; i < m_added; ++i) Append(worst[i].point, worst[i].sign);
    FillLanes();
    return Extreme(all);
  }

  void FindWorst(const Model& model, const PointBlock& block, double threshold, Candidate* worst) const {
    for (std::size_t i = 0; i < block.size; ++i) {
      const bool outside = IsOutside(m_deviation[i]);
      const double value = outside ? m_deviation[i] : -m_deviation[i];
      if (!(value > threshold)) continue;
      const Vec3 point = block.At(i);
      Candidate& place = worst[2 * model.Stratum(point) + (outside ? 0 : 1)];
      if (value > place.value) place = {value, outside ? 1.0 : -1.0, point};
    }
  }

  // Those below the middle hold nothing for long.
  void KeepLargest(const Model& model) {
    const std::size_t size = m_set.size;
    double low, high;
    model.Deviations(m_set, m_deviation, low, high);
    for (std::size_t i = 0; i < size; ++i) m_deviation[i] *= m_sign[i];
    double ordered[kMostRows];
    std::copy_n(m_deviation, size, ordered);
    std::nth_element(ordered, ordered + size / 2, ordered + size);
    const double middle = ordered[size / 2];
    m_set.size = 0;
    for (std::size_t i = 0; i < size; ++i)
      if (m_deviation[i] > middle) Append(m_set.At(i), m_sign[i]);
  }

  void Put(std::size_t i, const Vec3& p, double sign) {
    m_set.x[i] = p.x;
    m_set.y[i] = p.y;
    m_set.z[i] = p.z;
    m_sign[i] = sign;
  }

  void Append(const Vec3& p, double sign) { Put(m_set.size++, p, sign); }

  void FillLanes() {
    if (m_set.size == 0) return;
    const std::size_t last = m_set.size - 1;
    for (std::size_t i = m_set.size; i % kLanes != 0; ++i) Put(i, m_set.At(last), m_sign[last]);
  }

  PointBlocks& m_all;
  MinimaxSide m_side;
  std::unique_ptr<OwnBlocks> m_near;
  double m_range = 0.0;
  int m_added = 0;
  bool m_renumbered = false;
  PointBlock m_set;
  double m_sign[kBlockPoints];
  double m_deviation[kBlockPoints];
};

}  // namespace nu::engine::minimax

#endif
