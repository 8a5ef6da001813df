#include "compare/comparison_picture.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "picture/canvas.h"
#include "text.h"

namespace {

// Millimetres of the page.
constexpr double kPageWidth = 262;
constexpr double kPageHeight = 150;
constexpr double kTop = 34;
constexpr double kBottom = 132;
constexpr PagePoint kCentre{72, 84};
constexpr double kRadius = 42;  // of the least-squares circle
constexpr double kBand = 18;    // to either side of it
constexpr double kTurn = 2 * std::numbers::pi;

const char* ColourOf(const Inspection& inspection) {
  const char letter = inspection.terms.letter[0];
  return letter == 'G' ? "#1b7f4b" : letter == 'C' ? "#c0392b" : letter == 'N' ? "#7d3c98" : "#b9770e";
}

std::string Stroke(const Inspection& inspection, bool dashed) {
  return std::string("fill='none' stroke-width='0.4' stroke='") + ColourOf(inspection) +
         (dashed ? "' stroke-dasharray='1.8 1'" : "'");
}

class ComparisonPicture {
 public:
  ComparisonPicture(const std::vector<Inspection>& inspections, const std::string& file, const LengthUnit& unit)
      : m_inspections(inspections),
        m_millimetres(unit.millimetres),
        m_isCircle(inspections.front().terms.feature == "circle"),
        m_left(m_isCircle ? 152 : 28),
        m_canvas(kPageWidth, kPageHeight, "criteria compared: " + inspections.front().terms.feature + " of " + file) {
    for (const Inspection& each : inspections) {
      m_low = std::min(m_low, each.deviations[each.IndexOfMin()]);
      m_high = std::max(m_high, each.deviations[each.IndexOfMax()]);
    }
    if (!(m_high > m_low)) m_high = m_low + 1e-9;
    m_unit = ChooseDeviationUnit(unit, m_high - m_low);
    const Terms& terms = inspections.front().terms;
    m_canvas.Text({10, 13}, terms.form + " of " + file + " by all criteria", {6, "start", "#22272e", true, 0});
    m_canvas.Text({10, 20},
                  std::to_string(inspections.front().deviations.size()) + " points; deviations in " + m_unit.symbol +
                      " from the " + terms.feature + " of each criterion",
                  {3.6, "start", style::kQuiet, false, 0});
  }

  std::string Draw() {
    if (m_isCircle) DrawProfile();
    DrawScale();
    for (std::size_t i = 0; i < m_inspections.size(); ++i) DrawSpread(i);
    return m_canvas.Finish();
  }

 private:
  double Y(double deviation) const { return kBottom - (deviation - m_low) / (m_high - m_low) * (kBottom - kTop - 12); }

  void DrawScale() {
    const Ticks ticks(m_low * m_unit.perLength, m_high * m_unit.perLength, 8);
    for (const double tick : ticks.values) {
      const double y = Y(tick / m_unit.perLength);
      m_canvas.Line({m_left, y}, {kPageWidth - 10, y}, style::kGrid);
      m_canvas.Text({m_left - 1.5, y + 1}, ticks.SignedText(tick), {2.8, "end", style::kQuiet, false, 0});
    }
  }

  // How many deviations lie where, as a silhouette to either side of a line, between the extremes.
  void DrawSpread(std::size_t index) {
    constexpr std::size_t kBins = 48;
    const Inspection& each = m_inspections[index];
    const double width = (kPageWidth - 10 - m_left) / static_cast<double>(m_inspections.size());
    const double x = m_left + (static_cast<double>(index) + 0.5) * width;
    const double low = each.deviations[each.IndexOfMin()];
    const double span = std::max(each.deviations[each.IndexOfMax()] - low, 1e-12 * (m_high - m_low));
    std::vector<double> counts(kBins);
    for (const double deviation : each.deviations) {
      ++counts[std::min(kBins - 1, static_cast<std::size_t>((deviation - low) / span * kBins))];
    }
    const double most = *std::max_element(counts.begin(), counts.end());
    for (std::size_t bin = 0; bin < kBins; ++bin) {
      const double half = 0.36 * width * counts[bin] / most;
      const double top = Y(low + span * static_cast<double>(bin + 1) / kBins);
      const double height = std::max(Y(low + span * static_cast<double>(bin) / kBins) - top, 0.05);
      m_canvas.Rectangle({x - half, top}, 2 * half, height,
                         std::string("fill-opacity='0.35' fill='") + ColourOf(each) + "'");
    }
    for (const double edge : {low, low + span}) {
      m_canvas.Line({x - 0.42 * width, Y(edge)}, {x + 0.42 * width, Y(edge)}, Stroke(each, true).c_str());
    }
    m_canvas.Line({x - 0.42 * width, Y(0)}, {x + 0.42 * width, Y(0)}, Stroke(each, false).c_str());
    // One word below the other: "minimum circumscribed" is wider than its column.
    const std::size_t space = each.terms.criterion.find(' ');
    m_canvas.Text({x, kTop - 1}, each.terms.criterion.substr(0, space), {2.7, "middle", ColourOf(each), true, 0});
    m_canvas.Text({x, kTop + 2}, each.terms.criterion.substr(space + 1), {2.7, "middle", ColourOf(each), true, 0});
    m_canvas.Text({x, kTop + 6.5}, Fixed(each.form * m_unit.perLength, 3) + " " + m_unit.symbol,
                  {3.2, "middle", "#22272e", false, 0});
    m_canvas.Text({x, kBottom + 5}, each.terms.reference.substr(0, each.terms.reference.find(' ')),
                  {2.8, "middle", style::kQuiet, false, 0});
  }

