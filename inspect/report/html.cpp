#include "report/html.h"

#include <nu/nu.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

#include "batch/charts.h"
#include "batch/part_text.h"
#include "report/assets.h"
#include "report/markup.h"
#include "report/moment.h"
#include "report/table.h"
#include "text.h"

namespace {

constexpr int kIndexDecimals = 2;

Cell NumberCell(const std::optional<double>& value, int decimals) {
  if (!value) return {};
  if (!std::isfinite(*value)) return {*value > 0 ? "\u221E" : "-\u221E", "", "", ""};
  return {Fixed(*value, decimals), Shortest(*value), "", ""};
}

Cell CountCell(std::size_t count) {
  return {std::to_string(count), std::to_string(count), "", ""};
}

std::string StyleOf(Verdict verdict) {
  if (verdict == Verdict::kWithinTolerance) return "verdict within";
  if (verdict == Verdict::kOutOfTolerance) return "verdict out";
  return verdict == Verdict::kFailed ? "verdict failed" : "verdict";
}

std::string WordsOf(Verdict verdict) {
  return verdict == Verdict::kNoTolerance ? "no tolerance" : VerdictText(verdict);
}

Cell VerdictCell(Verdict verdict) {
  return {WordsOf(verdict), "", "", StyleOf(verdict)};
}

bool StartsWithAny(const std::string& name, std::initializer_list<std::string_view> starts) {
  return std::any_of(starts.begin(), starts.end(), [&](std::string_view start) { return name.starts_with(start); });
}

bool IsUncertaintyRow(const Row& row) {
  return StartsWithAny(row.name, {"u(", "uncertainties", "degrees of freedom"});
}

bool IsProofRow(const Row& row) {
  return StartsWithAny(row.name, {"best of all", "certificate", "lower bound", "gap"});
}

// What stands elsewhere on the page, or differs from one run to the next.
bool IsLeftOut(const Row& row) {
  return IsUncertaintyRow(row) || IsProofRow(row) ||
         StartsWithAny(row.name, {"explanation", "contact points", "on the ", "time of the fit", "verdict", "tolerance",
                                  "warning"});
}

class HtmlWriter {
 public:
  explicit HtmlWriter(const PartReport& report) : m_report(report), m_plan(report.plan) {}

  std::string Write() {
    const std::string title = m_plan.title.empty() ? FileName(m_plan.path) : m_plan.title;
    m_page.Raw("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n");
    m_page.Raw("<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n");
    m_page.Raw(
        "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src 'unsafe-inline'; "
        "script-src 'unsafe-inline'\">\n");
    m_page.Element("title", title + ", inspection report");
    m_page.Raw(std::string("<style>\n") + kReportCss + "</style>\n</head>\n<body>\n");
    AddHead(title);
    m_page.Raw("<main>\n");
    if (IsBatch()) AddPartList();
    if (!m_report.capabilities.empty()) AddCapabilities();
    AddCharacteristics();
    AddParts();
    m_page.Raw("</main>\n");
    AddFoot();
    m_page.Raw(std::string("<script>\n") + kReportJs + "</script>\n</body>\n</html>\n");
    return m_page.Take();
  }

 private:
  bool IsBatch() const { return m_report.parts.size() > 1; }

  void AddFact(std::string_view name, std::string_view value) {
    if (value.empty()) return;
    m_page.Open("div");
    m_page.Element("dt", name);
    m_page.Element("dd", value);
    m_page.Close("div");
  }

  void AddHead(const std::string& title) {
    Verdict verdict = Verdict::kNoTolerance;
    for (const PartResult& part : m_report.parts) verdict = GraverVerdict(verdict, part.verdict);
    m_page.Raw("<header>\n");
    m_page.Element("h1", title);
    m_page.Element("span", WordsOf(verdict), {{"class", StyleOf(verdict)}});
    m_page.Open("dl", {{"class", "facts"}});
    if (!m_plan.title.empty()) AddFact("plan", FileName(m_plan.path));
    for (const auto& [name, value] : m_plan.remarks) AddFact(name, value);
    if (m_report.parts.size() == 1) AddFact("part", m_report.parts[0].name);
    AddFact("unit", m_plan.unit->symbol);
    AddFact("report of", CurrentMoment());
    m_page.Close("dl");
    m_page.Raw("</header>\n");
  }

