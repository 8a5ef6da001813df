#include "nu/curves/simplified_curve.h"

#include <utility>
#include <vector>

#include "nu/curves/internal/placement.h"
#include "nu/engine/chains/path_simplification.h"
#include "nu/foundation/internal/failures.h"

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuSimplifiedCurve";

SimplifiedPath Simplified(const CNuPointArray& points, double tol) {
  return WithMemory(kName, [&] {
    std::vector<Vec3> path;
    path.reserve(static_cast<std::size_t>(points.GetSize()));
    for (int i = 0; i < points.GetSize(); ++i) path.push_back(Components(points.GetData()[i]));
    return SimplifyPath(path, tol);
  });
}

}  // namespace

CNuSimplifiedCurve::CNuSimplifiedCurve(const CNuPointArray& points, double tol)
    : CNuCurve(NuTypeSimplifiedCurve), m_points(0), m_anchor(RequirePoints(points, kName)[0]) {
  const SimplifiedPath path = Simplified(points, tol);
  m_points = CNuPointArray(static_cast<int>(path.kept.size()));
  for (const std::size_t k : path.kept) m_points.Add(points.GetData()[k]);
  m_maxDeviation = path.deviation;
  SetPosition(m_anchor, CNuVector(1.0, 0.0, 0.0), CNuVector(0.0, 0.0, 1.0));
}

// The points come first: without memory for them the curve does not move either.
CNuSimplifiedCurve& CNuSimplifiedCurve::operator=(const CNuSimplifiedCurve& other) {
  CNuPointArray points(other.m_points);
  CNuCurve::operator=(other);
  m_points = std::move(points);
  m_anchor = other.m_anchor;
  m_maxDeviation = other.m_maxDeviation;
  return *this;
}

Placement CNuSimplifiedCurve::Place() const {
  return Placement(GetFrame(), Components(m_anchor));
}

CNuPoint CNuSimplifiedCurve::GetPoint(int i) const {
  RequireIndex(i, GetSize(), "operation", "CNuSimplifiedCurve::GetPoint()");
  return ToPoint(Place().At(Components(m_points[i])));
}

CNuPointArray CNuSimplifiedCurve::GetPoints() const {
  return PlacedPoints(m_points, Place());
}
