#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "picture/page.h"
#include "text.h"

namespace {

constexpr PagePoint kCorner{30, 32};  // of the room for the outline, its bands included
constexpr double kRoomWidth = 142;
constexpr double kRoomHeight = 126;
constexpr double kBand = 11;  // on either side of the fitted curve
constexpr double kFullTurn = 2 * std::numbers::pi;

struct Place {
  double x;
  double y;
};

// The fitted conic as a curve: a parameter along each branch, and the way outwards, away from the foci.
class Outline {
 public:
  explicit Outline(const ConicShape& shape) : m_shape(shape) {}

  bool IsClosed() const { return m_shape.kind == ConicShape::Kind::kEllipse; }
  int BranchOf(Place p) const { return m_shape.kind == ConicShape::Kind::kHyperbola && p.x < 0 ? 1 : 0; }

  double ParameterOf(Place p) const {
    if (IsClosed()) return std::atan2(p.y / m_shape.b, p.x / m_shape.a);
    return m_shape.kind == ConicShape::Kind::kHyperbola ? std::asinh(p.y / m_shape.b) : p.y;
  }

  Place At(double t, int branch) const {
    if (IsClosed()) return {m_shape.a * std::cos(t), m_shape.b * std::sin(t)};
    if (m_shape.kind == ConicShape::Kind::kParabola) return {t * t / (4 * m_shape.a), t};
    return {(branch == 0 ? m_shape.a : -m_shape.a) * std::cosh(t), m_shape.b * std::sinh(t)};
  }

  // Along the gradient of the equation: next to the curve that of the foot, too.
  Place Outwards(Place p) const {
    const double a = m_shape.a;
    Place g{-p.x / a, p.y / m_shape.b * (a / m_shape.b)};
    if (IsClosed()) g.x = -g.x;
    if (m_shape.kind == ConicShape::Kind::kParabola) g = {-2 * a, p.y};
    const double length = std::hypot(g.x, g.y);
    return {g.x / length, g.y / length};
  }

 private:
  ConicShape m_shape;
};

// A measured point: where along the curve, and how far from it.
struct CurveSample {
  int branch;
  double t;
  double deviation;
};

class ConicPlot {
 public:
  ConicPlot(const Inspection& inspection, const PictureLabels& labels)
      : m_inspection(inspection),
        m_page(inspection, labels),
        m_canvas(m_page.Drawing()),
        m_outline(inspection.conic),
        m_scale(m_page.ChooseMagnification(m_page.LargestDeviation(), kBand, "magnification, across")),
        m_rings(-kBand / m_scale * m_page.PerLength(), kBand / m_scale * m_page.PerLength(), 7) {
    for (std::size_t i = 0; i < inspection.local.size(); ++i) m_samples.push_back(SampleOf(i));
    FindRanges();
    FitToPage();
  }

  std::string Draw() {
    DrawAxes();
    for (const double ring : m_rings.values) DrawOffset(ring / m_page.PerLength(), style::kGrid);
    DrawOffset(0, style::kFitted);
    DrawOffset(m_inspection.deviations[m_inspection.IndexOfMax()], style::kBoundary);
    DrawOffset(m_inspection.deviations[m_inspection.IndexOfMin()], style::kBoundary);
    DrawProfile();
    DrawExtremes();
    m_page.TellPoints([this](std::size_t i) {
      return std::vector<PagePoint>{OnPage(m_samples[i].t, m_samples[i].branch, m_samples[i].deviation)};
    });
    m_page.DrawRuler(kBand, m_scale, m_rings);
    return m_canvas.Finish();
  }

 private:
  struct Range {
    double low = std::numeric_limits<double>::max();
    double high = std::numeric_limits<double>::lowest();
  };

  CurveSample SampleOf(std::size_t i) const {
    const Place p{m_inspection.local[i][0], m_inspection.local[i][1]};
    const Place out = m_outline.Outwards(p);
    const double deviation = m_inspection.deviations[i];
    const Place foot{p.x - deviation * out.x, p.y - deviation * out.y};
    return {m_outline.BranchOf(foot), m_outline.ParameterOf(foot), deviation};
  }

