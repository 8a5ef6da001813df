#include "nu/engine/chains/offset_raw2.h"

#include <algorithm>
#include <cfloat>

#include "nu/engine/base/elementary.h"
#include "nu/foundation/constants.h"

namespace nu::engine::chains {

namespace {

// A gap between the offsets of two pieces leaves the distance by an eighth of its square over the distance, or over a
// radius of theirs. Of coordinates of about 1 that is below rounding where the gap is below the root of one, and small
// beside the distance and the pieces.
constexpr double kSmoothGap = 1e-9;
constexpr double kSmallPart = 1e-3;

enum class Kind { smooth, outer, inner };

// Where one piece ends and the next one starts.
struct Corner {
  Vec2 before, after;  // the unit directions of the pieces
  Vec2 end, start;     // of their offsets
  double turn;         // to the left
  Kind kind;
  bool isSharp = false;
  double reach = 0.0;  // of a sharp corner
  int endNode = 0;
  int startNode = 0;
  int tipNode = 0;
};

class Builder {
 public:
  Builder(const std::vector<Piece2>& chain, std::size_t kept, double distance, OffsetCorner corner, double snap,
          RawOffset& raw)
      : m_chain(chain), m_kept(kept), m_distance(distance), m_corner(corner), m_snap(snap), m_raw(raw) {}

  RawEnds Run() {
    for (std::size_t i = 0; i < m_chain.size(); ++i) m_corners.push_back(CornerAfter(i));
    for (std::size_t i = 0; i < m_chain.size(); ++i) {
      AddPiece(i);
      if (m_corners[i].kind == Kind::outer) AddJoin(i);
    }
    for (std::size_t i = 0; i < m_chain.size(); ++i) {
      if (m_corners[i].kind == Kind::inner) CutCorner(i);
    }
    return {m_corners[Before(0)].startNode, m_corners[m_kept - 1].endNode};
  }

 private:
  std::size_t Next(std::size_t i) const { return i + 1 < m_chain.size() ? i + 1 : 0; }
  std::size_t Before(std::size_t i) const { return i > 0 ? i - 1 : m_chain.size() - 1; }
  // The corner after the last kept piece is one of the curve only where all are kept.
  bool IsKeptCorner(std::size_t i) const { return m_kept == m_chain.size() || i + 1 < m_kept; }

  int AddNode(Vec2 p) {
    m_raw.nodes.push_back(p);
    return static_cast<int>(m_raw.nodes.size()) - 1;
  }

  double SmoothGap(const Piece2& piece, const Piece2& next) const {
    const double length = std::min(LengthLeft(piece), LengthLeft(next));
    return std::max(m_snap, std::min(kSmoothGap, kSmallPart * std::min(length, m_distance)));
  }

  Corner CornerAfter(std::size_t i) {
    constexpr double kFoldTurn = 1e-9;  // what folds back turns to the left
    const Piece2& next = m_chain[Next(i)];
    Corner corner;
    corner.before = m_chain[i].EndDirection();
    corner.after = next.direction;
    corner.end = m_chain[i].end - m_distance * Perpendicular(corner.before);
    corner.start = next.start - m_distance * Perpendicular(corner.after);
    corner.turn = Atan2(Cross(corner.before, corner.after), Dot(corner.before, corner.after));
    if (corner.turn < kFoldTurn - Nu_PI) corner.turn = Nu_PI;
    corner.kind = corner.turn > 0.0 ? Kind::outer : Kind::inner;
    if (Norm(corner.start - corner.end) <= SmoothGap(m_chain[i], next)) corner.kind = Kind::smooth;
    corner.endNode = AddNode(corner.kind == Kind::smooth ? corner.end + 0.5 * (corner.start - corner.end) : corner.end);
    corner.startNode = corner.kind == Kind::smooth ? corner.endNode : AddNode(corner.start);
    if (corner.kind == Kind::outer && m_corner == OffsetCorner::sharp && IsKeptCorner(i)) Sharpen(corner);
    return corner;
  }

  void Sharpen(Corner& corner) {
    constexpr double kLeastSum = 4.0 * DBL_EPSILON;  // the rounding of 1 + cosine
    if (!(1.0 + Cos(corner.turn) > kLeastSum)) m_raw.foldsBack = true;
    corner.isSharp = true;
    corner.reach = m_distance * Tan(0.5 * corner.turn);
    corner.tipNode = AddNode(corner.end + corner.reach * corner.before);
  }

  void Add(const Piece2& piece, int from, int to, RawRole role) {
    m_raw.pieces.push_back(piece);
    m_raw.from.push_back(from);
    m_raw.to.push_back(to);
    m_raw.roles.push_back(role);
  }

  double LengthLeft(const Piece2& piece) const { return piece.OffsetFactor(m_distance) * piece.length; }
  // Sharp corners prolong segments and put segments before and behind arcs.
  bool IsProlonged(std::size_t i) const { return m_chain[i].curvature == 0.0; }

