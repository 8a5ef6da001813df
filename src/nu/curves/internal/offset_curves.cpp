// Offsets of chains of segments and arcs: the chain in the coordinates of its plane, scaled to a size of about 1 and,
// for distances to the left, mirrored; the result is mapped back. What is so large or small that its powers leave the
// doubles is scaled before that.

#include "nu/curves/internal/offset_curves.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

#include "nu/curves/internal/chain_plane.h"
#include "nu/curves/internal/plane_axes.h"
#include "nu/engine/chains/offset_chain2.h"
#include "nu/engine/chains/offset_polygon2.h"
#include "nu/engine/chains/self_contact.h"
#include "nu/engine/points/extents.h"
#include "nu/foundation/internal/failures.h"
#include "nu/foundation/tolerances.h"

namespace nu::internal {

namespace {

// The coordinates in which a chain is offset to the right.
class OffsetFrame {
 public:
  OffsetFrame(Vec3 origin, Vec3 normal, double scale, bool mirrored)
      : m_axes(AxesAcross(normal, origin)), m_normal(normal), m_scale(scale), m_side(mirrored ? -1.0 : 1.0) {}

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
    const double side = Dot(arc.Axis(), m_normal) > 0.0 ? m_side : -m_side;
    const double radius = m_scale * arc.radius;
    return {Local(arc.start), Local(arc.end), Direction(arc.y), side / radius, radius * arc.sweep};
  }

  PieceChain Global(const std::vector<Piece2>& pieces) const {
    PieceChain chain;
    chain.Reserve(pieces.size());
    for (const Piece2& piece : pieces) {
      const Segment3 ends{Global(piece.start), Global(piece.end)};
      if (piece.curvature == 0.0) {
        chain.Add(ends);
      } else {
        chain.Add(GlobalArc(piece, ends));
      }
    }
    return chain;
  }

 private:
  Arc3 GlobalArc(const Piece2& piece, const Segment3& ends) const {
    Arc3 arc;
    arc.centre = Global(piece.start + (1.0 / piece.curvature) * Perpendicular(piece.direction));
    arc.start = ends.start;
    arc.end = ends.end;
    arc.x = Unit(arc.start - arc.centre);
    arc.y = Cross((piece.curvature > 0.0 ? m_side : -m_side) * m_normal, arc.x);
    arc.radius = 1.0 / (m_scale * std::fabs(piece.curvature));
    arc.sweep = std::fabs(piece.curvature) * piece.length;
    return arc;
  }

  PlaneAxes m_axes;
  Vec3 m_normal;
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

bool EndsMeet(const PieceChain& chain, double tol) {
  return SafeNorm(chain.Ends(chain.Size() - 1).end - chain.Ends(0).start) <= tol;
}

bool IsFinite(const PieceChain& chain) {
  for (int i = 0; i < chain.Size(); ++i) {
    if (!IsFinite(chain.Ends(i).start) || !IsFinite(chain.Ends(i).end)) return false;
  }
  return true;
}

// Of segments alone; empty where moved edges vanish in a way that can split the curve.
std::vector<Piece2> MovedEdges(const std::vector<Piece2>& pieces, bool closed, double distance, double tol) {
  std::vector<Vec2> corners;
  corners.reserve(pieces.size() + 1);
  for (const Piece2& piece : pieces) {
    if (piece.curvature != 0.0) return {};
    corners.push_back(piece.start);
  }
  if (!closed) corners.push_back(pieces.back().end);
  if (closed && corners.size() < 3) return {};
  std::vector<Vec2> vertices = OffsetEdges(corners, closed, distance).vertices;
  const auto coincide = [&](Vec2 p, Vec2 q) { return Norm(p - q) <= tol; };
  vertices.erase(std::unique(vertices.begin(), vertices.end(), coincide), vertices.end());
  if (closed && vertices.size() > 1 && coincide(vertices.back(), vertices.front())) vertices.pop_back();
  if (closed && vertices.size() < 3) return {};
  std::vector<Piece2> edges;
  const std::size_t size = vertices.size();
  for (std::size_t i = 0; i + (closed ? 0 : 1) < size; ++i) {
    edges.push_back(SegmentBetween(vertices[i], vertices[i + 1 < size ? i + 1 : 0]));
  }
  return edges;
}

// The offset of one chain, in the coordinates of its plane.
class OffsetTask {
 public:
  OffsetTask(const PieceChain& chain, double distance, Vec3 normal, int shape, const char* where, double lengthTol)
      : m_chain(chain),
        m_distance(distance),
        m_tol(CoincidenceTol(lengthTol, std::max(SizeOf(chain), std::fabs(distance)))),
        m_scale(ScaleFor(std::max(ReachOf(chain), std::fabs(distance)))),
        m_shape(shape),
        m_where(where),
        m_closed(EndsMeet(chain, m_tol)),
        m_frame(chain.Ends(0).start, normal, m_scale, distance < 0.0) {
    const double height = LargestDistance(chain, {chain.Ends(0).start, normal});
    if (!(height <= m_tol)) FailOperation(NuOperationUnsupported, "Offset of non-planar curve", where);
    if (shape != 0 && shape != 1) FailOperation(NuOperationUnsupported, "Offset with different shape", where);
    if (HasGap(chain, m_tol)) FailOperation(NuOperationOffsetDirection, "Offset", where);
  }

