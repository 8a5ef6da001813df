#ifndef NU_SELFTEST_EXPECTED_BITS_H
#define NU_SELFTEST_EXPECTED_BITS_H

#include <cstdint>

// What nu_bits prints. A change that is meant to change results renews it; any other change that does is a defect.
inline constexpr std::uint64_t kExpectedBits = 0x9a7aa6e96694e0b4;

#endif
