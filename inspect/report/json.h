#ifndef NU_INSPECT_JSON_H
#define NU_INSPECT_JSON_H

#include <string>
#include <vector>

#include "report/table.h"

// JSON objects, to be elements of JsonDocument; numbers have the fewest digits that give back the same double.
std::string JsonResult(const Inspection& inspection, const ReportContext& context);
std::string JsonFailure(const std::string& file, const std::string& feature, const std::string& criterion,
                        const std::string& error);

// The whole document. Its version counts the changes that a reader of the one before would stumble over.
std::string JsonDocument(const std::vector<std::string>& results);

#endif
