#include "nu/engine/hulls/convex_polygon2.h"

#include <algorithm>

#include "nu/engine/hulls/grid2.h"

namespace nu::engine::hulls {

// The lower chain from left to right, then the upper one back (A. M. Andrew, Information Processing Letters 9, 1979).
ConvexPolygon2::ConvexPolygon2(const std::vector<Vec2>& points) {
  const auto extend = [this](Vec2 p, std::size_t fixed) {
    while (m_corners.size() > fixed && GridOrientation(m_corners[m_corners.size() - 2], m_corners.back(), p) <= 0) {
      m_corners.pop_back();
    }
    m_corners.push_back(p);
  };
  for (const Vec2& p : points) extend(p, 1);
  const std::size_t lower = m_corners.size();
  for (std::size_t i = points.size() - 1; i > 0; --i) extend(points[i - 1], lower);
  m_corners.pop_back();  // the first once more
  m_sideAngles.reserve(m_corners.size());
  for (std::size_t i = 0; i < m_corners.size(); ++i) m_sideAngles.push_back(DiamondAngle(Side(i)));
}

// Sides before the extreme corner still lead in the direction, those after it no longer. Rounded angles do not tell
// sides apart that are nearly across; the sign of an accurate product does.
std::size_t ConvexPolygon2::ExtremeCorner(Vec2 direction) const {
  const double across = DiamondAngle(Perpendicular(direction));
  const auto side = std::lower_bound(m_sideAngles.begin(), m_sideAngles.end(), across);
  const std::size_t count = m_corners.size();
  std::size_t corner = static_cast<std::size_t>(side - m_sideAngles.begin()) % count;
  const auto rise = [&](std::size_t i) { return AccurateDot(direction, Side(i)); };
  for (std::size_t k = 0; k < count && rise(corner) > 0.0; ++k) corner = (corner + 1) % count;
  for (std::size_t k = 0; k < count && rise(corner + count - 1) < 0.0; ++k) corner = (corner + count - 1) % count;
  return corner;
}

ConvexPolygon2::Exit ConvexPolygon2::ExitOf(Vec2 inside, Vec2 direction) const {
  // From the corner farthest to the right of the ray to the one farthest to its left the border crosses it once.
  std::size_t right = ExtremeCorner(-1.0 * Perpendicular(direction));
  std::size_t left = ExtremeCorner(Perpendicular(direction));
  if (left <= right) left += m_corners.size();
  while (left - right > 1) {
    const std::size_t middle = right + (left - right) / 2;
    (Cross(direction, Corner(middle) - inside) > 0.0 ? left : right) = middle;
  }
  const Vec2 side = Side(right);
  const double multiple = AccurateCross(Corner(right) - inside, side) / AccurateCross(direction, side);
  // On the border the way out may be lost in rounding.
  return {multiple > 0.0 && std::isfinite(multiple) ? multiple : 0.0, side};
}

}  // namespace nu::engine::hulls
