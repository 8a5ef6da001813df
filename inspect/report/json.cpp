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

namespace {

const std::string kInParts = "    ";
const std::string kInPart = "      ";
const std::string kInLists = "        ";  // the indent of objects in a list of a part

std::string NumberOrNull(const std::optional<double>& value) {
  return value ? FiniteJson(*value) : "null";
}

std::string ObjectsJson(const std::vector<std::string>& objects, const std::string& indent) {
  std::string list;
  for (const std::string& object : objects) list.append(list.empty() ? "\n" : ",\n").append(indent).append(object);
  return list.empty() ? "[]" : "[" + list + "\n" + indent.substr(2) + "]";
}

std::string VerdictJson(Verdict verdict) {
  switch (verdict) {
    case Verdict::kWithinTolerance:
      return "within tolerance";
    case Verdict::kOutOfTolerance:
      return "out of tolerance";
    case Verdict::kFailed:
      return "failed";
    case Verdict::kNoTolerance:
      break;
  }
  return "no tolerance";
}

std::string CharacteristicJson(const Characteristic& each) {
  JsonObject object(kInLists);
  object.AddText("name", each.name);
  object.AddText("kind", each.kind);
  object.AddTextOrNull("symbol", each.symbol);
  object.AddText("feature", each.feature);
  object.AddTextOrNull("datum", each.datum);
  object.AddText("unit", each.unit);
  object.Add("nominal", NumberOrNull(each.nominal));
  object.Add("lower", NumberOrNull(each.lower));
  object.Add("upper", NumberOrNull(each.upper));
  object.Add("measured", NumberOrNull(each.measured));
  object.Add("deviation", NumberOrNull(each.deviation));
  object.Add("uncertainty", NumberOrNull(each.uncertainty));
  object.AddText("verdict", VerdictJson(each.verdict));
  object.AddTextOrNull("evaluation", each.evaluation);
  object.AddTextOrNull("error", each.failure);
  return object.Text();
}

std::string FeatureJson(const FeatureResult& feature, const FeaturePlan& plan) {
  JsonObject object(kInLists);
  object.AddText("name", feature.name);
  const ReportContext context{feature.source, &feature.points, std::nullopt, plan.material};
  const Terms& terms = plan.method.terms;
  object.Add("result", feature.inspection
                           ? JsonResult(*feature.inspection, context)
                           : JsonFailure(feature.source, terms.feature, terms.criterion, feature.failure));
  return object.Text();
}

std::string FrameJson(const DatumFrameResult& frame) {
  JsonObject object(kInLists);
  object.AddText("name", frame.name);
  object.AddText("datums", frame.datums);
  object.AddTextOrNull("error", frame.failure);
  if (!frame.failure.empty()) return object.Text();
  object.Add("origin", VectorJson(frame.frame.origin));
  object.Add("x", VectorJson(frame.frame.x));
  object.Add("y", VectorJson(frame.frame.y));
  object.Add("z", VectorJson(frame.frame.z));
  object.Add("turn_is_free", frame.turnIsFree);
  std::vector<std::string> isFree;
  for (const bool each : frame.originIsFree) isFree.emplace_back(each ? "true" : "false");
  object.Add("origin_is_free", JsonList(isFree));
  return object.Text();
}

std::string PartJson(const PartResult& part, const PartPlan& plan) {
  JsonObject object(kInParts);
  object.AddText("name", part.name);
  object.AddText("verdict", VerdictJson(part.verdict));
  object.AddTextOrNull("error", part.failure);
  std::vector<std::string> characteristics;
  for (const Characteristic& each : part.characteristics) characteristics.push_back(CharacteristicJson(each));
  object.Add("characteristics", ObjectsJson(characteristics, kInLists));
  std::vector<std::string> frames;
  for (const DatumFrameResult& frame : part.frames) frames.push_back(FrameJson(frame));
  object.Add("datum_frames", ObjectsJson(frames, kInLists));
  std::vector<std::string> features;
  for (std::size_t i = 0; i < part.features.size(); ++i) {
    features.push_back(FeatureJson(part.features[i], plan.features[i]));
  }
  object.Add("features", ObjectsJson(features, kInLists));
  object.Add("seconds", part.seconds);
  return object.Text();
}

std::string CapabilityJson(const std::string& name, const Capability& capability) {
  JsonObject object(kInParts);
  object.AddText("characteristic", name);
  object.Add("count", std::to_string(capability.count));
  const auto add = [&](const char* key, double value) {
    object.Add(key, capability.count > 0 ? FiniteJson(value) : "null");
  };
  add("mean", capability.mean);
  add("smallest", capability.smallest);
  add("largest", capability.largest);
  add("deviation_overall", capability.deviationOverall);
  add("deviation_within", capability.deviationWithin);
  object.Add("pp", NumberOrNull(capability.pp));
  object.Add("ppk", NumberOrNull(capability.ppk));
  object.Add("cp", NumberOrNull(capability.cp));
  object.Add("cpk", NumberOrNull(capability.cpk));
  return object.Text();
}

}  // namespace

std::string JsonReport(const PartReport& report) {
  JsonObject document("");
  document.AddText("format", "Nu inspect");
  document.Add("version", std::to_string(kFormatVersion));
  document.AddText("plan", FileName(report.plan.path));
  document.AddTextOrNull("title", report.plan.title);
  document.AddText("unit", report.plan.unit->name);
  JsonObject remarks("  ");
  for (const auto& [name, value] : report.plan.remarks) remarks.AddText(JsonEscaped(name), value);
  document.Add("remarks", report.plan.remarks.empty() ? "{}" : remarks.Text());
  std::vector<std::string> parts;
  for (const PartResult& part : report.parts) parts.push_back(PartJson(part, report.plan));
  document.Add("parts", ObjectsJson(parts, kInParts));
  std::vector<std::string> capabilities;
  for (std::size_t i = 0; i < report.capabilities.size(); ++i) {
    capabilities.push_back(CapabilityJson(report.plan.characteristics[i].name, report.capabilities[i]));
  }
  document.Add("distribution", ObjectsJson(capabilities, kInParts));
  return document.Text() + "\n";
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
