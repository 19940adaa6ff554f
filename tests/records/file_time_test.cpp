#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include <gtest/gtest.h>
#include <tervik/records.h>

namespace {

struct Parsed {
  int rc, year, month, day, hour, forecast;
};

Parsed parse(std::string name) {
  Parsed p{};
  p.rc = tduGetTimeByFilename(&name[0], &p.year, &p.month, &p.day, &p.hour, &p.forecast);
  return p;
}

std::string relative(const char* path, int hours, int mode = 0) {
  std::unique_ptr<char, decltype(&std::free)> s(tduGetFilenameByRelativeTimeInterval(path, hours, mode),
                                                &std::free);
  return s ? std::string(s.get()) : std::string("<null>");
}

}  // namespace

TEST(TimeFromFileName, ReadsTheFieldsOfTheName) {
  const Parsed p = parse("24011512.006.grd");
  EXPECT_EQ(p.rc, 0);
  EXPECT_EQ(p.year, 2024);
  EXPECT_EQ(p.month, 1);
  EXPECT_EQ(p.day, 15);
  EXPECT_EQ(p.hour, 12);
  EXPECT_EQ(p.forecast, 6);
}

TEST(TimeFromFileName, TwelveCharactersAreEnoughElevenAreNot) {
  EXPECT_EQ(parse("99123118.072").rc, 0);
  EXPECT_EQ(parse("99123118.07").rc, 1);
  EXPECT_EQ(parse("").rc, 1);
  int y, m, d, h, f;
  EXPECT_EQ(tduGetTimeByFilename(nullptr, &y, &m, &d, &h, &f), 1);
}

TEST(TimeFromFileName, TwoDigitYearsLieInThisCentury) {
  EXPECT_EQ(parse("99123118.072").year, 2099);
  EXPECT_EQ(parse("05010100.000").year, 2005);
}

TEST(TimeFromFileName, LeavesTheCallersStringAsItWas) {
  char name[] = "24011512.006";
  int y, m, d, h, f;
  ASSERT_EQ(tduGetTimeByFilename(name, &y, &m, &d, &h, &f), 0);
  EXPECT_STREQ(name, "24011512.006");
}

TEST(TimeFromFileName, DoesNoRangeChecks) {
  const Parsed p = parse("24139977.abc");
  EXPECT_EQ(p.rc, 0);
  EXPECT_EQ(p.month, 13);
  EXPECT_EQ(p.day, 99);
  EXPECT_EQ(p.hour, 77);
  EXPECT_EQ(p.forecast, 0);
}

TEST(RelativeFileName, ShiftsTheTimeAndKeepsTheDirectory) {
  struct Case {
    const char* path;
    int hours;
    const char* expected;
  } cases[] = {
      {"/data/obs/24011512.006", 6, "/data/obs/24011518.000"},
      {"/data/obs/24011512.006", -12, "/data/obs/24011500.000"},
      {"/data/obs/24013118.000", 12, "/data/obs/24020106.000"},    // month end
      {"/data/obs/24022818.000", 24, "/data/obs/24022918.000"},    // leap year
      {"/data/obs/23022818.000", 24, "/data/obs/23030118.000"},
      {"/data/obs/24010100.000", -1, "/data/obs/23123123.000"},    // year back
      {"24011512.006", 0, "24011512.000"},                        // no directory; hours 0
      {"/d/24011512.006.txt", 24, "/d/24011612.000.txt"},          // the tail is kept
  };
  for (const auto& c : cases) EXPECT_EQ(relative(c.path, c.hours), c.expected) << c.path << " " << c.hours;
}

TEST(RelativeFileName, CalendarWithoutLeapDays) {
  EXPECT_EQ(relative("/m/24022818.000", 24, 1), "/m/24030118.000");
}

TEST(RelativeFileName, FailsOnUnreadableNamesAndImpossibleDates) {
  EXPECT_EQ(relative(nullptr, 6), "<null>");
  EXPECT_EQ(relative("/data/short.txt", 6), "<null>");
  EXPECT_EQ(relative("/data/24133012.000", 6), "<null>");  // month 13
  EXPECT_EQ(relative("/data/24011512.000", 6, 7), "<null>");  // unknown calendar
  EXPECT_EQ(relative("/data/24011512.000", -2147483647 - 1), "<null>");  // before year 1
}
