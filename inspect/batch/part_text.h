#ifndef NU_INSPECT_PART_TEXT_H
#define NU_INSPECT_PART_TEXT_H

#include <string>

#include "evaluate/part_result.h"

// The report of one part for the terminal: its features, its datum frames and its characteristics, each a line.
std::string PartText(const PartPlan& plan, const PartResult& part);

// What is wrong with a part, as far as there is room for it: what is out of tolerance, with the values; why there is no
// result.
std::string FindingsOf(const PartResult& part);

// The report of a batch: a line for each part, and a line for each characteristic with its distribution.
std::string BatchText(const PartReport& report);

#endif
