#ifndef NU_ENGINE_ASSOCIATION_BOUNDED_POINTS_H
#define NU_ENGINE_ASSOCIATION_BOUNDED_POINTS_H

#include <vector>

#include "nu/engine/base/floating_point.h"
#include "nu/engine/points/point_blocks.h"
#include "nu/engine/shapes/axis_frame.h"

namespace nu::engine::association {

// The range of some deviations.
struct DeviationSpan {
  double low = kInfinity;
  double high = -kInfinity;

  // NaN spoils it.
  void Add(double d) {
    low = d >= low ? low : d;
    high = d <= high ? high : d;
  }
  // Half of a zone, or the largest distance.
  template<class Model>
  double Size() const {
    return Model::kIsLevelled ? 0.5 * (high - low) : high;
  }
  template<class Model>
  double Level() const {
    return Model::kIsLevelled ? 0.5 * (high + low) : high;
  }
};

struct ContactPoints {
  std::vector<Vec3> outer;
  std::vector<Vec3> inner;
};

// Points in a working frame, and a set of those that have mattered so far.
class BoundedPoints {
 public:
  static constexpr std::size_t kMostInSet = 192;

  // Blocks with a scale; `frame` is in their unit, its origin in the middle of the points. All of few points are in the
  // set, else those that reach farthest along many directions.
  BoundedPoints(PointBlocks& blocks, const AxisFrame& frame);

  std::size_t Size() const { return m_blocks.Size(); }
  // The largest distance from the origin; not finite when a coordinate is not.
  double Reach() const { return m_reach; }
  const AxisFrame& Frame() const { return m_frame; }
  const std::vector<Vec3>& Set() const { return m_set; }

  template<class Visit>
  void ForEach(Visit visit) {
    m_blocks.ForEachPoint([&](const Vec3& p) { visit(m_frame.Local(p)); });
  }

  // So many points, each the farthest from those before it. They join the set.
  std::vector<Vec3> Spread(std::size_t most);

  // One pass. In each octant the points with the extreme deviations join the set if they are outside `some`, the span
  // of the set.
  template<class Deviation>
  DeviationSpan Span(const Deviation& deviation, const DeviationSpan& some) {
    Extreme high[8], low[8];
    DeviationSpan all;
    ForEach([&](const Vec3& p) {
      const double d = deviation(p);
      all.Add(d);
      const int octant = (p.x < 0.0 ? 1 : 0) + (p.y < 0.0 ? 2 : 0) + (p.z < 0.0 ? 4 : 0);
      if (d > high[octant].value) high[octant] = {d, p};
      if (-d > low[octant].value) low[octant] = {-d, p};
    });
    for (int k = 0; k < 8; ++k) {
      if (high[k].value > some.high) Join(high[k]);
      if (-low[k].value < some.low) Join(low[k]);
    }
    return all;
  }

  // The points within `near` of the ends of the span. They join the set.
  template<class Deviation>
  ContactPoints Contacts(const Deviation& deviation, const DeviationSpan& span, double near) {
    ContactPoints contacts;
    ForEach([&](const Vec3& p) {
      const double d = deviation(p);
      if (d >= span.high - near && contacts.outer.size() < kMostContacts) contacts.outer.push_back(p);
      if (d <= span.low + near && contacts.inner.size() < kMostContacts) contacts.inner.push_back(p);
    });
    for (const Vec3& p : contacts.outer) Join({0.0, p});
    for (const Vec3& p : contacts.inner) Join({0.0, p});
    return contacts;
  }

 private:
  struct Extreme {
    double value = -kInfinity;
    Vec3 point;
  };
  static constexpr std::size_t kMostContacts = 64;

  void Join(const Extreme& extreme);

  PointBlocks& m_blocks;
  AxisFrame m_frame;
  double m_reach = 0.0;
  std::vector<Vec3> m_set;
};

}  // namespace nu::engine::association

#endif