  // "3 within tolerance, 1 OUT OF TOLERANCE"
  std::string Tally() const {
    constexpr std::array<Verdict, 4> kVerdicts = {Verdict::kFailed, Verdict::kOutOfTolerance, Verdict::kWithinTolerance,
                                                  Verdict::kNoTolerance};
    std::string text;
    for (const Verdict verdict : kVerdicts) {
      std::size_t count = 0;
      for (const PartResult& part : m_report.parts) {
        count += static_cast<std::size_t>(std::count_if(part.characteristics.begin(), part.characteristics.end(),
                                                        [verdict](const auto& c) { return c.verdict == verdict; }));
      }
      if (count > 0) text += (text.empty() ? "" : ", ") + std::to_string(count) + " " + WordsOf(verdict);
    }
    return text;
  }

  static std::string FeatureId(std::size_t part, std::size_t feature) {
    return "part-" + std::to_string(part + 1) + "-feature-" + std::to_string(feature + 1);
  }

  // The place of a feature on the page; empty if there is none.
  std::string LinkTo(std::size_t part, const std::string& name) const {
    const std::vector<FeatureResult>& features = m_report.parts[part].features;
    const auto found =
        std::find_if(features.begin(), features.end(), [&](const FeatureResult& each) { return each.name == name; });
    return found == features.end() ? "" : FeatureId(part, static_cast<std::size_t>(found - features.begin()));
  }

  // A row for each part of a batch.
  void AddPartList() {
    HtmlTable table;
    table.caption = std::to_string(m_report.parts.size()) + " parts";
    table.style = "sortable parts";
    table.heads = {"No.", "Part", "Verdict", "Out of tolerance", "Without a value", "Findings"};
    for (const PartResult& part : m_report.parts) {
      const auto count = [&part](Verdict verdict) {
        return static_cast<std::size_t>(
            std::count_if(part.characteristics.begin(), part.characteristics.end(),
                          [verdict](const Characteristic& each) { return each.verdict == verdict; }));
      };
      table.rows.push_back({CountCell(table.rows.size() + 1),
                            {part.name, "", "", ""},
                            VerdictCell(part.verdict),
                            CountCell(count(Verdict::kOutOfTolerance)),
                            CountCell(count(Verdict::kFailed)),
                            {FindingsOf(part), "", "", ""}});
    }
    m_page.Open("section", {{"aria-labelledby", "parts"}});
    m_page.Element("h2", "Parts", {{"id", "parts"}});
    AddTable(table, &m_page);
    m_page.Close("section");
  }

  void AddCharacteristics() {
    HtmlTable table;
    table.caption = "Characteristics: " + Tally();
    table.style = "sortable summary";
    // What is read first stands first: on narrow pages the rest is out of sight.
    table.heads = {"No.",   "Part",  "Characteristic", "Verdict",     "Measured", "Unit",    "Nominal",
                   "Lower", "Upper", "Deviation",      "Uncertainty", "Kind",     "Feature", "Datum"};
    for (std::size_t part = 0; part < m_report.parts.size(); ++part) {
      for (const Characteristic& each : m_report.parts[part].characteristics) {
        table.rows.push_back(CharacteristicCells(part, each, table.rows.size() + 1));
      }
    }
    m_page.Open("section", {{"aria-labelledby", "summary"}});
    m_page.Element("h2", IsBatch() ? "Characteristics" : "Summary", {{"id", "summary"}});
    for (const PartResult& part : m_report.parts) {
      if (!part.failure.empty()) AddFailure(IsBatch() ? part.name + ": " + part.failure : part.failure);
    }
    if (!table.rows.empty()) AddTable(table, &m_page);
    AddFailures();
    m_page.Element(
        "p",
        "Uncertainties are standard ones (k = 1), from the deviations; none is given of form, of zones and in "
        "datum frames.");
    AddEvaluations();
    m_page.Close("section");
  }

  // How the values follow from the points: the same in every part.
  void AddEvaluations() {
    HtmlTable table;
    table.caption = "How each value follows from the points";
    table.style = "rows";
    table.heads = {"Characteristic", "Evaluation"};
    for (std::size_t i = 0; i < m_plan.characteristics.size(); ++i) {
      for (const PartResult& part : m_report.parts) {
        if (i >= part.characteristics.size() || part.characteristics[i].evaluation.empty()) continue;
        table.rows.push_back(
            {{part.characteristics[i].name, "", "", ""}, {part.characteristics[i].evaluation, "", "", ""}});
        break;
      }
    }
    if (!table.rows.empty()) AddTable(table, &m_page);
  }

