#include <algorithm>
#include <cmath>

#include "picture/page.h"
#include "text.h"

namespace {

constexpr double kStripLeft = 27;
constexpr double kStripRight = 162;
constexpr double kLeastLength = 1e-9;  // the scale divides by it
constexpr TextStyle kTickText{2.7, "end", "#5c6670", false, 0};

// One strip: the deviations in one direction along the line, between the two lines of the zone.
struct Strip {
  double top;
  double bottom;
  double zoneLow;
  double zoneHigh;
  std::string label;
  std::vector<Sample> samples;
};

class StraightnessPlot {
 public:
  StraightnessPlot(const Inspection& inspection, const PictureLabels& labels)
      : m_inspection(inspection), m_page(inspection, labels), m_canvas(m_page.Drawing()) {
    const auto [first, last] = std::minmax_element(inspection.local.begin(), inspection.local.end());
    m_start = (*first)[0];
    m_length = std::max((*last)[0] - m_start, kLeastLength);
  }

  std::string Draw() {
    std::vector<Strip> strips = Strips();
    const double zone = strips[0].zoneHigh - strips[0].zoneLow;
    const double room = 0.8 * (strips[0].bottom - strips[0].top);
    m_scale = m_page.ChooseMagnification(std::max(zone, m_page.LargestDeviation()), room, "magnification, across");
    m_along = (kStripRight - kStripLeft) / m_length;
    m_page.StateMagnification(m_along, "magnification, along");
    m_page.LineKey(style::kProfile, "measured points");
    m_page.LineKey(style::kFitted, "fitted line");
    m_page.LineKey(style::kBoundary, m_inspection.zoneIsRound ? "zone (a cylinder)" : "zone");
    for (const Strip& strip : strips) DrawStrip(strip);
    DrawPositions(strips.back());
    DrawContacts(strips);
    DrawExtremes(strips);
    return m_canvas.Finish();
  }

 private:
  std::vector<Strip> Strips() const {
    constexpr double kTop = Page::kTop + 6;
    constexpr double kBottom = Page::kBottom - 14;
    constexpr double kBetween = 10;
    const auto across = [this](std::size_t axis) {
      std::vector<Sample> samples;
      for (const Vec3& p : m_inspection.local) samples.push_back({p[0] - m_start, p[axis]});
      return samples;
    };
    const double largest = m_inspection.deviations[m_inspection.IndexOfMax()];
    const double smallest = m_inspection.deviations[m_inspection.IndexOfMin()];
    const std::string towardsY = "towards " + DirectionName(m_inspection.frame.y);
    const std::string towardsZ = "towards " + DirectionName(m_inspection.frame.z);
    if (!m_inspection.zoneIsRound) return {{kTop, kBottom, smallest, largest, towardsY, across(1)}};
    const double middle = (kTop + kBottom) / 2;
    const double radius = m_inspection.form / 2;
    return {{kTop, middle - kBetween / 2, -radius, radius, towardsY, across(1)},
            {middle + kBetween / 2, kBottom, -radius, radius, towardsZ, across(2)}};
  }

  double PageX(double position) const { return kStripLeft + position * m_along; }
  double PageY(const Strip& strip, double deviation) const {
    return (strip.top + strip.bottom) / 2 - (deviation - (strip.zoneLow + strip.zoneHigh) / 2) * m_scale;
  }

  void DrawStrip(const Strip& strip) {
    constexpr std::size_t kBins = 1350;  // ten to a millimetre
    constexpr std::size_t kMostDots = 100;
    DrawDeviationAxis(strip);
    const auto level = [&](double deviation, const char* attributes) {
      const double y = PageY(strip, deviation);
      m_canvas.Line({kStripLeft, y}, {kStripRight, y}, attributes);
    };
    level(0, style::kFitted);
    level(strip.zoneLow, style::kBoundary);
    level(strip.zoneHigh, style::kBoundary);
    std::vector<PagePoint> line;
    for (const Sample& s : Envelope(strip.samples, kBins)) line.push_back({PageX(s.position), PageY(strip, s.value)});
    m_canvas.Polyline(line, style::kProfile);
    if (strip.samples.size() > kMostDots) return;
    for (const PagePoint& p : line) m_canvas.Circle(p, 0.6, style::kSample);
  }

