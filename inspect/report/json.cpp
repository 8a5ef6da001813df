#include "report/json.h"

#include <cmath>

#include "evaluate/roundness_filter.h"
#include "text.h"

namespace {

constexpr int kFormatVersion = 1;

// Lines of "name": value, kept in order; the values come as JSON already.
class JsonObject {
 public:
  explicit JsonObject(std::string indent) : m_indent(std::move(indent)) {}

  void Add(std::string_view name, const std::string& json) {
    m_members +=
        std::string(m_members.empty() ? "" : ",") + "\n" + m_indent + "  \"" + std::string(name) + "\": " + json;
  }
  void Add(std::string_view name, double value) { Add(name, Shortest(value)); }
  void Add(std::string_view name, bool value) { Add(name, std::string(value ? "true" : "false")); }
  void AddText(std::string_view name, std::string_view text) { Add(name, "\"" + JsonEscaped(text) + "\""); }
  void AddTextOrNull(std::string_view name, std::string_view text) {
    if (text.empty()) return Add(name, std::string("null"));
    AddText(name, text);
  }
  std::string Text() const { return "{" + m_members + "\n" + m_indent + "}"; }

 private:
  std::string m_indent;
  std::string m_members;
};

const std::string kInResult = "      ";  // the indent of objects in a result
const std::string kInResults = "    ";

std::string JsonList(const std::vector<std::string>& elements) {
  std::string text;
  for (const std::string& element : elements) text += (text.empty() ? "" : ", ") + element;
  return "[" + text + "]";
}

std::string JsonNumbers(const double* values, std::size_t count) {
  std::vector<std::string> texts;
  for (std::size_t i = 0; i < count; ++i) texts.push_back(Shortest(values[i]));
  return JsonList(texts);
}

std::string ColumnsJson(const PointFile& file) {
  std::vector<std::string> columns;
  for (const Column& column : file.columns) {
    const std::string name = column.name.empty() ? "null" : "\"" + JsonEscaped(column.name) + "\"";
    columns.push_back("{\"number\": " + std::to_string(column.number) + ", \"name\": " + name + "}");
  }
  return JsonList(columns);
}

std::string ParametersJson(const Inspection& inspection) {
  JsonObject object(kInResult);
  for (const Parameter& parameter : inspection.parameters) {
    if (parameter.values.size() == 1) {
      object.Add(parameter.name, parameter.values[0]);
    } else {
      object.Add(parameter.name, JsonNumbers(parameter.values.data(), parameter.values.size()));
    }
  }
  return object.Text();
}

std::string ExtremeJson(const Inspection& inspection, const PointFile& file, std::size_t index) {
  JsonObject object(kInResult);
  object.Add("deviation", inspection.deviations[index]);
  object.Add("point", JsonNumbers(file.points[index].data(), 3));
  object.Add("line", std::to_string(file.lines[index]));
  return object.Text();
}

std::string ContactsJson(const Inspection& inspection, const PointFile& file) {
  std::vector<std::string> contacts;
  for (const Contact& contact : inspection.contacts) {
    contacts.push_back("{\"line\": " + std::to_string(file.lines[contact.index]) + ", \"side\": \"" +
                       (contact.outer ? "outer" : "inner") + "\", \"multiplier\": " + Shortest(contact.multiplier) +
                       "}");
  }
  return JsonList(contacts);
}

std::string VectorJson(const Vec3& vector) {
  return JsonNumbers(vector.data(), vector.size());
}

// JSON has no infinity.
std::string FiniteJson(double value) {
  return std::isfinite(value) ? Shortest(value) : "null";
}

std::string UncertaintyJson(const Uncertainty& uncertainty) {
  const std::string deeper = kInResult + "  ";
  JsonObject standard(deeper);
  std::vector<std::string> rows;
  for (std::size_t i = 0; i < uncertainty.changes.size(); ++i) {
    standard.Add(uncertainty.changes[i].name, FiniteJson(uncertainty.changes[i].standard));
    std::vector<std::string> row;
    for (const double value : uncertainty.covariance[i]) row.push_back(FiniteJson(value));
    rows.push_back(JsonList(row));
  }
  JsonObject frame(deeper);
  frame.Add("origin", VectorJson(uncertainty.frame.origin));
  frame.Add("x", VectorJson(uncertainty.frame.x));
  frame.Add("y", VectorJson(uncertainty.frame.y));
  frame.Add("z", VectorJson(uncertainty.frame.z));
  JsonObject object(kInResult);
  object.AddText("source", "deviations");
  object.Add("k", std::string("1"));
  object.Add("degrees_of_freedom", std::to_string(uncertainty.degreesOfFreedom));
  object.Add("standard_deviation", FiniteJson(uncertainty.standardDeviation));
  object.Add("standard", standard.Text());
  object.Add("frame", frame.Text());
  object.Add("covariance", JsonList(rows));
  return object.Text();
}

std::string CertificateJson(const Certificate& certificate) {
  JsonObject object(kInResult);
  object.Add("holds", certificate.holds);
  object.Add("gap", FiniteJson(certificate.gap));
  object.Add("radius", FiniteJson(certificate.radius));
  return object.Text();
}

void AddWhat(const Terms& terms, JsonObject* object) {
  object->AddText("feature", terms.feature);
  object->AddText("criterion", terms.criterion);
  object->AddText("criterion_iso_1101", terms.letter);
  object->AddTextOrNull("reference", terms.reference);
}

void AddForm(const Inspection& inspection, const ReportContext& context, JsonObject* object) {
  object->AddText("form_name", inspection.terms.form);
  object->AddTextOrNull("form_symbol", inspection.terms.symbol.empty() ? "" : inspection.terms.symbol + "t");
  object->Add("form", inspection.form);
  if (!inspection.zoneIsRound) {
    object->AddText("material", context.material == Material::kInside ? "inside" : "outside");
    object->Add("peak", context.Peak(inspection));
    object->Add("valley", context.Valley(inspection));
  }
  object->Add("root_mean_square", inspection.RootMeanSquare());
  object->Add("sum_of_squares", inspection.sumSquares);
}

}  // namespace

