#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "picture/deviation_map.h"
#include "text.h"

namespace {

constexpr PagePoint kCorner{33, 33};
constexpr double kMapWidth = 140;
constexpr double kMapHeight = 92;
constexpr double kMargin = 2.5;  // of paper around the outermost points
constexpr PagePoint kLegendCorner{44, 148};
constexpr double kLegendWidth = 118;
constexpr double kTurn = 360;

double Degrees(double y, double x) {
  return std::atan2(y, x) * 180 / std::numbers::pi;
}

double InTurn(double degrees) {
  return degrees - kTurn * std::floor(degrees / kTurn);
}

struct Tick {
  double place;  // from 0 to 1 along the axis of the map
  std::string text;
};

// One axis of the map, over a range of values.
struct MapAxis {
  double Place(double value) const { return extent > 0 ? (value - low) / extent : 0.5; }
  double AnglePlace(double degrees) const { return InTurn(degrees - low) / extent; }

  double low;
  double extent;
  std::vector<Tick> ticks;
};

MapAxis LengthAxis(const std::vector<double>& values) {
  constexpr int kTicks = 7;
  const auto [least, greatest] = std::minmax_element(values.begin(), values.end());
  MapAxis axis{*least, *greatest - *least, {}};
  const Ticks ticks(*least, *greatest, kTicks);
  for (const double tick : ticks.values) axis.ticks.push_back({axis.Place(tick), WithMinusSign(ticks.Text(tick))});
  return axis;
}

// The whole turn from `first` on or, where nothing was measured over a wide gap, from the end of the widest gap on.
MapAxis AngleAxis(std::vector<double> degrees, double first) {
  constexpr double kWideGap = 40;
  constexpr double kSteps[] = {0.1, 0.2, 0.5, 1, 2, 5, 10, 15, 30, 60};
  constexpr double kMostSteps = 12.5;
  for (double& each : degrees) each = InTurn(each);
  std::sort(degrees.begin(), degrees.end());
  double gap = degrees.front() + kTurn - degrees.back();
  MapAxis axis{degrees.front(), 0, {}};
  for (std::size_t i = 1; i < degrees.size(); ++i) {
    if (degrees[i] - degrees[i - 1] <= gap) continue;
    gap = degrees[i] - degrees[i - 1];
    axis.low = degrees[i];
  }
  axis.extent = kTurn - gap;
  if (gap < kWideGap) axis = {first, kTurn, {}};
  axis.extent = std::max(axis.extent, kSteps[0]);
  const auto* step =
      std::find_if(std::begin(kSteps), std::end(kSteps) - 1, [&](double s) { return axis.extent <= kMostSteps * s; });
  const double rounding = 1e-6 * *step;  // a range that ends at a tick shows it
  for (double tick = std::ceil((axis.low - rounding) / *step) * *step; tick <= axis.low + axis.extent + rounding;
       tick += *step) {
    const double named = axis.extent < kTurn ? tick - kTurn * std::floor((tick - first) / kTurn) : tick;
    axis.ticks.push_back({axis.Place(tick), WithMinusSign(Fixed(named, *step < 1 ? 1 : 0)) + "\u00B0"});
  }
  return axis;
}

// The surface cut open along its axis: the angle around it to the right, the position along it upwards; for a torus the
// angle around the tube.
class UnrolledMap {
 public:
  UnrolledMap(const Inspection& inspection, const PictureLabels& labels)
      : m_inspection(inspection),
        m_page(inspection, labels),
        m_canvas(m_page.Drawing()),
        m_isTorus(inspection.tubeCircle > 0),
        m_shift(Dot(inspection.frame.origin, inspection.frame.z)) {
    for (const Vec3& p : inspection.local) {
      m_around.push_back(InTurn(Degrees(p[1], p[0])));
      m_up.push_back(m_isTorus ? Degrees(p[2], std::hypot(p[0], p[1]) - inspection.tubeCircle) : p[2] + m_shift);
    }
    m_x = AngleAxis(m_around, 0);
    m_y = m_isTorus ? AngleAxis(m_up, -kTurn / 2) : LengthAxis(m_up);
  }