  void DrawDeviationAxis(const Strip& strip) {
    const double half = (strip.bottom - strip.top) / 2 / m_scale;
    const double middle = (strip.zoneLow + strip.zoneHigh) / 2;
    const Ticks ticks((middle - half) * m_page.PerLength(), (middle + half) * m_page.PerLength(),
                      m_inspection.zoneIsRound ? 6 : 10);
    for (const double tick : ticks.values) {
      const double y = PageY(strip, tick / m_page.PerLength());
      m_canvas.Line({kStripLeft, y}, {kStripRight, y}, style::kGrid);
      m_canvas.Text({kStripLeft - 1.5, y + 1}, ticks.SignedText(tick), kTickText);
    }
    const Ticks positions(0, m_length, 10);
    for (const double tick : positions.values) {
      m_canvas.Line({PageX(tick), strip.top}, {PageX(tick), strip.bottom}, style::kGrid);
    }
    m_canvas.Rectangle({kStripLeft, strip.top}, kStripRight - kStripLeft, strip.bottom - strip.top, style::kFrame);
    m_canvas.Text({Page::kLeft + 2, (strip.top + strip.bottom) / 2},
                  "deviation " + strip.label + " / " + m_page.DeviationSymbol(), {3, "middle", "#22272e", false, -90});
  }

  void DrawPositions(const Strip& lowest) {
    const Ticks ticks(0, m_length, 10);
    for (const double tick : ticks.values) {
      m_canvas.Text({PageX(tick), lowest.bottom + 4.5}, ticks.Text(tick), {2.7, "middle", "#5c6670", false, 0});
    }
    m_canvas.Text({(kStripLeft + kStripRight) / 2, lowest.bottom + 10.5},
                  std::string("position along the line from its first end / ") + m_page.LengthSymbol(),
                  {3, "middle", "#22272e", false, 0});
  }

  void DrawContacts(const std::vector<Strip>& strips) {
    m_page.DrawContacts([&](std::size_t index) {
      const Vec3& p = m_inspection.local[index];
      std::vector<PagePoint> places;
      for (std::size_t i = 0; i < strips.size(); ++i) {
        places.push_back({PageX(p[0] - m_start), PageY(strips[i], p[i + 1])});
      }
      return places;
    });
  }

  void DrawExtremes(const std::vector<Strip>& strips) {
    const std::size_t most = m_inspection.IndexOfMax();
    const std::size_t least = m_inspection.IndexOfMin();
    for (std::size_t i = 0; i < strips.size(); ++i) {
      DrawExtreme(strips[i], m_inspection.local[most], i + 1);
      if (!m_inspection.zoneIsRound) DrawExtreme(strips[i], m_inspection.local[least], i + 1);
    }
    m_page.ExtremeKeys("at " + PositionText(most), m_inspection.zoneIsRound ? "" : "at " + PositionText(least));
    m_page.Note("line runs towards " + DirectionName(m_inspection.frame.x));
  }

  void DrawExtreme(const Strip& strip, const Vec3& local, std::size_t axis) {
    constexpr double kClearance = 0.6;
    const bool above = local[axis] > 0;
    const double y = PageY(strip, local[axis]) + (above ? -kClearance : kClearance);
    DrawMarker(m_canvas, {PageX(local[0] - m_start), y}, above ? kDownwards : kUpwards);
  }

  std::string PositionText(std::size_t index) const {
    return m_page.LengthText(m_inspection.local[index][0] - m_start) + " " + m_page.LengthSymbol();
  }

  const Inspection& m_inspection;
  Page m_page;
  Canvas& m_canvas;
  double m_start = 0;
  double m_length = 0;
  double m_scale = 1;  // page millimetres per length unit, across the line
  double m_along = 1;  // and along it
};

}  // namespace

std::string DrawStraightness(const Inspection& inspection, const PictureLabels& labels) {
  return StraightnessPlot(inspection, labels).Draw();
}
