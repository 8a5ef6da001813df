#include "nu/foundation/exceptions.h"

#include <gtest/gtest.h>

#include <climits>
#include <exception>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <stdexcept>
#include <string>

#include "nu/nu.h"
#include "support/failures.h"

namespace {

// Every field but the doubles, then the cause as it is asked for.
std::string Fields(const CNuException& e) {
  std::string fields;
  for (const int number : {e.m_nCause, e.m_nLower, e.m_nUpper}) fields += std::to_string(number) + " ";
  return fields + e.m_szWhat + "|" + e.m_szWhere + " -> " + std::to_string(e.GetCause());
}

TEST(Exceptions, KeepTheirFieldsAndTellTheirKindsApart) {
  const CNuOperationException operation(NuOperationIndex, "operation", "CNuMatrix::Element()", 0, 4, 0.5, -7.25);
  CNuOperationException copy;
  EXPECT_EQ(Fields(copy), "0 0 0 | -> 0");
  copy = operation;
  EXPECT_TRUE(copy.GetValue() == 0.5 && copy.m_dUpper == -7.25);
  const std::string text(1000, 'x'), what(99, 'x'), where(49, 'x');
  const struct {
    std::string fields, expected;
  } cases[] = {
      {Fields(CNuConstructionException(NuConstructionSize, "CNuMatrix", "size", 1, 2)), "1 1 2 size|CNuMatrix -> 1"},
      {Fields(copy), "103 0 4 operation|CNuMatrix::Element() -> 3"},
      {Fields(CNuBestfitException(NuBestfitInvalidLimit, "CNuCircle", 5)), "213 5 0 |CNuCircle -> 13"},
      {Fields(CNuMemoryException("CNuMatrix::Init()")), "301 0 0 |CNuMatrix::Init() -> 301"},
      {Fields(CNuConstructionException(0, "CNuMatrix", "size", 1, 2)), "0 0 0 | -> 0"},
      {Fields(CNuOperationException(0, "operation", "here", 1, 2, 3.0, 4.0)), "0 0 0 | -> 0"},
      {Fields(CNuBestfitException(0, "CNuCircle", 5)), "0 0 0 | -> 0"},
      {Fields(CNuMemoryException(nullptr)), "0 0 0 | -> 0"},
      {Fields(CNuOperationException(9, nullptr, nullptr, 0, 0, 0, 0)), "109 0 0 | -> 9"},
      {Fields(CNuOperationException(9, text.c_str(), text.c_str(), 0, 0, 0, 0)),
       "109 0 0 " + what + "|" + where + " -> 9"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.fields, c.expected);
}

double Throw(double) {
  throw std::length_error("a host's own");
}

// What the library throws is caught by its class in the host, what a callback throws passes through the library, and
// destructors in between see an exception on its way.
TEST(Exceptions, CrossTheBorderOfTheLibraryByTheirClass) {
  const struct {
    void (*call)();
    std::string expected;
  } cases[] = {
      {[] { CNuMatrix(-1, 2); }, "construction 1 "},
      {[] { nu::acosh(0.5); }, "operation 1 "},
      {[] { CNuCircle(1.0).Fit(CNuPointArray(1), 50); }, "bestfit 1 "},
      {[] { CNuMatrix(INT_MAX, INT_MAX); }, "memory 301 "},
      {[] { CNuIntegral().Calculate(Throw, 0.0, 1.0, 1e-9); }, "a host's own"},
  };
  for (const auto& c : cases) {
    struct Witness {
      ~Witness() { *seen = std::uncaught_exceptions(); }
      int* seen;
    };
    int onItsWay = -1;
    std::string failure;
    try {
      failure = FailureOf([&] {
        const Witness witness{&onItsWay};
        c.call();
      });
    } catch (const std::length_error& e) {
      failure = e.what();
    }
    EXPECT_EQ(failure.substr(0, c.expected.size()), c.expected);
    EXPECT_TRUE(onItsWay == 1 && std::uncaught_exceptions() == 0) << c.expected << onItsWay;
  }
}

TEST(Exceptions, SayWhatHappened) {
  std::set<std::string> names, texts;
  const auto note = [&](const CNuException& failure) {
    const std::string name = NuCauseName(failure);
    const std::string text = NuCauseText(failure);
    EXPECT_EQ(name.empty(), text == "unknown cause");
    if (name.empty()) return;
    EXPECT_TRUE(names.insert(name).second) << name;
    EXPECT_TRUE(texts.insert(text).second) << text;
  };
  for (int cause = 0; cause < 100; ++cause) {
    note(CNuConstructionException(cause, "CNuMatrix", "size", 0, 0));
    note(CNuOperationException(cause, "operation", "here", 0, 0, 0.0, 0.0));
    note(CNuBestfitException(cause, "CNuCircle", 0));
  }
  note(CNuMemoryException("here"));
  std::ifstream header(NU_DATA_DIR "/../src/nu/foundation/causes.h");
  const std::string declared((std::istreambuf_iterator<char>(header)), std::istreambuf_iterator<char>());
  const std::regex enumerator("\\b(Nu\\w+) = \\d+");
  std::set<std::string> causes;
  for (std::sregex_iterator m(declared.begin(), declared.end(), enumerator), end; m != end; ++m) causes.insert((*m)[1]);
  EXPECT_EQ(names, causes);
  EXPECT_STREQ(NuCauseName(CNuBestfitException(NuBestfitExchange, "CNuCircle", 0)), "NuBestfitExchange");
  const struct {
    int cause, size;
    const char* text;
  } fits[] = {
      {NuBestfitTooFewPoints, 3, "too few points: at least 3 are needed"},
      {NuBestfitTooFewDistinct, 5, "too few distinct points: at least 5 are needed"},
      {NuBestfitTooFewPoints, 1, "too few points"},
      {NuBestfitTooFewPoints, -7, "too few points"},
      {NuBestfitTooFewPoints, INT_MAX, "too few points"},
      {NuBestfitCollinearPoints, 3, "the points lie on one line"},
  };
  for (const auto& c : fits) EXPECT_STREQ(NuCauseText(CNuBestfitException(c.cause, "CNuLine", c.size)), c.text);
}

TEST(Exceptions, TheAssertFlagStaysOnceSet) {
  EXPECT_EQ(CNuException::IsAssertEnabled(), 0);
  CNuException::SetAssert();
  EXPECT_EQ(CNuException::IsAssertEnabled(), 1);
  EXPECT_EQ(CNuException::m_nAssert, 1);
}

}  // namespace
