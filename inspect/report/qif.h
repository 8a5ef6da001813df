#ifndef NU_INSPECT_QIF_H
#define NU_INSPECT_QIF_H

#include <string>

#include "evaluate/part_result.h"

// The results as a document in the XML of the Quality Information Framework, version 3 (ISO 23952): features,
// characteristics with their limits, and a set of measurement results for each part.
std::string QifReport(const PartReport& report);

#endif
