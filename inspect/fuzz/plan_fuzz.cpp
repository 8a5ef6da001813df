// Any bytes as a plan: they end as a plan in which every name is defined, or as an InputError of one line.

#include <cstdlib>
#include <cstring>

#include "plan/plan_reader.h"
#include "scratch_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const ScratchFile file(".toml");
  try {
    const PartPlan plan = ReadPlan(file.With(data, size), true);
    bool good = !plan.features.empty();
    for (const CharacteristicPlan& each : plan.characteristics) {
      good = good && each.feature < plan.features.size() && (!each.datum || *each.datum < plan.features.size()) &&
             (!each.frame || *each.frame < plan.frames.size());
    }
    if (!good) std::abort();
  } catch (const InputError& error) {
    if (std::strchr(error.what(), '\n') != nullptr) std::abort();
  }
  return 0;
}
