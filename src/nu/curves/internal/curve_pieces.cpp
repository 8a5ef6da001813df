#include "nu/curves/internal/curve_pieces.h"

#include "nu/curves/circular_arc.h"
#include "nu/curves/composite_curve.h"
#include "nu/curves/internal/placement.h"
#include "nu/curves/line_segment.h"
#include "nu/curves/polyline.h"
#include "nu/engine/shapes/incidence.h"
#include "nu/foundation/internal/downcast.h"
#include "nu/foundation/internal/failures.h"
#include "nu/foundation/internal/outputs.h"

namespace nu::internal {

namespace {

constexpr const char* kDistance = "CNuBoundedCurve::DistanceTo()";

PieceChain PiecesOf(const CNuPointArray& points) {
  PieceChain chain;
  const int size = points.GetSize();
  chain.Reserve(static_cast<std::size_t>(std::max(size - 1, 1)));
  Vec3 last = Components(points[0]);
  if (size == 1) chain.Add(Segment3{last, last});
  for (int i = 1; i < size; ++i) {
    const Vec3 next = Components(points.GetData()[i]);
    chain.Add(Segment3{last, next});
    last = next;
  }
  return chain;
}

[[noreturn]] void FailUnsupportedCurve() {
  FailOperation(NuOperationUnsupported, "calculation", kDistance);
}

Segment3 EndsOf(const CNuLineSegment& segment) {
  return {Components(segment.GetStartPoint()), Components(segment.GetEndPoint())};
}

PieceChain PiecesOf(const CNuCompositeCurve& curve) {
  PieceChain chain;
  const int size = curve.GetNumberSegments();
  chain.Reserve(static_cast<std::size_t>(size));
  for (int i = 0; i < size; ++i) AddPiece(*curve.GetSegment(i), chain);
  return chain;
}

}  // namespace

void AddPiece(const CNuBoundedCurve& curve, PieceChain& chain) {
  if (const auto* segment = As<CNuLineSegment>(curve)) return chain.Add(EndsOf(*segment));
  if (const auto* arc = As<CNuCircularArc>(curve)) return chain.Add(DataOf(*arc));
  FailUnsupportedCurve();
}

PieceChain PiecesOf(const CNuBoundedCurve& curve) {
  PieceChain chain;
  if (const auto* polyline = As<CNuPolyline>(curve)) return PiecesOf(polyline->GetPoints());
  if (const auto* composite = As<CNuCompositeCurve>(curve)) {
    chain = PiecesOf(*composite);
    if (chain.Size() == 0) FailOperation(NuOperationEmpty, "operation", "CNuCompositeCurve");
  } else {
    AddPiece(curve, chain);
  }
  return chain;
}

double StoreClosest(const NearPair& pair, CNuPoint* p1, CNuPoint* p2) {
  Output(p1, ToPoint(pair.first));
  Output(p2, ToPoint(pair.second));
  return pair.distance;
}

double DistanceBetween(const CNuBoundedCurve& first, const CNuBoundedCurve* second, CNuPoint* p1, CNuPoint* p2) {
  if (second == nullptr) FailUnsupportedCurve();
  const NearPair pair = WithMemory(kDistance, [&] { return ClosestBetween(PiecesOf(first), PiecesOf(*second)); });
  return StoreClosest(pair, p1, p2);
}

double DistanceAtAnySize(const CNuBoundedCurve& curve, Vec3 p) {
  return WithMemory(kDistance, [&] {
    PieceChain point;
    point.Add(Segment3{p, p});
    return ClosestBetween(PiecesOf(curve), point).distance;
  });
}

void StoreBounds(const CNuBoundedCurve& curve, CNuPoint* min, CNuPoint* max) {
  const Box box = WithMemory("CNuBoundedCurve::BoundingBox()", [&] { return PiecesOf(curve).Bounds(); });
  Output(min, CNuPoint(box.low[0], box.low[1], box.low[2]));
  Output(max, CNuPoint(box.high[0], box.high[1], box.high[2]));
}

void StoreBall(const Ball& ball, double* radius, CNuPoint* centre) {
  Output(radius, ball.radius);
  Output(centre, ToPoint(ball.centre));
}

void StoreSmallestBall(const CNuBoundedCurve& curve, double* radius, CNuPoint* centre) {
  const auto find = [&] { return SmallestBallAround(PiecesOf(curve)); };
  StoreBall(WithMemory("CNuBoundedCurve::BoundingCircle()", find), radius, centre);
}

Vec3 UprightNormal(Vec3 tangent) {
  const Vec3 upright = Rejection({0.0, 0.0, 1.0}, tangent);
  if (IsParallel(Norm(upright), ParallelTol())) return Unit(Rejection({1.0, 0.0, 0.0}, tangent));
  return Unit(upright);
}

Vec3 RequireOffset(double distance, const CNuVector& normal, const char* where) {
  if (normal.GetSize() != 3) FailOperation(NuOperationNotThreeComponents, "Offset", where);
  if (normal.IsZero(NuGetZero()) || !IsFinite(Components(normal)))
    FailOperation(NuOperationZeroVector, "Offset", where);
  if (!std::isfinite(distance)) FailOperation(NuOperationOffsetNotFinite, "Offset", where);
  return Unit(Components(normal));
}

}  // namespace nu::internal
