#include <algorithm>
#include <array>
#include <cmath>
#include <utility>
#include <vector>

#include "nu/engine/base/elementary.h"
#include "nu/engine/base/sort.h"
#include "nu/engine/hulls/hull2.h"
#include "nu/engine/points/alignment.h"
#include "nu/engine/points/coincidence.h"
#include "nu/engine/points/extents.h"
#include "nu/engine/points/last_beyond.h"
#include "nu/engine/points/longest_edge.h"
#include "nu/engine/points/mean.h"
#include "nu/engine/points/shortest_edge.h"
#include "nu/foundation/constants.h"
#include "nu/foundation/int_array.h"
#include "nu/foundation/internal/failures.h"
#include "nu/foundation/internal/outputs.h"
#include "nu/foundation/numeric_helpers.h"
#include "nu/foundation/tolerances.h"
#include "nu/geometry/internal/conversions.h"
#include "nu/geometry/internal/point_set.h"
#include "nu/geometry/point_array.h"

using namespace nu::internal;

namespace {

void RequirePoints(const CNuPointArray& points, const char* what, const char* where) {
  if (points.GetSize() == 0) FailOperation(NuOperationEmpty, what, where);
}

// Each point in the frame of three axes at `origin`.
void Express(CNuPointArray& points, Vec3 origin, Vec3 x, Vec3 y, Vec3 z) {
  CNuPoint* p = points.GetData();
  for (int i = 0; i < points.GetSize(); ++i) {
    const Vec3 v = Components(p[i]) - origin;
    p[i] = CNuPoint(Dot(v, x), Dot(v, y), Dot(v, z));
  }
}

// The in-plane axes of CNuVector::OrthonormalXY; the z axis is taken as it is.
void Express(CNuPointArray& points, Vec3 origin, const CNuVector& zaxis) {
  CNuVector z = zaxis, x, y;
  z.OrthonormalXY(&x, &y);
  Express(points, origin, Components(x), Components(y), Components(zaxis));
}

template<class Indices>
void Assign(CNuIntArray* target, const Indices& indices) {
  CNuIntArray result(static_cast<int>(indices.size()));
  for (const int i : indices) result.Add(i);
  Output(target, std::move(result));
}

// The first point that is not equal to point 0, or the size.
int FirstDistinct(const CNuPointArray& points, double tol) {
  const CNuPoint* p = points.GetData();
  int i = 1;
  while (i < points.GetSize() && p[i].IsEqual(p[0], tol)) ++i;
  return i;
}

// ---- order of hull vertices

struct Offset {
  double x, y;
};

// The offsets of vertices from their centroid.
class Offsets {
 public:
  Offsets(const CNuPoint* points, const std::vector<int>& hull) : m_points(points), m_hull(hull) {
    for (const int i : hull) {
      m_centroid.x += points[i].x();
      m_centroid.y += points[i].y();
    }
    const double n = static_cast<double>(hull.size());
    m_centroid = {m_centroid.x / n, m_centroid.y / n};
  }

  Offset operator[](int i) const {
    const CNuPoint& p = m_points[m_hull[i]];
    return {p.x() - m_centroid.x, p.y() - m_centroid.y};
  }

