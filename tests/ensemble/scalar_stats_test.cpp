#include <gtest/gtest.h>
#include <tervik/diagnostics.h>
#include <tervik/isoline.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>

#include "ensemble_fixture.h"

using tervik::test::ensemble;
using tervik::test::member;
using tervik::test::random_values;
using tervik::test::values_of;

namespace {

using statistic = int (*)(const std::vector<tervik_data4>&, const std::vector<int>&, int, int,
                          double, tervik_data4&);

constexpr int nx = 7, ny = 5, points = nx * ny;

// n temperature members at 500 hPa, with members of other elements and levels in between
// that must not take part. Returns the taking-part value arrays in sequence order.
std::vector<std::vector<double>> temperature_ensemble(ensemble& e, int n, unsigned seed) {
  std::mt19937 rng(seed);
  std::vector<std::vector<double>> taking_part;
  for (int i = 0; i < n; ++i) {
    e.add(3, member(nx, ny, 500, random_values(rng, points, -60, 40)));  // T, other code
    e.add(2, member(nx, ny, 850, random_values(rng, points, -60, 40)));  // other level
    taking_part.push_back(random_values(rng, points, -30, 10));
    e.add(2, member(nx, ny, 500, taking_part.back()));
    e.add(4, member(nx, ny, 500, random_values(rng, points, -60, 40)));  // Td
  }
  return taking_part;
}

// Values of point k across the members, in member order.
std::vector<double> at_point(const std::vector<std::vector<double>>& m, int k) {
  std::vector<double> x;
  for (const auto& v : m) x.push_back(v[k]);
  return x;
}

}  // namespace

TEST(ScalarStatistics, MomentsMatchDirectComputationOverTheTakingPartMembers) {
  ensemble e;
  const auto m = temperature_ensemble(e, 9, 7);
  tervik_data4 mean, var, mn, mx;
  ASSERT_EQ(compute_griddata_mean(e.members, e.codes, 2, 500, 0, mean), 0);
  ASSERT_EQ(compute_griddata_var(e.members, e.codes, 2, 500, 0, var), 0);
  ASSERT_EQ(compute_griddata_min(e.members, e.codes, 2, 500, 0, mn), 0);
  ASSERT_EQ(compute_griddata_max(e.members, e.codes, 2, 500, 0, mx), 0);
  for (int k = 0; k < points; ++k) {
    const auto x = at_point(m, k);
    double sum = 0;
    for (double v : x) sum += v;
    const double avg = sum / x.size();
    double dev = 0;
    for (double v : x) dev += (v - avg) * (v - avg);
    EXPECT_DOUBLE_EQ(mean.data()[k], avg) << k;
    EXPECT_NEAR(var.data()[k], dev / x.size(), 1e-9) << k;  // population variance
    EXPECT_EQ(mn.data()[k], *std::min_element(x.begin(), x.end())) << k;
    EXPECT_EQ(mx.data()[k], *std::max_element(x.begin(), x.end())) << k;
  }
}

TEST(ScalarStatistics, OrderStatisticsPickTruncatedRanksAlsoBeyondSixtyFourMembers) {
  for (int n : {1, 8, 9, 101}) {
    ensemble e;
    const auto m = temperature_ensemble(e, n, 11 + n);
    for (double f : {0.5, 0.29, 0.9}) {
      tervik_data4 med, pct;
      ASSERT_EQ(compute_griddata_median(e.members, e.codes, 2, 500, f, med), 0);
      ASSERT_EQ(compute_griddata_percentile(e.members, e.codes, 2, 500, f, pct), 0);
      const int k = static_cast<int>(n * f);
      const double w = n * f - k;
      for (int i = 0; i < points; ++i) {
        auto x = at_point(m, i);
        std::sort(x.begin(), x.end());
        // median: a[(int)(n f)], for f = 0.5 and even n the upper middle value
        EXPECT_EQ(med.data()[i], x[k]) << n << " " << f;
        // percentile: between ranks k - 1 and k, clamped to the values when n p < 1
        const double want = k == 0 ? x[0] : x[k - 1] + (x[k] - x[k - 1]) * w;
        EXPECT_DOUBLE_EQ(pct.data()[i], want) << n << " " << f;
      }
    }
  }
}

TEST(ScalarStatistics, PercentileRanksPastTheEndAreClampedToTheLargest) {
  ensemble e;
  const auto m = temperature_ensemble(e, 10, 5);
  for (double p : {1.0, 7.5}) {
    tervik_data4 out;
    ASSERT_EQ(compute_griddata_percentile(e.members, e.codes, 2, 500, p, out), 0);
    for (int i = 0; i < points; ++i) {
      const auto x = at_point(m, i);
      EXPECT_EQ(out.data()[i], *std::max_element(x.begin(), x.end())) << p;
    }
  }
}

