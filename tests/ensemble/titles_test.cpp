#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>

#include "ensemble/detail.h"

namespace {

std::string edited(const char* title, int level, const char* label) {
  char d[128] = {};
  std::strncpy(d, title, sizeof d - 1);
  tervik::detail::cut_title(d, level);
  tervik::detail::append_title(d, label);
  return d;
}

}  // namespace

TEST(StatisticTitle, CutsAfterHpaOrAtTheLastZeroThenAppendsWithoutSeparator) {
  const struct {
    const char* title;
    int level;
    const char* label;
    const char* want;
  } cases[] = {
      {"ECMF 24011512 500hPa T ens", 500, "MeanT", "ECMF 24011512 500hPaMeanT"},
      {"500hPa 850hPa", 850, "VarT", "500hPaVarT"},            // the first "hPa"
      {"T 850 mb", 850, "MaxT", "T 850 mbMaxT"},               // no "hPa": kept whole
      {"MSL 24011500 0 ens", 0, "MeanMSL", "MSL 24011500 MeanMSL"},
      {"T2m 0", 0, "MinT", "T2m MinT"},
      {"surface", 0, "MeanMSL", "surfaceMeanMSL"},             // no '0': kept whole
      {"1000hPa", 0, "MeanGH", "100MeanGH"},                   // level 0 ignores "hPa"
      {"", 500, "MeanT", "MeanT"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(edited(c.title, c.level, c.label), c.want) << c.title << " @" << c.level;
}

TEST(StatisticTitle, AppendedLabelIsCutAtTheEndOfTheField) {
  const std::string long_title(120, 'x');
  const std::string got = edited(long_title.c_str(), 500, "MeanTotalColumnWater");
  EXPECT_EQ(got.size(), 127u);
  EXPECT_EQ(got, long_title + "MeanTot");
}

TEST(StatisticTitle, UnterminatedTitleIsTerminatedInsideTheField) {
  char d[128];
  std::memset(d, 'y', sizeof d);
  tervik::detail::cut_title(d, 500);
  tervik::detail::append_title(d, "MeanT");
  EXPECT_EQ(std::strlen(d), 127u);
  EXPECT_EQ(d[127], '\0');
}

TEST(RankIndex, TruncatesAndStaysInsideTheValues) {
  const struct {
    int n;
    double f;
    int want;
  } cases[] = {{5, 0.5, 2}, {4, 0.5, 2}, {10, 0.29, 2}, {10, 0.0, 0},  {10, 0.99, 9},
               {10, 1.0, 9}, {10, 2.5, 9}, {10, -0.3, 0}, {1, 0.5, 0},  {10, std::nan(""), 0}};
  for (const auto& c : cases)
    EXPECT_EQ(tervik::detail::rank_index(c.n, c.f), c.want) << c.n << " " << c.f;
}
