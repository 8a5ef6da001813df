#include <algorithm>
#include <cmath>
#include <numbers>

#include "picture/page.h"
#include "text.h"

namespace {

constexpr PagePoint kCentre{93, 98};
constexpr double kFittedRadius = 44;
constexpr double kBand = 17;  // on either side of the fitted circle
constexpr double kRadian = std::numbers::pi / 180;

PagePoint Polar(double degrees, double radius) {
  return {kCentre.x + radius * std::cos(degrees * kRadian), kCentre.y - radius * std::sin(degrees * kRadian)};
}

double AngleOf(const Vec3& local) {
  const double degrees = std::atan2(local[1], local[0]) / kRadian;
  return degrees < 0 ? degrees + 360 : degrees;
}

class RoundnessPlot {
 public:
  RoundnessPlot(const Inspection& inspection, const PictureLabels& labels)
      : m_inspection(inspection),
        m_page(inspection, labels),
        m_canvas(m_page.Drawing()),
        m_scale(m_page.ChooseMagnification(m_page.LargestDeviation(), kBand, "magnification, radial")),
        m_rings(-kBand / m_scale * m_page.PerLength(), kBand / m_scale * m_page.PerLength(), 7) {}

  std::string Draw() {
    DrawGrid();
    DrawCircles();
    DrawProfile();
    DrawContacts();
    DrawExtremes();
    DrawCentre();
    m_page.DrawRuler(kBand, m_scale, m_rings);
    return m_canvas.Finish();
  }

 private:
  double PageRadius(double deviation) const { return kFittedRadius + deviation * m_scale; }

  void DrawGrid() {
    constexpr double kOutside = kFittedRadius + kBand + 3.5;
    for (const double ring : m_rings.values) {
      m_canvas.Circle(kCentre, PageRadius(ring / m_page.PerLength()), style::kGrid);
    }
    for (int degrees = 0; degrees < 360; degrees += 30) {
      m_canvas.Line(Polar(degrees, kFittedRadius - kBand), Polar(degrees, kFittedRadius + kBand), style::kGrid);
      const PagePoint at = Polar(degrees, kOutside);
      m_canvas.Text({at.x, at.y + 1.1}, std::to_string(degrees) + "\u00B0", {3, "middle", "#5c6670", false, 0});
    }
  }

  void DrawCircles() {
    const double largest = m_inspection.deviations[m_inspection.IndexOfMax()];
    const double smallest = m_inspection.deviations[m_inspection.IndexOfMin()];
    m_canvas.Circle(kCentre, kFittedRadius, style::kFitted);
    m_canvas.Circle(kCentre, PageRadius(largest), style::kBoundary);
    m_canvas.Circle(kCentre, PageRadius(smallest), style::kBoundary);
    m_page.LineKey(style::kProfile, "measured profile");
    m_page.LineKey(style::kFitted, "fitted circle");
    m_page.LineKey(style::kBoundary,
                   m_inspection.contacts.empty() ? "largest, smallest deviation" : "circles through the extremes");
  }

  void DrawContacts() {
    m_page.DrawContacts([this](std::size_t i) {
      return std::vector<PagePoint>{Polar(AngleOf(m_inspection.local[i]), PageRadius(m_inspection.deviations[i]))};
    });
  }

  // Between two points the deviation changes evenly with the angle; wide gaps, where nothing was measured, stay open.
  void DrawProfile() {
    constexpr std::size_t kBins = 3600;
    constexpr std::size_t kMostDots = 180;
    constexpr double kLeastGap = 15;  // degrees
    std::vector<Sample> profile;
    for (std::size_t i = 0; i < m_inspection.local.size(); ++i) {
      profile.push_back({AngleOf(m_inspection.local[i]), m_inspection.deviations[i]});
    }
    profile = Envelope(std::move(profile), kBins);
    const double gap = std::max(kLeastGap, 3 * 360.0 / static_cast<double>(profile.size()));
    const Sample first = profile.front();
    profile.push_back({first.position + 360, first.value});
    std::vector<PagePoint> line = {Polar(first.position, PageRadius(first.value))};
    for (std::size_t i = 1; i < profile.size(); ++i) {
      if (profile[i].position - profile[i - 1].position > gap) {
        m_canvas.Polyline(line, style::kProfile);
        line = {Polar(profile[i].position, PageRadius(profile[i].value))};
      } else {
        AppendArc(profile[i - 1], profile[i], &line);
      }
    }
    m_canvas.Polyline(line, style::kProfile);
    if (m_inspection.local.size() > kMostDots) return;
    for (const Sample& s : profile) m_canvas.Circle(Polar(s.position, PageRadius(s.value)), 0.6, style::kSample);
  }

  void AppendArc(const Sample& from, const Sample& to, std::vector<PagePoint>* line) const {
    const int steps = std::max(1, static_cast<int>(std::ceil(to.position - from.position)));
    for (int k = 1; k <= steps; ++k) {
      const double part = static_cast<double>(k) / steps;
      line->push_back(Polar(from.position + part * (to.position - from.position),
                            PageRadius(from.value + part * (to.value - from.value))));
    }
  }

  void DrawExtremes() {
    const std::size_t most = m_inspection.IndexOfMax();
    const std::size_t least = m_inspection.IndexOfMin();
    DrawExtreme(most, -1);
    DrawExtreme(least, 1);
    m_page.ExtremeKeys("at " + AngleText(most), "at " + AngleText(least));
    m_page.Note("0\u00B0 towards " + DirectionName(m_inspection.frame.x) + ", counter-clockwise");
    m_page.Note("seen against the normal " + DirectionName(m_inspection.frame.z));
  }

  // `outwards` is where the marker points: 1 from inside, -1 from outside.
  void DrawExtreme(std::size_t index, double outwards) {
    constexpr double kClearance = 0.6;
    const double degrees = AngleOf(m_inspection.local[index]);
    const double radius = PageRadius(m_inspection.deviations[index]) - kClearance * outwards;
    DrawMarker(m_canvas, Polar(degrees, radius),
               {outwards * std::cos(degrees * kRadian), -outwards * std::sin(degrees * kRadian)});
  }

  std::string AngleText(std::size_t index) const { return Fixed(AngleOf(m_inspection.local[index]), 1) + "\u00B0"; }

  void DrawCentre() {
    const double bar = m_rings.step / m_page.PerLength() * m_scale;
    const double left = kCentre.x - bar / 2;
    const double y = kCentre.y + 1;
    m_canvas.Line({left, y}, {left + bar, y}, style::kFrame);
    m_canvas.Line({left, y - 1}, {left, y + 1}, style::kFrame);
    m_canvas.Line({left + bar, y - 1}, {left + bar, y + 1}, style::kFrame);
    m_canvas.Text({kCentre.x, y - 2.5}, m_rings.Text(m_rings.step) + " " + m_page.DeviationSymbol(),
                  {3.4, "middle", "#22272e", true, 0});
    m_canvas.Text({kCentre.x, y + 5}, "from ring to ring", {2.6, "middle", "#5c6670", false, 0});
  }

  const Inspection& m_inspection;
  Page m_page;
  Canvas& m_canvas;
  double m_scale;  // page millimetres per length unit
  Ticks m_rings;
};

}  // namespace

std::string DrawRoundness(const Inspection& inspection, const PictureLabels& labels) {
  return RoundnessPlot(inspection, labels).Draw();
}