TEST(ScalarStatistics, MissingValuesEnterLikeAnyOtherNumber) {
  ensemble e;
  e.add(2, member(1, 1, 500, {10.0}));
  e.add(2, member(1, 1, 500, {tervik_data4::undef}));
  tervik_data4 mean, mx;
  ASSERT_EQ(compute_griddata_mean(e.members, e.codes, 2, 500, 0, mean), 0);
  ASSERT_EQ(compute_griddata_max(e.members, e.codes, 2, 500, 0, mx), 0);
  EXPECT_EQ(mean.data()[0], (10.0 + 9999.0) / 2);
  EXPECT_EQ(mx.data()[0], 9999.0);
}

TEST(ScalarStatistics, LabelsAndTitles) {
  ensemble e;
  temperature_ensemble(e, 4, 1);
  const struct {
    statistic fn;
    double arg;
    const char* title;
  } cases[] = {
      {compute_griddata_mean, 0, "ECMF 24011512 500hPaMeanT"},
      {compute_griddata_var, 0, "ECMF 24011512 500hPaVarT"},
      {compute_griddata_min, 0, "ECMF 24011512 500hPaMinT"},
      {compute_griddata_max, 0, "ECMF 24011512 500hPaMaxT"},
      {compute_griddata_median, 0.5, "ECMF 24011512 500hPaMedianT"},
      {compute_griddata_percentile, 0.9, "ECMF 24011512 500hPaT90%Percentile"},
      // (int)(0.29 * 100) is 28 in double arithmetic
      {compute_griddata_percentile, 0.29, "ECMF 24011512 500hPaT28%Percentile"},
  };
  for (const auto& c : cases) {
    tervik_data4 out;
    ASSERT_EQ(c.fn(e.members, e.codes, 2, 500, c.arg, out), 0) << c.title;
    EXPECT_STREQ(out.description, c.title);
  }

  ensemble w;
  w.add(43, member(2, 2, 0, {1, 2, 3, 4}, "TCW 24011512 0 member"));
  tervik_data4 out;
  ASSERT_EQ(compute_griddata_min(w.members, w.codes, 43, 0, 0, out), 0);
  EXPECT_STREQ(out.description, "TCW 24011512 MinTotalColumnWater");
}

TEST(ScalarStatistics, HeaderIsTheFirstMemberExceptForMslWhereItIsTheLast) {
  ensemble e;
  tervik_data4 a = member(2, 1, 0, {1, 2}, "MSL a 0"), b = member(2, 1, 0, {3, 4}, "MSL b 0");
  a.valid_time[0] = 1;
  b.valid_time[0] = 2;
  e.add(0, a);
  e.add(0, b);
  tervik_data4 t1 = member(2, 1, 500, {1, 2}, "first 500hPa"),
               t2 = member(2, 1, 500, {3, 4}, "second 500hPa");
  t1.contour_interval = 2;
  e.add(2, t1);
  e.add(2, t2);
  tervik_data4 out;
  ASSERT_EQ(compute_griddata_mean(e.members, e.codes, 0, 0, 0, out), 0);
  EXPECT_STREQ(out.description, "MSL b MeanMSL");
  EXPECT_EQ(out.valid_time[0], 2);
  ASSERT_EQ(compute_griddata_max(e.members, e.codes, 2, 500, 0, out), 0);
  EXPECT_STREQ(out.description, "first 500hPaMaxT");
  EXPECT_EQ(out.contour_interval, 2);  // the header member's contour fields stay
  EXPECT_EQ(out.contour_start, -40);
}

TEST(ScalarStatistics, VarianceAndPercentileProposeContoursFromTheirRange) {
  ensemble e;
  temperature_ensemble(e, 6, 21);
  for (statistic fn : {compute_griddata_var, compute_griddata_percentile}) {
    tervik_data4 out;
    ASSERT_EQ(fn(e.members, e.codes, 2, 500, 0.5, out), 0);
    const auto r = values_of(out);
    double start = 0, interval = 0, end = 0;
    find_isoline_values(*std::min_element(r.begin(), r.end()),
                        *std::max_element(r.begin(), r.end()), &start, &interval, &end);
    EXPECT_EQ(out.contour_start, start);
    EXPECT_EQ(out.contour_interval, interval);
    EXPECT_EQ(out.contour_end, end);
    EXPECT_NE(out.contour_interval, 4);  // not the header member's
  }
}

