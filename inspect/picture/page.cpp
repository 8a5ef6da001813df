#include "picture/page.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <string_view>

#include "evaluate/roundness_filter.h"
#include "text.h"

namespace {

constexpr double kPanelLeft = 186;
constexpr double kPanelValueRight = 240;
constexpr double kPanelRight = 252;
constexpr double kFooter = 173.5;
constexpr std::size_t kLongestTitle = 44;

std::string Capitalised(std::string text) {
  if (!text.empty() && text[0] >= 'a' && text[0] <= 'z') text[0] = static_cast<char>(text[0] - 'a' + 'A');
  return text;
}

bool IsInPanel(const Row& row) {
  if (row.name.starts_with("u(") || row.name.starts_with("on the ")) return false;
  constexpr std::string_view kElsewhere[] = {"feature",
                                             "criterion",
                                             "reference",
                                             "points",
                                             "columns",
                                             "unit",
                                             "filter",
                                             "verdict",
                                             "warning",
                                             "time of the fit",
                                             "degrees of freedom",
                                             "explanation",
                                             "certificate",
                                             "uncertainties"};
  return std::find(std::begin(kElsewhere), std::end(kElsewhere), row.name) == std::end(kElsewhere);
}

const Row* FindRow(const std::vector<Row>& rows, std::string_view name) {
  const auto found = std::find_if(rows.begin(), rows.end(), [name](const Row& row) { return row.name == name; });
  return found == rows.end() ? nullptr : &*found;
}

// Rows stand closer where there are many.
double RowHeight(const std::vector<Row>& rows) {
  constexpr double kMost = 4.9;
  constexpr double kRoom = 136;
  constexpr double kVerdict = 9;
  constexpr auto kOtherRows = 12;  // magnifications, keys and notes
  const double room = FindRow(rows, "verdict") == nullptr ? kRoom : kRoom - kVerdict;
  return std::min(kMost, room / static_cast<double>(std::count_if(rows.begin(), rows.end(), IsInPanel) + kOtherRows));
}

// Scales divide by it: points without any deviation count as nearly without.
double LargestMagnitude(const std::vector<double>& values, const LengthUnit& unit) {
  constexpr double kPicometre = 1e-9;  // in millimetres
  double largest = kPicometre / unit.millimetres;
  for (const double value : values) largest = std::max(largest, std::fabs(value));
  return largest;
}

}  // namespace

Page::Page(const Inspection& inspection, const PictureLabels& labels)
    : m_inspection(inspection),
      m_labels(labels),
      m_largest(LargestMagnitude(inspection.deviations, labels.unit)),
      m_unit(labels.unit),
      m_deviationUnit(ChooseDeviationUnit(labels.unit, std::max(inspection.form, m_largest))),
      m_canvas(kWidth, kHeight, Capitalised(inspection.terms.form) + " of " + labels.file),
      m_rowHeight(RowHeight(labels.rows)) {
  DrawTitle(inspection, labels);
  DrawVerdict(labels);
  DrawRows(labels);
}

void Page::DrawTitle(const Inspection& inspection, const PictureLabels& labels) {
  std::string file = labels.file;
  if (file.size() > kLongestTitle) file = file.substr(0, kLongestTitle - 3) + "...";
  m_canvas.Text({kLeft, 13}, Capitalised(inspection.terms.form) + " of " + file, {6, "start", "#22272e", true, 0});
  m_canvas.Text({kLeft, 20},
                "deviations from the fitted " + inspection.terms.feature + " (" + inspection.terms.criterion + "), " +
                    std::to_string(inspection.deviations.size()) + " points, " +
                    (inspection.filter > 0 ? FilterText(inspection.filter) : "unfiltered"),
                {3.6, "start", style::kQuiet, false, 0});
  m_canvas.Text({kLeft, kFooter}, labels.source, {style::kSmallText, "start", style::kQuiet, false, 0});
  if (!inspection.warning.empty()) {
    m_canvas.Text({kLeft, kTop}, "warning: " + inspection.warning, {3.6, "start", "#c0392b", true, 0});
  }
}

void Page::DrawVerdict(const PictureLabels& labels) {
  const std::string form = m_inspection.terms.form + " " + DeviationText(m_inspection.form).substr(1);
  m_canvas.Text({kPanelLeft, m_panelY}, form, {5, "start", "#22272e", true, 0});
  m_panelY += 4;
  const Row* verdict = FindRow(labels.rows, "verdict");
  const Row* tolerance = FindRow(labels.rows, "tolerance");
  if (verdict != nullptr && tolerance != nullptr) {
    const bool within = verdict->value.front() == 'w';
    m_canvas.Rectangle({kPanelLeft, m_panelY}, kPanelRight - kPanelLeft, 7,
                       within ? "rx='1.2' fill='#1b7f4b'" : "rx='1.2' fill='#c0392b'");
    m_canvas.Text({(kPanelLeft + kPanelRight) / 2, m_panelY + 4.8}, verdict->value,
                  {3.6, "middle", "#ffffff", true, 0});
    m_panelY += 9;
  }
  m_panelY += m_rowHeight;
}