  std::vector<PieceChain> Run() const {
    const std::vector<Piece2> pieces = LocalPieces(m_chain, m_frame, m_scale * m_tol);
    if (pieces.empty()) return {};
    if (m_distance == 0.0) return Single(m_frame.Global(pieces));
    const double reach = m_scale * std::fabs(m_distance);
    if (m_shape == 0) {
      const std::vector<Piece2> edges = MovedEdges(pieces, m_closed, reach, m_scale * m_tol);
      PieceChain moved = m_frame.Global(edges);
      if (IsWhole(moved)) return Single(std::move(moved));
    }
    const OffsetCorner corner = m_shape == 0 ? OffsetCorner::sharp : OffsetCorner::round;
    const OffsetChain moved = OffsetPieces(pieces, m_closed, reach, corner, m_scale * m_tol);
    if (moved.outcome == OffsetChain::Outcome::broken) FailOperation(NuOperationOffsetParts, "Offset", m_where);
    if (moved.outcome == OffsetChain::Outcome::foldsBack) FailOperation(NuOperationOffsetVanishes, "Offset", m_where);
    if (moved.outcome == OffsetChain::Outcome::tangle) FailOperation(NuOperationUnsupported, "calculation", m_where);
    std::vector<PieceChain> curves;
    for (const std::vector<Piece2>& curve : moved.curves) curves.push_back(m_frame.Global(curve));
    return curves;
  }

 private:
  // A braced list would copy the chain.
  static std::vector<PieceChain> Single(PieceChain&& chain) {
    std::vector<PieceChain> curves;
    curves.push_back(std::move(chain));
    return curves;
  }

  // Whether the moved edges are all of the offset, as is usual: they run into nothing.
  bool IsWhole(const PieceChain& moved) const {
    constexpr double kRoundings = 64.0;  // of the corners' velocities and of the maps to the plane and back
    if (moved.Size() == 0) return false;
    const double size = std::max(m_chain.LargestCoordinate(), std::fabs(m_distance));
    const double slack = std::max(m_tol, kRoundings * DBL_EPSILON * size);
    const bool keepsAway = ClosestBetween(moved, m_chain).distance >= std::fabs(m_distance) - slack;
    return keepsAway && !TouchesItself(moved, m_tol);
  }

  const PieceChain& m_chain;
  double m_distance;
  double m_tol;
  double m_scale;
  int m_shape;
  const char* m_where;
  bool m_closed;
  OffsetFrame m_frame;
};

}  // namespace

std::vector<PieceChain> OffsetCurves(const PieceChain& chain, double distance, Vec3 normal, int shape,
                                     const char* where) {
  const double factor = SafeScale(std::max(SizeOf(chain), std::fabs(distance)));
  if (factor == 1.0) return OffsetTask(chain, distance, normal, shape, where, NuGetLengthTol()).Run();
  const PieceChain scaled = chain.Scaled(factor);
  std::vector<PieceChain> curves =
      OffsetTask(scaled, factor * distance, normal, shape, where, factor * NuGetLengthTol()).Run();
  for (PieceChain& curve : curves) {
    curve = curve.Scaled(1.0 / factor);
    if (!IsFinite(curve)) FailOperation(NuOperationOffsetNotFinite, "Offset", where);
  }
  return curves;
}

PieceChain OneOffset(const PieceChain& chain, double distance, Vec3 normal, int shape, const char* where) {
  std::vector<PieceChain> curves = OffsetCurves(chain, distance, normal, shape, where);
  if (curves.empty()) FailOperation(NuOperationOffsetVanishes, "Offset", where);
  if (curves.size() > 1) FailOperation(NuOperationOffsetParts, "Offset", where);
  return std::move(curves.front());
}

}  // namespace nu::internal
