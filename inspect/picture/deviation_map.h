#ifndef NU_INSPECT_DEVIATION_MAP_H
#define NU_INSPECT_DEVIATION_MAP_H

#include <string>
#include <vector>

#include "picture/page.h"

// Deviations as colours: blue below, pale at zero, red above, the same span on both sides.
class ColourScale {
 public:
  explicit ColourScale(double limit) : m_limit(limit) {}

  std::string Colour(double deviation) const;

  // A bar with ticks and unit, its top left corner at `corner`.
  void DrawLegend(Page& page, PagePoint corner, double width) const;

 private:
  double m_limit;
};

struct MapPoint {
  PagePoint at;
  double deviation;
};

// Dots of a size that fits their spacing over `area` square millimetres of the page; of very many, the mean of each
// small cell. Returns whether means were drawn.
bool DrawDots(Canvas& canvas, const std::vector<MapPoint>& dots, double area, const ColourScale& scale);

#endif
