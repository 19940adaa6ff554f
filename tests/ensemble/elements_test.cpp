#include <gtest/gtest.h>

#include "ensemble/detail.h"
#include "ensemble_fixture.h"

using tervik::test::ensemble;
using tervik::test::member;

TEST(ElementTable, NamesIncludingTheDuplicatedCodes) {
  const struct {
    int code;
    const char* name;
  } cases[] = {{0, "MSL"},       {2, "T"},           {3, "T"},        {4, "Td"},
               {8, "Isotachs"},  {10, "Wind"},       {11, "Wind"},    {14, "RH"},
               {22, "ThetaSE"},  {33, "TDiff850_500"}, {34, "TDiff700_500"},
               {38, "SnowFall"}, {43, "TotalColumnWater"}};
  for (const auto& c : cases) EXPECT_STREQ(ensemble_element_name(c.code), c.name) << c.code;
  EXPECT_EQ(ensemble_element_name(-1), nullptr);
  EXPECT_EQ(ensemble_element_name(ensemble_consumed_code), nullptr);
}

TEST(FindElement, FirstMatchExceptMslWhichTakesTheLast) {
  ensemble e;
  const std::vector<double> one{1.0};
  e.add(0, member(1, 1, 0, one));    // 0: MSL
  e.add(2, member(1, 1, 500, one));  // 1: T 500
  e.add(2, member(1, 1, 850, one));  // 2: T 850
  e.add(2, member(1, 1, 500, one));  // 3: T 500
  e.add(0, member(1, 1, 0, one));    // 4: MSL
  e.add(0, member(1, 1, 500, one));  // 5: MSL at another level
  EXPECT_EQ(find_element(e.members, e.codes, 2, 500), 1);
  EXPECT_EQ(find_element(e.members, e.codes, 2, 850), 2);
  EXPECT_EQ(find_element(e.members, e.codes, 0, 0), 4);
  EXPECT_EQ(find_element(e.members, e.codes, 0, 500), 5);
  EXPECT_EQ(find_element(e.members, e.codes, 2, 700), -1);
  EXPECT_EQ(find_element(e.members, e.codes, 4, 500), -1);
  EXPECT_EQ(find_element({}, {}, 2, 500), -1);
}

TEST(FindElement, SearchesOnlyWhereBothSequencesHaveAnEntry) {
  ensemble e;
  e.add(2, member(1, 1, 500, {1.0}));
  e.add(4, member(1, 1, 500, {1.0}));
  std::vector<int> short_codes{2};
  EXPECT_EQ(find_element(e.members, short_codes, 4, 500), -1);
  std::vector<int> long_codes{2, 3, 0};
  EXPECT_EQ(find_element(e.members, long_codes, 0, 500), -1);
}