  // The parts of the curve to show: all of an ellipse, what was measured of the others.
  void FindRanges() {
    for (const CurveSample& s : m_samples) {
      Range& range = m_ranges[s.branch];
      range = {std::min(range.low, s.t), std::max(range.high, s.t)};
    }
    if (m_outline.IsClosed()) m_ranges[0] = {-std::numbers::pi, std::numbers::pi};
  }

  void FitToPage() {
    Place low{std::numeric_limits<double>::max(), std::numeric_limits<double>::max()};
    Place high{std::numeric_limits<double>::lowest(), std::numeric_limits<double>::lowest()};
    ForCurve([&](double t, int branch) {
      const Place p = m_outline.At(t, branch);
      low = {std::min(low.x, p.x), std::min(low.y, p.y)};
      high = {std::max(high.x, p.x), std::max(high.y, p.y)};
    });
    m_middle = {low.x + (high.x - low.x) / 2, low.y + (high.y - low.y) / 2};
    m_reach = {(high.x - low.x) / 2, (high.y - low.y) / 2};
    m_outlineScale = 0.5 * std::min((kRoomWidth - 2 * kBand) / m_reach.x, (kRoomHeight - 2 * kBand) / m_reach.y);
    m_page.StateMagnification(m_outlineScale, "magnification, outline");
  }

  template<typename Visit>
  void ForCurve(const Visit& visit) const {
    constexpr int kSteps = 360;
    for (int branch = 0; branch < 2; ++branch) {
      const Range& range = m_ranges[branch];
      if (range.low > range.high) continue;
      for (int i = 0; i <= kSteps; ++i) visit(range.low + (range.high - range.low) * i / kSteps, branch);
    }
  }

  PagePoint OnPage(double t, int branch, double deviation) const {
    const Place p = m_outline.At(t, branch);
    const Place out = m_outline.Outwards(p);
    const double across = deviation * m_scale;
    return {kCorner.x + kRoomWidth / 2 + (p.x - m_middle.x) * m_outlineScale + out.x * across,
            kCorner.y + kRoomHeight / 2 - (p.y - m_middle.y) * m_outlineScale - out.y * across};
  }

  void DrawAxes() {
    const auto onPage = [this](Place p) {
      return PagePoint{kCorner.x + kRoomWidth / 2 + (p.x - m_middle.x) * m_outlineScale,
                       kCorner.y + kRoomHeight / 2 - (p.y - m_middle.y) * m_outlineScale};
    };
    const double margin = (kBand + 3) / m_outlineScale;
    const double left = m_middle.x - m_reach.x - margin;
    const double right = m_middle.x + m_reach.x + margin;
    const double top = m_middle.y + m_reach.y + margin;
    const double bottom = m_middle.y - m_reach.y - margin;
    const TextStyle label{3, "start", "#5c6670", false, 0};
    if (bottom < 0 && top > 0) {
      m_canvas.Line(onPage({left, 0}), onPage({right, 0}), style::kAxis);
      m_canvas.Text({onPage({right, 0}).x + 1, onPage({right, 0}).y + 1}, "x", label);
    }
    if (left < 0 && right > 0) {
      m_canvas.Line(onPage({0, bottom}), onPage({0, top}), style::kAxis);
      m_canvas.Text({onPage({0, top}).x - 0.8, onPage({0, top}).y - 1}, "y", label);
    }
  }

  void DrawOffset(double deviation, const char* attributes) {
    std::vector<PagePoint> line[2];
    ForCurve([&](double t, int branch) { line[branch].push_back(OnPage(t, branch, deviation)); });
    for (const auto& branch : line) {
      if (!branch.empty()) m_canvas.Polyline(branch, attributes);
    }
  }

