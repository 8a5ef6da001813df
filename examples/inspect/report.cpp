#include "report.h"

#include <algorithm>

#include "text.h"

namespace {

constexpr int kDirectionDecimals = 9;
constexpr int kAngleDecimals = 7;
constexpr int kExactDigits = 17;

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

// Lines of "name": value, kept in order; the values come as JSON already.
class JsonObject {
 public:
  explicit JsonObject(std::string indent = "") : m_indent(std::move(indent)) {}

  void Add(std::string_view name, const std::string& json) {
    m_members +=
        std::string(m_members.empty() ? "" : ",") + "\n" + m_indent + "  \"" + std::string(name) + "\": " + json;
  }
  void Add(std::string_view name, double value) { Add(name, General(value, kExactDigits)); }
  void AddText(std::string_view name, std::string_view text) { Add(name, "\"" + JsonEscaped(text) + "\""); }
  std::string Text() const { return "{" + m_members + "\n" + m_indent + "}"; }

 private:
  std::string m_indent;
  std::string m_members;
};

std::string JsonList(const double* values, std::size_t count) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) text += (i == 0 ? "" : ", ") + General(values[i], kExactDigits);
  return "[" + text + "]";
}

std::string ParametersJson(const Inspection& inspection) {
  JsonObject object("  ");
  for (const Parameter& parameter : inspection.parameters) {
    const bool single = parameter.values.size() == 1;
    object.Add(parameter.name, single ? General(parameter.values[0], kExactDigits)
                                      : JsonList(parameter.values.data(), parameter.values.size()));
  }
  return object.Text();
}

std::string ExtremeJson(const Inspection& inspection, const PointFile& file, std::size_t index) {
  JsonObject object("  ");
  object.Add("deviation", inspection.deviations[index]);
  object.Add("point", JsonList(file.points[index].data(), 3));
  object.Add("line", std::to_string(file.lines[index]));
  return object.Text();
}

std::string ContactsJson(const Inspection& inspection, const PointFile& file) {
  std::string text;
  for (const std::size_t index : inspection.contacts) {
    text += (text.empty() ? "" : ", ") + std::to_string(file.lines[index]);
  }
  return "[" + text + "]";
}

}  // namespace

std::vector<Row> ReportRows(const Inspection& inspection, const ReportContext& context) {
  constexpr int kTimeDecimals = 3;
  constexpr double kMillisecondsPerSecond = 1000;
  const int decimals = context.unit.decimals;
  const char* symbol = context.unit.symbol;
  std::vector<Row> rows = {{"feature", inspection.feature, ""},
                           {"criterion", inspection.criterion, ""},
                           {"points", std::to_string(inspection.deviations.size()), ""}};
  for (const Parameter& parameter : inspection.parameters) AddParameterRows(parameter, context.unit, &rows);
  rows.push_back({inspection.formName, Fixed(inspection.form, decimals), symbol});
  rows.push_back({"root mean square", Fixed(inspection.RootMeanSquare(), decimals), symbol});
  if (!inspection.contacts.empty()) rows.push_back({"contact points", std::to_string(inspection.contacts.size()), ""});
  rows.push_back({"time of the fit", Fixed(inspection.seconds * kMillisecondsPerSecond, kTimeDecimals), "ms"});
  if (context.tolerance) {
    rows.push_back({"tolerance", Fixed(*context.tolerance, decimals), symbol});
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
    valueWidth = std::max(valueWidth, Width(values.back()));
  }
  std::string text;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const std::string name = rows[i].name + Padding(nameWidth, Width(rows[i].name));
    const std::string value = values[i] + Padding(valueWidth, Width(values[i]));
    text += TrimmedRight("  " + name + "  " + value + "  " + rows[i].unit) + "\n";
  }
  return text;
}

std::string Json(const Inspection& inspection, const ReportContext& context) {
  JsonObject object;
  object.AddText("file", context.file);
  object.AddText("feature", inspection.feature);
  object.AddText("criterion", inspection.criterion);
  object.AddText("unit", context.unit.option);
  object.Add("points", std::to_string(inspection.deviations.size()));
  object.Add("parameters", ParametersJson(inspection));
  object.AddText("form_name", inspection.formName);
  object.Add("form", inspection.form);
  object.Add("sum_of_squares", inspection.sumSquares);
  object.Add("root_mean_square", inspection.RootMeanSquare());
  object.Add("largest", ExtremeJson(inspection, *context.points, inspection.IndexOfMax()));
  object.Add("smallest", ExtremeJson(inspection, *context.points, inspection.IndexOfMin()));
  object.Add("contact_lines", ContactsJson(inspection, *context.points));
  object.Add("tolerance", context.tolerance ? General(*context.tolerance, kExactDigits) : "null");
  object.Add("within_tolerance", !context.tolerance ? "null" : context.WithinTolerance(inspection) ? "true" : "false");
  object.Add("seconds", inspection.seconds);
  return object.Text() + "\n";
}
