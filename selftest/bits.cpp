#include <cinttypes>
#include <cstdio>

#include "checks.h"
#include "expected_bits.h"
#include "support/fingerprint.h"

Section CheckBits(Progress& progress, std::vector<std::pair<std::string, std::string>>& identity) {
  Section section("Bits", "Every bit of many results is the same with every compiler and instruction set.");
  progress.Begin("bits", nu::test::fingerprint::kParts);
  const std::uint64_t found = nu::test::fingerprint::Of(false, [&] { progress.Step(); });
  char text[17];
  std::snprintf(text, sizeof text, "%016" PRIx64, found);
  char expected[17];
  std::snprintf(expected, sizeof expected, "%016" PRIx64, kExpectedBits);
  identity.emplace_back("bits", text);
  section.Check(found == kExpectedBits, std::string("fingerprint ") + text + ", expected " + expected);
  return section;
}
