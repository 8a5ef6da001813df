#include <cmath>
#include <numbers>

#include "picture/deviation_map.h"
#include "text.h"

namespace {

constexpr double kDiscRadius = 36;
constexpr double kDiscY = 88;
constexpr double kUpperX = 51;
constexpr double kLowerX = 137;
constexpr PagePoint kLegendCorner{40, 152};
constexpr double kLegendWidth = 108;

// The two halves of the sphere, each by an equal-area projection onto a disc: the upper as seen from +Z, the lower as
// seen from -Z, both with +Y up.
class SphericityMap {
 public:
  SphericityMap(const Inspection& inspection, const PictureLabels& labels)
      : m_inspection(inspection), m_page(inspection, labels), m_canvas(m_page.Drawing()) {}

  std::string Draw() {
    const ColourScale colours(m_page.LargestDeviation());
    DrawDisc(true);
    DrawDisc(false);
    const bool means = DrawPoints(colours);
    for (const double x : {kUpperX, kLowerX}) m_canvas.Circle({x, kDiscY}, kDiscRadius, style::kFrame);
    DrawContacts();
    DrawExtremes();
    m_page.Note("angles: longitude from +X, latitude");
    m_page.Note("equal areas; rings at latitudes 30\u00B0 and 60\u00B0");
    if (means) m_page.Note("colours: mean of each square mm of paper");
    colours.DrawLegend(m_page, kLegendCorner, kLegendWidth);
    m_canvas.Text({kLegendCorner.x - 3, kLegendCorner.y + 3}, "deviation", {3, "end", "#22272e", false, 0});
    return m_canvas.Finish();
  }

 private:
  // Lambert's azimuthal equal-area projection: a latitude lies at radius R sqrt(1 - sin latitude).
  static double RingRadius(double sineOfLatitude) { return kDiscRadius * std::sqrt(1 - std::fabs(sineOfLatitude)); }

  static PagePoint OnPage(const Vec3& local) {
    const bool upper = local[2] >= 0;
    const double across = std::hypot(local[0], local[1]);
    const double length = std::hypot(across, local[2]);
    const double radius = length > 0 ? RingRadius(local[2] / length) : 0;
    const double x = across > 0 ? radius * local[0] / across : 0;
    const double y = across > 0 ? radius * local[1] / across : 0;
    return {upper ? kUpperX + x : kLowerX - x, kDiscY - y};
  }

  void DrawDisc(bool upper) {
    constexpr double kSineOf60 = std::numbers::sqrt3 / 2;
    const PagePoint centre{upper ? kUpperX : kLowerX, kDiscY};
    for (int degrees = 0; degrees < 360; degrees += 30) {
      const double angle = degrees * std::numbers::pi / 180;
      m_canvas.Line(centre, {centre.x + kDiscRadius * std::cos(angle), centre.y - kDiscRadius * std::sin(angle)},
                    style::kGrid);
    }
    m_canvas.Circle(centre, RingRadius(0.5), style::kGrid);
    m_canvas.Circle(centre, RingRadius(kSineOf60), style::kGrid);
    const TextStyle axis{3, "middle", "#5c6670", false, 0};
    m_canvas.Text({centre.x, centre.y - kDiscRadius - 1.5}, "+Y", axis);
    m_canvas.Text({centre.x, centre.y + kDiscRadius + 3.8}, "\u2212Y", axis);
    m_canvas.Text({centre.x + kDiscRadius + 1, centre.y + 1}, upper ? "+X" : "\u2212X",
                  {3, "start", "#5c6670", false, 0});
    m_canvas.Text({centre.x - kDiscRadius - 1, centre.y + 1}, upper ? "\u2212X" : "+X",
                  {3, "end", "#5c6670", false, 0});
    m_canvas.Text({centre.x, centre.y + kDiscRadius + 10},
                  upper ? "upper half, seen from +Z" : "lower half, seen from \u2212Z",
                  {3.2, "middle", "#22272e", true, 0});
  }

  bool DrawPoints(const ColourScale& colours) {
    std::vector<MapPoint> dots;
    for (std::size_t i = 0; i < m_inspection.local.size(); ++i) {
      dots.push_back({OnPage(m_inspection.local[i]), m_inspection.deviations[i]});
    }
    return DrawDots(m_canvas, dots, 2 * std::numbers::pi * kDiscRadius * kDiscRadius, colours);
  }

  void DrawContacts() {
    m_page.DrawContacts([this](std::size_t i) { return std::vector<PagePoint>{OnPage(m_inspection.local[i])}; });
  }

  void DrawExtremes() {
    const std::size_t most = m_inspection.IndexOfMax();
    const std::size_t least = m_inspection.IndexOfMin();
    m_page.MarkExtremes([this](std::size_t i) { return OnPage(m_inspection.local[i]); });
    m_page.ExtremeKeys("at " + AnglesText(most), "at " + AnglesText(least));
  }

  std::string AnglesText(std::size_t index) const {
    constexpr double kDegrees = 180 / std::numbers::pi;
    const Vec3& p = m_inspection.local[index];
    const double longitude = std::atan2(p[1], p[0]) * kDegrees;
    const double latitude = std::atan2(p[2], std::hypot(p[0], p[1])) * kDegrees;
    return Fixed(longitude < 0 ? longitude + 360 : longitude, 1) + "\u00B0, " + WithMinusSign(Fixed(latitude, 1)) +
           "\u00B0";
  }

  const Inspection& m_inspection;
  Page m_page;
  Canvas& m_canvas;
};

}  // namespace

std::string DrawSphericity(const Inspection& inspection, const PictureLabels& labels) {
  return SphericityMap(inspection, labels).Draw();
}
