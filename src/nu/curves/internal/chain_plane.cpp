#include "nu/curves/internal/chain_plane.h"

#include "nu/curves/internal/curve_pieces.h"
#include "nu/engine/base/elementary.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/chains/self_contact.h"
#include "nu/engine/points/principal_direction.h"
#include "nu/engine/shapes/incidence.h"
#include "nu/foundation/constants.h"
#include "nu/foundation/internal/failures.h"
#include "nu/geometry/internal/conversions.h"

namespace nu::internal {

namespace {

bool IsOnLine(const std::vector<Vec3>& points, const Line3& line, double tol) {
  return std::all_of(points.begin(), points.end(),
                     [&](Vec3 p) { return SafeNorm(Rejection(p - line.point, line.direction)) <= tol; });
}

// Of the ends, and of the two points of the circle that are farthest from the plane where the arc reaches them.
double LargestDistance(const Arc3& arc, const Plane3& plane) {
  const double top = Atan2(Dot(arc.y, plane.normal), Dot(arc.x, plane.normal));
  double largest = 0.0;
  for (const double angle : {top, top - Nu_PI, top + Nu_PI, top + Nu_2PI}) {
    if (angle >= 0.0 && arc.Contains(angle)) largest = std::max(largest, std::fabs(plane.Height(arc.At(angle))));
  }
  return largest;
}

}  // namespace

// Of the polygon of the ends, and of the circular segments between arcs and chords.
Vec3 VectorArea(const PieceChain& chain) {
  BlockSums<3> sums;
  const Vec3 first = chain.Ends(0).start;
  for (int i = 0; i < chain.Size(); ++i) {
    Vec3 twice = Cross(chain.Ends(i).start - first, chain.Ends(i).end - first);
    if (const Arc3* arc = chain.ArcAt(i)) {
      twice = twice + (arc->radius * arc->radius * (arc->sweep - Sin(arc->sweep))) * arc->Axis();
    }
    sums.Add({twice.x, twice.y, twice.z});
  }
  return 0.5 * Vec3{sums[0], sums[1], sums[2]};
}

namespace {

Plane3 PlaneOf(const PieceChain& chain, double tol) {
  const std::vector<Vec3> points = PointsOf(chain, {0.25, 0.5, 0.75});
  PointBlocks blocks({&points[0].x, sizeof(Vec3), points.size()}, points[0]);
  const PrincipalDirection along = FindPrincipalDirection(blocks, Extent::largest);
  const Vec3 mean = blocks.InCallersFrame(along.mean);
  if (!along.finite) return {{kQuietNaN, kQuietNaN, kQuietNaN}, {kQuietNaN, kQuietNaN, kQuietNaN}};
  if (!IsFinite(along.direction)) return {points[0], {0.0, 0.0, 1.0}};
  if (IsOnLine(points, {mean, along.direction}, tol)) return {mean, UprightNormal(along.direction)};
  const Vec3 normal = FindPrincipalDirection(blocks, Extent::smallest).direction;
  const double side = Dot(VectorArea(chain), normal);
  const bool down = side != 0.0 ? side < 0.0 : normal.z < 0.0;
  return {mean, down ? -1.0 * normal : normal};
}

}  // namespace

Plane3 CarrierOf(const PieceChain& chain, double tol) {
  const double scale = SafeScale(chain.LargestCoordinate());
  if (scale == 1.0) return PlaneOf(chain, tol);
  const Plane3 scaled = PlaneOf(chain.Scaled(scale), scale * tol);
  return {(1.0 / scale) * scaled.point, scaled.normal};
}

double LargestDistance(const PieceChain& chain, const Plane3& plane) {
  double largest = 0.0;
  const auto include = [&](double height) {
    if (!(height <= largest)) largest = height;  // a NaN stays
  };
  for (int i = 0; i < chain.Size(); ++i) {
    include(std::fabs(plane.Height(chain.Ends(i).start)));
    include(std::fabs(plane.Height(chain.Ends(i).end)));
    if (const Arc3* arc = chain.ArcAt(i)) include(LargestDistance(*arc, plane));
  }
  return largest;
}

double TolOf(const PieceChain& chain) {
  return CoincidenceTol(NuGetLengthTol(), chain.LargestCoordinate());
}

CNuVector PlaneNormalOf(const CNuBoundedCurve& curve) {
  return WithMemory("CNuBoundedCurve::GetStartData()", [&] {
    const PieceChain chain = PiecesOf(curve);
    return ToVector(CarrierOf(chain, TolOf(chain)).normal);
  });
}

double HeightOf(const CNuBoundedCurve& curve) {
  return WithMemory("CNuBoundedCurve::IsPlanar()", [&] {
    const PieceChain chain = PiecesOf(curve);
    return LargestDistance(chain, CarrierOf(chain, TolOf(chain)));
  });
}

bool TouchesItself(const CNuBoundedCurve& curve) {
  return WithMemory("CNuBoundedCurve::IsSelfIntersecting()", [&] {
    const PieceChain chain = PiecesOf(curve);
    return TouchesItself(chain, TolOf(chain));
  });
}

}  // namespace nu::internal