TEST(ScalarStatistics, ProgressAndNotFoundMessages) {
  ensemble e;
  temperature_ensemble(e, 3, 2);
  const struct {
    statistic fn;
    const char* name;
    const char* not_found_name;
  } cases[] = {
      {compute_griddata_mean, "compute_griddata_mean", "compute_griddata_mean"},
      {compute_griddata_var, "compute_griddata_var", "compute_griddata_var"},
      {compute_griddata_min, "compute_griddata_min", "compute_griddata_min"},
      {compute_griddata_max, "compute_griddata_max", "compute_griddata_max"},
      {compute_griddata_median, "compute_griddata_median", "compute_griddata_median"},
      // the percentile's missing element is reported under the median's name
      {compute_griddata_percentile, "compute_griddata_percentile", "compute_griddata_median"}};
  for (const auto& c : cases) {
    tervik_data4 out;
    testing::internal::CaptureStderr();
    EXPECT_EQ(c.fn(e.members, e.codes, 2, 500, 0.5, out), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              std::string(c.name) + "(): element=2, level=500, member_cnt=3\n");
    testing::internal::CaptureStderr();
    EXPECT_EQ(c.fn(e.members, e.codes, 2, 300, 0.5, out), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              std::string(c.not_found_name) + "(): element(2) not found\n");
  }
}

// ---- Relative humidity derived from temperature / dew-point pairs ----

namespace {

std::vector<double> rh_of(const std::vector<double>& t, const std::vector<double>& td) {
  std::vector<double> rh(t.size());
  double lo, hi;
  compute_field_ttd2rh(rh.data(), &lo, &hi, t.data(), td.data(), static_cast<int>(t.size()), 1,
                       1.0);
  return rh;
}

}  // namespace

TEST(ScalarStatistics, RelativeHumidityIsDerivedFromPairsInSequenceOrder) {
  std::mt19937 rng(4);
  auto values = [&] { return random_values(rng, points, -20, 10); };
  const auto t1 = values(), td1 = values(), td2 = values(), t2 = values(), t3 = values(),
             t_other = values(), t_code3 = values();
  ensemble e;
  e.add(2, member(nx, ny, 500, t1, "T 500hPa"));
  e.add(3, member(nx, ny, 500, t_code3, "T3 500hPa"));  // code 3 does not pair
  e.add(4, member(nx, ny, 500, td1, "Td first 500hPa"));
  e.add(2, member(nx, ny, 700, t_other, "T 700hPa"));  // other level
  e.add(4, member(nx, ny, 500, td2, "Td second 500hPa"));
  e.add(2, member(nx, ny, 500, t2, "T 500hPa"));
  e.add(2, member(nx, ny, 500, t3, "T 500hPa"));  // unpaired at the end
  const auto rh1 = rh_of(t1, td1), rh2 = rh_of(t2, td2);

  tervik_data4 mean, mn, med;
  testing::internal::CaptureStderr();
  ASSERT_EQ(compute_griddata_mean(e.members, e.codes, 14, 500, 0, mean), 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "compute_griddata_mean(): element=14, level=500, member_cnt=2\n");
  ASSERT_EQ(compute_griddata_min(e.members, e.codes, 14, 500, 0, mn), 0);
  ASSERT_EQ(compute_griddata_median(e.members, e.codes, 14, 500, 0.5, med), 0);
  for (int k = 0; k < points; ++k) {
    EXPECT_DOUBLE_EQ(mean.data()[k], (rh1[k] + rh2[k]) / 2) << k;
    EXPECT_EQ(mn.data()[k], std::min(rh1[k], rh2[k])) << k;
    EXPECT_EQ(med.data()[k], std::max(rh1[k], rh2[k])) << k;  // upper middle of two
  }
  EXPECT_STREQ(mean.description, "Td first 500hPaMeanRH");
  // the mean spans 0..100; minimum, maximum and median keep the header's start
  EXPECT_EQ(mean.contour_interval, 10);
  EXPECT_EQ(mean.contour_start, 0);
  EXPECT_EQ(mean.contour_end, 100);
  for (const tervik_data4* r : {&mn, &med}) {
    EXPECT_EQ(r->contour_interval, 10);
    EXPECT_EQ(r->contour_start, -40);
    EXPECT_EQ(r->contour_end, 100);
  }
}

TEST(ScalarStatistics, StoredRelativeHumidityIsUsedAsItIs) {
  ensemble e;
  e.add(2, member(1, 1, 500, {0.0}));
  e.add(4, member(1, 1, 500, {-5.0}));
  e.add(14, member(1, 1, 500, {70.0}));
  e.add(14, member(1, 1, 500, {80.0}));
  tervik_data4 out;
  ASSERT_EQ(compute_griddata_mean(e.members, e.codes, 14, 500, 0, out), 0);
  EXPECT_EQ(out.data()[0], 75.0);
  EXPECT_EQ(out.contour_interval, 4);  // no derivation, the header's contours
}

