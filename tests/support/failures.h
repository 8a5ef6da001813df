#ifndef NU_TESTS_SUPPORT_FAILURES_H
#define NU_TESTS_SUPPORT_FAILURES_H

#include <gtest/gtest.h>

#include <string>

#include "nu/foundation/exceptions.h"

// What a failing call threw, in one string that a test compares at once: "kind cause what|where [lower,upper]", or
// "nothing" when it did not throw.
template<class Call>
std::string FailureOf(Call call) {
  const auto texts = [](const char* kind, const CNuException& e) {
    return std::string(kind) + " " + std::to_string(e.GetCause()) + " " + e.m_szWhat + "|" + e.m_szWhere + " [" +
           std::to_string(e.m_nLower) + "," + std::to_string(e.m_nUpper) + "]";
  };
  try {
    call();
  } catch (const CNuConstructionException& e) {
    return texts("construction", e);
  } catch (const CNuOperationException& e) {
    return texts("operation", e);
  } catch (const CNuBestfitException& e) {
    return texts("bestfit", e);
  } catch (const CNuMemoryException& e) {
    return texts("memory", e);
  }
  return "nothing";
}

#endif
