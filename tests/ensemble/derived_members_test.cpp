#include <gtest/gtest.h>
#include <tervik/diagnostics.h>

#include <cmath>
#include <string>

#include "ensemble_fixture.h"

using tervik::test::ensemble;
using tervik::test::member;
using tervik::test::values_of;

TEST(WindIsotach, ConsumesThePairsOneCallAfterAnother) {
  ensemble e;
  e.add(5, member(2, 1, 500, {3, 0}, "U one 500hPa"));
  e.add(6, member(2, 1, 500, {4, 10}, "V one 500hPa ens"));
  e.add(5, member(2, 1, 850, {9, 9}));
  e.add(5, member(2, 1, 500, {6, 5}, "U two 500hPa"));
  e.add(6, member(2, 1, 500, {8, 12}, "V two 500hPa"));

  tervik_data4 out;
  ASSERT_EQ(compute_wind_isotach(e.members, e.codes, 500, 1.0, out), 0);
  EXPECT_EQ(values_of(out), (std::vector<double>{5, 10}));
  EXPECT_STREQ(out.description, "V one 500hPaIsotachs(unit:m/s)");
  EXPECT_EQ(e.codes, (std::vector<int>{44, 44, 5, 5, 6}));

  ASSERT_EQ(compute_wind_isotach(e.members, e.codes, 500, 2.0, out), 0);
  EXPECT_EQ(values_of(out), (std::vector<double>{5, 6.5}));  // divided by the scale
  EXPECT_EQ(e.codes, (std::vector<int>{44, 44, 5, 44, 44}));

  testing::internal::CaptureStderr();
  EXPECT_EQ(compute_wind_isotach(e.members, e.codes, 500, 1.0, out), -1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");  // running out of pairs is quiet
  EXPECT_EQ(values_of(out), (std::vector<double>{5, 6.5}));
}

TEST(WindIsotach, ContoursEveryEightFromTheSpeedRange) {
  const struct {
    double lo, hi, start, end;
  } cases[] = {{3, 21, 8, 16}, {0, 8, 8, 8}, {9.5, 40, 16, 40}, {1, 7.9, 8, 0}};
  for (const auto& c : cases) {
    ensemble e;
    e.add(5, member(2, 1, 500, {c.lo, c.hi}));
    e.add(6, member(2, 1, 500, {0, 0}));
    tervik_data4 out;
    ASSERT_EQ(compute_wind_isotach(e.members, e.codes, 500, 1.0, out), 0);
    EXPECT_EQ(out.contour_interval, 8);
    EXPECT_EQ(out.contour_start, c.start) << c.lo;
    EXPECT_EQ(out.contour_end, c.end) << c.hi;
  }
}

TEST(WindIsotach, MissingComponentsStayMissingAndTitlesWithoutHpaKeepTheirText) {
  ensemble e;
  e.add(5, member(3, 1, 700, {tervik_data4::undef, 6, 0}, "U 700 mb"));
  e.add(6, member(3, 1, 700, {1, 8, tervik_data4::undef}, "V 700 mb"));
  tervik_data4 out;
  ASSERT_EQ(compute_wind_isotach(e.members, e.codes, 700, 1.0, out), 0);
  EXPECT_EQ(values_of(out), (std::vector<double>{9999.0, 10, 9999.0}));
  EXPECT_STREQ(out.description, "V 700 mb");
  EXPECT_EQ(out.contour_start, 16);  // the missing points stay out of the range
  EXPECT_EQ(out.contour_end, 8);
}

TEST(WindIsotach, AnUnpairedUIsConsumedAllTheSame) {
  ensemble e;
  e.add(5, member(1, 1, 500, {1.0}));
  e.add(6, member(1, 1, 300, {1.0}));
  tervik_data4 out;
  EXPECT_EQ(compute_wind_isotach(e.members, e.codes, 500, 1.0, out), -1);
  EXPECT_EQ(e.codes, (std::vector<int>{44, 6}));
  EXPECT_EQ(out.data(), nullptr);
}

TEST(RelativeHumidityMember, DerivedFromTheFirstTemperatureAndDewPoint) {
  ensemble e;
  const std::vector<double> t{20, 0, -10}, td{10, -5, tervik_data4::undef};
  e.add(3, member(3, 1, 850, {5, 5, 5}));  // code 3 is not taken
  e.add(4, member(3, 1, 850, td, "Td 850hPa ens"));
  e.add(2, member(3, 1, 850, t, "T 850hPa"));
  e.add(2, member(3, 1, 850, t, "T 850hPa"));
  tervik_data4 out;
  ASSERT_EQ(compute_rh(e.members, e.codes, 850, 0.0, out), 0);
  std::vector<double> want(3);
  double lo, hi;
  compute_field_ttd2rh(want.data(), &lo, &hi, t.data(), td.data(), 3, 1, 1.0);
  EXPECT_EQ(values_of(out), want);
  EXPECT_EQ(out.data()[2], 9999.0);
  EXPECT_STREQ(out.description, "Td 850hPaRH(unit:%)");
  EXPECT_EQ(out.contour_start, 0);
  EXPECT_EQ(out.contour_interval, 10);
  EXPECT_EQ(out.contour_end, 100);
  EXPECT_EQ(e.codes, (std::vector<int>{3, 44, 44, 2}));
  EXPECT_EQ(compute_rh(e.members, e.codes, 850, 0.0, out), -1);  // no Td left
  EXPECT_EQ(e.codes, (std::vector<int>{3, 44, 44, 44}));
}

TEST(DerivedMembers, BadInputIsReportedAndConsumesNothing) {
  ensemble sizes;
  sizes.add(2, member(2, 1, 500, {1, 2}));
  sizes.add(4, member(1, 2, 500, {1, 2}));
  ensemble no_values;
  no_values.add(5, member(2, 1, 500, {1, 2}));
  no_values.add(6, member(2, 1, 500, {1, 2}));
  no_values.members[0].set_gridPtr(nullptr);
  ensemble lengths;
  lengths.add(5, member(1, 1, 500, {1}));
  lengths.add(6, member(1, 1, 500, {1}));
  lengths.codes.push_back(6);

  tervik_data4 out = member(1, 1, 999, {42.0}, "untouched");
  testing::internal::CaptureStderr();
  EXPECT_EQ(compute_rh(sizes.members, sizes.codes, 500, 0, out), -1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "compute_rh(): member 0 grid is 2x1, not 1x2\n");
  EXPECT_EQ(sizes.codes, (std::vector<int>{2, 4}));

  testing::internal::CaptureStderr();
  EXPECT_EQ(compute_wind_isotach(no_values.members, no_values.codes, 500, 1, out), -1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "compute_wind_isotach(): member 0 has no values\n");
  EXPECT_EQ(no_values.codes, (std::vector<int>{5, 6}));

  testing::internal::CaptureStderr();
  EXPECT_EQ(compute_wind_isotach(lengths.members, lengths.codes, 500, 1, out), -1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "compute_wind_isotach(): 3 element codes for 2 members\n");
  EXPECT_EQ(lengths.codes, (std::vector<int>{5, 6, 6}));

  EXPECT_STREQ(out.description, "untouched");
  EXPECT_EQ(out.data()[0], 42.0);
}