  // Around the centre of the least-squares circle, by angle; the radius magnifies the deviation from that circle.
  PagePoint At(double angle, double deviation) const {
    const double r = kRadius + deviation * m_scale;
    return {kCentre.x + r * std::cos(angle), kCentre.y - r * std::sin(angle)};
  }

  void DrawProfile() {
    const Inspection& reference = m_inspections.front();
    double largest = 0;
    for (const Inspection& each : m_inspections) largest = std::max(largest, LargestOf(each));
    const double magnification = RoundDown(kBand / std::max(largest, 1e-12 * reference.radius) / m_millimetres);
    m_scale = magnification * m_millimetres;
    std::vector<std::pair<double, double>> profile;
    for (std::size_t i = 0; i < reference.local.size(); ++i) {
      profile.emplace_back(std::atan2(reference.local[i][1], reference.local[i][0]), reference.deviations[i]);
    }
    std::sort(profile.begin(), profile.end());
    std::vector<PagePoint> line;
    line.reserve(profile.size());
    for (const auto& [angle, deviation] : profile) line.push_back(At(angle, deviation));
    m_canvas.Polygon(line, style::kProfile);
    for (const Inspection& each : m_inspections) DrawCircles(each);
    m_canvas.Text({10, kPageHeight - 6},
                  std::string("profile about the least-squares centre; dashed: the two circles of the minimum zone; ") +
                      "radial magnification " + Fixed(magnification, 0) + ":1",
                  {2.8, "start", style::kQuiet, false, 0});
  }

  // How far the circle and the profile reach from the least-squares circle.
  double LargestOf(const Inspection& each) const {
    double largest = 0;
    for (int k = 0; k < kSteps; ++k) {
      for (const double edge : EdgesOf(each)) largest = std::max(largest, std::fabs(DeviationOf(each, edge, k)));
    }
    return std::max({largest, m_inspections.front().LargestOutwards(), m_inspections.front().LargestInwards()});
  }

  static std::vector<double> EdgesOf(const Inspection& each) {
    if (each.terms.letter != "C") return {0};
    return {each.deviations[each.IndexOfMin()], each.deviations[each.IndexOfMax()]};
  }

  // Of the circle of that criterion, `edge` wider, from the least-squares circle, seen from the centre of that.
  double DeviationOf(const Inspection& each, double edge, int step) const {
    const Inspection& reference = m_inspections.front();
    const Vec3 centre = reference.frame.ToLocal(each.frame.origin);
    const double angle = kTurn * step / kSteps;
    const double along = centre[0] * std::cos(angle) + centre[1] * std::sin(angle);
    const double across = centre[1] * std::cos(angle) - centre[0] * std::sin(angle);
    const double radius = each.radius + edge;
    return along + std::sqrt(std::max(radius * radius - across * across, 0.0)) - reference.radius;
  }

  void DrawCircles(const Inspection& each) {
    for (const double edge : EdgesOf(each)) {
      std::vector<PagePoint> circle;
      circle.reserve(kSteps);
      for (int k = 0; k < kSteps; ++k) circle.push_back(At(kTurn * k / kSteps, DeviationOf(each, edge, k)));
      m_canvas.Polygon(circle, Stroke(each, each.terms.letter == "C").c_str());
    }
  }

  static constexpr int kSteps = 720;

  const std::vector<Inspection>& m_inspections;
  double m_millimetres;  // of the length unit
  bool m_isCircle;
  double m_left;  // of the scale of deviations
  Canvas m_canvas;
  DeviationUnit m_unit{};
  double m_low = 0;
  double m_high = 0;
  double m_scale = 1;  // page millimetres per length unit
};

}  // namespace

std::string DrawComparison(const std::vector<Inspection>& inspections, const std::string& file,
                           const LengthUnit& unit) {
  return ComparisonPicture(inspections, file, unit).Draw();
}
