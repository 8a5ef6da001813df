// Offsets of chains of segments and arcs: the chain in the coordinates of its plane, scaled to a size of about 1 and,
// for distances to the left, mirrored; the result on its way back.

#include <algorithm>
#include <cmath>

#include "nu/curves/circular_arc.h"
#include "nu/curves/composite_curve.h"
#include "nu/curves/internal/chain_plane.h"
#include "nu/curves/internal/curve_pieces.h"
#include "nu/curves/internal/offset_chain2.h"
#include "nu/curves/internal/plane_axes.h"
#include "nu/curves/line_segment.h"
#include "nu/foundation/internal/failures.h"
#include "nu/geometry/internal/extents.h"

using nu::internal::Arc3;
using nu::internal::CoincidenceTol;
using nu::internal::FailOperation;
using nu::internal::LargestComponent;
using nu::internal::OffsetChain;
using nu::internal::OffsetCorner;
using nu::internal::Piece2;
using nu::internal::PieceChain;
using nu::internal::PlaneAxes;
using nu::internal::SafeNorm;
using nu::internal::Segment3;
using nu::internal::ToPoint;
using nu::internal::ToVector;
using nu::internal::Vec2;
using nu::internal::Vec3;

namespace {

constexpr const char* kOffset = "CNuCompositeCurve::Offset()";

// The coordinates in which a chain is offset to the right.
class OffsetFrame {
 public:
  OffsetFrame(const PlaneAxes& axes, double scale, bool mirrored)
      : m_axes(axes), m_scale(scale), m_side(mirrored ? -1.0 : 1.0) {}

  Vec2 Direction(Vec3 v) const {
    const Vec2 local = m_axes.LocalDirection(v);
    return {local.x, m_side * local.y};
  }
  Vec2 Local(Vec3 p) const { return m_scale * Direction(p - m_axes.origin); }
  Vec3 Global(Vec2 p) const { return m_axes.Global((1.0 / m_scale) * Vec2{p.x, m_side * p.y}); }

  Piece2 Local(const Segment3& segment) const {
    return nu::internal::SegmentBetween(Local(segment.start), Local(segment.end));
  }
  Piece2 Local(const Arc3& arc) const {
    const double side = Dot(arc.Axis(), m_axes.normal) > 0.0 ? m_side : -m_side;
    const double radius = m_scale * arc.radius;
    return {Local(arc.start), Local(arc.end), Direction(arc.y), side / radius, radius * arc.sweep};
  }

  Segment3 GlobalEnds(const Piece2& piece) const { return {Global(piece.start), Global(piece.end)}; }
  Vec3 GlobalCentre(const Piece2& arc) const {
    return Global(arc.start + (1.0 / arc.curvature) * Perpendicular(arc.direction));
  }
  Vec3 GlobalAxis(const Piece2& arc) const { return (arc.curvature > 0.0 ? m_side : -m_side) * m_axes.normal; }
  double GlobalRadius(const Piece2& arc) const { return 1.0 / (m_scale * std::fabs(arc.curvature)); }