std::string JsonResult(const Inspection& inspection, const ReportContext& context) {
  const PointFile& file = *context.points;
  JsonObject object(kInResults);
  object.AddText("file", context.file);
  AddWhat(inspection.terms, &object);
  object.Add("columns", ColumnsJson(file));
  object.AddText("unit", file.unit->name);
  object.AddText("unit_source", file.unitSource);
  object.AddText("filter", inspection.filter > 0 ? FilterText(inspection.filter) : "none");
  object.Add("points", std::to_string(inspection.deviations.size()));
  object.Add("parameters", ParametersJson(inspection));
  AddForm(inspection, context, &object);
  object.Add("largest", ExtremeJson(inspection, file, inspection.IndexOfMax()));
  object.Add("smallest", ExtremeJson(inspection, file, inspection.IndexOfMin()));
  object.Add("contacts", ContactsJson(inspection, file));
  object.Add("best_of_all", inspection.isGlobal);
  if (inspection.certificate) object.Add("certificate", CertificateJson(*inspection.certificate));
  if (inspection.globalBound) {
    object.Add("lower_bound", inspection.globalBound->bound);
    object.Add("gap", inspection.globalBound->gap);
  }
  object.AddTextOrNull("explanation", inspection.explanation);
  if (inspection.uncertainty) object.Add("uncertainty", UncertaintyJson(*inspection.uncertainty));
  if (!inspection.warning.empty()) object.AddText("warning", inspection.warning);
  if (context.tolerance) {
    object.Add("tolerance", *context.tolerance);
    object.Add("within_tolerance", context.WithinTolerance(inspection));
  }
  object.Add("seconds", inspection.seconds);
  return object.Text();
}

std::string JsonFailure(const std::string& file, const std::string& feature, const std::string& criterion,
                        const std::string& error) {
  JsonObject object(kInResults);
  object.AddText("file", file);
  object.AddTextOrNull("feature", feature);
  object.AddTextOrNull("criterion", criterion);
  object.AddText("error", error);
  return object.Text();
}

std::string JsonDocument(const std::vector<std::string>& results) {
  std::string list;
  for (const std::string& result : results) {
    list += list.empty() ? "\n" : ",\n";
    list += kInResults;
    list += result;
  }
  JsonObject document("");
  document.AddText("format", "Nu inspect");
  document.Add("version", std::to_string(kFormatVersion));
  document.Add("results", "[" + list + "\n  ]");
  return document.Text() + "\n";
}
