#ifndef NU_INSPECT_REPORT_H
#define NU_INSPECT_REPORT_H

#include <optional>
#include <string>
#include <vector>

#include "inspection.h"
#include "units.h"

struct Row {
  std::string name;
  std::string value;
  std::string unit;
};

// What is reported beside the inspection itself.
struct ReportContext {
  std::string file;
  LengthUnit unit;
  std::optional<double> tolerance;
  const PointFile* points = nullptr;

  bool WithinTolerance(const Inspection& inspection) const { return !tolerance || inspection.form <= *tolerance; }
};

std::vector<Row> ReportRows(const Inspection& inspection, const ReportContext& context);

// The rows below each other, numbers aligned at their decimal points.
std::string Table(const std::vector<Row>& rows);

// One JSON object; numbers have the 17 digits that give back the same double.
std::string Json(const Inspection& inspection, const ReportContext& context);

#endif
