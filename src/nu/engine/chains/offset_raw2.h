#ifndef NU_ENGINE_CHAINS_OFFSET_RAW2_H
#define NU_ENGINE_CHAINS_OFFSET_RAW2_H

#include <vector>

#include "nu/engine/chains/piece2.h"

namespace nu::engine::chains {

// Beyond the outer side of a corner the offset goes around it at the distance, or straight on until both sides meet.
enum class OffsetCorner { round, sharp };

// A part of the answer; a border of what is at the distance, where an answer may end; one that a sharp corner hides.
enum class RawRole : char { kept, border, hidden };

// A place of a piece that is a node.
struct RawCut {
  int piece;
  double at;
  int node;
};

// All pieces of a chain moved to the right, each by itself, with what joins them at the outer sides of corners. They
// run from node to node. At inner sides they run past each other; where they cross right there, however flatly, is cut
// here, other crossings are left to the caller. Pieces that have shrunk to nothing are left out.
struct RawOffset {
  std::vector<Piece2> pieces;
  std::vector<int> from, to;
  std::vector<RawRole> roles;
  std::vector<Vec2> nodes;
  std::vector<RawCut> cuts;  // two by two, at one node
  bool foldsBack = false;    // a sharp corner has no end
};

// Adds a closed chain to the raw offset: the first `kept` pieces, and the corners between them, or all. Ends that are
// no farther apart than `snap` are one. Returns the nodes where the offset of the first piece starts and that of the
// last kept one ends.
struct RawEnds {
  int start, end;
};
RawEnds AddRawOffset(const std::vector<Piece2>& chain, std::size_t kept, double distance, OffsetCorner corner,
                     double snap, RawOffset& raw);

}  // namespace nu::engine::chains

#endif
