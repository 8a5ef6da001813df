#include "picture/canvas.h"

#include <algorithm>
#include <cmath>

#include "text.h"

namespace {

constexpr int kPageDecimals = 3;  // a micrometre of paper

std::string Number(double value) {
  std::string text = Fixed(value, kPageDecimals);
  if (text.find('.') == std::string::npos) return text;
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') text.pop_back();
  return text;
}

std::string Attribute(const char* name, double value) {
  return std::string(" ") + name + "='" + Number(value) + "'";
}

double RoundNumber(double value, bool up) {
  const double power = std::pow(10.0, std::floor(std::log10(value)));
  // Without the slack a value that is round itself, up to its last bits, would go to the next round number.
  constexpr double kSlack = 1e-9;
  constexpr double kSteps[] = {1, 2, 5, 10};
  double below = 1;
  for (const double step : kSteps) {
    if (up && step * power >= value * (1 - kSlack)) return step * power;
    if (step * power <= value * (1 + kSlack)) below = step;
  }
  return below * power;
}

}  // namespace

Canvas::Canvas(double width, double height, std::string_view title) {
  m_text = "<?xml version='1.0' encoding='UTF-8'?>\n<svg xmlns='http://www.w3.org/2000/svg' width='" + Number(width) +
           "mm' height='" + Number(height) + "mm' viewBox='0 0 " + Number(width) + " " + Number(height) +
           "' font-family='DejaVu Sans, Verdana, Arial, sans-serif'>\n<title>" + XmlEscaped(title) + "</title>\n";
  Rectangle({0, 0}, width, height, style::kPaper);
}

void Canvas::Line(PagePoint from, PagePoint to, const char* attributes) {
  m_text += "<line" + Attribute("x1", from.x) + Attribute("y1", from.y) + Attribute("x2", to.x) +
            Attribute("y2", to.y) + " " + attributes + "/>\n";
}

void Canvas::Points(const char* element, const std::vector<PagePoint>& points, const char* attributes) {
  m_text += std::string("<") + element + " points='";
  for (const PagePoint& p : points) m_text += Number(p.x) + "," + Number(p.y) + " ";
  m_text += std::string("' ") + attributes + "/>\n";
}

void Canvas::Polyline(const std::vector<PagePoint>& points, const char* attributes) {
  Points("polyline", points, attributes);
}

void Canvas::Polygon(const std::vector<PagePoint>& points, const char* attributes) {
  Points("polygon", points, attributes);
}

void Canvas::Circle(PagePoint centre, double radius, std::string_view attributes) {
  m_text += "<circle" + Attribute("cx", centre.x) + Attribute("cy", centre.y) + Attribute("r", radius) + " " +
            std::string(attributes) + "/>\n";
}

void Canvas::Rectangle(PagePoint corner, double width, double height, std::string_view attributes) {
  m_text += "<rect" + Attribute("x", corner.x) + Attribute("y", corner.y) + Attribute("width", width) +
            Attribute("height", height) + " " + std::string(attributes) + "/>\n";
}

void Canvas::Text(PagePoint at, std::string_view text, const TextStyle& style) {
  m_text += "<text" + Attribute("x", at.x) + Attribute("y", at.y) + Attribute("font-size", style.size) +
            " text-anchor='" + style.anchor + "' fill='" + style.colour + "'";
  if (style.bold) m_text += " font-weight='bold'";
  if (style.turn != 0) {
    m_text += " transform='rotate(" + Number(style.turn) + " " + Number(at.x) + " " + Number(at.y) + ")'";
  }
  m_text += ">" + XmlEscaped(text) + "</text>\n";
}

void Canvas::Label(PagePoint at, std::string_view text, const TextStyle& style) {
  const double width = TextWidth(text, style.size);
  const std::string_view anchor = style.anchor;
  const double left = anchor == "middle" ? at.x - width / 2 : anchor == "end" ? at.x - width : at.x;
  Rectangle({left - 0.3, at.y - 0.9 * style.size}, width + 0.6, 1.15 * style.size, style::kPaper);
  Text(at, text, style);
}

void Canvas::BeginClip(PagePoint corner, double width, double height) {
  const std::string name = "clip" + std::to_string(++m_clips);
  m_text += "<clipPath id='" + name + "'>";
  Rectangle(corner, width, height, "");
  m_text += "</clipPath>\n<g clip-path='url(#" + name + ")'>\n";
}

void Canvas::EndClip() {
  m_text += "</g>\n";
}

void Canvas::ReadOut(std::string_view points) {
  m_text += "<g class='read-out' data-points='" + XmlEscaped(points) + "'/>\n";
}

std::string Canvas::Finish() const {
  return m_text + "</svg>\n";
}

double RoundDown(double value) {
  return RoundNumber(value, false);
}
double RoundUp(double value) {
  return RoundNumber(value, true);
}

Ticks::Ticks(double low, double high, int count) {
  constexpr int kMostDecimals = 15;
  const double span = high - low;
  if (!(span > 0 && std::isfinite(span))) return;
  step = RoundUp(span / count);
  decimals = std::clamp(static_cast<int>(-std::floor(std::log10(step) + 1e-9)), 0, kMostDecimals);
  const double slack = 1e-6 * step;
  const double first = std::ceil((low - slack) / step);
  // Counted, because far from zero the next multiple may be the same number.
  for (int k = 0; k <= count && (first + k) * step <= high + slack; ++k) values.push_back((first + k) * step);
}

std::string Ticks::Text(double value) const {
  return WithMinusSign(Fixed(value, decimals));
}

std::string Ticks::SignedText(double value) const {
  return std::fabs(value) < step / 2 ? "0" : WithMinusSign(SignedFixed(value, decimals));
}

double TextWidth(std::string_view text, double size) {
  constexpr double kMeanAdvance = 0.62;
  const auto characters =
      std::count_if(text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; });
  return kMeanAdvance * size * static_cast<double>(characters);
}
