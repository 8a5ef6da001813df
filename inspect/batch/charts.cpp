#include "batch/charts.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "batch/statistics.h"
#include "picture/canvas.h"
#include "text.h"

namespace {

// Millimetres of the page.
constexpr double kPageWidth = 240;
constexpr double kPageHeight = 110;
constexpr double kLeft = 24;
constexpr double kRight = 172;
constexpr double kTop = 24;
constexpr double kBottom = 94;
constexpr double kPanelLeft = 186;
constexpr double kPanelRight = 232;
constexpr const char* kOutside = "fill='#c0392b' stroke='none'";
constexpr const char* kBar = "fill='#9dbbdc' stroke='#1f5fa8' stroke-width='0.2'";

// What both pictures share: a frame with title, a scale of values and the numbers of the distribution.
class Chart {
 public:
  Chart(const PartReport& report, std::size_t index, const std::string& what)
      : m_plan(report.plan.characteristics[index]),
        m_series(SeriesOf(report.parts, index)),
        m_capability(report.capabilities[index]),
        m_unit(m_plan.isAngle ? "\u00B0" : report.plan.unit->symbol),
        m_decimals(report.plan.unit->decimals),
        m_canvas(kPageWidth, kPageHeight, what + " of " + m_plan.name) {
    m_canvas.Text({kLeft - 14, 12}, m_plan.name, {5.5, "start", "#22272e", true, 0});
    m_canvas.Text({kLeft - 14, 18},
                  what + ", " + std::to_string(m_series.values.size()) + " of " + std::to_string(report.parts.size()) +
                      " parts; " + m_unit,
                  {3.4, "start", style::kQuiet, false, 0});
    ChooseSpan();
    DrawPanel();
  }

 protected:
  // From the lowest to the highest of all that is to be seen, and a little more.
  void ChooseSpan() {
    constexpr double kMargin = 0.06;
    for (const double value : m_series.values) Include(value);
    for (const std::optional<double>& value : {m_plan.lower, m_plan.upper, m_plan.nominal}) {
      if (value) Include(*value);
    }
    if (m_capability.count > 1) {
      for (const double sign : {-1, 1}) Include(m_capability.mean + sign * 3 * m_capability.deviationOverall);
    }
    if (!(m_low <= m_high)) m_low = m_high = 0;
    const double least = 1e-9 * std::max({std::fabs(m_low), std::fabs(m_high), 1e-3});
    const double margin = std::max(kMargin * (m_high - m_low), least);
    m_low -= margin;
    m_high += margin;
  }

  void Include(double value) {
    m_low = std::min(m_low, value);
    m_high = std::max(m_high, value);
  }

  bool IsOutside(double value) const {
    return (m_plan.lower && value < *m_plan.lower) || (m_plan.upper && value > *m_plan.upper);
  }

  void DrawPanel() {
    const auto length = [this](double value) { return WithMinusSign(Fixed(value, m_decimals)); };
    if (m_plan.upper) Row("upper limit", length(*m_plan.upper));
    if (m_plan.nominal) Row("nominal", length(*m_plan.nominal));
    if (m_plan.lower) Row("lower limit", length(*m_plan.lower));
    if (m_capability.count == 0) return;
    Row("largest", length(m_capability.largest));
    Row("mean", length(m_capability.mean));
    Row("smallest", length(m_capability.smallest));
    if (m_capability.count < 2) return;
    Row("s, all parts", length(m_capability.deviationOverall));
    Row("s, within", length(m_capability.deviationWithin));
    for (const auto& [name, index] : {std::pair("Pp", m_capability.pp), std::pair("Ppk", m_capability.ppk),
                                      std::pair("Cp", m_capability.cp), std::pair("Cpk", m_capability.cpk)}) {
      if (index) Row(name, std::isfinite(*index) ? WithMinusSign(Fixed(*index, 2)) : "\u221E");
    }
    const auto outside = std::count_if(m_series.values.begin(), m_series.values.end(),
                                       [this](double value) { return IsOutside(value); });
    if (m_plan.lower || m_plan.upper) Row("out of tolerance", std::to_string(outside));
  }

  void Row(const std::string& name, const std::string& value) {
    constexpr double kRowHeight = 4.9;
    m_canvas.Text({kPanelLeft, m_panelY}, name, {style::kSmallText, "start", style::kQuiet, false, 0});
    m_canvas.Text({kPanelRight, m_panelY}, value, {style::kSmallText, "end", "#22272e", false, 0});
    m_panelY += kRowHeight;
  }

  double Part(double value) const { return (value - m_low) / (m_high - m_low); }

