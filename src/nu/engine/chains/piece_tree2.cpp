#include "nu/engine/chains/piece_tree2.h"

#include <algorithm>

#include "nu/engine/base/elementary.h"
#include "nu/foundation/constants.h"

namespace nu::engine::chains {

namespace {

// Below this number of pieces a box of their own costs more than it rules out.
constexpr int kLeafPieces = 4;

// How far an arc leaves the way between its ends, at most.
double Bulge(const Piece2& piece) {
  if (piece.curvature == 0.0) return 0.0;
  const double turn = std::fabs(piece.curvature * piece.length);
  const double s = turn > Nu_PI ? 1.0 : Sin(0.25 * turn);
  return 2.0 * s * s / std::fabs(piece.curvature);
}

}  // namespace

PieceTree2::PieceTree2(const std::vector<Piece2>& pieces) : m_pieces(pieces) {
  m_boxes.reserve(pieces.size());
  m_nodes.reserve(pieces.size());
  for (const Piece2& piece : pieces) m_boxes.push_back(BoxOf(piece));
  Build(0, static_cast<int>(pieces.size()));
}

void PieceTree2::Build(int begin, int end) {
  const std::size_t here = m_nodes.size();
  const auto at = [&](int i) -> const Piece2& { return m_pieces[static_cast<std::size_t>(i)]; };
  m_nodes.push_back({{}, begin, end, 0, SegmentBetween(at(begin).start, at(end - 1).end), 0.0});
  m_nodes[here].width = WidthOf(m_nodes[here]);
  if (end - begin <= kLeafPieces) {
    for (int i = begin; i < end; ++i) m_nodes[here].box.Include(BoxAt(i));
    return;
  }
  const int middle = begin + (end - begin) / 2;
  Build(begin, middle);
  const std::size_t right = m_nodes.size();
  m_nodes[here].right = static_cast<int>(right);
  Build(middle, end);
  m_nodes[here].box.Include(m_nodes[here + 1].box);
  m_nodes[here].box.Include(m_nodes[right].box);
}

// A way that leads back to its start has no direction, and its box alone must do.
double PieceTree2::WidthOf(const Node& node) const {
  if (!(node.way.length > 0.0)) return HUGE_VAL;
  double width = 0.0;
  for (int i = node.begin; i < node.end; ++i) {
    const Piece2& piece = m_pieces[static_cast<std::size_t>(i)];
    const double reach = std::max(node.way.DistanceTo(piece.start), node.way.DistanceTo(piece.end));
    width = std::max(width, reach + Bulge(piece));
  }
  return width;
}

bool PieceTree2::CanBeWithin(const Node& node, double distance, Vec2 p) const {
  ++m_visits;
  if (!(node.box.DistanceTo(p) < distance)) return false;
  return node.width == HUGE_VAL || node.way.DistanceTo(p) - node.width < distance;
}

int PieceTree2::FindWithin(int a, double distance, Vec2 p) const {
  const Node& node = m_nodes[static_cast<std::size_t>(a)];
  if (!CanBeWithin(node, distance, p)) return -1;
  if (!node.IsLeaf()) {
    const int found = FindWithin(a + 1, distance, p);
    return found >= 0 ? found : FindWithin(node.right, distance, p);
  }
  for (int i = node.begin; i < node.end; ++i) {
    if (m_pieces[static_cast<std::size_t>(i)].DistanceTo(p) < distance) return i;
  }
  return -1;
}

std::optional<Vec2> PieceTree2::ClosestWithin(double distance, Vec2 p) const {
  int closest = -1;
  FindCloser(0, p, distance, closest);
  if (closest < 0) return std::nullopt;
  return m_pieces[static_cast<std::size_t>(closest)].ClosestTo(p);
}

void PieceTree2::FindCloser(int a, Vec2 p, double& distance, int& closest) const {
  const Node& node = m_nodes[static_cast<std::size_t>(a)];
  if (!CanBeWithin(node, distance, p)) return;
  if (!node.IsLeaf()) {
    const Node& left = m_nodes[static_cast<std::size_t>(a) + 1];
    const Node& right = m_nodes[static_cast<std::size_t>(node.right)];
    const bool rightFirst = right.box.DistanceTo(p) < left.box.DistanceTo(p);
    FindCloser(rightFirst ? node.right : a + 1, p, distance, closest);
    return FindCloser(rightFirst ? a + 1 : node.right, p, distance, closest);
  }
  for (int i = node.begin; i < node.end; ++i) {
    const double here = m_pieces[static_cast<std::size_t>(i)].DistanceTo(p);
    if (!(here < distance)) continue;
    distance = here;
    closest = i;
  }
}

}  // namespace nu::engine::chains
