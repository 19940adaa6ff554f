// Every ensemble statistic against a direct computation over random ensembles of 1, 8 and
// 101 members (past any fixed-size sort), the titles of the results, and what the
// statistics report on stderr: progress, or -1 with a message naming the function (some
// share another's name) and the output and the element codes left alone.

#include <gtest/gtest.h>
#include <tervik/sounding.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>

#include "ensemble/detail.h"
#include "ensemble_fixture.h"

using namespace tervik::test;

namespace {

constexpr int nx = 6, ny = 4, points = nx * ny;

// One member's value at a point; for a wind its speed and direction.
struct sample {
  double value, dir;
};
using samples = std::vector<sample>;
using reference = std::function<sample(samples)>;

bool by_value(const sample& a, const sample& b) { return a.value < b.value; }

// The mean and the population variance, directions averaged as plain numbers.
sample moment(const samples& s, bool variance) {
  sample m{0, 0};
  for (const sample& x : s) m = {m.value + x.value / s.size(), m.dir + x.dir / s.size()};
  if (!variance) return m;
  double dev = 0;
  for (const sample& x : s) dev += (x.value - m.value) * (x.value - m.value) / s.size();
  return {dev, 0};
}

// Sorted, the member of rank k = (int)(n f) clamped to the last; as a percentile, between
// ranks k - 1 and k.
reference rank(double f, bool percentile = false) {
  return [=](samples s) {
    std::stable_sort(s.begin(), s.end(), by_value);
    const std::size_t k = std::min<std::size_t>(s.size() * f, s.size() - 1);
    if (!percentile || k == 0 || s.size() * f >= s.size()) return s[k];
    return sample{s[k - 1].value + (s[k].value - s[k - 1].value) * (s.size() * f - k), 0};
  };
}

TEST(EnsembleStatistics, MatchDirectComputationOverTheTakingPartMembers) {
  const reference mean = [](samples s) { return moment(s, false); };
  const reference var = [](samples s) { return moment(s, true); };
  const reference min = [](samples s) { return *std::min_element(s.begin(), s.end(), by_value); };
  const reference max = [](samples s) { return *std::max_element(s.begin(), s.end(), by_value); };
  const struct {
    const char* name;
    stat4 grid;     // the statistic as a grid...
    stat11 record;  // ...or as a wind record, which keeps the chosen member's direction
    int element;
    double arg;
    reference expected;
  } cases[] = {
      {"T mean", compute_griddata_mean, nullptr, 2, 0, mean},
      {"T var", compute_griddata_var, nullptr, 2, 0, var},
      {"T min", compute_griddata_min, nullptr, 2, 0, min},
      {"T max", compute_griddata_max, nullptr, 2, 0, max},
      {"T median", compute_griddata_median, nullptr, 2, 0.5, rank(0.5)},
      // ranks outside the members are clamped to them
      {"T median 2.5", compute_griddata_median, nullptr, 2, 2.5, rank(1.0)},
      {"T median -0.3", compute_griddata_median, nullptr, 2, -0.3, rank(0.0)},
      {"T percentile 0.9", compute_griddata_percentile, nullptr, 2, 0.9, rank(0.9, true)},
      {"T percentile 7.5", compute_griddata_percentile, nullptr, 2, 7.5, rank(7.5, true)},
      {"speed mean", compute_winddata_mean, nullptr, 8, 0, mean},
      {"speed max", compute_winddata_max, nullptr, 8, 0, max},
      {"speed median", compute_winddata_median, nullptr, 8, 0.5, rank(0.5)},
      {"wind mean", nullptr, compute_winddata_mean, 10, 0, mean},
      {"wind max", nullptr, compute_winddata_max, 10, 0, max},
      {"wind median 0.9", nullptr, compute_winddata_median, 10, 0.9, rank(0.9)},
  };
  for (int n : {1, 8, 101}) {
    // temperatures (code 2) and winds (5, 6) at 500 hPa, after a first member that is not
    // wind and between members of other codes and levels that must not take part
    std::mt19937 rng(n);
    ensemble e;
    std::vector<samples> t(points), wind(points);
    e.add(1, member(nx, ny, 500, random_values(rng, points, 5000, 6000)));
    for (int i = 0; i < n; ++i) {
      const auto temp = random_values(rng, points, -30, 10);
      const auto east = random_values(rng, points, -30, 30);
      const auto north = random_values(rng, points, -30, 30);
      e.add(3, member(nx, ny, 500, random_values(rng, points, -60, 40)));
      e.add(2, member(nx, ny, 850, random_values(rng, points, -60, 40)));
      e.add(2, member(nx, ny, 500, temp));
      e.add(5, member(nx, ny, 500, east));
      e.add(5, member(nx, ny, 850, random_values(rng, points, -30, 30)));
      e.add(6, member(nx, ny, 500, north));
      for (int k = 0; k < points; ++k) {
        t[k].push_back({temp[k], 0});
        wind[k].push_back({0, 0});
        uv2magdir(east[k], north[k], &wind[k].back().value, &wind[k].back().dir);
      }
    }
    for (const auto& c : cases) {
      tervik_data4 grid;
      tervik_data11 record;
      ASSERT_EQ(c.grid ? c.grid(e.members, e.codes, c.element, 500, c.arg, grid)
                       : c.record(e.members, e.codes, c.element, 500, c.arg, record), 0)
          << c.name;
      for (int k = 0; k < points; ++k) {
        const sample want = c.expected(c.element == 2 ? t[k] : wind[k]);
        sample got{c.grid ? grid.data()[k] : 0, want.dir};
        if (c.record) uv2magdir(record.u()[k], record.v()[k], &got.value, &got.dir);
        EXPECT_NEAR(got.value, want.value, 1e-9) << c.name << " n=" << n << " point " << k;
        EXPECT_NEAR(std::remainder(got.dir - want.dir, 360.0), 0, 1e-6) << c.name << " " << k;
      }
    }
  }
}

TEST(StatisticTitle, HeaderMemberTitleCutAfterItsHpaThenLabelled) {
  // cut after the first "hPa" (for level 0 at the last '0'), labelled within 128 bytes
  const std::string long_title(120, 'x'), long_want = long_title + "MeanTot";
  const struct {
    int element, level;
    stat4 grid;
    double arg;
    const char *first, *second, *want;
  } cases[] = {
      {2, 500, compute_griddata_mean, 0, "EC 24011512 500hPa T", "b", "EC 24011512 500hPaMeanT"},
      {2, 850, compute_griddata_var, 0, "500hPa 850hPa", "b", "500hPaVarT"},
      {3, 850, compute_griddata_max, 0, "T 850 mb", "b", "T 850 mbMaxT"},  // no "hPa"
      {0, 0, compute_griddata_mean, 0, "a", "MSL 2401 0 ens", "MSL 2401 MeanMSL"},  // the last
      {0, 0, compute_griddata_min, 0, "a 0", "surface", "surfaceMinMSL"},  // no '0'
      {1, 0, compute_griddata_mean, 0, "1000hPa", "b", "100MeanGH"},
      {2, 500, compute_griddata_percentile, 0.29, "500hPa", "b", "500hPaT28%Percentile"},
      {8, 500, compute_winddata_median, 0.5, "U 500hPa", "b", "U 500hPaMedianWind"},
      {14, 500, compute_griddata_mean, 0, "Td 500hPa", "b", "Td 500hPaMeanRH"},
      {43, 500, compute_griddata_mean, 0, long_title.c_str(), "b", long_want.c_str()},
  };
  for (const auto& c : cases) {
    ensemble e;
    for (const char* title : {c.first, c.second}) {
      // winds come as U and V, relative humidity from Td and T
      const bool wind = c.element == 8, rh = c.element == 14;
      e.add(wind ? 5 : rh ? 4 : c.element, member(1, 1, c.level, {1.0}, title));
      if (wind || rh) e.add(wind ? 6 : 2, member(1, 1, c.level, {1.0}));
    }
    tervik_data4 out;
    ASSERT_EQ(c.grid(e.members, e.codes, c.element, c.level, c.arg, out), 0) << c.want;
    EXPECT_STREQ(out.description, c.want);
  }
  // an unterminated title is terminated inside the field
  char d[128];
  std::memset(d, 'y', sizeof d);
  tervik::detail::cut_title(d, 500);
  tervik::detail::append_title(d, "MeanT");
  EXPECT_EQ(std::strlen(d), 127u);
}

using run_fn = std::function<int(ensemble&, tervik_data4&)>;

run_fn call(stat4 fn, int element, int level = 500) {
  return [=](ensemble& e, tervik_data4& out) {
    return fn(e.members, e.codes, element, level, 0.5, out);
  };
}

TEST(EnsembleMessages, ProgressAndFailuresByTheirExactText) {
  ensemble t;  // three temperatures at 500 hPa
  for (int i = 0; i < 3; ++i) t.add(2, member(2, 2, 500, {1, 2, 3, 4}));
  ensemble sizes = t, no_values = t, lengths = t, wind, only_u, only_v, no_pair;
  sizes.add(2, member(4, 1, 500, {1, 2, 3, 4}));
  no_values.members[1].set_gridPtr(nullptr);
  lengths.codes.push_back(2);
  wind.add(5, member(2, 1, 500, {1, 2}));
  wind.add(6, member(1, 2, 500, {1, 2}));
  only_u.add(5, member(1, 1, 500, {1.0}, "U 500hPa"));
  only_v.add(6, member(1, 1, 500, {1.0}, "V 500hPa"));
  no_pair.add(4, member(2, 1, 500, {-5.0, 1}));
  no_pair.add(3, member(2, 1, 500, {0.0, 1}));
  const run_fn isotach = [](ensemble& e, tervik_data4& out) {
    return compute_wind_isotach(e.members, e.codes, 500, 1.0, out);
  };
  const struct {
    ensemble* e;
    run_fn run;
    int result;
    const char *err, *title_after;
  } cases[] = {
      {&t, call(compute_griddata_var, 2), 0,
       "compute_griddata_var(): element=2, level=500, member_cnt=3\n", nullptr},
      {&t, call(compute_griddata_mean, 2, 300), -1,
       "compute_griddata_mean(): element(2) not found\n", "untouched"},
      // the percentile's missing element goes by the median's name
      {&t, call(compute_griddata_percentile, 2, 300), -1,
       "compute_griddata_median(): element(2) not found\n", "untouched"},
      {&t, call(compute_griddata_max, 44), -1,
       "compute_griddata_max(): element(44) is not in the element table\n", "untouched"},
      {&sizes, call(compute_griddata_median, 2), -1,
       "compute_griddata_median(): member 3 grid is 4x1, not 2x2\n", "untouched"},
      {&no_values, call(compute_griddata_mean, 2), -1,
       "compute_griddata_mean(): member 1 has no values\n", "untouched"},
      {&lengths, call(compute_griddata_var, 2), -1,
       "compute_griddata_var(): 4 element codes for 3 members\n", "untouched"},
      {&no_pair, call(compute_griddata_min, 14), -1,
       "compute_griddata_min(): element(14) not found\n", "untouched"},
      {&wind, call(compute_winddata_var, 8), -1,
       "compute_winddata_var(): member 1 grid is 1x2, not 2x1\n", "untouched"},
      // the wind grids take member 0's header before they look for U
      {&only_v, call(compute_winddata_median, 8), -1,
       "compute_winddata_median(): element(8) not found\n", "V 500hPa"},
      // a U without a V is reported by the mean, whichever statistic asked
      {&only_u, call(compute_winddata_max, 8), -1,
       "compute_winddata_mean(): element(8) not found\n", "U 500hPa"},
      {&wind, isotach, -1, "compute_wind_isotach(): member 0 grid is 2x1, not 1x2\n", "untouched"},
      {&lengths, [](ensemble& e, tervik_data4& out) {
         return compute_rh(e.members, e.codes, 500, 0, out);
       }, -1, "compute_rh(): 4 element codes for 3 members\n", "untouched"},
  };
  for (const auto& c : cases) {
    const std::vector<int> codes = c.e->codes;
    tervik_data4 out = member(1, 1, 999, {42.0}, "untouched");
    const double* before = out.data();
    testing::internal::CaptureStderr();
    EXPECT_EQ(c.run(*c.e, out), c.result) << c.err;
    EXPECT_EQ(testing::internal::GetCapturedStderr(), c.err);
    EXPECT_EQ(c.e->codes, codes) << c.err;
    if (!c.title_after) continue;
    EXPECT_STREQ(out.description, c.title_after) << c.err;
    EXPECT_EQ(out.data(), before) << c.err;
    EXPECT_EQ(out.data()[0], 42.0) << c.err;
  }
}

}  // namespace