  // Between two points the deviation changes evenly; wide gaps, where nothing was measured, stay open.
  void DrawProfile() {
    constexpr std::size_t kBins = 3600;
    for (int branch = 0; branch < 2; ++branch) {
      std::vector<Sample> profile;
      for (const CurveSample& s : m_samples) {
        if (s.branch == branch) profile.push_back({s.t, s.deviation});
      }
      if (profile.empty()) continue;
      profile = Envelope(std::move(profile), kBins);
      if (m_outline.IsClosed()) profile.push_back({profile.front().position + kFullTurn, profile.front().value});
      DrawBranch(profile, branch);
    }
    m_page.LineKey(style::kProfile, "measured profile");
    m_page.LineKey(style::kFitted, "fitted " + m_inspection.terms.feature);
    m_page.LineKey(style::kBoundary, "largest, smallest deviation");
  }

  void DrawBranch(const std::vector<Sample>& profile, int branch) {
    constexpr std::size_t kMostDots = 120;
    constexpr double kLeastGap = 12;  // page millimetres
    constexpr double kStep = 1;
    double length = 0;
    for (std::size_t i = 1; i < profile.size(); ++i) length += Apart(profile[i - 1], profile[i], branch);
    const double gap = std::max(kLeastGap, 3 * length / static_cast<double>(profile.size()));
    std::vector<PagePoint> line = {OnPage(profile[0].position, branch, profile[0].value)};
    for (std::size_t i = 1; i < profile.size(); ++i) {
      const Sample& from = profile[i - 1];
      const Sample& to = profile[i];
      const double apart = Apart(from, to, branch);
      if (apart > gap) {
        m_canvas.Polyline(line, style::kProfile);
        line.clear();
      }
      const int steps = apart > gap ? 1 : std::max(1, static_cast<int>(std::ceil(apart / kStep)));
      for (int k = 1; k <= steps; ++k) {
        const double part = static_cast<double>(k) / steps;
        line.push_back(OnPage(from.position + part * (to.position - from.position), branch,
                              from.value + part * (to.value - from.value)));
      }
    }
    m_canvas.Polyline(line, style::kProfile);
    if (profile.size() > kMostDots) return;
    for (const Sample& s : profile) m_canvas.Circle(OnPage(s.position, branch, s.value), 0.6, style::kSample);
  }

  double Apart(const Sample& from, const Sample& to, int branch) const {
    const PagePoint a = OnPage(from.position, branch, 0);
    const PagePoint b = OnPage(to.position, branch, 0);
    return std::hypot(b.x - a.x, b.y - a.y);
  }

  void DrawExtremes() {
    const std::size_t most = m_inspection.IndexOfMax();
    const std::size_t least = m_inspection.IndexOfMin();
    DrawExtreme(most, -1);
    DrawExtreme(least, 1);
    m_page.ExtremeKeys("at " + PlaceText(most), "at " + PlaceText(least));
    if (!m_outline.IsClosed()) m_page.Note("positive away from the focus");
    m_page.Note("x towards " + DirectionName(m_inspection.frame.x));
    m_page.Note("seen against the normal " + DirectionName(m_inspection.frame.z));
  }

  // `outwards` is where the marker points: 1 from inside, -1 from outside.
  void DrawExtreme(std::size_t index, double outwards) {
    constexpr double kClearance = 0.6;
    const CurveSample& s = m_samples[index];
    const Place out = m_outline.Outwards(m_outline.At(s.t, s.branch));
    DrawMarker(m_canvas, OnPage(s.t, s.branch, s.deviation - kClearance * outwards / m_scale),
               {outwards * out.x, -outwards * out.y});
  }

  std::string PlaceText(std::size_t index) const {
    const Vec3& p = m_inspection.local[index];
    return "(" + m_page.LengthText(p[0]) + ", " + m_page.LengthText(p[1]) + ")";
  }

  const Inspection& m_inspection;
  Page m_page;
  Canvas& m_canvas;
  Outline m_outline;
  double m_scale;  // page millimetres per length unit, across the curve
  Ticks m_rings;
  std::vector<CurveSample> m_samples;
  Range m_ranges[2];
  Place m_middle{};
  Place m_reach{};
  double m_outlineScale = 1;  // page millimetres per length unit, along it
};

}  // namespace

std::string DrawConic(const Inspection& inspection, const PictureLabels& labels) {
  return ConicPlot(inspection, labels).Draw();
}
