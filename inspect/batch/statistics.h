#ifndef NU_INSPECT_STATISTICS_H
#define NU_INSPECT_STATISTICS_H

#include <optional>
#include <vector>

#include "evaluate/part_result.h"

// The distribution of the values, in the order in which the parts were made, between the limits.
Capability CapabilityOf(const std::vector<double>& values, const std::optional<double>& lower,
                        const std::optional<double>& upper);

// The values that the parts have of the characteristic with that index, and of which parts they are.
struct Series {
  std::vector<double> values;
  std::vector<std::size_t> parts;
};
Series SeriesOf(const std::vector<PartResult>& parts, std::size_t characteristic);

// Of every characteristic of the plan.
std::vector<Capability> CapabilitiesOf(const PartPlan& plan, const std::vector<PartResult>& parts);

#endif