 private:
  const CNuPoint* m_points;
  const std::vector<int>& m_hull;
  Offset m_centroid{0.0, 0.0};
};

// Counter-clockwise from the direction (1, 0, 0), in degrees, as CNuVector::AngleWith measures it about (0, 0, 1).
double AngleOf(const Offset& v) {
  const double length = Hypot(v.x, v.y);
  const double angle = NuArcCosSin(v.x / length, std::fabs(v.y) / length) / Nu_PI * 180.0;
  return v.y < 0.0 ? 360.0 - angle : angle;
}

bool TurnsLeft(const Offset& v, const Offset& w) {
  return v.x * w.y - v.y * w.x > 0.0;
}

// The vertices come counter-clockwise. About a centroid that lies clearly inside, their angles then increase once
// round, and only the first one is looked for; rounding can push the centroid of a sliver outside, and then the angles
// decide.
std::vector<int> ByAngle(const CNuPoint* points, const std::vector<int>& hull) {
  const Offsets offsets(points, hull);
  const int n = static_cast<int>(hull.size());
  int first = -1;
  bool increasing = true;
  Offset before = offsets[n - 1];
  for (int i = 0; i < n; ++i) {
    const Offset next = offsets[i];
    increasing = increasing && TurnsLeft(before, next);
    if (before.y < 0.0 && next.y >= 0.0) {
      increasing = increasing && first < 0;
      first = i;
    }
    before = next;
  }
  std::vector<int> order(hull.size());
  if (increasing && first >= 0) {
    std::rotate_copy(hull.begin(), hull.begin() + first, hull.end(), order.begin());
    return order;
  }
  std::vector<double> angles;
  angles.reserve(hull.size());
  for (int i = 0; i < n; ++i) angles.push_back(AngleOf(offsets[i]));
  std::vector<int> places(hull.size());
  SortIndex(n, angles.data(), places.data());
  for (int i = 0; i < n; ++i) order[i] = hull[places[i]];
  return order;
}

}  // namespace

CNuPoint CNuPointArray::MeanPoint() const {
  RequirePoints(*this, "MeanPoint operation", "CNuPointArray::MeanPoint()");
  return ToPoint(MeanOf(ViewOf(*this)));
}

void CNuPointArray::MoveTo(const CNuPoint& origin) {
  RequirePoints(*this, "MoveTo operation", "CNuPointArray::MoveTo(const CNuPoint& origin)");
  const CNuPoint start = origin;  // may be one of the points
  for (int i = 0; i < m_size; ++i) m_data[i] -= start;
}

void CNuPointArray::MoveTo(const CNuVector& zaxis) {
  RequirePoints(*this, "MoveTo operation", "CNuPointArray::MoveTo(const CNuVector& zaxis)");
  Express(*this, Vec3{}, zaxis);
}

void CNuPointArray::MoveTo(const CNuPoint& origin, const CNuVector& zaxis) {
  RequirePoints(*this, "MoveTo operation", "CNuPointArray::MoveTo(const CNuPoint& origin, const CNuVector& zaxis)");
  Express(*this, Components(origin), zaxis);
}

void CNuPointArray::MoveTo(const CNuPoint& origin, const CNuVector& xaxis, const CNuVector& zaxis) {
  RequirePoints(*this, "MoveTo operation",
                "CNuPointArray::MoveTo(const CNuPoint& origin, const CNuVector& xaxis, const CNuVector& zaxis)");
  if (xaxis.GetSize() != 3 || zaxis.GetSize() != 3)
    FailOperation(NuOperationNotThreeComponents, "calculation", "CNuPoint::MoveTo()");
  const Vec3 x = Unit(Components(xaxis));
  const Vec3 z = Unit(Components(zaxis));
  Express(*this, Components(origin), x, Cross(z, x), z);
}

ENuBoolean CNuPointArray::IsNoncollinear(CNuIntArray* idx, double tol) const {
  constexpr const char* where = "CNuPointArray::IsNoncollinear()";
  RequirePoints(*this, "IsNoncollinear operation", where);
  int corner[3];
  if (!WithMemory(where, [&] { return FindTriangle(ViewOf(*this), tol, corner); })) return NuFalse;
  Assign(idx, std::to_array(corner));
  return NuTrue;
}

ENuBoolean CNuPointArray::IsNoncoplanar(CNuIntArray* idx, double tol) const {
  RequirePoints(*this, "IsNoncoplanar operation", "CNuPointArray::IsNoncoplanar()");
  if (m_size < 4) return NuFalse;
  const int i = FirstDistinct(*this, tol);
  if (i == m_size) return NuFalse;
  const Vec3 start = Components(m_data[0]);
  const Vec3 d = Unit(Components(m_data[i]) - start);
  int k = m_size - 1;
  while (k > i && IsNull(Cross(d, Components(m_data[k]) - start), tol)) --k;
  if (k == i) return NuFalse;
  const Vec3 normal = Unit(Cross(d, Components(m_data[k]) - start));
  const int m = LastBeyond(ViewOf(*this), i + 1, start, normal, tol);
  if (m < 0) return NuFalse;
  Assign(idx, std::array{0, i, k, m});
  return NuTrue;
}

