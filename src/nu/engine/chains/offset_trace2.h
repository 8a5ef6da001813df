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

// Finds the curves that parts of a raw offset make up. They leave what is free, away from the chain, to their right,
// and touch where several meet at a node, but do not cross.
class Trace {
 public:
  // All of them must outlive the trace.
  Trace(const RawOffset& raw, const std::vector<int>& group, const std::vector<TraceEdge>& edges);

  // A group of nodes where a curve may start and end.
  void AllowEnd(int group) { m_isEnd[static_cast<std::size_t>(group)] = 1; }

  // All curves, those that are not closed first.
  std::vector<std::vector<Piece2>> Curves();
  // Whether these leave out more than short paths, up to a length, that join two of their nodes once more.
  bool IsTorn(double longest) const;

 private:
  using Path = std::vector<int>;  // of edges
  // An edge as it is seen from a node.
  struct Ray {
    double angle;
    int edge;
    bool isIn;
  };

  void Prune();
  void DropWithout(int node, std::vector<int>& open);
  bool IsSame(int edge, int other) const;
  Piece2 Away(int edge, bool isIn) const;
  bool IsSwapped(const Ray& first, const Ray& second) const;
  std::vector<Ray> RaysAt(int node) const;
  void MatchAt(int node);
  void Match();
  bool MendAt(int open);
  void Mend();
  Path Walk(int first);
  bool IsOpen(int edge) const;
  void TakeOpen(std::vector<std::vector<Piece2>>& paths);
  void MarkPassed(const Path& path);
  void AddLoops(std::vector<std::vector<Piece2>>& loops);
  std::vector<Piece2> PiecesOf(const Path& path, bool closed) const;
  std::vector<char> NodesReached(bool fromStart) const;
  double AreaOf(const Path& path) const;
  double LengthOf(const Path& path) const;

  const RawOffset& m_raw;
  const std::vector<TraceEdge>& m_edges;
  std::vector<std::vector<int>> m_out, m_in;  // edges of each group of nodes
  std::vector<char> m_isEnd;
  std::vector<char> m_isGone;           // dropped or used
  std::vector<int> m_next, m_previous;  // of each edge, or -1
  std::vector<char> m_isPassed;         // groups of nodes on the curves found
  std::vector<Path> m_leftOut;          // paths that are no curves
};

}  // namespace nu::engine::chains

#endif
