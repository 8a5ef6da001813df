#ifndef NU_FUZZ_ODD_NUMBERS_H
#define NU_FUZZ_ODD_NUMBERS_H

#include <limits>

namespace nu::fuzz {

// Numbers that break things; the first seven break little.
inline constexpr int kMildNumbers = 7;
inline constexpr double kOddNumbers[] = {
    // clang-format off
    0.0, -0.0, 1.0, -1.0, 2.0, 0.5, 3.0,
    1.0 / 3, 90.0, 180.0, 270.0, 360.0, -90.0, 90.000000001, 45.0, 30.0, 100.0, 1.5708, 3.141592653589793,
    1e-4, 1e-9, -1e-9, 1e-12, 1e-15, 1e-17, 1e6, 1e9, -1e9, 1e15, 1e16, 2147483647.0,
    1e150, 1e-150, 1e-160, 1e300, -1e300, 1e-300, 1e308, -1.7e308, 1e-308, 5e-324, -5e-324,
    std::numeric_limits<double>::max(), std::numeric_limits<double>::min(), std::numeric_limits<double>::epsilon(),
    std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
    std::numeric_limits<double>::quiet_NaN()
    // clang-format on
};

}  // namespace nu::fuzz

#endif
