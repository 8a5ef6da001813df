#include "nu/engine/chains/space_search.h"

namespace nu::engine::chains {

namespace {

// Adds to the box what a segment has in the ball. False when it passes by.
bool IncludePart(const Segment3& segment, const Ball& ball, Box& box) {
  const double t = ClosestParameter(segment, ball.centre);
  const Vec3 aside = segment.At(t) - ball.centre;
  const double room = ball.radius * ball.radius - Dot(aside, aside);
  if (!(room >= 0.0)) return false;
  const Vec3 difference = segment.end - segment.start;
  const double square = Dot(difference, difference);
  // From the closest point, an end included, the segment leaves the ball no later than its line from the line's own.
  const double reach = square > 0.0 ? std::sqrt(room / square) : 0.0;
  Include(segment.At(std::max(0.0, t - reach)), box);
  Include(segment.At(std::min(1.0, t + reach)), box);
  return true;
}

}  // namespace

std::vector<int> FinitePieces(const PieceChain& chain, Box& bounds) {
  std::vector<int> pieces;
  pieces.reserve(static_cast<std::size_t>(chain.Size()));
  for (int i = 0; i < chain.Size(); ++i) {
    if (!IsFinite(chain.Ends(i).start) || !IsFinite(chain.Ends(i).end)) continue;
    Include(chain.BoxOf(i), bounds);
    pieces.push_back(i);
  }
  return pieces;
}

Passing PassingBall(const PieceChain& chain, const std::vector<int>& among, const Ball& ball) {
  Passing passing;
  for (const int i : among) {
    if (const Arc3* arc = chain.ArcAt(i)) {
      if (!(SafeNorm(ClosestOn(*arc, ball.centre) - ball.centre) <= ball.radius)) continue;
      Include(BoxOf(*arc), passing.box);
    } else if (!IncludePart(chain.Ends(i), ball, passing.box)) {
      continue;
    }
    passing.pieces.push_back(i);
  }
  return passing;
}

}  // namespace nu::engine::chains
