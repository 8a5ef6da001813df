#include "report/part_report.h"

#include "report/output_file.h"
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
  return row + "," + Field(VerdictText(each.verdict)) + "," + Field(each.failure) + "\r\n";
}

std::string CsvOf(const PartReport& report) {
  std::string text =
      "part,characteristic,feature,kind,datum,unit,nominal,lower,upper,measured,deviation,uncertainty,verdict,"
      "failure\r\n";
  for (const PartResult& part : report.parts) {
    for (const Characteristic& each : part.characteristics) text += CsvRow(part, each);
  }
  return text;
}

}  // namespace

void WriteReport(const PartReport& report, const ReportFiles& files) {
  if (!files.csv.empty()) WriteFile(files.csv, CsvOf(report));
  if (files.html.empty() && files.json.empty() && files.qif.empty()) return;
  throw InputError("this version writes the results of a plan as text, pictures and CSV only");
}
