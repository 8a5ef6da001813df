#ifndef NU_ENGINE_QUADRATURE_BREAK_MEMORY_H
#define NU_ENGINE_QUADRATURE_BREAK_MEMORY_H

#include <vector>

#include "nu/engine/quadrature/quadrature.h"

namespace nu::engine::quadrature {

// Records where the integrals over parallel lines met breaks, by the place x of the line. Breaks of a function of
// several variables move with x continuously, so neighbouring lines show where to look; without them a line would miss
// what is narrower than the distance of its samples.
class BreakMemory {
 public:
  // Allocates all memory that is ever needed; false where there is none.
  bool MakeRoom();

  // Predicts the breaks at x from those of the nearest lines.
  Places Near(double x) const;
  // A line without breaks is not recorded.
  void Note(double x, const Places& places);
  void Clear() { m_lines.clear(); }
  bool IsEmpty() const { return m_lines.empty(); }

 private:
  struct Line {
    double x;
    Places places;
  };
  static bool IsBefore(const Line& line, double x) { return line.x < x; }
  static Places OnStraightLines(const Line& first, const Line& second, double x);

  std::vector<Line> m_lines;  // in ascending order
};

}  // namespace nu::engine::quadrature

#endif