 private:
  PlaneAxes m_axes;
  double m_scale;
  double m_side;
};

// Of coordinates, and of radii, on whose rounding the points of arcs depend.
double SizeOf(const PieceChain& chain) {
  double size = chain.LargestCoordinate();
  for (int i = 0; i < chain.Size(); ++i) {
    if (const Arc3* arc = chain.ArcAt(i)) size = std::max({size, arc->radius, LargestComponent(arc->centre)});
  }
  return size;
}

bool HasGap(const PieceChain& chain, double tol) {
  for (int i = 1; i < chain.Size(); ++i) {
    if (!(SafeNorm(chain.Ends(i).start - chain.Ends(i - 1).end) <= tol)) return true;
  }
  return false;
}

// From its first point on.
double ReachOf(const PieceChain& chain) {
  const Vec3 first = chain.Ends(0).start;
  double reach = 0.0;
  for (int i = 0; i < chain.Size(); ++i) {
    reach = std::max(reach, LargestComponent(chain.Ends(i).end - first));
    if (const Arc3* arc = chain.ArcAt(i)) reach = std::max(reach, LargestComponent(FarthestOn(*arc, first) - first));
  }
  return reach;
}

std::vector<Piece2> LocalPieces(const PieceChain& chain, const OffsetFrame& frame, double tol) {
  std::vector<Piece2> pieces;
  pieces.reserve(static_cast<std::size_t>(chain.Size()));
  for (int i = 0; i < chain.Size(); ++i) {
    const Arc3* arc = chain.ArcAt(i);
    const Piece2 piece = arc != nullptr ? frame.Local(*arc) : frame.Local(chain.Ends(i));
    if (piece.length > tol) pieces.push_back(piece);
  }
  return pieces;
}

}  // namespace

std::unique_ptr<CNuCompositeCurve> CNuCompositeCurve::OffsetOf(const PieceChain& chain, double distance,
                                                               const Vec3& normal, int shape, const char* where) {
  const double tol = CoincidenceTol(NuGetLengthTol(), std::max(SizeOf(chain), std::fabs(distance)));
  const nu::internal::Plane3 plane{chain.Ends(0).start, normal};
  if (!(LargestDistance(chain, plane) <= tol)) FailOperation(45, "Offset of non-planar curve", where);
  if (shape != 0 && shape != 1) FailOperation(45, "Offset with different shape", where);
  if (HasGap(chain, tol)) FailOperation(26, "Offset", where);
  const double scale = nu::internal::ScaleFor(std::max(ReachOf(chain), std::fabs(distance)));
  const OffsetFrame frame(PlaneAxes(plane), scale, distance < 0.0);
  const std::vector<Piece2> pieces = LocalPieces(chain, frame, scale * tol);
  if (pieces.empty()) FailOperation(28, "Offset", where);
  const bool closed = SafeNorm(chain.Ends(chain.Size() - 1).end - plane.point) <= tol;
  const OffsetCorner corner = shape == 0 ? OffsetCorner::sharp : OffsetCorner::round;
  OffsetChain moved{OffsetChain::Outcome::moved, pieces};
  if (distance != 0.0) moved = OffsetPieces(pieces, closed, scale * std::fabs(distance), corner, scale * tol);
  if (moved.outcome == OffsetChain::Outcome::broken) FailOperation(30, "Offset", where);
  if (moved.outcome != OffsetChain::Outcome::moved) FailOperation(28, "Offset", where);
  auto result = std::make_unique<CNuCompositeCurve>();
  for (const Piece2& piece : moved.pieces) {
    const Segment3 ends = frame.GlobalEnds(piece);
    if (piece.curvature == 0.0) {
      result->Add(std::make_unique<CNuLineSegment>(ToPoint(ends.start), ToPoint(ends.end)), true);
      continue;
    }
    const CNuCircularArc arc(ToPoint(frame.GlobalCentre(piece)), ToPoint(ends.start), ToPoint(ends.end),
                             ToVector(frame.GlobalAxis(piece)), frame.GlobalRadius(piece),
                             std::fabs(piece.curvature) * piece.length);
    result->Add(std::make_unique<CNuCircularArc>(arc), true);
  }
  return result;
}

CNuBoundedCurve* CNuCompositeCurve::Offset(double distance, const CNuVector& normal, int shape) {
  RequireSegments(kOffset);
  const Vec3 given = nu::internal::RequireOffset(distance, normal, kOffset);
  return OffsetOf(nu::internal::PiecesOf(*this), distance, given, shape, kOffset).release();
}

CNuBoundedCurve* CNuCompositeCurve::Offset(double distance) {
  RequireSegments(kOffset);
  return Offset(distance, PlaneNormal(), 0);
}