ENuBoolean CNuPointArray::Is2D() const {
  RequirePoints(*this, "Is2D operation", "CNuPointArray::Is2D()");
  const bool isFlat = m_size == 1 ? m_data[0].z() == 0.0 : HaveOneHeight(ViewOf(*this));
  return isFlat ? NuTrue : NuFalse;
}

ENuBoolean CNuPointArray::IsIn(const CNuPoint& p, double tol) const {
  const auto coincides = [&](const CNuPoint& q) { return q.IsEqual(p, tol) == NuTrue; };
  return std::any_of(m_data, m_data + m_size, coincides) ? NuTrue : NuFalse;
}

ENuBoolean CNuPointArray::IsEqual(const CNuPointArray& other, double tol) const {
  if (m_size != other.m_size) return NuFalse;
  if (m_size == 0) return NuTrue;
  const PointView these = ViewOf(*this);
  const PointView those = ViewOf(other);
  const bool areEqual = WithMemory("CNuPointArray::IsEqual()",
                                   [&] { return AllCoincide(those, these, tol) && AllCoincide(these, those, tol); });
  return areEqual ? NuTrue : NuFalse;
}

double CNuPointArray::MaxEdge(int* m, int* n) const {
  constexpr const char* where = "CNuPointArray::MaxEdge(int* m, int* n) const";
  RequirePoints(*this, "MaxEdge operation", where);
  const Edge edge =
      m_size == 1 ? Edge{0.0} : WithMemory(where, [&] { return LongestEdge(ViewOf(*this), NuGetZero()); });
  Output(m, edge.m);
  Output(n, edge.n);
  return edge.length;
}

double CNuPointArray::MinEdge(int* m, int* n) const {
  constexpr const char* where = "CNuPointArray::MinEdge(int* m, int* n) const";
  RequirePoints(*this, "MinEdge operation", where);
  const auto find = [&] { return ShortestEdge(ViewOf(*this), NuGetZero(), NuGetLarge()); };
  const Edge edge = m_size == 1 ? Edge{0.0} : WithMemory(where, find);
  Output(m, edge.m);
  Output(n, edge.n);
  return edge.length;
}

void CNuPointArray::BoundingBox(CNuPoint* min, CNuPoint* max) const {
  Box box{};
  if (m_size > 0) box = ExtentsOf(ViewOf(*this)).box;
  Output(min, CNuPoint(box.low[0], box.low[1], box.low[2]));
  Output(max, CNuPoint(box.high[0], box.high[1], box.high[2]));
}

void CNuPointArray::BoundingSphere(double* radius, CNuPoint* centre) const {
  CNuPoint low, high;
  BoundingBox(&low, &high);
  const CNuPoint middle = low.MidPoint(high);
  Output(radius, middle.DistanceTo(low));
  Output(centre, middle);
}

void CNuPointArray::ConvexHull(CNuIntArray* hull) const {
  if (m_size > 0 && Is2D() == NuFalse)
    FailOperation(NuOperationUnsupported, "calculation of 3D convex hull", "CNuPointArray");
  Assign(hull, WithMemory("CNuPointArray::ConvexHull()", [&] {
           const std::vector<int> vertices = m_size > 0 ? ConvexHull2(ViewOf(*this)) : std::vector<int>();
           return vertices.size() < 3 ? vertices : ByAngle(m_data, vertices);
         }));
}

void CNuPointArray::RemoveDuplicate(double tol) {
  const std::vector<int> kept =
      WithMemory("CNuPointArray::RemoveDuplicate()", [&] { return WithoutCoincident(ViewOf(*this), tol); });
  for (std::size_t k = 0; k < kept.size(); ++k) m_data[k] = m_data[kept[k]];
  m_size = static_cast<int>(kept.size());
}

void CNuPointArray::RemoveAdjacentDuplicate(double tol) {
  if (m_size < 2) return;
  int last = 0;
  for (int i = 1; i < m_size; ++i) {
    if (!m_data[i].IsEqual(m_data[last], tol)) m_data[++last] = m_data[i];
  }
  m_size = last + 1;
}
