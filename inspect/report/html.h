#ifndef NU_INSPECT_HTML_H
#define NU_INSPECT_HTML_H

#include <string>

#include "evaluate/part_result.h"

// The report as one page that needs nothing beside it: the characteristics in a table, each feature with its picture,
// and of a batch the distribution of each characteristic. Numbers stand as in the table for the terminal; those of the
// characteristics also in full, as the attribute data-value.
std::string HtmlReport(const PartReport& report);

#endif