  std::vector<Cell> CharacteristicCells(std::size_t part, const Characteristic& each, std::size_t number) const {
    const std::string kind = each.symbol.empty() ? each.kind : each.kind + " " + each.symbol;
    return {CountCell(number),
            {IsBatch() ? m_report.parts[part].name : "", "", "", ""},
            {each.name, "", "", ""},
            VerdictCell(each.verdict),
            NumberCell(each.measured, each.decimals),
            {each.unit, "", "", ""},
            NumberCell(each.nominal, each.decimals),
            NumberCell(each.lower, each.decimals),
            NumberCell(each.upper, each.decimals),
            NumberCell(each.deviation, each.decimals),
            NumberCell(each.uncertainty, each.decimals),
            {kind, "", "", ""},
            {each.feature, "", LinkTo(part, each.feature), ""},
            {each.datum, "", "", ""}};
  }

  // Why characteristics have no value.
  void AddFailures() {
    for (const PartResult& part : m_report.parts) {
      for (const Characteristic& each : part.characteristics) {
        if (each.failure.empty()) continue;
        AddFailure((IsBatch() ? part.name + ", " : "") + each.name + ": " + each.failure);
      }
    }
  }

  void AddFailure(const std::string& text) { m_page.Element("p", text, {{"class", "failure"}}); }

  void AddCapabilities() {
    HtmlTable table;
    table.caption = "Distribution of each characteristic over the parts";
    table.style = "sortable";
    table.heads = {"Characteristic", "Parts", "Mean", "Smallest", "Largest", "s overall",
                   "s within",       "Unit",  "Pp",   "Ppk",      "Cp",      "Cpk"};
    for (std::size_t i = 0; i < m_report.capabilities.size() && !m_report.parts.empty(); ++i) {
      const Characteristic& each = m_report.parts[0].characteristics[i];
      const Capability& c = m_report.capabilities[i];
      const auto length = [&](double value) { return c.count > 0 ? NumberCell(value, each.decimals) : Cell{}; };
      table.rows.push_back({{each.name, "", "", ""},
                            CountCell(c.count),
                            length(c.mean),
                            length(c.smallest),
                            length(c.largest),
                            length(c.deviationOverall),
                            length(c.deviationWithin),
                            {each.unit, "", "", ""},
                            NumberCell(c.pp, kIndexDecimals),
                            NumberCell(c.ppk, kIndexDecimals),
                            NumberCell(c.cp, kIndexDecimals),
                            NumberCell(c.cpk, kIndexDecimals)});
    }
    m_page.Open("section", {{"aria-labelledby", "distribution"}});
    m_page.Element("h2", "Distribution", {{"id", "distribution"}});
    AddTable(table, &m_page);
    m_page.Element(
        "p",
        "Pp and Ppk are the process performance indices of ISO 22514-2 under a normal distribution, from the "
        "standard deviation s of all values. Cp and Cpk are the same with the standard deviation within, from "
        "the mean moving range of successive parts; they are capabilities where the process is in "
        "statistical control.");
    for (std::size_t i = 0; i < m_report.capabilities.size(); ++i) AddCharts(i);
    m_page.Close("section");
  }

  void AddCharts(std::size_t characteristic) {
    const std::string& name = m_plan.characteristics[characteristic].name;
    const std::string id = "characteristic-" + std::to_string(characteristic + 1);
    m_page.Element("h3", name);
    m_page.Open("div", {{"class", "charts"}});
    AddFigure(id + "-trend", "Trend of " + name, DrawTrend(m_report, characteristic), true);
    AddFigure(id + "-histogram", "Histogram of " + name, DrawHistogram(m_report, characteristic), false);
    m_page.Close("div");
  }

  void AddParts() {
    for (std::size_t part = 0; part < m_report.parts.size(); ++part) {
      const PartResult& result = m_report.parts[part];
      if (!result.frames.empty()) AddFrames(result);
      for (std::size_t i = 0; i < result.features.size(); ++i) AddFeature(part, i);
    }
  }