  std::string Draw() {
    const ColourScale colours(m_page.LargestDeviation());
    DrawAxes();
    const bool means = DrawPoints(colours);
    m_canvas.Rectangle(kCorner, kMapWidth, kMapHeight, style::kFrame);
    DrawContacts();
    DrawExtremes();
    m_page.Note("0\u00B0 towards " + DirectionName(m_inspection.frame.x));
    m_page.Note("counter-clockwise, seen against the axis");
    if (!m_isTorus) m_page.Note("along the axis from the foot of the origin");
    if (means) m_page.Note("colours: mean of each square mm of paper");
    colours.DrawLegend(m_page, kLegendCorner, kLegendWidth);
    m_canvas.Text({kLegendCorner.x - 3, kLegendCorner.y + 3}, "deviation", {3, "end", "#22272e", false, 0});
    return m_canvas.Finish();
  }

 private:
  static PagePoint At(double x, double y) {
    return {kCorner.x + kMargin + x * (kMapWidth - 2 * kMargin),
            kCorner.y + kMapHeight - kMargin - y * (kMapHeight - 2 * kMargin)};
  }
  PagePoint OnPage(std::size_t i) const {
    return At(m_x.AnglePlace(m_around[i]), m_isTorus ? m_y.AnglePlace(m_up[i]) : m_y.Place(m_up[i]));
  }

  void DrawAxes() {
    const double bottom = kCorner.y + kMapHeight;
    for (const Tick& tick : m_x.ticks) {
      const double x = At(tick.place, 0).x;
      m_canvas.Line({x, kCorner.y}, {x, bottom}, style::kGrid);
      m_canvas.Text({x, bottom + 4.2}, tick.text, {2.7, "middle", "#5c6670", false, 0});
    }
    for (const Tick& tick : m_y.ticks) {
      const double y = At(0, tick.place).y;
      m_canvas.Line({kCorner.x, y}, {kCorner.x + kMapWidth, y}, style::kGrid);
      m_canvas.Text({kCorner.x - 1.5, y + 1}, tick.text, {2.7, "end", "#5c6670", false, 0});
    }
    m_canvas.Text({kCorner.x + kMapWidth / 2, bottom + 10}, "angle around the axis",
                  {3, "middle", "#22272e", false, 0});
    const std::string up =
        m_isTorus ? "angle around the tube, 0\u00B0 outside, 90\u00B0 towards " + DirectionName(m_inspection.frame.z)
                  : "along the axis towards " + DirectionName(m_inspection.frame.z) + " / " + m_page.LengthSymbol();
    m_canvas.Text({kCorner.x - 16, kCorner.y + kMapHeight / 2}, up, {3, "middle", "#22272e", false, -90});
  }

  bool DrawPoints(const ColourScale& colours) {
    std::vector<MapPoint> dots;
    for (std::size_t i = 0; i < m_around.size(); ++i) dots.push_back({OnPage(i), m_inspection.deviations[i]});
    return DrawDots(m_canvas, dots, kMapWidth * kMapHeight, colours);
  }

  void DrawContacts() {
    m_page.DrawContacts([this](std::size_t i) { return std::vector<PagePoint>{OnPage(i)}; });
  }

  void DrawExtremes() {
    const std::size_t most = m_inspection.IndexOfMax();
    const std::size_t least = m_inspection.IndexOfMin();
    DrawMarker(m_canvas, OnPage(most), kDownwards);
    DrawMarker(m_canvas, OnPage(least), kUpwards);
    m_page.ExtremeKeys("at " + PlaceText(most), "at " + PlaceText(least));
  }

  std::string PlaceText(std::size_t i) const {
    const std::string around = Fixed(m_around[i], 1) + "\u00B0, ";
    if (m_isTorus) return around + WithMinusSign(Fixed(m_up[i], 1)) + "\u00B0";
    return around + m_page.LengthText(m_up[i]) + " " + m_page.LengthSymbol();
  }

  const Inspection& m_inspection;
  Page m_page;
  Canvas& m_canvas;
  bool m_isTorus;
  double m_shift;  // makes positions count from the foot of the global origin, so that they resemble the coordinates
  std::vector<double> m_around;  // degrees
  std::vector<double> m_up;      // lengths, or degrees
  MapAxis m_x;
  MapAxis m_y;
};

}  // namespace

std::string DrawUnrolled(const Inspection& inspection, const PictureLabels& labels) {
  return UnrolledMap(inspection, labels).Draw();
}
