#ifndef NU_TESTS_SUPPORT_REFERENCE_SCORE_H
#define NU_TESTS_SUPPORT_REFERENCE_SCORE_H

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <string>

#include "support/reference_compare.h"
#include "support/reference_data.h"

// Scores fits in tests against the sets of data/reference.
namespace nu::test {

// What FailureOf says of a set that has to be refused. Sets with points beside one plane leave the count open, which is
// that of a plane.
inline std::string RefusalOf(const Json& set) {
  const Json& refusal = set["result"];
  const std::string count = refusal["count"].IsNumber() ? refusal["count"].Text() : "3";
  return "bestfit " + refusal["cause"].Text() + " |" + refusal["text"].Text() + " [" + count + ",0]";
}

// Calls with every set whose file starts with one of the kinds and then the name; returns how many there were.
template<class Call>
int ForEachSet(std::initializer_list<const char*> kinds, const std::string& name, Call call) {
  int sets = 0;
  for (const char* kind : kinds) {
    for (const auto& file : ReferenceFiles(kind + name)) {
      SCOPED_TRACE(file.filename().string());
      call(ReadReference(file));
      ++sets;
    }
  }
  return sets;
}

// The score table of the manual is made of these lines: with NU_SCORES set, every comparison goes to that file.
inline void Record(const Json& set, bool full, const Measure& m) {
  static const char* const name = std::getenv("NU_SCORES");
  static std::FILE* const file = name == nullptr ? nullptr : std::fopen(name, "w");
  if (file == nullptr) return;
  std::fprintf(file, "%s\t%s\t%s\t%.6g\t%.6g\n", set["name"].Text().c_str(), full ? "full" : "plain", m.what, m.error,
               m.bound);
}

// Expects the fit of a set within the full bounds, or the plain ones.
inline Comparison Expecting(const Json& set, bool full = true) {
  return {set, {}, full, [&set, full](const Measure& m) {
            EXPECT_LE(m.error, m.bound) << m.what;
            Record(set, full, m);
          }};
}

}  // namespace nu::test

#endif
