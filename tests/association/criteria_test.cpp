#include "nu/association/criteria.h"

#include <gtest/gtest.h>

TEST(Criteria, HaveTheLettersOfTheStandard) {
  const char* const letters[] = {"G", "C", "N", "X", ""};
  for (int i = 0; i < 5; ++i) EXPECT_STREQ(NuCriterionLetter(static_cast<ENuCriterion>(i)), letters[i]);
  EXPECT_STREQ(NuCriterionName(NuMaximumInscribed), "maximum inscribed");
}