void Page::DrawRows(const PictureLabels& labels) {
  for (const Row& row : labels.rows) {
    if (!IsInPanel(row)) continue;
    m_canvas.Text({kPanelLeft, m_panelY}, row.name, {style::kSmallText, "start", style::kQuiet, false, 0});
    m_canvas.Text({kPanelValueRight, m_panelY}, WithMinusSign(row.value),
                  {style::kSmallText, "end", "#22272e", false, 0});
    m_canvas.Text({kPanelValueRight + 1.5, m_panelY}, row.unit, {style::kSmallText, "start", style::kQuiet, false, 0});
    m_panelY += m_rowHeight;
  }
  m_canvas.Line({kPanelLeft, m_panelY - 2}, {kPanelRight, m_panelY - 2}, style::kGrid);
  m_panelY += m_rowHeight - 2;
}

double Page::ChooseMagnification(double span, double room, const std::string& name) {
  // Larger ones would show nothing but the rounding of the numbers.
  constexpr double kLargestMagnification = 1e7;
  const double wanted = room / (span * m_unit.millimetres);
  const double scale =
      (wanted < kLargestMagnification ? RoundDown(wanted) : kLargestMagnification) * m_unit.millimetres;
  StateMagnification(scale, name);
  return scale;
}

void Page::StateMagnification(double scale, const std::string& name) {
  constexpr int kDigits = 3;
  const double magnification = scale / m_unit.millimetres;
  // General() changes to powers of ten where the digits end; magnifications read better in full.
  const auto text = [](double value) { return value < 100 ? General(value, kDigits) : Fixed(value, 0); };
  m_canvas.Text({kPanelLeft, m_panelY}, name, {style::kSmallText, "start", style::kQuiet, false, 0});
  m_canvas.Text({kPanelValueRight, m_panelY},
                magnification < 1 ? "1:" + text(1 / magnification) : text(magnification) + ":1",
                {style::kSmallText, "end", "#22272e", true, 0});
  m_panelY += m_rowHeight;
}

void Page::DrawRuler(double band, double scale, const Ticks& lines) {
  constexpr double kX = 19;
  const double zero = kBottom - band - 1;
  m_canvas.Line({kX, zero - band}, {kX, zero + band}, style::kFrame);
  for (const double line : lines.values) {
    const double y = zero - line / m_deviationUnit.perLength * scale;
    m_canvas.Line({kX, y}, {kX + 1.2, y}, style::kFrame);
    m_canvas.Text({kX + 2, y + 0.9}, lines.SignedText(line), {2.5, "start", "#5c6670", false, 0});
  }
  m_canvas.Text({kX - 2.5, zero}, std::string("deviation / ") + m_deviationUnit.symbol,
                {2.7, "middle", "#22272e", false, -90});
}

void Page::Note(const std::string& text) {
  m_canvas.Text({kPanelLeft, m_panelY}, text, {style::kSmallText, "start", style::kQuiet, false, 0});
  m_panelY += m_rowHeight;
}

void Page::LineKey(const char* attributes, const std::string& text) {
  m_canvas.Line({kPanelLeft, m_panelY - 1}, {kPanelLeft + 8, m_panelY - 1}, attributes);
  m_canvas.Text({kPanelLeft + 11, m_panelY}, text, {style::kSmallText, "start", "#22272e", false, 0});
  m_panelY += m_rowHeight;
}

void Page::MarkContacts(const std::vector<PagePoint>& places, bool outer) {
  constexpr double kRadius = 1.5;
  if (places.empty()) return;
  const auto mark = [&](PagePoint at, const char* attributes) {
    if (outer) return m_canvas.Circle(at, kRadius, attributes);
    m_canvas.Rectangle({at.x - kRadius, at.y - kRadius}, 2 * kRadius, 2 * kRadius, attributes);
  };
  for (const PagePoint& at : places) {
    mark(at, style::kContactHalo);  // shows on dark dots, too
    mark(at, style::kContact);
  }
  mark({kPanelLeft + 4, m_panelY - 1}, style::kContact);
  m_canvas.Text({kPanelLeft + 11, m_panelY}, "contact points, " + BoundaryName(m_inspection, outer),
                {style::kSmallText, "start", "#22272e", false, 0});
  m_panelY += m_rowHeight;
}

