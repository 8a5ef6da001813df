#include "nu/foundation/exceptions.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// Every field but the doubles, then the cause as it is asked for.
std::string Fields(const CNuException& e) {
  std::string fields;
  for (const int number : {e.m_nCause, e.m_nLower, e.m_nUpper}) fields += std::to_string(number) + " ";
  return fields + e.m_szWhat + "|" + e.m_szWhere + " -> " + std::to_string(e.GetCause());
}

TEST(Exceptions, KeepTheirFieldsAndTellTheirKindsApart) {
  const CNuOperationException operation(3, "operation", "CNuMatrix::Element()", 0, 4, 0.5, -7.25);
  CNuOperationException copy;
  EXPECT_EQ(Fields(copy), "0 0 0 | -> 0");
  copy = operation;
  EXPECT_TRUE(copy.GetValue() == 0.5 && copy.m_dUpper == -7.25);
  const std::string text(1000, 'x'), what(99, 'x'), where(49, 'x');
  const struct {
    std::string fields, expected;
  } cases[] = {
      {Fields(CNuConstructionException(1, "CNuMatrix", "size", 1, 2)), "1 1 2 size|CNuMatrix -> 1"},
      {Fields(copy), "103 0 4 operation|CNuMatrix::Element() -> 3"},
      {Fields(CNuBestfitException(13, "CNuCircle", 5)), "213 5 0 |CNuCircle -> 13"},
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

TEST(Exceptions, TheAssertFlagStaysOnceSet) {
  EXPECT_EQ(CNuException::IsAssertEnabled(), 0);
  CNuException::SetAssert();
  EXPECT_EQ(CNuException::IsAssertEnabled(), 1);
  EXPECT_EQ(CNuException::m_nAssert, 1);
}

}  // namespace
