// What a polyline encloses, the plane it lies in, and its offset.
//
// With w_i = p_i - p_0 the vector area is the sum of w_i x w_(i+1) over two: its length is the area of a plane polygon,
// its direction the normal from whose tip the polygon runs counter-clockwise. The centroid is that of the triangles
// p_0 p_i p_(i+1), each weighed by its signed area along that direction.

#include <cfloat>
#include <memory>

#include "nu/curves/composite_curve.h"
#include "nu/curves/internal/chain_plane.h"
#include "nu/curves/internal/curve_pieces.h"
#include "nu/curves/internal/offset_curves.h"
#include "nu/curves/internal/placement.h"
#include "nu/curves/polyline.h"
#include "nu/engine/points/point_blocks.h"
#include "nu/foundation/internal/failures.h"
#include "nu/foundation/internal/outputs.h"

using namespace nu::internal;

namespace {

constexpr const char* kOffset = "CNuPolyline::Offset()";

Vec3 At(const CNuPointArray& points, int i) {
  return Components(points[i]);  // fails for what was moved from
}

CNuPoint MiddleOfEdges(const CNuPointArray& points, double length) {
  const Vec3 first = At(points, 0);
  if (length == 0.0) return points[0];
  BlockSums<3> sums;
  for (int i = 1; i < points.GetSize(); ++i) {
    const Vec3 before = At(points, i - 1) - first;
    const Vec3 here = At(points, i) - first;
    const Vec3 moment = (0.5 * SafeNorm(here - before) / length) * (before + here);
    sums.Add({moment.x, moment.y, moment.z});
  }
  return ToPoint(first + Vec3{sums[0], sums[1], sums[2]});
}

}  // namespace

ENuBoolean CNuPolyline::IsPlanar(double tol) const {
  return HeightOf(*this) <= tol ? NuTrue : NuFalse;
}

ENuBoolean CNuPolyline::IsSelfIntersecting() const {
  return TouchesItself(*this) ? NuTrue : NuFalse;
}

double CNuPolyline::Area() const {
  return WithMemory("CNuPolyline::Area()", [&] { return SafeNorm(VectorArea(PiecesOf(*this))); });
}

CNuPoint CNuPolyline::Centroid() const {
  constexpr double kRoundings = 8.0;  // of the products of the vector area
  const CNuPointArray points = GetPoints();
  const Vec3 area = WithMemory("CNuPolyline::Centroid()", [&] { return VectorArea(PiecesOf(*this)); });
  const double size = SafeNorm(area);
  const double length = Length();
  if (!(size > kRoundings * DBL_EPSILON * length * length)) return MiddleOfEdges(points, length);
  const Vec3 normal = Unit(area);
  const Vec3 first = At(points, 0);
  BlockSums<3> sums;
  for (int i = 1; i + 1 < points.GetSize(); ++i) {
    const Vec3 p = At(points, i) - first;
    const Vec3 q = At(points, i + 1) - first;
    const Vec3 moment = (Dot(Cross(p, q), normal) / size) * (p + q);
    sums.Add({moment.x, moment.y, moment.z});
  }
  constexpr double kSixth = 1.0 / 6.0;  // twice the area, and the third of the corners' sum
  return ToPoint(first + kSixth * Vec3{sums[0], sums[1], sums[2]});
}

void CNuPolyline::GetStartData(CNuPoint* point, CNuVector* tangent, CNuVector* normal) const {
  GetData(0, 1, point, tangent, normal);
}

void CNuPolyline::GetEndData(CNuPoint* point, CNuVector* tangent, CNuVector* normal) const {
  GetData(GetSize() - 1, -1, point, tangent, normal);
}

void CNuPolyline::GetData(int at, int step, CNuPoint* point, CNuVector* tangent, CNuVector* normal) const {
  const CNuPointArray points = GetPoints();
  const Vec3 end = At(points, at);
  Vec3 edge;
  for (int i = at + step; i >= 0 && i < GetSize() && SafeNorm(edge) == 0.0; i += step) {
    edge = static_cast<double>(step) * (At(points, i) - end);
  }
  const CNuVector upright = PlaneNormalOf(*this);
  Output(point, points[at]);
  Output(tangent, ToVector(Unit(edge)));
  Output(normal, upright);
}

std::unique_ptr<CNuPolyline> CNuPolyline::CurveOf(const PieceChain& chain) {
  CNuPointArray points(chain.Size() + 1);
  points.Add(ToPoint(chain.Ends(0).start));
  for (int i = 0; i < chain.Size(); ++i) points.Add(ToPoint(chain.Ends(i).end));
  auto curve = std::make_unique<CNuPolyline>(points);
  curve->RemoveShortEdges();
  return curve;
}

CNuBoundedCurve* CNuPolyline::Offset(double distance, const CNuVector& normal, int shape) {
  const Vec3 given = RequireOffset(distance, normal, kOffset);
  return WithMemory(kOffset, [&]() -> CNuBoundedCurve* {
    const PieceChain curve = OneOffset(PiecesOf(*this), distance, given, shape, kOffset);
    if (shape == 0) return CurveOf(curve).release();
    return CNuCompositeCurve::CurveOf(curve).release();
  });
}

int CNuPolyline::OffsetAll(double distance, const CNuVector& normal, int corners, CNuObjArray* loops) const {
  constexpr const char* where = "CNuPolyline::OffsetAll()";
  const Vec3 given = RequireOffset(distance, normal, where);
  auto curves = WithMemory(where, [&] {
    std::vector<std::unique_ptr<CNuBoundedCurve>> made;
    for (const PieceChain& chain : OffsetCurves(PiecesOf(*this), distance, given, corners, where)) {
      if (corners == 0) {
        made.push_back(CurveOf(chain));
      } else {
        made.push_back(CNuCompositeCurve::CurveOf(chain));
      }
    }
    return made;
  });
  return HandOver(std::move(curves), loops);
}

CNuBoundedCurve* CNuPolyline::Offset(double distance) {
  return Offset(distance, PlaneNormalOf(*this), 0);
}
