#include "picture/deviation_map.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <utility>

namespace {

constexpr std::size_t kMostDots = 8000;
constexpr double kCell = 1;  // page millimetres

using Rgb = std::array<double, 3>;
constexpr Rgb kColours[] = {{23, 64, 140},   {76, 136, 196}, {166, 203, 227}, {236, 232, 222},
                            {244, 181, 142}, {214, 96, 77},  {142, 20, 36}};
constexpr double kIntervals = 6;

std::string Hex(const Rgb& colour) {
  constexpr const char* kDigits = "0123456789abcdef";
  std::string text = "#";
  for (const double part : colour) {
    const int value = static_cast<int>(std::lround(part));
    text += kDigits[value / 16];
    text += kDigits[value % 16];
  }
  return text;
}

std::vector<MapPoint> CellMeans(const std::vector<MapPoint>& dots) {
  std::map<std::pair<int, int>, std::pair<double, double>> cells;  // sum and count
  for (const MapPoint& dot : dots) {
    auto& [sum, count] = cells[{static_cast<int>(dot.at.x / kCell), static_cast<int>(dot.at.y / kCell)}];
    sum += dot.deviation;
    ++count;
  }
  std::vector<MapPoint> means;
  means.reserve(cells.size());
  for (const auto& [cell, total] : cells) {
    means.push_back({{(cell.first + 0.5) * kCell, (cell.second + 0.5) * kCell}, total.first / total.second});
  }
  return means;
}

}  // namespace

std::string ColourScale::Colour(double deviation) const {
  const double place = std::clamp((deviation / m_limit + 1) / 2 * kIntervals, 0.0, kIntervals);
  const auto below = static_cast<std::size_t>(std::min(place, kIntervals - 1));
  const double part = place - static_cast<double>(below);
  Rgb colour{};
  for (std::size_t i = 0; i < 3; ++i)
    colour[i] = kColours[below][i] + part * (kColours[below + 1][i] - kColours[below][i]);
  return Hex(colour);
}

void ColourScale::DrawLegend(Page& page, PagePoint corner, double width) const {
  constexpr int kPatches = 120;
  constexpr double kThickness = 4;
  Canvas& canvas = page.Drawing();
  const double patch = width / kPatches;
  for (int i = 0; i < kPatches; ++i) {
    const double deviation = ((i + 0.5) / kPatches * 2 - 1) * m_limit;
    // A little wider, so that no seams show between the patches.
    canvas.Rectangle({corner.x + i * patch, corner.y}, i + 1 < kPatches ? 1.5 * patch : patch, kThickness,
                     "fill='" + Colour(deviation) + "'");
  }
  canvas.Rectangle(corner, width, kThickness, style::kFrame);
  const double shown = m_limit * page.PerLength();
  const Ticks ticks(-shown, shown, 8);
  for (const double tick : ticks.values) {
    const double x = corner.x + (tick / shown + 1) / 2 * width;
    canvas.Line({x, corner.y + kThickness}, {x, corner.y + kThickness + 1}, style::kFrame);
    canvas.Text({x, corner.y + kThickness + 4}, ticks.SignedText(tick), {2.7, "middle", "#5c6670", false, 0});
  }
  canvas.Text({corner.x + width + 3, corner.y + 3}, page.DeviationSymbol(), {3, "start", "#22272e", false, 0});
}

bool DrawDots(Canvas& canvas, const std::vector<MapPoint>& dots, double area, const ColourScale& scale) {
  if (dots.size() > kMostDots) {
    for (const MapPoint& dot : CellMeans(dots)) {
      canvas.Rectangle({dot.at.x - kCell / 2, dot.at.y - kCell / 2}, 1.02 * kCell, 1.02 * kCell,
                       "fill='" + scale.Colour(dot.deviation) + "'");
    }
    return true;
  }
  const double radius = std::clamp(0.5 * std::sqrt(area / static_cast<double>(dots.size())), 0.4, 2.0);
  for (const MapPoint& dot : dots) canvas.Circle(dot.at, radius, "fill='" + scale.Colour(dot.deviation) + "'");
  return false;
}
