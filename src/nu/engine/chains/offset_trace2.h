#ifndef NU_ENGINE_CHAINS_OFFSET_TRACE2_H
#define NU_ENGINE_CHAINS_OFFSET_TRACE2_H

#include <vector>

#include "nu/engine/chains/offset_raw2.h"

namespace nu::engine::chains {

// A part of a raw piece that runs from one group of nodes to another.
struct TraceEdge {
  int piece;
  double from, to;
  int start, end;
};

struct TracedCurves {
  std::vector<std::vector<Piece2>> curves;  // those that are not closed first
  bool isTorn;  // they leave out more than short paths that join two of their nodes once more
};

// The curves that parts of a raw offset make up. They leave what is free, away from the chain, to their right, and
// touch where several meet at a node, but do not cross. `group` holds the groups of the nodes; a curve may start and
// end at those of `ends`. Paths up to a length are short.
TracedCurves TraceCurves(const RawOffset& raw, const std::vector<int>& group, const std::vector<TraceEdge>& edges,
                         const std::vector<int>& ends, double longest);

}  // namespace nu::engine::chains

#endif