void Page::ExtremeKeys(const std::string& whereMax, const std::string& whereMin) {
  const double largest = m_inspection.deviations[m_inspection.IndexOfMax()];
  const double smallest = m_inspection.deviations[m_inspection.IndexOfMin()];
  const bool showMin = !whereMin.empty();
  DrawMarker(m_canvas, {kPanelLeft + 4, m_panelY + 0.1}, kDownwards);
  m_canvas.Text({kPanelLeft + 11, m_panelY}, DeviationText(largest) + " " + whereMax,
                {style::kSmallText, "start", "#22272e", false, 0});
  m_panelY += m_rowHeight;
  if (!showMin) return;
  DrawMarker(m_canvas, {kPanelLeft + 4, m_panelY - 2.2}, kUpwards);
  m_canvas.Text({kPanelLeft + 11, m_panelY}, DeviationText(smallest) + " " + whereMin,
                {style::kSmallText, "start", "#22272e", false, 0});
  m_panelY += m_rowHeight;
}

// All of them, or so many that a page stays small: evenly taken, with the extremes and the contact points.
std::vector<std::size_t> Page::PointsToTell() const {
  constexpr std::size_t kMost = 2000;
  const std::size_t count = m_inspection.deviations.size();
  const std::size_t stride = (count + kMost - 1) / kMost;
  std::set<std::size_t> told = {m_inspection.IndexOfMax(), m_inspection.IndexOfMin()};
  for (const Contact& contact : m_inspection.contacts) told.insert(contact.index);
  for (std::size_t i = 0; i < count; i += stride) told.insert(i);
  return {told.begin(), told.end()};
}

// Its place on the page, its place in the file, its deviation and its coordinates.
std::string Page::ReadOutText(PagePoint at, std::size_t index) const {
  const PointFile& file = *m_labels.readOut;
  std::string coordinates;
  for (const double coordinate : file.points[index]) {
    coordinates += (coordinates.empty() ? "" : ", ") + WithMinusSign(Fixed(coordinate, m_unit.decimals));
  }
  constexpr int kPageDecimals = 2;
  return "[" + Fixed(at.x, kPageDecimals) + "," + Fixed(at.y, kPageDecimals) + ",\"" + file.place + " " +
         std::to_string(file.lines[index]) + "\",\"" + DeviationText(m_inspection.deviations[index]) + "\",\"" +
         coordinates + "\"]";
}

std::string Page::DeviationText(double deviation) const {
  constexpr int kDigits = 4;
  const double shown = deviation * m_deviationUnit.perLength;
  const double magnitude = std::fabs(shown);
  const int before = magnitude < 1 ? 1 : static_cast<int>(std::floor(std::log10(magnitude))) + 1;
  return WithMinusSign(SignedFixed(shown, std::clamp(kDigits - before, 0, kDigits - 1))) + " " + m_deviationUnit.symbol;
}

std::string Page::LengthText(double length) const {
  constexpr int kShorter = 4;
  return WithMinusSign(Fixed(length, std::max(0, m_unit.decimals - kShorter)));
}

void DrawMarker(Canvas& canvas, PagePoint tip, PagePoint direction) {
  constexpr double kHalfWidth = 1.3;
  constexpr double kLength = 2.4;
  const PagePoint base{tip.x - kLength * direction.x, tip.y - kLength * direction.y};
  const PagePoint aside{-kHalfWidth * direction.y, kHalfWidth * direction.x};
  canvas.Polygon({tip, {base.x - aside.x, base.y - aside.y}, {base.x + aside.x, base.y + aside.y}}, style::kMarker);
}

std::vector<Sample> Envelope(std::vector<Sample> samples, std::size_t bins) {
  std::stable_sort(samples.begin(), samples.end(),
                   [](const Sample& a, const Sample& b) { return a.position < b.position; });
  if (samples.size() <= 4 * bins) return samples;
  const auto byValue = [](const Sample& a, const Sample& b) { return a.value < b.value; };
  const double start = samples.front().position;
  const double width = (samples.back().position - start) / static_cast<double>(bins);
  std::vector<Sample> kept;
  auto from = samples.begin();
  for (std::size_t bin = 1; bin <= bins && from != samples.end(); ++bin) {
    const double limit = start + width * static_cast<double>(bin);
    const auto to = bin == bins
                        ? samples.end()
                        : std::find_if(from, samples.end(), [limit](const Sample& s) { return s.position > limit; });
    if (from == to) continue;
    const auto [least, greatest] = std::minmax_element(from, to, byValue);
    kept.push_back(least < greatest ? *least : *greatest);
    if (least != greatest) kept.push_back(least < greatest ? *greatest : *least);
    from = to;
  }
  return kept;
}
