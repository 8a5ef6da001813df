#include "report/part_report.h"

#include "report/html.h"
#include "report/json.h"
#include "report/output_file.h"
#include "report/qif.h"
#include "text.h"

namespace {

// A field of RFC 4180: in quotes, with those inside doubled.
std::string Field(const std::string& text) {
  std::string field = "\"";
  for (const char c : Printable(text)) {
    if (c == '"') field += '"';
    field += c;
  }
  return field + '"';
}

std::string Field(const std::optional<double>& number) {
  return number ? Shortest(*number) : "";
}

std::string CsvRow(const PartResult& part, const Characteristic& each) {
  std::string row = Field(part.name);
  for (const std::string& text : {each.name, each.feature, each.kind, each.datum, each.unit}) row += "," + Field(text);
  for (const auto& number : {each.nominal, each.lower, each.upper, each.measured, each.deviation, each.uncertainty}) {
    row += "," + Field(number);
  }
  return row + "," + Field(VerdictText(each.verdict)) + "," + Field(each.evaluation) + "," + Field(each.failure) +
         "\r\n";
}

std::string CsvOf(const PartReport& report) {
  std::string text =
      "part,characteristic,feature,kind,datum,unit,nominal,lower,upper,measured,deviation,uncertainty,verdict,"
      "evaluation,failure\r\n";
  for (const PartResult& part : report.parts) {
    for (const Characteristic& each : part.characteristics) text += CsvRow(part, each);
  }
  return text;
}

}  // namespace

void WriteReport(const PartReport& report, const ReportFiles& files) {
  std::string problems;
  const auto write = [&problems](const std::string& path, const auto& text) {
    if (path.empty()) return;
    try {
      WriteFile(path, text());
    } catch (const InputError& error) {
      problems += (problems.empty() ? "" : "; ") + std::string(error.what());
    }
  };
  write(files.html, [&report] { return HtmlReport(report); });
  write(files.json, [&report] { return JsonReport(report); });
  write(files.csv, [&report] { return CsvOf(report); });
  write(files.qif, [&report] { return QifReport(report); });
  if (!problems.empty()) throw InputError(problems);
}
