#ifndef NU_INSPECT_PART_REPORT_H
#define NU_INSPECT_PART_REPORT_H

#include <string>

#include "evaluate/part_result.h"

// Where the results of a part or of a batch go, "-" being standard output; empty for none.
struct ReportFiles {
  std::string html;
  std::string json;
  std::string csv;
  std::string qif;
};

// Writes each of the files that are named, whole or not at all, and tries them all: throws InputError for those that
// could not be written.
void WriteReport(const PartReport& report, const ReportFiles& files);

#endif
