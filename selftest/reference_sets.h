#ifndef NU_SELFTEST_REFERENCE_SETS_H
#define NU_SELFTEST_REFERENCE_SETS_H

#include <cstddef>

// The files of data/reference, in the program.
struct ReferenceFile {
  const char* name;
  const char* json;
};

extern const ReferenceFile kReferenceFiles[];
extern const std::size_t kReferenceFileCount;

#endif
