#include "report/table.h"

#include <algorithm>
#include <cmath>

#include "evaluate/roundness_filter.h"
#include "text.h"

namespace {

constexpr int kDirectionDecimals = 9;
constexpr int kAngleDecimals = 7;

void AddParameterRows(const Parameter& parameter, const LengthUnit& unit, std::vector<Row>* rows) {
  const bool isDirection = parameter.kind == Parameter::Kind::kDirection;
  const bool isAngle = parameter.kind == Parameter::Kind::kAngle;
  const int decimals = isDirection ? kDirectionDecimals : isAngle ? kAngleDecimals : unit.decimals;
  const char* symbol = isDirection ? "" : isAngle ? "\u00B0" : unit.symbol;
  if (parameter.values.size() == 1) {
    rows->push_back({parameter.name, Fixed(parameter.values[0], decimals), symbol});
    return;
  }
  constexpr const char* kAxes[] = {" x", " y", " z"};
  for (std::size_t i = 0; i < parameter.values.size(); ++i) {
    rows->push_back({parameter.name + kAxes[i], Fixed(parameter.values[i], decimals), symbol});
  }
}

// Bytes that begin a character: what a terminal shows of UTF-8.
std::size_t Width(const std::string& text) {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

bool IsNumber(const Row& row) {
  double value = 0;
  return ParseNumber(row.value, &value);
}

std::size_t WidthBeforePoint(const std::string& value) {
  return std::min(value.find('.'), value.size());
}

std::string Padding(std::size_t wanted, std::size_t have) {
  return std::string(wanted > have ? wanted - have : 0, ' ');
}

std::string TrimmedRight(std::string text) {
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

// Away from the material.
std::string PeaksPoint(const std::string& feature, Material material) {
  const bool positive = material == Material::kInside;
  if (feature == "plane") return positive ? "along the normal" : "against the normal";
  if (feature == "line") return positive ? "left of the line" : "right of the line";
  return positive ? "outwards" : "inwards";
}

void AddFormRows(const Inspection& inspection, const ReportContext& context, std::vector<Row>* rows) {
  const LengthUnit& unit = *context.points->unit;
  const Terms& terms = inspection.terms;
  const auto add = [&](const std::string& name, const char* suffix, double length) {
    // The standards define p, v and q from the least-squares feature alone.
    const bool hasSymbol = !terms.symbol.empty() && (*suffix == 't' || terms.letter == "G");
    rows->push_back({hasSymbol ? name + " " + terms.symbol + suffix : name, Fixed(length, unit.decimals), unit.symbol});
  };
  add(terms.form, "t", inspection.form);
  if (!inspection.zoneIsRound) {
    add("peak", "p", context.Peak(inspection));
    add("valley", "v", context.Valley(inspection));
    rows->push_back({"peaks point", PeaksPoint(inspection.terms.feature, context.material), ""});
  }
  add("root mean square", "q", inspection.RootMeanSquare());
}

// Infinite where the points do not determine it, as without a degree of freedom.
Row UncertaintyRow(const std::string& name, double value, int decimals, const char* unit) {
  return std::isfinite(value) ? Row{"u(" + name + ")", Fixed(value, decimals), unit}
                              : Row{"u(" + name + ")", "not determined", ""};
}

// A shift or tilt is along an axis of the feature's own frame, which is named.
std::string AxisNote(const Uncertainty& uncertainty, const std::string& change) {
  const Frame& frame = uncertainty.frame;
  const char axis = change.find(' ') == std::string::npos ? ' ' : change.back();
  if (axis < 'x' || axis > 'z') return "";
  return "  " + std::string(1, axis) + " towards " +
         DirectionName(axis == 'x'   ? frame.x
                       : axis == 'y' ? frame.y
                                     : frame.z);
}

void AddUncertaintyRows(const Inspection& inspection, const LengthUnit& unit, std::vector<Row>* rows) {
  if (!inspection.uncertainty) return;
  const Uncertainty& uncertainty = *inspection.uncertainty;
  rows->push_back({"uncertainties", "standard ones, from the deviations, k = 1", ""});
  rows->push_back({"degrees of freedom", std::to_string(uncertainty.degreesOfFreedom), ""});
  rows->push_back(UncertaintyRow("point", uncertainty.standardDeviation, unit.decimals, unit.symbol));
  for (const Uncertainty::Change& change : uncertainty.changes) {
    rows->push_back(change.isAngle ? UncertaintyRow(change.name, change.standard, kAngleDecimals, "\u00B0")
                                   : UncertaintyRow(change.name, change.standard, unit.decimals, unit.symbol));
    rows->back().unit += AxisNote(uncertainty, change.name);
  }
}

void AddContactRows(const Inspection& inspection, const PointFile& file, std::vector<Row>* rows) {
  constexpr std::size_t kMostLines = 8;
  if (inspection.contacts.empty()) return;
  rows->push_back({"contact points", std::to_string(inspection.contacts.size()), ""});
  for (const bool outer : {true, false}) {
    std::string text;
    std::size_t count = 0;
    for (const Contact& contact : inspection.contacts) {
      if (contact.outer != outer || ++count > kMostLines) continue;
      text += (text.empty() ? std::string(file.place) + " " : ", ") + std::to_string(file.lines[contact.index]);
    }
    if (count > kMostLines) text += ", ...";
    if (count > 0) rows->push_back({"on the " + BoundaryName(inspection, outer), text, ""});
  }
}

std::string CertificateText(const Certificate& certificate, const LengthUnit& unit) {
  constexpr int kDigits = 2;
  if (!certificate.holds) return "does not hold";
  const std::string better = " is better by more than " + General(certificate.gap, kDigits) + " " + unit.symbol;
  if (!std::isfinite(certificate.radius)) return "holds: no other feature" + better;
  return "holds: none within " + General(certificate.radius, kDigits) + " " + unit.symbol + better;
}

void AddProofRows(const Inspection& inspection, const LengthUnit& unit, std::vector<Row>* rows) {
  rows->push_back({"best of all", inspection.isGlobal ? "proven" : "not proven", ""});
  if (inspection.certificate) rows->push_back({"certificate", CertificateText(*inspection.certificate, unit), ""});
  if (inspection.globalBound) {
    const char* name = inspection.terms.letter == "C" ? "lower bound, zone" : "lower bound, radius";
    rows->push_back({name, Fixed(inspection.globalBound->bound, unit.decimals), unit.symbol});
    rows->push_back({"gap", Fixed(inspection.globalBound->gap, unit.decimals), unit.symbol});
  }
  if (!inspection.explanation.empty()) rows->push_back({"explanation", inspection.explanation, ""});
}

}  // namespace

std::string ColumnsText(const PointFile& file) {
  std::string text;
  for (const Column& column : file.columns) {
    text += (text.empty() ? "" : ", ") + std::to_string(column.number);
    if (!column.name.empty()) text += " (" + Printable(column.name) + ")";
  }
  return text;
}

std::string UnitText(const PointFile& file) {
  const bool header = std::string_view(file.unitSource) == "header";
  return file.unit->symbol + std::string(header ? " (as the header says)" : "") +
         (std::string_view(file.unitSource) == "assumed" ? " (assumed)" : "");
}

std::string DirectionName(const Vec3& direction) {
  constexpr double kClose = 0.999;  // within about 2.5 degrees
  constexpr const char* kNames[] = {"X", "Y", "Z"};
  for (std::size_t i = 0; i < 3; ++i) {
    if (std::fabs(direction[i]) > kClose) return std::string(direction[i] > 0 ? "+" : "\u2212") + kNames[i];
  }
  const auto text = [&direction](std::size_t i) { return WithMinusSign(Fixed(direction[i], 2)); };
  return "(" + text(0) + ", " + text(1) + ", " + text(2) + ")";
}

std::string BoundaryName(const Inspection& inspection, bool outer) {
  const bool isFlat =
      inspection.terms.feature == "plane" || (inspection.terms.feature == "line" && !inspection.zoneIsRound);
  return isFlat ? (outer ? "upper side" : "lower side") : (outer ? "outer side" : "inner side");
}

std::vector<Row> ReportRows(const Inspection& inspection, const ReportContext& context) {
  constexpr int kTimeDecimals = 3;
  constexpr double kMillisecondsPerSecond = 1000;
  const LengthUnit& unit = *context.points->unit;
  const Terms& terms = inspection.terms;
  std::vector<Row> rows = {
      {"feature", terms.feature, ""},
      {"criterion", terms.criterion + ", " + terms.letter + " in ISO 1101", ""},
      {"reference", terms.reference, ""},
      {"points", std::to_string(inspection.deviations.size()), ""},
      {"left out", std::to_string(context.points->leftOut) + " points without coordinates (NaN)", ""},
      {"columns", ColumnsText(*context.points), ""},
      {"unit", UnitText(*context.points), ""},
      {"filter", FilterText(inspection.filter), ""},
  };
  std::erase_if(rows, [&](const Row& row) {
    return (row.name == "reference" && row.value.empty()) || (row.name == "left out" && context.points->leftOut == 0);
  });
  for (const Parameter& parameter : inspection.parameters) AddParameterRows(parameter, unit, &rows);
  AddFormRows(inspection, context, &rows);
  AddUncertaintyRows(inspection, unit, &rows);
  AddContactRows(inspection, *context.points, &rows);
  AddProofRows(inspection, unit, &rows);
  rows.push_back({"time of the fit", Fixed(inspection.seconds * kMillisecondsPerSecond, kTimeDecimals), "ms"});
  if (context.tolerance) {
    rows.push_back({"tolerance", Fixed(*context.tolerance, unit.decimals), unit.symbol});
    rows.push_back({"verdict", context.WithinTolerance(inspection) ? "within tolerance" : "OUT OF TOLERANCE", ""});
  }
  if (!inspection.warning.empty()) rows.push_back({"warning", inspection.warning, ""});
  return rows;
}

std::string Table(const std::vector<Row>& rows) {
  std::size_t nameWidth = 0;
  std::size_t before = 0;
  std::size_t valueWidth = 0;
  for (const Row& row : rows) {
    nameWidth = std::max(nameWidth, Width(row.name));
    if (IsNumber(row)) before = std::max(before, WidthBeforePoint(row.value));
  }
  std::vector<std::string> values;
  for (const Row& row : rows) {
    values.push_back(IsNumber(row) ? Padding(before, WidthBeforePoint(row.value)) + row.value : row.value);
    if (!row.unit.empty()) valueWidth = std::max(valueWidth, Width(values.back()));
  }
  std::string text;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    std::string line = "  " + rows[i].name + Padding(nameWidth, Width(rows[i].name));
    line.append("  ").append(values[i]).append(Padding(valueWidth, Width(values[i])));
    line.append("  ").append(rows[i].unit);
    text += TrimmedRight(line) + "\n";
  }
  return text;
}

std::string Grid(const std::vector<std::vector<std::string>>& lines) {
  std::vector<std::size_t> widths;
  for (const auto& cells : lines) {
    widths.resize(std::max(widths.size(), cells.size()));
    for (std::size_t i = 0; i < cells.size(); ++i) widths[i] = std::max(widths[i], Width(cells[i]));
  }
  std::string text;
  for (const auto& cells : lines) {
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i)
      line.append("  ").append(cells[i]).append(Padding(widths[i], Width(cells[i])));
    text += TrimmedRight(line) + "\n";
  }
  return text;
}
