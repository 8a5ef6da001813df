#include "batch/batch.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>

#include "text.h"

namespace {

PartResult FailedPart(const PartPlan& plan, const PartFiles& files, const std::string& failure) {
  PartResult part;
  part.name = files.name;
  part.failure = failure;
  part.verdict = Verdict::kFailed;
  part.isBadInput = true;
  for (const CharacteristicPlan& characteristic : plan.characteristics) {
    Characteristic& failed = part.characteristics.emplace_back();
    failed.name = characteristic.name;
    failed.kind = characteristic.word;
    failed.verdict = Verdict::kFailed;
    failed.failure = failure;
  }
  return part;
}

// Without the points, which would fill the memory; what failed stays.
void LeaveOutFeatures(PartResult* part) {
  for (const std::string& failure : FeatureFailures(*part)) {
    part->failure += (part->failure.empty() ? "" : "; ") + failure;
  }
  part->features.clear();
}

PartResult EvaluateOne(const PartPlan& plan, const PartFiles& files) {
  try {
    PartResult part = EvaluatePart(plan, files);
    LeaveOutFeatures(&part);
    return part;
  } catch (const CNuMemoryException&) {
    return FailedPart(plan, files, kNoMemory);
  } catch (const std::bad_alloc&) {
    return FailedPart(plan, files, kNoMemory);
  } catch (const std::exception& error) {
    return FailedPart(plan, files, error.what());
  }
}

}  // namespace

std::vector<std::string> FeatureFailures(const PartResult& part) {
  std::vector<std::string> failures;
  for (const FeatureResult& feature : part.features) {
    if (feature.failure.empty()) continue;
    // Of bad input, the text names the file and, where it matters, the feature.
    const std::string text =
        feature.isBadInput ? feature.failure : "'" + Printable(feature.name) + "': " + feature.failure;
    if (std::find(failures.begin(), failures.end(), text) == failures.end()) failures.push_back(text);
  }
  return failures;
}

std::vector<PartResult> EvaluateParts(const PartPlan& plan, const std::vector<PartFiles>& parts,
                                      const std::function<void(std::size_t)>& done, unsigned threads) {
  std::vector<PartResult> results(parts.size());
  std::atomic<std::size_t> next{0};
  std::mutex telling;
  std::size_t count = 0;
  const auto work = [&] {
    for (std::size_t i = next++; i < parts.size(); i = next++) {
      results[i] = EvaluateOne(plan, parts[i]);
      const std::lock_guard<std::mutex> lock(telling);
      ++count;
      if (done) done(count);
    }
  };
  const std::size_t most = threads > 0 ? threads : std::max(1U, std::thread::hardware_concurrency());
  std::vector<std::thread> helpers;
  try {
    while (helpers.size() + 1 < std::min(most, parts.size())) helpers.emplace_back(work);
  } catch (const std::system_error&) {
    // With fewer threads it takes longer, no more.
  }
  work();
  for (std::thread& helper : helpers) helper.join();
  return results;
}
