#ifndef NU_INSPECT_MOMENT_H
#define NU_INSPECT_MOMENT_H

#include <string>

// The time of the report, "2026-01-31 14:05:00 UTC", or with `iso` "2026-01-31T14:05:00Z". The variable
// SOURCE_DATE_EPOCH, seconds since 1970, stands in for the clock where a report is to be reproduced.
std::string CurrentMoment(bool iso = false);

#endif
