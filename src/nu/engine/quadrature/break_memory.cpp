#include "nu/engine/quadrature/break_memory.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <span>

namespace nu::engine::quadrature {

namespace {

// When they are reached, every other line is forgotten.
constexpr std::size_t kMostLines = 512;

}  // namespace

// Through the breaks of two lines, if they have as many.
Places BreakMemory::OnStraightLines(const Line& first, const Line& second, double x) {
  Places places;
  const std::span<const double> from = first.places.All();
  const std::span<const double> to = second.places.All();
  const double share = (x - first.x) / (second.x - first.x);
  for (std::size_t i = 0; from.size() == to.size() && i < from.size(); ++i) {
    places.Add(from[i] * (1.0 - share) + to[i] * share);
  }
  return places;
}

bool BreakMemory::MakeRoom() {
  try {
    m_lines.reserve(kMostLines);
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

Places BreakMemory::Near(double x) const {
  const auto after = std::lower_bound(m_lines.begin(), m_lines.end(), x, IsBefore);
  const auto size = static_cast<std::ptrdiff_t>(m_lines.size());
  const std::ptrdiff_t second =
      std::clamp<std::ptrdiff_t>(after - m_lines.begin(), 1, std::max<std::ptrdiff_t>(size - 1, 1));
  Places expected;
  if (second < size) expected.Add(OnStraightLines(m_lines[second - 1], m_lines[second], x));
  if (after != m_lines.begin()) expected.Add((after - 1)->places);
  if (after != m_lines.end()) expected.Add(after->places);
  return expected;
}

void BreakMemory::Note(double x, const Places& places) {
  if (places.All().empty()) return;
  if (m_lines.size() == kMostLines) {
    for (std::size_t i = 0; 2 * i < kMostLines; ++i) m_lines[i] = m_lines[2 * i];
    m_lines.erase(m_lines.begin() + kMostLines / 2, m_lines.end());
  }
  const auto after = std::lower_bound(m_lines.begin(), m_lines.end(), x, IsBefore);
  if (after != m_lines.end() && after->x == x) {
    after->places = places;
  } else {
    m_lines.insert(after, {x, places});
  }
}

}  // namespace nu::engine::quadrature