TEST(ScalarStatistics, RelativeHumidityWithoutAPairIsNotFound) {
  ensemble e;
  e.add(4, member(1, 1, 500, {-5.0}));
  e.add(3, member(1, 1, 500, {0.0}));
  for (statistic fn : {compute_griddata_mean, compute_griddata_percentile}) {
    tervik_data4 out;
    testing::internal::CaptureStderr();
    EXPECT_EQ(fn(e.members, e.codes, 14, 500, 0.5, out), -1);
    const std::string err = testing::internal::GetCapturedStderr();
    EXPECT_NE(err.find("(): element(14) not found\n"), std::string::npos) << err;
    EXPECT_EQ(out.data(), nullptr);
  }
  ensemble none;
  none.add(2, member(1, 1, 500, {0.0}));
  tervik_data4 out;
  testing::internal::CaptureStderr();
  EXPECT_EQ(compute_griddata_max(none.members, none.codes, 14, 500, 0, out), -1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "compute_griddata_max(): element(14) not found\n");
}

// ---- Bad input ----

namespace {

// An output record holding a grid of its own, to see that a failure leaves it alone.
tervik_data4 prefilled_output() {
  tervik_data4 out = member(1, 1, 999, {42.0}, "untouched");
  out.contour_interval = 123;
  return out;
}

void expect_untouched(const tervik_data4& out, const double* values) {
  EXPECT_STREQ(out.description, "untouched");
  EXPECT_EQ(out.level, 999);
  EXPECT_EQ(out.nx, 1);
  EXPECT_EQ(out.contour_interval, 123);
  EXPECT_EQ(out.data(), values);
  EXPECT_EQ(out.data()[0], 42.0);
}

}  // namespace

TEST(ScalarStatistics, BadInputIsReportedAndLeavesTheOutputAlone) {
  ensemble good;
  good.add(2, member(2, 2, 500, {1, 2, 3, 4}));
  good.add(2, member(2, 2, 500, {1, 2, 3, 4}));

  ensemble size_mismatch = good;
  size_mismatch.add(2, member(4, 1, 500, {1, 2, 3, 4}));
  ensemble no_values = good;
  no_values.add(2, member(2, 2, 500, {1, 2, 3, 4}));
  no_values.members.back().set_gridPtr(nullptr);
  ensemble rh_size_mismatch;
  rh_size_mismatch.add(4, member(2, 2, 500, {1, 2, 3, 4}));
  rh_size_mismatch.add(2, member(2, 1, 500, {1, 2}));
  ensemble empty_grid;
  empty_grid.add(2, member(0, 3, 500, {}));
  ensemble lengths = good;
  lengths.codes.push_back(2);

  const struct {
    const ensemble* e;
    int element;
    const char* message;
  } cases[] = {
      {&size_mismatch, 2, "(): member 2 grid is 4x1, not 2x2\n"},
      {&no_values, 2, "(): member 2 has no values\n"},
      {&rh_size_mismatch, 14, "(): member 1 grid is 2x1, not 2x2\n"},
      {&empty_grid, 2, "(): member 0 has an empty grid (0x3)\n"},
      {&lengths, 2, "(): 3 element codes for 2 members\n"},
      {&good, 44, "(): element(44) is not in the element table\n"},
      {&good, -1, "(): element(-1) is not in the element table\n"},
  };
  const statistic fns[] = {compute_griddata_mean,   compute_griddata_var,
                           compute_griddata_min,    compute_griddata_max,
                           compute_griddata_median, compute_griddata_percentile};
  for (const auto& c : cases) {
    for (statistic fn : fns) {
      tervik_data4 out = prefilled_output();
      const double* before = out.data();
      testing::internal::CaptureStderr();
      EXPECT_EQ(fn(c.e->members, c.e->codes, c.element, 500, 0.5, out), -1) << c.message;
      const std::string err = testing::internal::GetCapturedStderr();
      EXPECT_NE(err.find(c.message), std::string::npos) << err;
      expect_untouched(out, before);
    }
  }

  tervik_data4 out = prefilled_output();
  const double* before = out.data();
  testing::internal::CaptureStderr();
  EXPECT_EQ(compute_griddata_mean({}, {}, 2, 500, 0, out), -1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "compute_griddata_mean(): element(2) not found\n");
  expect_untouched(out, before);
}
