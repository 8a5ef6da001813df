#include "nu/engine/points/unbounded_points.h"

#include <array>
#include <cmath>
#include <cstddef>

#include "nu/engine/base/floating_point.h"

namespace nu::engine::points {
namespace {

bool IsFinite(const double* p) {
  return std::isfinite(p[0]) && std::isfinite(p[1]) && std::isfinite(p[2]);
}

// Coordinates are alike for an infinite difference when both are finite, both are NaN or both are the same infinity.
constexpr int kKinds = 4;
constexpr int kClasses = kKinds * kKinds * kKinds;

int KindOf(double v) {
  if (std::isnan(v)) return 3;
  return std::isinf(v) ? (v > 0.0 ? 1 : 2) : 0;
}

int ClassOf(const double* p) {
  return (KindOf(p[0]) * kKinds + KindOf(p[1])) * kKinds + KindOf(p[2]);
}

bool IsInfiniteBetween(int a, int b, double zero) {
  constexpr double kOfKind[kKinds] = {0.0, kInfinity, -kInfinity, kQuietNaN};
  const double p[] = {kOfKind[a / 16], kOfKind[a / 4 % 4], kOfKind[a % 4]};
  const double q[] = {kOfKind[b / 16], kOfKind[b / 4 % 4], kOfKind[b % 4]};
  return EdgeLength(p, q, zero) == kInfinity;
}

}  // namespace

std::vector<IndexedPoint> FinitePoints(const PointView& points) {
  std::vector<IndexedPoint> finite;
  for (std::size_t i = 0; i < points.Size(); ++i) {
    const double* p = points[i];
    if (IsFinite(p)) finite.push_back({{p[0], p[1], p[2]}, static_cast<int>(i)});
  }
  return finite;
}

Edge FirstInfiniteEdge(const PointView& points, double zero) {
  const int n = static_cast<int>(points.Size());
  std::array<std::array<bool, kClasses>, kClasses> infinite;
  for (int a = 0; a < kClasses; ++a) {
    for (int b = 0; b < kClasses; ++b) infinite[a][b] = IsInfiniteBetween(a, b, zero);
  }
  std::array<int, kClasses> last;
  last.fill(-1);
  for (int i = 0; i < n; ++i) last[ClassOf(points[i])] = i;
  for (int i = 0; i < n; ++i) {
    const auto& partner = infinite[ClassOf(points[i])];
    bool found = false;
    for (int c = 0; c < kClasses; ++c) found = found || (last[c] > i && partner[c]);
    if (!found) continue;
    int j = i + 1;
    while (!partner[ClassOf(points[j])]) ++j;
    return {kInfinity, i, j};
  }
  return {0.0};
}

}  // namespace nu::engine::points