  void AddFrames(const PartResult& part) {
    HtmlTable table;
    table.caption = "Datum frames, in the coordinates of the points";
    table.heads = {"Frame", "Datums", "Origin", "x axis", "y axis", "z axis", "Failure"};
    constexpr int kDirectionDecimals = 9;
    const auto vector = [](const Vec3& v, int decimals) {
      std::string text;
      for (const double value : v) text += (text.empty() ? "" : ", ") + WithMinusSign(Fixed(value, decimals));
      return text;
    };
    for (const DatumFrameResult& frame : part.frames) {
      std::string origin;
      for (std::size_t i = 0; i < 3; ++i) {
        origin += (i > 0 ? ", " : "") + (frame.originIsFree[i]
                                             ? std::string("free")
                                             : WithMinusSign(Fixed(frame.frame.origin[i], m_plan.unit->decimals)));
      }
      const bool failed = !frame.failure.empty();
      const auto axis = [&](const Vec3& direction, bool isFree) {
        return failed ? "" : isFree ? "free" : vector(direction, kDirectionDecimals);
      };
      table.rows.push_back({{frame.name, "", "", ""},
                            {frame.datums, "", "", ""},
                            {failed ? "" : origin, "", "", ""},
                            {axis(frame.frame.x, frame.turnIsFree), "", "", ""},
                            {axis(frame.frame.y, frame.turnIsFree), "", "", ""},
                            {axis(frame.frame.z, false), "", "", ""},
                            {frame.failure, "", "", ""}});
    }
    m_page.Open("section");
    m_page.Element("h2", IsBatch() ? "Datum frames of " + part.name : "Datum frames");
    AddTable(table, &m_page);
    m_page.Close("section");
  }

  // The largest permitted form deviation of a feature, if a characteristic gives it.
  std::optional<double> FormTolerance(std::size_t feature) const {
    for (const CharacteristicPlan& each : m_plan.characteristics) {
      if (each.kind == CharacteristicKind::kForm && each.feature == feature) return each.upper;
    }
    return std::nullopt;
  }

  Verdict VerdictOf(const PartResult& part, std::size_t feature) const {
    Verdict verdict = part.features[feature].inspection ? Verdict::kNoTolerance : Verdict::kFailed;
    for (const Characteristic& each : part.characteristics) {
      if (each.feature == part.features[feature].name) verdict = GraverVerdict(verdict, each.verdict);
    }
    return verdict;
  }

  void AddFeature(std::size_t part, std::size_t index) {
    const PartResult& result = m_report.parts[part];
    const FeatureResult& feature = result.features[index];
    const FeaturePlan& plan = m_plan.features[index];
    const std::string id = FeatureId(part, index);
    const Verdict verdict = VerdictOf(result, index);
    m_page.Open("section", {{"class", "feature"}, {"id", id}, {"aria-labelledby", id + "-head"}});
    m_page.Open("div", {{"class", "head"}});
    m_page.Element("h2", (IsBatch() ? result.name + ", " : "") + feature.name, {{"id", id + "-head"}});
    m_page.Element("span", WordsOf(verdict), {{"class", StyleOf(verdict)}});
    m_page.Close("div");
    m_page.Open("dl", {{"class", "facts"}});
    AddFact("feature", plan.method.terms.feature + ", " + plan.method.terms.criterion);
    AddFact("points from", feature.source);
    m_page.Close("dl");
    if (!feature.failure.empty()) AddFailure(feature.failure);
    if (feature.inspection) AddInspection(id, feature, plan, FormTolerance(index));
    m_page.Close("section");
  }

  void AddInspection(const std::string& id, const FeatureResult& feature, const FeaturePlan& plan,
                     const std::optional<double>& tolerance) {
    const Inspection& inspection = *feature.inspection;
    if (!inspection.warning.empty()) {
      m_page.Element("p", "Warning: " + inspection.warning + ".", {{"class", "warning"}});
    }
    const ReportContext context{feature.source, &feature.points, tolerance, plan.material};
    const std::vector<Row> rows = ReportRows(inspection, context);
    AddPicture(id, feature, plan, rows);
    m_page.Open("div", {{"class", "columns"}});
    AddRows("Result", rows, [](const Row& row) { return !IsLeftOut(row); });
    AddRows("Uncertainty", rows, IsUncertaintyRow);
    AddRows("Proof of optimality", rows, IsProofRow);
    m_page.Close("div");
    AddContacts(inspection, feature.points);
    if (inspection.explanation.empty()) return;
    m_page.Element("h3", "What limits the result");
    m_page.Element("p", inspection.explanation);
  }

  template<typename Wanted>
  void AddRows(const std::string& caption, const std::vector<Row>& rows, const Wanted& wanted) {
    HtmlTable table{caption, "rows", {"Quantity", "Value", "Unit"}, {}};
    for (const Row& row : rows) {
      if (!wanted(row)) continue;
      double number = 0;
      table.rows.push_back({{row.name, "", "", ""},
                            {row.value, ParseNumber(row.value, &number) ? Shortest(number) : "", "", ""},
                            {row.unit, "", "", ""}});
    }
    if (table.rows.empty()) return;
    m_page.Open("div");
    AddTable(table, &m_page);
    m_page.Close("div");
  }