  void AddPiece(std::size_t i) {
    m_rawOf.push_back(-1);
    if (!(LengthLeft(m_chain[i]) > m_snap)) return;
    const Corner& before = m_corners[Before(i)];
    const Corner& after = m_corners[i];
    Piece2 piece = m_chain[i].Offset(m_distance);
    int from = before.startNode;
    int to = after.endNode;
    if (before.isSharp && IsProlonged(i)) {
      piece.start = m_raw.nodes[static_cast<std::size_t>(from = before.tipNode)];
      piece.length += before.reach;
    }
    if (after.isSharp && IsProlonged(i)) {
      piece.end = m_raw.nodes[static_cast<std::size_t>(to = after.tipNode)];
      piece.length += after.reach;
    }
    m_rawOf.back() = static_cast<int>(m_raw.pieces.size());
    Add(piece, from, to, i < m_kept ? RawRole::kept : RawRole::border);
  }

  void AddJoin(std::size_t i) {
    const Corner& corner = m_corners[i];
    const RawRole role = corner.isSharp ? RawRole::hidden : IsKeptCorner(i) ? RawRole::kept : RawRole::border;
    const Piece2 around{corner.end, corner.start, corner.before, 1.0 / m_distance, m_distance * corner.turn};
    Add(around, corner.endNode, corner.startNode, role);
    if (!corner.isSharp) return;
    const Vec2 tip = m_raw.nodes[static_cast<std::size_t>(corner.tipNode)];
    if (!IsProlonged(i)) Add(SegmentBetween(corner.end, tip), corner.endNode, corner.tipNode, RawRole::kept);
    if (!IsProlonged(Next(i))) Add(SegmentBetween(tip, corner.start), corner.tipNode, corner.startNode, RawRole::kept);
  }

  // With the tangents crossing at a distance x behind the end of one offset and before the start of the next, and u
  // from there to where the offsets themselves do: Newton's method on both equations, in terms relative to the small x,
  // which keeps its digits however flat the corner is.
  void CutCorner(std::size_t i) {
    constexpr int kMaxSteps = 20;
    constexpr double kSharpest = 0.1;  // crossings of steeper corners are well known without this
    const Corner& corner = m_corners[i];
    if (m_rawOf[i] < 0 || m_rawOf[Next(i)] < 0 || corner.turn < -kSharpest) return;
    const Piece2& first = m_raw.pieces[static_cast<std::size_t>(m_rawOf[i])];
    const Piece2& second = m_raw.pieces[static_cast<std::size_t>(m_rawOf[Next(i)])];
    const double x = -m_distance * Tan(0.5 * corner.turn);
    const Vec2 m = Perpendicular(corner.before);
    const Vec2 n = Perpendicular(corner.after);
    Vec2 v = -x * corner.before;  // from the end of the first offset
    Vec2 w = x * corner.after;    // from the start of the second one
    for (int step = 0; step < kMaxSteps; ++step) {
      const Vec2 gv = m - first.curvature * v;
      const Vec2 gw = n - second.curvature * w;
      const double fv = Dot(v, m) - 0.5 * first.curvature * Dot(v, v);
      const double fw = Dot(w, n) - 0.5 * second.curvature * Dot(w, w);
      const double det = Cross(gv, gw);
      const Vec2 u = (-1.0 / det) * Vec2{fv * gw.y - fw * gv.y, fw * gv.x - fv * gw.x};
      if (!(Norm(u) <= x)) return;
      v = v + u;
      w = w + u;
      if (Norm(u) <= 4.0 * DBL_EPSILON * x) break;
    }
    const Piece2 back{{}, {}, -1.0 * corner.before, -first.curvature, first.length};
    const Piece2 ahead{{}, {}, corner.after, second.curvature, second.length};
    const double onFirst = first.length - back.ParameterOf(v);
    const double onSecond = ahead.ParameterOf(w);
    if (!(onFirst >= 0.0 && onFirst <= first.length && onSecond >= 0.0 && onSecond <= second.length)) return;
    const int node = AddNode(corner.end + v);
    m_raw.cuts.push_back({m_rawOf[i], onFirst, node});
    m_raw.cuts.push_back({m_rawOf[Next(i)], onSecond, node});
  }

  const std::vector<Piece2>& m_chain;
  std::size_t m_kept;
  double m_distance;
  OffsetCorner m_corner;
  double m_snap;
  RawOffset& m_raw;
  std::vector<Corner> m_corners;
  std::vector<int> m_rawOf;
};

}  // namespace

RawEnds AddRawOffset(const std::vector<Piece2>& chain, std::size_t kept, double distance, OffsetCorner corner,
                     double snap, RawOffset& raw) {
  return Builder(chain, kept, distance, corner, snap, raw).Run();
}

}  // namespace nu::engine::chains
