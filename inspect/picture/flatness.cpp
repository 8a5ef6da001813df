#include <algorithm>
#include <limits>

#include "picture/deviation_map.h"
#include "text.h"

namespace {

constexpr PagePoint kMapCentre{100, 83};
constexpr double kMapWidth = 148;  // at most
constexpr double kMapHeight = 106;
constexpr double kLeastExtent = 1e-9;
constexpr double kMargin = 3;  // of paper around the outermost points
constexpr double kLegendLeft = 42.5;
constexpr double kLegendBelow = 20;  // the map
constexpr double kLegendWidth = 115;

// One axis of the map: positions in the plane and where they stand on the page.
struct MapAxis {
  MapAxis(const Inspection& inspection, std::size_t index, const Vec3& direction)
      : shift(Dot(inspection.frame.origin, direction)) {
    for (const Vec3& p : inspection.local) {
      low = std::min(low, p[index]);
      high = std::max(high, p[index]);
    }
  }
  // Never 0: the scale divides by it.
  double Extent() const { return std::max(high - low, kLeastExtent); }

  double shift;  // makes positions count from the foot of the global origin, so that they resemble the coordinates
  double low = std::numeric_limits<double>::max();
  double high = std::numeric_limits<double>::lowest();
};

class FlatnessMap {
 public:
  FlatnessMap(const Inspection& inspection, const PictureLabels& labels)
      : m_inspection(inspection),
        m_page(inspection, labels),
        m_canvas(m_page.Drawing()),
        m_x(inspection, 0, inspection.frame.x),
        m_y(inspection, 1, inspection.frame.y),
        m_scale(std::min((kMapWidth - 2 * kMargin) / m_x.Extent(), (kMapHeight - 2 * kMargin) / m_y.Extent())),
        m_width(m_x.Extent() * m_scale + 2 * kMargin),
        m_height(m_y.Extent() * m_scale + 2 * kMargin),
        m_left(kMapCentre.x - m_width / 2),
        m_top(kMapCentre.y - m_height / 2) {}

  std::string Draw() {
    const ColourScale colours(m_page.LargestDeviation());
    DrawAxes();
    const bool means = DrawPoints(colours);
    m_canvas.Rectangle({m_left, m_top}, m_width, m_height, style::kFrame);
    DrawContacts();
    DrawExtremes();
    if (means) m_page.Note("colours: mean of each square mm of paper");
    m_page.Note("positive towards " + DirectionName(m_inspection.frame.z));
    const PagePoint legend{kLegendLeft, m_top + m_height + kLegendBelow};
    colours.DrawLegend(m_page, legend, kLegendWidth);
    m_canvas.Text({legend.x - 3, legend.y + 3}, "deviation", {3, "end", "#22272e", false, 0});
    return m_canvas.Finish();
  }

 private:
  PagePoint OnPage(const Vec3& local) const {
    return {m_left + kMargin + (local[0] - m_x.low) * m_scale,
            m_top + m_height - kMargin - (local[1] - m_y.low) * m_scale};
  }

  void DrawAxes() {
    const double margin = kMargin / m_scale;
    const Ticks along(m_x.low + m_x.shift - margin, m_x.high + m_x.shift + margin, TickCount(m_width));
    const double bottom = m_top + m_height;
    for (const double tick : along.values) {
      const double x = OnPage({tick - m_x.shift, 0, 0}).x;
      m_canvas.Line({x, m_top}, {x, bottom}, style::kGrid);
      m_canvas.Text({x, bottom + 4.2}, along.Text(tick), {2.7, "middle", "#5c6670", false, 0});
    }
    const Ticks up(m_y.low + m_y.shift - margin, m_y.high + m_y.shift + margin, TickCount(m_height));
    for (const double tick : up.values) {
      const double y = OnPage({0, tick - m_y.shift, 0}).y;
      m_canvas.Line({m_left, y}, {m_left + m_width, y}, style::kGrid);
      m_canvas.Text({m_left - 1.5, y + 1}, up.Text(tick), {2.7, "end", "#5c6670", false, 0});
    }
    const auto title = [this](const Vec3& direction) {
      return "in the plane towards " + DirectionName(direction) + " / " + m_page.LengthSymbol();
    };
    m_canvas.Text({m_left + m_width / 2, bottom + 10}, title(m_inspection.frame.x), {3, "middle", "#22272e", false, 0});
    m_canvas.Text({m_left - 14, m_top + m_height / 2}, title(m_inspection.frame.y),
                  {3, "middle", "#22272e", false, -90});
  }

  static int TickCount(double millimetres) {
    constexpr double kBetween = 13;
    return std::max(1, static_cast<int>(millimetres / kBetween));
  }

  bool DrawPoints(const ColourScale& colours) {
    std::vector<MapPoint> dots;
    for (std::size_t i = 0; i < m_inspection.local.size(); ++i) {
      dots.push_back({OnPage(m_inspection.local[i]), m_inspection.deviations[i]});
    }
    return DrawDots(m_canvas, dots, m_x.Extent() * m_y.Extent() * m_scale * m_scale, colours);
  }

  void DrawContacts() {
    m_page.DrawContacts([this](std::size_t i) { return std::vector<PagePoint>{OnPage(m_inspection.local[i])}; });
  }

  void DrawExtremes() {
    const std::size_t most = m_inspection.IndexOfMax();
    const std::size_t least = m_inspection.IndexOfMin();
    m_page.MarkExtremes([this](std::size_t i) { return OnPage(m_inspection.local[i]); });
    m_page.ExtremeKeys(PositionText(most), PositionText(least));
  }

  std::string PositionText(std::size_t index) const {
    const Vec3& p = m_inspection.local[index];
    return "at (" + m_page.LengthText(p[0] + m_x.shift) + ", " + m_page.LengthText(p[1] + m_y.shift) + ")";
  }

  const Inspection& m_inspection;
  Page m_page;
  Canvas& m_canvas;
  MapAxis m_x;
  MapAxis m_y;
  double m_scale;  // page millimetres per length unit
  double m_width;
  double m_height;
  double m_left;
  double m_top;
};

}  // namespace

std::string DrawFlatness(const Inspection& inspection, const PictureLabels& labels) {
  return FlatnessMap(inspection, labels).Draw();
}
