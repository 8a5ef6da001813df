#ifndef NU_INSPECT_CANVAS_H
#define NU_INSPECT_CANVAS_H

#include <string>
#include <string_view>
#include <vector>

// A position on the page in millimetres, x to the right, y downwards.
struct PagePoint {
  double x;
  double y;
};

struct TextStyle {
  double size = 3.2;
  const char* anchor = "start";
  const char* colour = "#22272e";
  bool bold = false;
  double turn = 0;  // degrees, clockwise
};

// How a shape is drawn: its SVG presentation attributes.
namespace style {
inline constexpr const char* kGrid = "fill='none' stroke='#d9dee4' stroke-width='0.18'";
inline constexpr const char* kFrame = "fill='none' stroke='#5c6670' stroke-width='0.25'";
inline constexpr const char* kAxis = "fill='none' stroke='#9aa3ad' stroke-width='0.2' stroke-dasharray='5 1.2 0.8 1.2'";
inline constexpr const char* kProfile =
    "fill='none' stroke='#1f5fa8' stroke-width='0.3' stroke-linejoin='round' stroke-linecap='round'";
inline constexpr const char* kSample = "fill='#1f5fa8' stroke='none'";
inline constexpr const char* kFitted = "fill='none' stroke='#1b7f4b' stroke-width='0.4'";
inline constexpr const char* kBoundary = "fill='none' stroke='#c0392b' stroke-width='0.3' stroke-dasharray='1.6 1'";
inline constexpr const char* kMarker = "fill='#22272e' stroke='#ffffff' stroke-width='0.3' stroke-linejoin='round'";
inline constexpr const char* kContactHalo = "fill='none' stroke='#ffffff' stroke-width='1.3'";
inline constexpr const char* kContact = "fill='none' stroke='#22272e' stroke-width='0.5'";
inline constexpr const char* kQuiet = "#5c6670";  // the colour of what explains
inline constexpr double kSmallText = 2.9;
inline constexpr const char* kPaper = "fill='#ffffff' stroke='none'";
}  // namespace style

// An SVG document under construction.
class Canvas {
 public:
  Canvas(double width, double height, std::string_view title);

  void Line(PagePoint from, PagePoint to, const char* attributes);
  void Polyline(const std::vector<PagePoint>& points, const char* attributes);
  void Polygon(const std::vector<PagePoint>& points, const char* attributes);
  void Circle(PagePoint centre, double radius, std::string_view attributes);
  void Rectangle(PagePoint corner, double width, double height, std::string_view attributes);
  void Text(PagePoint at, std::string_view text, const TextStyle& style = {});

  // Text on a patch of paper, readable over lines.
  void Label(PagePoint at, std::string_view text, const TextStyle& style = {});

  // Everything until EndClip() shows only inside the rectangle.
  void BeginClip(PagePoint corner, double width, double height);
  void EndClip();

  // What a page with this picture can tell about the place: an empty group with the attribute data-points, a list of
  // [x, y, text ...] in JSON.
  void ReadOut(std::string_view points);

  std::string Finish() const;

 private:
  void Points(const char* element, const std::vector<PagePoint>& points, const char* attributes);

  std::string m_text;
  int m_clips = 0;
};

// The largest of 1, 2, 5 times a power of ten that is not above `value`, and the smallest not below it.
double RoundDown(double value);
double RoundUp(double value);

// Round values from `low` to `high`, about `count` of them; none where no span is left to divide.
struct Ticks {
  Ticks(double low, double high, int count);
  std::string Text(double value) const;
  std::string SignedText(double value) const;

  double step = 1;
  int decimals = 0;
  std::vector<double> values;
};

// The width that `text` takes, roughly: labels keep clear of each other by it.
double TextWidth(std::string_view text, double size);

#endif
