#include "nu/engine/chains/offset_polygon2.h"

#include <cfloat>
#include <queue>
#include <tuple>

#include "nu/engine/base/elementary.h"

namespace nu::engine::chains {

namespace {

// A corner that the moving edges carry along: at + reach * velocity.
struct Corner {
  Vec2 At(double reach) const { return at + reach * velocity; }

  Vec2 at;
  Vec2 velocity;
};

struct Edge2 {
  double CollapseReach() const {
    const double rate = Dot(direction, end.velocity - start.velocity);
    return rate < 0.0 ? -Dot(direction, end.at - start.at) / rate : HUGE_VAL;
  }

  Vec2 direction;
  Vec2 motion;  // the unit normal to the side where it goes
  Corner start, end;
  int previous = -1;
  int next = -1;
  int version = 0;
  bool lost = false;
};

struct Collapse {
  // The queue gives the greatest first.
  bool operator<(const Collapse& other) const {
    return std::tie(reach, edge, version) > std::tie(other.reach, other.edge, other.version);
  }

  double reach;
  int edge;
  int version;
};

class Front {
 public:
  Front(const std::vector<Vec2>& vertices, bool closed, double distance)
      : m_closed(closed), m_reach(std::fabs(distance)) {
    const int size = static_cast<int>(vertices.size());
    const int count = closed ? size : size - 1;
    for (int i = 0; i < count; ++i) {
      const Vec2 from = vertices[Index(i)];
      const Vec2 difference = vertices[Index((i + 1) % size)] - from;
      Edge2 edge;
      edge.direction = (1.0 / Hypot(difference.x, difference.y)) * difference;
      edge.motion = (distance < 0.0 ? 1.0 : -1.0) * Perpendicular(edge.direction);
      edge.start = {from, edge.motion};
      edge.end = {from + difference, edge.motion};
      edge.previous = i > 0 ? i - 1 : (closed ? count - 1 : -1);
      edge.next = i + 1 < count ? i + 1 : (closed ? 0 : -1);
      m_edges.push_back(edge);
    }
    m_left = count;
  }

  OffsetPolygon Run(const std::vector<Vec2>& vertices) {
    for (int i = 0; i < static_cast<int>(m_edges.size()); ++i) {
      const int next = m_edges[Index(i)].next;
      if (next >= 0 && !Join(i, next, vertices[Index(next)], 0.0)) return Vanished();
    }
    for (int i = 0; i < static_cast<int>(m_edges.size()); ++i) Schedule(i);
    while (!m_queue.empty() && m_queue.top().reach <= m_reach) {
      const Collapse collapse = m_queue.top();
      m_queue.pop();
      const Edge2& edge = m_edges[Index(collapse.edge)];
      if (edge.lost || edge.version != collapse.version) continue;
      if (!Lose(collapse.edge, collapse.reach)) return Vanished();
    }
    return Collect();
  }

 private:
  static std::size_t Index(int i) { return static_cast<std::size_t>(i); }
  static OffsetPolygon Vanished() { return {true, {}}; }

  void Schedule(int i) {
    const double reach = m_edges[Index(i)].CollapseReach();
    if (reach <= m_reach) m_queue.push({reach, i, m_edges[Index(i)].version});
  }

  // The corner of two edges that is at p for this reach: its velocity has the component 1 along either motion. False
  // for edges that go against each other.
  bool Join(int i, int j, Vec2 p, double reach) {
    constexpr double kLeastSum = 4.0 * DBL_EPSILON;  // the rounding of 1 + cosine
    Edge2& before = m_edges[Index(i)];
    Edge2& after = m_edges[Index(j)];
    const double sum = 1.0 + Dot(before.motion, after.motion);
    if (!(sum > kLeastSum)) return false;
    const Vec2 velocity = (1.0 / sum) * (before.motion + after.motion);
    before.end = after.start = {p - reach * velocity, velocity};
    return true;
  }

  // An edge has shrunk to nothing: its neighbours meet. Neighbours that go against each other have met along all of
  // the shorter one, which is lost as well.
  bool Lose(int i, double reach) {
    const Vec2 from = m_edges[Index(i)].start.At(reach);
    Vec2 p = from + 0.5 * (m_edges[Index(i)].end.At(reach) - from);
    while (true) {
      Edge2& edge = m_edges[Index(i)];
      const int before = edge.previous;
      const int after = edge.next;
      edge.lost = true;
      if (before < 0 || after < 0 || --m_left < (m_closed ? 3 : 1)) return false;
      m_edges[Index(before)].next = after;
      m_edges[Index(after)].previous = before;
      if (Join(before, after, p, reach)) return Reschedule(before) && Reschedule(after);
      const Vec2 back = m_edges[Index(before)].start.At(reach);
      const Vec2 ahead = m_edges[Index(after)].end.At(reach);
      const bool firstIsShorter = Dot(back - p, back - p) < Dot(ahead - p, ahead - p);
      i = firstIsShorter ? before : after;
      p = firstIsShorter ? back : ahead;
    }
  }

  bool Reschedule(int i) {
    ++m_edges[Index(i)].version;
    Schedule(i);
    return true;
  }

  OffsetPolygon Collect() const {
    OffsetPolygon result;
    int first = 0;
    while (m_edges[Index(first)].lost) ++first;
    int i = first;
    int last;
    do {
      result.vertices.push_back(m_edges[Index(i)].start.At(m_reach));
      last = i;
      i = m_edges[Index(i)].next;
    } while (i >= 0 && i != first);
    if (!m_closed) result.vertices.push_back(m_edges[Index(last)].end.At(m_reach));
    return result;
  }

  bool m_closed;
  double m_reach;
  int m_left = 0;
  std::vector<Edge2> m_edges;
  std::priority_queue<Collapse> m_queue;
};

}  // namespace

OffsetPolygon OffsetEdges(const std::vector<Vec2>& vertices, bool closed, double distance) {
  return Front(vertices, closed, distance).Run(vertices);
}

}  // namespace nu::engine::chains