  void AddContacts(const Inspection& inspection, const PointFile& points) {
    constexpr std::size_t kMost = 100;
    constexpr int kMultiplierDecimals = 6;
    const int decimals = points.unit->decimals;
    const std::size_t count = std::min(inspection.contacts.size(), kMost);
    HtmlTable table;
    table.caption = "Contact points: " + std::to_string(inspection.contacts.size()) +
                    (count < inspection.contacts.size() ? ", the first " + std::to_string(count) : "") +
                    ". The multiplier is the growth of the zone or radius per unit that the point moves outwards.";
    table.style = "sortable";
    table.heads = {points.place, "x", "y", "z", "Deviation", "Unit", "Boundary", "Multiplier"};
    table.heads[0][0] = table.heads[0][0] == 'l' ? 'L' : 'P';
    for (std::size_t i = 0; i < count; ++i) {
      const Contact& contact = inspection.contacts[i];
      const Vec3& p = points.points[contact.index];
      table.rows.push_back({CountCell(points.lines[contact.index]),
                            NumberCell(p[0], decimals),
                            NumberCell(p[1], decimals),
                            NumberCell(p[2], decimals),
                            NumberCell(inspection.deviations[contact.index], decimals),
                            {points.unit->symbol, "", "", ""},
                            {BoundaryName(inspection, contact.outer), "", "", ""},
                            NumberCell(contact.multiplier, kMultiplierDecimals)});
    }
    if (!table.rows.empty()) AddTable(table, &m_page);
  }

  void AddPicture(const std::string& id, const FeatureResult& feature, const FeaturePlan& plan,
                  const std::vector<Row>& rows) {
    const PointFile& points = feature.points;
    const PictureLabels labels{feature.name, *points.unit, rows,
                               "columns " + ColumnsText(points) + "; unit " + UnitText(points), &points};
    AddFigure(id, "Deviations of " + feature.name, plan.method.draw(*feature.inspection, labels), true);
  }

  void AddFigure(const std::string& id, const std::string& what, const std::string& svg, bool isZoomable) {
    m_page.Open("figure", {{"class", isZoomable ? "zoomable" : "still"}});
    m_page.Open("div", {{"class", "picture"}});
    m_page.Raw(Inlined(svg, id, what));
    m_page.Close("div");
    if (isZoomable) AddTools(what);
    m_page.Close("figure");
  }

  void AddTools(const std::string& what) {
    m_page.Open("div", {{"class", "tools"}, {"role", "group"}, {"aria-label", what}});
    AddButton("zoom-in", "+", "Zoom in");
    AddButton("zoom-out", "\u2212", "Zoom out");
    AddButton("zoom-all", "Whole picture", "");
    AddButton("point-before", "\u2190 point", "Point before");
    AddButton("point-after", "point \u2192", "Next point");
    m_page.Element("output", "");
    m_page.Close("div");
  }

  void AddButton(const std::string& style, const std::string& text, const std::string& label) {
    Markup::Attributes attributes = {{"type", "button"}, {"class", style}};
    if (!label.empty()) attributes.emplace_back("aria-label", label);
    m_page.Element("button", text, attributes);
  }

  // An SVG document as an element of a page, on which every name exists once.
  static std::string Inlined(const std::string& document, const std::string& id, const std::string& what) {
    std::string svg = document.substr(document.find("<svg"));
    svg.insert(4, " role=\"img\" aria-label=\"" + XmlEscaped(what) + "\"");
    for (const std::string name : {"id='clip", "url(#clip"}) {
      for (std::size_t at = svg.find(name); at != std::string::npos;
           at = svg.find(name, at + id.size() + name.size())) {
        svg.insert(at + name.size() - 4, id + "-");
      }
    }
    return svg;
  }

  void AddFoot() {
    m_page.Raw("<footer>\n");
    m_page.Element(
        "p",
        "Click the head of a column to sort by it. Pictures: buttons, a double click, or the wheel with Ctrl "
        "zoom; drag to move; the point nearest to the pointer is read out.",
        {{"class", "screen-only"}});
    m_page.Element(
        "p",
        "Deviations are distances from the fitted feature, positive outwards or along its normal. Multipliers, "
        "certificates and bounds are computed anew from the points after the fit.");
    m_page.Element("p", "inspect, on Nu " + std::to_string(NuMajorVersionLabel) + "." +
                            std::to_string(NuMinorVersionLabel) + "." + std::to_string(NuBuildVersionLabel));
    m_page.Raw("</footer>\n");
  }

  const PartReport& m_report;
  const PartPlan& m_plan;
  Markup m_page;
};

}  // namespace

std::string HtmlReport(const PartReport& report) {
  return HtmlWriter(report).Write();
}