  const CharacteristicPlan& m_plan;
  Series m_series;
  const Capability& m_capability;
  std::string m_unit;
  int m_decimals;
  Canvas m_canvas;
  double m_low = std::numeric_limits<double>::infinity();
  double m_high = -std::numeric_limits<double>::infinity();
  double m_panelY = kTop + 2;
};

class TrendChart : Chart {
 public:
  TrendChart(const PartReport& report, std::size_t index)
      : Chart(report, index, "trend"), m_parts(std::max<std::size_t>(report.parts.size(), 1)), m_report(report) {}

  std::string Draw() {
    DrawScale();
    if (m_plan.lower) DrawLevel(*m_plan.lower, style::kBoundary, "L");
    if (m_plan.upper) DrawLevel(*m_plan.upper, style::kBoundary, "U");
    if (m_plan.nominal) DrawLevel(*m_plan.nominal, style::kFitted, "");
    if (m_capability.count > 0) DrawLevel(m_capability.mean, style::kAxis, "mean");
    if (m_capability.count > 1) {
      DrawLevel(m_capability.mean - 3 * m_capability.deviationOverall, style::kAxis, "\u22123s");
      DrawLevel(m_capability.mean + 3 * m_capability.deviationOverall, style::kAxis, "+3s");
    }
    DrawValues();
    return m_canvas.Finish();
  }

 private:
  double X(std::size_t part) const {
    return kLeft + (static_cast<double>(part) + 0.5) / static_cast<double>(m_parts) * (kRight - kLeft);
  }
  double Y(double value) const { return kBottom - Part(value) * (kBottom - kTop); }

  void DrawScale() {
    const Ticks ticks(m_low, m_high, 7);
    for (const double tick : ticks.values) {
      m_canvas.Line({kLeft, Y(tick)}, {kRight, Y(tick)}, style::kGrid);
      m_canvas.Text({kLeft - 1.5, Y(tick) + 1}, ticks.Text(tick), {2.7, "end", style::kQuiet, false, 0});
    }
    m_canvas.Rectangle({kLeft, kTop}, kRight - kLeft, kBottom - kTop, style::kFrame);
    DrawPartNames();
  }

  // Names where there is room for them, else every so many a number.
  void DrawPartNames() {
    constexpr std::size_t kMostLabels = 15;
    constexpr std::size_t kLongest = 12;
    std::size_t longest = 0;
    for (const PartResult& part : m_report.parts) longest = std::max(longest, part.name.size());
    const bool byName = m_parts * longest < 90 && longest <= kLongest;
    const auto step = std::max<std::size_t>(
        1, static_cast<std::size_t>(RoundUp(static_cast<double>(m_parts) / static_cast<double>(kMostLabels))));
    for (std::size_t i = 0; i < m_report.parts.size(); ++i) {
      if (!byName && (i + 1) % step != 0 && i != 0) continue;
      const std::string text = byName ? Printable(m_report.parts[i].name) : std::to_string(i + 1);
      m_canvas.Text({X(i), kBottom + 4.5}, text, {2.7, "middle", style::kQuiet, false, 0});
    }
    m_canvas.Text({(kLeft + kRight) / 2, kBottom + 10}, "parts, in their order",
                  {style::kSmallText, "middle", style::kQuiet, false, 0});
  }

  void DrawLevel(double value, const char* attributes, const std::string& name) {
    m_canvas.Line({kLeft, Y(value)}, {kRight, Y(value)}, attributes);
    m_canvas.Text({kRight + 1, Y(value) + 1}, name, {2.7, "start", style::kQuiet, false, 0});
  }

  void DrawValues() {
    std::vector<PagePoint> line;
    for (std::size_t i = 0; i < m_series.values.size(); ++i)
      line.push_back({X(m_series.parts[i]), Y(m_series.values[i])});
    if (line.size() > 1) m_canvas.Polyline(line, style::kProfile);
    const double radius = std::clamp(40.0 / static_cast<double>(m_parts), 0.3, 0.9);
    for (std::size_t i = 0; i < line.size(); ++i) {
      m_canvas.Circle(line[i], radius, IsOutside(m_series.values[i]) ? kOutside : style::kSample);
    }
    TellValues(line);
  }

  // The part of each point and its value.
  void TellValues(const std::vector<PagePoint>& places) {
    constexpr int kPageDecimals = 2;
    std::string list;
    for (std::size_t i = 0; i < places.size(); ++i) {
      list += (list.empty() ? "[" : ",[") + Fixed(places[i].x, kPageDecimals) + "," +
              Fixed(places[i].y, kPageDecimals) + ",\"" +
              JsonEscaped(Printable(m_report.parts[m_series.parts[i]].name)) + "\",\"" +
              WithMinusSign(Fixed(m_series.values[i], m_decimals)) + " " + m_unit + "\"]";
    }
    m_canvas.ReadOut("[" + list + "]");
  }

  std::size_t m_parts;
  const PartReport& m_report;
};

class HistogramChart : Chart {
 public:
  HistogramChart(const PartReport& report, std::size_t index) : Chart(report, index, "histogram") {}

