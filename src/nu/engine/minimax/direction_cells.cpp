#include "nu/engine/minimax/direction_cells.h"

#include <algorithm>

#include "nu/engine/base/floating_point.h"
#include "nu/engine/base/simd.h"

namespace nu::engine::minimax {
namespace {

struct Coordinates {
  const double* x;
  const double* y;
  const double* z;
};

// The highest heights of each lane along the four directions, and where they are.
NU_KERNEL void HighestOfLanes(Coordinates p, std::size_t count, const double* u, const double* v,
                              double (*most)[kLanes], double (*where)[kLanes]) {
  for (std::size_t i = 0; i + kLanes <= count; i += kLanes) {
    const double at = static_cast<double>(i);
    for (int k = 0; k < 4; ++k) {
      const double s = u[k], t = v[k];
      NU_LANE_LOOP
      for (int l = 0; l < kLanes; ++l) {
        const double h = (p.x[i + l] * s + p.z[i + l]) + p.y[i + l] * t;
        where[k][l] = h > most[k][l] ? at : where[k][l];
        most[k][l] = h > most[k][l] ? h : most[k][l];
      }
    }
  }
}

// Whether a point of a block is above any of the limits at the four corners of a cell.
NU_KERNEL void FindAbove(Coordinates p, std::size_t count, const double* u, const double* v, const double* limit,
                         int* isAbove) {
  for (std::size_t i = 0; i < count; ++i) {
    const double a = p.x[i] * u[0] + p.z[i], b = p.x[i] * u[1] + p.z[i];
    const double c = p.y[i] * v[0], d = p.y[i] * v[1];
    const double ac = (a + c) - limit[0], ad = (a + d) - limit[1], bc = (b + c) - limit[2], bd = (b + d) - limit[3];
    const double first = ac > ad ? ac : ad, second = bc > bd ? bc : bd;
    isAbove[i] = (first > second ? first : second) > 0.0 ? 1 : 0;
  }
}

}  // namespace

HighPoints::HighPoints(const std::vector<IndexedPoint>& points, double sign) {
  Reserve(points.size());
  m_size = points.size();
  const double* origin = points.front().xyz;
  for (std::size_t i = 0; i < m_size; ++i) {
    for (int k = 0; k < 3; ++k) m_at[k][i] = sign * (points[i].xyz[k] - origin[k]);
    m_number[i] = static_cast<int>(i);
  }
}

void HighPoints::Reserve(std::size_t size) {
  if (size <= m_number.size()) return;
  const std::size_t grown = std::max(size, m_number.size() + m_number.size() / 2);
  for (auto& at : m_at) at.resize(grown);
  m_number.resize(grown);
}

void HighPoints::FindHighest(const List& list, const double (&u)[4], const double (&v)[4],
                             std::size_t (&place)[4]) const {
  constexpr std::size_t kFew = 2 * kLanes;
  const std::size_t inLanes = list.Size() < kFew ? 0 : list.Size() / kLanes * kLanes;
  double most[4][kLanes], where[4][kLanes];
  for (auto& lanes : most) std::fill(lanes, lanes + kLanes, -kInfinity);
  const std::size_t begin = list.begin;
  if (inLanes > 0) HighestOfLanes({X() + begin, Y() + begin, Z() + begin}, inLanes, u, v, most, where);
  for (int k = 0; k < 4; ++k) {
    double highest = -kInfinity;
    place[k] = begin;
    for (int l = 0; l < kLanes && inLanes > 0; ++l) {
      if (most[k][l] > highest) highest = most[k][l], place[k] = begin + static_cast<std::size_t>(where[k][l]) + l;
    }
    for (std::size_t i = begin + inLanes; i < list.end; ++i) {
      const double h = Height(i, u[k], v[k]);
      if (h > highest) highest = h, place[k] = i;
    }
  }
}

HighPoints::List HighPoints::AppendHigh(const List& list, const DirectionCell& cell, std::size_t place, double slack) {
  constexpr std::size_t kBlock = 256;
  double limit[4];
  int isAbove[kBlock];
  for (int k = 0; k < 4; ++k) limit[k] = Height(place, cell.u[k / 2], cell.v[k % 2]) - slack;
  if (m_kept.size() < list.Size()) m_kept.resize(list.Size());
  int* const kept = m_kept.data();
  std::size_t count = 0;
  for (std::size_t begin = list.begin; begin < list.end; begin += kBlock) {
    const std::size_t size = std::min(kBlock, list.end - begin);
    FindAbove({X() + begin, Y() + begin, Z() + begin}, size, cell.u, cell.v, limit, isAbove);
    for (std::size_t i = 0; i < size; ++i) {
      kept[count] = static_cast<int>(begin - list.begin + i);
      count += static_cast<std::size_t>(isAbove[i]);
    }
  }
  Reserve(m_size + count);
  const std::size_t first = m_size;
  double* const x = m_at[0].data();
  double* const y = m_at[1].data();
  double* const z = m_at[2].data();
  int* const number = m_number.data();
  const Vec3 high = At(place);
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t from = list.begin + static_cast<std::size_t>(kept[i]);
    x[m_size] = x[from], y[m_size] = y[from], z[m_size] = z[from], number[m_size] = number[from];
    const bool isCopy = x[from] == high.x && y[from] == high.y && z[from] == high.z && from != place;
    m_size += isCopy ? 0 : 1;
  }
  return {first, m_size};
}

}  // namespace nu::engine::minimax
