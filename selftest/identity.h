#ifndef NU_SELFTEST_IDENTITY_H
#define NU_SELFTEST_IDENTITY_H

#include <string>
#include <utility>
#include <vector>

// Names and values: the version of the library that is loaded, how it was built, and the machine.
std::vector<std::pair<std::string, std::string>> Identity();

#endif