  std::string Draw() {
    Count();
    DrawScales();
    for (std::size_t i = 0; i < m_counts.size(); ++i) {
      if (m_counts[i] == 0) continue;
      const double left = X(BinEdge(i));
      const double top = Y(static_cast<double>(m_counts[i]));
      m_canvas.Rectangle({left, top}, X(BinEdge(i + 1)) - left, kBottom - top, kBar);
    }
    DrawNormal();
    if (m_plan.lower) DrawLimit(*m_plan.lower, "lower limit");
    if (m_plan.upper) DrawLimit(*m_plan.upper, "upper limit");
    return m_canvas.Finish();
  }

 private:
  double X(double value) const { return kLeft + Part(value) * (kRight - kLeft); }
  double Y(double count) const { return kBottom - count / m_most * (kBottom - kTop - 3); }
  double BinEdge(std::size_t bin) const {
    return m_first + (m_last - m_first) * static_cast<double>(bin) / static_cast<double>(m_counts.size());
  }

  // As many classes as the square root of the number of values, between the smallest and the largest.
  void Count() {
    constexpr double kFewest = 5;
    constexpr double kMost = 40;
    const auto count = static_cast<double>(m_series.values.size());
    m_counts.assign(static_cast<std::size_t>(std::clamp(std::round(std::sqrt(count)), kFewest, kMost)), 0);
    const double least = (m_high - m_low) / 200;
    const double width = std::max(m_capability.largest - m_capability.smallest, least);
    m_first = (m_capability.smallest + m_capability.largest - width) / 2;
    m_last = m_first + width;
    for (const double value : m_series.values) {
      const double bin = (value - m_first) / width * static_cast<double>(m_counts.size());
      const auto last = static_cast<double>(m_counts.size() - 1);
      ++m_counts[static_cast<std::size_t>(std::clamp(std::floor(bin), 0.0, last))];
    }
    m_most = 1;
    for (const std::size_t each : m_counts) m_most = std::max(m_most, static_cast<double>(each));
    if (m_capability.deviationOverall > 0) m_most = std::max(m_most, Expected(m_capability.mean));
  }

  // Of values in a class of the histogram about `value`, by the normal distribution.
  double Expected(double value) const {
    const double s = m_capability.deviationOverall;
    const double t = (value - m_capability.mean) / s;
    const double width = (m_last - m_first) / static_cast<double>(m_counts.size());
    return static_cast<double>(m_series.values.size()) * width / s / std::sqrt(2 * std::numbers::pi) *
           std::exp(-t * t / 2);
  }

  void DrawScales() {
    const Ticks values(m_low, m_high, 7);
    for (const double tick : values.values) {
      m_canvas.Line({X(tick), kBottom}, {X(tick), kBottom + 1}, style::kFrame);
      m_canvas.Text({X(tick), kBottom + 4.5}, values.Text(tick), {2.7, "middle", style::kQuiet, false, 0});
    }
    const Ticks counts(0, m_most, 6);
    for (const double tick : counts.values) {
      if (tick != std::floor(tick)) continue;
      m_canvas.Line({kLeft, Y(tick)}, {kRight, Y(tick)}, style::kGrid);
      m_canvas.Text({kLeft - 1.5, Y(tick) + 1}, Fixed(tick, 0), {2.7, "end", style::kQuiet, false, 0});
    }
    m_canvas.Rectangle({kLeft, kTop}, kRight - kLeft, kBottom - kTop, style::kFrame);
    m_canvas.Text({(kLeft + kRight) / 2, kBottom + 10}, "value, " + m_unit + "; number of parts upwards",
                  {style::kSmallText, "middle", style::kQuiet, false, 0});
  }

  void DrawNormal() {
    constexpr int kSteps = 200;
    if (!(m_capability.deviationOverall > 0)) return;
    std::vector<PagePoint> curve;
    for (int k = 0; k <= kSteps; ++k) {
      const double value = m_low + (m_high - m_low) * k / kSteps;
      curve.push_back({X(value), Y(Expected(value))});
    }
    m_canvas.Polyline(curve, style::kFitted);
  }

  void DrawLimit(double value, const std::string& name) {
    m_canvas.Line({X(value), kTop}, {X(value), kBottom}, style::kBoundary);
    m_canvas.Text({X(value), kTop - 1}, name, {2.7, "middle", "#c0392b", false, 0});
  }

  std::vector<std::size_t> m_counts;
  double m_first = 0;
  double m_last = 1;
  double m_most = 1;
};

}  // namespace

std::string DrawTrend(const PartReport& report, std::size_t characteristic) {
  return TrendChart(report, characteristic).Draw();
}

std::string DrawHistogram(const PartReport& report, std::size_t characteristic) {
  return HistogramChart(report, characteristic).Draw();
}
