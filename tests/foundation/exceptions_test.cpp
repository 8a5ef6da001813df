#include "nu/foundation/exceptions.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "nu/foundation/object.h"
#include "nu/linalg/matrix.h"

namespace {

// Every field but the doubles, then the cause as it is asked for.
std::string Fields(const CNuException& e) {
  std::string fields;
  for (const int number : {e.m_nCause, e.m_nLower, e.m_nUpper}) fields += std::to_string(number) + " ";
  return fields + e.m_szWhat + "|" + e.m_szWhere + " -> " + std::to_string(e.GetCause());
}

TEST(Exceptions, KeepTheirFieldsAndTellTheirKindsApart) {
  const CNuConstructionException construction(1, "CNuMatrix", "size", 1, 2);
  const CNuOperationException operation(3, "operation", "CNuMatrix::Element()", 0, 4, 0.5, -7.25);
  const CNuBestfitException bestfit(13, "CNuCircle", 5);
  const CNuMemoryException memory("CNuMatrix::Init()");
  const struct {
    std::string fields, expected;
  } cases[] = {
      {Fields(construction), "1 1 2 size|CNuMatrix -> 1"},
      {Fields(operation), "103 0 4 operation|CNuMatrix::Element() -> 3"},
      {Fields(bestfit), "213 5 0 |CNuCircle -> 13"},
      {Fields(memory), "301 0 0 |CNuMatrix::Init() -> 301"},
      {Fields(CNuConstructionException(0, "CNuMatrix", "size", 1, 2)), "0 0 0 | -> 0"},
      {Fields(CNuOperationException(0, "operation", "here", 1, 2, 3.0, 4.0)), "0 0 0 | -> 0"},
      {Fields(CNuBestfitException(0, "CNuCircle", 5)), "0 0 0 | -> 0"},
      {Fields(CNuMemoryException(nullptr)), "0 0 0 | -> 0"},
      {Fields(CNuConstructionException()) + Fields(CNuOperationException()), "0 0 0 | -> 00 0 0 | -> 0"},
      {Fields(CNuBestfitException()) + Fields(CNuMemoryException()), "0 0 0 | -> 00 0 0 | -> 0"},
      {Fields(CNuConstructionException(9, nullptr, nullptr, 0, 0)), "9 0 0 | -> 9"},
      {Fields(CNuOperationException(9, nullptr, nullptr, 0, 0, 0, 0)), "109 0 0 | -> 9"},
      {Fields(CNuBestfitException(9, nullptr, 0)), "209 0 0 | -> 9"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.fields, c.expected);
  EXPECT_EQ(bestfit.GetSize(), 5);
  CNuOperationException copy;
  copy = CNuOperationException(operation);
  EXPECT_EQ(copy.GetValue(), 0.5);
  EXPECT_EQ(copy.m_dUpper, -7.25);
  EXPECT_EQ(Fields(copy), Fields(operation));
}

TEST(Exceptions, CutTextsToTheirFields) {
  for (const std::size_t length : {48u, 49u, 50u, 98u, 99u, 100u, 1000u}) {
    const std::string text(length, 'x');
    const CNuOperationException e(1, text.c_str(), text.c_str(), 0, 0, 0.0, 0.0);
    EXPECT_EQ(std::strlen(e.m_szWhat), std::min<std::size_t>(length, 99));
    EXPECT_EQ(std::strlen(e.m_szWhere), std::min<std::size_t>(length, 49));
  }
}

TEST(Exceptions, AreCaughtByTheirRoot) {
  try {
    CNuMatrix(0, 3);
    FAIL();
  } catch (const CNuException& e) {
    EXPECT_EQ(Fields(e), "1 0 0 number of rows/columns|CNuMatrix -> 1");
    EXPECT_NE(dynamic_cast<const CNuConstructionException*>(&e), nullptr);
  }
}

TEST(Exceptions, TheAssertFlagStaysOnceSet) {
  EXPECT_EQ(CNuException::IsAssertEnabled(), 0);
  for (int i = 0; i < 2; ++i) {
    CNuException::SetAssert();
    EXPECT_EQ(CNuException::IsAssertEnabled(), 1);
  }
}

}  // namespace
