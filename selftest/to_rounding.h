#ifndef NU_SELFTEST_TO_ROUNDING_H
#define NU_SELFTEST_TO_ROUNDING_H

#include "nu/foundation/tolerances.h"

// While it lives, iterations go on until rounding ends them.
class ToRounding {
 public:
  ToRounding() : m_before(NuGetTol()) { NuSetTol(1e-32); }
  ~ToRounding() { NuSetTol(m_before); }
  ToRounding(const ToRounding&) = delete;
  ToRounding& operator=(const ToRounding&) = delete;

 private:
  double m_before;
};

#endif
