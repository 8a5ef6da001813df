#ifndef NU_INSPECT_JSON_H
#define NU_INSPECT_JSON_H

#include <string>
#include <vector>

#include "evaluate/part_result.h"
#include "report/table.h"

// JSON objects, to be elements of JsonDocument; numbers have the fewest digits that give back the same double.
std::string JsonResult(const Inspection& inspection, const ReportContext& context);
std::string JsonFailure(const std::string& file, const std::string& feature, const std::string& criterion,
                        const std::string& error);

// The document of a part or a batch, in the units of its plan.
std::string JsonReport(const PartReport& report);

// The document of separate results. Its version counts the changes that a reader of the one before would stumble over.
std::string JsonDocument(const std::vector<std::string>& results);

#endif
