#ifndef NU_INSPECT_CHARTS_H
#define NU_INSPECT_CHARTS_H

#include <cstddef>
#include <string>

#include "evaluate/part_result.h"

// Pictures of one characteristic of a batch, by its index in the plan; each is a complete SVG document.

// The values in the order of the parts, with the limits, the mean and three standard deviations to either side.
std::string DrawTrend(const PartReport& report, std::size_t characteristic);

// How often the values occur, with the limits and the normal distribution of the same mean and standard deviation.
std::string DrawHistogram(const PartReport& report, std::size_t characteristic);

#endif
